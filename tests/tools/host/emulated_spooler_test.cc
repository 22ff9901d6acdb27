// The emulated spooler with stand-in filters: arguments, descriptors, answers, time limit.
// A stand-in is a shell script, so that what is tested is the spooler's side alone.
// SPDX-License-Identifier: Apache-2.0
#include "tools/host/emulated_spooler.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "tests/support/hex_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/tools/result_text.h"
#include "tools/stream/printer_model.h"

namespace {

struct RunResult {
  korvel::Result<korvel::SpoolerOutcome> outcome = korvel::SpoolerOutcome();
  std::string output;
  std::string messages;
};

// Runs a job whose filter is the given shell script, on a raster file that holds `pages`.
RunResult runScript(const TemporaryFolder& folder, const std::string& script,
                    korvel::SpoolerJob job) {
  RunResult run;
  job.filter = folder.write("filter", "#!/bin/sh\n" + script + "\n");
  chmod(job.filter.c_str(), 0700);
  job.raster = folder.write("pages", "raster");
  job.output = [&](const char* bytes, size_t count) { run.output.append(bytes, count); };
  job.messages = [&](const char* bytes, size_t count) { run.messages.append(bytes, count); };
  run.outcome = korvel::runSpoolerJob(job);
  return run;
}

korvel::Scenario scenario(const std::string& text) {
  const korvel::Result<korvel::Scenario> parsed = korvel::parseScenario(text);
  EXPECT_TRUE(parsed.ok()) << text;
  return parsed.value();
}

// A status request on standard output, in octal for printf.
const char kRequest[] = "printf 'd\\020\\100\\000\\000\\000\\000\\000\\000\\233'";
// A drain request on the side channel, then its four-byte answer as hex on standard error.
const char kDrain[] = "printf '\\002\\000\\000\\000' >&4; head -c 4 <&4 | od -An -tx1 >&2";

}  // namespace

TEST(EmulatedSpooler, StartsTheFilterAsTheSpoolerDoes) {
  struct Case {
    const char* sentence;
    const char* script;
    bool rasterAsFile;
    const char* output;
    const char* messages;
    int status;
  };
  const Case cases[] = {
      {"the pages come on standard input", "cat", false, "raster", "", 0},
      {"or as the seventh argument, with nothing on standard input",
       "cat; echo $# >&2; basename \"$6\"", true, "pages\n", "6\n", 0},
      {"the arguments are in order", "echo \"$1|$2|$3|$4|$5\"", false,
       "7|ann|a title|3|Darkness=Dark x=y\n", "", 0},
      {"the description is in the environment", "echo \"$PPD\"", false, "/some/printer.ppd\n", "",
       0},
      {"the filter's status is passed on", "exit 3", false, "", "", 3},
  };
  for (const Case& c : cases) {
    const TemporaryFolder folder;
    korvel::SpoolerJob job;
    job.jobId = "7";
    job.user = "ann";
    job.title = "a title";
    job.copies = "3";
    job.options = "Darkness=Dark x=y";
    job.ppd = "/some/printer.ppd";
    job.rasterAsFile = c.rasterAsFile;
    const RunResult have = runScript(folder, c.script, job);
    ASSERT_EQ("", failureOf(have.outcome)) << c.sentence;
    EXPECT_EQ(c.output, have.output) << c.sentence;
    EXPECT_EQ(c.messages, have.messages) << c.sentence;
    EXPECT_EQ(c.status, have.outcome.value().status) << c.sentence;
  }
}

TEST(EmulatedSpooler, AnswersStatusRequestsAsTheScenariosSay) {
  const TemporaryFolder folder;
  korvel::SpoolerJob job;
  job.scenarios = {scenario("reply 64 FF 01 02"), scenario("reply drain-refused")};
  const RunResult have =
      runScript(folder,
                std::string(kRequest) + "; " + kDrain + "; head -c 4 <&3 | od -An -tx1 >&2; " +
                    kRequest + "; " + kDrain,
                job);
  EXPECT_EQ(" 02 01 00 00\n 64 ff 01 02\n 02 07 00 00\n", have.messages);
  EXPECT_EQ(2u, have.outcome.value().statusRequests);
  EXPECT_EQ(2u, have.outcome.value().drainRequests);
}

// The filter sends three requests, each with a drain request, and then reads the reply.
TEST(EmulatedSpooler, PlaysTheFaultsOfAConnection) {
  const struct {
    const char* sentence;
    std::vector<const char*> scenarios;
    const char* replies;
  } kCases[] = {
      {"none: the printer is ready", {}, "RRR"},
      {"no answer to one request", {"reply nothing"}, "RR"},
      {"no answers at all", {"silent"}, ""},
      {"a reply twice", {"glue"}, "RRRR"},
      {"a script, then the truth", {"reply cover-open times 2", "reply paper-out"}, "CCO"},
      {"noise before the first", {"noise 2"}, "??RRR"},
  };
  for (const auto& c : kCases) {
    const TemporaryFolder folder;
    korvel::SpoolerJob job;
    job.timeoutSeconds = 60;
    for (const char* text : c.scenarios) job.scenarios.push_back(scenario(text));
    const std::string file = folder.file("replies");
    // A reply is there before the answer to the drain request is.
    const std::string ask = std::string(kRequest) + "; " + kDrain +
                            "; dd bs=64 count=1 <&3 2> /dev/null >> " + file + "; ";
    const RunResult have = runScript(folder, ask + ask + ask, job);
    EXPECT_EQ("", failureOf(have.outcome)) << c.sentence;
    std::string replies = folder.read("replies");
    std::string names;
    while (!replies.empty()) {
      const char* const kNames = "ROC";
      size_t known = 0;
      const uint64_t kWords[] = {korvel::kStatusReady, korvel::kStatusPaperOut,
                                 korvel::kStatusCoverOpen};
      while (known < 3 && !replies.starts_with(korvel::statusReply(kWords[known]))) ++known;
      names += known < 3 ? kNames[known] : '?';
      replies.erase(0, known < 3 ? 13 : 1);
    }
    EXPECT_EQ(c.replies, names) << c.sentence;
  }
}

TEST(EmulatedSpooler, HasNoPaperCoverOrMotor) {
  for (const char* text : {"out-of-paper", "load", "cover open", "cover close", "slow 9",
                           "stall for 1", "disconnect", "state", "quit"}) {
    EXPECT_FALSE(korvel::isPlayable(scenario(text))) << text;
  }
}

TEST(EmulatedSpooler, EndsAFilterThatOutlivesItsTime) {
  const TemporaryFolder folder;
  korvel::SpoolerJob job;
  job.timeoutSeconds = 0.3;
  const RunResult have = runScript(folder, "exec sleep 600", job);
  EXPECT_TRUE(have.outcome.value().timedOut);
  EXPECT_EQ(-1, have.outcome.value().status);
}

TEST(EmulatedSpooler, SaysWhyAJobCannotRun) {
  const TemporaryFolder folder;
  struct Case {
    const char* sentence;
    std::string filter;
    std::string raster;
    std::string fault;
  };
  const Case cases[] = {
      {"no such filter", folder.file("none"), folder.write("pages", ""),
       "Cannot run " + folder.file("none") + ": No such file or directory."},
      {"no such raster", "/bin/true", folder.file("lost"),
       "Cannot open " + folder.file("lost") + ": No such file or directory."},
  };
  for (const Case& c : cases) {
    korvel::SpoolerJob job;
    job.filter = c.filter;
    job.raster = c.raster;
    EXPECT_EQ(c.fault, failureOf(korvel::runSpoolerJob(job))) << c.sentence;
  }
}
