// Signal dispositions and masks survive exec, and so does a descriptor's O_NONBLOCK.
// What cannot be restored stays as it is: no step is worth a job.
// SPDX-License-Identifier: Apache-2.0
#include "driver/inherited_state.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

namespace {

void deliverSignals() {
  std::signal(SIGPIPE, SIG_DFL);
  std::signal(SIGXFSZ, SIG_IGN);
  sigset_t delivered;
  sigemptyset(&delivered);
  sigaddset(&delivered, SIGPIPE);
  sigaddset(&delivered, SIGTERM);
  sigprocmask(SIG_UNBLOCK, &delivered, nullptr);
}

// The flag belongs to the open file, so every process that shares it gets a blocking one.
void makeBlocking(int descriptor) {
  const int flags = fcntl(descriptor, F_GETFL);
  if (flags != -1 && (flags & O_NONBLOCK) != 0) fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK);
}

}  // namespace

void restoreInheritedState() {
  deliverSignals();
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) makeBlocking(stream);
}
