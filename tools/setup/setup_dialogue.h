// What is shown to the user and asked of him: devices, descriptions, the queue's name.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_SETUP_DIALOGUE_H
#define KORVEL_TOOLS_SETUP_SETUP_DIALOGUE_H

#include <string>
#include <vector>

#include "tools/setup/queue_setup.h"

namespace korvel {

void showDevices(const std::vector<Device>& devices, const std::vector<Description>& all);
void showDescriptions(const std::vector<Description>& all);
void showOptions(const std::string& description);

// Whether an answer, which is not empty, says yes, whose word in the user's language is `yes`: by
// the first letter, in either case where it has two; an English y does on every keyboard.
bool agrees(const std::string& answer, const std::string& yes);

// Whether the changes shown above may be made.
bool agreesToChanges();

class SetupDialogue {
 public:
  // One that does not talk takes what is certain and asks nothing.
  explicit SetupDialogue(bool talks) : talks_(talks) {}

  // Fills in the plan's address, description and name. Returns an empty text, or one sentence on
  // what is missing and how to tell it.
  std::string complete(const PrintSystem& system, const std::vector<Description>& all,
                       QueuePlan* plan) const;
  bool wantsTestPage() const;

 private:
  std::string chooseDevice(const PrintSystem& system, const std::vector<Description>& all,
                           Device* device) const;
  std::string chooseDescription(const Device& device, const std::vector<Description>& all,
                                Description* description) const;
  std::string chooseName(const PrintSystem& system, QueuePlan* plan) const;

  bool talks_;
};

}  // namespace korvel

#endif
