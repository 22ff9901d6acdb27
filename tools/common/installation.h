// Where the parts of an installation are, relative to the running program: an installation works
// below any prefix, and inside a staging folder.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_INSTALLATION_H
#define KORVEL_TOOLS_COMMON_INSTALLATION_H

#include <string>

namespace korvel {

std::string programFolder();  // of the running program

// Folders that are installed next to the programs. For a program in a build folder they do not
// exist.
std::string catalogueFolder();  // of the translations
std::string dataFolder();       // of the sheets and test pages

// A folder of the spooler has a fixed path, whatever the prefix. Returns it inside the staging
// folder of the running program, if there is one: below the nearest parent folder of the program
// that has it and that is not writable for everybody. Otherwise returns `path`.
std::string spoolerFolder(const std::string& path);

}  // namespace korvel

#endif
