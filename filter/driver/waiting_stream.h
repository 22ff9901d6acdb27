// Output streams that lose nothing on a descriptor that does not block.
// O_NONBLOCK is shared with other processes, and any of them may set it while the job runs.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_DRIVER_WAITING_STREAM_H
#define KORVEL_DRIVER_WAITING_STREAM_H

#include <cstdio>

// Returns a stream to the descriptor of `stream` (standard output or standard error, nothing
// written yet) that waits for room wherever the descriptor refuses for lack of it, and fails as
// any other does. Without memory, or when `stream` has no descriptor, returns `stream` itself.
// The new stream lives as long as the process; fileno() does not know its descriptor.
FILE* openWaitingStream(FILE* stream);

#endif
