// The table of the symbology: widths of bar, space, bar, space, bar, space.
// SPDX-License-Identifier: Apache-2.0
#include "sheets/barcode.h"

#include <cstddef>

namespace korvel {
namespace {

constexpr size_t kStartB = 104;
constexpr size_t kCheckModulus = 103;
constexpr const char* kStop = "2331112";

constexpr const char* kWidths[] = {
    "212222", "222122", "222221", "121223", "121322", "131222", "122213", "122312", "132212",
    "221213", "221312", "231212", "112232", "122132", "122231", "113222", "123122", "123221",
    "223211", "221132", "221231", "213212", "223112", "312131", "311222", "321122", "321221",
    "312212", "322112", "322211", "212123", "212321", "232121", "111323", "131123", "131321",
    "112313", "132113", "132311", "211313", "231113", "231311", "112133", "112331", "132131",
    "113123", "113321", "133121", "313121", "211331", "231131", "213113", "213311", "213131",
    "311123", "311321", "331121", "312113", "312311", "332111", "314111", "221411", "431111",
    "111224", "111422", "121124", "121421", "141122", "141221", "112214", "112412", "122114",
    "122411", "142112", "142211", "241211", "221114", "413111", "241112", "134111", "111242",
    "121142", "121241", "114212", "124112", "124211", "411212", "421112", "421211", "212141",
    "214121", "412121", "111143", "111341", "131141", "114113", "114311", "411113", "411311",
    "113141", "114131", "311141", "411131", "211412", "211214", "211232"};

void append(std::string* modules, const char* widths) {
  for (size_t i = 0; widths[i] != '\0'; ++i) {
    modules->append(static_cast<size_t>(widths[i] - '0'), i % 2 == 0 ? '#' : '.');
  }
}

}  // namespace

std::string code128(const std::string& text) {
  std::string modules;
  append(&modules, kWidths[kStartB]);
  size_t sum = kStartB;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto value = static_cast<size_t>(text[i] - ' ');
    append(&modules, kWidths[value]);
    sum += (i + 1) * value;
  }
  append(&modules, kWidths[sum % kCheckModulus]);
  append(&modules, kStop);
  return modules;
}

}  // namespace korvel
