// Made with the libraries that the worker reads with; the tests compare with figures of their own.
// SPDX-License-Identifier: Apache-2.0
#include "tests/studio/uploads.h"

#include <jpeglib.h>
#include <png.h>
#include <zlib.h>
#include <cstdio>

#include <cstdlib>
#include <vector>

namespace {

void append(png_structp png, png_bytep bytes, png_size_t count) {
  static_cast<std::string*>(png_get_io_ptr(png))->append(reinterpret_cast<char*>(bytes), count);
}

std::string bigEndian(uint32_t value) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(value >> shift & 255);
  return text;
}

}  // namespace

std::string noisyPng(unsigned width, unsigned height, unsigned seed, unsigned dpi) {
  std::string bytes;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(png, &bytes, append, nullptr);
  png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (dpi != 0) png_set_pHYs(png, info, dpi * 10000 / 254, dpi * 10000 / 254, PNG_RESOLUTION_METER);
  png_write_info(png, info);
  std::vector<png_byte> row(width);
  uint32_t noise = seed * 2654435761u + 1;
  for (unsigned y = 0; y < height; ++y) {
    for (unsigned x = 0; x < width; ++x) {
      noise = noise * 1664525u + 1013904223u;
      row[x] = static_cast<png_byte>((x * 200 / width + (noise >> 26)) & 255);
    }
    png_write_row(png, row.data());
  }
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return bytes;
}

std::string pngHeader(uint32_t width, uint32_t height) {
  std::string header =
      "IHDR" + bigEndian(width) + bigEndian(height) + std::string("\x08\0\0\0\0", 5);
  const auto crc = static_cast<uint32_t>(
      crc32(0, reinterpret_cast<const Bytef*>(header.data()), static_cast<uInt>(header.size())));
  return "\x89PNG\r\n\x1a\n" + bigEndian(13) + header + bigEndian(crc) + bigEndian(100) + "IDAT";
}

std::string orientedJpeg(unsigned orientation) {
  jpeg_compress_struct jpeg = {};
  jpeg_error_mgr errors = {};
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* memory = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&jpeg, &memory, &size);
  jpeg.image_width = 32;
  jpeg.image_height = 16;
  jpeg.input_components = 1;
  jpeg.in_color_space = JCS_GRAYSCALE;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, 100, TRUE);
  jpeg_start_compress(&jpeg, TRUE);
  // "Exif", big-endian TIFF, one entry: orientation, a short.
  const std::string exif =
      std::string("Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0", 25) +
      static_cast<char>(orientation) + std::string(6, '\0');
  jpeg_write_marker(&jpeg, JPEG_APP0 + 1, reinterpret_cast<const JOCTET*>(exif.data()),
                    static_cast<unsigned>(exif.size()));
  for (int y = 0; y < 16; ++y) {
    std::vector<unsigned char> row(32, 255);
    for (size_t x = 0; y < 8 && x < 16; ++x) row[x] = 0;
    unsigned char* start = row.data();
    jpeg_write_scanlines(&jpeg, &start, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  std::string bytes(reinterpret_cast<char*>(memory), size);
  std::free(memory);
  return bytes;
}
