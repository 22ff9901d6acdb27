// How many uploads may be on their way. When there are too many, one of them ends for the newest,
// so that visitors who never finish keep nobody out.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_UPLOAD_LIMIT_H
#define KORVEL_STUDIO_UPLOAD_LIMIT_H

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace korvel {

class UploadLimit {
 public:
  explicit UploadLimit(size_t most) : most_(most) {}

  // `connection` begins an upload. Returns the connection whose upload has to end for it, no longer
  // counted: the oldest of the address that has most; null when there is room.
  const void* begin(const void* connection, const std::string& address);
  void end(const void* connection);  // does nothing when it is not counted

 private:
  struct Upload {
    const void* connection;
    std::string address;
  };
  std::vector<Upload>::iterator oldestOfBusiest();

  size_t most_;
  std::mutex mutex_;
  std::vector<Upload> uploads_;  // the newest last
};

}  // namespace korvel

#endif
