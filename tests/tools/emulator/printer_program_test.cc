// The emulated printer's program on a loopback socket: a host connects, sends a stream written by
// hand, reads the replies; the pictures are compared with rows of characters.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/character_picture.h"
#include "tests/support/hex_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/tools/emulator/printer_process.h"

namespace {

// 64 NUL bytes, setup with density 8.
const char kPageStart[] =
    "00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000"
    "00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000"
    "64 0E 40 01 00 00 00 00 00 00 9B  64 41 00 01 00 08 00 00 00 00 9B"
    "64 0E 40 01 00 01 00 00 00 00 9B";
const char kBegin[] = "64 0E 40 01 00 00 00 00 00 00 9B";
const char kEnd[] = "64 0E 40 01 00 01 00 00 00 00 9B";
const char kRequest[] = "64 10 40 00 00 00 00 00 00 9B";
// Offset 856, width 16; then a block of four rows and one of a row.
const char kPage[] =
    "64 43 00 04 00 58 03 10 00 00 00 00 00 9B"
    "64 03 00 08 00 FF FF 80 01 80 01 FF FF 00 00 00 00 9B"
    "64 03 00 02 00 12 48 00 00 00 00 9B";
const char kFeedToEdge[] = "64 00 00 03 00 03 00 00 00 00 00 00 9B";
const char kCut[] = "64 02 00 00 00 00 00 00 00 9B";

const char kReadyReply[] = "64 FF 00 08 00 00 00 80 00 00 00 00 00";
const char kOutReply[] = "64 FF 00 08 00 00 00 08 00 00 00 00 00";
const char kCoverReply[] = "64 FF 00 08 00 00 00 01 00 00 00 00 00";
const char kPrintingReply[] = "64 FF 00 08 00 00 00 00 00 00 00 00 00";

const PictureRows kPagePicture = {
    "################", "#..............#", "#..............#",
    "################", "...#..#..#..#...",
};

std::string hexOf(std::initializer_list<const char*> parts) {
  std::string text;
  for (const char* part : parts) text += part;
  return text;
}

std::vector<uint8_t> stream(std::initializer_list<const char*> parts) {
  return hexBytes(hexOf(parts));
}

// A column band of a picture file, all its rows; '!' is red, '?' any other colour.
std::string band(const std::string& path, size_t left, size_t width) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return image.message;
  image.format = PNG_FORMAT_RGB;
  std::vector<uint8_t> pixels(PNG_IMAGE_SIZE(image));
  if (png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) == 0) return image.message;
  if (image.width < left + width) return "the picture ends at " + std::to_string(image.width);
  return drawPicture(width, image.height, [&](size_t x, size_t y) {
    const std::string colour = hexText(&pixels[(y * image.width + left + x) * 3], 3);
    if (colour == "FF FF FF") return '.';
    if (colour == "00 00 00") return '#';
    return colour == "FF 00 00" ? '!' : '?';
  });
}

TEST(PrinterProgram, AJobOfTwoPagesGoesThrough) {
  const TemporaryFolder folder;
  PrinterProcess printer(KORVEL_PRINTER, {"--port", "0", "--out", folder.file("out"), "--pages",
                                          "--speed", "100000", "--media", "continuous", "--once"});
  HostConnection host(printer.number());
  ASSERT_TRUE(host.connected());
  host.send(stream({kPageStart, kRequest}));
  EXPECT_EQ(hexLine(kReadyReply), hexText(host.receive(13)));
  host.send(stream({kBegin, kPage, kEnd}));
  EXPECT_TRUE(printer.reports("sheet 1 out"));
  host.send(stream({kRequest}));
  EXPECT_EQ(hexLine(kOutReply), hexText(host.receive(13)));
  host.send(stream({kPageStart, kRequest}));
  EXPECT_EQ(hexLine(kReadyReply), hexText(host.receive(13)));
  host.send(stream({kBegin, kPage, kFeedToEdge, kEnd}));
  EXPECT_TRUE(printer.reports("sheet 2 out"));
  host.send(stream({kBegin, kCut, kEnd}));
  host.endSending();
  EXPECT_EQ("", host.receiveAll());
  const Lines end = {"control 0", "cut",
                     "sheet 2 cut: " + folder.file("out/sheet-2.png") + " 1728 x 8", "control 1",
                     "disconnected"};
  EXPECT_EQ(end, printer.linesTo("disconnected"));
  EXPECT_EQ(0, printer.status());
  EXPECT_EQ("", printer.errors());

  const std::string page = pictureText(kPagePicture);
  EXPECT_EQ(page, band(folder.file("out/page-1.png"), 0, 16));
  EXPECT_EQ(page, band(folder.file("out/page-2.png"), 0, 16));
  EXPECT_EQ(page, band(folder.file("out/sheet-1.png"), 856, 16));
  PictureRows cut = kPagePicture;
  cut.insert(cut.end(), 3, std::string(16, '!'));
  EXPECT_EQ(pictureText(cut), band(folder.file("out/sheet-2.png"), 856, 16));
  // Beside the page there is nothing but paper.
  EXPECT_EQ(pictureText(PictureRows(5, std::string(856, '.'))),
            band(folder.file("out/sheet-1.png"), 0, 856));
  EXPECT_EQ(pictureText(PictureRows(5, std::string(856, '.'))),
            band(folder.file("out/sheet-1.png"), 872, 856));
}

