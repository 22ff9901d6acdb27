// korvel-preview: what a document will look like in print, made by the filter itself, as pictures.
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "drawing/dot_font.h"
#include "tools/common/installation.h"
#include "tools/common/output_file.h"
#include "tools/common/png_file.h"
#include "tools/common/scratch_folder.h"
#include "tools/common/shown_text.h"
#include "tools/common/suggestions.h"
#include "tools/common/translation.h"
#include "tools/description/driver_names.h"
#include "tools/description/halftone_names.h"
#include "tools/description/printer_description.h"
#include "tools/host/raster_check.h"
#include "tools/preview/contact_sheet.h"
#include "tools/preview/document.h"
#include "tools/preview/label_picture.h"
#include "tools/preview/page_placement.h"
#include "tools/preview/picture_file.h"
#include "tools/preview/picture_scaling.h"
#include "tools/preview/preview_arguments.h"
#include "tools/preview/preview_job.h"
#include "tools/stream/stream_listing.h"

namespace {

using korvel::Failure;
using korvel::filled;
using korvel::PreviewArguments;
using korvel::Result;
using korvel::translated;

constexpr char kProgram[] = "korvel-preview";

constexpr double kNoLimit = 7 * 24 * 3600;  // seconds that the filter may run
constexpr unsigned kProgressStep = 100;     // pages between two lines of progress
constexpr char kPlainDescription[] = "korvel-label-203";

Result<void> openToWrite(const std::string& path, korvel::OutputFile* file) {
  Result<korvel::OutputFile> created = korvel::createOutputFile(path);
  if (!created) return created.failure();
  *file = std::move(created).value();
  return {};
}

Failure cannotShow(const std::string& file, const std::string& reason) {
  return {filled("Cannot show %s: %s", file.c_str(), reason.c_str())};
}

void warn(const std::string& sentence) {
  std::fprintf(stderr, "%s: %s\n", kProgram, sentence.c_str());
}

// The rasteriser's programs run with the user's rights, which are many when the user is root.
void noteRootsRights(const std::string& file) {
  struct stat found = {};
  if (geteuid() != 0 || stat(file.c_str(), &found) != 0) return;
  if (found.st_uid == 0 && isatty(STDERR_FILENO) == 0) return;
  warn(
      filled("Running as root: %s is converted with root's rights. If you do not trust the "
             "file, run korvel-preview as another user.",
             file.c_str()));
}

std::string installedFilter() {
  const char* folder = std::getenv("CUPS_SERVERBIN");
  return (folder != nullptr ? folder : korvel::spoolerFolder(KORVEL_CUPS_SERVERBIN)) +
         "/filter/rastertokorvel";
}

// With a slash at the end.
std::string installedDescriptions() {
  const char* folder = std::getenv("CUPS_DATADIR");
  return folder != nullptr ? std::string(folder) + "/model/korvel/"
                           : korvel::spoolerFolder(KORVEL_PPD_DIR) + "/";
}

// One line that changes on a terminal, otherwise a line now and then.
class Progress {
 public:
  explicit Progress(const char* what) : what_(what) {}
  ~Progress() {
    if (terminal_ && shown_) std::fputs("\r\033[K", stderr);
  }
  void show(unsigned number) {
    if (terminal_) {
      std::fprintf(stderr, "\r%s %u ", what_, number);
      shown_ = true;
    } else if (number % kProgressStep == 0) {
      std::fprintf(stderr, "%s %u\n", what_, number);
    }
  }

 private:
  const char* what_;
  bool terminal_ = isatty(STDERR_FILENO) != 0;
  bool shown_ = false;
};

// The three files of --stream.
class StreamFiles {
 public:
  explicit StreamFiles(const std::string& folder) : folder_(folder) {}

