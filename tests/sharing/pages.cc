// SPDX-License-Identifier: Apache-2.0
#include "tests/sharing/pages.h"

#include <cups/ppd.h>
#include <cups/raster.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <jpeglib.h>
#include <png.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <vector>

#include "tools/description/description_text.h"
#include "tools/setup/apple_raster.h"

namespace {

constexpr int kBits = 12;

int dots(double points, int dpi) { return static_cast<int>(std::lround(points * dpi / 72)); }

// 0 is black in every format.
std::vector<uint8_t> levels(const korvel::DotCanvas& page) {
  std::vector<uint8_t> all(page.dots().size());
  for (size_t i = 0; i < all.size(); ++i) all[i] = static_cast<uint8_t>(255 - page.dots()[i]);
  return all;
}

void writeText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

void writePwg(const korvel::DotCanvas& page, const PageSize& size, const std::string& path) {
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  cups_raster_t* raster = cupsRasterOpen(fd, CUPS_RASTER_WRITE_PWG);
  cups_page_header2_t header = {};
  std::strcpy(header.MediaClass, "PwgRaster");
  header.HWResolution[0] = header.HWResolution[1] = static_cast<unsigned>(size.dpi);
  header.NumCopies = 1;
  header.PageSize[0] = static_cast<unsigned>(std::lround(size.points[0]));
  header.PageSize[1] = static_cast<unsigned>(std::lround(size.points[1]));
  header.cupsWidth = header.cupsBytesPerLine = static_cast<unsigned>(page.width());
  header.cupsHeight = static_cast<unsigned>(page.height());
  header.cupsBitsPerColor = header.cupsBitsPerPixel = 8;
  header.cupsColorSpace = CUPS_CSPACE_SW;
  header.cupsNumColors = 1;
  header.cupsInteger[0] = 1;  // pages
  header.cupsInteger[1] = header.cupsInteger[2] = 1;
  EXPECT_NE(cupsRasterWriteHeader2(raster, &header), 0u);
  std::vector<uint8_t> rows = levels(page);
  EXPECT_EQ(cupsRasterWritePixels(raster, rows.data(), static_cast<unsigned>(rows.size())),
            rows.size());
  cupsRasterClose(raster);
  close(fd);
}

void writePng(const korvel::DotCanvas& page, const PageSize& size, const std::string& path) {
  FILE* file = std::fopen(path.c_str(), "wb");
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file);
  png_set_IHDR(png, info, static_cast<png_uint_32>(page.width()),
               static_cast<png_uint_32>(page.height()), 8, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  const auto perMetre = static_cast<png_uint_32>(std::lround(size.dpi / 0.0254));
  png_set_pHYs(png, info, perMetre, perMetre, PNG_RESOLUTION_METER);
  png_write_info(png, info);
  std::vector<uint8_t> rows = levels(page);
  for (int y = 0; y < page.height(); ++y) png_write_row(png, rows.data() + y * page.width());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  std::fclose(file);
}

void writeJpeg(const korvel::DotCanvas& page, const PageSize& size, const std::string& path) {
  FILE* file = std::fopen(path.c_str(), "wb");
  jpeg_compress_struct jpeg;
  jpeg_error_mgr errors;
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  jpeg_stdio_dest(&jpeg, file);
  jpeg.image_width = static_cast<JDIMENSION>(page.width());
  jpeg.image_height = static_cast<JDIMENSION>(page.height());
  jpeg.input_components = 1;
  jpeg.in_color_space = JCS_GRAYSCALE;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, 100, TRUE);
  jpeg.density_unit = 1;
  jpeg.X_density = jpeg.Y_density = static_cast<UINT16>(size.dpi);
  jpeg_start_compress(&jpeg, TRUE);
  std::vector<uint8_t> rows = levels(page);
  for (int y = 0; y < page.height(); ++y) {
    JSAMPROW row = rows.data() + y * page.width();
    jpeg_write_scanlines(&jpeg, &row, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  std::fclose(file);
}

std::string pdfOf(const korvel::DotCanvas& page, const PageSize& size) {
  char box[64], matrix[64];
  std::snprintf(box, sizeof box, "[0 0 %g %g]", size.points[0], size.points[1]);
  std::snprintf(matrix, sizeof matrix, "%g 0 0 %g 0 0 cm", size.points[0], size.points[1]);
  const std::vector<uint8_t> rows = levels(page);
  const std::string drawing = std::string("q ") + matrix + " /P Do Q";
  const std::string bodies[] = {
      "<< /Type /Catalog /Pages 2 0 R >>",
      "<< /Type /Pages /Count 1 /Kids [3 0 R] >>",
      std::string("<< /Type /Page /Parent 2 0 R /MediaBox ") + box +
          " /Resources << /XObject << /P 5 0 R >> >> /Contents 4 0 R >>",
      "<< /Length " + std::to_string(drawing.size()) + " >>\nstream\n" + drawing + "\nendstream",
      "<< /Type /XObject /Subtype /Image /ColorSpace /DeviceGray /BitsPerComponent 8 /Width " +
          std::to_string(page.width()) + " /Height " + std::to_string(page.height()) + " /Length " +
          std::to_string(rows.size()) + " >>\nstream\n" + std::string(rows.begin(), rows.end()) +
          "\nendstream",
  };
  std::string text = "%PDF-1.4\n", places = "0000000000 65535 f \n";
  int number = 0;
  for (const std::string& body : bodies) {
    char place[32];
    std::snprintf(place, sizeof place, "%010zu 00000 n \n", text.size());
    places += place;
    text += std::to_string(++number) + " 0 obj\n" + body + "\nendobj\n";
  }
  const std::string table = std::to_string(text.size());
  return text + "xref\n0 6\n" + places + "trailer\n<< /Root 1 0 R /Size 6 >>\nstartxref\n" + table +
         "\n%%EOF\n";
}

}  // namespace

PageSize pageSize(const std::string& description, const std::string& name) {
  PageSize size;
  const korvel::Ppd owner = korvel::openDescription(description);
  ppd_file_t* ppd = owner.get();
  ppdMarkDefaults(ppd);
  if (!name.empty()) ppdMarkOption(ppd, "PageSize", name.c_str());
  const ppd_size_t* found = ppdPageSize(ppd, nullptr);
  EXPECT_NE(found, nullptr) << name;
  size.name = found->name;
  size.dpi = std::atoi(korvel::keyword(description, "DefaultResolution").c_str());
  size.points[0] = std::round(double{found->width} * 100) / 100;
  size.points[1] = std::round(double{found->length} * 100) / 100;
  size.width = dots(size.points[0], size.dpi);
  size.height = dots(size.points[1], size.dpi);
  size.left = dots(double{found->left}, size.dpi);
  size.top = dots(double{found->length - found->top}, size.dpi);
  size.printWidth = dots(double{found->right - found->left}, size.dpi);
  size.printHeight = dots(double{found->top - found->bottom}, size.dpi);
  return size;
}

PageSize printablePart(const PageSize& size) {
  PageSize part = size;
  part.left = part.top = 0;
  part.width = size.printWidth;
  part.height = size.printHeight;
  part.points[0] = part.width * 72.0 / size.dpi;
  part.points[1] = part.height * 72.0 / size.dpi;
  return part;
}

korvel::DotCanvas noisePage(const PageSize& size, unsigned seed) {
  korvel::DotCanvas page(size.width, size.height);
  uint32_t state = seed;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      state = state * 1664525 + 1013904223;
      const bool edge = x == 0 || y == 0 || x == size.width - 1 || y == size.height - 1;
      if (edge ? (x + y) % 3 != 0 : state >> 30 == 0) page.set(x, y);
    }
  }
  return page;
}

