// For a child process that is to leave no files behind.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_HOST_FILE_BAN_H
#define KORVEL_TOOLS_HOST_FILE_BAN_H

namespace korvel {

// From here on, and in the program that this process becomes, a file that is opened so that it
// would be made if it were missing cannot be opened; one that is there is not touched. Files that
// are open, and opening what is there, stay as they are. Where the kernel knows no such ban, files
// can be made, and stay empty. There is no way back.
void banNewFiles();

}  // namespace korvel

#endif
