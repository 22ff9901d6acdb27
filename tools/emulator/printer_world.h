// What an emulated printer consists of: paper, cover, motor, and the sheet in its output. It turns
// commands and times into events and sheets. The caller gives it the time; it reads no clock.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_EMULATOR_PRINTER_WORLD_H
#define KORVEL_TOOLS_EMULATOR_PRINTER_WORLD_H

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/emulator/sheet_picture.h"
#include "tools/stream/page_picture.h"
#include "tools/stream/printer_model.h"
#include "tools/stream/printer_scenario.h"
#include "tools/stream/stream_decoder.h"

namespace korvel {

// The recipients of events and pictures. Pages are numbered by their area packets, from 1.
struct PrinterWatcher {
  std::function<void(const std::string& line)> event;
  // A page's image is complete, or has been cut off.
  std::function<void(unsigned number, const PagePicture& page)> page;
  // The sheet is "out", and later perhaps "fed" to the tear-off edge, or "cut".
  std::function<void(unsigned number, const SheetPicture& sheet, const char* what)> sheet;
};

// "ready", "paper out", "cover open", "paper out, cover open"; "printing" for none of them.
std::string statusText(uint64_t word);

// A page is printed when its image has ended. Its sheet is out when the page and the feeds after it
// have moved and PrintControl(1) has arrived. From then until the next page start the status is
// "paper out". Without paper or with an open cover the motor stops and all steps wait.
class PrinterWorld {
 public:
  PrinterWorld(const PrinterBody& body, PrinterWatcher watcher);

  // Every call with a time first advances the printer to it; time never goes back.
  void advance(Micros now);
  void take(const StreamItem& item, Micros now);  // any item but a status request
  void breakOff(Micros now);  // the page is cut off: what has arrived of it is printed
  bool apply(const Scenario& scenario, Micros now);  // false: not about paper or cover

  uint64_t statusWord() const;
  std::string stateText() const;  // "ready 0x00800000, paper loaded, cover closed, ..."
  bool idle() const { return steps_.empty() && !image_ && !waitsForOut_; }
  bool full() const { return pagesWaiting() >= kMostWaitingPages; }  // send no more for now
  size_t pagesWaiting() const;               // for the motor, including the one that is printing
  std::optional<Micros> nextChange() const;  // the next time at which something happens

 private:
  static constexpr size_t kMostWaitingPages = 4;

  struct Step {
    enum class Kind { kPageStart, kFeed, kCut, kPage, kSheetOut };
    Kind kind = Kind::kPageStart;
    unsigned mode = 0;                              // kFeed
    size_t rows = 0;                                // kFeed in mode 0, kPage
    unsigned number = 0;                            // kPage
    std::unique_ptr<SheetPicture> sheet = nullptr;  // kPage
    bool begun = false;
    Micros duration = 0;  // known once begun
  };
  struct Trigger {
    Scenario scenario;
    int64_t milliPages;  // since the start
  };

  size_t rowsOf(unsigned tenthsOfMm) const { return size_t{body_.dpi} * tenthsOfMm / 254; }
  Micros timeOf(size_t rows) const;
  size_t rowsToMove(const Step& step) const;
  bool canMove() const { return loaded_ && !coverOpen_; }
  bool moving() const { return !steps_.empty() && steps_.front().begun && canMove(); }
  Micros momentOf(const Trigger& trigger) const;
  bool isDue(const Trigger& trigger) const;

  void pass(Micros to);
  bool settleOne();
  bool fireTrigger();
  bool restore();
  bool finishStep();
  void finish(Step* step);
  void finishPage(Step* step);
  void finishFeed(const Step& step);
  void endLastSheet(SheetEnd end, const char* what);
  void setPaper(bool loaded);
  void setCover(bool open);

  void takeFeed(const StreamItem& item);
  void startPicture(const StreamItem& area);
  void closeImage();
  void dropEmptyImage();
  void endPage(const char* how);
  void push(Step::Kind kind);
  void event(const std::string& line) const { watcher_.event(line); }

  PrinterBody body_;
  PrinterWatcher watcher_;
  Micros clock_ = 0;

  bool loaded_ = true;
  bool coverOpen_ = false;
  bool sheetOut_ = false;  // a sheet is in the output
  std::optional<Micros> paperBackAt_, coverShutAt_;
  std::vector<Trigger> triggers_;

  std::optional<PagePicture> image_;  // of the page that is arriving
  unsigned pages_ = 0;                // area packets so far
  bool waitsForOut_ = false;          // after an image, before its PrintControl(1)

  std::deque<Step> steps_;  // of the motor, in order
  Micros done_ = 0;         // of the first step
  unsigned sheets_ = 0;     // out
  bool ahead_ = false;      // the paper is at the tear-off edge
  size_t leadRows_ = 0;     // fed before the next page
  std::unique_ptr<SheetPicture> last_;
  unsigned lastNumber_ = 0;
  bool lastIsOut_ = false;
};

}  // namespace korvel

#endif
