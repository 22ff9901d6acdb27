// PNG by libpng, JPEG by libjpeg, TIFF and WebP by their libraries. All end as 8-bit grey.
// SPDX-License-Identifier: Apache-2.0
#include "studio/worker/picture_reader.h"

#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>
#include <unistd.h>
#include <webp/decode.h>

#include <jerror.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string_view>
#include <utility>

#include "studio/sentences.h"
#include "studio/worker/worker_answer.h"
#include "tools/common/file_content.h"
#include "tools/common/units.h"

namespace korvel {
namespace {

constexpr uint64_t kMostPixels = 64'000'000;
constexpr size_t kMostKeptPixels = 16'000'000;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// The weights of red, green and blue that the rasteriser uses too.
uint8_t greyOf(unsigned red, unsigned green, unsigned blue) {
  return static_cast<uint8_t>((red * 299 + green * 587 + blue * 114 + 500) / 1000);
}

uint8_t onWhite(unsigned value, unsigned alpha) {
  return static_cast<uint8_t>((value * alpha + 255 * (255 - alpha) + 127) / 255);
}

bool isPrintable(uint64_t width, uint64_t height) {
  return width > 0 && height > 0 && width * height <= kMostPixels;
}

void reserve(GreyPicture* picture, uint64_t width, uint64_t height) {
  if (!isPrintable(width, height)) endWorker(kTooManyPixels);
  picture->width = width;
  picture->height = height;
  picture->grey.resize(width * height);
}

// ---- PNG ----

[[noreturn]] void pngFails(png_structp, png_const_charp) { endWorker(kDamaged); }
void pngWarns(png_structp, png_const_charp) {}

// Makes libpng deliver one grey byte for each pixel, whatever the file holds.
void askForGrey(png_structp png, png_infop info) {
  png_set_expand(png);
  png_set_scale_16(png);
  png_color_16 white = {};
  white.red = white.green = white.blue = white.gray = 255;
  if ((png_get_color_type(png, info) & PNG_COLOR_MASK_ALPHA) != 0 ||
      png_get_valid(png, info, PNG_INFO_tRNS) != 0) {
    png_set_background(png, &white, PNG_BACKGROUND_GAMMA_SCREEN, 0, 1.0);
  }
  png_set_rgb_to_gray(png, PNG_ERROR_ACTION_NONE, 0.299, 0.587);
}

GreyPicture readPng(std::FILE* file) {
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, pngFails, pngWarns);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file);
  png_set_user_limits(png, 65535, 65535);
  png_read_info(png, info);
  GreyPicture picture;
  reserve(&picture, png_get_image_width(png, info), png_get_image_height(png, info));
  picture.dpi = png_get_pixels_per_meter(png, info) * kMmPerInch / 1000;
  if (png_get_color_type(png, info) == PNG_COLOR_TYPE_GRAY &&
      png_get_valid(png, info, PNG_INFO_tRNS) == 0) {
    png_set_expand(png);
    png_set_scale_16(png);
  } else {
    askForGrey(png, info);
  }
  png_set_interlace_handling(png);
  png_read_update_info(png, info);
  if (png_get_rowbytes(png, info) != picture.width) endWorker(kDamaged);
  std::vector<png_bytep> rows(picture.height);
  for (size_t y = 0; y < rows.size(); ++y) rows[y] = &picture.grey[y * picture.width];
  png_read_image(png, rows.data());
  png_destroy_read_struct(&png, &info, nullptr);
  return picture;
}

// ---- JPEG ----

[[noreturn]] void jpegFails(j_common_ptr) { endWorker(kDamaged); }

// A picture that breaks off would be filled up with grey.
void jpegWarns(j_common_ptr jpeg, int level) {
  if (level < 0 && jpeg->err->msg_code == JWRN_JPEG_EOF) endWorker(kDamaged);
}

unsigned number(const uint8_t* at, size_t bytes, bool littleEndian) {
  unsigned value = 0;
  for (size_t i = 0; i < bytes; ++i) {
    value = value << 8 | at[littleEndian ? bytes - 1 - i : i];
  }
  return value;
}

// The orientation tag of an Exif block, 1 to 8; 1 when there is none.
unsigned orientationOf(const uint8_t* exif, size_t length) {
  constexpr size_t kHead = 6;
  constexpr size_t kEntry = 12;
  const std::string_view head(reinterpret_cast<const char*>(exif), std::min(length, kHead));
  if (length < kHead + 8 || head != std::string_view("Exif\0\0", kHead)) return 1;
  const uint8_t* tiff = exif + kHead;
  const size_t size = length - kHead;
  const bool little = tiff[0] == 'I';
  const size_t at = number(tiff + 4, 4, little);
  if (at > size - 2) return 1;
  const size_t count = number(tiff + at, 2, little);
  for (size_t i = 0; i < count && at + 2 + (i + 1) * kEntry <= size; ++i) {
    const uint8_t* entry = tiff + at + 2 + i * kEntry;
    if (number(entry, 2, little) != 0x0112) continue;
    const unsigned value = number(entry + 8, 2, little);
    return value >= 1 && value <= 8 ? value : 1;
  }
  return 1;
}

