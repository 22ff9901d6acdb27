// Printers that were not asked, by USB for example, are taken to be in order.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/first_contact.h"

#include "tools/common/translation.h"
#include "tools/setup/device_choice.h"

namespace korvel {

bool waitsInVain(const Contact& contact) {
  return contact.asks && contact.reply.answer == PrinterAnswer::kSilent;
}

std::vector<std::string> sentencesOf(const Contact& contact) {
  const char* queue = contact.queue.c_str();
  const char* uri = contact.uri.c_str();
  if (contact.reply.answer == PrinterAnswer::kNotReached) {
    return {
        filled("Queue %s was set up, but the printer at %s cannot be reached. Switch it on, "
               "check its cable and address, then run: korvel-setup --check %s",
               queue, uri, queue)};
  }
  if (waitsInVain(contact)) {
    return {
        filled("Queue %s was set up, but the printer at %s does not answer; with this driver "
               "each page takes about 20 minutes. The one-way driver does not wait for the "
               "printer (20 labels: 25 s instead of 82 s), but does not report missing paper: "
               "korvel-setup -p %s -m %s",
               queue, uri, queue, oneWayTwin(contact.driver).c_str())};
  }
  std::vector<std::string> sentences = {
      filled("Queue %s is ready. Print with: lp -d %s FILE", queue, queue)};
  if (contact.reply.coverOpen) {
    sentences.emplace_back(translated("The printer's cover is open; close it before printing."));
  }
  if (contact.reply.noPaper) {
    sentences.emplace_back(translated("The printer has no paper; load it before printing."));
  }
  return sentences;
}

}  // namespace korvel
