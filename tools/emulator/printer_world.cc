// Time advances from one change to the next: a step of the motor ends, paper runs out or is loaded,
// the cover opens or closes. Between two changes only the motor moves.
// SPDX-License-Identifier: Apache-2.0
#include "tools/emulator/printer_world.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "tools/stream/printer_model.h"
#include "tools/stream/stream_listing.h"

namespace korvel {
namespace {

constexpr unsigned kEdgeTenths = 100;  // from the head to the tear-off edge, tenths of a millimetre
constexpr unsigned kGapTenths = 30;    // of a gap or a black mark along the paper

constexpr unsigned kFeedLines = 0;
constexpr unsigned kFeedToEdge = 3;
constexpr unsigned kFeedBack = 4;
constexpr unsigned kFeedToMarkEdge = 5;

size_t headDots(unsigned dpi) { return dpi == 203 ? 1728 : 2592; }

bool isToEdge(unsigned mode) { return mode == kFeedToEdge || mode == kFeedToMarkEdge; }

}  // namespace

std::string statusText(uint64_t word) {
  std::string text;
  const auto add = [&](uint64_t mask, const char* what) {
    if ((word & mask) != 0) text += (text.empty() ? "" : ", ") + std::string(what);
  };
  add(kStatusReady, "ready");
  add(kStatusPaperOut, "paper out");
  add(kStatusCoverOpen, "cover open");
  return text.empty() ? "printing" : text;
}

PrinterWorld::PrinterWorld(const PrinterBody& body, PrinterWatcher watcher)
    : body_(body), watcher_(std::move(watcher)) {}

uint64_t PrinterWorld::statusWord() const {
  const bool out = sheetOut_ || !loaded_;
  const uint64_t word = (out ? kStatusPaperOut : 0) | (coverOpen_ ? kStatusCoverOpen : 0);
  return word == 0 && idle() ? kStatusReady : word;
}

std::string PrinterWorld::stateText() const {
  char word[16];
  std::snprintf(word, sizeof word, " 0x%08X", static_cast<unsigned>(statusWord()));
  return statusText(statusWord()) + word + (loaded_ ? ", paper loaded" : ", no paper") +
         (coverOpen_ ? ", cover open" : ", cover closed") + ", pages waiting " +
         std::to_string(pagesWaiting()) + ", sheets out " + std::to_string(sheets_);
}

size_t PrinterWorld::pagesWaiting() const {
  const auto printed = std::count_if(steps_.begin(), steps_.end(), [](const Step& step) {
    return step.kind == Step::Kind::kPage;
  });
  return static_cast<size_t>(printed);
}

// ---- Time ----

void PrinterWorld::advance(Micros now) {
  while (settleOne()) {
  }
  for (auto next = nextChange(); next && *next <= now; next = nextChange()) {
    pass(*next);
    while (settleOne()) {
    }
  }
  pass(now);
}

void PrinterWorld::pass(Micros to) {
  if (to <= clock_) return;
  if (moving()) done_ += to - clock_;
  clock_ = to;
}

// Performs one change that is due at this moment; false when there is none left.
bool PrinterWorld::settleOne() { return fireTrigger() || restore() || finishStep(); }

std::optional<Micros> PrinterWorld::nextChange() const {
  std::optional<Micros> next;
  const auto consider = [&next](std::optional<Micros> moment) {
    if (moment && (!next || *moment < *next)) next = moment;
  };
  consider(paperBackAt_);
  consider(coverShutAt_);
  if (!moving()) return next;
  consider(clock_ + steps_.front().duration - done_);
  for (const Trigger& trigger : triggers_) {
    const bool inThisPage = steps_.front().kind == Step::Kind::kPage &&
                            trigger.milliPages / 1000 == static_cast<int64_t>(sheets_);
    if (inThisPage) consider(clock_ + momentOf(trigger) - done_);
  }
  return next;
}

// The time from the start of the page step that is printing.
Micros PrinterWorld::momentOf(const Trigger& trigger) const {
  return steps_.front().duration * (trigger.milliPages % 1000) / 1000;
}

bool PrinterWorld::isDue(const Trigger& trigger) const {
  const int64_t whole = trigger.milliPages / 1000;
  if (whole != static_cast<int64_t>(sheets_)) return whole < static_cast<int64_t>(sheets_);
  if (trigger.milliPages % 1000 == 0) return true;
  if (last_ && !lastIsOut_) return true;  // printed, not out yet
  const bool prints =
      !steps_.empty() && steps_.front().kind == Step::Kind::kPage && steps_.front().begun;
  return prints && done_ >= momentOf(trigger);
}

bool PrinterWorld::fireTrigger() {
  const auto due = std::find_if(triggers_.begin(), triggers_.end(),
                                [this](const Trigger& trigger) { return isDue(trigger); });
  if (due == triggers_.end()) return false;
  const Scenario scenario = due->scenario;
  triggers_.erase(due);
  std::optional<Micros> back;
  if (scenario.duration != kForEver) back = clock_ + scenario.duration;
  if (scenario.kind == ScenarioKind::kOutOfPaper) {
    setPaper(false);
    paperBackAt_ = back;
  } else {
    setCover(true);
    coverShutAt_ = back;
  }
  return true;
}

bool PrinterWorld::restore() {
  if (paperBackAt_ && *paperBackAt_ <= clock_) {
    setPaper(true);
    return true;
  }
  if (coverShutAt_ && *coverShutAt_ <= clock_) {
    setCover(false);
    return true;
  }
  return false;
}

void PrinterWorld::setPaper(bool loaded) {
  paperBackAt_.reset();
  if (loaded_ == loaded) return;
  loaded_ = loaded;
  event(loaded ? "paper loaded" : "out of paper");
}

void PrinterWorld::setCover(bool open) {
  coverShutAt_.reset();
  if (coverOpen_ == open) return;
  coverOpen_ = open;
  event(open ? "cover opened" : "cover closed");
}

bool PrinterWorld::apply(const Scenario& scenario, Micros now) {
  advance(now);
  switch (scenario.kind) {
    case ScenarioKind::kOutOfPaper:
    case ScenarioKind::kCoverOpen:
      triggers_.push_back({scenario, scenario.milliPages + int64_t{sheets_} * 1000});
      break;
    case ScenarioKind::kLoad:
      setPaper(true);
      break;
    case ScenarioKind::kCoverClose:
      setCover(false);
      break;
    default:
      return false;
  }
  advance(now);
  return true;
}

// ---- The motor ----

Micros PrinterWorld::timeOf(size_t rows) const {
  return static_cast<Micros>(rows) * 25'400'000 / (Micros{body_.dpi} * body_.speed);
}

size_t PrinterWorld::rowsToMove(const Step& step) const {
  const bool hasGaps = body_.media == Media::kGap || body_.media == Media::kMark;
  if (step.kind == Step::Kind::kPage) return step.rows;
  if (step.kind != Step::Kind::kFeed) return 0;
  if (step.mode == kFeedLines) return step.rows;
  if (step.mode == kFeedBack) return leadRows_ + (ahead_ ? rowsOf(kEdgeTenths) : 0);
  if (!isToEdge(step.mode) || ahead_) return 0;
  return rowsOf(kEdgeTenths) + (hasGaps ? rowsOf(kGapTenths) : 0);
}

// Starts or ends the first step. A step that moves nothing needs neither paper nor a closed cover.
bool PrinterWorld::finishStep() {
  if (steps_.empty()) return false;
  Step& first = steps_.front();
  if (!first.begun) {
    first.begun = true;
    first.duration = timeOf(rowsToMove(first));
    done_ = 0;
    return true;
  }
  if (done_ < first.duration) return false;
  Step step = std::move(first);
  steps_.pop_front();
  finish(&step);
  return true;
}

void PrinterWorld::finish(Step* step) {
  switch (step->kind) {
    case Step::Kind::kPageStart:
      sheetOut_ = false;
      break;
    case Step::Kind::kFeed:
      finishFeed(*step);
      break;
    case Step::Kind::kCut:
      endLastSheet(SheetEnd::kCut, "cut");
      break;
    case Step::Kind::kPage:
      finishPage(step);
      break;
    case Step::Kind::kSheetOut:
      ++sheets_;
      sheetOut_ = true;
      lastIsOut_ = true;
      watcher_.sheet(lastNumber_, *last_, "out");
      break;
  }
}

// Paper that was fed to the edge and not back again is blank at the top of this sheet.
void PrinterWorld::finishPage(Step* step) {
  last_ = std::move(step->sheet);
  last_->lead(leadRows_ + (ahead_ ? rowsOf(kEdgeTenths) : 0));
  lastNumber_ = step->number;
  lastIsOut_ = false;
  ahead_ = false;
  leadRows_ = 0;
}

void PrinterWorld::finishFeed(const Step& step) {
  if (step.mode == kFeedLines && last_ && !lastIsOut_) {
    last_->feed(step.rows);
  } else if (step.mode == kFeedLines) {
    leadRows_ += step.rows;
  } else if (step.mode == kFeedBack) {
    ahead_ = false;
    leadRows_ = 0;
  } else if (isToEdge(step.mode) && !ahead_ && body_.media != Media::kSheet) {
    ahead_ = true;
    if (last_ && body_.media != Media::kContinuous) last_->feed(rowsOf(kGapTenths));
    endLastSheet(SheetEnd::kTear, "fed");
  }
}

void PrinterWorld::endLastSheet(SheetEnd end, const char* what) {
  if (!last_ || last_->end() == SheetEnd::kCut) return;
  last_->end(end);
  if (lastIsOut_) watcher_.sheet(lastNumber_, *last_, what);
}

// ---- The stream ----

void PrinterWorld::push(Step::Kind kind) {
  steps_.emplace_back();
  steps_.back().kind = kind;
}

void PrinterWorld::take(const StreamItem& item, Micros now) {
  advance(now);
  if (item.kind == ItemKind::kImage) {
    if (image_) {
      image_->add(item);
    } else {
      event("image of " + std::to_string(item.data.size()) + " bytes without an area, not printed");
    }
    return;
  }
  const bool begins = item.kind == ItemKind::kPageStart || item.kind == ItemKind::kArea;
  const bool ends = item.kind == ItemKind::kControl && item.data[0] == 1;
  closeImage();
  if (begins || ends) dropEmptyImage();
  if (begins) endPage("broken off");
  event(item.kind == ItemKind::kPageStart ? "page start" : itemText(item, 0));
  if (item.kind == ItemKind::kPageStart) push(Step::Kind::kPageStart);
  if (item.kind == ItemKind::kArea) startPicture(item);
  if (item.kind == ItemKind::kCut) push(Step::Kind::kCut);
  if (item.kind == ItemKind::kFeed) takeFeed(item);
  if (ends) endPage("");
  advance(now);
}

void PrinterWorld::takeFeed(const StreamItem& item) {
  push(Step::Kind::kFeed);
  steps_.back().mode = item.data[0];
  steps_.back().rows = item.word(1);
  if (item.data[0] == kFeedToMarkEdge && body_.media != Media::kMark) {
    event("no mark on this paper: feed mode 5 goes to the edge");
  }
}

void PrinterWorld::breakOff(Micros now) {
  advance(now);
  closeImage();
  dropEmptyImage();
  endPage("broken off");
  advance(now);
}

void PrinterWorld::startPicture(const StreamItem& area) {
  ++pages_;
  image_.emplace();
  image_->begin(area);
}

// Any other item ends the image: now its length is known and it can be printed.
void PrinterWorld::closeImage() {
  if (!image_ || image_->empty()) return;
  const size_t head = headDots(body_.dpi);
  auto sheet = std::make_unique<SheetPicture>(std::move(*image_), head);
  image_.reset();
  event("image " + std::to_string(sheet->pageRows()) + " rows x " +
        std::to_string(sheet->rowBytes()) + " bytes");
  if (sheet->pageRight() > head) {
    event("page " + std::to_string(pages_) + " ends at dot " + std::to_string(sheet->pageRight()) +
          ", the head at " + std::to_string(head));
  }
  watcher_.page(pages_, sheet->page());
  push(Step::Kind::kPage);
  steps_.back().number = pages_;
  steps_.back().rows = sheet->pageRows();
  steps_.back().sheet = std::move(sheet);
  waitsForOut_ = true;
}

void PrinterWorld::dropEmptyImage() {
  if (!image_) return;
  event("page " + std::to_string(pages_) + " has no image");
  image_.reset();
}

// `how` is empty when the page is complete.
void PrinterWorld::endPage(const char* how) {
  if (!waitsForOut_) return;
  if (*how != '\0') event("page " + std::to_string(pages_) + " " + how);
  waitsForOut_ = false;
  push(Step::Kind::kSheetOut);
}

}  // namespace korvel
