// Finds out once which SIMD targets the processor supports.
// The environment variable is for tests, which compare the dots of all targets.
// SPDX-License-Identifier: Apache-2.0
#include "lanes/target.h"

#include <array>
#include <cstdlib>
#include <cstring>

namespace {

bool machineRuns([[maybe_unused]] Target target) {
#if defined(__x86_64__)
  if (target == Target::kAvx2) return __builtin_cpu_supports("avx2") != 0;
#endif
  return true;
}

Target widestOrNamed() {
  const std::span<const Target> targets = availableTargets();
  if (const char* wanted = std::getenv("KORVEL_TARGET")) {
    for (const Target target : targets) {
      if (std::strcmp(wanted, nameOf(target)) == 0) return target;
    }
  }
  return targets.back();
}

Target& choice() {
  static Target chosen = widestOrNamed();
  return chosen;
}

}  // namespace

std::span<const Target> availableTargets() {
#define KORVEL_LIST(enumerator, name) Target::enumerator,
  static constexpr std::array kTargets{KORVEL_EACH_TARGET(KORVEL_LIST)};
#undef KORVEL_LIST
  static const size_t count = [] {
    size_t runs = 0;
    while (runs < kTargets.size() && machineRuns(kTargets[runs])) ++runs;
    return runs;
  }();
  return {kTargets.data(), count};
}

const char* nameOf(Target target) {
  switch (target) {
    case Target::kSse2:
      return "sse2";
    case Target::kNeon:
      return "neon";
    case Target::kAvx2:
      return "avx2";
    default:
      return "portable";
  }
}

Target chosenTarget() { return choice(); }

void chooseTarget(Target target) { choice() = target; }
