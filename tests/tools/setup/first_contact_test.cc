// What is said after set-up, by what the printer answered and by whether the driver waits for it.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/first_contact.h"

#include <gtest/gtest.h>

namespace {

using korvel::PrinterAnswer;

constexpr char kReady[] = "Queue labels is ready. Print with: lp -d labels FILE\n";
constexpr char kNotReached[] =
    "Queue labels was set up, but the printer at socket://192.0.2.7 cannot be reached. Switch it "
    "on, check its cable and address, then run: korvel-setup --check labels\n";
constexpr char kSilent[] =
    "Queue labels was set up, but the printer at socket://192.0.2.7 does not answer; with this "
    "driver each page takes about 20 minutes. The one-way driver does not wait for the printer (20 "
    "labels: 25 s instead of 82 s), but does not report missing paper: korvel-setup -p labels -m "
    "korvel-k220-203-oneway\n";

TEST(FirstContact, CallsAQueueReadyOnlyIfItsPrinterAnswersOrNeedNot) {
  const std::string open = std::string(kReady) +
                           "The printer's cover is open; close it before printing.\n"
                           "The printer has no paper; load it before printing.\n";
  const struct {
    const char* sentence;
    bool asks;
    korvel::PrinterReply reply;
    bool inVain;
    std::string want;
  } kCases[] = {
      {"two-way, answers", true, {PrinterAnswer::kAnswers}, false, kReady},
      {"two-way, not asked", true, {PrinterAnswer::kNotAsked}, false, kReady},
      {"two-way, silent", true, {PrinterAnswer::kSilent}, true, kSilent},
      {"two-way, dead", true, {PrinterAnswer::kNotReached}, false, kNotReached},
      {"one-way, silent", false, {PrinterAnswer::kSilent}, false, kReady},
      {"one-way, dead", false, {PrinterAnswer::kNotReached}, false, kNotReached},
      {"open and empty", true, {PrinterAnswer::kAnswers, true, true}, false, open},
  };
  for (const auto& c : kCases) {
    const korvel::Contact contact = {"labels", "socket://192.0.2.7", "korvel-k220-203", c.asks,
                                     c.reply};
    std::string have;
    for (const std::string& sentence : korvel::sentencesOf(contact)) have += sentence + "\n";
    EXPECT_EQ(have, c.want) << c.sentence;
    EXPECT_EQ(korvel::waitsInVain(contact), c.inVain) << c.sentence;
  }
}

}  // namespace