korvel::DotCanvas framedPage(const PageSize& size) {
  korvel::DotCanvas page(size.width, size.height);
  page.frame(0, 0, size.width, size.height, 10);
  page.fill(0, 0, size.width / 3, size.height / 4);
  return page;
}

korvel::DotCanvas numberedPage(const PageSize& size, int number) {
  korvel::DotCanvas page(size.width, size.height);
  const int cell = size.printWidth / (kBits + 2);
  for (int bit = -1; bit < kBits; ++bit) {  // the first is always there
    if (bit == -1 || (number >> bit & 1) != 0) {
      page.fill(size.left + cell * (bit + 1), size.top, cell, cell);
    }
  }
  return page;
}

int numberOn(const Picture& print) {
  const size_t cell = print.width / (kBits + 2);
  int number = 0;
  const auto isBlack = [&](size_t place) {
    return print.part(cell * place + cell / 4, cell / 4, cell / 2, cell / 2).printed() >
           cell * cell / 8;
  };
  if (print.width == 0 || !isBlack(0)) return -1;
  for (size_t bit = 0; bit < kBits; ++bit) {
    if (isBlack(bit + 1)) number |= 1 << bit;
  }
  return number;
}

korvel::DotCanvas greyPage(const PageSize& size, int ink) {
  korvel::DotCanvas page(size.width, size.height);
  page.fill(0, 0, size.width, size.height, static_cast<uint8_t>(ink));
  return page;
}

Picture printOf(const korvel::DotCanvas& page, const PageSize& size) {
  Picture print;
  print.width = static_cast<size_t>(size.printWidth);
  print.height = static_cast<size_t>(size.printHeight);
  for (int y = 0; y < size.printHeight; ++y) {
    for (int x = 0; x < size.printWidth; ++x) {
      print.dots.push_back(page.at(x + size.left, y + size.top) >= 128 ? 1 : 0);
    }
  }
  return print;
}

std::string writePage(const korvel::DotCanvas& page, const PageSize& size,
                      const std::string& format, const std::string& path) {
  if (format == "image/urf") {
    writeText(path, korvel::appleRaster(page, size.dpi));
  } else if (format == "image/pwg-raster") {
    writePwg(page, size, path);
  } else if (format == "image/png") {
    writePng(page, size, path);
  } else if (format == "image/jpeg") {
    writeJpeg(page, size, path);
  } else {
    writeText(path, pdfOf(page, size));
  }
  return path;
}
