// Runs the real filter as CUPS does: arguments, the variable PPD, pipes on 0 to 2, a back channel
// on 3 and a side channel on 4. Nothing that it starts outlives it.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SUPPORT_JOB_RUNNER_H
#define KORVEL_TESTS_SUPPORT_JOB_RUNNER_H

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

// The answer to one drain request, and what the printer then sends on the back channel.
struct StatusAnswer {
  int status = 1;                  // a cups_sc_status_t; -1: no answer at all
  std::vector<std::string> reads;  // one write each, a quarter of a second apart
  std::string data;                // part of the answer itself
  int echo = -1;                   // the command in the answer; -1: the one of the request
};

struct JobPlan {
  std::string ppd;      // contents of the PPD; empty: the variable PPD is not set
  std::string ppdPath;  // the variable PPD, instead
  std::string options;  // the fifth argument
  std::optional<std::vector<std::string>> arguments;  // all after the program name, instead
  std::string input;                                  // the raster stream
  bool byPath = false;  // the input is a file, passed as the sixth argument; descriptor 0 is empty
  bool inputStaysOpen = false;        // more can be sent later
  std::vector<StatusAnswer> answers;  // one per drain request; then silence
  std::vector<int> closed;            // descriptors that are closed in the filter
  std::vector<int> nonBlocking;       // descriptors that have O_NONBLOCK when the filter starts
  std::vector<int> empty;             // descriptors that are /dev/null
  std::vector<int> ignoredSignals;    // inherited as ignored
  std::vector<int> blockedSignals;    // inherited as blocked
  int pendingSignal = 0;              // a blocked signal that is pending at start; 0: none
  std::string outputPath;             // a file for standard output; empty: a pipe
  int messagesDescriptor = -1;        // for standard error; -1: a pipe
  bool outputStalls = false;          // standard output is not read while the filter runs
  bool messagesStall = false;         // standard error is not read either
  bool sharesOutputs = false;         // this process keeps both outputs open, too
  bool dumpFolder = true;             // the folder of the page dumps exists
  size_t outputPipe = 0;              // capacity of the pipe in bytes; 0: the default
  size_t messagesPipe = 0;            // the same for standard error
  std::optional<size_t> outputClosesAfter;  // bytes, then standard output is closed
  bool readsByteByByte = false;             // standard output, one byte per millisecond
  std::string storm;                        // repeated on the back channel as fast as it is read
  std::map<std::string, std::string> environment;  // added to the default; an empty value unsets
  std::vector<std::string> preloads;               // libraries, in addition to the sandbox
  unsigned user = 0;                  // the filter's user if the test runs as root; 0: the test's
  size_t addressSpace = 0;            // limit in bytes; 0: no limit
  std::optional<size_t> fileSize;     // limit of a file's size in bytes
  std::optional<size_t> descriptors;  // limit of open descriptors
  double timeout = 60;                // seconds; multiplied on a slow build
};

struct JobResult {
  int exitStatus = -1;  // -1 if a signal ended it
  int signal = 0;
  bool timedOut = false;
  std::string output;                        // standard output
  std::string messages;                      // standard error
  std::map<std::string, std::string> dumps;  // file name to content
  std::optional<std::string> pageNote;       // the page dimensions file of the last page
  long peakKilobytes = 0;                    // peak resident memory
  double processorSeconds = 0;               // of the filter, independent of machine load
};

class JobRunner {
 public:
  // Starts the filter.
  explicit JobRunner(const JobPlan& plan);
  JobRunner(const JobRunner&) = delete;
  JobRunner& operator=(const JobRunner&) = delete;
  ~JobRunner();  // kills and reaps the filter if it is still running

  // Serves all descriptors until `reached` holds. Returns false if the filter exits or the time is
  // up first.
  bool runUntil(const std::function<bool(const JobResult&)>& reached);
  bool runUntilMessage(const std::string& text);
  void runFor(double seconds);
  void feed(const std::string& bytes);
  void closeInput();
  void closeOutput();  // closes the reading end of standard output
  void stallOutput(bool stalls) { plan_.outputStalls = stalls; }
  void stallMessages(bool stalls) { plan_.messagesStall = stalls; }
  void closeSideChannel();
  // Sets O_NONBLOCK on the filter's standard output and error, as every process that shares them
  // can.
  void stopOutputsFromBlocking();
  void sendSignal(int number);
  // Serves until the filter exits, then collects its files. Kills it when the time is up.
  const JobResult& finish();
  // From the last signal sent, or from closing the output, to the end.
  std::chrono::duration<double> timeToEnd() const { return ended_ - signalled_; }
  const JobResult& result() const { return result_; }
  std::string pageNotePath() const { return folder_ + "/xxxxx.log"; }
  std::string dumpPath(const std::string& name) const { return folder_ + "/dumps/" + name; }
  pid_t pid() const { return pid_; }  // -1 after it has exited

 private:
  using Clock = std::chrono::steady_clock;
  struct LateWrite {
    Clock::time_point due;
    std::string bytes;
  };
  void openChannels();
  void start();
  [[noreturn]] void becomeFilter();
  void inheritSignals() const;
  void serveOnce(int milliseconds);
  void writeInput();
  void readInto(int* descriptor, std::string* text);
  void readOutput();
  void blowStorm();
  void handFolderOver();
  void answerSideChannel();
  void writeLate();
  bool reap();
  void collectFiles();
  void closeAll();

  JobPlan plan_;
  JobResult result_;
  std::string folder_;
  std::vector<std::string> command_;
  std::string pending_;  // input not yet written
  std::vector<LateWrite> late_;
  size_t nextAnswer_ = 0;
  pid_t pid_ = -1;
  // Our end and the filter's end of each channel.
  int ours_[5] = {-1, -1, -1, -1, -1};
  int theirs_[5] = {-1, -1, -1, -1, -1};
  Clock::time_point deadline_;
  Clock::time_point signalled_;
  Clock::time_point ended_;
};

// Runs a whole job.
JobResult runJob(const JobPlan& plan);

// How much slower this build is; 1 for an ordinary one.
double slowness();
// With sanitizers, memory cannot be limited by address space.
bool underSanitizer();
bool underMemcheck();
bool underEmulator();

// A PPD of the tests ("label" or "stencil"); `model`, if given, replaces its model name.
std::string testPpd(const std::string& name, const std::string& model = "");

#endif
