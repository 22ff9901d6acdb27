// Halftones, tone, geometry and depth of the palette image, on an A4 page.
// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <cstring>

#include "bench/forms.h"
#include "bench/pages.h"
#include "image/cximage.h"
#include "image/cximage_reference.h"
#include "lanes/target.h"

namespace {

// One image for all: benchmarks run one after the other.
CxImage& workImage() {
  static CxImage image;
  return image;
}

void takePage() {
  const GreyPage& page = a4Page();
  const auto width = static_cast<uint32_t>(page.width);
  workImage().CreateFromArray(page.pixels.data(), width, static_cast<uint32_t>(page.height), 8,
                              width, false);
}

void takeHalftone() {
  takePage();
  workImage().Dither(0);
}

struct Halftone {
  const char* name;
  DitherMethod method;
};

constexpr Halftone kHalftones[] = {
    {"Burkes", 2},         {"Stucki", 3},    {"Jarvis-Judice-Ninke", 4}, {"Sierra", 5},
    {"Stevenson-Arce", 6}, {"threshold", 0}, {"ordered 4x4", 1},         {"Bayer", 7},
};

}  // namespace

void registerForms(const std::string& what, const Work& reference, const Work& filter) {
  benchmark::RegisterBenchmark((what + "/reference").c_str(), timeWork, reference);
  for (const Target target : availableTargets()) {
    if (target == Target::kPortable) continue;
    const Work onTarget{[target, prepare = filter.prepare] {
                          chooseTarget(target);
                          prepare();
                        },
                        filter.run};
    benchmark::RegisterBenchmark((what + "/" + nameOf(target)).c_str(), timeWork, onTarget);
  }
}

// The yardstick: a copy of the page to newly allocated memory.
void registerCopy() {
  const Work work{takePage, [] {
                    const size_t size = a4Page().pixels.size();
                    void* copy = std::malloc(size);
                    if (copy == nullptr) return false;
                    std::memcpy(copy, workImage().GetBits(), size);
                    benchmark::DoNotOptimize(copy);
                    benchmark::ClobberMemory();
                    std::free(copy);
                    return true;
                  }};
  benchmark::RegisterBenchmark("copy/reference", timeWork, work);
}

void registerHalftones() {
  for (const Halftone& halftone : kHalftones) {
    const DitherMethod method = halftone.method;
    registerForms(halftone.name,
                  {takePage, [method] { return reference::Dither(workImage(), method); }},
                  {takePage, [method] { return workImage().Dither(method); }});
  }
}

void registerPointWork() {
  static uint8_t table[256];
  for (int i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(255 - i / 2);
  registerForms("light", {takePage, [] { return reference::Lut(workImage(), table); }},
                {takePage, [] { return workImage().Light(25, 40); }});
  registerForms("turn", {takePage, [] { return reference::Rotate180(workImage()); }},
                {takePage, [] { return workImage().Rotate180(); }});
  registerForms("mirror",
                {takePage,
                 [] {
                   reference::Mirror(workImage());
                   return true;
                 }},
                {takePage, [] {
                   workImage().Mirror();
                   return true;
                 }});
  registerForms("negative",
                {takePage,
                 [] {
                   reference::Negative(workImage());
                   return true;
                 }},
                {takePage, [] {
                   workImage().Negative();
                   return true;
                 }});
  registerForms("depth", {takeHalftone, [] { return reference::IncreaseBpp(workImage(), 8); }},
                {takeHalftone, [] { return workImage().IncreaseBpp(8); }});
}
