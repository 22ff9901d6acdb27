// The pages of the guide as they were built, and what the tests look up in them.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_GUIDE_GUIDE_PAGES_H
#define KORVEL_TESTS_GUIDE_GUIDE_PAGES_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

inline std::string textOf(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

inline std::filesystem::path guideFile(const std::string& name) {
  return std::filesystem::path(KORVEL_GUIDE_DIR) / name;
}

// The pages of docs/guide/pages.txt in reading order, without ".html".
inline std::vector<std::string> pageNames() {
  std::vector<std::string> names;
  std::istringstream lines(
      textOf(std::filesystem::path(KORVEL_SOURCE_DIR) / "docs/guide/pages.txt"));
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line[0] != '#') names.push_back(line.substr(0, line.find(' ')));
  }
  return names;
}

struct Edition {
  std::string language;
  std::string folder;   // below the guide's, with a slash at its end, or empty
  std::string product;  // the end of every title
};

inline void PrintTo(const Edition& edition, std::ostream* out) { *out << edition.language; }

inline std::vector<Edition> editions() {
  return {{"en", "", "Korvel Printer Guide"},
          {"de", "de/", "Korvel-Druckerhandbuch"},
          {"fr", "fr/", "Guide de l'imprimante Korvel"},
          {"es", "es/", "Guía de la impresora Korvel"}};
}

// The first group of every match, in order.
inline std::vector<std::string> allFound(const std::string& text, const char* pattern) {
  std::vector<std::string> all;
  const std::regex regex(pattern);
  for (std::sregex_iterator at(text.begin(), text.end(), regex), end; at != end; ++at) {
    all.push_back((*at)[1]);
  }
  return all;
}

inline std::set<std::string> found(const std::string& text, const char* pattern) {
  const std::vector<std::string> all = allFound(text, pattern);
  return {all.begin(), all.end()};
}

#endif
