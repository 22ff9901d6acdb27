// A whole file as text or bytes.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_FILE_CONTENT_H
#define KORVEL_TOOLS_COMMON_FILE_CONTENT_H

#include <fstream>
#include <iterator>
#include <string>

namespace korvel {

// Empty when the file cannot be read.
inline std::string contentOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace korvel

#endif
