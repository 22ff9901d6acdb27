// The example label as printed: both of its codes are read by the decoder that Debian ships.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "tests/tools/preview/preview_runner.h"

namespace {

std::set<std::string> codesIn(const std::string& picture) {
  std::istringstream found(run({"zbarimg", "--quiet", "--nodbus", picture}).output);
  std::set<std::string> codes;
  for (std::string line; std::getline(found, line);) codes.insert(line);
  return codes;
}

TEST(ExampleLabel, CodesScanAsPrinted) {
  const std::set<std::string> kWant = {"CODE-128:KV2011748206",
                                       "QR-Code:https://example.com/KV2011748206"};
  const struct {
    const char* driver;
    const char* options;
  } kCases[] = {
      {"korvel-label-203", ""},
      {"korvel-label-300", ""},
      {"korvel-label-203", "HalftoneType=None"},
      {"korvel-label-300", "HalftoneType=None"},
      {"korvel-label-203", "Origin=Rotation180 PageSize=100x150mm"},
      {"korvel-label-300", "Origin=Rotation180 PageSize=100x150mm"},
  };
  for (const auto& c : kCases) {
    PreviewRunner runner;
    Words words = {"--pages",
                   "-p",
                   ppdOf(c.driver),
                   "--out",
                   runner.files().file("shown"),
                   exampleFile("label.pdf")};
    if (*c.options != '\0') words.insert(words.end(), {"-o", c.options});
    const CommandResult result = runner.preview(words);
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_EQ(codesIn(runner.files().file("shown/page-1.png")), kWant)
        << c.driver << " " << c.options;
  }
}

}  // namespace
