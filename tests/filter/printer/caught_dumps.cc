// Stands in for the opening of our own files.
// Every file is a stream into memory that its writer closes.
// SPDX-License-Identifier: Apache-2.0
#include "tests/filter/printer/caught_dumps.h"

#include <cstdio>
#include <cstdlib>
#include <list>
#include <regex>

#include "printer/own_file.h"

namespace {

struct Dump {
  char* bytes = nullptr;  // valid once the stream is closed
  size_t size = 0;
};

std::list<Dump> dumps;
std::vector<std::string> paths;
bool dumpsAllowed = true;

}  // namespace

bool pellamDumpsAreOn() { return true; }

OwnFile pellamOpenOwnFile(const char* path, DiskReserve) {
  OwnFile file;
  paths.push_back(path);
  if (!dumpsAllowed) return file;
  dumps.emplace_back();
  file.state = OwnFileState::kOpen;
  file.stream = open_memstream(&dumps.back().bytes, &dumps.back().size);
  return file;
}

bool pellamCloseOwnFile(OwnFile* file, const char*) { return std::fclose(file->stream) == 0; }

void allowDumps(bool allowed) { dumpsAllowed = allowed; }

std::vector<std::string> takeDumpPaths() {
  static const std::regex kTime(R"(_\d{4}-\d+-\d+_\d+_\d+_\d+_)");
  std::vector<std::string> taken;
  for (const std::string& path : paths) taken.push_back(std::regex_replace(path, kTime, "_*_"));
  paths.clear();
  return taken;
}

std::vector<std::string> takeDumps() {
  std::vector<std::string> taken;
  for (Dump& dump : dumps) {
    taken.emplace_back(dump.bytes, dump.size);
    std::free(dump.bytes);
  }
  dumps.clear();
  return taken;
}
