// A page on its way from grey raster to the image that prints: tone, turn, mirror, halftone,
// negative, frame. Pictures are '#' for white, which is what burns, and '.' for black.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "printer/pellam_printer.h"
#include "tests/support/captured_stderr.h"
#include "tests/support/character_picture.h"
#include "tests/support/hex_text.h"

namespace {

class ProcessingPrinter : public PellamPrinter {
 public:
  using PellamPrinter::cximage_;
  using PellamPrinter::ditheredImage_;
  using PellamPrinter::pimage;
  void doPrintImage(const unsigned char*, size_t, size_t, size_t) override {}
};

// A page with its result: twice the page's size, and a border that nobody may write.
struct Page {
  Page(int pageStride, int pageWidth, int pageHeight, const char* hex)
      : stride(pageStride), width(pageWidth), height(pageHeight), pixels(hexBytes(hex)) {
    result.resize(2 * pixels.size(), 0);
    result.resize(result.size() + 64, 0xA5);
  }

  int process(PellamPrinter& printer, DitherType type) {
    CapturedStderr captured;
    const int length =
        printer.PageProcess(type, pixels.data(), stride, width, height, result.data());
    log = captured.text();
    return length;
  }
  int process(PellamPrinter& printer) { return process(printer, printer.getHalftoneType()); }

  bool borderStands() const {
    for (size_t i = 2 * pixels.size(); i < result.size(); ++i) {
      if (result[i] != 0xA5) return false;
    }
    return true;
  }

