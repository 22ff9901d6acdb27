// The dots come from the filter's own stream; nothing here knows a halftone.
// SPDX-License-Identifier: Apache-2.0
#include "studio/worker/page_dots.h"

#include <fcntl.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "studio/sentences.h"
#include "tools/common/png_file.h"
#include "tools/common/process.h"
#include "tools/host/emulated_spooler.h"
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

size_t countDots(const std::vector<uint8_t>& dots) {
  size_t count = 0;
  for (size_t at = 0; at < dots.size(); at += sizeof(uint64_t)) {
    uint64_t bits = 0;
    std::memcpy(&bits, &dots[at], std::min(sizeof bits, dots.size() - at));
    count += static_cast<size_t>(std::popcount(bits));
  }
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

Result<RasterPage> loadRasterPage(const std::string& raster) {
  const Descriptor file(open(raster.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) return Failure{kNoRaster.english};
  Result<RasterPage> page = readFirstPage(file.get());
  if (!page || page->header.cupsBitsPerPixel != 8) return Failure{kNoRaster.english};
  return page;
}

Result<GreyPicture> readGreyPage(const std::string& raster) {
  const Result<RasterPage> loaded = loadRasterPage(raster);
  if (!loaded) return Failure{loaded.sentence()};
  const RasterPage& page = loaded.value();
  GreyPicture picture = {page.header.cupsWidth, page.header.cupsHeight, 0, {}};
  picture.grey.reserve(picture.width * picture.height);
  for (size_t y = 0; y < picture.height; ++y) {
    const unsigned char* row = &page.pixels[y * page.header.cupsBytesPerLine];
    std::transform(row, row + picture.width, std::back_inserter(picture.grey),
                   [](unsigned char ink) { return static_cast<uint8_t>(255 - ink); });
  }
  return picture;
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
  PngPicture picture = {page.width(), page.height(), page.rowBytes(), 1, 0, {}};
  picture.quick = true;
  if (!writePngFile(job.target, picture, page.dots().data())) return Failure{kDiskFull.english};
  return DotsSize{picture.width, picture.height, countDots(page.dots())};
}

}  // namespace korvel
