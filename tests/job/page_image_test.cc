// The effect of options on the dots, for pages small enough to write the dots down.
// Each expected result was derived from the definition of the method, not with this program.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/job/job_text.h"

namespace {

std::string labelDots(const std::string& page, const std::string& options) {
  const JobResult job = runJob(labelJob({page}, options));
  EXPECT_EQ(job.exitStatus, 0) << page << " " << options;
  return imageHex(job.output);
}

TEST(PageImage, EachHalftoneProducesItsOwnDots) {
  struct Case {
    const char* name;
    const char* flat;  // 8 x 4 dots of level 100
    const char* ramp;  // 16 x 8 dots, 0 to 255 from left to right
  };
  const Case kCases[] = {
      {"None", "00 00 00 00", "00 FF 00 FF 00 FF 00 FF 00 FF 00 FF 00 FF 00 FF"},
      {"FloydSteinberg", "AA 44 AA 11", "0A FF 05 55 2A BF 01 57 0A FF 05 55 2A BF 01 57"},
      {"Ordered", "24 92 55 22", "02 FF 09 2F 05 DF 08 BF 05 B7 09 6F 04 BF 13 6F"},
      {"Burkes", "22 54 8A 52", "02 FF 04 AF 09 5F 05 BF 02 DF 12 6F 09 BF 05 5B"},
      {"Stucki", "10 A6 49 32", "01 BF 04 DF 0A DF 02 7F 05 5B 09 BF 04 DF 04 DF"},
      {"JarvisJudiceNinke", "10 AD 44 24", "01 BF 04 DF 0A DF 02 77 0A BF 01 9F 14 EF 06 7F"},
      {"Sierra", "00 79 13 30", "01 FF 01 3F 06 7F 06 77 01 9F 06 6F 06 7F 01 DF"},
      {"StevensonArce", "AA 44 AA 55", "0A AF 05 DF 2A AB 01 7F 0A AF 05 DF 2A AB 01 7F"},
      {"Tattoo", "55 AA 6D 55", "05 BF 05 FF 05 5F 06 FF 07 BF 02 EF 07 7F 02 FF"},
      {"Tattoo_Z4", "55 AA 55 AA", "15 57 2A BF 16 AF 35 AF 15 5B 2B 5F 2A D7 2A AF"},
  };
  for (const Case& c : kCases) {
    const std::string options = std::string("HalftoneType=") + c.name;
    EXPECT_EQ(labelDots("8x4 203dpi picture=level:100", options), c.flat) << c.name;
    EXPECT_EQ(labelDots("16x8 203dpi picture=ramp", options), c.ramp) << c.name;
  }
}

TEST(PageImage, TheThresholdIsOneHundredAndTwentyEight) {
  EXPECT_EQ(labelDots("8x2 203dpi picture=level:128", "HalftoneType=None"), "00 00");
  EXPECT_EQ(labelDots("8x2 203dpi picture=level:129", "HalftoneType=None"), "FF FF");
}

TEST(PageImage, BlankPagesStayBlankAndFullOnesFull) {
  for (const char* name : {"None", "FloydSteinberg", "Ordered", "Burkes", "Stucki",
                           "JarvisJudiceNinke", "Sierra", "StevensonArce", "Tattoo", "Tattoo_Z4"}) {
    const std::string options = std::string("HalftoneType=") + name;
    EXPECT_EQ(labelDots("8x3 203dpi picture=white", options), "00 00 00") << name;
    EXPECT_EQ(labelDots("8x3 203dpi picture=black", options), "FF FF FF") << name;
  }
}

TEST(PageImage, AnUnknownTargetIsIgnored) {
  for (const char* target : {"", "portable", "avx2 ", "avx1024", "%n%s"}) {
    JobPlan plan = labelJob({"16x8 203dpi picture=ramp"}, "HalftoneType=Burkes");
    plan.environment = {{"KORVEL_TARGET", target}};
    const JobResult job = runJob(plan);
    EXPECT_EQ(job.exitStatus, 0) << target;
    EXPECT_EQ(imageHex(job.output), "02 FF 04 AF 09 5F 05 BF 02 DF 12 6F 09 BF 05 5B") << target;
  }
}

TEST(PageImage, ToneComesBeforeTheHalftone) {
  struct Case {
    const char* options;
    const char* threshold;  // first row of a 16-dot ramp, halftone "None"
    const char* ordered;    // first two rows, halftone "StevensonArce"
  };
  const Case kCases[] = {
      {"Brightness=0 Contrast=0", "00 FF", "0A AF 05 DF"},
      {"Brightness=20", "3F FF", "AA FF 5F FF"},
      {"Brightness=-20", "00 03", "00 AA 00 05"},
      {"Brightness=100", "FF FF", "FF FF FF FF"},
      {"Brightness=-100", "00 00", "00 00 00 00"},
      {"Brightness=1", "00 FF", "8A AF 05 DF"},
      {"Contrast=50", "00 FF", "0A BF 00 FF"},
      {"Contrast=-50", "00 00", "AA AA 55 55"},
      {"Contrast=20", "00 FF", "0A AF 05 FF"},
      {"Contrast=-20", "00 FF", "AA AA 05 DF"},
      {"Contrast=100", "00 FF", "02 FF 00 FF"},
      {"Contrast=-100", "FF 00", "EA A8 FD 40"},
      {"Brightness=20 Contrast=-20", "FF FF", "AE FF DF FF"},
  };
  for (const Case& c : kCases) {
    const std::string options = c.options;
    EXPECT_EQ(labelDots("16x1 203dpi picture=ramp", options + " HalftoneType=None"), c.threshold)
        << options;
    EXPECT_EQ(labelDots("16x2 203dpi picture=ramp", options + " HalftoneType=StevensonArce"),
              c.ordered)
        << options;
  }
}

TEST(PageImage, TurnsAndMirrors) {
  struct Case {
    const char* options;
    const char* dots;
  };
  // Over 8 dots the ramp is 0 36 72 109 145 182 218 255: four dots on its right.
  const Case kCases[] = {
      {"Origin=Rotation0", "0F 0F"},
      {"Origin=Rotation180", "F0 F0"},
      {"MirrorImage=True", "F0 F0"},
      {"Origin=Rotation180 MirrorImage=True", "0F 0F"},
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(labelDots("8x2 203dpi picture=ramp", c.options), c.dots) << c.options;
  }
  const Case kDown[] = {
      {"Origin=Rotation0", "00 00 FF FF"},
      {"Origin=Rotation180", "FF FF 00 00"},
      {"MirrorImage=True", "00 00 FF FF"},
      {"Origin=Rotation180 MirrorImage=True", "FF FF 00 00"},
  };
  for (const Case& c : kDown) {
    EXPECT_EQ(labelDots("8x4 203dpi picture=rampdown", c.options), c.dots) << c.options;
  }
}

TEST(PageImage, TheHalftoneRunsAfterTurnAndMirror) {
  // The 4 x 4 matrix stays fixed on the paper: column 0 of row 0 is filled first.
  for (const char* options : {"HalftoneType=FloydSteinberg",
                              "HalftoneType=FloydSteinberg "
                              "MirrorImage=True",
                              "HalftoneType=FloydSteinberg Origin=Rotation180"}) {
    EXPECT_EQ(labelDots("8x4 203dpi picture=level:16", options), "88 00 00 00") << options;
  }
}

TEST(PageImage, NegativePrintingByPath) {
  struct Case {
    const char* sentence;
    const char* page;
    const char* options;
    const char* dots;
  };
  const Case kCases[] = {
      {"both indices of the default path become dots", "8x2 203dpi picture=checker:1",
       "HalftoneType=None NegativeImage=True", "FF FF"},
      {"the dots of a blank page as well", "8x2 203dpi picture=white",
       "HalftoneType=Burkes NegativeImage=True", "FF FF"},
      {"the stencil path swaps paper and dots", "8x2 203dpi picture=white",
       "HalftoneType=Tattoo NegativeImage=True", "FF FF"},
      {"a black stencil page becomes blank", "8x2 203dpi picture=black",
       "HalftoneType=Tattoo NegativeImage=True", "00 00"},
      {"every dot of a stencil ramp is swapped", "16x8 203dpi picture=ramp",
       "HalftoneType=Tattoo NegativeImage=True", "FA 40 FA 00 FA A0 F9 00 F8 40 FD 10 F8 80 FD 00"},
  };
  for (const Case& c : kCases) EXPECT_EQ(labelDots(c.page, c.options), c.dots) << c.sentence;
}

std::string repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

TEST(PageImage, TheFrameRunsAlongTheEdgesOfItsSheet) {
  struct Case {
    const char* sentence;
    const char* page;
    const char* options;
    std::string dots;
  };
  // At 16 dots an inch an A6 sheet is 63 by 74 dots; bands are one dot, at level 3 two at the
  // sides. Rows of 65 and 67 dots are stored in 68, so nine bytes are sent.
  const std::string full = "FF FF FF FF FF FF FF FF ";
  const std::string blank = "00 00 00 00 00 00 00 ";
  const Case kCases[] = {
      {"level 0: no frame", "65x2 16dpi size=Tattoo_A6", "AntiWrinkle=0", repeated("00 ", 18)},
      {"level 1", "65x76 16dpi size=Tattoo_A6", "AntiWrinkle=1",
       full + "80 " + repeated("80 " + blank + "80 ", 74) + full + "80 "},
      {"level 2: the same at this resolution", "65x76 16dpi size=Tattoo_A6", "AntiWrinkle=2",
       full + "80 " + repeated("80 " + blank + "80 ", 74) + full + "80 "},
      {"level 3", "67x76 16dpi size=Tattoo_A6", "AntiWrinkle=3",
       full + "E0 " + repeated("C0 " + blank + "60 ", 74) + full + "E0 "},
      {"an unknown sheet", "65x2 16dpi size=tattoo_a6", "AntiWrinkle=1", repeated("00 ", 18)},
  };
  for (const Case& c : kCases) {
    for (const char* halftone : {"None", "Tattoo"}) {
      const JobResult job =
          runJob(stencilJob({c.page}, std::string(c.options) + " HalftoneType=" + halftone));
      EXPECT_EQ(job.exitStatus, 0);
      EXPECT_EQ(imageHex(job.output) + " ", c.dots) << c.sentence << ", " << halftone;
    }
  }
}

TEST(PageImage, ALabelNamedLikeASheetIsProcessedQuickly) {
  for (const char* page :
       {"64x64 203dpi size=A4 picture=checker:8", "16x16 16dpi size=Tattoo_A5 picture=checker:8",
        "64x64 300dpi size=Letter picture=checker:8"}) {
    JobPlan plan = labelJob({page});
    plan.dumpFolder = false;  // its dump would be 256 MiB
    const JobResult job = runJob(plan);
    EXPECT_FALSE(job.timedOut) << page;
    // It takes half a second, or two without optimisation.
    EXPECT_LT(job.processorSeconds, 10 * slowness()) << page;
    EXPECT_EQ(job.exitStatus, 0) << page;
    EXPECT_EQ(countOf(job.messages, "EnableAntiWrink: AntiWrinkle level: -1,"), 1u) << page;
  }
}

TEST(PageImage, BytesAfterTheLastPixelDoNotBecomeDots) {
  // Nine pixels are stored in twelve: the last three are paper, whatever the raster contained.
  for (const char* halftone : {"HalftoneType=None", "HalftoneType=StevensonArce"}) {
    EXPECT_EQ(labelDots("9x2 203dpi pad=7 picture=black", halftone), "FF 80 FF 80") << halftone;
  }
}

}  // namespace
