// Control, density, feeds and cuts.
// A feed records for the next page whether the media has to be moved back.
// SPDX-License-Identifier: Apache-2.0
#include "protocol/korvel_printer.h"

int32_t bNeedGoBack = 0;

namespace {

constexpr uint8_t kFeed = 0x00;
constexpr uint8_t kCut = 0x02;
constexpr uint8_t kControl = 0x0E;
constexpr uint8_t kControlParameter = 0x40;
constexpr uint8_t kDensity = 0x41;

constexpr int kFeedToTearPosition = 3;
constexpr int kFeedBack = 4;

}  // namespace

void KorvelPrinter::PrintControl(unsigned char mode) {
  sendPacket(makePacket(kControl, kControlParameter, &mode, 1));
}

bool KorvelPrinter::SendPrintSetting() {
  const auto density = static_cast<uint8_t>(getPrintDensity());
  sendPacket(makePacket(kDensity, 0, &density, 1));
  return true;
}

void KorvelPrinter::FeedPaper(int mode, int lines) {
  const uint8_t data[3] = {static_cast<uint8_t>(mode), static_cast<uint8_t>(lines & 0xFF),
                           static_cast<uint8_t>((lines >> 8) & 0xFF)};
  if (!sendPacket(makePacket(kFeed, 0, data, sizeof data))) return;
  bNeedGoBack = mode != kFeedBack ? 1 : 0;
}

void KorvelPrinter::DoPaperCut() { sendPacket(makePacket(kCut, 0)); }

void KorvelPrinter::DoFeedCutPaper() {
  FeedPaper(kFeedToTearPosition, 0);
  DoPaperCut();
}
