// The rules for scaling and turning differ between versions of the spooler's filters, and so does
// their support of options, so nothing here repeats them.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview/page_placement.h"

#include <fcntl.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tools/common/process.h"
#include "tools/common/translation.h"
#include "tools/description/option_check.h"

namespace korvel {
namespace {

constexpr int kStripes = 16;
constexpr size_t kLeastRun = 3;        // dots of a stripe; shorter ones are blurred edges
constexpr size_t kLeastEdges = 3;      // that make a measurement
constexpr double kTolerance = 1.5;     // dots that a measured length may be wrong
constexpr size_t kMeasuredLines = 64;  // in each direction

const char kOfOnePage[] = " page-ranges=1 page-set=all mirror=false page-border=none";

// "Page    1 MediaBox:     0.00     0.00   288.00   432.00"
bool parseBox(const std::string& line, const char* name, PageBox* box) {
  const size_t at = line.find(name);
  if (at == std::string::npos) return false;
  return std::sscanf(line.c_str() + at + std::char_traits<char>::length(name), "%lf %lf %lf %lf",
                     &(*box)[0], &(*box)[1], &(*box)[2], &(*box)[3]) == 4;
}

bool hasArea(const PageBox& box) { return box[2] > box[0] && box[3] > box[1]; }

// A number without the locale's decimal comma.
std::string number(double value) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.precision(3);
  text << std::fixed << value;
  return text.str();
}

std::string boxText(const PageBox& box) {
  return "[" + number(box[0]) + " " + number(box[1]) + " " + number(box[2]) + " " + number(box[3]) +
         "]";
}

// One filled rectangle per stripe. None is white, which is paper.
std::string stripes(const PdfBoxes& page) {
  const bool upright = page.rotation % 180 == 0;
  const bool fromTheEnd = page.rotation == 180 || page.rotation == 270;
  const PageBox& box = page.trim;
  const double step = (upright ? box[2] - box[0] : box[3] - box[1]) / kStripes;
  std::string text;
  for (int i = 0; i < kStripes; ++i) {
    const int place = fromTheEnd ? kStripes - 1 - i : i;
    const double left = upright ? box[0] + place * step : box[0];
    const double bottom = upright ? box[1] : box[1] + place * step;
    const double width = upright ? step : box[2] - box[0];
    const double height = upright ? box[3] - box[1] : step;
    text += number(1 - (i + 1.0) / (kStripes + 1)) + " g " + number(left) + " " + number(bottom) +
            " " + number(width) + " " + number(height) + " re f\n";
  }
  return text;
}

// The dots of one row or column.
using Line = std::vector<unsigned char>;

struct Edges {
  double first = 0, last = 0;  // dots
  size_t count = 0;
  bool falling = false;  // the stripes become lighter
};

// The edges between stripes, when all go the same way and are equally far from each other.
std::optional<Edges> edgesOf(const Line& line) {
  std::vector<double> places;
  size_t rising = 0;
  size_t runEnd = 0;
  int before = 0;  // the level of the last stripe, 0 for paper
  for (size_t from = 0; from < line.size();) {
    size_t to = from + 1;
    while (to < line.size() && line[to] == line[from]) ++to;
    if (to - from >= kLeastRun) {
      if (before != 0 && line[from] != 0) {
        places.push_back((static_cast<double>(runEnd) + static_cast<double>(from)) / 2);
        if (line[from] > before) ++rising;
      }
      before = line[from];
      runEnd = to;
    }
    from = to;
  }
  if (places.size() < kLeastEdges || (rising != 0 && rising != places.size())) return {};
  const double step = (places.back() - places.front()) / static_cast<double>(places.size() - 1);
  for (size_t i = 0; i < places.size(); ++i) {
    const double expected = places.front() + step * static_cast<double>(i);
    if (std::abs(places[i] - expected) > 2 * kTolerance) return {};
  }
  return Edges{places.front(), places.back(), places.size(), rising == 0};
}

Line rowOf(const RasterPage& page, size_t y) {
  const unsigned char* start = page.pixels.data() + y * page.header.cupsBytesPerLine;
  return {start, start + page.header.cupsWidth};
}

Line columnOf(const RasterPage& page, size_t x) {
  Line line;
  for (size_t y = 0; y < page.header.cupsHeight; ++y) {
    line.push_back(page.pixels[y * page.header.cupsBytesPerLine + x]);
  }
  return line;
}

// The line with the most edges.
template <typename LineOf>
Edges bestEdges(size_t lines, const LineOf& lineOf) {
  Edges best;
  for (size_t i = 0; i < kMeasuredLines; ++i) {
    const std::optional<Edges> edges = edgesOf(lineOf((2 * i + 1) * lines / (2 * kMeasuredLines)));
    if (edges && edges->count > best.count) best = *edges;
  }
  return best;
}

// The page that is printed first, according to the option page-ranges.
int firstPage(const std::string& options) {
  int first = 1;
  for (const auto& [name, value] : parseOptions(options)) {
    if (name == "page-ranges") first = std::max(1, std::atoi(value.c_str()));
  }
  return first;
}

std::optional<PdfBoxes> readPdfPage(const RasteriserJob& job) {
  const std::string page = std::to_string(firstPage(job.options));
  Program program;
  program.arguments = {"pdfinfo", "-box", "-f", page, "-l", page, asOperand(job.document)};
  program.environment = {{"LC_ALL", "C"}};
  const Result<ProgramOutput> output = runProgram(program, kNullDevice);
  if (!output || output.value().waitStatus != 0) return {};
  return parsePdfInfo(output.value().text);
}

}  // namespace

