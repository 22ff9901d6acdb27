// korvel-preview: what a document will look like in print, made by the filter itself, as pictures.
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
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
#include "tools/common/scratch_folder.h"
#include "tools/common/translation.h"
#include "tools/description/halftone_names.h"
#include "tools/description/printer_description.h"
#include "tools/preview/contact_sheet.h"
#include "tools/preview/document.h"
#include "tools/preview/preview_arguments.h"
#include "tools/preview/preview_job.h"
#include "tools/stream/stream_listing.h"

namespace {

using korvel::filled;
using korvel::PreviewArguments;
using korvel::translated;

constexpr double kNoLimit = 7 * 24 * 3600;  // seconds that the filter may run
constexpr unsigned kProgressStep = 10;      // pages between two lines of progress
constexpr char kPlainDescription[] = "korvel-label-203";

// Where something failed: one sentence for the user.
struct Failure {
  std::string sentence;
};

void must(const std::string& fault) {
  if (!fault.empty()) throw Failure{fault};
}

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

File openToWrite(const std::string& path) {
  File file(std::fopen(path.c_str(), "wb"));
  if (!file) throw Failure{filled("cannot write %s: %s", path.c_str(), std::strerror(errno))};
  return file;
}

std::string installedFilter() {
  const char* folder = std::getenv("CUPS_SERVERBIN");
  return (folder != nullptr ? folder : korvel::spoolerFolder(KORVEL_CUPS_SERVERBIN)) +
         "/filter/rastertokorvel";
}

// With a slash behind it.
std::string installedDescriptions() {
  const char* folder = std::getenv("CUPS_DATADIR");
  return folder != nullptr ? std::string(folder) + "/model/korvel/"
                           : korvel::spoolerFolder(KORVEL_PPD_DIR) + "/";
}

// The same line again on a terminal, else a line now and then.
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

class Preview {
 public:
  explicit Preview(korvel::Arguments* words)
      : words_(*words), arguments_(korvel::parsePreviewArguments(words)) {}

  void run() {
    must(korvel::identifyDocument(arguments_.file, &type_));
    if (isRaster() && arguments_.copies != "1") {
      words_.wrong(translated("a raster file prints as it is, once; -n is for documents"));
    }
    must(scratch_.open());
    findDescription();
    makeFolder();
    prepareRaster();
    if (arguments_.halftones) {
      compareHalftones();
    } else {
      showSheets();
    }
  }

 private:
  bool isRaster() const { return type_ == korvel::kRasterType; }
  std::string out(const std::string& name) const { return arguments_.folder + "/" + name; }

  void findDescription() {
    ppd_ = scratch_.file("printer.ppd");
    std::string shownAs = filled("the description of queue %s", arguments_.queue.c_str());
    options_ = arguments_.options;
    if (!arguments_.queue.empty()) {
      std::string defaults;
      must(korvel::fetchQueue(arguments_.queue, ppd_, &defaults));
      if (!defaults.empty()) options_ = defaults + (options_.empty() ? "" : " ") + options_;
    } else {
      shownAs = descriptionPath();
      // Whoever looks at the stream wants the printer's questions and answers in it.
      must(korvel::copyDescription(shownAs, ppd_, !arguments_.stream));
    }
    must(description_.open(ppd_, shownAs));
    const std::string fault = description_.mark(options_);
    if (!fault.empty()) words_.wrong(fault);
  }

  // A name without a slash that is no file here is that of an installed description.
  std::string descriptionPath() const {
    const std::string& named = arguments_.description;
    if (named.find('/') != std::string::npos || std::filesystem::exists(named)) return named;
    const std::string name = named.empty() ? kPlainDescription : named;
    const std::string models = installedDescriptions();
    std::string path = models + name + (name.ends_with(".ppd") ? "" : ".ppd");
    if (!std::filesystem::exists(path)) {
      throw Failure{
          filled("there is no printer description %s here or in %s", name.c_str(), models.c_str())};
    }
    return path;
  }

  void makeFolder() const {
    std::error_code reason;
    std::filesystem::create_directories(arguments_.folder, reason);
    if (reason && !std::filesystem::is_directory(arguments_.folder)) {
      throw Failure{filled("cannot make the folder %s: %s", arguments_.folder.c_str(),
                           reason.message().c_str())};
    }
  }

