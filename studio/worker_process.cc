// The worker leads a process group of its own: rasteriser and filter end with it.
// SPDX-License-Identifier: Apache-2.0
#include "studio/worker_process.h"

#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>

#include "studio/sentences.h"
#include "tools/common/process.h"

namespace korvel {

namespace {

constexpr int kStepMilliseconds = 60000;
constexpr size_t kMostAnswer = size_t{4} << 20;

}  // namespace

void Ticket::cancel() {
  const std::lock_guard<std::mutex> lock(mutex_);
  cancelled_ = true;
  if (group_ > 0) kill(-group_, SIGKILL);
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
  ~RunningWorker() { end(); }

  bool start(const std::string& program, const std::vector<std::string>& words);
  // False when the time is over.
  bool readAnswer(std::string* answer);

 private:
  void end();

  Ticket* ticket_;
  Descriptor output_;
  pid_t pid_ = -1;
};

bool RunningWorker::start(const std::string& program, const std::vector<std::string>& words) {
  const std::lock_guard<std::mutex> lock(ticket_->mutex_);
  if (ticket_->cancelled_) return false;
  Descriptor theirs;
  if (!openPipe(&output_, &theirs)) return false;
  std::vector<std::string> all = {program};
  all.insert(all.end(), words.begin(), words.end());
  const std::vector<char*> arguments = execPointers(all);
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  sigset_t none;
  sigemptyset(&none);
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", 0, 0);
  posix_spawn_file_actions_adddup2(&actions, theirs.get(), STDOUT_FILENO);
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setsigmask(&attributes, &none);
  const int fault =
      posix_spawn(&pid_, program.c_str(), &actions, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (fault != 0) pid_ = -1;
  ticket_->group_ = pid_;
  return fault == 0;
}

bool RunningWorker::readAnswer(std::string* answer) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::milliseconds(kStepMilliseconds);
  for (;;) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
    pollfd watched = {output_.get(), POLLIN, 0};
    if (left <= 0 || answer->size() > kMostAnswer) return false;
    if (::poll(&watched, 1, static_cast<int>(left)) <= 0) continue;
    char bytes[16384];
    const ssize_t count = read(output_.get(), bytes, sizeof bytes);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return true;
    answer->append(bytes, static_cast<size_t>(count));
  }
}

void RunningWorker::end() {
  if (pid_ <= 0) return;
  const std::lock_guard<std::mutex> lock(ticket_->mutex_);
  kill(-pid_, SIGKILL);
  while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
  }
  ticket_->group_ = -1;
}

Result<nlohmann::json> runWorker(const std::string& program, const std::vector<std::string>& words,
                                 Ticket* ticket) {
  std::string answer;
  bool inTime = false;
  {
    RunningWorker worker(ticket);
    if (!worker.start(program, words)) {
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
