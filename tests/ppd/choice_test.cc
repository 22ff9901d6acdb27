// Every choice of every description, printed by the real filter: the stream differs from that of
// the default choice in the way the choice promises, and in no other.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "tests/job/job_text.h"
#include "tests/ppd/descriptions.h"

namespace {

using Rows = std::vector<std::string>;

// The dots of a page, '1' for a dot, whole bytes a row.
Rows rowsOf(const SentPicture& picture) {
  std::string dots;
  for (const std::string& block : picture.blocks) {
    for (const char byte : block) {
      for (int bit = 7; bit >= 0; --bit) dots += (byte >> bit & 1) != 0 ? '1' : '0';
    }
  }
  Rows rows;
  const size_t width = size_t{picture.bytesPerRow()} * 8;
  for (size_t at = 0; width != 0 && at < dots.size(); at += width) {
    rows.push_back(dots.substr(at, width));
  }
  return rows;
}

// What was sent for one job.
struct Sent {
  std::string shape;   // of the whole job, status requests left out
  std::string others;  // every line but those of density and image
  std::string density;
  std::vector<Rows> pages;
};

// Ready before the page, the sheet out after it. A reply that fills the filter's buffer is whole
// at once; after a shorter one the filter listens for another second.
std::vector<StatusAnswer> willingPrinter(size_t pages) {
  std::vector<StatusAnswer> answers;
  for (size_t i = 0; i < pages; ++i) {
    for (const char* state :
         {"64 FF 01 08 00 00 00 80 00 00 00 00 00", "64 FF 01 08 00 00 00 08 00 00 00 00 00"}) {
      std::string reply = bytesOf(state);
      reply.resize(1024, '\0');
      StatusAnswer answer;
      answer.reads.push_back(reply);
      answers.push_back(answer);
    }
  }
  return answers;
}

Sent print(const Description& description, const std::vector<std::string>& recipes,
           const std::string& options) {
  std::vector<std::string> pages;
  for (std::string recipe : recipes) {
    recipe.insert(recipe.find(' '), " " + std::to_string(description.dpi) + "dpi");
    pages.push_back(recipe);
  }
  JobPlan plan;
  plan.ppd = ppdText(description);
  plan.options = options;
  plan.input = rasterOf(pages);
  if (reportsStatus(description)) plan.answers = willingPrinter(pages.size());
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.exitStatus, 0) << description.name << " " << options;

  Sent sent;
  sent.shape = shape(job.output);
  const auto asked = std::remove(sent.shape.begin(), sent.shape.end(), 's');
  EXPECT_EQ(static_cast<size_t>(sent.shape.end() - asked), plan.answers.size());
  sent.shape.erase(asked, sent.shape.end());
  const StreamText stream = readStream(job.output);
  for (const std::string& line : stream.lines) {
    if (line.starts_with("density ")) sent.density += line.substr(8) + " ";
    if (!line.starts_with("density ") && !line.starts_with("image ")) sent.others += line + "\n";
  }
  for (const SentPicture& picture : stream.pictures) sent.pages.push_back(rowsOf(picture));
  return sent;
}

// ---- What a choice promises: an empty text when the job keeps it, else what it broke. ----

struct Jobs {
  const Description& printer;
  const Sent& byDefault;
  const Sent& chosen;
  std::string choice;
};

std::string expectSame(const char* what, bool same) {
  return same ? "" : std::string(what) + " differs; ";
}

std::string onlyThePicture(const Jobs& jobs) {
  return expectSame("the density", jobs.chosen.density == jobs.byDefault.density) +
         expectSame("a command", jobs.chosen.others == jobs.byDefault.others);
}

long dotsIn(const Rows& rows, size_t from, size_t to) {
  long dots = 0;
  for (const std::string& row : rows) {
    dots +=
        std::count(row.begin() + static_cast<long>(from), row.begin() + static_cast<long>(to), '1');
  }
  return dots;
}

std::string setsTheHeat(const Jobs& jobs) {
  const std::map<std::string, std::string> kHeat = {
      {"Light", "1 "}, {"Middle", "8 "}, {"Dark", "15 "}};
  const auto want = kHeat.find(jobs.choice);
  if (want == kHeat.end()) return "no such heat";
  return (jobs.chosen.density == want->second ? "" : "density " + jobs.chosen.density) +
         expectSame("the picture", jobs.chosen.pages == jobs.byDefault.pages) +
         expectSame("a command", jobs.chosen.others == jobs.byDefault.others);
}