TEST(PrinterProgram, EveryEventIsALine) {
  PrinterProcess printer(KORVEL_PRINTER, {"--port", "0", "--speed", "100000", "--once"});
  HostConnection host(printer.number());
  host.send(stream({kPageStart, kRequest, kBegin, kPage, kFeedToEdge, kEnd}));
  host.endSending();
  const Lines lines = {"connected",
                       "page start",
                       "control 0",
                       "density 8",
                       "control 1",
                       "status request -> ready",
                       "control 0",
                       "area offset 856 width 16",
                       "image 5 rows x 2 bytes",
                       "feed mode 3 lines 0",
                       "control 1"};
  Lines have;
  for (size_t i = 0; i < lines.size(); ++i) have.push_back(printer.line());
  EXPECT_EQ(lines, have);
  // 5 rows, 23 lines of a gap of 3 mm, 3 lines of the mark. The host may be gone before or after.
  Lines rest = {printer.line(), printer.line()};
  std::sort(rest.begin(), rest.end());
  EXPECT_EQ((Lines{"disconnected", "sheet 1 out: 1728 x 31"}), rest);
  EXPECT_EQ("(end)", printer.line());
  EXPECT_EQ(0, printer.status());
}

TEST(PrinterProgram, QuietTellsThePortAlone) {
  PrinterProcess printer(KORVEL_PRINTER,
                         {"--port", "0", "--once", "--quiet", "--scenario", "silent"});
  HostConnection host(printer.number());
  host.send(stream({kPageStart, kRequest}));
  host.endSending();
  EXPECT_EQ("", host.receiveAll());
  EXPECT_EQ("(end)", printer.line());
  EXPECT_EQ(0, printer.status());
}

TEST(PrinterProgram, ASecondHostWaitsForTheFirst) {
  PrinterProcess printer(KORVEL_PRINTER, {"--port", "0"});
  const int port = printer.number();
  HostConnection first(port);
  first.send(stream({kRequest}));
  EXPECT_EQ(13u, first.receive(13).size());
  HostConnection second(port);
  ASSERT_TRUE(second.connected());
  second.send(stream({kRequest}));
  EXPECT_EQ((Lines{"connected", "status request -> ready"}), printer.linesTo("status"));
  first.hangUp();
  EXPECT_EQ(hexLine(kReadyReply), hexText(second.receive(13)));
  EXPECT_EQ((Lines{"disconnected", "connected", "status request -> ready"}),
            printer.linesTo("status"));
  printer.signal(SIGTERM);
  EXPECT_EQ(0, printer.status());
}

TEST(PrinterProgram, ASignalEndsItAtAnyTime) {
  for (const int number : {SIGTERM, SIGINT}) {
    PrinterProcess printer(KORVEL_PRINTER, {"--port", "0", "--scenario", "out-of-paper"});
    HostConnection host(printer.number());
    host.send(stream({kPageStart, kBegin, kPage, kEnd}));
    EXPECT_TRUE(printer.reports("image 5 rows"));
    printer.signal(number);
    EXPECT_EQ(0, printer.status()) << "signal " << number;
  }
}

