// Raster streams are written without a library, uncompressed, so that invalid headers are possible.
// Noise comes from a 64-bit linear congruential generator (Knuth's constants).
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/raster_maker.h"

#include <cups/raster.h>

#include <algorithm>
#include <cstring>
#include <sstream>

namespace {

class Noise {
 public:
  explicit Noise(uint64_t seed) : state_(seed) {}
  // Returns 0 to below - 1.
  uint32_t next(uint32_t below) {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    return static_cast<uint32_t>(state_ >> 33) % below;
  }

 private:
  uint64_t state_;
};

uint32_t lineBytes(const RasterPage& page) {
  if (page.bytesPerLine != 0) return page.bytesPerLine;
  return (page.width * page.bitsPerPixel + 7) / 8 + page.padding;
}

// A canvas with one byte per pixel.
struct Canvas {
  uint32_t width;
  uint32_t height;
  uint32_t stride;
  std::string bytes;

  void set(uint32_t x, uint32_t y, uint32_t level) {
    if (x < width && y < height) bytes[size_t{y} * stride + x] = static_cast<char>(level);
  }
  void fill(uint32_t level) {
    for (uint32_t y = 0; y < height; ++y) {
      for (uint32_t x = 0; x < width; ++x) set(x, y, level);
    }
  }
};

void paintRamp(Canvas* canvas, bool down) {
  const uint32_t last = std::max(1u, (down ? canvas->height : canvas->width) - 1);
  for (uint32_t y = 0; y < canvas->height; ++y) {
    for (uint32_t x = 0; x < canvas->width; ++x) canvas->set(x, y, (down ? y : x) * 255 / last);
  }
}

void paintNoise(Canvas* canvas, uint64_t seed, uint32_t lowest, uint32_t levels) {
  Noise noise(seed);
  for (uint32_t y = 0; y < canvas->height; ++y) {
    for (uint32_t x = 0; x < canvas->width; ++x) canvas->set(x, y, lowest + noise.next(levels));
  }
}

void paintChecker(Canvas* canvas, uint32_t cell) {
  for (uint32_t y = 0; y < canvas->height; ++y) {
    for (uint32_t x = 0; x < canvas->width; ++x) {
      canvas->set(x, y, (x / cell + y / cell) % 2 != 0 ? 255 : 0);
    }
  }
}

// Horizontal and vertical strokes, similar to text seen from a distance.
void paintText(Canvas* canvas, uint64_t seed) {
  Noise noise(seed);
  const uint32_t strokes = std::max(1u, canvas->width * canvas->height / 40);
  for (uint32_t i = 0; i < strokes; ++i) {
    const uint32_t left = noise.next(canvas->width);
    const uint32_t top = noise.next(canvas->height);
    const bool across = noise.next(2) == 0;
    const uint32_t length = 4 + noise.next(9);
    for (uint32_t k = 0; k < 2 * length; ++k) {
      const uint32_t along = k / 2;
      canvas->set(left + (across ? along : k % 2), top + (across ? k % 2 : along), 255);
    }
  }
}

void paintAlmostSolid(Canvas* canvas, uint64_t seed) {
  Noise noise(seed);
  canvas->fill(noise.next(256));
  for (int i = 0; i < 3; ++i) {
    const uint32_t x = noise.next(canvas->width);
    const uint32_t y = noise.next(canvas->height);
    canvas->set(x, y, noise.next(256));
  }
}

void paint(Canvas* canvas, const std::string& picture) {
  const size_t colon = picture.find(':');
  const std::string kind = picture.substr(0, colon);
  const uint32_t number =
      colon == std::string::npos ? 0 : static_cast<uint32_t>(std::stoul(picture.substr(colon + 1)));
  if (kind == "black") canvas->fill(255);
  if (kind == "level") canvas->fill(number);
  if (kind == "ramp") paintRamp(canvas, false);
  if (kind == "rampdown") paintRamp(canvas, true);
  if (kind == "noise") paintNoise(canvas, number, 0, 256);
  if (kind == "flat") paintNoise(canvas, number, 118, 4);
  if (kind == "checker") paintChecker(canvas, std::max(1u, number));
  if (kind == "text") paintText(canvas, number);
  if (kind == "almost") paintAlmostSolid(canvas, number);
}

void appendHeader(const RasterPage& page, std::string* out) {
  cups_page_header2_t header;
  std::memset(&header, 0, sizeof header);
  header.HWResolution[0] = page.resolutionX;
  header.HWResolution[1] = page.resolutionY;
  header.NumCopies = page.copies;
  header.cupsWidth = page.width;
  header.cupsHeight = page.height;
  header.cupsBitsPerColor = std::min(page.bitsPerPixel, 8u);
  header.cupsBitsPerPixel = page.bitsPerPixel;
  header.cupsBytesPerLine = lineBytes(page);
  header.cupsColorSpace = CUPS_CSPACE_K;
  header.cupsNumColors = 1;
  std::strncpy(header.cupsPageSizeName, page.sizeName.c_str(), sizeof header.cupsPageSizeName - 1);
  out->append(reinterpret_cast<const char*>(&header), sizeof header);
}

bool parseNumber(const std::string& text, uint32_t* number) {
  if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) return false;
  *number = static_cast<uint32_t>(std::stoul(text));
  return true;
}

