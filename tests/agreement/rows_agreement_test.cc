// Every point kernel on every target against one byte at a time: all widths up to four vectors and
// the pages' own, misaligned starts, and not a byte written beside the result.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <vector>

#include "image/image_kernels.h"

namespace {

using Bytes = std::vector<uint8_t>;

constexpr size_t kFence = 40;  // bytes on either side of a row that nobody may touch
constexpr size_t kStarts[] = {0, 1, 3, 15, 31};
constexpr size_t kPageWidths[] = {255, 256, 257, 608, 812, 1181, 1728, 2361, 2480, 2592};

std::vector<size_t> widths() {
  std::vector<size_t> all;
  for (size_t width = 0; width <= 140; ++width) all.push_back(width);
  all.insert(all.end(), std::begin(kPageWidths), std::end(kPageWidths));
  return all;
}

// Rows that differ in what a kernel may get wrong: any value, few values, a value a column.
Bytes noise(size_t count, std::mt19937& random) {
  Bytes row(count);
  for (uint8_t& byte : row) byte = static_cast<uint8_t>(random());
  return row;
}

Bytes sparse(size_t count, std::mt19937& random) {
  constexpr uint8_t kFew[] = {0, 0, 0, 1, 255, 128, 2, 254};
  Bytes row(count);
  for (uint8_t& byte : row) byte = kFew[random() % 8];
  return row;
}

Bytes ramp(size_t count, std::mt19937& random) {
  const size_t first = random();
  Bytes row(count);
  for (size_t x = 0; x < count; ++x) row[x] = static_cast<uint8_t>(first + x);
  return row;
}

Bytes packed(size_t count, const std::function<bool(size_t)>& isSet) {
  Bytes bits((count + 7) / 8, 0);
  for (size_t x = 0; x < count; ++x) {
    if (isSet(x)) bits[x / 8] |= static_cast<uint8_t>(128 >> x % 8);
  }
  return bits;
}

// One kernel: how it is called and what it has to give for a row of `count` pixels.
struct Kernel {
  const char* name;
  bool readsBits;
  bool inPlace;
  std::function<void(const ImageKernels&, const uint8_t* from, size_t count, uint8_t* to)> run;
  std::function<Bytes(const Bytes& from, size_t count)> want;
};

constexpr uint8_t kLimits[][4] = {
    {128, 128, 128, 128}, {0, 192, 48, 240}, {254, 127, 255, 0}, {1, 129, 126, 15}};

uint8_t scattered(size_t value) { return static_cast<uint8_t>(value * 167 + 13); }

std::vector<Kernel> kernels() {
  std::vector<Kernel> all;
  for (const auto& limits : kLimits) {
    all.push_back({"bitsAbove", false, false,
                   [&limits](const ImageKernels& rows, const uint8_t* from, size_t count,
                             uint8_t* to) { rows.bitsAbove(from, count, limits, to); },
                   [&limits](const Bytes& from, size_t count) {
                     return packed(count, [&](size_t x) { return from[x] > limits[x % 4]; });
                   }});
  }
  for (const auto& limits : kLimits) {
    all.push_back({"bytesAbove", false, false,
                   [&limits](const ImageKernels& rows, const uint8_t* from, size_t count,
                             uint8_t* to) { rows.bytesAbove(from, count, limits, to); },
                   [&limits](const Bytes& from, size_t count) {
                     Bytes bytes(count);
                     for (size_t x = 0; x < count; ++x) bytes[x] = from[x] > limits[x % 4] ? 1 : 0;
                     return bytes;
                   }});
  }
  const auto ink = [](const Bytes& from, size_t count) {
    return packed(count, [&](size_t x) { return from[x] != 0; });
  };
  for (const bool inPlace : {false, true}) {
    all.push_back({"bitsOfInk", false, inPlace,
                   [](const ImageKernels& rows, const uint8_t* from, size_t count, uint8_t* to) {
                     rows.bitsOfInk(from, count, to);
                   },
                   ink});
  }
  all.push_back({"bytesOfBits", true, false,
                 [](const ImageKernels& rows, const uint8_t* from, size_t count, uint8_t* to) {
                   rows.bytesOfBits(from, count, to);
                 },
                 [](const Bytes& from, size_t count) {
                   Bytes bytes(count);
                   for (size_t x = 0; x < count; ++x) bytes[x] = from[x / 8] >> (7 - x % 8) & 1;
                   return bytes;
                 }});
  for (const bool complemented : {false, true}) {
    all.push_back({"raiseOnes", false, true,
                   [complemented](const ImageKernels& rows, const uint8_t*, size_t count,
                                  uint8_t* to) { rows.raiseOnes(to, count, complemented); },
                   [complemented](const Bytes& from, size_t count) {
                     Bytes bytes(from.begin(), from.begin() + static_cast<ptrdiff_t>(count));
                     for (uint8_t& byte : bytes) {
                       if (byte == 1) byte = 255;
                       if (complemented) byte = static_cast<uint8_t>(255 - byte);
                     }
                     return bytes;
                   }});
  }
  all.push_back({"complement", false, true,
                 [](const ImageKernels& rows, const uint8_t*, size_t count, uint8_t* to) {
                   rows.complement(to, count);
                 },
                 [](const Bytes& from, size_t count) {
                   Bytes bytes(count);
                   for (size_t x = 0; x < count; ++x)
                     bytes[x] = static_cast<uint8_t>(255 - from[x]);
                   return bytes;
                 }});
  all.push_back({"lookUp", false, true,
                 [](const ImageKernels& rows, const uint8_t*, size_t count, uint8_t* to) {
                   uint8_t table[256];
                   for (size_t v = 0; v < 256; ++v) table[v] = scattered(v);
                   rows.lookUp(to, count, table);
                 },
                 [](const Bytes& from, size_t count) {
                   Bytes bytes(count);
                   for (size_t x = 0; x < count; ++x) bytes[x] = scattered(from[x]);
                   return bytes;
                 }});
  all.push_back({"reverse", false, false,
                 [](const ImageKernels& rows, const uint8_t* from, size_t count, uint8_t* to) {
                   rows.reverse(from, count, to);
                 },
                 [](const Bytes& from, size_t count) {
                   return Bytes(from.rend() - static_cast<ptrdiff_t>(count), from.rend());
                 }});
  return all;
}

// Runs the kernel `start` bytes into a buffer and compares all of the buffer.
bool agrees(const Kernel& kernel, const ImageKernels& rows, const Bytes& row, size_t count,
            size_t start) {
  Bytes want(kFence + start + count + kFence, 0xA5);
  Bytes have = want;
  const auto at = static_cast<ptrdiff_t>(kFence + start);
  if (kernel.inPlace) {
    std::copy(row.begin(), row.end(), want.begin() + at);
    std::copy(row.begin(), row.end(), have.begin() + at);
  }
  const Bytes result = kernel.want(row, count);
  std::copy(result.begin(), result.end(), want.begin() + at);

  Bytes source(start);
  source.insert(source.end(), row.begin(), row.end());
  uint8_t* to = have.data() + at;
  kernel.run(rows, kernel.inPlace ? to : source.data() + start, count, to);
  return have == want;
}

TEST(PointRows, AgreeWithOneByteAtATime) {
  const unsigned int seed = std::random_device{}();
  std::mt19937 random(seed);
  const std::vector<Kernel> all = kernels();
  for (const size_t width : widths()) {
    for (Bytes (*paint)(size_t, std::mt19937&) : {noise, sparse, ramp}) {
      const Bytes row = paint(width, random);
      for (const Kernel& kernel : all) {
        // Bits of the last byte behind the row are noise, and must not matter.
        const size_t bytes = kernel.readsBits ? (width + 7) / 8 : width;
        const Bytes source(row.begin(), row.begin() + static_cast<ptrdiff_t>(bytes));
        for (const Target target : availableTargets()) {
          for (const size_t start : kStarts) {
            ASSERT_TRUE(agrees(kernel, imageKernels(target), source, width, start))
                << kernel.name << " on " << nameOf(target) << ", width " << width << ", start "
                << start << ", seed " << seed;
          }
        }
      }
    }
  }
}

// A page is packed where it lies: rows of bits move up behind each other over rows not yet read.
TEST(PointRows, PackAPageOntoItself) {
  const unsigned int seed = std::random_device{}();
  std::mt19937 random(seed);
  for (const size_t stride : {1u, 4u, 8u, 28u, 36u, 64u, 132u, 140u, 516u, 2364u}) {
    const size_t height = 40;
    const Bytes page = sparse(stride * height, random);
    Bytes want;
    for (size_t y = 0; y < height; ++y) {
      const Bytes bits = packed(stride, [&](size_t x) { return page[y * stride + x] != 0; });
      want.insert(want.end(), bits.begin(), bits.end());
    }
    for (const Target target : availableTargets()) {
      Bytes have = page;
      const size_t packedStride = (stride + 7) / 8;
      for (size_t y = 0; y < height; ++y) {
        imageKernels(target).bitsOfInk(&have[y * stride], stride, &have[y * packedStride]);
      }
      have.resize(want.size());
      ASSERT_EQ(have, want) << nameOf(target) << ", stride " << stride << ", seed " << seed;
    }
  }
}

// The bits may be the last bytes of the row that the bytes fill.
TEST(PointRows, SpreadTheBitsAtTheEndOfARow) {
  const unsigned int seed = std::random_device{}();
  std::mt19937 random(seed);
  for (const size_t width : widths()) {
    const Bytes bits = noise((width + 7) / 8, random);
    Bytes want(width);
    for (size_t x = 0; x < width; ++x) want[x] = bits[x / 8] >> (7 - x % 8) & 1;
    for (const Target target : availableTargets()) {
      Bytes row(width);
      std::copy(bits.begin(), bits.end(), row.end() - static_cast<ptrdiff_t>(bits.size()));
      imageKernels(target).bytesOfBits(row.data() + width - bits.size(), width, row.data());
      ASSERT_EQ(row, want) << nameOf(target) << ", width " << width << ", seed " << seed;
    }
  }
}

// Every level against every threshold.
TEST(PointRows, CompareAllLevelsWithAllThresholds) {
  Bytes levels(256);
  for (size_t v = 0; v < 256; ++v) levels[v] = static_cast<uint8_t>(v);
  for (const Target target : availableTargets()) {
    for (size_t limit = 0; limit < 256; ++limit) {
      const auto each = static_cast<uint8_t>(limit);
      const uint8_t limits[4] = {each, each, each, each};
      Bytes bits(32);
      imageKernels(target).bitsAbove(levels.data(), 256, limits, bits.data());
      ASSERT_EQ(bits, packed(256, [limit](size_t v) { return v > limit; }))
          << nameOf(target) << ", threshold " << limit;
    }
  }
}

}  // namespace
