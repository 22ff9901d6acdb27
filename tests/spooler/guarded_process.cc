// Between the test and the program stands a guardian: it adopts the program's orphans, learns of
// the test's death from the kernel, and ends only when nothing is left below it.
// SPDX-License-Identifier: Apache-2.0
#include "tests/spooler/guarded_process.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/support/temporary_folder.h"

namespace {

constexpr int kNotStarted = 127;
constexpr timespec kPatience = {3, 0};  // between asking the program to end and killing it

sigset_t guardianSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGCHLD);
  sigaddset(&signals, SIGUSR1);
  return signals;
}

int statusOf(int waitStatus) {
  return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : 128 + WTERMSIG(waitStatus);
}

[[noreturn]] void becomeProgram(const Command& command) {
  const sigset_t signals = guardianSignals();
  sigprocmask(SIG_UNBLOCK, &signals, nullptr);
  const char* path = command.output.empty() ? "/dev/null" : command.output.c_str();
  const int output = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  const int input = open("/dev/null", O_RDONLY);
  if (output == -1 || input == -1) _exit(kNotStarted);
  dup2(input, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  close_range(3, ~0u, 0);
  for (const auto& [name, value] : command.environment) setenv(name.c_str(), value.c_str(), 1);
  std::vector<std::string> copies = command.words;
  std::vector<char*> words;
  for (std::string& word : copies) words.push_back(word.data());
  words.push_back(nullptr);
  execvp(words[0], words.data());
  std::fprintf(stderr, "cannot start %s: %s\n", words[0], std::strerror(errno));
  std::fflush(stderr);
  _exit(kNotStarted);
}

// The parent of a process; 0 when it is gone.
pid_t parentOf(const char* process) {
  FILE* file = std::fopen((std::string("/proc/") + process + "/stat").c_str(), "r");
  if (file == nullptr) return 0;
  char text[1024];
  const size_t length = std::fread(text, 1, sizeof text - 1, file);
  std::fclose(file);
  text[length] = '\0';
  const char* behindName = std::strrchr(text, ')');  // the name may hold blanks and brackets
  char state = 0;
  int parent = 0;
  if (behindName == nullptr || std::sscanf(behindName + 1, " %c %d", &state, &parent) != 2)
    return 0;
  return parent;
}

void killChildren() {
  DIR* processes = opendir("/proc");
  if (processes == nullptr) return;
  while (const dirent* entry = readdir(processes)) {
    if (parentOf(entry->d_name) == getpid()) kill(std::atoi(entry->d_name), SIGKILL);
  }
  closedir(processes);
}

// What loses its parent becomes our child: killing children until there is none ends the family.
void killFamily() {
  for (;;) {
    killChildren();
    if (waitpid(-1, nullptr, 0) == -1 && errno == ECHILD) return;
  }
}

// True when `program` has ended; reaps everybody who has.
bool reap(pid_t program, int* status) {
  bool ended = false;
  int waitStatus = 0;
  for (pid_t pid = 0; (pid = waitpid(-1, &waitStatus, WNOHANG)) > 0;) {
    if (pid != program) continue;
    *status = statusOf(waitStatus);
    ended = true;
  }
  return ended;
}

[[noreturn]] void guard(const Command& command) {
  setsid();  // the terminal's interrupt is for the test, whose death ends us
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  const sigset_t signals = guardianSignals();
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  const pid_t program = fork();
  if (program == 0) becomeProgram(command);
  int status = kNotStarted;
  bool asked = program == -1;
  while (!asked) {
    const int number = sigwaitinfo(&signals, nullptr);
    if (number == SIGCHLD && reap(program, &status)) break;
    if (number == SIGUSR1) kill(program, SIGKILL);
    asked = number == SIGTERM;
  }
  if (asked && program != -1) {
    kill(program, SIGTERM);
    sigset_t child;
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    while (!reap(program, &status) && sigtimedwait(&child, nullptr, &kPatience) == SIGCHLD) {
    }
  }
  killFamily();
  _exit(status);
}

}  // namespace

void GuardedProcess::start(const Command& command) {
  stop();
  const pid_t test = getpid();
  guardian_ = fork();
  if (guardian_ != 0) return;
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != test) _exit(kNotStarted);
  guard(command);
}

int GuardedProcess::wait(double seconds) {
  int status = 0;
  const bool ended = guardian_ > 0 && waitUntil(seconds, [&] {
                       return waitpid(guardian_, &status, WNOHANG) == guardian_;
                     });
  if (!ended) return -1;
  guardian_ = -1;
  return statusOf(status);
}

void GuardedProcess::killProgram() {
  if (guardian_ > 0) kill(guardian_, SIGUSR1);
}

void GuardedProcess::stop() {
  if (guardian_ <= 0) return;
  kill(guardian_, SIGTERM);
  while (waitpid(guardian_, nullptr, 0) == -1 && errno == EINTR) {
  }
  guardian_ = -1;
}

CommandResult run(const std::vector<std::string>& words, double seconds,
                  const std::map<std::string, std::string>& environment) {
  const TemporaryFolder folder;
  GuardedProcess process;
  process.start({words, folder.file("output"), environment});
  CommandResult result;
  result.status = process.wait(seconds);
  process.stop();
  result.output = folder.read("output");
  return result;
}
