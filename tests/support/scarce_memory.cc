// The two wrapped allocation functions, and the switch that makes them fail.
// The linker defines the names: __wrap_ is called, __real_ is the C library's function.
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/scarce_memory.h"

namespace {

enum class Scarcity { kNone, kOneSize, kEverything };

Scarcity scarcity = Scarcity::kNone;
size_t scarceSize = 0;
int stillGranted = 0;  // requests of the limited size
int refused = 0;

bool refuses(size_t bytes) {
  if (scarcity == Scarcity::kNone) return false;
  if (scarcity == Scarcity::kOneSize && (bytes != scarceSize || stillGranted-- > 0)) return false;
  ++refused;
  return true;
}

void begin(Scarcity what, size_t bytes, int granted) {
  scarceSize = bytes;
  stillGranted = granted;
  refused = 0;
  scarcity = what;
}

}  // namespace

extern "C" {
void* __real_malloc(size_t bytes);
void* __real_calloc(size_t count, size_t bytes);
void* __wrap_malloc(size_t bytes);
void* __wrap_calloc(size_t count, size_t bytes);

void* __wrap_malloc(size_t bytes) { return refuses(bytes) ? nullptr : __real_malloc(bytes); }

void* __wrap_calloc(size_t count, size_t bytes) {
  return refuses(count * bytes) ? nullptr : __real_calloc(count, bytes);
}
}

ScarceMemory::ScarceMemory() { begin(Scarcity::kEverything, 0, 0); }

ScarceMemory::ScarceMemory(size_t bytes, int granted) { begin(Scarcity::kOneSize, bytes, granted); }

ScarceMemory::~ScarceMemory() { scarcity = Scarcity::kNone; }

int ScarceMemory::refusals() const { return refused; }
