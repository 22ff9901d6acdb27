// One poll loop over the filter's output, messages and side channel. The order matters: before a
// drain request is answered, all earlier output has been read and the reply to it queued.
// SPDX-License-Identifier: Apache-2.0
#include "tools/host/emulated_spooler.h"

#include <cups/sidechannel.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
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
#include <optional>

#include "tools/common/process.h"
#include "tools/common/translation.h"
#include "tools/stream/printer_connection.h"
#include "tools/stream/printer_model.h"
#include "tools/stream/stream_decoder.h"

namespace korvel {
namespace {

constexpr int kLongestPollMs = 50;
constexpr int kPiecePollMs = 2;
constexpr int kMostReads = 64;
constexpr size_t kSideHeaderBytes = 4;  // command, status, length with its high byte first

// The filter's descriptors, in order.
using FilterEnds = std::array<Descriptor, 5>;

Micros steadyMicros() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

class JobRun {
 public:
  explicit JobRun(const SpoolerJob& job)
      : job_(job), decoder_([this](const StreamItem& item) { takeItem(item); }) {
    for (const Scenario& scenario : job.scenarios) connection_.apply(scenario, steadyMicros());
  }

  Result<SpoolerOutcome> run();

 private:
  Result<void> openInput(FilterEnds* filter);
  Result<void> openAll(FilterEnds* filter);
  Result<void> start();
  void loop();
  void poll();
  void drainOutput();
  void drainMessages();
  void takeItem(const StreamItem& item);
  void takeSideChannel();
  void answerDrain();
  void sendSide(int command, int status);
  void writePieces();
  bool allClosed() const { return !output_.isOpen() && !messages_.isOpen(); }

  const SpoolerJob& job_;
  SpoolerOutcome outcome_;
  StreamDecoder decoder_;
  Child child_;
  Descriptor output_, messages_, back_, side_;
  std::string sideBytes_;
  PrinterConnection connection_;
  ReplyKind reply_ = ReplyKind::kTrue;  // to the last status request
  bool imageSeen_ = false;              // since the page began
  std::deque<std::string> pieces_;      // of replies, not yet written
};

// The filter opens a file by itself, or reads its standard input.
Result<void> JobRun::openInput(FilterEnds* filter) {
  int fd = -1;
  if (job_.rasterAsFile) {
    fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
  } else if (job_.rasterDescriptor >= 0) {
    fd = fcntl(job_.rasterDescriptor, F_DUPFD_CLOEXEC, 0);
  } else if (job_.raster == "-") {
    fd = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
  } else {
    fd = open(job_.raster.c_str(), O_RDONLY | O_CLOEXEC);
  }
  (*filter)[0].reset(fd);
  if (fd >= 0) return {};
  return Failure{filled("Cannot open %s: %s.", job_.raster.c_str(), std::strerror(errno))};
}

Result<void> JobRun::openAll(FilterEnds* filter) {
  FilterEnds& ends = *filter;
  Result<void> opened = openInput(filter);
  if (opened) opened = openPipe(&output_, &ends[1]);
  if (opened) opened = openPipe(&messages_, &ends[2]);
  if (opened) opened = openPipe(&ends[3], &back_);
  if (opened) opened = openSocketPair(&side_, &ends[4]);
  if (!opened) return opened;
  for (Descriptor* end : {&output_, &messages_, &back_, &ends[3], &side_}) {
    if (!end->setNonBlocking()) {
      return Failure{filled("Cannot set up a pipe: %s.", std::strerror(errno))};
    }
  }
  return {};
}

Result<void> JobRun::start() {
  FilterEnds ends;
  const Result<void> opened = openAll(&ends);
  if (!opened) return opened;
  Program filter;
  filter.arguments = {job_.filter, job_.jobId, job_.user, job_.title, job_.copies, job_.options};
  if (job_.rasterAsFile) filter.arguments.push_back(job_.raster);
  for (const Descriptor& end : ends) filter.descriptors.push_back(end.get());
  filter.environment = job_.environment;
  filter.environment["PPD"] = job_.ppd.empty() ? std::nullopt : std::optional(job_.ppd);
  filter.noNewFiles = job_.noFiles;
  return child_.start(filter);
}

Result<SpoolerOutcome> JobRun::run() {
  const Result<void> started = start();
  if (!started) return started.failure();
  loop();
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
  // With both ends closed the filter is about to exit: check again soon.
  const int wait = !pieces_.empty() || allClosed() ? kPiecePollMs : kLongestPollMs;
  ::poll(watched.data(), watched.size(), wait);
  drainOutput();
  drainMessages();
  if (watched[2].revents != 0) takeSideChannel();
  writePieces();
}

// When the filter has ended, the pipe has no reader; then SIGPIPE must not end us. It is blocked in
// this thread only, and taken if it has been raised.
ssize_t writeWithoutSignal(int fd, const std::string& bytes) {
  sigset_t pipe, before;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &pipe, &before);
  const ssize_t written = write(fd, bytes.data(), bytes.size());
  const int reason = errno;
  const timespec atOnce = {0, 0};
  if (written < 0 && reason == EPIPE) sigtimedwait(&pipe, nullptr, &atOnce);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  errno = reason;
  return written;
}

// Reads what is there, but at most a fixed amount, which is more than a pipe holds: a filter that
// waits has been read to its last byte, and one that never stops writing still meets its time
// limit.
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
    // A malformed stream gets no replies; the reader of the output reports the malformed byte.
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
  const std::string reply = statusReply(imageSeen_ ? kStatusPaperOut : kStatusReady);
  const PrinterConnection::Reply answer = connection_.answer(reply, steadyMicros());
  reply_ = answer.kind;
  for (const PrinterConnection::Piece& piece : answer.pieces) pieces_.push_back(piece.bytes);
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
  if (reply_ == ReplyKind::kDrainIgnored) return;
  if (reply_ == ReplyKind::kDrainRefused) {
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

// A piece is sent when the one before it has been read, so that no read returns two of them.
void JobRun::writePieces() {
  int unread = 0;
  if (pieces_.empty() || ioctl(back_.get(), FIONREAD, &unread) != 0 || unread != 0) return;
  const std::string& piece = pieces_.front();
  const ssize_t written = writeWithoutSignal(back_.get(), piece);
  if (written < 0 && errno == EAGAIN) return;
  pieces_.pop_front();
}

}  // namespace

bool isPlayable(const Scenario& scenario) {
  switch (scenario.kind) {
    case ScenarioKind::kSilent:
    case ScenarioKind::kNoise:
    case ScenarioKind::kSplit:
    case ScenarioKind::kGlue:
    case ScenarioKind::kReply:
      return true;
    default:
      return false;
  }
}

Result<SpoolerOutcome> runSpoolerJob(const SpoolerJob& job) { return JobRun(job).run(); }

}  // namespace korvel
