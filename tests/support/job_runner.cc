// One poll loop acts as cupsd, backend and printer for a real filter process.
// The filter is killed when the test that started it ends, for whatever reason.
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/job_runner.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace fs = std::filesystem;

namespace {

constexpr int kBackChannel = 3;
constexpr int kSideChannel = 4;
constexpr auto kBetweenReads = std::chrono::milliseconds(250);

#ifdef KORVEL_ADDRESS_SANITIZER
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

// The emulator that runs a filter built for another processor; empty for a native one.
#ifdef KORVEL_EMULATOR
constexpr const char* kEmulator = KORVEL_EMULATOR;
#else
constexpr const char* kEmulator = "";
#endif

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

void writeFile(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

void closeOne(int* descriptor) {
  if (*descriptor != -1) close(*descriptor);
  *descriptor = -1;
}

void setNonBlocking(int descriptor) {
  fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
}

void limitTo(__rlimit_resource resource, size_t limit) {
  const struct rlimit both = {limit, limit};
  setrlimit(resource, &both);
}

// Keeps the caller's environment and adds the variables of this run.
void addOption(const char* variable, const std::string& option) {
  const char* old = std::getenv(variable);
  const std::string both = old == nullptr ? option : std::string(old) + ":" + option;
  setenv(variable, both.c_str(), 1);
}

// A filter for another processor is run by an emulator, whose arguments come first, and needs its
// own build of the preloaded library.
std::vector<std::string> filterWords() {
  const char* foreign = std::getenv("KORVEL_TEST_FILTER");
  if (foreign == nullptr) return {KORVEL_FILTER};
  std::istringstream in(foreign);
  std::vector<std::string> words;
  for (std::string word; in >> word;) words.push_back(word);
  return words;
}

const char* preloadedLibrary() {
  const char* foreign = std::getenv("KORVEL_TEST_PRELOAD");
  return foreign == nullptr ? KORVEL_SANDBOX_LIBRARY : foreign;
}

std::string makeFolder() {
  std::string pattern = (fs::temp_directory_path() / "korvel-job-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) std::abort();
  return pattern;
}

}  // namespace

double slowness() { return underMemcheck() || underEmulator() ? 20 : (kSanitized ? 4 : 1); }

bool underSanitizer() { return kSanitized; }

bool underMemcheck() {
#ifdef KORVEL_MEMCHECK
  return true;
#else
  return false;
#endif
}

bool underEmulator() { return *kEmulator != '\0'; }

std::string testPpd(const std::string& name, const std::string& model) {
  std::istringstream in(readFile(fs::path(KORVEL_TEST_PPD_DIR) / (name + ".ppd")));
  std::string text;
  for (std::string line; std::getline(in, line);) {
    const bool ours = !model.empty() && line.starts_with("*ModelName:");
    text += (ours ? "*ModelName: \"" + model + "\"" : line) + "\n";
  }
  return text;
}

JobRunner::JobRunner(const JobPlan& plan) : plan_(plan), folder_(makeFolder()) {
  signal(SIGPIPE, SIG_IGN);  // a filter that exits early must not end the test
  deadline_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                 std::chrono::duration<double>(plan_.timeout * slowness()));
  if (plan_.dumpFolder) fs::create_directory(folder_ + "/dumps");
  if (!plan_.ppd.empty()) writeFile(folder_ + "/printer.ppd", plan_.ppd);
  if (plan_.byPath) {
    writeFile(folder_ + "/raster", plan_.input);
  } else {
    pending_ = plan_.input;
  }

  if (underMemcheck()) {
    // Valgrind's cleanup of the C library would flush standard output after an immediate exit.
    command_ = {"valgrind", "-q", "--error-exitcode=99", "--run-libc-freeres=no"};
  }
  if (underEmulator()) command_ = {kEmulator};
  const std::vector<std::string> filter = filterWords();
  command_.insert(command_.end(), filter.begin(), filter.end());
  if (plan_.arguments) {
    command_.insert(command_.end(), plan_.arguments->begin(), plan_.arguments->end());
  } else {
    for (const char* word : {"1", "user", "title", "1"}) command_.push_back(word);
    command_.push_back(plan_.options);
    if (plan_.byPath) command_.push_back(folder_ + "/raster");
  }
  if (plan_.user != 0) handFolderOver();
  openChannels();
  start();
}

// The filter's user has no access to the test's folders.
void JobRunner::handFolderOver() {
  for (const char* name : {"", "/dumps", "/printer.ppd", "/raster"}) {
    const std::string path = folder_ + name;
    if (fs::exists(path) && chown(path.c_str(), plan_.user, plan_.user) != 0) std::abort();
  }
}

JobRunner::~JobRunner() {
  if (pid_ != -1) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  closeAll();
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

void JobRunner::openChannels() {
  for (const int channel : {0, 1, 2, kBackChannel}) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) std::abort();
    const bool filterReads = channel == 0 || channel == kBackChannel;
    theirs_[channel] = ends[filterReads ? 0 : 1];
    ours_[channel] = ends[filterReads ? 1 : 0];
    setNonBlocking(ours_[channel]);
  }
  setNonBlocking(theirs_[kBackChannel]);  // as CUPS passes it on
  int pair[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0) std::abort();
  ours_[kSideChannel] = pair[0];
  theirs_[kSideChannel] = pair[1];

