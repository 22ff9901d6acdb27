// Debug dumps: a page's buffer as a BMP file, named by the time and a running number.
// A dump that cannot or must not be written never stops a page; the log says so once for each
// reason.
// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "image/image_kernels.h"
#include "printer/log.h"
#include "printer/own_file.h"
#include "printer/pellam_printer.h"

uint64_t page_index = 0;

namespace {

constexpr uint32_t kHeaderBytes = 54;
constexpr uint32_t kGreyOffset = kHeaderBytes + 256 * 4;
constexpr uint32_t kMonoOffset = kHeaderBytes + 2 * 4;
constexpr uint64_t kMaxDumpedBytes = uint64_t{256} << 20;  // of one job

void putLittleEndian(unsigned char* at, uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) at[i] = static_cast<unsigned char>(value >> (8 * i));
}

// Bytes of a file row, padded to four.
int rowBytes(size_t width, bool grey) {
  const int bytes = grey ? static_cast<int>(width) : (static_cast<int>(width) + 7) / 8;
  return (bytes + 3) / 4 * 4;
}

void writeHeader(FILE* file, uint32_t width, uint32_t height, uint32_t rowSize, bool grey) {
  const uint32_t offset = grey ? kGreyOffset : kMonoOffset;
  const uint32_t imageSize = rowSize * height;
  const uint32_t colours = grey ? 256 : 0;
  unsigned char header[kHeaderBytes] = {};
  putLittleEndian(header + 0, 0x4D42, 2);
  putLittleEndian(header + 2, offset + imageSize, 4);
  putLittleEndian(header + 10, offset, 4);
  putLittleEndian(header + 14, 40, 4);  // size of the part from here on
  putLittleEndian(header + 18, width, 4);
  putLittleEndian(header + 22, height, 4);
  putLittleEndian(header + 26, 1, 2);             // planes
  putLittleEndian(header + 28, grey ? 8 : 1, 2);  // bits per pixel
  putLittleEndian(header + 34, imageSize, 4);
  putLittleEndian(header + 46, colours, 4);
  putLittleEndian(header + 50, colours, 4);
  std::fwrite(header, sizeof header, 1, file);
}

// A grey ramp, then the buffer as it lies in memory: no padding, no stride, first row first.
void writeGrey(FILE* file, const unsigned char* data, size_t pixels) {
  unsigned char palette[256 * 4];
  for (int i = 0; i < 256; ++i) {
    std::memset(palette + 4 * i, i, 3);
    palette[4 * i + 3] = 0;
  }
  std::fwrite(palette, sizeof palette, 1, file);
  std::fwrite(data, 1, pixels, file);
}

// Packs one row: a zero byte is white, index 1, and so are the unused bits of the last byte.
void packWhiteBits(const unsigned char* from, size_t pixels, unsigned char* to) {
  imageKernels().bitsOfInk(from, pixels, to);
  imageKernels().complement(to, (pixels + 7) / 8);
}

// Rows of the buffer, last one first, one bit a pixel; `pixels` is counted by the buffer's stride.
void writeMono(FILE* file, const unsigned char* data, size_t pixels, size_t height,
               size_t rowSize) {
  const size_t packed = (pixels + 7) / 8;
  auto* row = static_cast<unsigned char*>(std::malloc(packed > rowSize ? packed : rowSize));
  if (row == nullptr) return;
  for (size_t y = height; y-- > 0;) {
    std::memset(row, 0, rowSize);
    packWhiteBits(data + pixels * y, pixels, row);
    std::fwrite(row, rowSize, 1, file);
  }
  std::free(row);
}

// Pixels as saveImage receives them.
struct DumpedImage {
  const unsigned char* data;
  size_t bytesPerLine;
  size_t height;
  size_t width;
  unsigned short bitsPerPixel;
};

uint64_t fileBytes(const DumpedImage& image) {
  if (image.bitsPerPixel == 8) return kGreyOffset + uint64_t{image.width} * image.height;
  const auto rowSize = static_cast<uint64_t>(rowBytes(image.width, false));
  return kMonoOffset + rowSize * image.height;
}

void writeImage(FILE* file, const DumpedImage& image) {
  const bool grey = image.bitsPerPixel == 8;
  const int rowSize = rowBytes(image.width, grey);
  writeHeader(file, static_cast<uint32_t>(image.width), static_cast<uint32_t>(image.height),
              static_cast<uint32_t>(rowSize), grey);
  if (grey) {
    writeGrey(file, image.data, image.width * image.height);
    return;
  }
  constexpr unsigned char kBlackWhite[8] = {0, 0, 0, 0, 255, 255, 255, 0};
  if (image.bitsPerPixel == 1) std::fwrite(kBlackWhite, sizeof kBlackWhite, 1, file);
  writeMono(file, image.data, image.bytesPerLine, image.height, static_cast<size_t>(rowSize));
}

}  // namespace

void PellamPrinter::saveImage(const unsigned char* data, size_t bytesPerLine, size_t height,
                              size_t width, unsigned short bitsPerPixel) {
  const time_t now = std::time(nullptr);
  tm local{};
  localtime_r(&now, &local);
  const uint64_t number = page_index++;

  char path[sizeof bmpPathFormat_ + 128];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::snprintf(path, sizeof path, bmpPathFormat_, local.tm_year + 1900, local.tm_mon + 1,
                local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                static_cast<long>(number));
#pragma GCC diagnostic pop

  const DumpedImage image = {data, bytesPerLine, height, width, bitsPerPixel};
  const uint64_t bytes = fileBytes(image);
  if (!pellamDumpsAreOn()) return refuseDump(kDumpsOff, path);
  if (bytes > kMaxDumpedBytes - dumpedBytes_) return refuseDump(kDumpsTooLarge, path);
  OwnFile file = pellamOpenOwnFile(path, DiskReserve::kLarge);
  if (file.state == OwnFileState::kBusy) return refuseDump(kDumpBusy, path);
  if (file.state == OwnFileState::kDiskFull) return refuseDump(kDiskAlmostFull, path);
  if (file.state != OwnFileState::kOpen) {
    std::fprintf(stderr, "PellamPrinter::saveImage: unable to open the file %s\n", path);
    return;
  }
  writeImage(file.stream, image);
  if (!pellamCloseOwnFile(&file, path)) return refuseDump(kDumpIncomplete, path);
  dumpedBytes_ += bytes;
}

// One line for each reason and job: a job of many pages meets the same one on every page.
void PellamPrinter::refuseDump(DumpRefusal reason, const char* path) {
  const uint32_t bit = uint32_t{1} << reason;
  if ((loggedRefusals_ & bit) != 0) return;
  loggedRefusals_ |= bit;
  switch (reason) {
    case kDumpsOff:
      pellamLogCommon(0, "saveImage: Image dumps are turned off by KORVEL_DUMPS");
      break;
    case kDumpsTooLarge:
      pellamLogCommon(2, "saveImage: No image dumps beyond 256 MiB per job");
      break;
    case kDumpBusy:
      pellamLogCommon(2, "saveImage: Another job is writing the file %s", path);
      break;
    case kDiskAlmostFull:
      pellamLogCommon(2, "saveImage: No image dumps, less than 1 GiB or 5 %% of the disk is free");
      break;
    case kDumpIncomplete:
      pellamLogCommon(2, "saveImage: Unable to write the file %s", path);
      break;
  }
}
