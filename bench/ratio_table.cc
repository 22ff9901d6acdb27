// Builds the table of ratios against what targets.h promises.
// SPDX-License-Identifier: Apache-2.0
#include "bench/ratio_table.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>

#include "bench/targets.h"

namespace {

__attribute__((format(printf, 1, 2))) std::string text(const char* format, ...) {
  char line[512];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  return line;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// How many times as fast as `slow` each repetition of `fast` was.
std::vector<double> ratios(const std::vector<double>& slow, const std::vector<double>& fast) {
  std::vector<double> times;
  for (size_t i = 0; i < std::min(slow.size(), fast.size()); ++i) {
    times.push_back(slow[i] / fast[i]);
  }
  return times;
}

const Promise* promiseOf(const std::string& what) {
  for (const Promise& promise : kPromises) {
    if (what == promise.what) return &promise;
  }
  return nullptr;
}

std::string verdict(const Promise* promise, bool wide, double least, double leastToCopy) {
  if (promise == nullptr) return "";
  const double wanted = wide ? promise->wide : promise->narrow;
  const bool fastEnough = wanted > 0 && least >= wanted;
  const bool likeCopy = promise->orCopy && leastToCopy >= 1;
  std::string want = wanted > 0 ? text("%.0f", wanted) : "";
  if (promise->orCopy) want += want.empty() ? "copy" : " or copy";
  return want + (fastEnough || likeCopy ? "" : " MISSED");
}

// In the order of the promises; benchmarks without a promise come last.
std::vector<std::string> names(
    const std::map<std::string, std::map<std::string, std::vector<double>>>& forms) {
  std::vector<std::string> order;
  for (const Promise& promise : kPromises) {
    if (forms.count(promise.what) != 0) order.emplace_back(promise.what);
  }
  for (const auto& [what, unused] : forms) {
    if (promiseOf(what) == nullptr) order.push_back(what);
  }
  return order;
}

std::string lineOf(const char* name) {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);) {
    if (line.rfind(name, 0) == 0) return line.substr(line.find(':') + 2);
  }
  return "unknown";
}

#if defined(__clang__)
constexpr const char* kCompiler = "clang " __clang_version__;
#else
constexpr const char* kCompiler = "g++ " __VERSION__;
#endif

}  // namespace

bool RatioTable::ReportContext(const Context& /*context*/) { return true; }

void RatioTable::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
    const std::string name = run.benchmark_name();
    const size_t slash = name.find('/');
    const std::string what = name.substr(0, slash);
    const std::string form = name.substr(slash + 1, name.find('/', slash + 1) - slash - 1);
    forms_[what][form].push_back(run.cpu_accumulated_time / static_cast<double>(run.iterations));
  }
}

std::string RatioTable::tableText() const {
  std::ostringstream table;
  table
      << "| what | form | ms per page | least ratio | median ratio | least against copy | promised "
         "|\n"
      << "|---|---|---|---|---|---|---|\n";
  const auto copies = forms_.find("copy");
  for (const std::string& what : names(forms_)) {
    const auto& forms = forms_.at(what);
    const auto reference = forms.find("reference");
    for (const auto& [form, seconds] : forms) {
      table << "| " << what << " | " << form << " | " << text("%.3f", median(seconds) * 1e3)
            << " | ";
      if (form == "reference" || reference == forms.end()) {
        table << " | | | |\n";
        continue;
      }
      const std::vector<double> times = ratios(reference->second, seconds);
      const double least = *std::min_element(times.begin(), times.end());
      double leastToCopy = 0;
      if (copies != forms_.end()) {
        const std::vector<double> toCopy = ratios(copies->second.at("reference"), seconds);
        leastToCopy = *std::min_element(toCopy.begin(), toCopy.end());
      }
      table << text("%.1f | %.1f | %.2f | ", least, median(times), leastToCopy)
            << verdict(promiseOf(what), form == "avx2", least, leastToCopy) << " |\n";
    }
  }
  return table.str();
}

void RatioTable::Finalize() {
  const std::string table = tableText();
  std::cout << table;
  if (resultPath_.empty()) return;
  std::ofstream file(resultPath_);
  file << "# Measured\n\nWritten by `./dev bench`. Processor: " << lineOf("model name")
       << ". Compiler: " << kCompiler
       << ".\nEach figure is processor time; ratios are taken repetition by repetition "
          "against the reference implementation in the same run,\nin random order. An A4 page has "
          "2480 x "
          "3508 pixels. \"copy\" is memcpy of such a page.\n\n"
       << table;
}
