// Options as the print commands spell them.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview_arguments.h"

#include <cstdio>
#include <cstdlib>
#include <map>

#include "tools/translation.h"

namespace korvel {
namespace {

constexpr const char* kUsage = later(
    "Usage: korvel-preview [OPTION]... FILE\n"
    "Shows what a PDF, PNG, JPEG, text or CUPS raster file will look like in print, dot for dot,\n"
    "as a PNG picture a sheet. Needs no printer and prints nothing.\n\n"
    "  -P, -d QUEUE     as this queue of the spooler prints, with its defaults\n"
    "  -p PPD           as the printer of this description: a file, or the name of an\n"
    "                   installed one (korvel-label-203)\n"
    "  -o OPTION=VALUE  a job option, as for lp; may be given more than once\n"
    "  -n COPIES        that many copies\n"
    "  --halftones      one picture that compares the ten halftones on the first page\n"
    "  --pages          the page's dots alone, without the paper around them\n"
    "  --out DIR        write to DIR/sheet-<number>.png, DIR/page-<number>.png or\n"
    "                   DIR/halftones.png (preview)\n"
    "  --stream         also the printer's bytes, the same as text and the filter's messages:\n"
    "                   DIR/stream.bin, stream.txt and messages.txt\n"
    "  --filter PATH    this filter in place of the installed one\n"
    "  --help, --version\n\n"
    "Status: 0 done, 1 it cannot be shown, 2 wrong usage.\n");

bool isCopies(const std::string& text) {
  return !text.empty() && text.size() <= 4 && text[0] != '0' &&
         text.find_first_not_of("0123456789") == std::string::npos;
}

void check(const PreviewArguments& arguments) {
  if (arguments.file.empty()) previewUsageError(translated("which file?"));
  if (!arguments.queue.empty() && !arguments.description.empty()) {
    previewUsageError(translated("-P and -p exclude each other"));
  }
  if (!isCopies(arguments.copies)) {
    previewUsageError(filled("%s wants a number from %d to %d, have '%s'", "-n", 1, 9999,
                             arguments.copies.c_str()));
  }
  if (arguments.halftones && arguments.options.find("HalftoneType") != std::string::npos) {
    previewUsageError(translated("--halftones shows them all: leave -o HalftoneType out"));
  }
  if (arguments.halftones && (arguments.pages || arguments.stream)) {
    previewUsageError(translated("--halftones makes one picture: leave --pages and --stream out"));
  }
}

}  // namespace

void previewUsageError(const std::string& what) {
  std::fprintf(
      stderr, "%s\n",
      filled("%s: %s; see %s --help", "korvel-preview", what.c_str(), "korvel-preview").c_str());
  std::exit(2);
}

PreviewArguments parsePreviewArguments(int argc, char** argv) {
  PreviewArguments arguments;
  const std::map<std::string, std::string*> texts = {
      {"-P", &arguments.queue},       {"-d", &arguments.queue},     {"-n", &arguments.copies},
      {"-p", &arguments.description}, {"--out", &arguments.folder}, {"--filter", &arguments.filter},
  };
  const std::map<std::string, bool*> switches = {{"--halftones", &arguments.halftones},
                                                 {"--pages", &arguments.pages},
                                                 {"--stream", &arguments.stream}};
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const auto value = [&]() -> std::string {
      if (++i >= argc || *argv[i] == '\0')
        previewUsageError(filled("%s wants a value", word.c_str()));
      return argv[i];
    };
    if (word == "--help") {
      std::fputs(translated(kUsage), stdout);
      std::exit(0);
    } else if (word == "--version") {
      std::puts("korvel-preview 1.0.0");
      std::exit(0);
    } else if (texts.contains(word)) {
      *texts.at(word) = value();
    } else if (switches.contains(word)) {
      *switches.at(word) = true;
    } else if (word == "-o") {
      arguments.options += (arguments.options.empty() ? "" : " ") + value();
    } else if (word.starts_with("-")) {
      previewUsageError(filled("unknown option '%s'", word.c_str()));
    } else if (!arguments.file.empty()) {
      previewUsageError(
          filled("more than one file: %s and %s", arguments.file.c_str(), word.c_str()));
    } else {
      arguments.file = word;
    }
  }
  check(arguments);
  return arguments;
}

}  // namespace korvel
