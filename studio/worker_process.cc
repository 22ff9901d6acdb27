// The worker leads a process group of its own: rasteriser and filter end with it.
// SPDX-License-Identifier: Apache-2.0
#include "studio/worker_process.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>

#include "studio/sentences.h"

namespace korvel {

namespace {

constexpr int kStepMilliseconds = 60000;
constexpr size_t kMostAnswer = size_t{4} << 20;

}  // namespace

void Ticket::cancel() {
  const std::lock_guard<std::mutex> lock(mutex_);
  cancelled_ = true;
  worker_.signal(SIGKILL);
}

bool Ticket::isCancelled() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return cancelled_;
}

// Kills and reaps the whole group when it goes.
class RunningWorker {
 public:
  explicit RunningWorker(Ticket* ticket) : ticket_(ticket) {}
  RunningWorker(const RunningWorker&) = delete;
  RunningWorker& operator=(const RunningWorker&) = delete;
  ~RunningWorker() {
    const std::lock_guard<std::mutex> lock(ticket_->mutex_);
    ticket_->worker_.kill();
  }

  bool start(const std::string& program, const std::vector<std::string>& arguments);
  // False when the time is over.
  bool readAnswer(std::string* answer);

 private:
  Ticket* ticket_;
  Descriptor output_;
};

bool RunningWorker::start(const std::string& program, const std::vector<std::string>& arguments) {
  Descriptor theirs;
  if (!openPipe(&output_, &theirs)) return false;
  Program worker;
  worker.arguments = {program};
  worker.arguments.insert(worker.arguments.end(), arguments.begin(), arguments.end());
  worker.descriptors = {kNullDevice, theirs.get()};
  worker.ownGroup = true;
  const std::lock_guard<std::mutex> lock(ticket_->mutex_);
  return !ticket_->cancelled_ && ticket_->worker_.start(worker).ok();
}

bool RunningWorker::readAnswer(std::string* answer) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kStepMilliseconds);
  for (;;) {
    const int left = millisecondsUntil(end);
    pollfd watched = {output_.get(), POLLIN, 0};
    if (left == 0 || answer->size() > kMostAnswer) return false;
    if (poll(&watched, 1, left) <= 0) continue;
    char bytes[16384];
    const ssize_t count = read(output_.get(), bytes, sizeof bytes);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return true;
    answer->append(bytes, static_cast<size_t>(count));
  }
}

Result<nlohmann::json> runWorker(const std::string& program,
                                 const std::vector<std::string>& arguments, Ticket* ticket) {
  std::string answer;
  bool inTime = false;
  {
    RunningWorker worker(ticket);
    if (!worker.start(program, arguments)) {
      return Failure{ticket->isCancelled() ? kSuperseded.english : kBusy.english};
    }
    inTime = worker.readAnswer(&answer);
  }
  if (ticket->isCancelled()) return Failure{kSuperseded.english};
  if (!inTime) return Failure{kTooSlow.english};
  nlohmann::json made = nlohmann::json::parse(answer, nullptr, false);
  // A worker that its limits have ended says nothing.
  if (!made.is_object()) return Failure{kTooSlow.english};
  if (made.contains("error")) return Failure{made["error"].get<std::string>()};
  return made;
}

}  // namespace korvel
