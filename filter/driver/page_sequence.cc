// The page's steps on the printer, in order.
// Feeds leave the media ahead; the next page brings it back first.
// SPDX-License-Identifier: Apache-2.0
#include "driver/page_sequence.h"

#include <cstdio>
#include <cstring>

#include "protocol/job_sequence.h"
#include "protocol/status.h"

namespace {

constexpr int kLeadingNuls = 64;

bool is(const char* setting, const char* choice) { return std::strcmp(setting, choice) == 0; }

void refreshPrinter(KorvelPrinter* printer, Settings* settings, cups_page_header2_t* header) {
  printer->resolution_ = static_cast<int32_t>(header->HWResolution[0]);
  printer->settings_ = settings;
  printer->setAntiWrinkle(settings->AntiWrinkle);
  printer->setPageHeader(header);
  printer->setBrightness(settings->Brightness);
  printer->setContrast(settings->Contrast);
  printer->setPrintSpeed(settings->PrintSpeed);
  printer->setPrintDensity(settings->Darkness);
  printer->setHalftoneType(static_cast<DitherType>(settings->halftoneType));
  printer->setMirrorPrint(settings->MirrorImage != 0);
  printer->setNegativePrint(settings->NegativeImage != 0);
  printer->setRotate180Print(settings->Rotate180 != 0);
  printer->tattooPrinter_ = settings->IsTattooPrinter;
}

void postAction(KorvelPrinter* printer, const Settings& settings) {
  if (is(settings.PostAction, "TearOff")) {
    printer->FeedPaper(is(settings.PaperType, "LabelMark") ? 5 : 3, 0);
  } else if (is(settings.PostAction, "Cut")) {
    printer->DoFeedCutPaper();
  }
}

}  // namespace

void startPage(KorvelPrinter* printer, Settings* settings, cups_page_header2_t* header) {
  refreshPrinter(printer, settings, header);
  // Straight to standard output: a copy of the stream does not get them.
  for (int i = 0; i < kLeadingNuls; ++i) std::putchar(0);
  jobSetup(printer, settings);
}

void printPage(KorvelPrinter* printer, const Settings& settings, const cups_page_header2_t& header,
               const unsigned char* pixels, int32_t page) {
  printer->WaitForPrinterStatus(kStatusReady);
  std::fprintf(stderr, "INFO: page %d\n", page + 1);
  printer->PrintControl(0);
  if (bNeedGoBack != 0 || is(settings.PaperType, "LabelMark")) printer->FeedPaper(4, 0);
  printer->printImage(pixels, header.cupsBytesPerLine, header.cupsHeight, header.cupsWidth);
  if (is(settings.Occurrence, "EveryPage")) postAction(printer, settings);
  printer->PrintControl(1);
  printer->WaitForPrinterStatus(kStatusPaperOut);
  // A page that is finished is out of our hands, whatever ends the job.
  for (FILE* stream : printer->getOutputStreams()) std::fflush(stream);
}
