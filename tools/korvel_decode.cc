// korvel-decode: a printer command stream as text, a line a packet, and a picture a page.
// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tools/page_picture.h"
#include "tools/stream_decoder.h"
#include "tools/stream_listing.h"

namespace {

const char kUsage[] =
    "Usage: korvel-decode [OPTION]... [FILE]\n"
    "Checks a printer command stream and lists it, a line a packet with its offset.\n"
    "Reads standard input when FILE is - or not given.\n\n"
    "  --png PREFIX   write each printed page to PREFIX<number>.png, dots black\n"
    "  --pbm PREFIX   the same as PREFIX<number>.pbm\n"
    "  --dpi N        note N dots per inch in the PNG files\n"
    "  --quiet        no listing\n"
    "  --help, --version\n\n"
    "Status: 0 a well-formed stream, 1 a malformed or unreadable one, 2 wrong usage.\n";

struct Arguments {
  std::string png;
  std::string pbm;
  std::string input = "-";
  unsigned dpi = 0;
  bool quiet = false;
};

[[noreturn]] void usageError(const std::string& what) {
  std::fprintf(stderr, "korvel-decode: %s; see korvel-decode --help\n", what.c_str());
  std::exit(2);
}

unsigned parseDpi(const std::string& text) {
  char* end = nullptr;
  const unsigned long value = std::strtoul(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || value < 1 || value > 9999) {
    usageError("--dpi wants a number from 1 to 9999, have '" + text + "'");
  }
  return static_cast<unsigned>(value);
}

Arguments parseArguments(int argc, char** argv) {
  Arguments arguments;
  bool haveInput = false;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const auto value = [&]() -> std::string {
      if (++i >= argc) usageError(word + " wants a value");
      return argv[i];
    };
    if (word == "--help") {
      std::fputs(kUsage, stdout);
      std::exit(0);
    } else if (word == "--version") {
      std::puts("korvel-decode 1.0.0");
      std::exit(0);
    } else if (word == "--png") {
      arguments.png = value();
    } else if (word == "--pbm") {
      arguments.pbm = value();
    } else if (word == "--dpi") {
      arguments.dpi = parseDpi(value());
    } else if (word == "--quiet") {
      arguments.quiet = true;
    } else if (word.size() > 1 && word[0] == '-') {
      usageError("unknown option '" + word + "'");
    } else if (haveInput) {
      usageError("more than one file");
    } else {
      arguments.input = word;
      haveInput = true;
    }
  }
  return arguments;
}

// Writes a picture whenever a page with an image has ended.
class PictureWriter {
 public:
  explicit PictureWriter(const Arguments& arguments) : arguments_(arguments) {}

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
    if (!arguments_.png.empty()) {
      note(picture_.writePng(arguments_.png + number + ".png", arguments_.dpi));
    }
    if (!arguments_.pbm.empty()) note(picture_.writePbm(arguments_.pbm + number + ".pbm"));
  }

  bool failed() const { return failed_; }

 private:
  void note(const std::string& fault) {
    if (fault.empty()) return;
    std::fprintf(stderr, "korvel-decode: page %d: %s\n", page_, fault.c_str());
    if (picture_.rowBytes() != 0) failed_ = true;  // a stream may rightly leave its rows open
  }

  const Arguments& arguments_;
  korvel::PagePicture picture_;
  int page_ = 0;
  bool open_ = false;
  bool failed_ = false;
};

bool decode(std::FILE* input, const Arguments& arguments) {
  PictureWriter pictures(arguments);
  korvel::StreamListing listing([&](const std::string& line) {
    if (!arguments.quiet) std::printf("%s\n", line.c_str());
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
    std::fprintf(stderr, "korvel-decode: %s: %s\n", arguments.input.c_str(), std::strerror(reason));
  } else if (decoder.failed()) {
    std::fflush(stdout);
    std::fprintf(stderr, "korvel-decode: %s\n", decoder.error().c_str());
  }
  return !unreadable && !decoder.failed() && !pictures.failed();
}

}  // namespace

int main(int argc, char** argv) {
  const Arguments arguments = parseArguments(argc, argv);
  std::FILE* input = stdin;
  if (arguments.input != "-") input = std::fopen(arguments.input.c_str(), "rb");
  if (input == nullptr) {
    std::fprintf(stderr, "korvel-decode: %s: %s\n", arguments.input.c_str(), std::strerror(errno));
    return 1;
  }
  bool good = decode(input, arguments);
  if (input != stdin) std::fclose(input);
  if (std::fflush(stdout) != 0) {
    std::fprintf(stderr, "korvel-decode: cannot write the listing: %s\n", std::strerror(errno));
    good = false;
  }
  return good ? 0 : 1;
}
