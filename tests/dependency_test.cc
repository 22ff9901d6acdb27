// Checks every #include of the repository against the table in dependencies.txt, so that a new
// dependency is a decision and not an accident.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/source_tree.h"

namespace {

namespace fs = std::filesystem;

struct Part {
  std::string name;
  std::vector<std::string> files;  // path prefixes
  std::vector<std::string> parts;  // names of the parts it may include
  std::vector<std::string> cups;   // headers of CUPS it may include
};

std::vector<std::string> split(const std::string& text) {
  std::istringstream in(text);
  return {std::istream_iterator<std::string>(in), {}};
}

std::vector<Part> readTable() {
  std::vector<Part> table;
  std::ifstream in(fs::path(KORVEL_SOURCE_DIR) / "tests/dependencies.txt");
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream columns(line);
    std::string column[4];
    for (std::string& text : column) std::getline(columns, text, '|');
    table.push_back({split(column[0]).at(0), split(column[1]), split(column[2]), split(column[3])});
  }
  return table;
}

bool contains(const std::vector<std::string>& list, const std::string& text) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

std::vector<const Part*> partsOf(const std::vector<Part>& table, const std::string& file) {
  std::vector<const Part*> found;
  for (const Part& part : table) {
    if (std::any_of(part.files.begin(), part.files.end(),
                    [&](const std::string& prefix) { return file.starts_with(prefix); })) {
      found.push_back(&part);
    }
  }
  return found;
}

// The filter's headers are included by their path below filter/, all others below the root.
std::vector<const Part*> partsOfHeader(const std::vector<Part>& table, const std::string& header) {
  std::vector<const Part*> found = partsOf(table, header);
  return found.empty() ? partsOf(table, "filter/" + header) : found;
}

// Returns what is wrong with one #include of a file of `part`, or an empty text.
std::string objection(const std::vector<Part>& table, const Part& part, bool quoted,
                      const std::string& header) {
  if (!quoted) {
    const bool allowed = !header.starts_with("cups/") || contains(part.cups, header);
    return allowed ? "" : part.name + " may not include <" + header + ">";
  }
  const std::vector<const Part*> included = partsOfHeader(table, header);
  if (included.size() != 1) return "\"" + header + "\" belongs to no part";
  if (contains(part.parts, included[0]->name)) return "";
  return part.name + " may not include \"" + header + "\" of " + included[0]->name;
}

std::vector<std::string> objections(const fs::path& root, const std::string& file,
                                    const std::vector<Part>& table) {
  const std::vector<const Part*> parts = partsOf(table, file);
  if (parts.empty()) return {file + " belongs to no part"};
  if (parts.size() > 1) return {file + " belongs to " + parts[0]->name + " and " + parts[1]->name};
  static const std::regex kInclude(R"(^\s*#\s*include\s*([<"])([^>"]+)[>"])");
  std::vector<std::string> found;
  std::ifstream in(root / file);
  std::smatch match;
  for (std::string line; std::getline(in, line);) {
    if (!std::regex_search(line, match, kInclude)) continue;
    const std::string text = objection(table, *parts[0], match[1] == "\"", match[2]);
    if (!text.empty()) found.push_back(file + ": " + text);
  }
  return found;
}

std::vector<std::string> objectionsBelow(const fs::path& root) {
  const std::vector<Part> table = readTable();
  std::vector<std::string> found;
  for (const std::string& file : sources(root)) {
    const std::vector<std::string> more = objections(root, file, table);
    found.insert(found.end(), more.begin(), more.end());
  }
  return found;
}

}  // namespace

TEST(Dependencies, EveryIncludeIsInTheTable) {
  const fs::path root = KORVEL_SOURCE_DIR;
  ASSERT_LT(150U, sources(root).size());
  for (const std::string& text : objectionsBelow(root)) ADD_FAILURE() << text;
}

TEST(Dependencies, PlantedFaultsAreFound) {
  const std::vector<std::string> expected = {
      "filter/lanes/climbs.h: lanes may not include \"driver/settings_reader.h\" of settings",
      "tools/misplaced.cc belongs to no part",
      "tools/stream/peeks.cc: stream may not include \"protocol/packet.h\" of protocol",
  };
  EXPECT_EQ(expected, objectionsBelow(fs::path(KORVEL_SOURCE_DIR) / "tests/support/planted_tree"));
}

TEST(Dependencies, SingleIncludes) {
  const std::vector<Part> table = readTable();
  struct Case {
    const char* description;
    const char* file;
    bool quoted;
    const char* header;
    const char* expected;
  };
  const Case cases[] = {
      {"a file may include its own header", "filter/image/cximage_tone.cc", true, "image/cximage.h",
       ""},
      {"an image may not log", "filter/image/cximage_tone.cc", true, "printer/log.h",
       "image may not include \"printer/log.h\" of support"},
      {"the printer reads the settings record", "filter/printer/page_entry.cc", true,
       "printer/settings.h", ""},
      {"the printer does not read PPDs", "filter/printer/page_entry.cc", true,
       "driver/settings_reader.h",
       "printer may not include \"driver/settings_reader.h\" of settings"},
      {"the protocol does not read PPDs", "filter/protocol/status.cc", false, "cups/ppd.h",
       "protocol may not include <cups/ppd.h>"},
      {"the job may not touch pixels", "filter/driver/main.cc", true, "image/cximage.h",
       "job may not include \"image/cximage.h\" of image"},
      {"the decoder is independent of the printer protocol", "tools/stream/stream_decoder.cc", true,
       "protocol/packet.h", "stream may not include \"protocol/packet.h\" of protocol"},
      {"an include names its folder", "filter/image/cximage_tone.cc", true, "cximage.h",
       "\"cximage.h\" belongs to no part"},
  };
  for (const Case& c : cases) {
    const std::vector<const Part*> parts = partsOf(table, c.file);
    ASSERT_EQ(1U, parts.size()) << c.description;
    EXPECT_EQ(c.expected, objection(table, *parts[0], c.quoted, c.header)) << c.description;
  }
}