TEST(PrinterProgram, TheControlPortTakesScenarios) {
  PrinterProcess printer(KORVEL_PRINTER,
                         {"--port", "0", "--control-port", "0", "--speed", "100000"});
  const int port = printer.number();
  HostConnection control(printer.number());
  HostConnection host(port);
  const auto status = [&host] {
    host.send(stream({kRequest}));
    return hexText(host.receive(13));
  };
  EXPECT_EQ(hexLine(kReadyReply), status());
  EXPECT_EQ("ok: ready 0x00800000, paper loaded, cover closed, pages waiting 0, sheets out 0",
            control.ask("state"));
  EXPECT_EQ("ok", control.ask("cover open"));
  EXPECT_EQ(hexLine(kCoverReply), status());
  EXPECT_EQ("error: unknown scenario 'lid'", control.ask("lid open"));
  EXPECT_EQ("ok", control.ask("\n# nothing but a remark\ncover close  # the lid is shut again"));
  EXPECT_EQ("ok", control.ask("out-of-paper"));
  EXPECT_EQ(hexLine(kOutReply), status());
  host.send(stream({kPageStart, kBegin, kPage, kEnd}));
  EXPECT_EQ(hexLine(kOutReply), status());
  EXPECT_EQ("ok: paper out 0x00080000, no paper, cover closed, pages waiting 1, sheets out 0",
            control.ask("state"));
  EXPECT_EQ("ok", control.ask("load"));
  EXPECT_TRUE(printer.reports("sheet 1 out"));
  EXPECT_EQ(hexLine(kOutReply), status());
  EXPECT_EQ("error: the line is longer than 1000 characters",
            control.ask("state" + std::string(1000, ' ') + "now"));
  EXPECT_EQ("ok", control.ask("quit"));
  EXPECT_EQ(0, printer.status());
}

TEST(PrinterProgram, AScriptMayEndWithoutALineEnd) {
  PrinterProcess printer(KORVEL_PRINTER, {"--port", "0", "--control-port", "0"});
  printer.number();
  HostConnection control(printer.number());
  control.send(std::string("cover open\r\nstate\nquit"));
  control.endSending();
  EXPECT_EQ(
      "ok\nok: cover open 0x00010000, paper loaded, cover open, pages waiting 0, "
      "sheets out 0\nok\n",
      control.receiveAll());
  EXPECT_EQ(0, printer.status());
}

TEST(PrinterProgram, RepliesComeAsTheScenarioSays) {
  struct Case {
    const char* sentence;
    std::vector<std::string> scenarios;
    size_t bytes;
    std::string reply;
  };
  const Case cases[] = {
      {"in pieces", {"split 6"}, 13, hexLine(kReadyReply)},
      {"twice", {"glue"}, 26, hexLine(hexOf({kReadyReply, kReadyReply}))},
      {"after two bytes of noise", {"noise 2"}, 15, "3C 5E " + hexLine(kReadyReply)},
      {"read slowly", {"slow 1000"}, 13, hexLine(kReadyReply)},
      {"read after a stall", {"stall for 0.05 after 3"}, 13, hexLine(kReadyReply)},
  };
  for (const Case& c : cases) {
    std::vector<std::string> arguments = {"--port", "0"};
    for (const std::string& text : c.scenarios) {
      arguments.insert(arguments.end(), {"--scenario", text});
    }
    PrinterProcess printer(KORVEL_PRINTER, arguments);
    HostConnection host(printer.number());
    host.send(stream({kRequest}));
    EXPECT_EQ(c.reply, hexText(host.receive(c.bytes))) << c.sentence;
  }
}

TEST(PrinterProgram, APieceComesByItself) {
  PrinterProcess printer(KORVEL_PRINTER, {"--port", "0", "--scenario", "split 6"});
  HostConnection host(printer.number());
  host.send(stream({kRequest}));
  EXPECT_EQ("64 FF 00 08 00 00", hexText(host.receive(6)));
  EXPECT_EQ("00 80 00 00 00 00", hexText(host.receive(6)));
  EXPECT_EQ("00", hexText(host.receive(1)));
}