  bool exist() const {
    return std::any_of(std::begin(kNames), std::end(kNames), [this](const char* name) {
      return std::filesystem::exists(std::filesystem::symlink_status(path(name)));
    });
  }
  Result<void> open() {
    Result<void> opened = openToWrite(path("stream.bin"), &bytes_);
    if (opened) opened = openToWrite(path("stream.txt"), &listing_);
    if (opened) opened = openToWrite(path("messages.txt"), &messages_);
    return opened;
  }
  void connect(korvel::SpoolerJob* job) {
    job->output = [this](const char* part, size_t count) {
      std::fwrite(part, 1, count, bytes_.get());
      decoder_.push(reinterpret_cast<const uint8_t*>(part), count);
    };
    job->messages = [this](const char* part, size_t count) {
      std::fwrite(part, 1, count, messages_.get());
    };
  }
  Result<void> finish() {
    lines_.finish();
    for (const korvel::OutputFile* file : {&bytes_, &listing_, &messages_}) {
      if (std::fflush(file->get()) != 0 || std::ferror(file->get()) != 0) {
        return korvel::cannotWrite(folder_);
      }
    }
    return {};
  }
  // A job that printed nothing leaves nothing.
  void remove() const {
    std::error_code ignored;
    for (const char* name : kNames) std::filesystem::remove(path(name), ignored);
  }
  std::string path(const std::string& name) const { return folder_ + "/" + name; }

 private:
  static constexpr const char* kNames[] = {"stream.bin", "stream.txt", "messages.txt"};

  std::string folder_;
  korvel::OutputFile bytes_, listing_, messages_;
  korvel::StreamListing lines_{
      [this](const std::string& line) { std::fprintf(listing_.get(), "%s\n", line.c_str()); }};
  korvel::StreamDecoder decoder_{[this](const korvel::StreamItem& item) { lines_.add(item); }};
};

class Preview {
 public:
  Preview(const korvel::Arguments& commandLine, PreviewArguments arguments)
      : commandLine_(commandLine), arguments_(std::move(arguments)) {}

  Result<void> run() {
    Result<void> done = identify();
    if (done) done = scratch_.open();
    if (done) done = findDescription();
    if (done) done = createFolder();
    if (done) done = prepareRaster();
    if (done) warnOfPicture();
    if (done) reportPlacement();
    if (done) done = arguments_.halftones ? compareHalftones() : showSheets();
    return done;
  }

 private:
  bool isRaster() const { return type_ == korvel::kRasterType; }
  std::string out(const std::string& name) const { return arguments_.folder + "/" + name; }

  Result<void> identify() {
    const Result<std::string> type = korvel::identifyDocument(arguments_.file);
    if (!type) return type.failure();
    type_ = type.value();
    if (!isRaster()) noteRootsRights(arguments_.file);
    if (isRaster() && arguments_.copies != "1") {
      commandLine_.wrong(translated("-n is not for raster files, which contain all their copies"));
    }
    return {};
  }

  Result<void> findDescription() {
    ppd_ = scratch_.file("printer.ppd");
    options_ = arguments_.options;
    const Result<std::string> name = arguments_.queue.empty() ? copyPpd() : copyQueuePpd();
    if (!name) return name.failure();
    const Result<void> opened = description_.open(ppd_, name.value());
    if (!opened) return opened;
    const Result<void> marked = description_.mark(options_);
    if (!marked) commandLine_.refuse(marked.sentence());
    return {};
  }

  // Both copy the PPD to ppd_ and return a name for it.
  Result<std::string> copyQueuePpd() {
    const std::string& queue = arguments_.queue;
    const Result<std::string> defaults = korvel::fetchQueue(queue, ppd_);
    if (!defaults) return defaults.failure();
    if (!defaults.value().empty()) {
      options_ = defaults.value() + (options_.empty() ? "" : " ") + options_;
    }
    return filled("The PPD of queue %s", queue.c_str());
  }
  Result<std::string> copyPpd() const {
    const Result<std::string> path = descriptionPath();
    if (!path) return path.failure();
    // With --stream the status requests and replies are of interest.
    const Result<void> copied = korvel::copyDescription(path.value(), ppd_, !arguments_.stream);
    if (!copied) return copied.failure();
    return path;
  }

