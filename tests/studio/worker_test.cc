// The worker as the server starts it: what it reads from uploads, and how it ends on broken ones.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "studio/sentences.h"
#include "tests/spooler/documents.h"
#include "tests/spooler/guarded_process.h"
#include "tests/studio/uploads.h"
#include "tests/support/temporary_folder.h"

namespace {

using nlohmann::json;

struct Import {
  json answer;
  std::string grey;  // the PGM file
};

Import import(const std::string& upload) {
  const TemporaryFolder folder;
  const CommandResult result =
      run({KORVEL_STUDIO_WORKER, "import", folder.write("upload", upload), folder.file("grey")});
  return {json::parse(result.output, nullptr, false), folder.read("grey")};
}

std::string codeOf(const Import& made) {
  return made.answer.contains("error") ? korvel::codeOf(made.answer["error"]) : "";
}

// The quarters' greys, upper left first: '#' is black.
std::string quarters(const Import& made) {
  const size_t width = made.answer.value("width", size_t{0});
  const size_t height = made.answer.value("height", size_t{0});
  const size_t start = made.grey.size() - width * height;
  std::string text;
  for (const size_t y : {height / 4, height * 3 / 4}) {
    for (const size_t x : {width / 4, width * 3 / 4}) {
      text += static_cast<unsigned char>(made.grey[start + y * width + x]) < 128 ? '#' : '.';
    }
  }
  return text;
}

TEST(StudioWorker, TurnsJpegUprightByItsOrientationTag) {
  const struct {
    unsigned orientation;
    unsigned width, height;
    const char* quarters;  // upper left, upper right, lower left, lower right
  } kCases[] = {
      {1, 32, 16, "#..."}, {2, 32, 16, ".#.."}, {3, 32, 16, "...#"}, {4, 32, 16, "..#."},
      {5, 16, 32, "#..."}, {6, 16, 32, ".#.."}, {7, 16, 32, "...#"}, {8, 16, 32, "..#."},
      {0, 32, 16, "#..."}, {9, 32, 16, "#..."},
  };
  for (const auto& c : kCases) {
    const Import made = import(orientedJpeg(c.orientation));
    EXPECT_EQ(made.answer.value("width", 0u), c.width) << c.orientation;
    EXPECT_EQ(made.answer.value("height", 0u), c.height) << c.orientation;
    EXPECT_EQ(quarters(made), c.quarters) << c.orientation;
  }
}

TEST(StudioWorker, ReadsSizesAndResolutions) {
  const Import png = import(noisyPng(30, 20, 1, 254));
  EXPECT_EQ(png.answer["kind"], "picture");
  EXPECT_EQ(png.answer["width"], 30);
  EXPECT_EQ(png.answer["height"], 20);
  EXPECT_NEAR(png.answer["dpi"].get<double>(), 254, 0.1);
  EXPECT_EQ(import(noisyPng(30, 20, 1)).answer["dpi"], 0.0);
  const Import pdf = import(makePdf({{72, 144, "0 g 0 0 10 10 re f"}, {200, 100, ""}}));
  EXPECT_EQ(pdf.answer["kind"], "pdf");
  EXPECT_EQ(pdf.answer["pages"], (json{{72.0, 144.0}, {200.0, 100.0}}));
}

std::string little(uint32_t value, size_t bytes) {
  std::string text;
  for (size_t i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i) & 255);
  return text;
}

struct TiffEntry {
  uint32_t tag;
  uint32_t value;
};

// A TIFF of one directory, whose pixels are the 64 bytes at its end.
std::string tiff(std::vector<TiffEntry> entries, uint32_t next = 0) {
  const auto offset = static_cast<uint32_t>(8 + 2 + 12 * (entries.size() + 2) + 4);
  entries.push_back({273, offset});  // where the pixels begin
  entries.push_back({279, 64});      // their bytes
  std::string text = std::string("II*\0", 4) + little(8, 4);
  text += little(static_cast<uint32_t>(entries.size()), 2);
  for (const TiffEntry& entry : entries) {
    text += little(entry.tag, 2) + little(4, 2) + little(1, 4) + little(entry.value, 4);
  }
  return text + little(next, 4) + std::string(64, '\x55');
}

// Width, height, bits, compression, what 0 means, samples, rows in a strip.
std::string greyTiff(uint32_t width, uint32_t height, uint32_t bits, uint32_t samples) {
  return tiff({{256, width},
               {257, height},
               {258, bits},
               {259, 1},
               {262, 1},
               {277, samples},
               {278, height}});
}

