// Encoders of the simplest kind: nothing is compressed where a format allows that.
// SPDX-License-Identifier: Apache-2.0
#include "tests/barcodes/picture_files.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <stdexcept>

#include "tests/ppd/descriptions.h"
#include "tests/support/temporary_folder.h"
#include "tools/common/png_file.h"

namespace {

std::string little(uint32_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i) & 255);
  return text;
}

uint32_t number(int value) { return static_cast<uint32_t>(value); }

std::string greyRows(const PixelPicture& picture) {
  std::string rows;
  for (const bool dark : picture.dark) rows += dark ? '\0' : '\xFF';
  return rows;
}

// Leftmost pixel in the top bit, rows of whole bytes; 1 is dark.
std::string bitRows(const PixelPicture& picture) {
  std::string rows;
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; x += 8) {
      int byte = 0;
      for (int bit = 0; bit < 8; ++bit) {
        byte = byte * 2 + (x + bit < picture.width && picture.at(x + bit, y) ? 1 : 0);
      }
      rows += static_cast<char>(byte);
    }
  }
  return rows;
}

std::string png(const PixelPicture& picture, unsigned dpi) {
  const TemporaryFolder folder;
  const std::string rows = bitRows(picture);
  korvel::PngPicture file{};
  file.width = static_cast<size_t>(picture.width);
  file.height = static_cast<size_t>(picture.height);
  file.stride = (file.width + 7) / 8;
  file.bitsPerDot = 1;
  file.dpi = dpi;
  const korvel::Result<void> written = korvel::writePngFile(
      folder.file("picture.png"), file, reinterpret_cast<const uint8_t*>(rows.data()));
  if (!written.ok()) throw std::runtime_error(written.sentence());
  return folder.read("picture.png");
}

std::string pngWithoutDensity(const PixelPicture& picture, unsigned) { return png(picture, 0); }

std::string jpeg(const PixelPicture& picture, unsigned) {
  const TemporaryFolder folder;
  const std::string grey = folder.write("picture.pgm", "P5 " + std::to_string(picture.width) + " " +
                                                           std::to_string(picture.height) +
                                                           " 255\n" + greyRows(picture));
  return runCommand("cjpeg -quality 95 -grayscale " + quoted(grey)).output;
}

// One strip of 8-bit grey.
std::string tiff(const PixelPicture& picture, unsigned dpi) {
  struct Entry {
    uint32_t tag, kind, count, value;
  };
  constexpr uint32_t kShort = 3;
  constexpr uint32_t kLong = 4;
  constexpr uint32_t kRational = 5;
  constexpr uint32_t kEntries = 12;
  constexpr uint32_t kDensity = 8 + 2 + kEntries * 12 + 4;
  constexpr uint32_t kPixels = kDensity + 8;
  const Entry entries[kEntries] = {
      {256, kLong, 1, number(picture.width)},
      {257, kLong, 1, number(picture.height)},
      {258, kShort, 1, 8},
      {259, kShort, 1, 1},  // not compressed
      {262, kShort, 1, 1},  // 0 is black
      {273, kLong, 1, kPixels},
      {277, kShort, 1, 1},
      {278, kLong, 1, number(picture.height)},
      {279, kLong, 1, number(picture.width * picture.height)},
      {282, kRational, 1, kDensity},
      {283, kRational, 1, kDensity},
      {296, kShort, 1, 2},  // per inch
  };
  std::string file = "II*" + std::string(1, '\0') + little(8, 4) + little(kEntries, 2);
  for (const Entry& e : entries) {
    file += little(e.tag, 2) + little(e.kind, 2) + little(e.count, 4) + little(e.value, 4);
  }
  return file + little(0, 4) + little(dpi, 4) + little(1, 4) + greyRows(picture);
}