  // A name without a slash that is no file here is that of an installed PPD.
  Result<std::string> descriptionPath() const {
    const std::string& named = arguments_.description;
    if (named.find('/') != std::string::npos || std::filesystem::exists(named)) return named;
    const std::string name = named.empty() ? kPlainDescription : named;
    const std::string models = installedDescriptions();
    const std::vector<std::string> names = namesIn(models);
    for (const std::string& each : names) {
      if (name == each + ".ppd" || korvel::meansDriver(name, each)) return models + each + ".ppd";
    }
    const std::vector<std::string> nearest = korvel::nearestDrivers(name, names);
    if (nearest.empty()) {
      return Failure{filled("There is no PPD %s here or in %s.", name.c_str(), models.c_str())};
    }
    return Failure{filled("There is no PPD %s here or in %s. Nearest names: %s.", name.c_str(),
                          models.c_str(), korvel::listed(nearest).c_str())};
  }

  static std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
      if (entry.path().extension() == ".ppd") names.push_back(entry.path().stem().string());
    }
    return names;
  }

  Result<void> createFolder() const {
    std::error_code reason;
    std::filesystem::create_directories(arguments_.folder, reason);
    if (!reason || std::filesystem::is_directory(arguments_.folder)) return {};
    return Failure{filled("Cannot create the folder %s: %s.", arguments_.folder.c_str(),
                          reason.message().c_str())};
  }

  // A raster file is unpacked; the pages of a document are read from the rasteriser later.
  Result<void> prepareRaster() {
    dpi_ = description_.dpi();
    if (isRaster()) {
      raster_ = scratch_.file("pages.ras");
      const Result<void> unpacked = korvel::unpackRaster(arguments_.file, raster_);
      if (!unpacked) return unpacked;
      const Result<void> whole = korvel::checkRaster(
          raster_, [this](const auto& header) { papers_.push_back(paperOf(header)); });
      if (!whole) return cannotShow(arguments_.file, whole.sentence());
      const Result<korvel::RasterPageInfo> info = korvel::readRasterPage(raster_);
      if (!info) return cannotShow(arguments_.file, info.sentence());
      if (info.value().dpi != 0) dpi_ = info.value().dpi;
    }
    if (dpi_ >= 1 && dpi_ <= 9999) return {};
    return Failure{translated("The resolution of the pages is unknown.")};
  }

  // Of a page of a raster file, which need not have the size that is selected in the PPD.
  korvel::DotSize paperOf(const cups_page_header2_t& header) const {
    const bool isSheet = description_.media() == korvel::Media::kSheet;
    const double dotsPerPoint = header.HWResolution[0] / 72.0;
    if (isSheet && header.cupsPageSize[0] > 0 && header.cupsPageSize[1] > 0) {
      return {static_cast<int>(header.cupsPageSize[0] * dotsPerPoint),
              static_cast<int>(header.cupsPageSize[1] * dotsPerPoint)};
    }
    return {static_cast<int>(header.cupsWidth), static_cast<int>(header.cupsHeight)};
  }
  korvel::DotSize paperOfPage(unsigned number) const {
    if (!isRaster()) return description_.paperDots();
    return number <= papers_.size() ? papers_[number - 1] : korvel::DotSize();
  }

  void reportPlacement() {
    if (type_ != "application/pdf") return;
    const auto placement = korvel::findPlacement(rasteriserJob(), scratch_.file("stripes.pdf"));
    if (!placement) return;
    const std::string sentence = korvel::placementSentence(arguments_.file, *placement);
    if (!sentence.empty()) warn(sentence);
  }

  void warnOfPicture() const {
    if (!type_.starts_with("image/")) return;
    const korvel::PictureFile picture = korvel::readPictureFile(arguments_.file);
    if (picture.endsEarly) {
      warn(filled("%s is incomplete, and a part of the picture is missing; save or copy it again.",
                  arguments_.file.c_str()));
    }
    if (description_.media() != korvel::Media::kSheet) warnOfScaling(picture.size);
    if (korvel::isTurnedOnPage(picture.size, description_.printableDots(),
                               korvel::parseOptions(options_))) {
      warn(korvel::placementSentence(arguments_.file, {1, true}));
    }
  }

  // Bars of a scaled picture are no longer whole dots. Stencils have none.
  void warnOfScaling(const korvel::DotSize& picture) const {
    const korvel::DotSize page = description_.printableDots();
    const korvel::DotSize printed =
        korvel::sizeOnPage(picture, page, korvel::parseOptions(options_));
    if (printed == picture) return;
    warn(
        filled("%s is %d x %d dots and will be scaled to %d x %d; barcodes may not scan. A picture "
               "of %d x %d dots is not scaled.",
               arguments_.file.c_str(), picture.width, picture.height, printed.width,
               printed.height, page.width, page.height));
  }

  korvel::RasteriserJob rasteriserJob() {
    return {
        arguments_.file, type_, ppd_, options_, arguments_.copies, scratch_.file("rasteriser.log")};
  }

  korvel::PreviewJob previewJob(const std::string& options) const {
    korvel::PreviewJob preview;
    preview.job.filter = arguments_.filter;
    if (preview.job.filter.empty()) preview.job.filter = installedFilter();
    preview.job.ppd = ppd_;
    preview.job.title = std::filesystem::path(arguments_.file).filename();
    preview.job.copies = arguments_.copies;
    preview.job.options = options;
    preview.job.raster = raster_;
    preview.job.noFiles = true;
    preview.job.environment = {{"KORVEL_DUMPS", "off"}};
    preview.job.timeoutSeconds = kNoLimit;
    preview.body.dpi = dpi_;
    preview.body.media = description_.media();
    return preview;
  }

  // ---- One picture per sheet ----

  Result<void> showSheets() {
    korvel::PreviewJob preview = previewJob(options_);
    std::vector<std::string> paths;
    size_t dotsOutside = 0;
    Result<void> written = checkPlace(out(pictureName(1)));
    if (!written) return written;
    const auto write = [&](const auto& picture, unsigned number) {
      paths.push_back(out(pictureName(number)));
      if (written) written = checkPlace(paths.back());
      if (written) written = picture.writePng(paths.back(), dpi_);
    };
    if (arguments_.pages) {
      preview.page = [&](unsigned number, const korvel::PagePicture& page) { write(page, number); };
    } else {
      preview.sheet = [&](unsigned number, const korvel::SheetPicture& sheet) {
        const korvel::LabelPicture picture(sheet, paperOfPage(number));
        dotsOutside += picture.dotsOutside();
        write(picture, number);
      };
    }
    const Result<unsigned> pages = runJob(&preview);
    if (!pages) return pages.failure();
    if (!written) return written;
    removeOlder(pages.value());
    if (dotsOutside != 0) {
      warn(filled("Dots outside the label: %zu. Check the page size.", dotsOutside));
    }
    if (arguments_.stream) describeStream(pages.value());
    showNames(paths);
    return {};
  }

  // One line, however many pictures there are.
  static void showNames(const std::vector<std::string>& paths) {
    if (paths.empty()) return;
    const std::string first = korvel::shown(paths.front());
    const std::string last = korvel::shown(paths.back());
    std::puts(paths.size() == 1 ? first.c_str()
                                : filled("%s to %s", first.c_str(), last.c_str()).c_str());
  }

  std::string pictureName(unsigned number) const {
    return (arguments_.pages ? "page-" : "sheet-") + std::to_string(number) + ".png";
  }

  // Further pages of an earlier preview.
  void removeOlder(unsigned pages) const {
    std::error_code ignored;
    for (unsigned number = pages + 1;; ++number) {
      const std::string path = out(pictureName(number));
      if (!std::filesystem::exists(std::filesystem::symlink_status(path, ignored))) return;
      if (korvel::isOwnPicture(path)) std::filesystem::remove(path, ignored);
    }
  }

  // Whether a picture may be written to `path`: nothing is there, or the picture of a preview.
  Result<void> checkPlace(const std::string& path) const {
    const bool exists = std::filesystem::exists(std::filesystem::symlink_status(path));
    if (!exists || arguments_.force || korvel::isOwnPicture(path)) return {};
    return madeByOthers(path);
  }

  // The files of the stream have no mark: they are those of a preview when its pictures are there.
  Result<void> checkStreamPlace(const StreamFiles& files) const {
    const bool isOurs = arguments_.force || korvel::isOwnPicture(out("sheet-1.png")) ||
                        korvel::isOwnPicture(out("page-1.png"));
    if (isOurs || !files.exist()) return {};
    return madeByOthers(files.path("stream.bin"));
  }

  static Failure madeByOthers(const std::string& path) {
    return {
        filled("%s was not made by a preview; choose another folder, or replace it with "
               "--force.",
               path.c_str())};
  }

  Result<unsigned> runJob(korvel::PreviewJob* preview) {
    Progress progress(translated("page"));
    preview->progress = [&](unsigned pages) { progress.show(pages); };
    if (!arguments_.stream) return filterPages(preview);
    StreamFiles files(arguments_.folder);
    Result<void> opened = checkStreamPlace(files);
    if (opened) opened = files.open();
    if (!opened) return opened.failure();
    files.connect(&preview->job);
    const Result<unsigned> pages = filterPages(preview);
    if (!pages && noPages_) files.remove();
    const Result<void> finished = files.finish();
    if (pages && !finished) return finished.failure();
    return pages;
  }

  // When pages are missing, the reason is with the rasteriser, if there is one.
  Result<unsigned> filterPages(korvel::PreviewJob* preview) {
    korvel::Rasteriser rasteriser;
    Result<void> rasterised;
    if (!isRaster()) {
      const Result<void> started = rasteriser.start(rasteriserJob());
      if (!started) return started.failure();
      preview->job.rasterDescriptor = rasteriser.output()->get();
    }
    const Result<unsigned> pages = korvel::runPreviewJob(*preview);
    if (!isRaster()) rasterised = rasteriser.finish();
    if (rasterised && pages && pages.value() == 0) {
      rasterised = Failure{filled("%s has no pages to print.", arguments_.file.c_str())};
    }
    noPages_ = !rasterised;
    if (!rasterised) return rasterised.failure();
    return pages;
  }

  void describeStream(unsigned pages) {
    Result<std::string> chain = std::string(translated("none"));
    if (!isRaster()) chain = korvel::rasteriserChain(rasteriserJob());
    const std::string options = options_.empty() ? translated("none") : options_;
    const uintmax_t bytes = std::filesystem::file_size(out("stream.bin"));
    for (const std::string& line :
         {filled("%s (%s), printer %s", arguments_.file.c_str(), type_.c_str(),
                 description_.name().c_str()),
          filled("rasteriser: %s; options: %s; copies: %s",
                 (chain ? chain.value() : chain.sentence()).c_str(), options.c_str(),
                 arguments_.copies.c_str()),
          pages == 1 ? filled("filter: 1 page at %u dpi, %ju bytes for the printer", dpi_, bytes)
                     : filled("filter: %u pages at %u dpi, %ju bytes for the printer", pages, dpi_,
                              bytes)}) {
      std::puts(line.c_str());
    }
    const std::string folder = korvel::shown(arguments_.folder);
    std::printf("%s/stream.bin  %s/stream.txt  %s/messages.txt\n", folder.c_str(), folder.c_str(),
                folder.c_str());
  }

  // ---- One picture of all halftones ----

  Result<void> compareHalftones() {
    const Result<void> free = checkPlace(out("halftones.png"));
    if (!free) return free;
    const Result<void> kept = keepFirstPage();
    if (!kept) return kept;
    std::vector<korvel::ContactCell> cells;
    const bool drawable = canDrawNames();
    Progress progress(translated("halftone"));
    for (const korvel::HalftoneName& halftone : korvel::kHalftoneNames) {
      progress.show(static_cast<unsigned>(cells.size() + 1));
      const std::string choice = std::string("HalftoneType=") + halftone.setting;
      Result<korvel::PagePicture> page = onePage(options_ + (options_.empty() ? "" : " ") + choice);
      if (!page) return page.failure();
      cells.push_back({drawable ? translated(halftone.method) : halftone.method, choice,
                       std::move(page).value()});
    }
    return writeComparison(std::move(cells));
  }

  Result<void> writeComparison(std::vector<korvel::ContactCell> cells) const {
    std::string title =
        std::filesystem::path(arguments_.file).filename().string() + ", " + description_.name();
    if (!options_.empty()) title += ", " + options_;
    const std::string path = out("halftones.png");
    const korvel::ContactSheet sheet(title, std::move(cells));
    Result<void> written = sheet.writePng(path, dpi_);
    if (written) std::puts(korvel::shown(path).c_str());
    return written;
  }

  // The pictures' font has the letters of ASCII only. When a translated name needs others, all
  // names are in English, so that they are complete and in one language.
  static bool canDrawNames() {
    return std::all_of(korvel::kHalftoneNames.begin(), korvel::kHalftoneNames.end(),
                       [](const korvel::HalftoneName& halftone) {
                         return korvel::hasGlyphs(translated(halftone.method));
                       });
  }

  // The page is rasterised once for all halftones.
  Result<void> keepFirstPage() {
    korvel::Descriptor file;
    korvel::Rasteriser rasteriser;
    const std::string target = scratch_.file("first.ras");
    if (isRaster()) {
      file.reset(open(raster_.c_str(), O_RDONLY | O_CLOEXEC));
    } else {
      const Result<void> started = rasteriser.start(rasteriserJob());
      if (!started) return started;
    }
    const int from = isRaster() ? file.get() : rasteriser.output()->get();
    const Result<void> kept = korvel::keepFirstPage(from, target);
    if (!kept) {
      const Result<void> rasterised = isRaster() ? Result<void>() : rasteriser.finish();
      return rasterised ? cannotShow(arguments_.file, kept.sentence()) : rasterised;
    }
    raster_ = target;
    return {};
  }

  Result<korvel::PagePicture> onePage(const std::string& options) const {
    korvel::PagePicture picture;
    korvel::PreviewJob preview = previewJob(options);
    preview.page = [&](unsigned /*number*/, const korvel::PagePicture& page) { picture = page; };
    const Result<unsigned> pages = korvel::runPreviewJob(preview);
    if (!pages) return pages.failure();
    if (picture.empty() || picture.height() == 0) {
      return Failure{translated("The page contains no picture.")};
    }
    return picture;
  }

  const korvel::Arguments& commandLine_;  // borrowed
  PreviewArguments arguments_;
  korvel::ScratchFolder scratch_;
  korvel::PrinterDescription description_;
  std::string type_;
  std::string ppd_;
  std::string options_;
  std::string raster_;                   // of a raster file, and of the one page that is compared
  std::vector<korvel::DotSize> papers_;  // of the pages of a raster file
  unsigned dpi_ = 0;
  bool noPages_ = false;  // there was nothing to print
};

Result<void> run(korvel::Arguments* arguments) {
  Preview preview(*arguments, korvel::parsePreviewArguments(arguments));
  Result<void> shown = preview.run();
  if (shown && std::fflush(stdout) != 0) {
    return Failure{translated("Cannot write to standard output.")};
  }
  return shown;
}

}  // namespace

int main(int argc, char** argv) {
  korvel::startTranslation();
  korvel::Arguments arguments(argc, argv, kProgram, korvel::kPreviewHelp);
  const Result<void> shown = run(&arguments);
  return shown ? 0 : korvel::reportFailure(kProgram, shown.sentence());
}