  if (plan_.outputPipe != 0) {
    fcntl(ours_[1], F_SETPIPE_SZ, static_cast<int>(plan_.outputPipe));
  }
  if (plan_.messagesPipe != 0) {
    fcntl(ours_[2], F_SETPIPE_SZ, static_cast<int>(plan_.messagesPipe));
  }
  if (!plan_.outputPath.empty()) {
    closeOne(&theirs_[1]);
    theirs_[1] = open(plan_.outputPath.c_str(), O_WRONLY | O_CLOEXEC);
  }
  if (plan_.messagesDescriptor != -1) {
    closeOne(&theirs_[2]);
    theirs_[2] = fcntl(plan_.messagesDescriptor, F_DUPFD_CLOEXEC, 0);
  }
}

void JobRunner::start() {
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(127);
    becomeFilter();
  }
  for (const int channel : {0, 1, 2, kBackChannel, kSideChannel}) {
    const bool isOutput = channel == STDOUT_FILENO || channel == STDERR_FILENO;
    if (!isOutput || !plan_.sharesOutputs) closeOne(&theirs_[channel]);
  }
  if (pending_.empty() && !plan_.inputStaysOpen) closeInput();
  if (plan_.outputClosesAfter == size_t{0}) closeOutput();
}

void JobRunner::inheritSignals() const {
  signal(SIGPIPE, SIG_DFL);
  for (const int number : plan_.ignoredSignals) signal(number, SIG_IGN);
  sigset_t blocked;
  sigemptyset(&blocked);
  for (const int number : plan_.blockedSignals) sigaddset(&blocked, number);
  sigprocmask(SIG_SETMASK, &blocked, nullptr);
  if (plan_.pendingSignal != 0) raise(plan_.pendingSignal);
}

// In the child process: sets up descriptors, environment and limits, then runs the program.
void JobRunner::becomeFilter() {
  int high[5];
  for (int i = 0; i < 5; ++i) high[i] = fcntl(theirs_[i], F_DUPFD_CLOEXEC, 100);
  for (int i = 0; i < 5; ++i) dup2(high[i], i);
  for (const int descriptor : plan_.closed) close(descriptor);
  for (const int descriptor : plan_.empty) dup2(open("/dev/null", O_RDWR | O_CLOEXEC), descriptor);
  for (const int descriptor : plan_.nonBlocking) setNonBlocking(descriptor);
  close_range(5, ~0u, CLOSE_RANGE_CLOEXEC);
  inheritSignals();

  for (const char* name : {"PPD", "KORVEL_DUMPS", "KORVEL_SANDBOX_DISK"}) unsetenv(name);
  if (!plan_.ppd.empty()) setenv("PPD", (folder_ + "/printer.ppd").c_str(), 1);
  if (!plan_.ppdPath.empty()) setenv("PPD", plan_.ppdPath.c_str(), 1);
  setenv("TZ", "UTC", 1);
  setenv("LC_ALL", "C", 1);
  setenv("KORVEL_SANDBOX", folder_.c_str(), 1);
  std::string preloads = preloadedLibrary();
  for (const std::string& library : plan_.preloads) preloads += ":" + library;
  setenv("LD_PRELOAD", preloads.c_str(), 1);
  for (const auto& [name, value] : plan_.environment) {
    if (value.empty()) {
      unsetenv(name.c_str());
    } else {
      setenv(name.c_str(), value.c_str(), 1);
    }
  }
  addOption("ASAN_OPTIONS", "verify_asan_link_order=0");
  if (plan_.addressSpace != 0) limitTo(RLIMIT_AS, plan_.addressSpace);
  if (plan_.fileSize) limitTo(RLIMIT_FSIZE, *plan_.fileSize);
  if (plan_.user != 0 && (setgid(plan_.user) != 0 || setuid(plan_.user) != 0)) _exit(127);
  std::vector<char*> words;
  for (std::string& word : command_) words.push_back(word.data());
  words.push_back(nullptr);
  if (plan_.descriptors) limitTo(RLIMIT_NOFILE, *plan_.descriptors);
  execvp(words[0], words.data());
  _exit(127);
}

