// The printer's program is looked for beside this one first, so that an installation works wherever
// it lies.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/emulated_queue.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <system_error>
#include <vector>

#include "tools/common/child_process.h"
#include "tools/common/installation.h"
#include "tools/common/translation.h"
#include "tools/description/description_text.h"

namespace fs = std::filesystem;

namespace korvel {

namespace {

bool isStencilPrinter(const std::string& description) {
  return description.find("*OpenUI *AntiWrinkle") != std::string::npos;
}

}  // namespace

std::string becomePrinter(const EmulatedPrinter& printer, const std::string& description) {
  const bool fine = keyword(description, "DefaultResolution").starts_with("300");
  std::vector<std::string> words = {"korvel-printer",
                                    "--port",
                                    std::to_string(printer.port),
                                    "--out",
                                    printer.folder,
                                    "--dpi",
                                    fine ? "300" : "203",
                                    "--media",
                                    isStencilPrinter(description) ? "sheet" : "gap"};
  if (printer.once) words.emplace_back("--once");
  const char* folder = printer.folder.c_str();
  const std::string what =
      printer.once ? filled("The emulated printer prints into %s and then ends.", folder)
                   : filled("The emulated printer prints into %s; Ctrl+C ends it.", folder);
  std::printf("%s\n", what.c_str());
  std::fflush(stdout);
  const std::vector<char*> pointers = execWords(words);
  execv((programFolder() + "/korvel-printer").c_str(), pointers.data());
  execvp(pointers[0], pointers.data());
  return translated("korvel-printer cannot be started; install printer-driver-korvel again.");
}

std::string testPage(const std::string& description) {
  const char* name = isStencilPrinter(description) ? "stencil.pdf" : "label.pdf";
  const std::string page = dataFolder() + "/examples/" + name;
  std::error_code fault;
  return fs::is_regular_file(page, fault) ? page : "";
}

}  // namespace korvel