// On a page that goes from paper to full: higher is darker.
std::string shiftsTheTone(const Jobs& jobs) {
  const int step = std::stoi(jobs.choice);
  const long have = dotsIn(jobs.chosen.pages[0], 0, 64);
  const long before = dotsIn(jobs.byDefault.pages[0], 0, 64);
  const bool kept = step > 0 ? have > before : step < 0 ? have < before : have == before;
  return (kept ? "" : std::to_string(have) + " dots after " + std::to_string(before)) +
         onlyThePicture(jobs);
}

// Higher takes dots from the light half, left, and gives dots to the dark one.
std::string spreadsTheTone(const Jobs& jobs) {
  const int step = std::stoi(jobs.choice);
  const long light = dotsIn(jobs.chosen.pages[0], 0, 32) - dotsIn(jobs.byDefault.pages[0], 0, 32);
  const long dark = dotsIn(jobs.chosen.pages[0], 32, 64) - dotsIn(jobs.byDefault.pages[0], 32, 64);
  const bool kept = step > 0   ? light < 0 && dark > 0
                    : step < 0 ? light > 0 && dark < 0
                               : light == 0 && dark == 0;
  return (kept ? "" : std::to_string(light) + " light and " + std::to_string(dark) + " dark dots") +
         onlyThePicture(jobs);
}

// Four rows of eight dots of level 100, by the method that the choice's text names. The tattoo
// halftones are their own: nothing else may come out like them.
std::string runsItsMethod(const Jobs& jobs) {
  const std::map<std::string, Rows> kDots = {
      {"None", {"00000000", "00000000", "00000000", "00000000"}},
      {"FloydSteinberg", {"10101010", "01000100", "10101010", "00010001"}},
      {"Ordered", {"00100100", "10010010", "01010101", "00100010"}},
      {"Burkes", {"00100010", "01010100", "10001010", "01010010"}},
      {"Stucki", {"00010000", "10100110", "01001001", "00110010"}},
      {"JarvisJudiceNinke", {"00010000", "10101101", "01000100", "00100100"}},
      {"Sierra", {"00000000", "01111001", "00010011", "00110000"}},
      {"StevensonArce", {"10101010", "01000100", "10101010", "01010101"}},
  };
  const Rows& have = jobs.chosen.pages[0];
  std::string fault = onlyThePicture(jobs);
  const auto want = kDots.find(jobs.choice);
  if (want != kDots.end()) return fault + (have == want->second ? "" : "other dots");
  for (const auto& [name, dots] : kDots) {
    if (have == dots) fault += "the dots of " + name;
  }
  const bool isDefault = jobs.choice == jobs.printer.halftone;
  return fault + (isDefault == (have == jobs.byDefault.pages[0]) ? "" : "the default's dots");
}

// For an option of two choices, of which the first changes nothing.
std::string becomes(const Jobs& jobs, bool changed, const Rows& want) {
  const Rows& before = jobs.byDefault.pages[0];
  return expectSame("the picture", jobs.chosen.pages[0] == (changed ? want : before)) +
         (changed && want == before ? "the picture shows nothing" : "") + onlyThePicture(jobs);
}

std::string mirrors(const Jobs& jobs) {
  Rows want = jobs.byDefault.pages[0];
  for (std::string& row : want) std::reverse(row.begin(), row.end());
  return becomes(jobs, jobs.choice == "True", want);
}

std::string turns(const Jobs& jobs) {
  Rows want = jobs.byDefault.pages[0];
  for (std::string& row : want) std::reverse(row.begin(), row.end());
  std::reverse(want.begin(), want.end());
  return becomes(jobs, jobs.choice == "Rotation180", want);
}

std::string complements(const Jobs& jobs) {
  Rows want = jobs.byDefault.pages[0];
  for (std::string& row : want) {
    for (char& dot : row) dot = dot == '1' ? '0' : '1';
  }
  return becomes(jobs, jobs.choice == "True", want);
}

