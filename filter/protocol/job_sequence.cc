// Job setup and job end.
// Of all settings, only the density and the post action are sent here.
// SPDX-License-Identifier: Apache-2.0
#include "protocol/job_sequence.h"

#include <cstdio>
#include <cstring>

#include "printer/settings.h"

namespace {

bool is(const char* setting, const char* choice) { return std::strcmp(setting, choice) == 0; }

void afterJobAction(KorvelPrinter* printer, const Settings& settings) {
  if (is(settings.PostAction, "TearOff")) {
    // Unlike after each page, marked labels are not moved: the next job's first feed finds the mark
    // (JobEnd).
    if (!is(settings.PaperType, "LabelMark")) printer->FeedPaper(3, 0);
  } else if (is(settings.PostAction, "Cut")) {
    printer->DoFeedCutPaper();
  }
}

}  // namespace

void jobSetup(KorvelPrinter* printer, const Settings* /*settings*/) {
  std::fprintf(stderr, "DEBUG: Enter jobSetup\n");
  printer->PrintControl(0);
  printer->SendPrintSetting();
  printer->PrintControl(1);
  std::fprintf(stderr, "DEBUG: Exit jobSetup\n");
}

void jobEnd(KorvelPrinter* printer, const Settings* settings) {
  std::fprintf(stderr, "DEBUG: Enter jobEnd\n");
  printer->PrintControl(0);
  if (is(settings->Occurrence, "AfterJob")) afterJobAction(printer, *settings);
  printer->PrintControl(1);
  std::fprintf(stderr, "DEBUG: Exit jobEnd\n");
}
