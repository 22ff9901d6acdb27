// Runs zbarimg and reads the few elements of its XML that matter here.
// SPDX-License-Identifier: Apache-2.0
#include "studio/worker/barcode_reader.h"

#include <sys/wait.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <vector>

#include "studio/worker/page_dots.h"
#include "tools/common/process.h"

namespace korvel {
namespace {

constexpr int kNothingFound = 4;
constexpr size_t kMostText = 400;  // bytes of a code that are shown

struct Box {
  int left = INT_MAX;
  int top = INT_MAX;
  int right = INT_MIN;
  int bottom = INT_MIN;
};

// Runs the decoder; false when it is not installed.
bool runDecoder(const std::string& png, std::string* output) {
  Program program;
  program.arguments = {"zbarimg", "--quiet", "--xml", "--nodbus", png};
  Result<ProgramOutput> ran = runProgram(program, kNullDevice);
  if (!ran) return false;
  *output = ran->text;
  return WIFEXITED(ran->waitStatus) &&
         (WEXITSTATUS(ran->waitStatus) == 0 || WEXITSTATUS(ran->waitStatus) == kNothingFound);
}

// "+12,34 +56,78"
Box boxOf(const std::string& points) {
  static const std::regex kPoint("([+-]?[0-9]{1,6}),([+-]?[0-9]{1,6})");
  Box box;
  for (std::sregex_iterator at(points.begin(), points.end(), kPoint), end; at != end; ++at) {
    const int x = std::atoi((*at)[1].str().c_str());
    const int y = std::atoi((*at)[2].str().c_str());
    box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x),
           std::max(box.bottom, y)};
  }
  return box;
}

std::string between(const std::string& text, const std::string& before, const std::string& after) {
  const size_t from = text.find(before);
  if (from == std::string::npos) return "";
  const size_t to = text.find(after, from + before.size());
  return to == std::string::npos ? ""
                                 : text.substr(from + before.size(), to - from - before.size());
}

nlohmann::json codeOfSymbol(const std::string& symbol) {
  const Box box = boxOf(between(symbol, "points='", "'"));
  nlohmann::json code = {{"type", between(symbol, "type='", "'")},
                         {"text", between(symbol, "<![CDATA[", "]]>").substr(0, kMostText)}};
  if (box.left <= box.right) code["box"] = {box.left, box.top, box.right, box.bottom};
  return code;
}

using Codes = std::vector<nlohmann::json>;

// False without the decoder.
bool findCodes(const std::string& picture, Codes* codes) {
  std::string xml;
  if (!runDecoder(picture, &xml)) return false;
  const std::string end = "</symbol>";
  for (size_t at = xml.find("<symbol "); at != std::string::npos;
       at = xml.find("<symbol ", at + 1)) {
    const size_t to = xml.find(end, at);
    if (to == std::string::npos) break;
    codes->push_back(codeOfSymbol(xml.substr(at, to - at)));
  }
  return true;
}

bool isSame(const nlohmann::json& one, const nlohmann::json& other) {
  return one["type"] == other["type"] && one["text"] == other["text"];
}

}  // namespace

nlohmann::json readBarcodes(const std::string& raster, const std::string& png) {
  Codes printed;
  Codes drawn;
  const std::string grey = png + ".pgm";
  const bool found =
      findCodes(png, &printed) && (!writeGrey(raster, grey) || findCodes(grey, &drawn));
  std::remove(grey.c_str());
  for (nlohmann::json& code : printed) code["readable"] = true;
  for (nlohmann::json& code : drawn) {
    code["readable"] = false;
    const bool known =
        std::any_of(printed.begin(), printed.end(),
                    [&](const nlohmann::json& other) { return isSame(code, other); });
    if (!known) printed.push_back(code);
  }
  return {{"decoder", found}, {"codes", printed}};
}

}  // namespace korvel
