// A multicast DNS question and its answer: what a phone sends to find printers, and what it gets.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_DNSSD_MESSAGE_H
#define KORVEL_TOOLS_SETUP_DNSSD_MESSAGE_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace korvel {

// What iOS looks for; Android and Linux look for _ipp._tcp.local.
constexpr char kAirPrintService[] = "_universal._sub._ipp._tcp.local";

// A question for the instances of a service type, and one for the details of an IPP printer.
std::string dnssdQuestion(const std::string& service);
std::string dnssdPrinterQuestion(const std::string& name);

struct ServiceInstance {
  std::string name;  // "Labels @ shop"
  std::string host;  // "shop.local"; empty when the answer has none
  int port = 0;
  std::map<std::string, std::string> text;  // the TXT record: "rp" -> "printers/labels"
};

// The instances in an answer; those that can be read when it is damaged.
std::vector<ServiceInstance> dnssdInstances(std::string_view answer, const std::string& service);

// The details of one IPP printer in an answer; its name is empty when it is not in there.
ServiceInstance dnssdPrinter(std::string_view answer, const std::string& name);

}  // namespace korvel

#endif