// Some programs store inks inverted; those that do say so by an Adobe marker.
uint8_t greyOfInks(const uint8_t* inks, bool inverted) {
  std::array<unsigned, 4> light = {};
  for (size_t i = 0; i < light.size(); ++i) light[i] = inverted ? inks[i] : 255u - inks[i];
  return greyOf(light[0] * light[3] / 255, light[1] * light[3] / 255, light[2] * light[3] / 255);
}

void readJpegRows(jpeg_decompress_struct* jpeg, GreyPicture* picture) {
  std::vector<uint8_t> inks(picture->width * 4);
  const bool hasInks = jpeg->out_color_space == JCS_CMYK;
  while (jpeg->output_scanline < jpeg->output_height) {
    uint8_t* target = &picture->grey[jpeg->output_scanline * picture->width];
    uint8_t* row = hasInks ? inks.data() : target;
    jpeg_read_scanlines(jpeg, &row, 1);
    for (size_t x = 0; hasInks && x < picture->width; ++x) {
      target[x] = greyOfInks(&inks[x * 4], jpeg->saw_Adobe_marker != 0);
    }
  }
}

double densityOf(const jpeg_decompress_struct& jpeg) {
  if (jpeg.saw_JFIF_marker == 0 || jpeg.X_density < 10) return 0;
  if (jpeg.density_unit == 1) return jpeg.X_density;
  return jpeg.density_unit == 2 ? jpeg.X_density * kMmPerInch / 10 : 0;
}

GreyPicture readJpeg(std::FILE* file) {
  jpeg_decompress_struct jpeg = {};
  jpeg_error_mgr errors = {};
  jpeg.err = jpeg_std_error(&errors);
  errors.error_exit = jpegFails;
  errors.emit_message = jpegWarns;
  jpeg_create_decompress(&jpeg);
  jpeg_save_markers(&jpeg, JPEG_APP0 + 1, 65535);
  jpeg_stdio_src(&jpeg, file);
  jpeg_read_header(&jpeg, TRUE);
  unsigned orientation = 1;
  for (const jpeg_marker_struct* marker = jpeg.marker_list; marker != nullptr;
       marker = marker->next) {
    if (orientation == 1) orientation = orientationOf(marker->data, marker->data_length);
  }
  const bool hasInks = jpeg.jpeg_color_space == JCS_CMYK || jpeg.jpeg_color_space == JCS_YCCK;
  jpeg.out_color_space = hasInks ? JCS_CMYK : JCS_GRAYSCALE;
  GreyPicture picture;
  reserve(&picture, jpeg.image_width, jpeg.image_height);
  picture.dpi = densityOf(jpeg);
  jpeg_start_decompress(&jpeg);
  readJpegRows(&jpeg, &picture);
  jpeg_finish_decompress(&jpeg);
  jpeg_destroy_decompress(&jpeg);
  return upright(std::move(picture), orientation);
}

// ---- WebP and TIFF ----

GreyPicture readWebp(const std::string& path) {
  const std::string bytes = contentOf(path);
  const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
  int width = 0;
  int height = 0;
  if (WebPGetInfo(data, bytes.size(), &width, &height) == 0) endWorker(kDamaged);
  GreyPicture picture;
  reserve(&picture, static_cast<uint64_t>(width), static_cast<uint64_t>(height));
  const std::unique_ptr<uint8_t, decltype(&WebPFree)> pixels(
      WebPDecodeRGBA(data, bytes.size(), &width, &height), WebPFree);
  if (pixels == nullptr) endWorker(kDamaged);
  for (size_t i = 0; i < picture.grey.size(); ++i) {
    const uint8_t* rgba = pixels.get() + i * 4;
    picture.grey[i] = onWhite(greyOf(rgba[0], rgba[1], rgba[2]), rgba[3]);
  }
  return picture;
}

double tiffDpi(TIFF* tiff) {
  float density = 0;
  uint16_t unit = RESUNIT_INCH;
  if (TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &density) == 0) return 0;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
  const double dpi = static_cast<double>(density);
  return unit == RESUNIT_CENTIMETER ? dpi * kMmPerInch / 10 : dpi;
}

