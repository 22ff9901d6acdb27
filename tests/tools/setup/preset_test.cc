// Names, addresses and defaults of presets.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/preset.h"

#include <gtest/gtest.h>

namespace {

struct Pair {
  const char* input;
  const char* want;
};

TEST(Preset, NamesAQueue) {
  for (const Pair& one : {Pair{"Stencil, mirrored", "m6-stencil-mirrored"},
                          Pair{" A  b! ", "m6-a-b"}, Pair{"Größe", "m6-größe"}}) {
    EXPECT_EQ(korvel::presetQueueName("m6", one.input), one.want);
  }
}

TEST(Preset, MovesSocketsOnly) {
  for (const Pair& one : {Pair{"socket://192.0.2.7", "korvel://192.0.2.7"},
                          Pair{"korvel://192.0.2.7", "korvel://192.0.2.7"},
                          Pair{"usb://Korvel/M6", "usb://Korvel/M6"}, Pair{"", ""}}) {
    EXPECT_EQ(korvel::addressWithTurns(one.input), one.want);
  }
}

TEST(Preset, KnowsADeviceByAnyAddress) {
  for (const Pair& one : {Pair{"socket://192.0.2.7", "korvel://192.0.2.7:9100"},
                          Pair{"korvel://192.0.2.7:9100?waiteof=no", "korvel://192.0.2.7:9100"},
                          Pair{"socket://[2001:db8::7]/", "korvel://[2001:db8::7]:9100"},
                          Pair{"socket://[2001:db8::7]:9101", "korvel://[2001:db8::7]:9101"},
                          Pair{"usb://Korvel/M6?serial=1", "usb://Korvel/M6?serial=1"}}) {
    EXPECT_EQ(korvel::deviceOf(one.input), one.want);
  }
}

std::string driver(const std::string& mirror, const std::string& darkness) {
  return "*PPD-Adobe: \"4.3\"\n*FormatVersion: \"4.3\"\n*FileVersion: \"1.0\"\n"
         "*LanguageVersion: English\n*LanguageEncoding: ISOLatin1\n*PCFileName: \"A.PPD\"\n"
         "*Manufacturer: \"K\"\n*Product: \"(K)\"\n*ModelName: \"K\"\n*ShortNickName: \"K\"\n"
         "*NickName: \"K\"\n*PSVersion: \"(3010) 0\"\n"
         "*OpenUI *MirrorImage: PickOne\n*DefaultMirrorImage: " +
         mirror +
         "\n*MirrorImage False: \"\"\n*MirrorImage True: \"\"\n*CloseUI: *MirrorImage\n"
         "*OpenUI *Darkness: PickOne\n*DefaultDarkness: " +
         darkness + "\n*Darkness Light: \"\"\n*Darkness Dark: \"\"\n*CloseUI: *Darkness\n";
}

TEST(Preset, KeepsTheQueuesOwnDefaults) {
  const korvel::Options want = {{"Darkness", "Dark"}};
  EXPECT_EQ(korvel::ownDefaults(driver("False", "Dark"), driver("False", "Light")), want);
  EXPECT_TRUE(korvel::ownDefaults(driver("True", "Dark"), driver("True", "Dark")).empty());
}

}  // namespace
