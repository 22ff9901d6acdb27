// The stencil library's quantiser, unsharp mask and both chains, on an A4 page.
// SPDX-License-Identifier: Apache-2.0
#include "bench/forms.h"
#include "bench/pages.h"
#include "tattoo/diffusion.h"
#include "tattoo/filters.h"
#include "tattoo/literal.h"

namespace {

constexpr int kThreshold = 117;

const QMImage& stencilPage() {
  static const QMImage page(a4Page().width, a4Page().height, QM_IMG_GRAY, a4Page().pixels.data());
  return page;
}

bool holdsPage(const QMImage& image) {
  benchmark::DoNotOptimize(image.data);
  return image.size() == stencilPage().size();
}

}  // namespace

void registerStencilWork() {
  const auto nothing = [] {};
  registerForms("stencil diffusion",
                {nothing, [] { return holdsPage(literal::edf_cus(stencilPage(), kThreshold)); }},
                {nothing, [] { return holdsPage(edf_cus(stencilPage(), kThreshold)); }});
  registerForms(
      "unsharp mask",
      {nothing, [] { return holdsPage(literal::enh_unsharp_mask(stencilPage(), 300.0f, 11)); }},
      {nothing, [] { return holdsPage(enh_unsharp_mask(stencilPage(), 300.0f, 11)); }});
}
