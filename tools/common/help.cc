// Two columns: the options' names, and what they do.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/help.h"

#include <algorithm>
#include <sstream>

#include "tools/common/text_layout.h"
#include "tools/common/translation.h"

namespace korvel {
namespace {

constexpr size_t kColumns = 80;
constexpr size_t kIndent = 2;        // of the names
constexpr size_t kGap = 2;           // between the columns
constexpr size_t kWidestNames = 22;  // wider ones have a line of their own
constexpr size_t kUsageIndent = 8;   // of the further lines of a synopsis

const char* const kHelpOption = later("--help\tShow a help message and exit.");
const char* const kVersionOption = later("--version\tShow the version and exit.");

struct Row {
  std::string names, text;
};

Row rowOf(const char* option) {
  const std::string whole = translated(option);
  const size_t tab = whole.find('\t');
  if (tab == std::string::npos) return {whole, ""};
  return {whole.substr(0, tab), whole.substr(tab + 1)};
}

std::vector<Row> rowsOf(const std::vector<const char*>& options) {
  std::vector<Row> rows;
  for (const char* option : options) rows.push_back(rowOf(option));
  rows.push_back(rowOf(kHelpOption));
  rows.push_back(rowOf(kVersionOption));
  return rows;
}

std::string spaces(size_t count) { return std::string(count, ' '); }

// Every line but the first is indented.
std::string paragraph(const std::string& text, size_t indent) {
  std::string all;
  for (const std::string& line : wrapped(text, kColumns - indent)) {
    all += (all.empty() ? "" : spaces(indent)) + line + "\n";
  }
  return all;
}

std::string synopses(const std::string& usage) {
  std::string all;
  std::istringstream lines(usage);
  for (std::string line; std::getline(lines, line);) {
    const size_t from = line.find_first_not_of(' ');
    const size_t indent = from == std::string::npos ? 0 : from;
    all += spaces(indent) + paragraph(line.substr(indent), indent + kUsageIndent);
  }
  return all;
}

std::string table(const std::vector<Row>& rows) {
  size_t widest = 0;
  for (const Row& row : rows) {
    const size_t width = displayWidth(row.names);
    if (width <= kWidestNames) widest = std::max(widest, width);
  }
  const size_t column = kIndent + widest + kGap;
  std::string all;
  for (const Row& row : rows) {
    const size_t end = kIndent + displayWidth(row.names);
    all += spaces(kIndent) + row.names;
    all += end + kGap > column ? "\n" + spaces(column) : spaces(column - end);
    all += paragraph(row.text, column);
  }
  return all;
}

}  // namespace

std::string helpText(const Help& help) {
  std::string all = synopses(translated(help.usage));
  all += paragraph(translated(help.summary), 0) + "\n";
  all += table(rowsOf(help.options)) + "\n";
  if (help.listTitle != nullptr) {
    all += paragraph(translated(help.listTitle), 0);
    for (const char* line : help.list) all += spaces(kIndent) + line + "\n";
    all += "\n";
  }
  return all + paragraph(translated(help.status), 0);
}

}  // namespace korvel
