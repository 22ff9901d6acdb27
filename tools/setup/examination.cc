// The texts are UTF-8, so that only quotes, backslashes and control characters are escaped.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/examination.h"

#include <algorithm>
#include <cstdio>

namespace korvel {

namespace {

std::string quoted(const std::string& text) {
  std::string json = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(byte));
      json += escape;
    } else {
      if (c == '"' || c == '\\') json += '\\';
      json += c;
    }
  }
  return json + "\"";
}

std::string asJson(const Finding& finding) {
  return std::string("{\"kind\": \"") + (finding.fault ? "problem" : "advice") +
         "\", \"text\": " + quoted(finding.text) + "}";
}

std::string asJson(const Examination& examination) {
  std::string json = "{\"queue\": " + quoted(examination.queue) +
                     ", \"driver\": " + quoted(examination.makeAndModel) +
                     ", \"good\": " + (isWell(examination) ? "true" : "false") +
                     ", \"findings\": [";
  const char* separator = "";
  for (const Finding& finding : examination.findings) {
    json += separator + asJson(finding);
    separator = ", ";
  }
  return json + "]}";
}

}  // namespace

bool isWell(const Examination& examination) {
  return std::none_of(examination.findings.begin(), examination.findings.end(),
                      [](const Finding& finding) { return finding.fault; });
}

std::string asJson(const std::vector<Examination>& examinations) {
  std::string json = "{\"queues\": [";
  const char* separator = "";
  for (const Examination& examination : examinations) {
    json += separator + asJson(examination);
    separator = ", ";
  }
  return json + "]}\n";
}

}  // namespace korvel
