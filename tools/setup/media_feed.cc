// What the queue's driver offers decides: sheets are not fed, and only some models have a cutter.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/media_feed.h"

#include <cups/ipp.h>

#include <chrono>
#include <thread>

#include "tools/common/translation.h"
#include "tools/description/description_text.h"

namespace korvel {

namespace {

constexpr std::chrono::seconds kPatience(10);
constexpr std::chrono::milliseconds kBetweenLooks(100);

Result<void> checkMedia(const std::string& queue, const std::string& description, Feed feed) {
  if (takesSingleSheets(description)) {
    return Failure{
        filled("The printer of queue %s takes single sheets, which are not fed to a next "
               "label.",
               queue.c_str())};
  }
  if (feed == Feed::kCut && !hasCutter(description)) {
    return Failure{
        filled("The driver of queue %s has no cutter. Feed to the tear-off edge: "
               "korvel-setup --feed %s",
               queue.c_str(), queue.c_str())};
  }
  return {};
}

// The job's state when it has ended, or after some time.
int stateAtLast(const PrintSystem& system, int job) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  int state = system.jobState(job);
  while (state < IPP_JSTATE_STOPPED && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(kBetweenLooks);
    state = system.jobState(job);
  }
  return state;
}

}  // namespace

Result<void> feedMedia(const PrintSystem& system, const std::string& queue, Feed feed) {
  const std::string description = system.queueDescription(queue);
  const Result<void> checked = checkMedia(queue, description, feed);
  if (!checked) return checked;
  const bool blackMarks = keyword(description, "DefaultPaperType") == "LabelMark";
  const Result<int> job =
      system.printRaw(queue, feedCommands(feed, blackMarks), translated("Media feed"));
  if (!job) return job.failure();
  const int state = stateAtLast(system, job.value());
  // A backend may wait for the printer after it has sent everything.
  if (state == IPP_JSTATE_COMPLETED || state == IPP_JSTATE_PROCESSING) return {};
  return Failure{
      filled("Job %s-%d, which feeds the media, has not been sent. Find out why: "
             "korvel-setup --check %s",
             queue.c_str(), job.value(), queue.c_str())};
}

}  // namespace korvel