GreyPicture readTiff(const std::string& path) {
  TIFFSetErrorHandler(nullptr);
  TIFFSetWarningHandler(nullptr);
  TIFF* tiff = TIFFOpen(path.c_str(), "r");
  uint32_t width = 0;
  uint32_t height = 0;
  if (tiff == nullptr || TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width) == 0 ||
      TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height) == 0) {
    endWorker(kDamaged);
  }
  GreyPicture picture;
  reserve(&picture, width, height);
  picture.dpi = tiffDpi(tiff);
  std::vector<uint32_t> pixels(picture.grey.size());
  if (TIFFReadRGBAImageOriented(tiff, width, height, pixels.data(), ORIENTATION_TOPLEFT, 1) == 0) {
    endWorker(kDamaged);
  }
  for (size_t i = 0; i < pixels.size(); ++i) {
    const uint32_t p = pixels[i];  // colours are already multiplied by alpha
    const unsigned white = 255 - TIFFGetA(p);
    picture.grey[i] =
        static_cast<uint8_t>(std::min(255u, greyOf(TIFFGetR(p), TIFFGetG(p), TIFFGetB(p)) + white));
  }
  TIFFClose(tiff);
  return picture;
}

void halve(GreyPicture* picture) {
  const size_t width = picture->width / 2;
  const size_t height = picture->height / 2;
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      const uint8_t* upper = &picture->grey[2 * y * picture->width + 2 * x];
      const uint8_t* lower = upper + picture->width;
      picture->grey[y * width + x] =
          static_cast<uint8_t>((upper[0] + upper[1] + lower[0] + lower[1] + 2) / 4);
    }
  }
  picture->width = width;
  picture->height = height;
  picture->dpi /= 2;
  picture->grey.resize(width * height);
}

}  // namespace

bool GreyPicture::isTwoTone() const {
  return std::all_of(grey.begin(), grey.end(), [](uint8_t v) { return v == 0 || v == 255; });
}

std::string pictureType(const std::string& head) {
  const std::string_view text = head;
  if (text.starts_with("\x89PNG\r\n\x1a\n")) return "png";
  if (text.starts_with("\xff\xd8\xff")) return "jpeg";
  if (text.starts_with(std::string_view("II*\0", 4))) return "tiff";
  if (text.starts_with(std::string_view("MM\0*", 4))) return "tiff";
  if (text.starts_with("RIFF") && text.substr(std::min<size_t>(8, text.size()), 4) == "WEBP") {
    return "webp";
  }
  return "";
}

Result<GreyPicture> readPicture(const std::string& path, const std::string& type) {
  if (type == "webp") return readWebp(path);
  if (type == "tiff") return readTiff(path);
  const File file(std::fopen(path.c_str(), "rb"));
  if (!file) return Failure{kDamaged.english};
  return type == "png" ? readPng(file.get()) : readJpeg(file.get());
}

// Orientations 5 to 8 exchange rows and columns; each is then a mirror image or not.
GreyPicture upright(GreyPicture picture, unsigned orientation) {
  if (orientation <= 1) return picture;
  const bool exchanged = orientation >= 5;
  const bool flipX = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
  const bool flipY = orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
  GreyPicture turned = {exchanged ? picture.height : picture.width,
                        exchanged ? picture.width : picture.height,
                        picture.dpi,
                        {}};
  turned.grey.resize(picture.grey.size());
  for (size_t y = 0; y < turned.height; ++y) {
    for (size_t x = 0; x < turned.width; ++x) {
      const size_t column = exchanged ? y : x;
      const size_t row = exchanged ? x : y;
      const size_t fromX = flipX ? picture.width - 1 - column : column;
      const size_t fromY = flipY ? picture.height - 1 - row : row;
      turned.grey[y * turned.width + x] = picture.grey[fromY * picture.width + fromX];
    }
  }
  return turned;
}

void reduceToPrintable(GreyPicture* picture) {
  while (picture->grey.size() > kMostKeptPixels) {
    if (picture->width < 2 || picture->height < 2) endWorker(kTooManyPixels);
    halve(picture);
  }
}

Result<void> saveGrey(const GreyPicture& picture, const std::string& path) {
  std::ofstream out(path, std::ios::binary);
  out << "P5\n# " << picture.dpi << "\n" << picture.width << " " << picture.height << "\n255\n";
  out.write(reinterpret_cast<const char*>(picture.grey.data()),
            static_cast<std::streamsize>(picture.grey.size()));
  out.close();
  if (!out) return Failure{kDiskFull.english};
  return {};
}

Result<GreyPicture> loadGrey(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::string magic;
  std::string mark;
  unsigned most = 0;
  GreyPicture picture;
  in >> magic >> mark >> picture.dpi >> picture.width >> picture.height >> most;
  in.get();
  if (!in || !isPrintable(picture.width, picture.height)) return Failure{kNoDocument.english};
  picture.grey.resize(picture.width * picture.height);
  in.read(reinterpret_cast<char*>(picture.grey.data()),
          static_cast<std::streamsize>(picture.grey.size()));
  if (!in) return Failure{kNoDocument.english};
  return picture;
}

}  // namespace korvel
