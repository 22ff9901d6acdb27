// The emulated clock jumps from change to change, so that a sheet is out as soon as it is complete.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview/preview_job.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "tools/common/translation.h"
#include "tools/stream/stream_decoder.h"

namespace korvel {
namespace {

constexpr char kPageLine[] = "INFO: page ";

class SheetMaker {
 public:
  explicit SheetMaker(const PreviewJob& preview)
      : preview_(preview),
        world_(preview.body, watcher()),
        decoder_([this](const StreamItem& item) { take(item); }) {}

  void push(const char* bytes, size_t count) {
    decoder_.push(reinterpret_cast<const uint8_t*>(bytes), count);
  }

  // Fails when the stream is malformed.
  Result<void> finish() {
    decoder_.finish();
    world_.breakOff(now_);
    settle();
    giveSheet();
    if (!decoder_.failed()) return {};
    return Failure{filled("The filter's output is malformed: %s", decoder_.error().c_str())};
  }

 private:
  PrinterWatcher watcher() {
    return {[](const std::string& /*line*/) {},
            [this](unsigned number, const PagePicture& page) {
              if (preview_.page) preview_.page(number, page);
            },
            [this](unsigned number, const SheetPicture& sheet, const char* /*what*/) {
              // The same sheet may come twice: it has been fed or cut since.
              if (sheet_ && number != number_) giveSheet();
              sheet_.emplace(sheet);
              number_ = number;
            }};
  }

  void take(const StreamItem& item) {
    if (item.kind != ItemKind::kStatusRequest) world_.take(item, now_);
    settle();
  }

  void settle() {
    for (auto next = world_.nextChange(); next; next = world_.nextChange()) {
      now_ = std::max(now_, *next);
      world_.advance(now_);
    }
  }

  void giveSheet() {
    if (sheet_ && preview_.sheet) preview_.sheet(number_, *sheet_);
    sheet_.reset();
  }

  const PreviewJob& preview_;
  PrinterWorld world_;
  StreamDecoder decoder_;
  Micros now_ = 0;
  std::optional<SheetPicture> sheet_;  // which may still be fed or cut
  unsigned number_ = 0;
};

// Reads the filter's messages by lines: counts pages, keeps the last error.
class MessageReader {
 public:
  explicit MessageReader(const PreviewJob& preview) : preview_(preview) {}

  void push(const char* bytes, size_t count) {
    for (size_t i = 0; i < count; ++i) {
      if (bytes[i] != '\n') {
        line_ += bytes[i];
        continue;
      }
      takeLine();
      line_.clear();
    }
  }
  void finish() { takeLine(); }

  unsigned pages() const { return pages_; }
  const std::string& error() const { return error_; }

 private:
  void takeLine() {
    if (line_.starts_with(kPageLine)) {
      ++pages_;
      if (preview_.progress) preview_.progress(pages_);
    }
    for (const char* mark : {"ERROR:", "CRIT:", "EMERG:"}) {
      if (line_.starts_with(mark)) error_ = line_.substr(line_.find(':') + 1);
    }
    if (error_.starts_with(' ')) error_.erase(0, 1);
  }

  const PreviewJob& preview_;
  std::string line_;
  std::string error_;
  unsigned pages_ = 0;
};

Result<void> success(const SpoolerOutcome& outcome, const std::string& error) {
  if (outcome.timedOut) return Failure{translated("The filter did not end in time.")};
  if (outcome.signal != 0) {
    return Failure{filled("The filter was ended by signal %d.", outcome.signal)};
  }
  if (outcome.status == 0) return {};
  if (error.empty()) return Failure{filled("The filter failed with status %d.", outcome.status)};
  return Failure{filled("The filter failed with status %d: %s", outcome.status, error.c_str())};
}

}  // namespace

Result<unsigned> runPreviewJob(const PreviewJob& preview) {
  SheetMaker sheets(preview);
  MessageReader messages(preview);
  SpoolerJob job = preview.job;
  job.output = [&](const char* bytes, size_t count) {
    if (preview.job.output) preview.job.output(bytes, count);
    sheets.push(bytes, count);
  };
  job.messages = [&](const char* bytes, size_t count) {
    if (preview.job.messages) preview.job.messages(bytes, count);
    messages.push(bytes, count);
  };
  const Result<SpoolerOutcome> outcome = runSpoolerJob(job);
  messages.finish();
  const Result<void> wellFormed = sheets.finish();
  if (!outcome) return outcome.failure();
  const Result<void> printed = success(outcome.value(), messages.error());
  if (!printed) return printed.failure();
  if (!wellFormed) return wellFormed.failure();
  return messages.pages();
}

}  // namespace korvel