// A JPEG whose frame header claims this size.
std::string jpegHeader(unsigned width, unsigned height) {
  std::string jpeg = orientedJpeg(1);
  const size_t frame = jpeg.find("\xff\xc0");
  const std::string size = {static_cast<char>(height >> 8), static_cast<char>(height & 255),
                            static_cast<char>(width >> 8), static_cast<char>(width & 255)};
  return jpeg.replace(frame + 5, 4, size);
}

TEST(StudioWorker, ReadsASmallTiff) {
  const Import made = import(greyTiff(8, 8, 8, 1));
  EXPECT_EQ(made.answer.value("width", 0), 8) << made.answer;
  EXPECT_EQ(made.grey.back(), '\x55');
}

TEST(StudioWorker, EndsWithASentenceOnHostileUploads) {
  const std::string png = noisyPng(400, 300, 1);
  const std::string jpeg = orientedJpeg(1);
  const std::string pdf = makePdf({barLabel(3)});
  const struct {
    const char* sentence;
    std::string upload;
    const char* code;
  } kCases[] = {
      {"nothing", "", "empty-file"},
      {"text", "hello", "unknown-kind"},
      {"a page with scripts", "<html><script>alert(1)</script>", "unknown-kind"},
      {"a vector picture", "<svg xmlns='http://www.w3.org/2000/svg'/>", "unknown-kind"},
      {"PostScript", "%!PS-Adobe-3.0\n(x) run", "unknown-kind"},
      {"a raster stream", "RaS3" + std::string(2000, '\1'), "unknown-kind"},
      {"PNG's first bytes", png.substr(0, 8), "damaged"},
      {"half a PNG", png.substr(0, png.size() / 2), "damaged"},
      {"a PNG of 4 thousand million pixels", pngHeader(65000, 65000), "too-many-pixels"},
      {"a PNG wider than any", pngHeader(0x7fffffff, 1), "damaged"},
      {"a PNG without pixels", pngHeader(0, 0), "damaged"},
      {"half a JPEG", jpeg.substr(0, jpeg.size() / 2), "damaged"},
      {"JPEG's first bytes", jpeg.substr(0, 4), "damaged"},
      {"a TIFF of nothing", std::string("II*\0\x08\0\0\0\0\0", 10), "damaged"},
      {"a WebP of nothing", "RIFF\x10" + std::string(3, '\0') + "WEBPVP8 ", "damaged"},
      {"a TIFF of 3600 million pixels", greyTiff(60000, 60000, 8, 1), "too-many-pixels"},
      {"a TIFF wider than any", greyTiff(0xffffffff, 0xffffffff, 8, 1), "damaged"},
      {"a TIFF of 64 bits and 65535 samples for a pixel", greyTiff(8, 8, 64, 65535), "damaged"},
      {"a TIFF of 7000 bits for a pixel", greyTiff(8, 8, 7000, 1), "damaged"},
      {"a TIFF whose pixels are missing", greyTiff(8, 8, 8, 1).substr(0, 130), "damaged"},
      {"a JPEG of 4 thousand million pixels", jpegHeader(65000, 65000), "too-many-pixels"},
      {"a WebP of 268 million pixels",
       std::string("RIFF\x1a\0\0\0WEBPVP8L\x0d\0\0\0\x2f\xff\xff\xff\x0f", 25) +
           std::string(9, '\0'),
       "too-many-pixels"},
      {"a PNG of 60000 by 60000", pngHeader(60000, 60000), "too-many-pixels"},
      {"PDF's first bytes", "%PDF-1.7\n", "damaged"},
      {"a PDF whose pages are each other's parents",
       "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
       "2 0 obj<</Type/Pages/Kids[2 0 R]/Count 1>>endobj\ntrailer<</Root 1 0 R>>\n%%EOF",
       "damaged"},
      {"a PDF page longer than any", makePdf({{100, 99999, ""}}), "damaged"},
      {"a PDF of noise", "%PDF-1.4\n" + noisyPng(50, 50, 2), "damaged"},
  };
  for (const auto& c : kCases) EXPECT_EQ(codeOf(import(c.upload)), c.code) << c.sentence;
}

// A PNG with a PDF behind it is a PNG; nothing of it is anything else later.
TEST(StudioWorker, TakesAPolyglotForWhatItsFirstBytesAre) {
  const Import made = import(noisyPng(16, 16, 1) + makePdf({barLabel(1)}));
  EXPECT_EQ(made.answer["kind"], "picture");
}

}  // namespace