  // A raster file is unpacked; the pages of a document come from the rasteriser as they are made.
  void prepareRaster() {
    dpi_ = description_.dpi();
    if (isRaster()) {
      raster_ = scratch_.file("pages.ras");
      must(korvel::unpackRaster(arguments_.file, raster_));
      korvel::RasterPageInfo info;
      const std::string fault = korvel::readRasterPage(raster_, &info);
      if (!fault.empty())
        throw Failure{filled("%s cannot be shown: %s", arguments_.file.c_str(), fault.c_str())};
      if (info.dpi != 0) dpi_ = info.dpi;
    }
    if (dpi_ < 1 || dpi_ > 9999) throw Failure{translated("the pages' dots per inch are not told")};
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
    preview.job.timeoutSeconds = kNoLimit;
    preview.body.dpi = dpi_;
    preview.body.media = description_.media();
    return preview;
  }

  // ---- A picture a sheet ----

  void showSheets() {
    korvel::PreviewJob preview = previewJob(options_);
    std::vector<std::string> written;
    const auto note = [&](const std::string& path, const std::string& fault) {
      must(fault);
      written.push_back(path);
    };
    const std::string name = arguments_.pages ? "page-" : "sheet-";
    if (arguments_.pages) {
      preview.page = [&](unsigned number, const korvel::PagePicture& page) {
        const std::string path = out(name + std::to_string(number) + ".png");
        note(path, page.writePng(path, dpi_));
      };
    } else {
      preview.sheet = [&](unsigned number, const korvel::SheetPicture& sheet) {
        const std::string path = out(name + std::to_string(number) + ".png");
        note(path, sheet.writePng(path, dpi_));
      };
    }
    Progress progress(translated("page"));
    preview.progress = [&](unsigned pages) { progress.show(pages); };
    const unsigned pages = runJob(&preview);
    removeOlder(name, pages);
    if (arguments_.stream) tellStream(pages);
    for (const std::string& path : written) std::puts(path.c_str());
  }

  // Pages of an earlier preview behind ours.
  void removeOlder(const std::string& name, unsigned pages) const {
    std::error_code ignored;
    for (unsigned number = pages + 1;; ++number) {
      const std::string path = out(name + std::to_string(number) + ".png");
      if (!std::filesystem::remove(path, ignored)) return;
    }
  }

  unsigned runJob(korvel::PreviewJob* preview) {
    File bytes;
    File listing;
    File messages;
    const auto list = [&](const std::string& line) {
      std::fprintf(listing.get(), "%s\n", line.c_str());
    };
    korvel::StreamListing lines(list);
    korvel::StreamDecoder decoder([&](const korvel::StreamItem& item) { lines.add(item); });
    if (arguments_.stream) {
      bytes = openToWrite(out("stream.bin"));
      listing = openToWrite(out("stream.txt"));
      messages = openToWrite(out("messages.txt"));
      preview->job.output = [&](const char* part, size_t count) {
        std::fwrite(part, 1, count, bytes.get());
        decoder.push(reinterpret_cast<const uint8_t*>(part), count);
      };
      preview->job.messages = [&](const char* part, size_t count) {
        std::fwrite(part, 1, count, messages.get());
      };
    }
    const unsigned pages = filterPages(preview);
    if (!arguments_.stream) return pages;
    lines.finish();
    for (const File* file : {&bytes, &listing, &messages}) {
      if (std::fflush(file->get()) != 0 || std::ferror(file->get()) != 0) {
        throw Failure{
            filled("cannot write %s: %s", arguments_.folder.c_str(), std::strerror(errno))};
      }
    }
    return pages;
  }

  unsigned filterPages(korvel::PreviewJob* preview) {
    korvel::Rasteriser rasteriser;
    if (!isRaster()) {
      must(rasteriser.start(rasteriserJob()));
      preview->job.rasterDescriptor = rasteriser.output()->get();
    }
    const korvel::PreviewOutcome outcome = korvel::runPreviewJob(*preview);
    // When pages are lacking, it is the rasteriser who knows why.
    std::string fault = isRaster() ? std::string() : rasteriser.finish();
    if (fault.empty() && outcome.fault.empty() && outcome.pages == 0) {
      fault = filled("%s has no pages to print", arguments_.file.c_str());
    }
    if (!fault.empty() && arguments_.stream) removeStream();
    must(fault);
    must(outcome.fault);
    return outcome.pages;
  }

  // A job that printed nothing leaves nothing.
  void removeStream() const {
    std::error_code ignored;
    for (const char* name : {"stream.bin", "stream.txt", "messages.txt"}) {
      std::filesystem::remove(out(name), ignored);
    }
  }