// The shapes are those of label printers; a stencil printer feeds forward before each picture.
std::string hasShape(const Jobs& jobs, std::string want) {
  for (size_t at = 0; jobs.printer.stencil && (at = want.find('I', at)) != std::string::npos;) {
    want.replace(at, 1, "0I");
    at += 2;
  }
  // Behind any feed the next page begins with the way back.
  const size_t second = want.find("S(d)(0I", 1);
  if (second != std::string::npos) want.replace(second, 7, "S(d)(40I");
  const std::string& have = jobs.chosen.shape;
  return (have == want ? "" : "have " + have + ", want " + want) +
         expectSame("the density", jobs.chosen.density == jobs.byDefault.density) +
         expectSame("the picture", jobs.chosen.pages == jobs.byDefault.pages);
}

std::string returnsToTheMark(const Jobs& jobs) {
  if (jobs.choice == "LabelGap") return hasShape(jobs, "S(d)(I)()");
  return jobs.choice == "LabelMark" ? hasShape(jobs, "S(d)(4I)()") : "no such paper";
}

std::string feedsAndCuts(const Jobs& jobs) {
  if (jobs.choice == "None") return hasShape(jobs, "S(d)(I)()");
  if (jobs.choice == "TearOff") return hasShape(jobs, "S(d)(I3)()");
  return jobs.choice == "Cut" ? hasShape(jobs, "S(d)(I3x)()") : "no such action";
}

// With a tear-off after each of two pages, or after the second only.
std::string tellsWhen(const Jobs& jobs) {
  if (jobs.choice == "AfterJob") return hasShape(jobs, "S(d)(I)S(d)(I)(3)");
  return jobs.choice == "EveryPage" ? hasShape(jobs, "S(d)(I3)S(d)(4I3)()") : "no such time";
}

// A blank sheet of 1181 x 1394 dots: 12 rows of dots at both ends, and the sides by the level. What
// fills a widened row up to four dots belongs to its right side.
std::string frames(const Jobs& jobs) {
  struct Frame {
    size_t left;
    size_t right;
    size_t ends;
  };
  const std::map<std::string, Frame> kFrames = {
      {"0", {0, 0, 0}}, {"1", {12, 15, 12}}, {"2", {24, 27, 12}}, {"3", {35, 36, 12}}};
  const auto frame = kFrames.find(jobs.choice);
  if (frame == kFrames.end()) return "no such frame";
  const size_t ends = frame->second.ends;
  const std::string left(frame->second.left, '1');
  const std::string right(frame->second.right, '1');
  const std::string end = left + std::string(1181, '1') + right;
  const std::string middle = left + std::string(1181, '0') + right;
  const Rows& have = jobs.chosen.pages[0];
  if (have.size() != 1394 + 2 * ends) return std::to_string(have.size()) + " rows";
  for (size_t y = 0; y < have.size(); ++y) {
    std::string want = y < ends || y >= 1394 + ends ? end : middle;
    want.resize(have[y].size(), '0');
    if (have[y] != want) return "row " + std::to_string(y) + " is not framed";
  }
  return "";
}

struct Promise {
  const char* option;
  const char* together;  // further options, of both jobs
  Rows pages;
  std::string (*broken)(const Jobs& jobs);
};

const char kRamp[] = "64x16 picture=ramp";
const char kStrokes[] = "64x24 picture=text:5";

const std::vector<Promise>& promises() {
  static const std::vector<Promise> kAll = {
      {"Darkness", "", {kRamp}, setsTheHeat},
      {"Brightness", "HalftoneType=FloydSteinberg Contrast=0", {kRamp}, shiftsTheTone},
      {"Contrast", "HalftoneType=FloydSteinberg Contrast=0", {kRamp}, spreadsTheTone},
      {"HalftoneType", "Contrast=0", {"8x4 picture=level:100"}, runsItsMethod},
      {"MirrorImage", "HalftoneType=None", {kStrokes}, mirrors},
      {"Origin", "HalftoneType=None", {kStrokes}, turns},
      {"NegativeImage", "HalftoneType=Tattoo", {kStrokes}, complements},
      {"NegativeImage", "HalftoneType=Tattoo_Z4", {kStrokes}, complements},
      {"PaperType", "", {kRamp}, returnsToTheMark},
      {"PostAction", "", {kRamp}, feedsAndCuts},
      {"Occurrence", "PostAction=TearOff", {kRamp, kStrokes}, tellsWhen},
      {"AntiWrinkle", "HalftoneType=None", {"1181x1394 size=Tattoo_A6 picture=white"}, frames},
  };
  return kAll;
}