TEST(PrinterProgram, ADisconnectedPageIsPrintedAsFarAsItCame) {
  const TemporaryFolder folder;
  // 97 bytes of the page start, 11 of a control, 14 of the area, 18 of the first block, 3 more.
  PrinterProcess printer(KORVEL_PRINTER,
                         {"--port", "0", "--once", "--out", folder.path(), "--speed", "100000",
                          "--scenario", "disconnect after 143"});
  HostConnection host(printer.number());
  host.send(stream({kPageStart, kBegin, kPage, kEnd}));
  EXPECT_EQ("", host.receiveAll());
  EXPECT_TRUE(printer.reports("area"));
  const Lines lines = {"image 4 rows x 2 bytes", "page 1 broken off", "disconnected by the printer",
                       "sheet 1 out: " + folder.file("sheet-1.png") + " 1728 x 4"};
  EXPECT_EQ(lines, printer.linesTo("sheet 1 out"));
  EXPECT_EQ(0, printer.status());
  EXPECT_EQ(
      pictureText({"################", "#..............#", "#..............#", "################"}),
      band(folder.file("sheet-1.png"), 856, 16));
}

TEST(PrinterProgram, TheNextJobFindsAReadyPrinter) {
  PrinterProcess printer(KORVEL_PRINTER, {"--port", "0", "--speed", "100000"});
  const int port = printer.number();
  {
    HostConnection cancelled(port);
    cancelled.send(stream({kPageStart, kBegin,
                           "64 43 00 04 00 58 03 10 00 00 00 00 00 9B"
                           "64 03 00 08 00 FF FF 80"}));
    EXPECT_TRUE(printer.reports("area"));
  }
  EXPECT_TRUE(printer.reports("disconnected"));
  HostConnection host(port);
  host.send(stream({kPageStart, kRequest}));
  EXPECT_EQ(hexLine(kReadyReply), hexText(host.receive(13)));
}

TEST(PrinterProgram, StandsInAsAPipe) {
  const TemporaryFolder folder;
  PrinterProcess printer(KORVEL_PRINTER, {"--stdin", "--reply-fd", "3", "--out", folder.path(),
                                          "--pages", "--speed", "1"});
  // At 1 mm a second the page of 5 rows prints for 0.6 s: long enough to be asked meanwhile.
  printer.feed(stream({kRequest, kPageStart, kBegin, kPage, kEnd, kRequest}));
  EXPECT_TRUE(printer.reports("status request -> printing"));
  EXPECT_EQ(0, printer.status());
  EXPECT_EQ(hexLine(hexOf({kReadyReply, kPrintingReply})), hexText(printer.replies()));
  EXPECT_TRUE(printer.reports("sheet 1 out: " + folder.file("sheet-1.png") + " 1728 x 5"));
  EXPECT_EQ(pictureText(kPagePicture), band(folder.file("page-1.png"), 0, 16));
}

TEST(PrinterProgram, AtTheEndPagesWithoutPaperAreNamedAndLeft) {
  PrinterProcess printer(KORVEL_PRINTER, {"--stdin", "--scenario", "out-of-paper"});
  printer.feed(stream({kPageStart, kBegin, kPage, kEnd, kRequest}));
  EXPECT_EQ(0, printer.status());
  EXPECT_TRUE(printer.reports("disconnected"));
  EXPECT_EQ(
      "left in the printer: paper out 0x00080000, no paper, cover closed, pages waiting 1, "
      "sheets out 0",
      printer.line());
  EXPECT_EQ("(end)", printer.line());
}

// 30 packets of 65,535 lines each: 246 m of paper, which as one picture were 850 MB.
TEST(PrinterProgram, FeedsWithoutEndTakeLittleMemory) {
#ifdef KORVEL_ADDRESS_SANITIZER
  GTEST_SKIP() << "the sanitizer maps more than the limit";
#endif
  const TemporaryFolder folder;
  std::vector<uint8_t> bytes = stream({kPageStart, kBegin, kPage, kEnd});
  const std::vector<uint8_t> feed = hexBytes("64 00 00 03 00 00 FF FF 00 00 00 00 9B");
  for (int i = 0; i < 30; ++i) bytes.insert(bytes.end(), feed.begin(), feed.end());
  const std::vector<uint8_t> next = stream({kPageStart, kBegin, kPage, kEnd});
  bytes.insert(bytes.end(), next.begin(), next.end());
  // The limit holds what the program and its libraries map, too.
  PrinterProcess printer("/bin/bash",
                         {"-c", "ulimit -v 200000; exec \"$0\" \"$@\"", KORVEL_PRINTER, "--stdin",
                          "--quiet", "--speed", "100000", "--out", folder.file("out")});
  printer.feed(bytes);
  printer.closeInput();
  EXPECT_EQ(0, printer.status()) << printer.errors();
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  ASSERT_NE(0, png_image_begin_read_from_file(&image, folder.file("out/sheet-2.png").c_str()))
      << image.message;
  EXPECT_EQ(100000u + 5, image.height);
  png_image_free(&image);
}

