// The world's clock jumps from change to change, so that a sheet is out as soon as it has come in.
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

  // Returns an empty text, or what is wrong with the stream.
  std::string finish() {
    decoder_.finish();
    world_.breakOff(now_);
    settle();
    giveSheet();
    return decoder_.failed()
               ? filled("the filter's stream is malformed: %s", decoder_.error().c_str())
               : "";
  }

 private:
  PrinterWatcher watcher() {
    return {[](const std::string& /*line*/) {},
            [this](unsigned number, const PagePicture& page) {
              if (preview_.page) preview_.page(number, page);
            },
            [this](unsigned number, const SheetPicture& sheet, const char* /*what*/) {
              // The same sheet again: it has been fed or cut meanwhile.
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
  std::optional<SheetPicture> sheet_;  // of which more may be heard
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

std::string faultOf(const SpoolerOutcome& outcome, const std::string& error) {
  if (!outcome.fault.empty()) return outcome.fault;
  if (outcome.timedOut)
    return translated("the filter was still running after its time and was stopped");
  if (outcome.signal != 0) {
    return filled("the filter was ended by signal %d", outcome.signal);
  }
  if (outcome.status == 0) return std::string();
  if (error.empty()) return filled("the filter stopped with status %d", outcome.status);
  return filled("the filter stopped with status %d: %s", outcome.status, error.c_str());
}

}  // namespace

PreviewOutcome runPreviewJob(const PreviewJob& preview) {
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
  const SpoolerOutcome outcome = runSpoolerJob(job);
  messages.finish();
  PreviewOutcome result = {faultOf(outcome, messages.error()), messages.pages()};
  const std::string malformed = sheets.finish();
  if (result.fault.empty()) result.fault = malformed;
  return result;
}

}  // namespace korvel
