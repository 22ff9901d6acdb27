// korvel-printer is looked for in this program's folder first, so that an installation works below
// any prefix.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/emulated_queue.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <system_error>
#include <vector>

#include "tools/common/installation.h"
#include "tools/common/process.h"
#include "tools/common/translation.h"
#include "tools/description/description_text.h"

namespace fs = std::filesystem;

namespace korvel {

Failure becomePrinter(const EmulatedPrinter& printer, const std::string& description) {
  const std::string out = printer.folder.empty() ? "sheets" : printer.folder;
  const bool fine = keyword(description, "DefaultResolution").starts_with("300");
  std::vector<std::string> arguments = {"korvel-printer",
                                        "--port",
                                        std::to_string(printer.port),
                                        "--out",
                                        out,
                                        "--dpi",
                                        fine ? "300" : "203",
                                        "--media",
                                        takesSingleSheets(description) ? "sheet" : "gap"};
  if (printer.once) arguments.emplace_back("--once");
  const char* folder = out.c_str();
  const std::string what =
      printer.once
          ? filled("The emulated printer writes its sheets to %s and then exits.", folder)
          : filled("The emulated printer writes its sheets to %s; stop it with Ctrl+C.", folder);
  std::printf("%s\n", what.c_str());
  std::fflush(stdout);
  const std::vector<char*> pointers = execPointers(arguments);
  execv((programFolder() + "/korvel-printer").c_str(), pointers.data());
  execvp(pointers[0], pointers.data());
  return {translated("Cannot start korvel-printer; reinstall the package printer-driver-korvel.")};
}

Result<std::string> testPage(const std::string& description) {
  const char* name = takesSingleSheets(description) ? "stencil.pdf" : "label.pdf";
  const std::string page = dataFolder() + "/examples/" + name;
  std::error_code fault;
  if (fs::is_regular_file(page, fault)) return page;
  return Failure{
      translated("The test pages are not installed; print a document of your own with lp.")};
}

}  // namespace korvel
