// Which description a device gets, and what is known of a line by its address.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/device_choice.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using korvel::Link;

const std::vector<korvel::Description> kInstalled = {
    {"lsb/usr/korvel/korvel-k220-203-oneway.ppd", "Korvel K220 203 dpi one-way, 1.0"},
    {"lsb/usr/korvel/korvel-k220-203.ppd", "Korvel K220 203 dpi, 1.0"},
    {"lsb/usr/korvel/korvel-k220-300-oneway.ppd", "Korvel K220 300 dpi one-way, 1.0"},
    {"lsb/usr/korvel/korvel-k220-300.ppd", "Korvel K220 300 dpi, 1.0"},
    {"lsb/usr/korvel/korvel-label-203.ppd", "Korvel Label 203 dpi, 1.0"},
    {"lsb/usr/korvel/korvel-m6-oneway.ppd", "Korvel M6 300 dpi one-way, 1.0"},
    {"lsb/usr/korvel/korvel-m6.ppd", "Korvel M6 300 dpi, 1.0"},
};

TEST(DeviceLink, IsKnownByTheAddress) {
  const struct {
    const char* uri;
    Link want;
  } kCases[] = {
      {"usb://Korvel/K220?serial=1", Link::kTwoWay},
      {"socket://192.0.2.7", Link::kTwoWay},
      {"serial:/dev/ttyS0?baud=115200", Link::kTwoWay},
      {"parallel:/dev/lp0", Link::kTwoWay},
      {"dnssd://K220._pdl-datastream._tcp.local/", Link::kTwoWay},
      {"dnssd://K220._printer._tcp.local/", Link::kOneWay},
      {"dnssd://K220._ipp._tcp.local/", Link::kOneWay},
      {"lpd://192.0.2.7/queue", Link::kOneWay},
      {"ipp://192.0.2.7/ipp/print", Link::kOneWay},
      {"ipps://192.0.2.7/ipp/print", Link::kOneWay},
      {"smb://server/printer", Link::kOneWay},
      {"file:///dev/usb/lp0", Link::kOneWay},
      {"beh:/1/3/5/socket://192.0.2.7", Link::kUnknown},
      {"usbfoo://x", Link::kUnknown},
  };
  for (const auto& c : kCases) EXPECT_EQ(korvel::linkOf(c.uri), c.want) << c.uri;
}

TEST(DeviceChoice, ProposesWhatTheDeviceTells) {
  const struct {
    const char* sentence;
    korvel::Device device;
    const char* want;
  } kCases[] = {
      {"a device id",
       {"usb://Unknown/Printer", "", "Unknown", "MFG:Korvel;MDL:M6;CMD:KPL;"},
       "korvel-m6 "},
      {"two resolutions, both",
       {"usb://Korvel/K220?serial=7", "", "Korvel K220", ""},
       "korvel-k220-203 korvel-k220-300 "},
      {"the resolution that it reports first",
       {"usb://Korvel/K220", "", "Korvel K220 300dpi", ""},
       "korvel-k220-300 korvel-k220-203 "},
      {"one-way twins on a line that brings nothing back",
       {"lpd://korvel-m6.local/raw", "", "Unknown", ""},
       "korvel-m6-oneway "},
      {"capitals do not matter", {"usb://KORVEL/m6", "", "KORVEL m6", ""}, "korvel-m6 "},
      {"a common word beside a model's name",
       {"usb://Korvel/x", "Korvel Label Printer M6", "", ""},
       "korvel-m6 "},
      {"a common word alone",
       {"usb://Korvel/x", "Korvel Label Printer", "", ""},
       "korvel-label-203 "},
      {"a model of ours that is not known: all, for this line",
       {"usb://Korvel/X9", "", "Korvel X9", ""},
       "korvel-k220-203 korvel-k220-300 korvel-label-203 korvel-m6 "},
      {"a printer of others", {"usb://Other/M6", "", "Other M6", ""}, ""},
      {"only an address", {"socket://192.0.2.7", "", "", ""}, ""},
  };
  for (const auto& c : kCases) {
    std::string have;
    for (const auto& one : korvel::fitting(c.device, kInstalled)) have += one.bareName() + " ";
    EXPECT_EQ(have, c.want) << c.sentence;
  }
}

TEST(DeviceChoice, UnderstandsADescriptionsNames) {
  const struct {
    const char* name;
    const char* want;
  } kCases[] = {
      {"lsb/usr/korvel/korvel-m6.ppd", "korvel-m6"},
      {"korvel-m6", "korvel-m6"},
      {"m6", "korvel-m6"},
      {"k220-300-oneway", "korvel-k220-300-oneway"},
      {"k220", ""},
      {"", ""},
      {"M6", ""},
  };
  for (const auto& c : kCases) {
    const korvel::Description* one = korvel::meant(c.name, kInstalled);
    EXPECT_EQ(one == nullptr ? "" : one->bareName(), c.want) << c.name;
  }
}

TEST(DeviceChoice, NamesAQueueByItsModel) {
  EXPECT_EQ(korvel::proposedQueueName("korvel-k220-203-oneway"), "k220");
  EXPECT_EQ(korvel::proposedQueueName("korvel-m6"), "m6");
  EXPECT_EQ(korvel::proposedQueueName("other"), "other");
}

}  // namespace
