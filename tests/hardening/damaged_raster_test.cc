// Raster streams that end too soon or carry wrong bits. A stream cut in a header ends the job after
// the pages before it; one cut in the pixels drops that page after its setup.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <random>

#include "tests/hardening/golden_rasters.h"
#include "tests/hardening/hard_job.h"

namespace {

constexpr size_t kSetupBytes = 64 + 33;  // NUL bytes, then density between two controls
constexpr size_t kJobEndControls = 22;   // two controls

JobPlan planOf(const GoldenRaster& golden) {
  JobPlan plan;
  plan.ppd = testPpd(golden.ppd);
  plan.options = golden.options;
  plan.input = golden.bytes;
  plan.dumpFolder = false;  // a wrong resolution may make a dump of half a gigabyte
  return plan;
}

// The stream of a whole job, cut where its pages begin and where its end does.
class WholeJob {
 public:
  explicit WholeJob(const GoldenRaster& golden) : golden_(golden), job_(runJob(planOf(golden))) {
    const std::string nuls(64, '\0');
    for (size_t at = job_.output.find(nuls); at != std::string::npos;
         at = job_.output.find(nuls, at + kSetupBytes)) {
      // In pictures there may be as many zeros: a page start is followed by its setup.
      if (job_.output.compare(at + 64, 3, bytesOf("64 0E 40")) == 0) starts_.push_back(at);
    }
    const JobResult empty = runJob(emptyJob());
    end_ = empty.output;
  }

  // Whether every page printed, so that each has its place in the stream.
  bool isPlain() const {
    return job_.exitStatus == 0 && starts_.size() == golden_.pageStarts.size() &&
           countOf(job_.messages, "INFO: page ") == golden_.pageStarts.size() &&
           job_.output.ends_with(end_) && end_.size() >= kJobEndControls;
  }

  // What must come out when the input ends after `kept` bytes.
  std::string wanted(size_t kept) const {
    size_t page = 0;
    while (page < starts_.size() && endOfPage(page) <= kept) ++page;
    std::string want = job_.output.substr(0, startOf(page));
    const bool headerIsWhole =
        page < starts_.size() && kept >= golden_.pageStarts[page] + kRasterHeaderBytes;
    if (headerIsWhole) want += job_.output.substr(startOf(page), kSetupBytes);
    return want + end_;
  }

 private:
  JobPlan emptyJob() const {
    JobPlan plan = planOf(golden_);
    plan.input.clear();
    return plan;
  }
  size_t startOf(size_t page) const {
    return page < starts_.size() ? starts_[page] : job_.output.size() - end_.size();
  }
  size_t endOfPage(size_t page) const {
    return page + 1 < golden_.pageStarts.size() ? golden_.pageStarts[page + 1]
                                                : golden_.bytes.size();
  }

