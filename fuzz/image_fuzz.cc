// Operations of the palette image, one after another, on arbitrary pixels and palettes: after each
// the whole block, padding and all, must be what the plain forms leave, on every target.
// Header line: depth, width, then operations, a letter and a number each: d2 (halftone), i8
// (raise the depth), n (negative), l (look-up by a table of pixel bytes), r (turn), m (mirror),
// p9 (palette entry). Then stored rows, padding and all.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>
#include <string>

#include "fuzz/demand.h"
#include "fuzz/header_line.h"
#include "image/cximage_literal.h"
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

void demandSameImage(CxImage& fast, CxImage& plain, const std::string& operation) {
  demand(fast.IsValid() == plain.IsValid(), operation + ": one image has no block");
  demand(fast.GetWidth() == plain.GetWidth() && fast.GetHeight() == plain.GetHeight() &&
             fast.GetEffWidth() == plain.GetEffWidth(),
         operation + ": the sizes differ");
  demand(std::strcmp(fast.GetLastError(), plain.GetLastError()) == 0,
         operation + ": the errors differ");
  const std::string have = blockOf(fast);
  const std::string want = blockOf(plain);
  const auto at = std::mismatch(have.begin(), have.end(), want.begin(), want.end());
  demand(have == want, operation + ": the blocks differ at byte " +
                           std::to_string(at.first - have.begin()) + " of " +
                           std::to_string(want.size()));
}

class Pair {
 public:
  Pair(uint32_t depth, uint32_t width, std::string_view rows) : rows_(rows) {
    const uint32_t stride = (depth * width + 31) / 32 * 4;
    const uint32_t height = std::clamp(static_cast<uint32_t>(rows.size() / stride), 1u, kMaxHeight);
    for (CxImage* image : {&fast_, &plain_}) {
      image->Create(width, height, depth, 0);
      image->SetGrayPalette();
      const size_t size = std::min(rows.size(), size_t{image->GetEffWidth()} * height);
      std::memcpy(image->GetBits(0), rows.data(), size);
    }
  }

  void apply(const std::string& operation) {
    const int number = HeaderLine::numberIn(std::string_view(operation).substr(1));
    bool fastHeld = true;
    bool plainHeld = true;
    uint8_t table[256];
    switch (operation[0]) {
      case 'd':
        fastHeld = fast_.Dither(number);
        plainHeld = CxImageLiteral::Dither(plain_, number);
        break;
      case 'i':
        fastHeld = fast_.IncreaseBpp(static_cast<uint32_t>(number));
        plainHeld = CxImageLiteral::IncreaseBpp(plain_, static_cast<uint32_t>(number));
        break;
      case 'n':
        fast_.Negative();
        CxImageLiteral::Negative(plain_);
        break;
      case 'l':
        for (size_t i = 0; i < 256; ++i) table[i] = rowByte(i);
        fastHeld = fast_.Lut(table);
        plainHeld = CxImageLiteral::Lut(plain_, table);
        break;
      case 'r':
        fastHeld = fast_.Rotate180();
        plainHeld = CxImageLiteral::Rotate180(plain_);
        break;
      case 'm':
        fast_.Mirror();
        CxImageLiteral::Mirror(plain_);
        break;
      case 'p':
        setPaletteEntry(static_cast<uint8_t>(number));
        break;
      default:
        return;
    }
    demand(fastHeld == plainHeld, operation + ": one form failed");
    demandSameImage(fast_, plain_, operation);
  }

 private:
  uint8_t rowByte(size_t at) const {
    return rows_.empty() ? uint8_t{0} : static_cast<uint8_t>(rows_[at % rows_.size()]);
  }

  void setPaletteEntry(uint8_t index) {
    for (CxImage* image : {&fast_, &plain_}) {
      image->SetPaletteColor(index, rowByte(index), rowByte(index + 1u), rowByte(index + 2u), 0);
    }
  }

  std::string_view rows_;
  OwnedImage fast_;
  OwnedImage plain_;
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
