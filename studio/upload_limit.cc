// The uploads on their way, in the order in which they began.
// SPDX-License-Identifier: Apache-2.0
#include "studio/upload_limit.h"

#include <algorithm>
#include <map>

namespace korvel {

// Of addresses with as many, the one whose oldest upload is older.
std::vector<UploadLimit::Upload>::iterator UploadLimit::oldestOfBusiest() {
  std::map<std::string, size_t> counts;
  for (const Upload& upload : uploads_) ++counts[upload.address];
  return std::max_element(uploads_.begin(), uploads_.end(), [&](const auto& a, const auto& b) {
    return counts[a.address] < counts[b.address];
  });
}

const void* UploadLimit::begin(const void* connection, const std::string& address) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const void* ended = nullptr;
  if (uploads_.size() >= most_) {
    const auto victim = oldestOfBusiest();
    ended = victim->connection;
    uploads_.erase(victim);
  }
  uploads_.push_back({connection, address});
  return ended;
}

void UploadLimit::end(const void* connection) {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::erase_if(uploads_, [=](const Upload& upload) { return upload.connection == connection; });
}

}  // namespace korvel
