// Shared by the job tests: plans for small jobs, and short forms of streams and messages.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_JOB_JOB_TEXT_H
#define KORVEL_TESTS_JOB_JOB_TEXT_H

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "tests/job/stream_text.h"
#include "tests/support/job_runner.h"
#include "tests/support/raster_maker.h"

inline std::string rasterOf(const std::vector<std::string>& recipes) {
  std::vector<RasterPage> pages;
  for (const std::string& recipe : recipes) {
    RasterPage page;
    if (!parseRasterPage(recipe, &page)) ADD_FAILURE() << "invalid recipe: " << recipe;
    pages.push_back(page);
  }
  return makeRaster(pages);
}

inline JobPlan labelJob(const std::vector<std::string>& recipes, const std::string& options = "") {
  JobPlan plan;
  plan.ppd = testPpd("label");
  plan.options = options;
  plan.input = rasterOf(recipes);
  return plan;
}

inline JobPlan stencilJob(const std::vector<std::string>& recipes, const std::string& options) {
  JobPlan plan = labelJob(recipes, options);
  plan.ppd = testPpd("stencil");
  return plan;
}

// One letter per packet: S page start, ( and ) control 0 and 1, d density, I area and image, x cut,
// a digit for the mode of a feed. An invalid stream is "?" and what is wrong.
inline std::string shape(const std::string& bytes) {
  const StreamText stream = readStream(bytes);
  std::string text;
  for (const std::string& line : stream.lines) {
    if (line == "page start") text += 'S';
    if (line == "control 0") text += '(';
    if (line == "control 1") text += ')';
    if (line.starts_with("density")) text += 'd';
    if (line.starts_with("feed mode ")) text += line[10];
    if (line == "cut") text += 'x';
    if (line.starts_with("area")) text += 'I';
    if (line.starts_with("status")) text += 's';
  }
  return stream.fault.empty() ? text : text + "? " + stream.fault;
}

// The image data of all pages as hex text, separated by a vertical bar.
inline std::string imageHex(const std::string& bytes) {
  std::string text;
  for (const SentPicture& picture : readStream(bytes).pictures) {
    std::string dots;
    for (const std::string& block : picture.blocks) dots += block;
    text += (text.empty() ? "" : " | ") + hexText(dots);
  }
  return text;
}

inline std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// The lines for users and CUPS: without those that begin with a bare "DEBUG:".
inline std::string plainMessages(const std::string& messages) {
  std::string kept;
  for (const std::string& line : linesOf(messages)) {
    const bool logged = line.starts_with("DEBUG:") && !line.starts_with("DEBUG: ");
    if (!logged && !line.empty()) kept += line + "\n";
  }
  return kept;
}

// Replaces every run of `digits` that follows `before` with a word.
inline std::string maskAfter(std::string text, const std::string& before, const char* digits) {
  for (size_t at = text.find(before); at != std::string::npos; at = text.find(before, at)) {
    at += before.size();
    const size_t end = std::min(text.find_first_not_of(digits, at), text.size());
    if (end > at) text.replace(at, end - at, "ADDRESS");
  }
  return text;
}

// Addresses differ from run to run; a null one is "(nil)" and stays.
inline std::string maskAddresses(const std::string& messages) {
  return maskAfter(maskAfter(messages, "pointer address: ", "0123456789"),
                   ", address: ", "0123456789abcdefx");
}

inline size_t countOf(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

#endif