  int stride;
  int width;
  int height;
  std::vector<uint8_t> pixels;
  std::vector<uint8_t> result;
  std::string log;
};

// '#' is index 1 or 255, '.' index 0.
std::string pictureOf(CxImage& image) {
  return drawPicture(image.GetWidth(), image.GetHeight(), [&](size_t x, size_t y) {
    const uint8_t index = image.GetBits(static_cast<uint32_t>(y))[x];
    return index == 1 || index == 255 ? '#' : index == 0 ? '.' : '?';
  });
}

// Hills and valleys of grey that every halftone draws in its own way.
constexpr const char* kHills =
    "14 32 50 6E 8C AA C8 E6"
    "28 46 5A 78 96 B4 D2 F0"
    "64 3C 64 8C 64 A0 64 5A"
    "82 78 5A 82 3C 5A 3C 6E"
    "C8 10 C8 10 C8 5A B4 10"
    "DC 96 80 81 5E 84 28 50";

struct Halftone {
  int setting;
  const char* runs;
  PictureRows picture;
};

const Halftone kHalftones[] = {
    {0,
     "fixed threshold",
     {"....####", "....####", "...#.#..", "#..#....", "#.#.#.#.", "##.#.#.."}},
    {1, "ordered 4 x 4", {"#.#.####", "...#.#.#", "#.#.#.#.", "...#...#", "#.#.#.#.", "##.#.#.."}},
    {2, "Burkes", {"...#.###", "..#.####", "..#..#..", "##.#...#", "#.#.#.#.", "#..#.#.."}},
    {3, "Stucki", {"...#.###", "...#####", "..#..#..", "##.#....", "#.#.#.#.", "#..#.#.."}},
    {4,
     "Jarvis-Judice-Ninke",
     {"....####", "..##.###", "..#..#..", "##.....#", "#.#.###.", "#.##.#.."}},
    {5, "Sierra", {"....####", "..##.###", "..#..#..", "##.#....", "#.#.#.#.", "#..#.#.."}},
    {6, "Stevenson-Arce", {"....####", "....####", "..##.#..", "##.#....", "#.#.#.#.", "#.#..#.."}},
    {7, "Bayer", {"#.#.#.#.", ".#.#####", "#.#.#.#.", ".#.#...#", "#.#.#.#.", "##.#.#.."}},
    {8,
     "the first stencil halftone",
     {"...#####", "...#####", "#..#.#..", "##.#...#", "#.#.###.", "####.#.."}},
    {9,
     "the second stencil halftone",
     {"...#.###", "...#####", "#....#..", ".#.#....", "#.#.###.", "##.#.#.."}},
    {10,
     "Floyd-Steinberg",
     {"...#.###", ".#.#.###", "...#.#..", "##.#...#", "#.#.#.#.", "#.#.#..."}},
    {-1,
     "Floyd-Steinberg",
     {"...#.###", ".#.#.###", "...#.#..", "##.#...#", "#.#.#.#.", "#.#.#..."}},
};

TEST(HalftoneSettings, RunTheMethodOfTheirNumber) {
  for (const Halftone& c : kHalftones) {
    ProcessingPrinter printer;
    printer.setHalftoneType(static_cast<DitherType>(c.setting));
    Page page(8, 8, 6, kHills);
    EXPECT_EQ(page.process(printer), 48) << c.setting << ' ' << c.runs;
    const bool stencil = c.setting == 8 || c.setting == 9;
    ASSERT_EQ(printer.pimage, stencil ? &printer.ditheredImage_ : &printer.cximage_) << c.setting;
    EXPECT_EQ(pictureOf(*printer.pimage), pictureText(c.picture)) << c.setting << ' ' << c.runs;
    // The image holds 0 and 1, or 0 and 255 of the stencil halftones; the copy always 255.
    EXPECT_EQ(markedPicture(printer.pimage->GetBits(), 8, 6, 8, stencil ? 255 : 1),
              pictureText(c.picture))
        << c.setting;
    EXPECT_EQ(markedPicture(page.result.data(), 8, 6, 8, 255), pictureText(c.picture)) << c.setting;
  }
}

TEST(HalftoneSettings, ChooseTheirPathByTheMemberNotTheArgument) {
  struct Case {
    const char* sentence;
    int member;
    bool useQM;
    int argument;
    bool stencil;
    int pictureOf;  // setting whose picture comes out
  };
  const Case cases[] = {
      {"a stencil setting needs no flag", 8, false, 8, true, 8},
      {"the second one too", 9, false, 9, true, 9},
      {"another setting ignores the flag", 3, true, 3, false, 3},
      {"the member leads to the stencil", 8, false, 3, true, 8},
      {"the argument alone does not", 3, false, 8, false, 10},
      {"nor does nine", 0, true, 9, false, 10},
      {"on the common path the argument counts", 3, false, 7, false, 7},
  };
  for (const Case& c : cases) {
    ProcessingPrinter printer;
    printer.setHalftoneType(static_cast<DitherType>(c.member));
    printer.setUseQMDithering(c.useQM);
    Page page(8, 8, 6, kHills);
    page.process(printer, static_cast<DitherType>(c.argument));
    EXPECT_EQ(printer.getUseQMDithering(), c.stencil) << c.sentence;
    EXPECT_EQ(pictureOf(*printer.pimage), pictureText(kHalftones[c.pictureOf].picture))
        << c.sentence;
    EXPECT_EQ(page.log.substr(0, page.log.find('\n')),
              c.stencil ? "DEBUG:PageProcess: QM dithering is enabled"
                        : "DEBUG:PageProcess: QM dithering is disabled")
        << c.sentence;
  }
}

TEST(PageProcess, TellsEveryStepOfTheCommonPath) {
  ProcessingPrinter printer;
  printer.setBrightness(1);
  printer.setContrast(-3);
  printer.setRotate180Print(true);
  printer.setMirrorPrint(true);
  printer.setNegativePrint(true);
  printer.setAntiWrinkle(1);
  Page page(4, 3, 2, "00 FF 00 00  FF FF 00 00");
  EXPECT_EQ(page.process(printer), 8);
  EXPECT_EQ(page.log,
            "DEBUG:PageProcess: QM dithering is disabled\n"
            "DEBUG:PageProcess: Successfully created CxImage from array with stride 4\n"
            "DEBUG:PageProcess: Adjusted brightness to 5 and contrast to -6\n"
            "DEBUG:PageProcess: Rotated the image 180 degrees\n"
            "DEBUG:PageProcess: Mirrored the image\n"
            "DEBUG:PageProcess: Applied default dithering and increased bit depth\n"
            "DEBUG:PageProcess: negativePrint_ 1\n"
            "DEBUG:PageProcess: Inverting the image for negative print\n"
            "DEBUG:EnableAntiWrink: Image or pageHdr_ is not valid, returning.\n"
            "DEBUG:PageProcess: Filled the output buffer with processed pixels, length: 8\n");
}

TEST(PageProcess, TellsEveryStepOfTheStencilPath) {
  ProcessingPrinter printer;
  printer.setHalftoneType(kHalftoneTattoo);
  Page page(101, 101, 2, std::string(404, '0').replace(20, 2, "FF").c_str());
  EXPECT_EQ(page.process(printer), 208);
  EXPECT_EQ(page.log,
            "DEBUG:PageProcess: QM dithering is enabled\n"
            "DEBUG:PageProcess: Successfully created CxImage from array with stride 101\n"
            "DEBUG:PageProcess: Copied pixels to the output buffer for QM dithering, with stride "
            "101, EffWidth 104\n"
            "DEBUG:PageProcess: Applied QM dithering with stride 104, width 101\n"
            "DEBUG:PageProcess: Successfully created a new CxImage from QM dithered data\n"
            "DEBUG:PageProcess: negativePrint_ 0\n"
            "DEBUG:PageProcess: Filled the output buffer with processed pixels, length: 208\n");
  EXPECT_EQ(printer.pimage->GetWidth(), 101u);
  EXPECT_EQ(printer.pimage->GetEffWidth(), 104u);
}

TEST(PageProcess, TurnsAndMirrors) {
  struct Case {
    const char* sentence;
    bool turned;
    bool mirrored;
    PictureRows picture;
  };
  const Case cases[] = {
      {"as it comes", false, false, {"#..", ".##"}},
      {"turned by 180 degrees", true, false, {"##.", "..#"}},
      {"mirrored left to right", false, true, {"..#", "##."}},
      {"turned, then mirrored: upside down", true, true, {".##", "#.."}},
  };
  for (const Case& c : cases) {
    for (const int halftone : {0, 8}) {
      ProcessingPrinter printer;
      printer.setHalftoneType(static_cast<DitherType>(halftone));
      printer.setRotate180Print(c.turned);
      printer.setMirrorPrint(c.mirrored);
      Page page(3, 3, 2, "FF 00 00  00 FF FF");
      page.process(printer);
      if (halftone == 8 && !c.turned && !c.mirrored) {
        // The stencil halftones read such a page where it is; nobody fills the image.
        EXPECT_EQ(page.pixels, hexBytes("FF 00 00  00 FF FF")) << c.sentence;
      } else {
        EXPECT_EQ(pictureOf(printer.cximage_), pictureText(c.picture)) << c.sentence;
      }
      const bool logged = page.log.find("Rotated the image 180 degrees\n") != std::string::npos;
      EXPECT_EQ(logged, c.turned) << c.sentence;
      EXPECT_EQ(page.log.find("Mirrored the image\n") != std::string::npos, c.mirrored)
          << c.sentence;
    }
  }
}

TEST(PageProcess, TonesByFiveAndTwoAStep) {
  struct Case {
    const char* sentence;
    int brightness;
    int contrast;
    const char* want;  // which of 0 64 100 123 124 126 127 128 129 130 133 134 200 255 are white
    const char* log;
  };
  const Case cases[] = {
      {"no tone, no line", 0, 0, "........######", ""},
      {"one step brighter lifts 124 over the threshold", 1, 0, "....##########",
       "DEBUG:PageProcess: Adjusted brightness to 5 and contrast to 0\n"},
      {"one step darker keeps 133 below it", -1, 0, "...........###",
       "DEBUG:PageProcess: Adjusted brightness to -5 and contrast to 0\n"},
      {"contrast alone turns about the middle", 0, 1, "........######",
       "DEBUG:PageProcess: Adjusted brightness to 0 and contrast to 2\n"},
      {"darkest", -100, 0, "..............",
       "DEBUG:PageProcess: Adjusted brightness to -500 and contrast to 0\n"},
      {"brightest", 100, 0, "##############",
       "DEBUG:PageProcess: Adjusted brightness to 500 and contrast to 0\n"},
      {"the least contrast inverts", 0, -100, "#######.......",
       "DEBUG:PageProcess: Adjusted brightness to 0 and contrast to -200\n"},
      {"half of it flattens to the middle", 0, -50, "..............",
       "DEBUG:PageProcess: Adjusted brightness to 0 and contrast to -100\n"},
      {"flattened above the middle", 1, -50, "##############",
       "DEBUG:PageProcess: Adjusted brightness to 5 and contrast to -100\n"},
      {"the most contrast", 0, 100, "........######",
       "DEBUG:PageProcess: Adjusted brightness to 0 and contrast to 200\n"},
      {"both", -2, 10, "............##",
       "DEBUG:PageProcess: Adjusted brightness to -10 and contrast to 20\n"},
  };
  for (const Case& c : cases) {
    ProcessingPrinter printer;
    printer.setBrightness(c.brightness);
    printer.setContrast(c.contrast);
    Page page(14, 14, 1, "00 40 64 7B 7C 7E 7F 80 81 82 85 86 C8 FF");
    page.process(printer);
    EXPECT_EQ(pictureOf(printer.cximage_), std::string(c.want) + "\n") << c.sentence;
    const size_t tone = page.log.find("DEBUG:PageProcess: Adjusted");
    const size_t next = page.log.find("DEBUG:PageProcess: Applied");
    EXPECT_EQ(tone == std::string::npos ? "" : page.log.substr(tone, next - tone), c.log)
        << c.sentence;
  }
}

TEST(NegativePrint, KeepsTwoDotsOnTheCommonPath) {
  ProcessingPrinter printer;
  printer.setNegativePrint(true);
  Page page(3, 3, 2, "FF 00 00  00 FF FF");
  EXPECT_EQ(page.process(printer), 8);
  // 0 and 1 become 255 and 254; so does the blank byte after the third pixel.
  EXPECT_EQ(hexText(printer.pimage->GetBits(), 8), hexLine("FE FF FF FF  FF FE FE FF"));
  // The copy is complemented back; it has the image's stride, and leaves the gap alone.
  EXPECT_EQ(hexText(page.result.data(), 8), hexLine("01 00 00 00  00 01 01 00"));
  EXPECT_TRUE(page.borderStands());
}

TEST(NegativePrint, InvertsTheStencilPath) {
  ProcessingPrinter printer;
  printer.setHalftoneType(kHalftoneTattoo);
  printer.setNegativePrint(true);
  Page page(8, 8, 6, kHills);
  EXPECT_EQ(page.process(printer), 48);
  const PictureRows inverted = {"###.....", "###.....", ".##.#.##",
                                "..#.###.", ".#.#...#", "....#.##"};
  EXPECT_EQ(markedPicture(printer.pimage->GetBits(), 8, 6, 8, 255), pictureText(inverted));
  EXPECT_EQ(markedPicture(page.result.data(), 8, 6, 8, 255), pictureText(kHalftones[8].picture));
}

TEST(PageProcess, ReturnsTheResultsStrideTimesThePagesHeight) {
  struct Case {
    const char* sentence;
    int stride;
    int width;
    int height;
    int halftone;
    int want;
  };
  const Case cases[] = {
      {"a width of whole words", 8, 8, 2, 0, 16},
      {"a width that is padded", 5, 5, 3, 0, 24},
      {"a padded line counts its pixels", 12, 5, 3, 0, 24},
      {"one pixel", 1, 1, 1, 0, 4},
      {"a stencil page", 5, 5, 3, 9, 24},
  };
  for (const Case& c : cases) {
    ProcessingPrinter printer;
    printer.setHalftoneType(static_cast<DitherType>(c.halftone));
    std::string hex;
    for (int i = 0; i < c.stride * c.height; ++i) hex += i % 2 == 0 ? "FF" : "10";
    // Room for the result's own padding: one pixel becomes a row of four bytes.
    Page page(c.stride, c.width, c.height, hex.c_str());
    EXPECT_EQ(page.process(printer), c.want) << c.sentence;
    EXPECT_TRUE(page.borderStands()) << c.sentence;
  }
}

TEST(PageProcess, ReadsPixelsByWidthAndRowsByStride) {
  ProcessingPrinter printer;
  Page page(6, 4, 2, "FF 00 FF 00 FF FF  00 FF 00 FF FF FF");
  EXPECT_EQ(page.process(printer), 8);
  EXPECT_EQ(hexText(printer.pimage->GetBits(), 8), hexLine("01 00 01 00  00 01 00 01"));
}

// Six pixels a row, which the result image pads to eight bytes.
TEST(StencilPages, KeepTheirRowsAtOddWidths) {
  const struct {
    int halftone;
    PictureRows picture;
  } cases[] = {
      {8, {"...###", "...###", "#.##.#", "##.#..", "#.#.#."}},
      {9, {"...#.#", "..#.##", "...#.#", "#.#...", "#.#.#."}},
  };
  for (const auto& c : cases) {
    ProcessingPrinter printer;
    printer.setHalftoneType(static_cast<DitherType>(c.halftone));
    Page page(6, 6, 5,
              "14 32 50 6E 8C AA  28 46 5A 78 96 B4  64 3C 64 8C 64 A0  82 78 5A 82 3C 5A"
              "C8 10 C8 10 C8 5A");
    EXPECT_EQ(page.process(printer), 40);
    EXPECT_EQ(pictureOf(*printer.pimage), pictureText(c.picture)) << c.halftone;
    EXPECT_EQ(markedPicture(page.result.data(), 6, 5, 8, 255), pictureText(c.picture))
        << c.halftone;
  }
}

// Rows ten apart are put down ten apart and read back eight apart, two blanks between them.
TEST(PaddedStencilLines, ShearThePicture) {
  const struct {
    int halftone;
    PictureRows picture;
  } cases[] = {
      {8, {"...#####", ".....###", "##..#..#", "###...##", ".#.#.#..", "#.#.###."}},
      {9, {"..#.####", "......##", "##..#..#", ".##...#.", ".#...#..", "#.#.#.#."}},
  };
  for (const auto& c : cases) {
    ProcessingPrinter printer;
    printer.setHalftoneType(static_cast<DitherType>(c.halftone));
    Page page(10, 8, 6,
              "14 32 50 6E 8C AA C8 E6 FF FF"
              "28 46 5A 78 96 B4 D2 F0 FF FF"
              "64 3C 64 8C 64 A0 64 5A FF FF"
              "82 78 5A 82 3C 5A 3C 6E FF FF"
              "C8 10 C8 10 C8 5A B4 10 FF FF"
              "DC 96 80 81 5E 84 28 50 FF FF");
    EXPECT_EQ(page.process(printer), 48);
    EXPECT_EQ(pictureOf(*printer.pimage), pictureText(c.picture)) << c.halftone;
    EXPECT_NE(page.log.find("with stride 10, EffWidth 8\n"), std::string::npos);
    EXPECT_NE(page.log.find("Applied QM dithering with stride 8, width 8\n"), std::string::npos);
  }
}

// A page of one level has no threshold of its own; 128 is used instead.
TEST(StencilPages, OfOneLevelEndToo) {
  const struct {
    const char* level;
    int halftone;
    PictureRows picture;
  } cases[] = {
      {"00", 8, {"........", "........", "........", "........"}},
      {"00", 9, {"........", "........", "........", "........"}},
      {"FF", 8, {"########", "########", "########", "########"}},
      {"FF", 9, {"########", "########", "########", "########"}},
      {"80", 8, {"#.#.#.#.", "##.###.#", "#.##.##.", "##.##.##"}},
      {"80", 9, {".#.#.#.#", "#.#.#.#.", ".###.##.", "#.#.#.#."}},
  };
  for (const auto& c : cases) {
    std::string hex;
    for (int i = 0; i < 32; ++i) hex += c.level;
    ProcessingPrinter printer;
    printer.setHalftoneType(static_cast<DitherType>(c.halftone));
    Page page(8, 8, 4, hex.c_str());
    page.process(printer);
    EXPECT_EQ(pictureOf(*printer.pimage), pictureText(c.picture)) << c.level << ' ' << c.halftone;
  }
}

TEST(PageProcess, NeverWritesBehindTwiceThePage) {
  ProcessingPrinter printer;
  cups_page_header2_t header{};
  std::strcpy(header.cupsPageSizeName, "Tattoo_A6");
  printer.setPageHeader(&header);
  printer.resolution_ = 3;
  printer.setAntiWrinkle(5);
  Page page(4, 4, 2, "00 00 00 00  00 00 00 00");
  // The frame makes it 14 by 14 in rows of 16 bytes: 224 bytes where 16 have room.
  EXPECT_EQ(page.process(printer), 32) << "the page's height by the frame's stride";
  EXPECT_EQ(printer.pimage->GetWidth(), 14u);
  EXPECT_EQ(printer.pimage->GetHeight(), 14u);
  // Frame, twelve white margin dots, frame; then the gap between the rows, as it was.
  EXPECT_EQ(hexText(page.result.data(), 16), "FF FF FF FF FF FF FF FF FF FF FF FF FF FF 00 00");
  EXPECT_TRUE(page.borderStands());
}

TEST(PageProcess, FramesOnlyWithALevel) {
  for (const int level : {0, 1, -1}) {
    ProcessingPrinter printer;
    printer.setAntiWrinkle(level);
    Page page(4, 4, 1, "00 00 00 00");
    page.process(printer);
    EXPECT_EQ(page.log.find("EnableAntiWrink") != std::string::npos, level != 0) << level;
  }
}

TEST(PageProcess, FailsWithoutPixelsAndKeepsTheFormerResult) {
  ProcessingPrinter printer;
  Page empty(8, 0, 2, "00 00 00 00 00 00 00 00  00 00 00 00 00 00 00 00");
  EXPECT_EQ(empty.process(printer), 0);
  EXPECT_EQ(empty.log,
            "DEBUG:PageProcess: QM dithering is disabled\n"
            "CRIT:cximage.CreateFromArray with grey failed!\n");
  EXPECT_EQ(printer.pimage, nullptr);

  printer.setHalftoneType(kHalftoneTattoo);
  Page good(8, 8, 6, kHills);
  EXPECT_EQ(good.process(printer), 48);
  EXPECT_EQ(empty.process(printer), 0);
  EXPECT_EQ(printer.pimage, &printer.ditheredImage_);
  EXPECT_EQ(pictureOf(*printer.pimage), pictureText(kHalftones[8].picture));
}

TEST(PageProcess, StartsAfreshOnEveryPage) {
  ProcessingPrinter printer;
  for (const int halftone : {2, 8, 7, 9, 0}) {
    printer.setHalftoneType(static_cast<DitherType>(halftone));
    Page page(8, 8, 6, kHills);
    page.process(printer);
    EXPECT_EQ(pictureOf(*printer.pimage), pictureText(kHalftones[halftone].picture)) << halftone;
  }
}

TEST(PixelCopies, TakeIndicesAndLeaveGaps) {
  ProcessingPrinter printer;
  const auto source = hexBytes("00 01 02 00  FD FE FF 00");
  CxImage image;
  ASSERT_TRUE(image.CreateFromArray(source.data(), 3, 2, 8, 4, false));
  struct Case {
    const char* sentence;
    bool negative;
    size_t capacity;
    const char* want;
  };
  const Case cases[] = {
      {"index 1 becomes 255", false, 100, "00 FF 02 A5 A5  FD FE FF A5 A5"},
      {"negative printing complements", true, 100, "FF 00 FD A5 A5  02 01 00 A5 A5"},
      {"nothing from the capacity on", false, 6, "00 FF 02 A5 A5  FD A5 A5 A5 A5"},
      {"no room at all", true, 0, "A5 A5 A5 A5 A5  A5 A5 A5 A5 A5"},
  };
  for (const Case& c : cases) {
    std::vector<uint8_t> result(10, 0xA5);
    printer.setNegativePrint(c.negative);
    printer.copyProcessedPixels(&image, result.data(), 3, 2, 5, c.capacity);
    EXPECT_EQ(hexText(result), hexLine(c.want)) << c.sentence;
  }
  std::vector<uint8_t> copy(10, 0xA5);
  printer.copyPixels(image, copy.data(), 3, 2, 5);
  EXPECT_EQ(hexText(copy), hexLine("00 01 02 A5 A5  FD FE FF A5 A5")) << "the indices";
  image.Destroy();
}

}  // namespace
