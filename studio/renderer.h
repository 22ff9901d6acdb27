// From a document and its settings to the raster page that prints and the dots that it makes. Each
// step is a worker process; what has been made for the same settings is not made again.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_RENDERER_H
#define KORVEL_STUDIO_RENDERER_H

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "studio/document_store.h"
#include "studio/placement.h"
#include "studio/print_queues.h"
#include "tools/common/result.h"

namespace korvel {

struct PageSettings {
  Choices choices;  // complete
  Placement placement;
  unsigned page = 1;
};

struct PageShape {
  PageGeometry geometry;
  TrueSize document;  // of the page of the document, points
  PlacedDocument placed;
};

class Renderer {
 public:
  // Paths of the two programs, and a private folder.
  Renderer(const std::string& worker, const std::string& filter, const std::string& folder);

  // Reads the upload of a new document.
  Result<void> import(Document* document, const std::string& upload);

  Result<PageShape> shape(const Document& document, const Queue& queue,
                          const PageSettings& settings) const;
  // `shape` is what shape() returns for the same settings.
  Result<MadeFile> page(Document* document, const Queue& queue, const PageSettings& settings,
                        const PageShape& shape, Ticket* ticket);
  // `raster` is what page() returns for the same settings.
  Result<MadeFile> dots(Document* document, const Queue& queue, const PageSettings& settings,
                        const MadeFile& raster, Ticket* ticket);
  Result<nlohmann::json> barcodes(const MadeFile& raster, const MadeFile& dots);

 private:
  class Turn;
  Result<MadeFile> blank(const Queue& queue, const PageSettings& settings,
                         const PageGeometry& geometry);
  Result<MadeFile> drawPicture(Document* document, const Queue& queue, const PageSettings& settings,
                               const PageShape& shape, const MadeFile& page, Ticket* ticket);
  Result<MadeFile> drawPdf(Document* document, const Queue& queue, const PageSettings& settings,
                           const PageShape& shape, const MadeFile& page, Ticket* ticket);
  Result<nlohmann::json> run(const std::vector<std::string>& words, Ticket* ticket);

  std::string worker_;
  std::string filter_;
  std::string folder_;
  std::mutex mutex_;
  std::condition_variable free_;
  unsigned most_;  // steps at a time
  unsigned running_ = 0;
  unsigned waiting_ = 0;
  std::mutex blankMutex_;  // held while a blank page is made
  std::map<std::string, MadeFile> blanks_;
  unsigned blankNumber_ = 0;
};

}  // namespace korvel

#endif
