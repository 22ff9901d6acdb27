// What korvel-setup shows, and what it asks for: device, driver, queue name.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_SETUP_DIALOG_H
#define KORVEL_TOOLS_SETUP_SETUP_DIALOG_H

#include <string>
#include <vector>

#include "tools/setup/queue_setup.h"

namespace korvel {

void showDevices(const std::vector<Device>& devices, const std::vector<Description>& all);
void showDescriptions(const std::vector<Description>& all);
void showOptions(const std::string& description);  // of the text of a PPD

// Whether a non-empty answer means yes: it begins like `yes`, which is the word in the user's
// language, or with an English y, in upper or lower case.
bool agrees(const std::string& answer, const std::string& yes);

// Whether the changes shown above may be made.
bool agreesToChanges();

// Whether a queue of a silent printer should have the one-way driver.
bool wantsOneWay(const std::string& uri);

bool wantsTestPage();
bool wantsSharing();

// Asks for the Enter key.
void waitForTearOff();

// Stands for a printer that does not exist.
inline constexpr char kEmulatedUri[] = "emulated:";

class SetupDialog {
 public:
  // Without a user it asks nothing, and chooses only what is unambiguous.
  explicit SetupDialog(bool hasUser) : hasUser_(hasUser) {}

  // Fills in the plan's URI, driver and name; with a user also its label size and halftone. The URI
  // is kEmulatedUri if the user chose the emulated printer. Fails when something is missing or
  // ambiguous.
  Result<void> complete(const PrintSystem& system, const std::vector<Description>& all,
                        QueuePlan* plan) const;

 private:
  Result<Device> chooseDevice(const PrintSystem& system, const std::vector<Description>& all) const;
  Result<Description> chooseDescription(const Device& device,
                                        const std::vector<Description>& all) const;
  Result<Device> askForDevice(const std::vector<Device>& devices, size_t proposal) const;
  void chooseSize(const std::string& description, QueuePlan* plan) const;
  void chooseContent(const std::string& description, QueuePlan* plan) const;
  std::string chooseName(const PrintSystem& system, const QueuePlan& plan) const;

  bool hasUser_;
};

}  // namespace korvel

#endif
