// The printer object's settings with their limits, and its output streams.
// The object is abstract: these tests print no page.
// SPDX-License-Identifier: Apache-2.0
#include "printer/pellam_printer.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "tests/support/hex_text.h"
#include "tests/support/memory_stream.h"

namespace {

class SettingsPrinter : public PellamPrinter {
 public:
  using PellamPrinter::bmpPathFormat_;
  using PellamPrinter::cximage_;
  using PellamPrinter::ditheredImage_;
  using PellamPrinter::pimage;
  void doPrintImage(const unsigned char*, size_t, size_t, size_t) override {}
};

TEST(FreshPrinter, HasItsStartValues) {
  SettingsPrinter printer;
  EXPECT_EQ(printer.getPrintSpeed(), 7);
  EXPECT_EQ(printer.getPrintDensity(), 8);
  EXPECT_EQ(printer.getHalftoneType(), 0);
  EXPECT_EQ(printer.getBrightness(), 0);
  EXPECT_EQ(printer.getContrast(), 0);
  EXPECT_EQ(printer.GetPrintWidth(), 0);
  EXPECT_EQ(printer.getMaxMediaWidth(), 0);
  EXPECT_EQ(printer.getVBarcodeOpt(), 0);
  EXPECT_EQ(printer.getAntiWrinkle(), 0);
  EXPECT_FALSE(printer.getUseQMDithering());
  EXPECT_FALSE(printer.isNegativePrint());
  EXPECT_FALSE(printer.isMirrorPrint());
  EXPECT_FALSE(printer.isRotate180Print());
  EXPECT_EQ(printer.getRemoveBlankEdges(), 0);
  EXPECT_EQ(printer.getSkipRightPixels(), 0u);
  EXPECT_EQ(printer.getPageHeader(), nullptr);
  EXPECT_EQ(printer.getUserData(), nullptr);
  EXPECT_EQ(printer.resolution_, 300);
  EXPECT_EQ(printer.settings_, nullptr);
  EXPECT_EQ(printer.pimage, nullptr);
  EXPECT_FALSE(printer.cximage_.IsValid());
  EXPECT_FALSE(printer.ditheredImage_.IsValid());
  EXPECT_STREQ(printer.bmpPathFormat_, "/var/spool/cups/tmp/prnimg_%d-%d-%d_%d_%d_%d_%ld.bmp");
  ASSERT_EQ(printer.getOutputStreams().size(), 1u);
  EXPECT_EQ(printer.getOutputStreams().front(), stdout);
}

struct Clamp {
  int set;
  int want;
};

TEST(Setters, KeepBrightnessAndContrastWithinAHundred) {
  const Clamp cases[] = {{-250, -100}, {-101, -100}, {-100, -100}, {-1, -1},       {0, 0},
                         {100, 100},   {101, 100},   {250, 100},   {INT_MAX, 100}, {INT_MIN, -100}};
  SettingsPrinter printer;
  for (const Clamp& c : cases) {
    printer.setBrightness(c.set);
    EXPECT_EQ(printer.getBrightness(), c.want) << "brightness " << c.set;
    printer.setContrast(c.set);
    EXPECT_EQ(printer.getContrast(), c.want) << "contrast " << c.set;
  }
}

TEST(Setters, KeepDensityFromZeroToFifteen) {
  const Clamp cases[] = {{-1, 0}, {0, 0}, {1, 1}, {15, 15}, {16, 15}, {INT_MAX, 15}, {INT_MIN, 0}};
  SettingsPrinter printer;
  for (const Clamp& c : cases) {
    printer.setPrintDensity(c.set);
    EXPECT_EQ(printer.getPrintDensity(), c.want) << c.set;
  }
}

TEST(Setters, ReadTheSpeedAsText) {
  struct Case {
    const char* text;
    int want;
  };
  const Case cases[] = {{"0", 1},    {"1", 1},    {"15", 15}, {"16", 15}, {"-3", 1}, {"", 1},
                        {"fast", 1}, {"9ips", 9}, {" 4", 4},  {"007", 7}, {"3.9", 3}};
  SettingsPrinter printer;
  for (const Case& c : cases) {
    printer.setPrintSpeed(c.text);
    EXPECT_EQ(printer.getPrintSpeed(), c.want) << '"' << c.text << '"';
  }
}

TEST(Setters, StoreTheRestUnchanged) {
  SettingsPrinter printer;
  printer.SetPrintWidth(int64_t{1} << 40);
  EXPECT_EQ(printer.GetPrintWidth(), int64_t{1} << 40);
  printer.setAntiWrinkle(-1);
  EXPECT_EQ(printer.getAntiWrinkle(), -1);
  printer.setUseQMDithering(true);
  EXPECT_TRUE(printer.getUseQMDithering());
  printer.setMaxMediaWidth(-5);
  EXPECT_EQ(printer.getMaxMediaWidth(), -5);
  printer.setVBarcodeOpt(77);
  EXPECT_EQ(printer.getVBarcodeOpt(), 77);
  printer.setHalftoneType(static_cast<DitherType>(1234));
  EXPECT_EQ(printer.getHalftoneType(), 1234) << "halftones are not checked";
  printer.setNegativePrint(true);
  EXPECT_TRUE(printer.isNegativePrint());
  printer.setRotate180Print(true);
  EXPECT_TRUE(printer.isRotate180Print());
  printer.setMirrorPrint(true);
  EXPECT_TRUE(printer.isMirrorPrint());
  printer.setRemoveBlankEdges(0xFF);
  EXPECT_EQ(printer.getRemoveBlankEdges(), 0xFF);
  printer.setSkipRightPixels(UINT64_MAX);
  EXPECT_EQ(printer.getSkipRightPixels(), UINT64_MAX);
  cups_page_header2_t header{};
  printer.setPageHeader(&header);
  EXPECT_EQ(printer.getPageHeader(), &header);
  int anything = 0;
  auto* data = reinterpret_cast<PellamPrinter::UserData*>(&anything);
  printer.setUserData(data);
  EXPECT_EQ(printer.getUserData(), data);
}

TEST(OutputStreams, AllGetTheSameBytes) {
  const MemoryStream first, second;
  SettingsPrinter printer;
  printer.getOutputStreams() = {first.get(), second.get()};
  const unsigned char bytes[] = {0x64, 0x00, 0xFF, 0x0A};
  printer.printBytes(bytes, sizeof bytes);
  printer.printByte(0x9B);
  printer.printByte(0);
  printer.printStr("a%s\n");
  EXPECT_EQ(printer.printFormat("%d-%s.", 42, "text"), 8);
  const char* want = "64 00 FF 0A 9B 00 61 25 73 0A 34 32 2D 74 65 78 74 2E";
  EXPECT_EQ(hexText(first.text()), want);
  EXPECT_EQ(hexText(second.text()), want);
}

TEST(OutputStreams, AreWrittenInListOrder) {
  const MemoryStream both;
  SettingsPrinter printer;
  printer.getOutputStreams() = {both.get(), both.get()};
  printer.printStr("ab");
  printer.printFormat("%c", 'c');
  EXPECT_EQ(both.text(), "ababcc");
}

TEST(OutputStreams, MayBeNone) {
  SettingsPrinter printer;
  printer.getOutputStreams().clear();
  const unsigned char byte = 1;
  printer.printBytes(&byte, 1);
  printer.printByte(1);
  printer.printStr("text");
  EXPECT_EQ(printer.printFormat("%d", 1), 0);
}

TEST(OutputStreams, GoOnAfterOneThatFails) {
  const MemoryStream good;
  FILE* unwritable = std::fopen("/dev/null", "r");
  ASSERT_NE(unwritable, nullptr);
  SettingsPrinter printer;
  printer.getOutputStreams() = {unwritable, good.get()};
  const unsigned char bytes[] = {1, 2};
  printer.printBytes(bytes, 2);
  printer.printByte(3);
  printer.printStr("4");
  EXPECT_EQ(printer.printFormat("%d", 56), 2) << "the last stream's count";
  EXPECT_EQ(hexText(good.text()), "01 02 03 34 35 36");
  printer.getOutputStreams() = {good.get(), unwritable};
  EXPECT_LT(printer.printFormat("%d", 56), 0) << "the last stream's failure";
  std::fclose(unwritable);
}

// A copy that could not be opened is in the list as a null stream.
TEST(OutputStreams, LeaveOutOneThatIsNull) {
  const MemoryStream good;
  SettingsPrinter printer;
  printer.getOutputStreams() = {nullptr, good.get(), nullptr};
  const unsigned char bytes[] = {1, 2};
  printer.printBytes(bytes, 2);
  printer.printByte(3);
  printer.printStr("4");
  EXPECT_EQ(printer.printFormat("%d", 56), 2) << "the last stream's count";
  EXPECT_EQ(hexText(good.text()), "01 02 03 34 35 36");
}

TEST(OutputStreams, StayOpenWhenThePrinterGoes) {
  const MemoryStream stream;
  {
    SettingsPrinter printer;
    printer.getOutputStreams() = {stream.get()};
    printer.printStr("a");
  }
  EXPECT_EQ(std::fputs("b", stream.get()) >= 0, true);
  EXPECT_EQ(stream.text(), "ab");
}

TEST(CopyRight, IsHexPairsOfANotice) {
  const std::string text = PellamPrinter::getCopyRight();
  EXPECT_EQ(text, copyright);
  ASSERT_EQ(text.substr(0, 4), "MFT:");
  const std::string pairs = text.substr(4);
  const auto notice = hexBytes(pairs);
  EXPECT_EQ(hexText(notice), pairs) << "upper-case pairs, one blank between them, none at an end";
  EXPECT_EQ(std::string(notice.begin(), notice.end()).substr(0, 9), "Copyright");
  for (const uint8_t c : notice) EXPECT_TRUE(c >= 0x20 && c < 0x7F) << int{c};
}

}  // namespace