  void tellStream(unsigned pages) {
    const std::string chain =
        isRaster() ? translated("none") : korvel::rasteriserChain(rasteriserJob());
    const std::string options = options_.empty() ? translated("none") : options_;
    const uintmax_t bytes = std::filesystem::file_size(out("stream.bin"));
    for (const std::string& line :
         {filled("%s (%s), printer %s", arguments_.file.c_str(), type_.c_str(),
                 description_.name().c_str()),
          filled("rasteriser: %s; options: %s; copies: %s", chain.c_str(), options.c_str(),
                 arguments_.copies.c_str()),
          pages == 1 ? filled("filter: 1 page at %u dpi, %ju bytes for the printer", dpi_, bytes)
                     : filled("filter: %u pages at %u dpi, %ju bytes for the printer", pages, dpi_,
                              bytes)}) {
      std::puts(line.c_str());
    }
    std::printf("%s  %s  %s\n", out("stream.bin").c_str(), out("stream.txt").c_str(),
                out("messages.txt").c_str());
  }

  // ---- One picture of all halftones ----

  void compareHalftones() {
    keepFirstPage();
    std::vector<korvel::ContactCell> cells;
    const bool drawable = canDrawNames();
    Progress progress(translated("halftone"));
    for (const korvel::HalftoneName& halftone : korvel::kHalftoneNames) {
      progress.show(static_cast<unsigned>(cells.size() + 1));
      const std::string choice = std::string("HalftoneType=") + halftone.setting;
      cells.push_back({drawable ? translated(halftone.method) : halftone.method, choice,
                       onePage(options_ + (options_.empty() ? "" : " ") + choice)});
    }
    std::string title =
        std::filesystem::path(arguments_.file).filename().string() + ", " + description_.name();
    if (!options_.empty()) title += ", " + options_;
    const std::string path = out("halftones.png");
    const korvel::ContactSheet sheet(title, std::move(cells));
    must(sheet.writePng(path, dpi_));
    std::puts(path.c_str());
  }

  // The pictures' letters are ASCII, without accents or other scripts: where a name wants more, all
  // stay English, rather than with holes or in two languages.
  static bool canDrawNames() {
    return std::all_of(korvel::kHalftoneNames.begin(), korvel::kHalftoneNames.end(),
                       [](const korvel::HalftoneName& halftone) {
                         return korvel::hasGlyphs(translated(halftone.method));
                       });
  }

  // The page is rasterised once for all of them.
  void keepFirstPage() {
    korvel::Descriptor file;
    korvel::Rasteriser rasteriser;
    const std::string target = scratch_.file("first.ras");
    if (isRaster()) {
      if (!file.adopt(open(raster_.c_str(), O_RDONLY))) {
        throw Failure{filled("cannot read %s: %s", raster_.c_str(), std::strerror(errno))};
      }
    } else {
      must(rasteriser.start(rasteriserJob()));
    }
    const int from = isRaster() ? file.get() : rasteriser.output()->get();
    const std::string fault = korvel::keepFirstPage(from, target);
    if (!fault.empty()) {
      if (!isRaster()) must(rasteriser.finish());
      throw Failure{filled("%s cannot be shown: %s", arguments_.file.c_str(), fault.c_str())};
    }
    raster_ = target;
  }

  korvel::PagePicture onePage(const std::string& options) const {
    korvel::PagePicture picture;
    korvel::PreviewJob preview = previewJob(options);
    preview.page = [&](unsigned /*number*/, const korvel::PagePicture& page) { picture = page; };
    must(korvel::runPreviewJob(preview).fault);
    if (picture.empty() || picture.height() == 0)
      throw Failure{translated("the page has no picture")};
    return picture;
  }

  const korvel::Arguments& words_;  // borrowed
  PreviewArguments arguments_;
  korvel::ScratchFolder scratch_;
  korvel::PrinterDescription description_;
  std::string type_;
  std::string ppd_;
  std::string options_;
  std::string raster_;  // of a raster file, and of the one page that is compared
  unsigned dpi_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  korvel::startTranslation();
  try {
    korvel::Arguments words(argc, argv, "korvel-preview", korvel::previewUsage());
    Preview(&words).run();
    if (std::fflush(stdout) != 0) throw Failure{translated("cannot write to standard output")};
    return 0;
  } catch (const Failure& failure) {
    std::fprintf(stderr, "korvel-preview: %s\n", failure.sentence.c_str());
    return 1;
  }
}
