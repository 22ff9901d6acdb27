// Runs the real filter the way the spooler does: arguments, the variable PPD, pipes on 0 to 2, a
// back channel on 3 and a side channel on 4. Nothing that it starts outlives it.
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
  std::string data;                // carried by the answer itself
  int echo = -1;                   // the command that the answer names; -1: the one asked
};

struct JobPlan {
  std::string ppd;      // text of the printer description; empty: no variable PPD
  std::string ppdPath;  // what the variable PPD says, instead
  std::string options;  // the fifth argument
  std::optional<std::vector<std::string>> arguments;  // all behind the program name, instead
  std::string input;                                  // the raster stream
  bool byPath = false;          // the input is a file named by the sixth argument, and 0 is empty
  bool inputStaysOpen = false;  // more may be fed later
  std::vector<StatusAnswer> answers;  // one a drain request; then silence
  std::vector<int> closed;            // descriptors that the filter finds closed
  std::vector<int> nonBlocking;       // descriptors that have O_NONBLOCK when the filter starts
  std::vector<int> empty;             // descriptors that are /dev/null
  std::vector<int> ignoredSignals;    // inherited as ignored
  std::vector<int> blockedSignals;    // inherited as blocked
  int pendingSignal = 0;              // one of the blocked ones that is pending at start; 0: none
  std::string outputPath;             // standard output goes there; empty: a pipe
  int messagesDescriptor = -1;        // standard error goes there; -1: a pipe
  bool outputStalls = false;          // nobody reads standard output while the filter runs
  bool messagesStall = false;         // nor standard error
  bool sharesOutputs = false;         // this process keeps both open as well
  bool dumpFolder = true;             // the folder of the page dumps exists
  size_t outputPipe = 0;              // bytes that the pipe of standard output holds; 0: as usual
  size_t messagesPipe = 0;            // the same of standard error
  std::optional<size_t> outputClosesAfter;  // bytes, then the reader of standard output goes away
  bool readsByteByByte = false;  // of standard output, a millisecond a byte, while the filter runs
  std::string storm;             // on the back channel, again and again, as fast as it is read
  std::map<std::string, std::string> environment;  // on top of the usual; an empty value unsets
  std::vector<std::string> preloads;               // libraries, besides the sandbox
  unsigned user = 0;        // the filter's user, where the test itself is root; 0: the test's
  size_t addressSpace = 0;  // bytes the filter may map; 0: no limit
  std::optional<size_t> fileSize;     // bytes that a file may get
  std::optional<size_t> descriptors;  // how many may be open
  double timeout = 60;                // seconds; more on a slow build
};

struct JobResult {
  int exitStatus = -1;  // -1 when a signal ended it
  int signal = 0;
  bool timedOut = false;
  std::string output;                        // standard output
  std::string messages;                      // standard error
  std::map<std::string, std::string> dumps;  // file name to content
  std::optional<std::string> pageNote;       // the small text file of the last page
  long peakKilobytes = 0;                    // the most memory that was resident at a time
  double processorSeconds = 0;               // what the filter took, however busy the machine
};

class JobRunner {
 public:
  // Starts the filter.
  explicit JobRunner(const JobPlan& plan);
  JobRunner(const JobRunner&) = delete;
  JobRunner& operator=(const JobRunner&) = delete;
  ~JobRunner();  // kills and reaps it when it still runs

  // Serves all descriptors until `reached` holds. False when the filter or the time ends first.
  bool runUntil(const std::function<bool(const JobResult&)>& reached);
  bool runUntilMessage(const std::string& text);
  void runFor(double seconds);
  void feed(const std::string& bytes);
  void closeInput();
  void closeOutput();  // the reader of standard output goes away
  void stallOutput(bool stalls) { plan_.outputStalls = stalls; }
  void stallMessages(bool stalls) { plan_.messagesStall = stalls; }
  void closeSideChannel();
  // Sets O_NONBLOCK on the filter's standard output and error, as any process may that shares them.
  void stopOutputsFromBlocking();
  void sendSignal(int number);
  // Serves until the filter ends, then collects its files. Kills it when the time is over.
  const JobResult& finish();
  // From the last signal sent, or the closing of the output, to the end.
  std::chrono::duration<double> timeToEnd() const { return ended_ - signalled_; }
  const JobResult& result() const { return result_; }
  std::string pageNotePath() const { return folder_ + "/xxxxx.log"; }
  std::string dumpPath(const std::string& name) const { return folder_ + "/dumps/" + name; }
  pid_t pid() const { return pid_; }  // -1 when it has ended

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
  // Ours and the filter's end of each channel.
  int ours_[5] = {-1, -1, -1, -1, -1};
  int theirs_[5] = {-1, -1, -1, -1, -1};
  Clock::time_point deadline_;
  Clock::time_point signalled_;
  Clock::time_point ended_;
};

// A whole job from start to end.
JobResult runJob(const JobPlan& plan);

// How much longer things take in this build; 1 in an ordinary one.
double slowness();
// Under the sanitizers memory cannot be limited by address space.
bool underSanitizer();
bool underMemcheck();
bool underEmulator();

// A printer description of the tests ("label" or "stencil"); a model name replaces its own.
std::string testPpd(const std::string& name, const std::string& model = "");

#endif
