// What no job may come to, whatever it is fed with, and raster pages with headers of any content.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_HARDENING_HARD_JOB_H
#define KORVEL_TESTS_HARDENING_HARD_JOB_H

#include <cups/raster.h>

#include <algorithm>
#include <string>

#include "tests/job/job_text.h"

// Lines that begin with "ERROR:".
inline size_t errorLines(const std::string& messages) {
  size_t count = 0;
  for (const std::string& line : linesOf(messages)) {
    if (line.starts_with("ERROR:")) ++count;
  }
  return count;
}

// What is wrong with the way a job ended: a hang, a crash, another status than 0 or 1, or a stream
// that is not made of whole packets. Empty for an orderly end.
inline std::string disorderOf(const JobResult& job) {
  if (job.timedOut) return "it hangs";
  if (job.signal != 0) return "signal " + std::to_string(job.signal);
  if (job.exitStatus != 0 && job.exitStatus != 1) {
    return "status " + std::to_string(job.exitStatus) + "\n" + job.messages;
  }
  return readStream(job.output).fault;
}

// How many of `count` alike jobs to run: valgrind takes a second and more for each.
inline int fewUnderMemcheck(int count) { return underMemcheck() ? std::max(1, count / 10) : count; }

// A header of a plain grey page, to be spoilt.
inline cups_page_header2_t plainHeader(unsigned width = 8, unsigned height = 4) {
  cups_page_header2_t header{};
  header.HWResolution[0] = 203;
  header.HWResolution[1] = 203;
  header.NumCopies = 1;
  header.cupsWidth = width;
  header.cupsHeight = height;
  header.cupsBitsPerColor = 8;
  header.cupsBitsPerPixel = 8;
  header.cupsBytesPerLine = width;
  header.cupsColorSpace = CUPS_CSPACE_K;
  header.cupsNumColors = 1;
  return header;
}

inline std::string headerBytes(const cups_page_header2_t& header) {
  return {reinterpret_cast<const char*>(&header), sizeof header};
}

// The word that opens a stream: uncompressed, of this machine's byte order.
inline std::string syncWord() {
  const unsigned word = CUPS_RASTER_SYNC;
  return {reinterpret_cast<const char*>(&word), sizeof word};
}

// A job of one page of any header and the given pixel bytes.
inline JobPlan rawJob(const cups_page_header2_t& header, const std::string& pixels,
                      const std::string& options = "") {
  JobPlan plan = labelJob({}, options);
  plan.input = syncWord() + headerBytes(header) + pixels;
  plan.dumpFolder = false;
  return plan;
}

#endif
