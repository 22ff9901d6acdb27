// korvel-decode: a printer command stream as text, a line a packet, and a picture a page.
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

constexpr const char* kUsage = korvel::later(
    "Usage: korvel-decode [OPTION]... [FILE]\n"
    "Checks a printer command stream and lists it, a line a packet with its offset.\n"
    "Reads standard input when FILE is - or not given.\n\n"
    "  --png PREFIX   write each printed page to PREFIX<number>.png, dots black\n"
    "  --pbm PREFIX   the same as PREFIX<number>.pbm\n"
    "  --dpi N        note N dots per inch in the PNG files\n"
    "  -q, --quiet    no listing\n"
    "  --help, --version\n\n"
    "Status: 0 a well-formed stream, 1 a malformed or unreadable one, 2 wrong usage.\n");

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
  korvel::Arguments words(argc, argv, "korvel-decode", korvel::translated(kUsage));
  while (words.next()) {
    if (words.is("--png")) {
      request.png = words.value();
    } else if (words.is("--pbm")) {
      request.pbm = words.value();
    } else if (words.is("--dpi")) {
      request.dpi = static_cast<unsigned>(words.number(1, 9999));
    } else if (words.is("-q", "--quiet")) {
      request.quiet = true;
    } else if (words.isOption()) {
      words.unknown();
    } else if (haveInput) {
      words.wrong(korvel::translated("more than one file"));
    } else {
      request.input = words.word();
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
  void note(const std::string& fault) {
    if (fault.empty()) return;
    std::fprintf(stderr, "korvel-decode: page %d: %s\n", page_, fault.c_str());
    if (picture_.rowBytes() != 0) failed_ = true;  // a stream may rightly leave its rows open
  }

  const Request& request_;
  korvel::PagePicture picture_;
  int page_ = 0;
  bool open_ = false;
  bool failed_ = false;
};

bool decode(std::FILE* input, const Request& request) {
  PictureWriter pictures(request);
  korvel::StreamListing listing([&](const std::string& line) {
    if (!request.quiet) std::printf("%s\n", line.c_str());
  });
  korvel::StreamDecoder decoder([&](const korvel::StreamItem& item) {
    listing.add(item);
    pictures.add(item);
  });
  uint8_t bytes[65536];
  size_t count = 0;
  while ((count = std::fread(bytes, 1, sizeof bytes, input)) > 0 && decoder.push(bytes, count)) {
  }
  const bool unreadable = std::ferror(input) != 0;
  const int reason = errno;
  if (!unreadable) decoder.finish();
  listing.finish();
  pictures.finishPage();
  if (unreadable) {
    std::fprintf(stderr, "korvel-decode: %s: %s\n", request.input.c_str(), std::strerror(reason));
  } else if (decoder.failed()) {
    std::fflush(stdout);
    std::fprintf(stderr, "korvel-decode: %s\n", decoder.error().c_str());
  }
  return !unreadable && !decoder.failed() && !pictures.failed();
}

}  // namespace

int main(int argc, char** argv) {
  korvel::startTranslation();
  const Request request = parseArguments(argc, argv);
  std::FILE* input = stdin;
  if (request.input != "-") input = std::fopen(request.input.c_str(), "rb");
  if (input == nullptr) {
    std::fprintf(stderr, "korvel-decode: %s: %s\n", request.input.c_str(), std::strerror(errno));
    return 1;
  }
  bool good = decode(input, request);
  if (input != stdin) std::fclose(input);
  if (std::fflush(stdout) != 0) {
    std::fprintf(stderr, "korvel-decode: %s\n",
                 korvel::filled("cannot write the listing: %s", std::strerror(errno)).c_str());
    good = false;
  }
  return good ? 0 : 1;
}