bool JobRunner::runUntil(const std::function<bool(const JobResult&)>& reached) {
  while (!reached(result_)) {
    if (reap()) return reached(result_);
    if (Clock::now() >= deadline_) return false;
    serveOnce(5);
  }
  return true;
}

bool JobRunner::runUntilMessage(const std::string& text) {
  return runUntil(
      [&text](const JobResult& so_far) { return so_far.messages.find(text) != std::string::npos; });
}

void JobRunner::runFor(double seconds) {
  const auto until = Clock::now() + std::chrono::duration<double>(seconds);
  runUntil([until](const JobResult&) { return Clock::now() >= until; });
}

void JobRunner::feed(const std::string& bytes) { pending_ += bytes; }

void JobRunner::closeInput() { closeOne(&ours_[0]); }

void JobRunner::closeOutput() {
  signalled_ = Clock::now();
  closeOne(&ours_[1]);
}

void JobRunner::closeSideChannel() { closeOne(&ours_[kSideChannel]); }

void JobRunner::stopOutputsFromBlocking() {
  for (const int channel : {STDOUT_FILENO, STDERR_FILENO}) setNonBlocking(theirs_[channel]);
}

void JobRunner::sendSignal(int number) {
  signalled_ = Clock::now();
  if (pid_ != -1) kill(pid_, number);
}

