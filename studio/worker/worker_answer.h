// What the worker says at its end: one line of JSON on standard output.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_WORKER_WORKER_ANSWER_H
#define KORVEL_STUDIO_WORKER_WORKER_ANSWER_H

#include <string>

#include "studio/sentences.h"

namespace korvel {

// Ends the process at once; destructors do not run. For decoders, whose callbacks cannot return.
[[noreturn]] void endWorker(const Sentence& sentence);
[[noreturn]] void endWorker(const std::string& sentence);

}  // namespace korvel

#endif
