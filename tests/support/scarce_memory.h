// Makes the C allocator of the code under test fail during the lifetime of an object. The test
// program is linked with --wrap=malloc and --wrap=calloc, so other libraries are not affected.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SUPPORT_SCARCE_MEMORY_H
#define KORVEL_TESTS_SUPPORT_SCARCE_MEMORY_H

#include <cstddef>

// Only one object at a time.
class ScarceMemory {
 public:
  ScarceMemory();  // all requests fail
  // Requests for exactly `bytes` bytes fail, except the first `granted` of them.
  explicit ScarceMemory(size_t bytes, int granted = 0);
  ~ScarceMemory();
  ScarceMemory(const ScarceMemory&) = delete;
  ScarceMemory& operator=(const ScarceMemory&) = delete;

  int refusals() const;  // failed requests so far
};

#endif
