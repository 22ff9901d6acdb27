// The uploaded documents: each in a folder of its own with a name that cannot be guessed, limited
// in number, removed when its hour is over, when its page is left, and when the server ends.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_DOCUMENT_STORE_H
#define KORVEL_STUDIO_DOCUMENT_STORE_H

#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "studio/placement.h"
#include "studio/worker_process.h"
#include "tools/common/result.h"

namespace korvel {

// A raster page or a picture of dots that has been made already.
struct MadeFile {
  std::string key;                          // everything that it depends on
  std::string name;                         // in the document's folder
  std::shared_ptr<const std::string> path;  // the file is removed when the last one lets go of it
  size_t width = 0;                         // dots
  size_t height = 0;
  size_t printed = 0;  // black dots, of pictures of dots
  // Of pages: everything but the place, and the place in dots; empty when something is cut off.
  std::string movableKey;
  long left = 0;
  long top = 0;
};

std::shared_ptr<const std::string> ownFile(const std::string& path);

// Removes its folder when the last one lets go of it.
class Document {
 public:
  Document(const std::string& id, const std::string& folder) : id_(id), folder_(folder) {}
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  ~Document();

  const std::string& id() const { return id_; }
  std::string file(const std::string& name) const { return folder_ + "/" + name; }
  std::string newName(const std::string& ending);

  // Set once, before others see the document.
  std::string title;
  bool isPdf = false;
  size_t width = 0;  // pixels, of a picture
  size_t height = 0;
  double dpi = 0;
  std::vector<TrueSize> pages;  // of a PDF file

  // Cancels the rendering of the same view that is at work, and takes its place.
  std::shared_ptr<Ticket> begin(const std::string& view);

  // Made files, the newest last; the oldest beyond a few are removed.
  std::optional<MadeFile> findPage(const std::string& key) const;
  std::optional<MadeFile> findMovablePage(const std::string& movableKey) const;
  std::optional<MadeFile> findDots(const std::string& key) const;
  std::optional<MadeFile> findDotsNamed(const std::string& name) const;
  void keepPage(const MadeFile& page);
  void keepDots(const MadeFile& dots);

  std::mutex rasterising;  // held while a page is made: others with the same page wait for it

 private:
  std::string id_;
  std::string folder_;
  mutable std::mutex mutex_;
  unsigned files_ = 0;
  std::map<std::string, std::shared_ptr<Ticket>> tickets_;
  std::vector<MadeFile> pages_;
  std::vector<MadeFile> dots_;
};

class DocumentStore {
 public:
  explicit DocumentStore(const std::string& folder);
  DocumentStore(const DocumentStore&) = delete;
  DocumentStore& operator=(const DocumentStore&) = delete;
  ~DocumentStore();

  // A new one, with a folder. Refused while there are too many complete ones.
  Result<std::shared_ptr<Document>> create();
  // Its upload is complete: it counts until everybody has let go of it. Refused when that is one
  // too many.
  Result<void> complete(const std::shared_ptr<Document>& document);
  void publish(const std::shared_ptr<Document>& document);
  std::shared_ptr<Document> find(const std::string& id);  // null; notes that it is in use
  void remove(const std::string& id);
  void leave(const std::string& id);  // removes it soon, unless it is used again

 private:
  using Clock = std::chrono::steady_clock;
  struct Entry {
    std::shared_ptr<Document> document;
    Clock::time_point end;
  };
  void sweep();
  bool isFull();  // with the lock held

  std::string folder_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::map<std::string, Entry> entries_;
  std::vector<std::weak_ptr<Document>> complete_;
  bool ended_ = false;
  std::thread sweeper_;
};

}  // namespace korvel

#endif
