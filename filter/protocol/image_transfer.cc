// Sends a page to the printer: packed to bits, its print area, then four rows per packet.
// Rows are sent from the page buffer itself; there is no compression.
// SPDX-License-Identifier: Apache-2.0
#include "printer/log.h"
#include "protocol/korvel_printer.h"

namespace {

constexpr uint8_t kImageBlock = 0x03;
constexpr uint8_t kPrintArea = 0x43;
constexpr int kRowsPerBlock = 4;

constexpr int32_t kHeadDots = 2592;
constexpr int32_t kHeadDots203 = 1728;

}  // namespace

void KorvelPrinter::doPrintImage(const unsigned char* image, size_t bytesPerLine, size_t height,
                                 size_t width) {
  pellamLogCommon(0, "doPrintImage: Input image size - width: %zu, height: %zu", width, height);
  auto* rows = const_cast<unsigned char*>(image);  // nobody reads it later: packed in place
  const int64_t byteCount =
      GrayToMono(static_cast<int>(bytesPerLine), static_cast<int>(height), rows);
  pellamLogCommon(0, "doPrintImage: Converted image size in bytes: %ld",
                  static_cast<long>(byteCount));
  if (tattooPrinter_ != 0) {
    const uint32_t lines = static_cast<uint32_t>(resolution_) * 120 / 254;  // 12 mm
    FeedPaper(0, static_cast<int>(lines));
    pellamLogCommon(0, "doPrintImage: Tatto printer detected. Fed %d lines before printing.",
                    static_cast<int>(lines));
  }
  SendImage(byteCount, {static_cast<int64_t>(width), static_cast<int64_t>(height)}, rows);
  pellamLogCommon(0, "doPrintImage: Image sent to the printer.");
}

void KorvelPrinter::SendImage(int64_t byteCount, _SIZEL size, unsigned char* data) {
  const int64_t bytesPerRow = byteCount / size.cy;
  SetPrintArea(size, bytesPerRow);
  const auto blocks = static_cast<int32_t>(size.cy / kRowsPerBlock);
  const auto rest = static_cast<int32_t>(size.cy % kRowsPerBlock);
  pellamLogCommon(0, "SendImage sizel(%d, %d), wBytes(%d), blocks(%d)", static_cast<int>(size.cx),
                  static_cast<int>(size.cy), static_cast<int>(bytesPerRow), blocks);

  const unsigned char* position = data;
  // Length and position wrap together at 16 bits: rows that long are sent in part (WideRows).
  const auto blockLength = static_cast<uint16_t>(kRowsPerBlock * bytesPerRow);
  for (int32_t block = 0; block < blocks; ++block) {
    sendPacket(makePacket(kImageBlock, 0, position, blockLength));
    position += blockLength;
  }
  if (rest != 0) {
    sendPacket(makePacket(kImageBlock, 0, position, static_cast<uint16_t>(rest * bytesPerRow)));
  }
}

void KorvelPrinter::SetPrintArea(_SIZEL size, int64_t bytesPerRow) {
  const int32_t maxDots = resolution_ == 203 ? kHeadDots203 : kHeadDots;
  int32_t offset = 0;
  int32_t width = maxDots;
  if (size.cx < maxDots) {
    // Centred on a whole byte; an image as wide as the head or wider starts at its first dot.
    offset = static_cast<int32_t>((maxDots - size.cx) / 2 / 8) * 8;
    width = static_cast<int32_t>(bytesPerRow * 8);
  }
  const uint8_t area[4] = {
      static_cast<uint8_t>(offset & 0xFF), static_cast<uint8_t>((offset >> 8) & 0xFF),
      static_cast<uint8_t>(width & 0xFF), static_cast<uint8_t>((width >> 8) & 0xFF)};
  sendPacket(makePacket(kPrintArea, 0, area, sizeof area));
}