// Codes of 8 bits: with 128 colours they stay that long when the table is cleared in time.
std::string gif(const PixelPicture& picture, unsigned) {
  std::string codes;
  for (size_t i = 0; i < picture.dark.size(); ++i) {
    if (i % 120 == 0) codes += '\x80';  // clear
    codes += picture.dark[i] ? '\0' : '\1';
  }
  codes += '\x81';  // end
  std::string file = "GIF89a" + little(number(picture.width), 2) +
                     little(number(picture.height), 2) + "\xF6" + std::string(2, '\0');
  file += std::string(3, '\0') + std::string(127 * 3, '\xFF');
  file += "," + std::string(4, '\0') + little(number(picture.width), 2) +
          little(number(picture.height), 2) + std::string(1, '\0') + "\x07";
  for (size_t at = 0; at < codes.size(); at += 255) {
    const std::string block = codes.substr(at, 255);
    file += little(static_cast<uint32_t>(block.size()), 1) + block;
  }
  return file + std::string(1, '\0') + ";";
}

// 24 bits per pixel, rows from the bottom, each of whole 32-bit words.
std::string bmp(const PixelPicture& picture, unsigned dpi) {
  const uint32_t perMetre = static_cast<uint32_t>(std::lround(dpi / 0.0254));
  const int stride = (picture.width * 3 + 3) / 4 * 4;
  constexpr uint32_t kPixels = 14 + 40;
  std::string file = "BM" + little(kPixels + number(stride * picture.height), 4) + little(0, 4) +
                     little(kPixels, 4);
  file += little(40, 4) + little(number(picture.width), 4) + little(number(picture.height), 4) +
          little(1, 2) + little(24, 2) + little(0, 4) + little(0, 4) + little(perMetre, 4) +
          little(perMetre, 4) + little(0, 4) + little(0, 4);
  for (int y = picture.height - 1; y >= 0; --y) {
    std::string row;
    for (int x = 0; x < picture.width; ++x) row.append(3, picture.at(x, y) ? '\0' : '\xFF');
    row.resize(static_cast<size_t>(stride), '\0');
    file += row;
  }
  return file;
}

std::string points(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.4f", value);
  return text;
}

std::string pdf(const PixelPicture& picture, unsigned dpi) {
  const std::string width = points(picture.width * 72.0 / dpi);
  const std::string height = points(picture.height * 72.0 / dpi);
  const std::string drawing = "q " + width + " 0 0 " + height + " 0 0 cm /P Do Q\n";
  const std::string rows = bitRows(picture);
  return "%PDF-1.4\n1 0 obj <</Type /Catalog /Pages 2 0 R>> endobj\n"
         "2 0 obj <</Type /Pages /Kids [3 0 R] /Count 1>> endobj\n"
         "3 0 obj <</Type /Page /Parent 2 0 R /MediaBox [0 0 " +
         width + " " + height +
         "] /Contents 4 0 R /Resources <</XObject <</P 5 0 R>>>>>> endobj\n4 0 obj <</Length " +
         std::to_string(drawing.size()) + ">> stream\n" + drawing +
         "endstream endobj\n5 0 obj <</Type /XObject /Subtype /Image /Width " +
         std::to_string(picture.width) + " /Height " + std::to_string(picture.height) +
         " /ColorSpace /DeviceGray /BitsPerComponent 1 /Decode [1 0] /Length " +
         std::to_string(rows.size()) + ">> stream\n" + rows +
         "\nendstream endobj\ntrailer <</Root 1 0 R>>\n";
}

}  // namespace

PixelPicture pattern(int width, int height) {
  PixelPicture picture{width, height, {}};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const bool edge = x == 0 || y == 0 || x == width - 1 || y == height - 1;
      // Fields of 32 pixels, each with bars of its own width and direction.
      const int field = x / 32 + 3 * (y / 32);
      const int bar = 1 + field / 2 % 4;
      const int along = field % 2 == 0 ? x : y;
      picture.dark.push_back(edge || along / bar % 2 == 0);
    }
  }
  return picture;
}

const std::vector<PictureFormat>& pictureFormats() {
  static const std::vector<PictureFormat> kAll = {
      {"Png", "image/png", png},       {"PngWithoutDensity", "image/png", pngWithoutDensity},
      {"Jpeg", "image/jpeg", jpeg},    {"Tiff", "image/tiff", tiff},
      {"Gif", "image/gif", gif},       {"Bmp", "image/x-bitmap", bmp},
      {"Pdf", "application/pdf", pdf},
  };
  return kAll;
}
