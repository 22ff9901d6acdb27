// Reads the folder.
// SPDX-License-Identifier: Apache-2.0
#include "studio/page_assets.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "tools/common/file_content.h"
#include "tools/common/translation.h"

namespace fs = std::filesystem;

namespace korvel {
namespace {

std::string typeOf(const std::string& extension) {
  if (extension == ".html") return "text/html; charset=utf-8";
  if (extension == ".css") return "text/css; charset=utf-8";
  if (extension == ".js") return "text/javascript; charset=utf-8";
  if (extension == ".svg") return "image/svg+xml";
  return "";
}

// Without indentation and without comments on lines of their own or behind two blanks: fewer bytes
// for every visitor. The page's sources have no text that goes over a line's end. Scripts
// and style sheets need no line's end after some characters and before others, markup none before
// tags.
std::string withoutLayout(const std::string& source) {
  std::string compact;
  std::istringstream in(source);
  for (std::string line; std::getline(in, line);) {
    line.erase(0, std::min(line.find_first_not_of(' '), line.size()));
    line.erase(std::min(line.find("  // "), line.size()));
    if (line.empty() || line.starts_with("//")) continue;
    const bool closes = std::string_view("})].<").find(line.front()) != std::string_view::npos;
    if (closes && compact.ends_with('\n')) compact.pop_back();
    compact += line;
    if (std::string_view(",;{").find(line.back()) == std::string_view::npos) compact += '\n';
  }
  return compact;
}

void replaceAll(std::string* text, const std::string& longer, const std::string& shorter) {
  for (size_t at = text->find(longer); at != std::string::npos; at = text->find(longer, at)) {
    text->replace(at, longer.size(), shorter);
  }
}

// Style sheets need no comments, and no blanks beside their punctuation.
std::string withoutBlanks(std::string style) {
  for (size_t at = style.find("/*"); at != std::string::npos; at = style.find("/*", at)) {
    style.erase(at, style.find("*/", at) + 2 - at);
  }
  constexpr std::pair<const char*, const char*> kShorter[] = {
      {": ", ":"}, {"; ", ";"}, {", ", ","},  {" {", "{"},  {"{ ", "{"},
      {" }", "}"}, {";}", "}"}, {";\n", ";"}, {"{\n", "{"}, {"}\n", "}"}};
  for (const auto& [longer, shorter] : kShorter) replaceAll(&style, longer, shorter);
  return style;
}

}  // namespace

Result<void> PageAssets::load(const std::string& folder) {
  std::error_code fault;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder, fault)) {
    const std::string type = typeOf(entry.path().extension());
    if (type.empty() || !entry.is_regular_file(fault)) continue;
    std::string source = withoutLayout(contentOf(entry.path()));
    if (entry.path().extension() == ".css") source = withoutBlanks(source);
    if (entry.path().extension() == ".js") replaceAll(&source, " => ", "=>");
    assets_["/" + entry.path().lexically_relative(folder).string()] = {type, source};
  }
  if (!assets_.contains("/index.html")) {
    return Failure{filled("The page is not in %s; install korvel-studio again.", folder.c_str())};
  }
  return {};
}

const PageAsset* PageAssets::find(const std::string& path) const {
  const auto found = assets_.find(path == "/" ? "/index.html" : path);
  return found == assets_.end() ? nullptr : &found->second;
}

}  // namespace korvel
