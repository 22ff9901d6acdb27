// Whole pages with both dumps, from raster pixels to the printer's bytes, and their packing alone.
// Dumps go to a memory file system, messages to /dev/null.
// SPDX-License-Identifier: Apache-2.0
#include <cups/raster.h>
#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "bench/forms.h"
#include "bench/pages.h"
#include "bench/reference_printer.h"
#include "printer/page_reference.h"
#include "printer/settings.h"

namespace {

// Removes the last page's dumps.
void clearDumps() {
  const std::string folder = std::string(getenv("KORVEL_SANDBOX")) + "/dumps";
  DIR* open = opendir(folder.c_str());
  if (open == nullptr) return;
  while (const dirent* entry = readdir(open)) {
    if (entry->d_name[0] != '.') unlink((folder + "/" + entry->d_name).c_str());
  }
  closedir(open);
}

struct PageJob {
  PageJob() {
    header.HWResolution[0] = header.HWResolution[1] = 300;
    printer.getOutputStreams().assign(1, output.get());
    printer.setPageHeader(&header);
    printer.settings_ = &settings;
  }
  void print(DitherType halftone, bool byReference) {
    printer.setHalftoneType(halftone);
    const auto width = static_cast<size_t>(a4Page().width);
    const auto height = static_cast<size_t>(a4Page().height);
    if (byReference) {
      printer.printPage(a4Page().pixels.data(), width, height, width);
    } else {
      printer.printImage(a4Page().pixels.data(), width, height, width);
    }
  }

  struct Close {
    void operator()(FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<FILE, Close> output{std::fopen("/dev/null", "w")};
  Settings settings{};
  cups_page_header2_t header{};
  ReferencePrinter printer;
};

PageJob& pageJob() {
  static PageJob job;
  return job;
}

// A halftoned page as bytes of 0 and 1, which packing overwrites.
std::vector<uint8_t>& halftonedPage() {
  static std::vector<uint8_t> page;
  return page;
}

void takeHalftonedPage() {
  halftonedPage() = a4Page().pixels;
  for (uint8_t& pixel : halftonedPage()) pixel = pixel >> 7;
}

bool packPage(bool byReference) {
  const GreyPage& page = a4Page();
  uint8_t* rows = halftonedPage().data();
  const int packed = byReference ? reference::GrayToMono(page.width, page.height, 0, rows)
                                 : pageJob().printer.GrayToMono(page.width, page.height, rows);
  return packed == (page.width + 7) / 8 * page.height;
}

}  // namespace

void registerPages() {
  registerForms("pack", {takeHalftonedPage, [] { return packPage(true); }},
                {takeHalftonedPage, [] { return packPage(false); }});

  struct Halftone {
    const char* what;
    DitherType type;
  };
  constexpr Halftone kHalftones[] = {
      {"page, Jarvis-Judice-Ninke", kHalftoneStucki},
      {"page, ordered 4x4", kHalftoneFloydSteinberg},
      {"page, stencil", kHalftoneTattoo},
  };
  for (const Halftone& halftone : kHalftones) {
    const auto print = [type = halftone.type](bool byReference) {
      return [type, byReference] {
        pageJob().print(type, byReference);
        return true;
      };
    };
    registerForms(halftone.what, {clearDumps, print(true)}, {clearDumps, print(false)});
  }
}
