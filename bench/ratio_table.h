// Reports a run as one table: for each benchmark the reference implementation, the filter's code on
// each SIMD target, and the promised ratios.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_BENCH_RATIO_TABLE_H
#define KORVEL_BENCH_RATIO_TABLE_H

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

// Benchmarks are named "what/form"; the form is "reference" or a target's name. Ratios are taken
// repetition by repetition, so that a noisy moment spoils only one of them.
class RatioTable : public benchmark::BenchmarkReporter {
 public:
  explicit RatioTable(std::string resultPath) : resultPath_(std::move(resultPath)) {}

  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;  // prints the table, and writes it to the result file if there is one

 private:
  using Seconds = std::vector<double>;  // processor time per page, one figure per repetition

  std::string tableText() const;

  std::string resultPath_;
  std::map<std::string, std::map<std::string, Seconds>> forms_;  // what, form
};

#endif
