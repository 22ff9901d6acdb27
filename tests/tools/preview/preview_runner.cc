// Every program gets a folder for the files that it leaves.
// SPDX-License-Identifier: Apache-2.0
#include "tests/tools/preview/preview_runner.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sstream>

#include "tests/spooler/picture.h"
#include "tests/support/raster_maker.h"

namespace {

constexpr double kSeconds = 300;  // on a slow build

std::string quoted(const std::string& word) {
  std::string text = "'";
  for (const char c : word) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return text + "'";
}

std::map<std::string, std::string> environment(const TemporaryFolder& files) {
  std::filesystem::create_directory(files.file("tmp"));
  std::filesystem::create_directory(files.file("dumps"));
  return {{"LD_PRELOAD", KORVEL_DIVERTED_FILES},
          {"KORVEL_SANDBOX", files.path()},
          {"TMPDIR", files.file("tmp")},
          {"ASAN_OPTIONS", "verify_asan_link_order=0:detect_leaks=0"}};
}

}  // namespace

CommandResult PreviewRunner::preview(const Words& arguments, const std::string& server) {
  std::map<std::string, std::string> variables = environment(files_);
  variables["CUPS_SERVER"] = server;
  Words words = {KORVEL_PREVIEW, "--filter", KORVEL_FILTER};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return run(words, kSeconds, variables);
}

CommandResult PreviewRunner::previewIn(const std::string& folder, const Words& arguments) {
  Words words = {"bash",     "-c",         "cd \"$0\" && exec \"$@\"", folder, KORVEL_PREVIEW,
                 "--filter", KORVEL_FILTER};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return run(words, kSeconds, environment(files_));
}

CommandResult PreviewRunner::started(const Words& words) {
  return run(words, kSeconds, environment(files_));
}

std::string PreviewRunner::print(const std::string& document, const std::string& description,
                                 const std::string& options, int copies, const Words& printer) {
  const std::string folder = files_.file("print-" + std::to_string(++prints_));
  std::ostringstream script;
  if (document.ends_with(".ras")) {
    script << "cat " << quoted(document);
  } else {
    script << "PATH=$PATH:/usr/sbin cupsfilter -p " << quoted(description)
           << " -m application/vnd.cups-raster -n " << copies << " -o " << quoted(options) << " "
           << quoted(document) << " 2> /dev/null";
  }
  script << " | " << KORVEL_SPOOL << " --filter " << KORVEL_FILTER << " --ppd "
         << quoted(description) << " --options " << quoted(options) << " --log /dev/null - | "
         << KORVEL_PRINTER << " --stdin --quiet --speed 100000 --out " << quoted(folder);
  for (const std::string& word : printer) script << " " << word;
  const CommandResult result =
      run({"bash", "-c", "set -o pipefail; " + script.str()}, kSeconds, environment(files_));
  EXPECT_EQ(result.status, 0) << result.output;
  return folder;
}

void expectCropped(const std::string& shownPath, const std::string& printedPath,
                   const LabelColumns& label) {
  constexpr size_t kOutline = 2;
  for (const auto& colour : {kBlack, kRed}) {
    const Picture printed = readPicture(printedPath, colour);
    const Picture shown = readPicture(shownPath, colour);
    const Picture want = printed.part(label.left, 0, label.width, printed.height);
    const Picture have = shown.part(kOutline, kOutline, label.width, printed.height);
    EXPECT_EQ(difference(have, want), "") << shownPath;
    if (colour != kBlack) continue;  // marks reach across the whole paper
    EXPECT_GT(want.printed(), 0u);
    EXPECT_EQ(printed.printed(), want.printed()) << "dots beside the label";
    EXPECT_EQ(shown.printed(), want.printed());
  }
  const Picture outline = readPicture(shownPath, kBlue);
  EXPECT_EQ(outline.width, label.width + 2 * kOutline);
  const size_t rows = outline.part(0, 0, kOutline, outline.height).printed() / kOutline;
  EXPECT_GT(rows, 2 * kOutline);
  EXPECT_EQ(outline.printed(), 2 * kOutline * (outline.width + rows - 2 * kOutline));
}

std::string ppdOf(const std::string& name) { return KORVEL_PPD_DIR "/" + name + ".ppd"; }

std::string exampleFile(const std::string& name) { return KORVEL_SOURCE_DIR "/examples/" + name; }

std::string rasterOf(const std::string& pageWords) {
  std::vector<RasterPage> pages;
  std::istringstream lines(pageWords);
  for (std::string line; std::getline(lines, line);) {
    pages.emplace_back();
    EXPECT_TRUE(parseRasterPage(line, &pages.back())) << line;
  }
  return makeRaster(pages);
}

std::string fileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return "(none)";
  return {std::istreambuf_iterator<char>(in), {}};
}
