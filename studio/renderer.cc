// The worker's command lines, and the limit on how many run at a time.
// SPDX-License-Identifier: Apache-2.0
#include "studio/renderer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>
#include <utility>

#include "studio/sentences.h"

namespace korvel {
namespace {

constexpr unsigned kMostWaiting = 48;
constexpr std::chrono::seconds kLongestWait(30);
constexpr unsigned kMostAtATime = 4;

std::string number(double value) {
  const std::string text = matrixText({value, 0, 0, 0, 0, 0});
  return text.substr(0, text.find(' '));
}

// A file that a worker is about to write.
MadeFile newFile(Document* document, const std::string& key, const std::string& ending) {
  MadeFile made;
  made.key = key;
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

// Options that only the filter reads. All others may change the raster page, as CenterOfPixel does.
constexpr const char* kFilterOptions[] = {
    "AntiWrinkle",   "Brightness", "Contrast", "Darkness",  "HalftoneType", "MirrorImage",
    "NegativeImage", "Occurrence", "Origin",   "PaperType", "PostAction"};

std::string rasterOptions(Choices choices) {
  for (const char* name : kFilterOptions) choices.erase(name);
  return optionText(choices);
}

// Everything that the raster page depends on.
std::string pageKey(const Queue& queue, const PageSettings& settings, const PageShape& shape) {
  return queue.name + "/" + queue.version + "/" + rasterOptions(settings.choices) + "/" +
         std::to_string(settings.page) + "/" + matrixText(shape.placed.matrix);
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

Renderer::Renderer(const std::string& worker, const std::string& filter)
    : worker_(worker),
      filter_(filter),
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

Result<MadeFile> Renderer::page(Document* document, const Queue& queue,
                                const PageSettings& settings, Ticket* ticket) {
  const Result<PageShape> found = shape(*document, queue, settings);
  if (!found) return found.failure();
  const PageShape& where = found.value();
  const std::string key = pageKey(queue, settings, where);
  const std::lock_guard<std::mutex> lock(document->rasterising);
  if (const auto known = document->findPage(key)) return *known;
  const MadeFile raster = newFile(document, key, ".ras");
  const Result<nlohmann::json> made = run(
      {"page", document->isPdf ? "pdf" : "picture",
       document->file(document->isPdf ? "upload" : "picture.pgm"), std::to_string(settings.page),
       number(where.document.width), number(where.document.height), number(where.geometry.width),
       number(where.geometry.height), matrixText(where.placed.matrix), queue.ppd,
       rasterOptions(settings.choices), *raster.path},
      ticket);
  if (!made) return made.failure();
  document->keepPage(measured(raster, made.value()));
  return measured(raster, made.value());
}

Result<MadeFile> Renderer::dots(Document* document, const Queue& queue,
                                const PageSettings& settings, Ticket* ticket) {
  const Result<MadeFile> raster = page(document, queue, settings, ticket);
  if (!raster) return raster.failure();
  const std::string options = optionText(settings.choices);
  const std::string key = raster.value().key + "/" + options;
  if (const auto known = document->findDots(key)) return *known;
  const MadeFile picture = newFile(document, key, ".png");
  const Result<nlohmann::json> made =
      run({"dots", filter_, *raster.value().path, queue.ppd, options, *picture.path}, ticket);
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
