// The stencil library's unsharp mask and quantiser, on an A4 page.
// SPDX-License-Identifier: Apache-2.0
#include "bench/forms.h"
#include "bench/pages.h"
#include "tattoo/diffusion.h"
#include "tattoo/sharpen.h"
#include "tattoo/tattoo_kernels.h"
#include "tattoo/tattoo_reference.h"
#include "tattoo/tone_curve.h"

namespace {

constexpr int kThreshold = 117;
constexpr float kMaskAmount = 300.0f;  // percent

const QMImage& stencilPage() {
  static const QMImage page(a4Page().width, a4Page().height, QM_IMG_GRAY, a4Page().pixels.data());
  return page;
}

bool holdsPage(const QMImage& image) {
  benchmark::DoNotOptimize(image.data);
  return image.size() == stencilPage().size();
}

bool diffusePage() {
  const QMImage& page = stencilPage();
  const auto stride = static_cast<size_t>(page.width);
  QMImage out(page.width, page.height, QM_IMG_GRAY);
  StencilDiffusion diffusion(page.width, page.height, kThreshold, out.data, stride);
  for (int y = 0; y < page.height; y += kStencilRows) {
    diffusion.next(page.data + static_cast<size_t>(y) * stride);
  }
  return holdsPage(out);
}

bool sharpenPage() {
  const QMImage& page = stencilPage();
  const ToneTable tone = toneTable(kThreshold, 1.0f, 1.0f);
  QMImage out(page.width, page.height, QM_IMG_GRAY);
  SharpRows rows(page, kMaskAmount, kMaskTaps, tone.levels);
  for (int y = 0; y < page.height; ++y) rows.next(out.data + y * page.width);
  return holdsPage(out);
}

}  // namespace

void registerStencilWork() {
  const auto nothing = [] {};
  registerForms("stencil diffusion",
                {nothing, [] { return holdsPage(reference::edf_cus(stencilPage(), kThreshold)); }},
                {nothing, diffusePage});
  registerForms(
      "unsharp mask",
      {nothing,
       [] {
         return holdsPage(reference::enh_unsharp_mask(stencilPage(), kMaskAmount, kMaskTaps));
       }},
      {nothing, sharpenPage});
}
