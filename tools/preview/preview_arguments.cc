// Options have the names that they have in print commands.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview/preview_arguments.h"

#include "tools/common/translation.h"

namespace korvel {
namespace {

constexpr int kMostCopies = 9999;

bool takeFlag(const Arguments& arguments, PreviewArguments* request) {
  if (arguments.is("--halftones")) {
    request->halftones = true;
  } else if (arguments.is("--pages")) {
    request->pages = true;
  } else if (arguments.is("--stream")) {
    request->stream = true;
  } else if (arguments.is("--force")) {
    request->force = true;
  } else {
    return false;
  }
  return true;
}

bool takeValued(Arguments* arguments, PreviewArguments* request) {
  if (arguments->is("-P", "-d")) {
    request->queue = arguments->nonEmptyValue();
  } else if (arguments->is("-p", "-m")) {
    request->description = arguments->nonEmptyValue();
  } else if (arguments->is("-o")) {
    request->options += (request->options.empty() ? "" : " ") + arguments->nonEmptyValue();
  } else if (arguments->is("-n")) {
    request->copies = std::to_string(arguments->number(1, kMostCopies));
  } else if (arguments->is("--out")) {
    request->folder = arguments->nonEmptyValue();
  } else if (arguments->is("--filter")) {
    request->filter = arguments->nonEmptyValue();
  } else {
    return false;
  }
  return true;
}

void check(const Arguments& arguments, const PreviewArguments& request) {
  if (request.file.empty()) arguments.wrong(translated("no file given"));
  if (!request.queue.empty() && !request.description.empty()) {
    arguments.wrong(translated("-P and -p cannot be combined"));
  }
  if (request.halftones && request.options.find("HalftoneType") != std::string::npos) {
    arguments.wrong(translated("--halftones shows all of them; remove -o HalftoneType"));
  }
  if (request.halftones && (request.pages || request.stream)) {
    arguments.wrong(translated("--halftones cannot be combined with --pages and --stream"));
  }
}

}  // namespace

const Help kPreviewHelp = {
    later("Usage: korvel-preview [OPTION]... FILE"),
    later("Shows dot for dot how a PDF, PNG, JPEG, TIFF, text or CUPS raster file will be printed, "
          "as one "
          "PNG per sheet. Needs no printer and prints nothing."),
    {later("-P, -d QUEUE\tUse this queue with its defaults."),
     later("-p, -m PPD\tUse this PPD: a file, or an installed driver, such as z4 (label-203)."),
     later("-o OPTION=VALUE\tA job option, as for lp; may be repeated."),
     later("-n COPIES\tNumber of copies (1)."),
     later("--halftones\tCompare the ten halftones in one picture of the first page."),
     later("--pages\tShow only the dots of the pages, without the paper around them."),
     later("--out DIR\tWrite to DIR/sheet-<number>.png, DIR/page-<number>.png or "
           "DIR/halftones.png (preview)."),
     later("--stream\tAlso write the printer's bytes, their listing and the filter's messages to "
           "DIR/stream.bin, DIR/stream.txt and DIR/messages.txt."),
     later("--force\tReplace files that no preview has made."),
     later("--filter PATH\tUse this filter instead of the installed one.")},
    nullptr,
    {},
    later("Exit status: 0 success, 1 the file cannot be shown, 2 wrong usage.")};

PreviewArguments parsePreviewArguments(Arguments* arguments) {
  PreviewArguments request;
  while (arguments->next()) {
    if (arguments->isOption()) {
      if (!takeFlag(*arguments, &request) && !takeValued(arguments, &request)) arguments->unknown();
    } else if (request.file.empty()) {
      request.file = arguments->text();
    } else {
      arguments->wrong(
          filled("more than one file: %s and %s", request.file.c_str(), arguments->text().c_str()));
    }
  }
  check(*arguments, request);
  return request;
}

}  // namespace korvel
