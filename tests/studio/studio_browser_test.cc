// The page in a headless browser, between the real server, a real print system and the emulated
// printer. What happens in the browser is in browser_test.mjs; each of its parts is a test here.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "tests/spooler/private_spooler.h"
#include "tests/studio/studio_process.h"
#include "tests/tools/emulator/printer_process.h"

namespace {

constexpr double kBrowserSeconds = 280;
constexpr int kSkipped = 77;

class StudioPage : public testing::TestWithParam<const char*> {};

TEST_P(StudioPage, InTheBrowser) {
  PrivateSpooler spooler;
  ASSERT_FALSE(HasFatalFailure());
  const ListeningPrinter labels(spooler.toolPath("korvel-printer"), {"--speed", "5000"});
  const ListeningPrinter stencils(spooler.toolPath("korvel-printer"),
                                  {"--dpi", "300", "--media", "sheet", "--speed", "5000"});
  spooler.addQueue("labels", "korvel-k220-203", labels.port());
  spooler.addQueue("stencils", "korvel-stencil-300", stencils.port());
  const StudioProcess studio(spooler.toolPath("korvel-studio"), {}, spooler.clientEnvironment());
  const CommandResult result =
      run({"node", KORVEL_SOURCE_DIR "/tests/studio/browser_test.mjs", GetParam()}, kBrowserSeconds,
          {{"STUDIO", studio.address()},
           {"EXAMPLES", KORVEL_SOURCE_DIR "/examples"},
           {"LABEL_PAGE", labels.pagePath(0)},
           {"LABEL_CONTROL", std::to_string(labels.controlPort())}});
  if (result.status == kSkipped) GTEST_SKIP() << result.output;
  EXPECT_EQ(result.status, 0) << result.output << "\n" << studio.output();
}

INSTANTIATE_TEST_SUITE_P(Parts, StudioPage,
                         testing::Values("controls", "input", "keyboard", "barcodes", "dots",
                                         "printing", "languages", "accessibility"),
                         [](const auto& part) { return std::string(part.param); });

}  // namespace
