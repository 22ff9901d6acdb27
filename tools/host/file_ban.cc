// The ban is on a system call's flags, so it needs no rights and no list of places. Another user's
// identity would not do: at the filter's fixed places that user has files too, of jobs that print.
// SPDX-License-Identifier: Apache-2.0
#include "tools/host/file_ban.h"

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <array>
#include <bit>
#include <cerrno>
#include <csignal>
#include <cstddef>

namespace korvel {

namespace {

constexpr unsigned kCallNumber = offsetof(seccomp_data, nr);
// openat(folder, path, flags, mode); the flags' low half of a 64-bit argument.
constexpr unsigned kFlags =
    offsetof(seccomp_data, args) + 2 * 8 + (std::endian::native == std::endian::big ? 4 : 0);

// From here on writing to a file fails; pipes and sockets are free.
void keepFilesEmpty() {
  const rlimit none = {0, 0};
  setrlimit(RLIMIT_FSIZE, &none);
  signal(SIGXFSZ, SIG_IGN);
}

}  // namespace

void banNewFiles() {
  keepFilesEmpty();
  // Jumps count the steps that are left out, when true and when false.
  std::array<sock_filter, 6> steps = {{
      {BPF_LD | BPF_W | BPF_ABS, 0, 0, kCallNumber},
      {BPF_JMP | BPF_JEQ | BPF_K, 0, 3, SYS_openat},
      {BPF_LD | BPF_W | BPF_ABS, 0, 0, kFlags},
      {BPF_JMP | BPF_JSET | BPF_K, 0, 1, O_CREAT},
      {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ERRNO | EACCES},
      {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
  }};
  const sock_fprog program = {static_cast<unsigned short>(steps.size()), steps.data()};
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0) {
    prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
  }
}

}  // namespace korvel
