// Loads the decoder library while it runs, so that the studio works without it. The library's
// program names the codes, but not where they are.
// SPDX-License-Identifier: Apache-2.0
#include "studio/worker/barcode_reader.h"

#include <dlfcn.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <utility>
#include <vector>

#include "studio/worker/page_dots.h"
#include "studio/worker/picture_reader.h"

namespace korvel {
namespace {

constexpr char kLibrary[] = "libzbar.so.0";
constexpr unsigned long kGreyFormat = 0x30303859;  // "Y800"
constexpr size_t kMostText = 400;                  // bytes of a code that are shown

using Codes = std::vector<nlohmann::json>;

// The few functions of the library that are used here; its types are opaque.
class Decoder {
 public:
  Decoder() : library_(dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL)) {
    isComplete_ =
        library_ != nullptr && find("zbar_image_scanner_create", &createScanner_) &&
        find("zbar_image_scanner_destroy", &destroyScanner_) &&
        find("zbar_image_create", &createImage_) && find("zbar_image_destroy", &destroyImage_) &&
        find("zbar_image_set_format", &setFormat_) && find("zbar_image_set_size", &setSize_) &&
        find("zbar_image_set_data", &setData_) && find("zbar_scan_image", &scan_) &&
        find("zbar_image_first_symbol", &firstSymbol_) && find("zbar_symbol_next", &nextSymbol_) &&
        find("zbar_symbol_get_type", &typeOf_) && find("zbar_get_symbol_name", &nameOf_) &&
        find("zbar_symbol_get_data", &dataOf_) && find("zbar_symbol_get_data_length", &lengthOf_) &&
        find("zbar_symbol_get_loc_size", &pointsOf_) && find("zbar_symbol_get_loc_x", &xOf_) &&
        find("zbar_symbol_get_loc_y", &yOf_);
  }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;
  ~Decoder() = default;  // the worker ends with this step: the library stays loaded

  bool isComplete() const { return isComplete_; }

  Codes read(const GreyPicture& page) const {
    const std::unique_ptr<void, void (*)(void*)> scanner(createScanner_(), destroyScanner_);
    const std::unique_ptr<void, void (*)(void*)> image(createImage_(), destroyImage_);
    setFormat_(image.get(), kGreyFormat);
    setSize_(image.get(), static_cast<unsigned>(page.width), static_cast<unsigned>(page.height));
    setData_(image.get(), page.grey.data(), page.grey.size(), nullptr);
    Codes codes;
    if (scan_(scanner.get(), image.get()) < 0) return codes;
    for (const void* symbol = firstSymbol_(image.get()); symbol != nullptr;
         symbol = nextSymbol_(symbol)) {
      codes.push_back(describe(symbol));
    }
    return codes;
  }

 private:
  template <typename Function>
  bool find(const char* name, Function** function) {
    *function = reinterpret_cast<Function*>(dlsym(library_, name));
    return *function != nullptr;
  }

  nlohmann::json describe(const void* symbol) const {
    const std::string text(dataOf_(symbol), lengthOf_(symbol));
    nlohmann::json code = {{"type", nameOf_(typeOf_(symbol))}, {"text", text.substr(0, kMostText)}};
    int box[] = {INT_MAX, INT_MAX, INT_MIN, INT_MIN};
    for (unsigned i = 0; i < pointsOf_(symbol); ++i) {
      const int x = xOf_(symbol, i);
      const int y = yOf_(symbol, i);
      box[0] = std::min(box[0], x);
      box[1] = std::min(box[1], y);
      box[2] = std::max(box[2], x);
      box[3] = std::max(box[3], y);
    }
    if (box[0] <= box[2]) code["box"] = box;
    return code;
  }

  void* library_;
  bool isComplete_;
  void* (*createScanner_)() = nullptr;
  void (*destroyScanner_)(void*) = nullptr;
  void* (*createImage_)() = nullptr;
  void (*destroyImage_)(void*) = nullptr;
  void (*setFormat_)(void*, unsigned long) = nullptr;
  void (*setSize_)(void*, unsigned, unsigned) = nullptr;
  void (*setData_)(void*, const void*, unsigned long, void (*)(void*)) = nullptr;
  int (*scan_)(void*, void*) = nullptr;
  const void* (*firstSymbol_)(const void*) = nullptr;
  const void* (*nextSymbol_)(const void*) = nullptr;
  int (*typeOf_)(const void*) = nullptr;
  const char* (*nameOf_)(int) = nullptr;
  const char* (*dataOf_)(const void*) = nullptr;
  unsigned (*lengthOf_)(const void*) = nullptr;
  unsigned (*pointsOf_)(const void*) = nullptr;
  int (*xOf_)(const void*, unsigned) = nullptr;
  int (*yOf_)(const void*, unsigned) = nullptr;
};

bool isSame(const nlohmann::json& one, const nlohmann::json& other) {
  return one["type"] == other["type"] && one["text"] == other["text"];
}

}  // namespace

nlohmann::json readBarcodes(const std::string& raster, const std::string& png) {
  const Decoder decoder;
  const Result<GreyPicture> dots = readPicture(png, "png");
  const Result<GreyPicture> page = readGreyPage(raster);
  if (!decoder.isComplete() || !dots || !page) return {{"decoder", false}, {"codes", Codes()}};
  Codes codes = decoder.read(dots.value());
  for (nlohmann::json& code : codes) code["readable"] = true;
  for (nlohmann::json& code : decoder.read(page.value())) {
    code["readable"] = false;
    const bool known = std::any_of(codes.begin(), codes.end(), [&](const nlohmann::json& other) {
      return isSame(code, other);
    });
    if (!known) codes.push_back(std::move(code));
  }
  return {{"decoder", true}, {"codes", codes}};
}

}  // namespace korvel
