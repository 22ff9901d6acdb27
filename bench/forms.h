// Registers a benchmark for the reference implementation and for the filter's code on every SIMD
// target of this machine.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_BENCH_FORMS_H
#define KORVEL_BENCH_FORMS_H

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

// One page's work; `run` returns false on failure, which stops the benchmark.
struct Work {
  std::function<void()> prepare;  // not timed
  std::function<bool()> run;      // timed
};

inline void timeWork(benchmark::State& state, const Work& work) {
  for (auto _ : state) {
    state.PauseTiming();
    work.prepare();
    state.ResumeTiming();
    if (!work.run()) {
      state.SkipWithError("the work failed");
      break;
    }
  }
}

// The filter's code runs once for each available target wider than the portable one.
void registerForms(const std::string& what, const Work& reference, const Work& filter);

void registerCopy();
void registerHalftones();
void registerPointWork();
void registerStencilWork();
void registerPages();

#endif