TEST(PrinterProgram, APageLargerThanItsMemoryIsPrintedAsFarAsItFits) {
  PrinterProcess printer(KORVEL_PRINTER, {"--stdin", "--speed", "100000"});
  std::vector<uint8_t> bytes =
      stream({kPageStart, kBegin, "64 43 00 04 00 58 03 10 00 00 00 00 00 9B"});
  const std::vector<uint8_t> row = hexBytes("64 03 00 02 00 12 48 00 00 00 00 9B");
  for (int i = 0; i < 200500; ++i) bytes.insert(bytes.end(), row.begin(), row.end());
  const std::vector<uint8_t> end = stream({kEnd});
  bytes.insert(bytes.end(), end.begin(), end.end());
  printer.feed(bytes);
  printer.closeInput();
  const Lines lines = printer.linesTo("image 200000 rows");
  EXPECT_EQ("image 200000 rows x 2 bytes", lines.back());
  EXPECT_EQ(1, std::count(lines.begin(), lines.end(),
                          "page 1 is larger than the memory, the rest is dropped"));
}

TEST(PrinterProgram, AnIdleConnectionMakesRoomForTheNext) {
  PrinterProcess printer(KORVEL_PRINTER,
                         {"--port", "0", "--control-port", "0", "--idle-timeout", "1"});
  const int port = printer.number();
  const int controlPort = printer.number();
  HostConnection idle(port);
  HostConnection idleControl(controlPort);
  ASSERT_TRUE(printer.reports("connected"));
  HostConnection next(port);
  next.send(stream({kRequest}));
  EXPECT_EQ("disconnected: idle for 1 seconds", printer.linesTo("disconnected").back());
  EXPECT_EQ(hexLine(kReadyReply), hexText(next.receive(13)));
  HostConnection control(controlPort);
  EXPECT_TRUE(control.ask("state").starts_with("ok: ready"));
  EXPECT_EQ("", idleControl.receiveAll()) << "it has been closed";
}

// Waiting for a printer that is at work is not idling.
TEST(PrinterProgram, AHostThatWaitsForPaperKeepsItsConnection) {
  PrinterProcess printer(KORVEL_PRINTER, {"--port", "0", "--idle-timeout", "1", "--scenario",
                                          "out-of-paper for 3", "--speed", "100000"});
  HostConnection host(printer.number());
  host.send(stream({kPageStart, kBegin, kPage, kEnd}));
  const Lines lines = printer.linesTo("sheet 1 out");
  EXPECT_EQ("sheet 1 out: 1728 x 5", lines.back());
  EXPECT_EQ(0, std::count(lines.begin(), lines.end(), "disconnected: idle for 1 seconds"));
}

TEST(PrinterProgram, PlantedLinksAreNotFollowed) {
  const TemporaryFolder folder;
  const std::string precious = folder.write("precious", "precious");
  std::filesystem::create_directory(folder.file("out"));
  std::filesystem::create_symlink(precious, folder.file("out/sheet-1.png"));
  PrinterProcess printer(KORVEL_PRINTER,
                         {"--stdin", "--out", folder.file("out"), "--speed", "100000"});
  printer.feed(stream({kPageStart, kBegin, kPage, kEnd}));
  printer.closeInput();
  EXPECT_TRUE(printer.reports("sheet 1: the picture cannot be written"));
  EXPECT_EQ(1, printer.status());
  EXPECT_EQ("korvel-printer: sheet 1: " + folder.file("out/sheet-1.png") +
                " is not a file of your own; choose another folder.\n",
            printer.errors());
  EXPECT_EQ("precious", folder.read("precious"));
}

