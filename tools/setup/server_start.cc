// The server's process is the other end of its socket, or the service of systemd that the socket
// starts. SPDX-License-Identifier: Apache-2.0
#include "tools/setup/server_start.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <sstream>
#include <string>

#include "tools/common/file_content.h"
#include "tools/common/process.h"

namespace korvel {

namespace {

constexpr int64_t kStartSeconds = 10;  // until the server has read its queues and starts jobs
constexpr int64_t kDay = 24 * 60 * 60;

std::string textOf(pid_t process, const char* file) {
  return contentOf("/proc/" + std::to_string(process) + "/" + file);
}

pid_t serviceProcess() {
  Program systemctl;
  systemctl.arguments = {"systemctl", "show", "--property=MainPID", "--value", "cups.service"};
  const Result<ProgramOutput> output = runProgram(systemctl, kNullDevice);
  return output ? std::atoi(output.value().text.c_str()) : 0;
}

pid_t serverProcess() {
  const HttpConnection connection = connectToPrintService();
  if (connection == nullptr) return 0;
  ucred peer = {};
  socklen_t size = sizeof peer;
  const bool known =
      getsockopt(httpGetFd(connection.get()), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
      peer.pid > 0;
  if (known && textOf(peer.pid, "comm") == "cupsd\n") return peer.pid;
  return serviceProcess();
}

// The 22nd field, in clock ticks since the computer's start. The second, the program's name, may
// contain blanks.
int64_t startTicks(const std::string& stat) {
  std::istringstream in(stat.substr(stat.rfind(')') + 1));
  std::string field;
  for (int number = 3; number <= 22; ++number) in >> field;
  return std::atoll(field.c_str());
}

}  // namespace

int64_t printServerStart() {
  const pid_t process = serverProcess();
  const std::string stat = process == 0 ? "" : textOf(process, "stat");
  if (stat.empty()) return 0;
  timespec now = {}, sinceBoot = {};
  clock_gettime(CLOCK_REALTIME, &now);
  clock_gettime(CLOCK_BOOTTIME, &sinceBoot);
  const double boot = static_cast<double>(now.tv_sec - sinceBoot.tv_sec) +
                      static_cast<double>(now.tv_nsec - sinceBoot.tv_nsec) / 1e9;
  const auto perSecond = static_cast<double>(sysconf(_SC_CLK_TCK));
  return static_cast<int64_t>(boot + static_cast<double>(startTicks(stat)) / perSecond);
}

int interruptedJob(const std::vector<Job>& jobs, int64_t serverStart) {
  const Job* first = nullptr;
  for (const Job& job : jobs) {
    const bool printed = job.state == IPP_JSTATE_PROCESSING || job.state == IPP_JSTATE_COMPLETED;
    if (!printed || job.created >= serverStart || job.begun < serverStart) continue;
    if (first == nullptr || job.begun < first->begun) first = &job;
  }
  if (first == nullptr || first->begun - serverStart > kStartSeconds) return 0;
  return first->now - first->begun < kDay ? first->number : 0;
}

}  // namespace korvel