// "40x20", or "40" for both when `alone` is allowed.
bool parsePair(const std::string& text, bool alone, uint32_t* first, uint32_t* second) {
  const size_t cross = text.find('x');
  if (cross == std::string::npos) {
    return alone && parseNumber(text, first) && parseNumber(text, second);
  }
  return parseNumber(text.substr(0, cross), first) && parseNumber(text.substr(cross + 1), second);
}

bool knownPicture(const std::string& picture) {
  static const char* const kKinds[] = {"white", "black",   "level", "ramp",   "rampdown",
                                       "noise", "checker", "text",  "almost", "flat"};
  const std::string kind = picture.substr(0, picture.find(':'));
  return std::find(std::begin(kKinds), std::end(kKinds), kind) != std::end(kKinds);
}

bool parseSetting(const std::string& key, const std::string& value, RasterPage* page) {
  if (key == "pad") return parseNumber(value, &page->padding);
  if (key == "copies") return parseNumber(value, &page->copies);
  if (key == "bpp") return parseNumber(value, &page->bitsPerPixel);
  if (key == "line") return parseNumber(value, &page->bytesPerLine);
  if (key == "cut") {
    uint32_t bytes = 0;
    if (!parseNumber(value, &bytes)) return false;
    page->pixelBytes = bytes;
    return true;
  }
  if (key == "size") {
    page->sizeName = value;
    return true;
  }
  page->picture = value;
  return key == "picture" && knownPicture(value);
}

}  // namespace

bool parseRasterPage(const std::string& words, RasterPage* page) {
  *page = RasterPage{};
  std::istringstream in(words);
  std::string size;
  std::string resolution;
  in >> size >> resolution;
  if (!resolution.ends_with("dpi")) return false;
  resolution.resize(resolution.size() - 3);
  if (!parsePair(size, false, &page->width, &page->height)) return false;
  if (!parsePair(resolution, true, &page->resolutionX, &page->resolutionY)) return false;
  for (std::string word; in >> word;) {
    const size_t equals = word.find('=');
    if (equals == std::string::npos) return false;
    if (!parseSetting(word.substr(0, equals), word.substr(equals + 1), page)) return false;
  }
  return true;
}

std::string paintPage(const RasterPage& page) {
  const uint32_t stride = lineBytes(page);
  Canvas canvas{page.width, page.height, stride, std::string(size_t{stride} * page.height, '\0')};
  Noise noise(99);
  for (uint32_t y = 0; y < page.height; ++y) {
    for (uint32_t x = page.width; x < stride; ++x) {
      canvas.bytes[size_t{y} * stride + x] = static_cast<char>(noise.next(256));
    }
  }
  paint(&canvas, page.picture);
  return canvas.bytes;
}

std::string makeRaster(const std::vector<RasterPage>& pages) {
  const uint32_t sync = CUPS_RASTER_SYNC;
  std::string out(reinterpret_cast<const char*>(&sync), sizeof sync);
  for (const RasterPage& page : pages) {
    appendHeader(page, &out);
    if (page.pixelBytes == 0) continue;
    std::string pixels;
    if (page.bitsPerPixel == 8 && lineBytes(page) >= page.width) {
      pixels = paintPage(page);
    } else {
      pixels.assign(size_t{lineBytes(page)} * page.height, '\x55');
    }
    if (page.pixelBytes >= 0) pixels.resize(static_cast<size_t>(page.pixelBytes));
    out += pixels;
  }
  return out;
}
