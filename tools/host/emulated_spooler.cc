// One poll loop over the filter's output, messages and side channel. Order matters: everything
// the filter sent before it asks for a drain is read, and the reply queued, before the answer.
// SPDX-License-Identifier: Apache-2.0
#include "tools/host/emulated_spooler.h"

#include <cups/sidechannel.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <vector>

#include "tools/common/child_process.h"
#include "tools/common/translation.h"
#include "tools/host/file_ban.h"
#include "tools/stream/stream_decoder.h"

namespace korvel {
namespace {

constexpr int kLongestPollMs = 50;
constexpr int kPiecePollMs = 2;
constexpr int kMostReads = 64;
constexpr size_t kSideHeaderBytes = 4;  // command, status, length with its high byte first

// The descriptors that the filter is born with, in their order.
struct FilterEnds {
  std::array<Descriptor, 5> ends;
  Descriptor execFault;  // carries errno when the program cannot be started
};

[[noreturn]] void becomeFilter(const FilterEnds& filter, pid_t parent, char* const* arguments,
                               const SpoolerJob& job) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(127);
  for (int fd = 0; fd < 5; ++fd) dup2(filter.ends[static_cast<size_t>(fd)].get(), fd);
  if (job.ppd.empty()) {
    unsetenv("PPD");
  } else {
    setenv("PPD", job.ppd.c_str(), 1);
  }
  signal(SIGPIPE, SIG_DFL);
  if (job.noFiles) banNewFiles();
  execv(job.filter.c_str(), arguments);
  const int reason = errno;
  if (write(filter.execFault.get(), &reason, sizeof reason) < 0) _exit(126);
  _exit(127);
}

class JobRun {
 public:
  explicit JobRun(const SpoolerJob& job)
      : job_(job), decoder_([this](const StreamItem& item) { takeItem(item); }) {}

  SpoolerOutcome run();

 private:
  bool openInput(FilterEnds* filter);
  bool openAll(FilterEnds* filter);
  bool start();
  void loop();
  void poll();
  void drainOutput();
  void drainMessages();
  void takeItem(const StreamItem& item);
  void takeSideChannel();
  void answerDrain();
  void sendSide(int command, int status);
  void writePieces();
  StatusStep nextStep();
  bool allClosed() const { return !output_.isOpen() && !messages_.isOpen(); }
  bool fail(const std::string& what) {
    outcome_.fault = what;
    return false;
  }

  const SpoolerJob& job_;
  SpoolerOutcome outcome_;
  StreamDecoder decoder_;
  Child child_;
  Descriptor output_, messages_, back_, side_;
  std::string sideBytes_;
  StatusStep step_;  // of the last status request
  size_t scriptAt_ = 0;
  bool imageSeen_ = false;          // since the page began
  std::deque<std::string> pieces_;  // of the reply, not yet written
};

// The filter reads a file by itself as its seventh argument, or finds it on descriptor 0.
bool JobRun::openInput(FilterEnds* filter) {
  int fd = -1;
  if (job_.rasterAsFile) {
    fd = open("/dev/null", O_RDONLY);
  } else if (job_.rasterDescriptor >= 0) {
    fd = dup(job_.rasterDescriptor);
  } else if (job_.raster == "-") {
    fd = dup(STDIN_FILENO);
  } else {
    fd = open(job_.raster.c_str(), O_RDONLY);
  }
  if (filter->ends[0].adopt(fd)) return true;
  return fail(filled("cannot open %s: %s", job_.raster.c_str(), std::strerror(errno)));
}

bool JobRun::openAll(FilterEnds* filter) {
  if (!openInput(filter)) return false;
  const bool opened =
      openPipe(&output_, &filter->ends[1]) && openPipe(&messages_, &filter->ends[2]) &&
      openPipe(&filter->ends[3], &back_) && openSocketPair(&side_, &filter->ends[4]);
  if (opened && output_.setNonBlocking() && messages_.setNonBlocking() && back_.setNonBlocking() &&
      filter->ends[3].setNonBlocking() && side_.setNonBlocking()) {
    return true;
  }
  return fail(filled("cannot open the filter's channels: %s", std::strerror(errno)));
}

bool JobRun::start() {
  FilterEnds filter;
  Descriptor execFault;
  if (!openAll(&filter)) return false;
  if (!openPipe(&execFault, &filter.execFault))
    return fail(filled("cannot open a pipe: %s", std::strerror(errno)));
  std::vector<std::string> words = {job_.filter, job_.jobId,  job_.user,
                                    job_.title,  job_.copies, job_.options};
  if (job_.rasterAsFile) words.push_back(job_.raster);
  const std::vector<char*> arguments = execWords(words);
  const pid_t parent = getpid();
  const pid_t pid = fork();
  if (pid < 0) return fail(filled("cannot start a process: %s", std::strerror(errno)));
  if (pid == 0) becomeFilter(filter, parent, arguments.data(), job_);
  child_.start(pid);
  filter.execFault.reset();
  int reason = 0;
  if (read(execFault.get(), &reason, sizeof reason) > 0) {
    return fail(filled("cannot run %s: %s", job_.filter.c_str(), std::strerror(reason)));
  }
  return true;
}

SpoolerOutcome JobRun::run() {
  if (start()) loop();
  child_.kill();
  return outcome_;
}

void JobRun::loop() {
  using Clock = std::chrono::steady_clock;
  const auto limit = std::chrono::duration_cast<Clock::duration>(
      std::chrono::duration<double>(job_.timeoutSeconds));
  const Clock::time_point end = Clock::now() + limit;
  while (Clock::now() < end) {
    poll();
    int status = 0;
    if (!child_.reap(&status)) continue;
    drainOutput();
    drainMessages();
    outcome_.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    outcome_.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return;
  }
  outcome_.timedOut = true;
}

void JobRun::poll() {
  std::array<pollfd, 3> watched = {
      {{output_.get(), POLLIN, 0}, {messages_.get(), POLLIN, 0}, {side_.get(), POLLIN, 0}}};
  // With both ends closed the filter is about to exit: look again soon.
  const int wait = !pieces_.empty() || allClosed() ? kPiecePollMs : kLongestPollMs;
  ::poll(watched.data(), watched.size(), wait);
  drainOutput();
  drainMessages();
  if (watched[2].revents != 0) takeSideChannel();
  writePieces();
}

// Reads what is there, but not for ever: more than any pipe holds, so that a filter that waits for
// us has been read to its last byte, and one that only writes cannot outrun the time limit.
template <typename Take>
void drain(Descriptor* source, Take take) {
  char bytes[65536];
  for (int reads = 0; source->isOpen() && reads < kMostReads; ++reads) {
    const ssize_t count = read(source->get(), bytes, sizeof bytes);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) return;
    if (count <= 0) {
      source->reset();
      return;
    }
    take(bytes, static_cast<size_t>(count));
  }
}