double PdfBoxes::shownWidth() const {
  return rotation % 180 == 0 ? trim[2] - trim[0] : trim[3] - trim[1];
}

std::optional<PdfBoxes> parsePdfInfo(const std::string& text) {
  PdfBoxes page;
  int found = 0;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("Page ")) continue;
    if (parseBox(line, " MediaBox:", &page.media)) ++found;
    if (parseBox(line, " CropBox:", &page.crop)) ++found;
    if (parseBox(line, " TrimBox:", &page.trim)) ++found;
    const size_t rotation = line.find(" rot:");
    if (rotation != std::string::npos) page.rotation = std::atoi(line.c_str() + rotation + 5);
  }
  if (found != 3 || !hasArea(page.media) || !hasArea(page.trim)) return {};
  return page;
}

std::string stripedPdf(const PdfBoxes& page) {
  const std::string content = stripes(page);
  const std::string objects[] = {
      "<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
      "<< /Type /Page /Parent 2 0 R /MediaBox " + boxText(page.media) + " /CropBox " +
          boxText(page.crop) + " /TrimBox " + boxText(page.trim) + " /Rotate " +
          std::to_string(page.rotation) + " /Resources << >> /Contents 4 0 R >>",
      "<< /Length " + std::to_string(content.size()) + " >>\nstream\n" + content + "endstream"};
  std::string file = "%PDF-1.4\n";
  std::string table = "0000000000 65535 f \n";
  int count = 1;
  for (const std::string& object : objects) {
    char entry[32];
    std::snprintf(entry, sizeof entry, "%010zu 00000 n \n", file.size());
    table += entry;
    file += std::to_string(count++) + " 0 obj\n" + object + "\nendobj\n";
  }
  const std::string start = std::to_string(file.size());
  return file + "xref\n0 " + std::to_string(count) + "\n" + table + "trailer\n<< /Size " +
         std::to_string(count) + " /Root 1 0 R >>\nstartxref\n" + start + "\n%%EOF\n";
}

std::optional<PagePlacement> measureStripes(const RasterPage& raster, double shownWidth) {
  const cups_page_header2_t& header = raster.header;
  if (header.cupsBitsPerPixel != 8 || header.cupsBytesPerLine < header.cupsWidth) return {};
  const Edges across =
      bestEdges(header.cupsHeight, [&raster](size_t y) { return rowOf(raster, y); });
  const Edges down =
      bestEdges(header.cupsWidth, [&raster](size_t x) { return columnOf(raster, x); });
  const Edges& best = across.count >= down.count ? across : down;
  if (best.count == 0) return {};
  const double unscaled =
      shownWidth / kStripes * static_cast<double>(best.count - 1) * header.HWResolution[0] / 72;
  const double measured = best.last - best.first;
  PagePlacement placement;
  placement.turned = &best == &down || best.falling;
  if (std::abs(measured - unscaled) > kTolerance) placement.scale = measured / unscaled;
  return placement;
}

std::optional<PagePlacement> findPlacement(const RasteriserJob& job, const std::string& scratch) {
  const std::optional<PdfBoxes> page = readPdfPage(job);
  if (!page) return {};
  std::ofstream file(scratch, std::ios::binary);
  file << stripedPdf(*page);
  file.close();
  if (!file) return {};
  RasteriserJob striped = job;
  striped.document = scratch;
  striped.copies = "1";
  striped.options += kOfOnePage;
  Rasteriser rasteriser;
  if (!rasteriser.start(striped)) return {};
  const Result<RasterPage> raster = readFirstPage(rasteriser.output()->get());
  if (!rasteriser.finish() || !raster) return {};
  return measureStripes(raster.value(), page->shownWidth());
}

std::string placementSentence(const std::string& file, const PagePlacement& placement) {
  const char* name = file.c_str();
  long percent = std::lround(placement.scale * 100);
  // A scaled page is never reported as 100 %.
  if (percent == 100 && placement.scale != 1) percent += placement.scale < 1 ? -1 : 1;
  if (placement.scale == 1) return placement.turned ? filled("%s: turned.", name) : std::string();
  return placement.turned ? filled("%s: scaled to %ld %%, turned.", name, percent)
                          : filled("%s: scaled to %ld %%.", name, percent);
}

}  // namespace korvel
