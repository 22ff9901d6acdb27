// The SIMD targets that kernels are compiled for, and which of them this machine supports.
// The kernels of every target give the same bytes; targets differ only in speed.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_LANES_TARGET_H
#define KORVEL_LANES_TARGET_H

#include <span>

// From the narrowest to the widest. Portable vectors work on every processor, compiled from loops.
enum class Target { kPortable, kSse2, kNeon, kAvx2 };

// KORVEL_EACH_TARGET(X) writes X(enumerator, namespace) for each target of this build.
#if defined(__x86_64__)
#define KORVEL_EACH_TARGET(X) X(kPortable, portable) X(kSse2, sse2) X(kAvx2, avx2)
#elif defined(__aarch64__)
#define KORVEL_EACH_TARGET(X) X(kPortable, portable) X(kNeon, neon)
#else
#define KORVEL_EACH_TARGET(X) X(kPortable, portable)
#endif

// The targets of this build that this machine supports, the portable one first.
std::span<const Target> availableTargets();

const char* nameOf(Target target);

// The widest available target, or the one that the environment variable KORVEL_TARGET names;
// a name that is not available is ignored. Decided at the first call.
Target chosenTarget();

// Chooses an available target from now on, for tests and benchmarks that compare them.
void chooseTarget(Target target);

#endif
