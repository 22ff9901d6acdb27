// Reads every include of the five folders and holds it against the table in layers.txt.
// Includes go down only: a new arrow is a decision, not an accident.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct Layer {
  std::string name;
  std::vector<std::string> files;   // path prefixes
  std::vector<std::string> layers;  // names of layers it may include
  std::vector<std::string> cups;    // headers of the spooler it may include
};

std::vector<std::string> words(const std::string& text) {
  std::istringstream in(text);
  return {std::istream_iterator<std::string>(in), {}};
}

std::vector<Layer> readTable(const fs::path& path) {
  std::vector<Layer> table;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream columns(line);
    std::string column[4];
    for (std::string& text : column) std::getline(columns, text, '|');
    table.push_back({words(column[0]).at(0), words(column[1]), words(column[2]), words(column[3])});
  }
  return table;
}

// The layer whose prefix matches the most of `file`, or null.
const Layer* layerOf(const std::vector<Layer>& table, const std::string& file) {
  const Layer* best = nullptr;
  size_t longest = 0;
  for (const Layer& layer : table) {
    for (const std::string& prefix : layer.files) {
      if (!file.starts_with(prefix) || prefix.size() <= longest) continue;
      best = &layer;
      longest = prefix.size();
    }
  }
  return best;
}

bool contains(const std::vector<std::string>& list, const std::string& word) {
  return std::find(list.begin(), list.end(), word) != list.end();
}

// What is wrong with one include line of a file, or nothing.
std::string objection(const std::vector<Layer>& table, const Layer& layer, bool quoted,
                      const std::string& header) {
  if (!quoted) {
    const bool allowed = !header.starts_with("cups/") || contains(layer.cups, header);
    return allowed ? "" : layer.name + " may not include the spooler's <" + header + ">";
  }
  if (header.find('/') == std::string::npos) return "\"" + header + "\" does not name its folder";
  const Layer* included = layerOf(table, header);
  if (included == nullptr) return "\"" + header + "\" belongs to no layer";
  if (contains(layer.layers, included->name)) return "";
  return layer.name + " may not include \"" + header + "\" of " + included->name;
}

std::vector<std::string> objections(const fs::path& root, const std::string& file,
                                    const std::vector<Layer>& table) {
  const Layer* layer = layerOf(table, file);
  if (layer == nullptr) return {file + " belongs to no layer"};
  static const std::regex kInclude(R"(^\s*#\s*include\s*([<"])([^>"]+)[>"])");
  std::vector<std::string> found;
  std::ifstream in(root / file);
  std::smatch match;
  for (std::string line; std::getline(in, line);) {
    if (!std::regex_search(line, match, kInclude)) continue;
    const std::string text = objection(table, *layer, match[1] == "\"", match[2]);
    if (!text.empty()) found.push_back(file + ": " + text);
  }
  return found;
}

std::vector<std::string> sources(const fs::path& root) {
  std::vector<std::string> files;
  for (const char* folder : {"driver", "protocol", "printer", "tattoo", "image"}) {
    for (const auto& entry : fs::directory_iterator(root / folder)) {
      const std::string extension = entry.path().extension();
      if (extension != ".h" && extension != ".cc") continue;
      files.push_back(std::string(folder) + "/" + entry.path().filename().string());
    }
  }
  return files;
}

}  // namespace

TEST(Layers, EveryIncludeGoesDown) {
  const fs::path root = KORVEL_SOURCE_DIR;
  const std::vector<Layer> table = readTable(root / "tests/layers.txt");
  ASSERT_EQ(9u, table.size());
  const std::vector<std::string> files = sources(root);
  ASSERT_LT(40u, files.size());
  for (const std::string& file : files) {
    for (const std::string& text : objections(root, file, table)) ADD_FAILURE() << text;
  }
}

TEST(Layers, AnArrowUpwardsIsSeen) {
  const std::vector<Layer> table = readTable(fs::path(KORVEL_SOURCE_DIR) / "tests/layers.txt");
  struct Case {
    const char* sentence;
    const char* file;
    bool quoted;
    const char* header;
    const char* answer;
  };
  const Case cases[] = {
      {"an image may include its own header", "image/cximage_tone.cc", true, "image/cximage.h", ""},
      {"an image may not log", "image/cximage_tone.cc", true, "printer/log.h",
       "image may not include \"printer/log.h\" of support"},
      {"the printer only forward-declares the settings", "printer/page_entry.cc", true,
       "driver/settings.h", "printer may not include \"driver/settings.h\" of settings_record"},
      {"the protocol reads the settings record", "protocol/status.cc", true, "driver/settings.h",
       ""},
      {"the protocol may not read a printer description", "protocol/status.cc", false, "cups/ppd.h",
       "protocol may not include the spooler's <cups/ppd.h>"},
      {"the job may not touch pixels", "driver/main.cc", true, "image/cximage.h",
       "job may not include \"image/cximage.h\" of image"},
      {"an include names its folder", "image/cximage_tone.cc", true, "cximage.h",
       "\"cximage.h\" does not name its folder"},
  };
  for (const Case& c : cases) {
    const Layer* layer = layerOf(table, c.file);
    ASSERT_NE(nullptr, layer) << c.sentence;
    EXPECT_EQ(c.answer, objection(table, *layer, c.quoted, c.header)) << c.sentence;
  }
}
