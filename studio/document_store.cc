// Folders, limits, and the thread that removes what has expired.
// SPDX-License-Identifier: Apache-2.0
#include "studio/document_store.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "studio/gatekeeper.h"
#include "studio/sentences.h"

namespace korvel {
namespace {

constexpr size_t kMostDocuments = 24;
constexpr size_t kMostPagesKept = 3;
constexpr size_t kMostDotsKept = 32;
constexpr size_t kMostViews = 64;
constexpr std::chrono::minutes kLife(60);
constexpr std::chrono::seconds kAfterLeaving(30);
constexpr std::chrono::seconds kBetweenSweeps(5);

template <typename Match>
std::optional<MadeFile> findFile(const std::vector<MadeFile>& files, Match match) {
  const auto found = std::find_if(files.begin(), files.end(), match);
  if (found == files.end()) return std::nullopt;
  return *found;
}

auto hasKey(const std::string& key) {
  return [&key](const MadeFile& file) { return file.key == key; };
}

void keepFile(std::vector<MadeFile>* files, const MadeFile& file, size_t most) {
  files->push_back(file);
  if (files->size() <= most) return;
  files->erase(files->begin());
}

}  // namespace

std::shared_ptr<const std::string> ownFile(const std::string& path) {
  return {new std::string(path), [](const std::string* owned) {
            std::remove(owned->c_str());
            delete owned;
          }};
}

Document::~Document() {
  pages_.clear();
  dots_.clear();
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

std::string Document::newName(const std::string& ending) {
  const std::lock_guard<std::mutex> lock(mutex_);
  return std::to_string(++files_) + ending;
}

std::shared_ptr<Ticket> Document::begin(const std::string& view) {
  auto ticket = std::make_shared<Ticket>();
  std::shared_ptr<Ticket> before;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (tickets_.size() >= kMostViews) tickets_.clear();
    before = std::exchange(tickets_[view], ticket);
  }
  if (before) before->cancel();
  return ticket;
}

std::optional<MadeFile> Document::findPage(const std::string& key) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return findFile(pages_, hasKey(key));
}

std::optional<MadeFile> Document::findMovablePage(const std::string& movableKey) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return findFile(pages_, [&](const MadeFile& page) { return page.movableKey == movableKey; });
}

std::optional<MadeFile> Document::findDots(const std::string& key) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return findFile(dots_, hasKey(key));
}

std::optional<MadeFile> Document::findDotsNamed(const std::string& name) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return findFile(dots_, [&name](const MadeFile& file) { return file.name == name; });
}

void Document::keepPage(const MadeFile& page) {
  const std::lock_guard<std::mutex> lock(mutex_);
  keepFile(&pages_, page, kMostPagesKept);
}

void Document::keepDots(const MadeFile& dots) {
  const std::lock_guard<std::mutex> lock(mutex_);
  keepFile(&dots_, dots, kMostDotsKept);
}

DocumentStore::DocumentStore(const std::string& folder)
    : folder_(folder), sweeper_([this] { sweep(); }) {}

DocumentStore::~DocumentStore() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ended_ = true;
  }
  wake_.notify_all();
  sweeper_.join();
}

bool DocumentStore::isFull() {
  std::erase_if(complete_, [](const std::weak_ptr<Document>& d) { return d.expired(); });
  return complete_.size() >= kMostDocuments;
}

Result<std::shared_ptr<Document>> DocumentStore::create() {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (isFull()) return Failure{kTooManyDocuments.english};
  const std::string id = unguessableName();
  const std::string folder = folder_ + "/" + id;
  if (mkdir(folder.c_str(), 0700) != 0) return Failure{kDiskFull.english};
  return std::make_shared<Document>(id, folder);
}

Result<void> DocumentStore::complete(const std::shared_ptr<Document>& document) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (isFull()) return Failure{kTooManyDocuments.english};
  complete_.push_back(document);
  return {};
}

void DocumentStore::publish(const std::shared_ptr<Document>& document) {
  const std::lock_guard<std::mutex> lock(mutex_);
  entries_[document->id()] = {document, Clock::now() + kLife};
}

std::shared_ptr<Document> DocumentStore::find(const std::string& id) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto found = entries_.find(id);
  if (found == entries_.end()) return nullptr;
  found->second.end = Clock::now() + kLife;
  return found->second.document;
}

void DocumentStore::remove(const std::string& id) {
  std::shared_ptr<Document> last;  // its folder goes without the lock
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto found = entries_.find(id);
  if (found == entries_.end()) return;
  last = found->second.document;
  entries_.erase(found);
}

void DocumentStore::leave(const std::string& id) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto found = entries_.find(id);
  if (found != entries_.end()) found->second.end = Clock::now() + kAfterLeaving;
}

void DocumentStore::sweep() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!ended_) {
    wake_.wait_for(lock, kBetweenSweeps);
    std::erase_if(entries_, [](const auto& entry) { return Clock::now() >= entry.second.end; });
  }
}

}  // namespace korvel
