// All benchmarks in one run: nine repetitions each, in random order.
// Ends with a table of ratios, also written to the file that --result names.
// SPDX-License-Identifier: Apache-2.0
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "bench/forms.h"
#include "bench/ratio_table.h"

namespace {

// Takes --result PATH out of the arguments.
std::string takeResultPath(int& argc, char** argv) {
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::strcmp(argv[i], "--result") != 0) continue;
    std::string path = argv[i + 1];
    for (int k = i; k + 2 < argc; ++k) argv[k] = argv[k + 2];
    argc -= 2;
    return path;
  }
  return {};
}

// A folder in memory for the dumps, removed at the end.
class DumpFolder {
 public:
  DumpFolder() {
    if (mkdtemp(path_) == nullptr) return;
    mkdir((std::string(path_) + "/dumps").c_str(), 0700);
    setenv("KORVEL_SANDBOX", path_, 1);
  }
  DumpFolder(const DumpFolder&) = delete;
  DumpFolder& operator=(const DumpFolder&) = delete;
  ~DumpFolder() {
    const std::string command = std::string("rm -rf ") + path_;
    if (std::system(command.c_str()) != 0) std::fprintf(stderr, "cannot remove %s\n", path_);
  }

 private:
  char path_[32] = "/dev/shm/korvel-bench-XXXXXX";
};

}  // namespace

int main(int argc, char** argv) {
  // As in a job of several pages: freed memory stays in place for the next page.
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, 64 << 20);
  if (std::freopen("/dev/null", "w", stderr) == nullptr) return 1;  // the pages' own log
  const DumpFolder dumps;
  RatioTable table(takeResultPath(argc, argv));
  std::vector<char*> arguments = {argv[0]};
  char interleaved[] = "--benchmark_enable_random_interleaving=true";
  char repetitions[] = "--benchmark_repetitions=9";
  char shortest[] = "--benchmark_min_time=0.05";
  for (char* argument : {interleaved, repetitions, shortest}) arguments.push_back(argument);
  arguments.insert(arguments.end(), argv + 1, argv + argc);  // the caller's count more
  int count = static_cast<int>(arguments.size());
  arguments.push_back(nullptr);

  registerCopy();
  registerHalftones();
  registerPointWork();
  registerStencilWork();
  registerPages();
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  benchmark::RunSpecifiedBenchmarks(&table);
  return 0;
}