void JobRun::drainOutput() {
  drain(&output_, [this](const char* bytes, size_t count) {
    if (job_.output) job_.output(bytes, count);
    // A malformed stream gets no replies; who reads the stream will say where it breaks.
    decoder_.push(reinterpret_cast<const uint8_t*>(bytes), count);
  });
}

void JobRun::drainMessages() {
  drain(&messages_, [this](const char* bytes, size_t count) {
    if (job_.messages) job_.messages(bytes, count);
  });
}

void JobRun::takeItem(const StreamItem& item) {
  if (item.kind == ItemKind::kPageStart) imageSeen_ = false;
  if (item.kind == ItemKind::kArea || item.kind == ItemKind::kImage) imageSeen_ = true;
  if (item.kind != ItemKind::kStatusRequest) return;
  ++outcome_.statusRequests;
  step_ = nextStep();
  pieces_.insert(pieces_.end(), step_.pieces.begin(), step_.pieces.end());
}

StatusStep JobRun::nextStep() {
  StatusStep step;
  if (scriptAt_ < job_.script.size()) step = job_.script[scriptAt_++];
  if (step.answer == Answer::kAuto) {
    step.pieces = {statusReply(imageSeen_ ? kStatusPaperOut : kStatusReady)};
  }
  return step;
}

void JobRun::takeSideChannel() {
  drain(&side_, [this](const char* bytes, size_t count) { sideBytes_.append(bytes, count); });
  while (sideBytes_.size() >= kSideHeaderBytes) {
    const size_t length = static_cast<size_t>(static_cast<unsigned char>(sideBytes_[2])) << 8 |
                          static_cast<unsigned char>(sideBytes_[3]);
    if (sideBytes_.size() < kSideHeaderBytes + length) return;
    const int command = static_cast<unsigned char>(sideBytes_[0]);
    sideBytes_.erase(0, kSideHeaderBytes + length);
    if (command == CUPS_SC_CMD_DRAIN_OUTPUT) {
      answerDrain();
    } else {
      sendSide(command, CUPS_SC_STATUS_NOT_IMPLEMENTED);
    }
  }
}

void JobRun::answerDrain() {
  ++outcome_.drainRequests;
  drainOutput();
  if (step_.answer == Answer::kNoDrain) return;
  if (step_.answer == Answer::kRefuse) {
    sendSide(CUPS_SC_CMD_DRAIN_OUTPUT, CUPS_SC_STATUS_NOT_IMPLEMENTED);
    return;
  }
  writePieces();
  sendSide(CUPS_SC_CMD_DRAIN_OUTPUT, CUPS_SC_STATUS_OK);
}

void JobRun::sendSide(int command, int status) {
  const char answer[kSideHeaderBytes] = {static_cast<char>(command), static_cast<char>(status), 0,
                                         0};
  send(side_.get(), answer, sizeof answer, MSG_NOSIGNAL);
}

// A piece goes out when the one before it has been read, so that no read returns two of them.
void JobRun::writePieces() {
  int unread = 0;
  if (pieces_.empty() || ioctl(back_.get(), FIONREAD, &unread) != 0 || unread != 0) return;
  const std::string& piece = pieces_.front();
  // The pipe has no reader any more once the filter has gone, which must not end us.
  struct sigaction ignore = {};
  struct sigaction before = {};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &ignore, &before);
  const ssize_t written = write(back_.get(), piece.data(), piece.size());
  sigaction(SIGPIPE, &before, nullptr);
  if (written < 0 && errno == EAGAIN) return;
  pieces_.pop_front();
}

}  // namespace

SpoolerOutcome runSpoolerJob(const SpoolerJob& job) { return JobRun(job).run(); }

}  // namespace korvel
