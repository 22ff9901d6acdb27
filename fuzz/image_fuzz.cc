// Operations of the palette image, one after another, on arbitrary pixels and palettes: after each
// the whole block, padding included, must be what the reference implementation leaves, on every
// SIMD target.
// Header line: depth, width, then operations, each a letter and a number: d2 (halftone), i8
// (raise the depth), n (negative), l (look-up by a table of pixel bytes), r (turn), m (mirror),
// p9 (palette entry). Then stored rows with their padding.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>
#include <string>

#include "fuzz/demand.h"
#include "fuzz/header_line.h"
#include "image/cximage_reference.h"
#include "lanes/target.h"

namespace {

constexpr int kMaxWidth = 150;
constexpr uint32_t kMaxHeight = 24;
constexpr int kMaxOperations = 8;

class OwnedImage : public CxImage {
 public:
  OwnedImage() = default;
  ~OwnedImage() { Destroy(); }
};

// Header copy, palette and stored rows.
std::string blockOf(CxImage& image) {
  if (!image.IsValid()) return "";
  const uint8_t* block = image.GetBits(0) - image.GetPaletteSize() - sizeof(DibHeader);
  return {reinterpret_cast<const char*>(block), image.GetSize()};
}

void demandSameImage(CxImage& have, CxImage& want, const std::string& operation) {
  demand(have.IsValid() == want.IsValid(), operation + ": one image has no block");
  demand(have.GetWidth() == want.GetWidth() && have.GetHeight() == want.GetHeight() &&
             have.GetEffWidth() == want.GetEffWidth(),
         operation + ": the sizes differ");
  demand(std::strcmp(have.GetLastError(), want.GetLastError()) == 0,
         operation + ": the errors differ");
  const std::string haveBlock = blockOf(have);
  const std::string wantBlock = blockOf(want);
  const auto at =
      std::mismatch(haveBlock.begin(), haveBlock.end(), wantBlock.begin(), wantBlock.end());
  demand(haveBlock == wantBlock, operation + ": the blocks differ at byte " +
                                     std::to_string(at.first - haveBlock.begin()) + " of " +
                                     std::to_string(wantBlock.size()));
}

class Pair {
 public:
  Pair(uint32_t depth, uint32_t width, std::string_view rows) : rows_(rows) {
    const uint32_t stride = (depth * width + 31) / 32 * 4;
    const uint32_t height = std::clamp(static_cast<uint32_t>(rows.size() / stride), 1u, kMaxHeight);
    for (CxImage* image : {&have_, &want_}) {
      image->Create(width, height, depth, 0);
      image->SetGrayPalette();
      const size_t size = std::min(rows.size(), size_t{image->GetEffWidth()} * height);
      std::memcpy(image->GetBits(0), rows.data(), size);
    }
  }

  void apply(const std::string& operation) {
    const int number = HeaderLine::numberIn(std::string_view(operation).substr(1));
    bool haveHeld = true;
    bool wantHeld = true;
    uint8_t table[256];
    switch (operation[0]) {
      case 'd':
        haveHeld = have_.Dither(number);
        wantHeld = reference::Dither(want_, number);
        break;
      case 'i':
        haveHeld = have_.IncreaseBpp(static_cast<uint32_t>(number));
        wantHeld = reference::IncreaseBpp(want_, static_cast<uint32_t>(number));
        break;
      case 'n':
        have_.Negative();
        reference::Negative(want_);
        break;
      case 'l':
        for (size_t i = 0; i < 256; ++i) table[i] = rowByte(i);
        haveHeld = have_.Lut(table);
        wantHeld = reference::Lut(want_, table);
        break;
      case 'r':
        haveHeld = have_.Rotate180();
        wantHeld = reference::Rotate180(want_);
        break;
      case 'm':
        have_.Mirror();
        reference::Mirror(want_);
        break;
      case 'p':
        setPaletteEntry(static_cast<uint8_t>(number));
        break;
      default:
        return;
    }
    demand(haveHeld == wantHeld, operation + ": one form failed");
    demandSameImage(have_, want_, operation);
  }

 private:
  uint8_t rowByte(size_t at) const {
    return rows_.empty() ? uint8_t{0} : static_cast<uint8_t>(rows_[at % rows_.size()]);
  }

  void setPaletteEntry(uint8_t index) {
    for (CxImage* image : {&have_, &want_}) {
      image->SetPaletteColor(index, rowByte(index), rowByte(index + 1u), rowByte(index + 2u), 0);
    }
  }

  std::string_view rows_;
  OwnedImage have_;
  OwnedImage want_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count) {
  HeaderLine line(bytes, count);
  const auto depth = static_cast<uint32_t>(line.numberWithin(0, 31));
  const auto width = static_cast<uint32_t>(line.numberWithin(1, kMaxWidth));
  const uint32_t raised = depth <= 1 ? 1 : depth <= 4 ? 4 : depth <= 8 ? 8 : 24;
  for (const Target target : availableTargets()) {
    chooseTarget(target);
    Pair pair(raised, width, line.rest());
    HeaderLine operations = line;
    for (int i = 0; i < kMaxOperations && operations.hasMore(); ++i) {
      pair.apply(std::string(operations.word()));
    }
  }
  return 0;
}
