// Where the parts of an installation are, told from where the running program lies: what is
// installed works below any prefix, and inside the tree of a --destdir.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_INSTALLATION_H
#define KORVEL_TOOLS_COMMON_INSTALLATION_H

#include <string>

namespace korvel {

std::string programFolder();  // of the running program

// Folders that go where the programs go. A program that has not been installed is told folders
// that are not there.
std::string catalogueFolder();  // of the texts in other languages
std::string dataFolder();       // of the sheets and test pages

// A folder of the spooler's stays at its path whatever the prefix. Returns it as it lies in the
// tree that the program lies in: below the nearest folder around the program that has it and that
// not everybody may write to, or else at its own path.
std::string spoolerFolder(const std::string& path);

}  // namespace korvel

#endif
