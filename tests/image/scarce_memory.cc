// The two wrapped allocation functions and the switch that makes them fail.
// The names are the linker's: __wrap_ is called, __real_ is the C library's.
// SPDX-License-Identifier: Apache-2.0
#include "tests/image/scarce_memory.h"

#include <cstddef>

namespace {

bool isScarce = false;
int refused = 0;

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker makes these names
extern "C" {
void* __real_malloc(size_t bytes);
void* __real_calloc(size_t count, size_t bytes);
void* __wrap_malloc(size_t bytes);
void* __wrap_calloc(size_t count, size_t bytes);

void* __wrap_malloc(size_t bytes) {
  if (!isScarce) return __real_malloc(bytes);
  ++refused;
  return nullptr;
}

void* __wrap_calloc(size_t count, size_t bytes) {
  if (!isScarce) return __real_calloc(count, bytes);
  ++refused;
  return nullptr;
}
}
// NOLINTEND(bugprone-reserved-identifier)

ScarceMemory::ScarceMemory() {
  refused = 0;
  isScarce = true;
}

ScarceMemory::~ScarceMemory() { isScarce = false; }

int ScarceMemory::refusals() const { return refused; }
