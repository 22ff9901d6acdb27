// Reports a run as one table: each bench's plain form, its fast forms, and the ratios promised.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_BENCH_RATIO_TABLE_H
#define KORVEL_BENCH_RATIO_TABLE_H

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

// Benches are named "what/form", the form being "plain", "copy" or a target's name. Ratios are
// taken repetition by repetition, so that a noisy moment spoils one of them and not the rest.
class RatioTable : public benchmark::BenchmarkReporter {
 public:
  explicit RatioTable(std::string resultPath) : resultPath_(std::move(resultPath)) {}

  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;  // prints the table, and writes it to the result file if there is one

 private:
  using Seconds = std::vector<double>;  // processor time a page, a repetition each

  std::string tableText() const;

  std::string resultPath_;
  std::vector<std::string> order_;                               // what, in order of appearance
  std::map<std::string, std::map<std::string, Seconds>> forms_;  // what, form
};

#endif