  GoldenRaster golden_;
  JobResult job_;
  std::vector<size_t> starts_;
  std::string end_;
};

void expectCutsToFollowTheRules(const GoldenRaster& golden, const std::vector<size_t>& cuts) {
  const WholeJob whole(golden);
  JobPlan plan = planOf(golden);
  for (const size_t kept : cuts) {
    plan.input = golden.bytes.substr(0, kept);
    const JobResult job = runJob(plan);
    ASSERT_EQ(disorderOf(job), "") << golden.name << " cut after " << kept;
    if (!whole.isPlain()) continue;
    ASSERT_EQ(job.exitStatus, 0) << golden.name << " cut after " << kept;
    ASSERT_EQ(hexText(job.output), hexText(whole.wanted(kept)))
        << golden.name << " cut after " << kept;
  }
}

// Every `step`th place of the first header, from `first` on, an eighth as many of the others, which
// are read by the same code, and `count` places of the pixels.
std::vector<size_t> cutPlaces(const GoldenRaster& golden, size_t first, size_t step, size_t count) {
  std::vector<size_t> places;
  for (size_t at = 0; at < 4; at += step) places.push_back(at);
  std::vector<size_t> pixels;
  for (size_t page = 0; page < golden.pageStarts.size(); ++page) {
    const size_t start = golden.pageStarts[page];
    const size_t apart = page == 0 ? step : 8 * step;
    for (size_t at = first; at < kRasterHeaderBytes; at += apart) places.push_back(start + at);
    const size_t end =
        page + 1 < golden.pageStarts.size() ? golden.pageStarts[page + 1] : golden.bytes.size();
    for (size_t at = start + kRasterHeaderBytes; at < end; ++at) pixels.push_back(at);
  }
  for (size_t i = 0; i < std::min(count, pixels.size()); ++i) {
    places.push_back(pixels[i * pixels.size() / std::min(count, pixels.size())]);
  }
  return places;
}

class DamagedGolden : public testing::TestWithParam<GoldenRaster> {};
class LongDamagedGolden : public DamagedGolden {};  // named apart: runs for minutes

TEST_P(DamagedGolden, CutAtAFewPlaces) {
  expectCutsToFollowTheRules(GetParam(), cutPlaces(GetParam(), 0, 899, 3));
}

// 32 goldens in a row share the bytes of a header, so that each byte is the end of a job or two.
TEST_P(LongDamagedGolden, CutAnywhere) {
  expectCutsToFollowTheRules(GetParam(), cutPlaces(GetParam(), GetParam().number % 32, 32, 64));
}

// Bits of pages, headers and the sync word, the same ones every time.
void flipBits(const GoldenRaster& golden, int jobs) {
  std::mt19937 dice(static_cast<unsigned>(std::hash<std::string>{}(golden.name)));
  JobPlan plan = planOf(golden);
  for (int i = 0; i < jobs; ++i) {
    plan.input = golden.bytes;
    std::string flipped;
    for (unsigned flips = 1 + dice() % 4; flips > 0 && !plan.input.empty(); --flips) {
      const size_t headers = kRasterHeaderBytes * golden.pageStarts.size();
      const bool inHeaders = dice() % 2 == 0 && headers != 0;
      const size_t range = inHeaders ? std::min(headers, plan.input.size()) : plan.input.size();
      const size_t at = dice() % range;
      const unsigned bit = dice() % 8;
      plan.input[at] = static_cast<char>(plan.input[at] ^ (1 << bit));
      flipped += " " + std::to_string(at) + "." + std::to_string(bit);
    }
    ASSERT_EQ(disorderOf(runJob(plan)), "") << golden.name << ", bits flipped:" << flipped;
  }
}

TEST_P(DamagedGolden, WithAFewFlippedBits) { flipBits(GetParam(), 3); }

TEST_P(LongDamagedGolden, WithFlippedBits) { flipBits(GetParam(), 64); }

std::vector<GoldenRaster> everyGolden() { return goldenRasters(); }

// One in eight, other ones for each kind of job.
std::vector<GoldenRaster> someGoldens() {
  std::vector<GoldenRaster> some;
  const std::vector<GoldenRaster> all = goldenRasters();
  const size_t step = underMemcheck() ? 24 : 8;
  for (size_t i = 0; i < all.size(); i += step) some.push_back(all[i]);
  return some;
}

const auto kNameOf = [](const auto& golden) { return golden.param.name; };

INSTANTIATE_TEST_SUITE_P(, DamagedGolden, testing::ValuesIn(someGoldens()), kNameOf);
INSTANTIATE_TEST_SUITE_P(, LongDamagedGolden, testing::ValuesIn(everyGolden()), kNameOf);

TEST(DamagedGoldens, MostOfThemAreHeldAgainstTheirWholeJob) {
  size_t plain = 0;
  const std::vector<GoldenRaster> all = someGoldens();
  for (const GoldenRaster& golden : all) plain += WholeJob(golden).isPlain() ? size_t{1} : 0;
  EXPECT_GE(plain * 10, all.size() * 7);
}

}  // namespace