TEST(PrinterProgram, AFolderThatCannotBeWrittenIsAnError) {
  const TemporaryFolder folder;
  // A folder stands where the picture should.
  std::filesystem::create_directory(folder.file("sheet-1.png"));
  PrinterProcess printer(KORVEL_PRINTER, {"--stdin", "--out", folder.path(), "--quiet"});
  printer.feed(stream({kPageStart, kBegin, kPage, kEnd}));
  EXPECT_EQ(1, printer.status());
  EXPECT_EQ(
      "korvel-printer: sheet 1: Cannot write " + folder.file("sheet-1.png") + ": Is a directory.\n",
      printer.errors());
}

TEST(PrinterProgram, AFileInPlaceOfTheFolderIsAnError) {
  const TemporaryFolder folder;
  const std::string file = folder.write("file", "");
  PrinterProcess printer(KORVEL_PRINTER, {"--stdin", "--out", file + "/out"});
  EXPECT_EQ(1, printer.status());
  EXPECT_EQ("korvel-printer: Cannot create the folder " + file + "/out: Not a directory.\n",
            printer.errors());
}

TEST(PrinterProgram, ATakenPortIsAnError) {
  PrinterProcess first(KORVEL_PRINTER, {"--port", "0"});
  const std::string port = first.line();
  PrinterProcess second(KORVEL_PRINTER, {"--port", port});
  EXPECT_EQ(1, second.status());
  EXPECT_EQ("korvel-printer: Cannot listen on port " + port + ": Address already in use.\n",
            second.errors());
}

TEST(PrinterProgram, WrongUsageIsReportedInOneSentence) {
  struct Case {
    std::vector<std::string> arguments;
    const char* fault;
  };
  const Case cases[] = {
      {{"--port"}, "--port needs a value"},
      {{"--port", "65536"}, "--port needs a number from 0 to 65535, not '65536'"},
      {{"--port", "-1"}, "--port needs a number from 0 to 65535, not '-1'"},
      {{"--port", ""}, "--port needs a number from 0 to 65535, not ''"},
      {{"--control-port", "9100x"}, "--control-port needs a number from 0 to 65535, not '9100x'"},
      {{"--dpi", "0"}, "--dpi needs a number from 1 to 9999, not '0'"},
      {{"--speed", "0"}, "--speed needs a number from 1 to 100000, not '0'"},
      {{"--speed", "99999999999999999999"},
       "--speed needs a number from 1 to 100000, not '99999999999999999999'"},
      {{"--media", "roll"}, "--media needs gap, mark, continuous or sheet, not 'roll'"},
      {{"--out", ""}, "--out needs a value"},
      {{"--pages"}, "--pages needs --out"},
      {{"--stdin", "--port", "0"}, "--port and --stdin cannot be combined"},
      {{"--reply-fd", "3"}, "--reply-fd needs --stdin"},
      {{"--stdin", "--reply-fd", "900"}, "--reply-fd: descriptor 900 is not open"},
      {{"--scenario", "fire"}, "--scenario: unknown scenario 'fire'"},
      {{"--scenario", "quit"}, "--scenario: 'quit' is for the control port"},
      {{"--scenario", "reply drain-refused"},
       "--scenario: 'reply drain-refused' needs a spooler's side channel"},
      {{"--verbose"}, "unknown option '--verbose'"},
      {{"stream.bin"}, "unexpected argument 'stream.bin'"},
  };
  for (const Case& c : cases) {
    PrinterProcess printer(KORVEL_PRINTER, c.arguments);
    EXPECT_EQ(2, printer.status()) << c.fault;
    EXPECT_EQ("korvel-printer: " + std::string(c.fault) + "; see korvel-printer --help\n",
              printer.errors());
  }
}

TEST(PrinterProgram, HelpAndVersionGoToStandardOutput) {
  PrinterProcess help(KORVEL_PRINTER, {"--help"});
  EXPECT_EQ(0, help.status());
  EXPECT_EQ("Usage: korvel-printer [OPTION]...", help.line());
  PrinterProcess version(KORVEL_PRINTER, {"--version"});
  EXPECT_EQ(0, version.status());
  EXPECT_EQ("korvel-printer 1.0.0", version.line());
}

}  // namespace
