// The worker's command lines, and the limit on how many run at a time.
// SPDX-License-Identifier: Apache-2.0
#include "studio/renderer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <thread>
#include <utility>

#include "studio/sentences.h"
#include "tools/common/units.h"

namespace korvel {
namespace {

constexpr unsigned kMostWaiting = 48;
constexpr std::chrono::seconds kLongestWait(30);
constexpr unsigned kMostAtATime = 4;
constexpr size_t kMostBlanks = 32;

std::string number(double value) {
  const std::string text = matrixText({value, 0, 0, 0, 0, 0});
  return text.substr(0, text.find(' '));
}

// With a file that a worker is about to write.
MadeFile newFile(Document* document, MadeFile made, const std::string& ending) {
  made.name = document->newName(ending);
  made.path = ownFile(document->file(made.name));
  return made;
}

MadeFile measured(MadeFile made, const nlohmann::json& answer) {
  made.width = answer.value("width", size_t{0});
  made.height = answer.value("height", size_t{0});
  made.printed = answer.value("printed", size_t{0});
  return made;
}

MadeFile sizedAs(MadeFile made, const MadeFile& other) {
  made.width = other.width;
  made.height = other.height;
  return made;
}

// Options that only the filter reads. All others may change the raster page, as CenterOfPixel does.
constexpr const char* kFilterOptions[] = {
    "AntiWrinkle",   "Brightness", "Contrast", "Darkness",  "HalftoneType", "MirrorImage",
    "NegativeImage", "Occurrence", "Origin",   "PaperType", "PostAction"};

std::string rasterOptions(Choices choices) {
  for (const char* name : kFilterOptions) choices.erase(name);
  return optionText(choices);
}

std::string driverKey(const Queue& queue, const PageSettings& settings) {
  return queue.name + "/" + queue.version + "/" + rasterOptions(settings.choices);
}

// Everything that the raster page depends on but the document's place.
std::string unplacedKey(const Queue& queue, const PageSettings& settings, const PageShape& shape) {
  Matrix matrix = shape.placed.matrix;
  matrix[4] = matrix[5] = 0;
  return driverKey(queue, settings) + "/" + std::to_string(settings.page) + "/" +
         matrixText(matrix);
}

// Whether nothing of the document is cut off at the printable area's edges.
bool isWhole(const PageShape& shape) {
  constexpr double kRounding = 1e-6;
  const PlacedDocument& placed = shape.placed;
  return placed.left >= -kRounding && placed.top >= -kRounding &&
         placed.left + placed.width <= shape.geometry.printableWidth() + kRounding &&
         placed.top + placed.height <= shape.geometry.printableHeight() + kRounding;
}

// The page to be made, without its file.
MadeFile plannedPage(const Queue& queue, const PageSettings& settings, const PageShape& shape) {
  const double dotsPerPoint = shape.geometry.dpi / kPointsPerInch;
  const std::string key = unplacedKey(queue, settings, shape);
  MadeFile page;
  page.left = std::lround(shape.placed.left * dotsPerPoint);
  page.top = std::lround(shape.placed.top * dotsPerPoint);
  page.key = key + "@" + std::to_string(page.left) + "," + std::to_string(page.top);
  if (isWhole(shape)) page.movableKey = key;
  return page;
}

}  // namespace

// Waits until fewer steps than the limit are at work.
class Renderer::Turn {
 public:
  explicit Turn(Renderer* renderer) : renderer_(renderer) {
    std::unique_lock<std::mutex> lock(renderer->mutex_);
    if (renderer->waiting_ >= kMostWaiting) return;
    ++renderer->waiting_;
    granted_ = renderer->free_.wait_for(
        lock, kLongestWait, [renderer] { return renderer->running_ < renderer->most_; });
    --renderer->waiting_;
    if (granted_) ++renderer->running_;
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn() {
    if (!granted_) return;
    {
      const std::lock_guard<std::mutex> lock(renderer_->mutex_);
      --renderer_->running_;
    }
    renderer_->free_.notify_one();
  }
  bool granted() const { return granted_; }

 private:
  Renderer* renderer_;
  bool granted_ = false;
};

Renderer::Renderer(const std::string& worker, const std::string& filter, const std::string& folder)
    : worker_(worker),
      filter_(filter),
      folder_(folder),
      most_(std::clamp(std::thread::hardware_concurrency(), 2u, kMostAtATime)) {}

Result<nlohmann::json> Renderer::run(const std::vector<std::string>& words, Ticket* ticket) {
  const Turn turn(this);
  if (!turn.granted()) return Failure{kBusy.english};
  return runWorker(worker_, words, ticket);
}

Result<void> Renderer::import(Document* document, const std::string& upload) {
  Ticket ticket;
  const Result<nlohmann::json> read =
      run({"import", upload, document->file("picture.pgm")}, &ticket);
  if (!read) return read.failure();
  const nlohmann::json& answer = read.value();
  document->isPdf = answer.value("kind", "") == "pdf";
  document->width = answer.value("width", size_t{0});
  document->height = answer.value("height", size_t{0});
  document->dpi = answer.value("dpi", 0.0);
  if (document->isPdf) {
    for (const nlohmann::json& page : answer.at("pages")) {
      document->pages.push_back({page.at(0).get<double>(), page.at(1).get<double>()});
    }
  } else {
    std::remove(upload.c_str());
  }
  return {};
}

// A picture without a resolution prints one dot for each pixel.
Result<PageShape> Renderer::shape(const Document& document, const Queue& queue,
                                  const PageSettings& settings) const {
  PageShape shape;
  shape.geometry = queue.driver->geometry(settings.choices.at("PageSize"));
  if (shape.geometry.printableWidth() <= 0 || shape.geometry.printableHeight() <= 0) {
    return Failure{kBadSetting.english};
  }
  if (document.isPdf) {
    if (settings.page < 1 || settings.page > document.pages.size()) {
      return Failure{kNoSuchPage.english};
    }
    shape.document = document.pages[settings.page - 1];
  } else {
    const double dpi = document.dpi > 0 ? document.dpi : queue.driver->dpi();
    shape.document = {static_cast<double>(document.width) * kPointsPerInch / dpi,
                      static_cast<double>(document.height) * kPointsPerInch / dpi};
  }
  shape.placed = place(settings.placement, shape.geometry, shape.document);
  return shape;
}

// The page without a document, for pictures to be drawn on; made once for each size.
Result<MadeFile> Renderer::blank(const Queue& queue, const PageSettings& settings,
                                 const PageGeometry& geometry) {
  const std::string key = driverKey(queue, settings);
  const std::lock_guard<std::mutex> lock(blankMutex_);
  const auto known = blanks_.find(key);
  if (known != blanks_.end()) return known->second;
  MadeFile page;
  page.key = key;
  page.path = ownFile(folder_ + "/blank-" + std::to_string(++blankNumber_) + ".ras");
  Ticket ticket;
  const Result<nlohmann::json> made = run({"blank", number(geometry.width), number(geometry.height),
                                           queue.ppd, rasterOptions(settings.choices), *page.path},
                                          &ticket);
  if (!made) return made.failure();
  if (blanks_.size() >= kMostBlanks) blanks_.clear();
  return blanks_[key] = measured(page, made.value());
}

Result<MadeFile> Renderer::drawPicture(Document* document, const Queue& queue,
                                       const PageSettings& settings, const PageShape& shape,
                                       const MadeFile& page, Ticket* ticket) {
  const Result<MadeFile> paper = blank(queue, settings, shape.geometry);
  if (!paper) return paper.failure();
  const Matrix onto =
      dotsOfPixels(shape.placed, shape.geometry, shape.document,
                   static_cast<double>(document->width), static_cast<double>(document->height));
  const Result<nlohmann::json> made = run(
      {"picture", document->file("picture.pgm"), matrixText(onto), *paper.value().path, *page.path},
      ticket);
  if (!made) return made.failure();
  return sizedAs(page, paper.value());
}

// A page that was only moved starts no rasteriser.
Result<MadeFile> Renderer::drawPdf(Document* document, const Queue& queue,
                                   const PageSettings& settings, const PageShape& shape,
                                   const MadeFile& page, Ticket* ticket) {
  const auto before =
      page.movableKey.empty() ? std::nullopt : document->findMovablePage(page.movableKey);
  if (before) {
    const Result<nlohmann::json> moved =
        run({"move", *before->path, std::to_string(page.left - before->left),
             std::to_string(page.top - before->top), *page.path},
            ticket);
    if (!moved) return moved.failure();
    return sizedAs(page, *before);
  }
  const Result<nlohmann::json> made =
      run({"pdf", document->file("upload"), std::to_string(settings.page),
           number(shape.geometry.width), number(shape.geometry.height),
           matrixText(shape.placed.matrix), queue.ppd, rasterOptions(settings.choices), *page.path},
          ticket);
  if (!made) return made.failure();
  return measured(page, made.value());
}

Result<MadeFile> Renderer::page(Document* document, const Queue& queue,
                                const PageSettings& settings, const PageShape& shape,
                                Ticket* ticket) {
  MadeFile planned = plannedPage(queue, settings, shape);
  const std::lock_guard<std::mutex> lock(document->rasterising);
  if (const auto known = document->findPage(planned.key)) return *known;
  planned = newFile(document, planned, ".ras");
  const Result<MadeFile> made =
      document->isPdf ? drawPdf(document, queue, settings, shape, planned, ticket)
                      : drawPicture(document, queue, settings, shape, planned, ticket);
  if (made) document->keepPage(made.value());
  return made;
}

Result<MadeFile> Renderer::dots(Document* document, const Queue& queue,
                                const PageSettings& settings, const MadeFile& raster,
                                Ticket* ticket) {
  const std::string options = optionText(settings.choices);
  const std::string key = raster.key + "/" + options;
  if (const auto known = document->findDots(key)) return *known;
  MadeFile picture;
  picture.key = key;
  picture = newFile(document, picture, ".png");
  const Result<nlohmann::json> made =
      run({"dots", filter_, *raster.path, queue.ppd, options, *picture.path}, ticket);
  if (!made) return made.failure();
  const MadeFile dots = measured(picture, made.value());
  document->keepDots(dots);
  return dots;
}

Result<nlohmann::json> Renderer::barcodes(const MadeFile& raster, const MadeFile& dots) {
  Ticket ticket;
  return run({"barcodes", *raster.path, *dots.path}, &ticket);
}

}  // namespace korvel
