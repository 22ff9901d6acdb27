// SIGTERM at random moments of every state. Always status 1, soon; what has reached the printer is
// the beginning of what the whole job prints, and every finished page is in it.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <random>
#include <thread>

#include "tests/hardening/hard_job.h"

namespace {

// The filter needs some milliseconds; the rest is for a busy machine.
constexpr double kSoon = 3.0;

struct State {
  const char* name;
  JobPlan plan;
  const char* begins;  // the message at which it begins
  double length;       // seconds within which the signal comes
  std::string whole;   // what the job would print in the end
};

const char kSmallPage[] = "8x4 203dpi picture=checker:2";

JobPlan endless(const std::vector<std::string>& recipes, const std::string& options = "") {
  JobPlan plan = labelJob(recipes, options);
  plan.inputStaysOpen = true;
  plan.dumpFolder = false;
  return plan;
}

std::vector<State> everyState() {
  std::vector<State> states;
  const std::vector<std::string> many(40, kSmallPage);
  states.push_back({"reading and printing", endless(many), "DEBUG:settings->Contrast", 0.02, ""});

  std::vector<std::string> noisy(6, "160x120 203dpi picture=noise:5");
  states.push_back(
      {"computing", endless(noisy, "HalftoneType=Tattoo_Z4"), "INFO: page 1\n", 0.03, ""});

  JobPlan stalled = endless(std::vector<std::string>(4, "1600x600 203dpi picture=noise:1"));
  stalled.outputStalls = true;
  states.push_back({"writing to a stalled reader", stalled, "doPrintImage: Input image", 0.05, ""});

  JobPlan waiting = endless({kSmallPage});
  waiting.ppd = testPpd("label", "K220");
  states.push_back({"waiting for the drain", waiting, "Enter WaitForPrinterReady", 0.1, ""});

  JobPlan listening = waiting;
  listening.answers = {{1, {}, ""}};
  states.push_back({"listening to the back channel", listening, "cups_sc_status_t = 1", 0.1, ""});

  JobPlan sleeping = waiting;
  sleeping.answers = {{7, {}, ""}};
  states.push_back({"sleeping", sleeping, "cups_sc_status_t = 7", 0.1, ""});

  for (State& state : states) {
    if (state.plan.ppd != testPpd("label")) continue;  // a wait has printed a request or none
    JobPlan whole = state.plan;
    whole.inputStaysOpen = false;
    whole.outputStalls = false;
    state.whole = runJob(whole).output;
    state.whole.resize(state.whole.size() - 22);  // without the job's end
  }
  return states;
}

// Offset behind each page of a stream.
std::vector<size_t> pageEnds(const std::string& stream) {
  const std::string start = std::string(64, '\0') + bytesOf("64 0E 40");
  std::vector<size_t> ends;
  for (size_t at = stream.find(start, 1); at != std::string::npos;
       at = stream.find(start, at + 1)) {
    ends.push_back(at);
  }
  ends.push_back(stream.size());
  return ends;
}

void expectItsBeginning(const State& state, const JobResult& job) {
  if (state.whole.empty()) return;
  EXPECT_EQ(job.output == state.whole.substr(0, job.output.size()), true) << "a stray byte";
  const size_t begun = countOf(job.messages, "DEBUG:PAGE: ");
  if (begun < 2) return;
  EXPECT_GE(job.output.size(), pageEnds(state.whole)[begun - 2]) << "a finished page is lost";
}

// Returns the seconds that the slowest took.
double terminate(int jobs) {
  const std::vector<State> states = everyState();
  std::mt19937 dice(7);
  double slowest = 0;
  for (int i = 0; i < jobs; ++i) {
    const State& state = states[static_cast<size_t>(i) % states.size()];
    const double moment = state.length * static_cast<double>(dice() % 1000) / 1000;
    SCOPED_TRACE(std::string(state.name) + ", after " + std::to_string(moment) + " s");
    JobRunner runner(state.plan);
    if (!runner.runUntilMessage(state.begins)) {
      ADD_FAILURE() << "never got there";
      return slowest;
    }
    runner.runFor(moment * slowness());
    runner.sendSignal(SIGTERM);
    const JobResult& job = runner.finish();
    EXPECT_FALSE(job.timedOut);
    EXPECT_EQ(job.exitStatus, 1) << "signal " << job.signal;
    EXPECT_EQ(countOf(job.messages, "jobEnd"), 0u);
    expectItsBeginning(state, job);
    slowest = std::max(slowest, runner.timeToEnd().count());
    if (testing::Test::HasFailure()) break;
  }
  EXPECT_LT(slowest, kSoon * slowness());
  testing::Test::RecordProperty("slowest", std::to_string(slowest));
  std::printf("the slowest of %d ended after %.1f ms\n", jobs, slowest * 1000);
  return slowest;
}

// Until the first statement of main has run, while libraries are loaded, the signal itself ends the
// process; from there on the status is 1. Nothing else may happen, and no job is half begun.
struct Outcomes {
  int bySignal = 0;
  int byStatus = 0;
};

Outcomes terminateFromExecOn(int jobs, double lastMoment) {
  Outcomes outcomes;
  for (int i = 0; i < jobs; ++i) {
    const double moment = lastMoment * i / jobs;
    SCOPED_TRACE("after " + std::to_string(moment * 1000) + " ms");
    JobRunner runner(endless({kSmallPage}));
    std::this_thread::sleep_for(std::chrono::duration<double>(moment));
    runner.sendSignal(SIGTERM);
    const JobResult& job = runner.finish();
    EXPECT_FALSE(job.timedOut);
    if (job.signal == SIGTERM) {
      ++outcomes.bySignal;
      EXPECT_EQ(job.messages, "");
      EXPECT_EQ(job.output, "");
    } else {
      ++outcomes.byStatus;
      EXPECT_EQ(job.exitStatus, 1) << "signal " << job.signal;
    }
    if (testing::Test::HasFailure()) break;
  }
  std::printf("%d ended by the signal, %d by status 1\n", outcomes.bySignal, outcomes.byStatus);
  return outcomes;
}

constexpr double kStartSeconds = 0.03;  // loading takes about half of it

TEST(TerminationFromExecOn, HasTwoOutcomes) {
  terminateFromExecOn(fewUnderMemcheck(100), kStartSeconds * slowness());
}

TEST(LongTerminationFromExecOn, HasTwoOutcomes) {
  terminateFromExecOn(2000, kStartSeconds * slowness());
}

// A signal that is blocked waits for main, however early it comes.
TEST(TerminationFromExecOn, HasOneOutcomeUnderAHostThatBlocksTheSignal) {
  JobPlan plan = endless({kSmallPage});
  plan.blockedSignals = {SIGTERM};
  plan.pendingSignal = SIGTERM;
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.exitStatus, 1) << "signal " << job.signal;
  EXPECT_EQ(job.messages, "");
  EXPECT_EQ(job.output, "");
}

TEST(TerminationAtAnyMoment, AHundredTimes) { terminate(fewUnderMemcheck(100)); }

TEST(LongTerminationAtAnyMoment, TwoThousandTimes) { terminate(2000); }

}  // namespace
