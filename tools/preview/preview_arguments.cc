// Options as the print commands spell them.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview/preview_arguments.h"

#include "tools/common/translation.h"

namespace korvel {
namespace {

constexpr int kMostCopies = 9999;

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

bool takeFlag(const Arguments& words, PreviewArguments* arguments) {
  if (words.is("--halftones")) {
    arguments->halftones = true;
  } else if (words.is("--pages")) {
    arguments->pages = true;
  } else if (words.is("--stream")) {
    arguments->stream = true;
  } else {
    return false;
  }
  return true;
}

bool takeValued(Arguments* words, PreviewArguments* arguments) {
  if (words->is("-P", "-d")) {
    arguments->queue = words->text();
  } else if (words->is("-p")) {
    arguments->description = words->text();
  } else if (words->is("-o")) {
    arguments->options += (arguments->options.empty() ? "" : " ") + words->text();
  } else if (words->is("-n")) {
    arguments->copies = std::to_string(words->number(1, kMostCopies));
  } else if (words->is("--out")) {
    arguments->folder = words->text();
  } else if (words->is("--filter")) {
    arguments->filter = words->text();
  } else {
    return false;
  }
  return true;
}

void check(const Arguments& words, const PreviewArguments& arguments) {
  if (arguments.file.empty()) words.wrong(translated("which file?"));
  if (!arguments.queue.empty() && !arguments.description.empty()) {
    words.wrong(translated("-P and -p exclude each other"));
  }
  if (arguments.halftones && arguments.options.find("HalftoneType") != std::string::npos) {
    words.wrong(translated("--halftones shows them all: leave -o HalftoneType out"));
  }
  if (arguments.halftones && (arguments.pages || arguments.stream)) {
    words.wrong(translated("--halftones makes one picture: leave --pages and --stream out"));
  }
}

}  // namespace

const char* previewUsage() { return translated(kUsage); }

PreviewArguments parsePreviewArguments(Arguments* words) {
  PreviewArguments arguments;
  while (words->next()) {
    if (words->isOption()) {
      if (!takeFlag(*words, &arguments) && !takeValued(words, &arguments)) words->unknown();
    } else if (arguments.file.empty()) {
      arguments.file = words->word();
    } else {
      words->wrong(
          filled("more than one file: %s and %s", arguments.file.c_str(), words->word().c_str()));
    }
  }
  check(*words, arguments);
  return arguments;
}

}  // namespace korvel