class EveryChoice : public testing::TestWithParam<Description> {};

INSTANTIATE_TEST_SUITE_P(All, EveryChoice, testing::ValuesIn(descriptions()), [](const auto& each) {
  std::string name = each.param.name;
  for (char& c : name) c = c == '-' ? '_' : c;
  return name;
});

TEST_P(EveryChoice, KeepsItsPromise) {
  const Description& printer = GetParam();
  const OpenPpd ppd = openPpd(printer);
  ASSERT_NE(ppd, nullptr);
  for (const Promise& promise : promises()) {
    const ppd_option_t* option = ppdFindOption(ppd.get(), promise.option);
    if (option == nullptr && std::string(promise.option) == "AntiWrinkle") continue;
    ASSERT_NE(option, nullptr) << promise.option;
    EXPECT_GE(option->num_choices, 2) << promise.option;
    const Sent byDefault = print(printer, promise.pages, promise.together);
    for (int i = 0; i < option->num_choices; ++i) {
      const std::string choice = option->choices[i].choice;
      const std::string word = std::string(promise.option) + "=" + choice;
      const Sent chosen = print(printer, promise.pages, promise.together + (" " + word));
      EXPECT_EQ(promise.broken({printer, byDefault, chosen, choice}), "")
          << word << " " << promise.together;
    }
  }
}

// The sizes and the shapes of bars are kept by the rasteriser (see the tests of sheet sizes and of
// barcodes). Two options have one choice: they say what raster the printer needs.
TEST_P(EveryChoice, HasAPromise) {
  const OpenPpd ppd = openPpd(GetParam());
  ASSERT_NE(ppd, nullptr);
  forEachOption(*ppd, [](const ppd_option_t& option) {
    const std::string keyword = option.keyword;
    if (keyword == "PageSize" || keyword == "PageRegion" || keyword == "CenterOfPixel") return;
    const bool promised =
        std::any_of(promises().begin(), promises().end(),
                    [&](const Promise& promise) { return keyword == promise.option; });
    if (!promised) {
      EXPECT_EQ(option.num_choices, 1) << keyword;
    }
  });
}

// What the texts say of choices that meet, and of the standard finishing attribute.
TEST_P(EveryChoice, MeetsOthersAsTheTextsSay) {
  struct Case {
    const char* sentence;
    const char* options;
    const char* withCutter;
    const char* without;
  };
  const Case kCases[] = {
      {"no tear-off on black marks after the job",
       "PaperType=LabelMark PostAction=TearOff Occurrence=AfterJob", "S(d)(4I)()", "S(d)(4I)()"},
      {"on black marks after every page another feed", "PaperType=LabelMark PostAction=TearOff",
       "S(d)(4I5)()", "S(d)(4I5)()"},
      {"a cut after the job", "PostAction=Cut Occurrence=AfterJob", "S(d)(I)(3x)", "S(d)(I)()"},
      {"trim", "finishings=11", "S(d)(I3x)()", "S(d)(I)()"},
      {"trim after pages", "finishings=60", "S(d)(I3x)()", "S(d)(I)()"},
      {"trim after the job", "finishings=63", "S(d)(I)(3x)", "S(d)(I)()"},
      {"no finishing", "finishings=3", "S(d)(I)()", "S(d)(I)()"},
      {"no finishing leaves an option as it is", "finishings=3 PostAction=TearOff", "S(d)(I3)()",
       "S(d)(I3)()"},
      {"an option goes before trim", "finishings=11 PostAction=TearOff", "S(d)(I3)()",
       "S(d)(I3)()"},
  };
  const Description& printer = GetParam();
  const Sent byDefault = print(printer, {kRamp}, "");
  for (const Case& c : kCases) {
    const Sent chosen = print(printer, {kRamp}, c.options);
    EXPECT_EQ(hasShape({printer, byDefault, chosen, ""}, printer.cutter ? c.withCutter : c.without),
              "")
        << c.sentence;
  }
}

}  // namespace
