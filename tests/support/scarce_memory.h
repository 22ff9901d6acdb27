// Makes the C allocator of the code under test fail, for as long as an object lives.
// The test program links with --wrap=malloc and --wrap=calloc, so no other library notices.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SUPPORT_SCARCE_MEMORY_H
#define KORVEL_TESTS_SUPPORT_SCARCE_MEMORY_H

#include <cstddef>

// One at a time.
class ScarceMemory {
 public:
  ScarceMemory();  // refuses everything
  // Refuses requests for exactly `bytes` bytes, after granting the first `granted` of them.
  explicit ScarceMemory(size_t bytes, int granted = 0);
  ~ScarceMemory();
  ScarceMemory(const ScarceMemory&) = delete;
  ScarceMemory& operator=(const ScarceMemory&) = delete;

  int refusals() const;  // allocations refused so far
};

#endif
