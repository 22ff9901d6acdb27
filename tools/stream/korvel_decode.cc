// korvel-decode: lists a printer command stream as text, one line per packet, and draws its pages.
// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "tools/common/arguments.h"
#include "tools/common/translation.h"
#include "tools/stream/page_picture.h"
#include "tools/stream/stream_decoder.h"
#include "tools/stream/stream_listing.h"

namespace {

using korvel::Failure;
using korvel::filled;
using korvel::later;
using korvel::Result;

constexpr char kProgram[] = "korvel-decode";

const korvel::Help kHelp = {
    later("Usage: korvel-decode [OPTION]... [FILE]"),
    later("Checks a printer command stream and lists it, one line per packet with its offset. "
          "Reads standard input when FILE is - or missing."),
    {later("--png PREFIX\tWrite each page to PREFIX<number>.png, with black dots."),
     later("--pbm PREFIX\tWrite each page to PREFIX<number>.pbm."),
     later("--dpi N\tRecord N dots per inch in the PNG files."),
     later("-q, --quiet\tList nothing.")},
    nullptr,
    {},
    later("Exit status: 0 the stream is well-formed, 1 it is malformed or cannot be read, 2 wrong "
          "usage.")};

struct Request {
  std::string png;
  std::string pbm;
  std::string input = "-";
  unsigned dpi = 0;
  bool quiet = false;
};

Request parseArguments(int argc, char** argv) {
  Request request;
  bool haveInput = false;
  korvel::Arguments arguments(argc, argv, kProgram, kHelp);
  while (arguments.next()) {
    if (arguments.is("--png")) {
      request.png = arguments.value();
    } else if (arguments.is("--pbm")) {
      request.pbm = arguments.value();
    } else if (arguments.is("--dpi")) {
      request.dpi = static_cast<unsigned>(arguments.number(1, 9999));
    } else if (arguments.is("-q", "--quiet")) {
      request.quiet = true;
    } else if (arguments.isOption()) {
      arguments.unknown();
    } else if (haveInput) {
      arguments.wrong(korvel::translated("more than one file"));
    } else {
      request.input = arguments.text();
      haveInput = true;
    }
  }
  return request;
}

// Writes a picture whenever a page with an image has ended.
class PictureWriter {
 public:
  explicit PictureWriter(const Request& request) : request_(request) {}

  void add(const korvel::StreamItem& item) {
    using korvel::ItemKind;
    if (item.kind == ItemKind::kPageStart || item.kind == ItemKind::kArea) finishPage();
    if (item.kind == ItemKind::kArea) {
      picture_.begin(item);
      open_ = true;
    }
    if (item.kind == ItemKind::kImage && open_) picture_.add(item);
  }

  void finishPage() {
    if (!open_) return;
    open_ = false;
    ++page_;
    const std::string number = std::to_string(page_);
    if (!request_.png.empty()) {
      note(picture_.writePng(request_.png + number + ".png", request_.dpi));
    }
    if (!request_.pbm.empty()) note(picture_.writePbm(request_.pbm + number + ".pbm"));
  }

  bool failed() const { return failed_; }

 private:
  void note(const Result<void>& written) {
    if (written) return;
    std::fprintf(stderr, "%s: page %d: %s\n", kProgram, page_, written.sentence().c_str());
    if (picture_.rowBytes() != 0) failed_ = true;  // a valid stream may leave the rows open
  }

  const Request& request_;
  korvel::PagePicture picture_;
  int page_ = 0;
  bool open_ = false;
  bool failed_ = false;
};

Failure cannotRead(const std::string& path) {
  return {filled("Cannot read %s: %s.", path.c_str(), std::strerror(errno))};
}

// Lists what it can, also of a malformed stream. True when all pictures have been written.
Result<bool> decode(std::FILE* input, const Request& request) {
  PictureWriter pictures(request);
  korvel::StreamListing listing([&](const std::string& line) {
    if (!request.quiet) std::printf("%s\n", line.c_str());
  });
  korvel::StreamDecoder decoder([&](const korvel::StreamItem& item) {
    listing.add(item);
    pictures.add(item);
  });
  Result<void> read;
  uint8_t bytes[65536];
  size_t count = 0;
  while ((count = std::fread(bytes, 1, sizeof bytes, input)) > 0 && decoder.push(bytes, count)) {
  }
  if (std::ferror(input) != 0) {
    read = cannotRead(request.input);
  } else if (!decoder.finish()) {
    read = Failure{decoder.error()};
  }
  listing.finish();
  pictures.finishPage();
  if (!read) return read.failure();
  return !pictures.failed();
}

Result<bool> run(const Request& request) {
  std::FILE* input = request.input == "-" ? stdin : std::fopen(request.input.c_str(), "rb");
  if (input == nullptr) return cannotRead(request.input);
  const Result<bool> decoded = decode(input, request);
  if (input != stdin) std::fclose(input);
  if (decoded && std::fflush(stdout) != 0) {
    return Failure{filled("Cannot write the listing: %s.", std::strerror(errno))};
  }
  return decoded;
}

}  // namespace

int main(int argc, char** argv) {
  korvel::startTranslation();
  const Result<bool> decoded = run(parseArguments(argc, argv));
  if (!decoded) return korvel::reportFailure(kProgram, decoded.sentence());
  return decoded.value() ? 0 : 1;
}
