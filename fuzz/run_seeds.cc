// Runs a fuzz target over the files of folders, without a fuzzer: run_seeds FOLDER...
// So the seeds, and every input that once failed, are ordinary tests.
// SPDX-License-Identifier: Apache-2.0
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count);

int main(int argc, char** argv) {
  int files = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      std::ifstream in(entry.path(), std::ios::binary);
      const std::string bytes{std::istreambuf_iterator<char>(in), {}};
      std::printf("%s\n", entry.path().c_str());
      std::fflush(stdout);  // the last line names the seed that fails
      LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
      ++files;
    }
  }
  if (files == 0) std::fprintf(stderr, "run_seeds: no seeds\n");
  return files == 0 ? 1 : 0;
}