const JobResult& JobRunner::finish() {
  if (!runUntil([](const JobResult&) { return false; }) && pid_ != -1) {
    result_.timedOut = true;
    kill(pid_, SIGKILL);
    while (!reap()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  readInto(&ours_[1], &result_.output);
  readInto(&ours_[2], &result_.messages);
  collectFiles();
  return result_;
}

void JobRunner::serveOnce(int milliseconds) {
  writeLate();
  blowStorm();
  const bool stalls = plan_.outputStalls;
  struct pollfd watched[] = {{pending_.empty() ? -1 : ours_[0], POLLOUT, 0},
                             {stalls ? -1 : ours_[1], POLLIN, 0},
                             {plan_.messagesStall ? -1 : ours_[2], POLLIN, 0},
                             {ours_[kSideChannel], POLLIN, 0}};
  if (poll(watched, std::size(watched), milliseconds) <= 0) return;
  if (watched[0].revents != 0) writeInput();
  if (watched[1].revents != 0) readOutput();
  if (watched[2].revents != 0) readInto(&ours_[2], &result_.messages);
  if (watched[3].revents != 0) answerSideChannel();
}

void JobRunner::writeInput() {
  const ssize_t written = write(ours_[0], pending_.data(), pending_.size());
  if (written == -1 && errno == EAGAIN) return;
  if (written == -1) {
    pending_.clear();  // there is no reader any more
  } else {
    pending_.erase(0, static_cast<size_t>(written));
  }
  if (pending_.empty() && !plan_.inputStaysOpen) closeInput();
}

// Reads as this reader is configured to, and closes after the configured number of bytes.
void JobRunner::readOutput() {
  if (!plan_.readsByteByByte && !plan_.outputClosesAfter) {
    readInto(&ours_[1], &result_.output);
    return;
  }
  char bytes[4096];
  size_t wanted = plan_.readsByteByByte ? 1 : sizeof bytes;
  if (plan_.outputClosesAfter) {
    wanted = std::min(wanted, *plan_.outputClosesAfter - result_.output.size());
  }
  const ssize_t count = read(ours_[1], bytes, wanted);
  if (count > 0) result_.output.append(bytes, static_cast<size_t>(count));
  if (count == 0) closeOne(&ours_[1]);
  if (plan_.readsByteByByte) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  if (plan_.outputClosesAfter == result_.output.size()) closeOutput();
}

// Reads what is available; closes at the end.
void JobRunner::readInto(int* descriptor, std::string* text) {
  char bytes[65536];
  while (*descriptor != -1) {
    const ssize_t count = read(*descriptor, bytes, sizeof bytes);
    if (count > 0) {
      text->append(bytes, static_cast<size_t>(count));
    } else if (count == 0 || errno != EAGAIN) {
      closeOne(descriptor);
    } else {
      return;
    }
  }
}

// Requests and answers: command, status, length (16 bits, most significant byte first), data.
void JobRunner::answerSideChannel() {
  unsigned char request[1024];
  const ssize_t count = recv(ours_[kSideChannel], request, sizeof request, MSG_DONTWAIT);
  if (count <= 0) {
    closeOne(&ours_[kSideChannel]);
    return;
  }
  if (nextAnswer_ >= plan_.answers.size()) return;
  const StatusAnswer& answer = plan_.answers[nextAnswer_++];
  if (answer.status == -1) return;
  const int echo = answer.echo == -1 ? request[0] : answer.echo;
  std::string reply{static_cast<char>(echo), static_cast<char>(answer.status),
                    static_cast<char>(answer.data.size() >> 8),
                    static_cast<char>(answer.data.size() & 0xFF)};
  reply += answer.data;
  Clock::time_point due = Clock::now();
  for (const std::string& bytes : answer.reads) {
    late_.push_back({due, bytes});
    due += kBetweenReads;
  }
  writeLate();  // the first reply is available before the answer
  if (send(ours_[kSideChannel], reply.data(), reply.size(), MSG_NOSIGNAL) == -1) {
    closeOne(&ours_[kSideChannel]);
  }
}

void JobRunner::writeLate() {
  while (!late_.empty() && late_.front().due <= Clock::now()) {
    const std::string bytes = late_.front().bytes;
    late_.erase(late_.begin());
    if (write(ours_[kBackChannel], bytes.data(), bytes.size()) == -1) late_.clear();
  }
}

void JobRunner::blowStorm() {
  if (plan_.storm.empty()) return;
  while (write(ours_[kBackChannel], plan_.storm.data(), plan_.storm.size()) > 0) continue;
}

bool JobRunner::reap() {
  if (pid_ == -1) return true;
  int status = 0;
  struct rusage usage;
  if (wait4(pid_, &status, WNOHANG, &usage) != pid_) return false;
  result_.peakKilobytes = usage.ru_maxrss;
  for (const timeval& part : {usage.ru_utime, usage.ru_stime}) {
    result_.processorSeconds += static_cast<double>(part.tv_sec);
    result_.processorSeconds += static_cast<double>(part.tv_usec) / 1e6;
  }
  ended_ = Clock::now();
  pid_ = -1;
  if (WIFEXITED(status)) result_.exitStatus = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) result_.signal = WTERMSIG(status);
  return true;
}

void JobRunner::collectFiles() {
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(folder_ + "/dumps", none)) {
    result_.dumps[entry.path().filename().string()] = readFile(entry.path());
  }
  if (fs::is_regular_file(pageNotePath())) result_.pageNote = readFile(pageNotePath());
}

void JobRunner::closeAll() {
  for (int& descriptor : ours_) closeOne(&descriptor);
  for (int& descriptor : theirs_) closeOne(&descriptor);
}

JobResult runJob(const JobPlan& plan) {
  JobRunner runner(plan);
  return runner.finish();
}
