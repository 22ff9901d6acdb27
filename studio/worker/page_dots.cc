// The dots come from the filter's own stream; nothing here knows a halftone.
// SPDX-License-Identifier: Apache-2.0
#include "studio/worker/page_dots.h"

#include <fcntl.h>

#include <bit>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <vector>

#include "studio/sentences.h"
#include "tools/common/process.h"
#include "tools/host/emulated_spooler.h"
#include "tools/host/raster_stream.h"
#include "tools/stream/page_picture.h"
#include "tools/stream/stream_decoder.h"

namespace korvel {
namespace {

constexpr double kFilterSeconds = 60;
// A PDF file that already has the printer's page size: the chain does not lay it out again.
constexpr char kLaidOutPdf[] = "application/vnd.cups-pdf";

// For the server's log: the user gets the sentence only.
void logReason(const char* what, const std::string& reason) {
  std::fprintf(stderr, "korvel-studio: %s: %s\n", what, reason.c_str());
}

std::string reasonOf(const SpoolerOutcome& outcome, const StreamDecoder& decoder) {
  if (outcome.timedOut) return "time limit";
  if (outcome.signal != 0) return "signal " + std::to_string(outcome.signal);
  if (outcome.status != 0) return "status " + std::to_string(outcome.status);
  return decoder.error();
}

size_t countDots(const PagePicture& page) {
  size_t count = 0;
  for (const uint8_t byte : page.dots()) count += static_cast<size_t>(std::popcount(byte));
  return count;
}

SpoolerJob spoolerJob(const DotsJob& job) {
  SpoolerJob run;
  run.filter = job.filter;
  run.ppd = job.ppd;
  run.options = job.options;
  run.raster = job.raster;
  run.noFiles = true;
  run.timeoutSeconds = kFilterSeconds;
  return run;
}

}  // namespace

Result<RasterPageInfo> rasterisePage(const std::string& page, const std::string& ppd,
                                     const std::string& options, const std::string& target) {
  RasteriserJob job;
  job.document = page;
  job.type = kLaidOutPdf;
  job.ppd = ppd;
  job.options = options;
  job.log = target + ".log";
  Rasteriser rasteriser;
  Result<void> done = rasteriser.start(job);
  if (done) {
    const Result<void> kept = keepFirstPage(rasteriser.output()->get(), target);
    done = rasteriser.finish();
    if (done) done = kept;
  }
  std::remove(job.log.c_str());
  if (!done) {
    logReason("rasteriser", done.sentence());
    return Failure{kNoRaster.english};
  }
  Result<RasterPageInfo> info = readRasterPage(target);
  if (!info) return Failure{kNoRaster.english};
  return info;
}

bool writeGrey(const std::string& raster, const std::string& target) {
  const Descriptor file(open(raster.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) return false;
  const Raster pages(cupsRasterOpen(file.get(), CUPS_RASTER_READ));
  cups_page_header2_t header = {};
  std::ofstream out(target, std::ios::binary);
  bool good = pages && cupsRasterReadHeader2(pages.get(), &header) != 0;
  out << "P5\n" << header.cupsWidth << " " << header.cupsHeight << "\n255\n";
  std::vector<unsigned char> row(header.cupsBytesPerLine);
  for (unsigned y = 0; good && y < header.cupsHeight; ++y) {
    good = cupsRasterReadPixels(pages.get(), row.data(), header.cupsBytesPerLine) != 0;
    for (unsigned char& value : row) value = static_cast<unsigned char>(255 - value);
    out.write(reinterpret_cast<const char*>(row.data()), header.cupsWidth);
  }
  out.close();
  return good && out.good();
}

Result<DotsSize> makeDots(const DotsJob& job) {
  PagePicture page;
  unsigned pages = 0;
  StreamDecoder decoder([&](const StreamItem& item) {
    if (item.kind == ItemKind::kArea) {
      page.begin(item);
      ++pages;
    }
    if (item.kind == ItemKind::kImage) page.add(item);
  });
  SpoolerJob run = spoolerJob(job);
  run.output = [&](const char* bytes, size_t count) {
    decoder.push(reinterpret_cast<const uint8_t*>(bytes), count);
  };
  run.messages = [](const char*, size_t) {};
  const Result<SpoolerOutcome> outcome = runSpoolerJob(run);
  decoder.finish();
  const std::string reason = outcome ? reasonOf(outcome.value(), decoder) : outcome.sentence();
  if (!reason.empty()) logReason("filter", reason);
  if (!reason.empty() || pages != 1 || !page.checkShape()) return Failure{kNoDots.english};
  if (!page.writePng(job.target, 0)) return Failure{kDiskFull.english};
  return DotsSize{page.width(), page.height(), countDots(page)};
}

}  // namespace korvel
