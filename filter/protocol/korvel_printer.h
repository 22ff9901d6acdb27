// The concrete printer: its commands, the transmission of a page's image, its status.
// One object serves a job; the job refreshes it before every page.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PROTOCOL_KORVEL_PRINTER_H
#define KORVEL_PROTOCOL_KORVEL_PRINTER_H

#include <cstddef>
#include <cstdint>

#include "printer/pellam_printer.h"
#include "protocol/packet.h"

// An image's size.
struct _SIZEL {
  int64_t cx;  // width in pixels
  int64_t cy;  // height in rows
};

// 1 after a feed that leaves the media ahead of the print position, 0 after one that brings it
// back (mode 4). Set by FeedPaper; the next page reads it.
extern int32_t bNeedGoBack;

class KorvelPrinter : public PellamPrinter {
 public:
  KorvelPrinter() = default;
  ~KorvelPrinter() override = default;

  // Packs the page in place and sends it; a stencil printer first feeds 12 mm.
  void doPrintImage(const unsigned char* image, size_t bytesPerLine, size_t height,
                    size_t width) override;

  // Sends the print area, then the packed rows in packets of four. `byteCount` is the packed size
  // of all rows; size.cy must not be 0.
  void SendImage(int64_t byteCount, _SIZEL size, unsigned char* data);

  // Sends the position of a row's first dot and the number of dots.
  void SetPrintArea(_SIZEL size, int64_t bytesPerRow);

  // A command for which there is no memory is left out silently.
  void PrintControl(unsigned char mode);  // 0 before a group of commands, 1 after it
  bool SendPrintSetting();                // the print density; always true
  void FeedPaper(int mode, int lines);    // dot lines, the low 16 bits
  void DoPaperCut();
  void DoFeedCutPaper();

  // Waits until a reporting model is ready with paper (mask 0x00800000) or its sheet is out
  // (0x00080000). Returns true when that was seen or the model never reports, false after 300
  // attempts of a second or more. Reports each new status to the spooler.
  bool WaitForPrinterStatus(int mask);

  // Reports a status word to the spooler as state lines, once per change.
  void UpdatePrinterStatus(int64_t status);

  int32_t tattooPrinter_ = 0;  // non-zero for a stencil printer; the job writes it

 private:
  bool sendPacket(const _ASTRAPV2& packet);
  bool reportsStatus() const;
  void requestStatus();
  bool readStatus(int64_t* status);
  void pauseBetweenAttempts();

  int64_t lastStatus_ = 0;  // the status word that was last reported
};

#endif
