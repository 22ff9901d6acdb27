// Runs every golden job through the real filter and compares everything that it produces:
// stream, messages, exit status and the dots of each page. A comparison never changes a golden job.
//
//   golden_test --raster CASE   writes the job's raster stream to standard output
//   golden_test --write CASE    writes the results of one job: look at the pictures and compare
//                               stream and messages with what the printer is expected to do
//                               before you commit them
// SPDX-License-Identifier: Apache-2.0
#include <cups/cups.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "tests/job/job_text.h"

namespace {

namespace fs = std::filesystem;

struct GoldenJob {
  JobPlan plan;
  int status = 0;
  std::string fault;     // what is wrong in job.txt
  bool readable = true;  // by this system's raster library
};

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

fs::path folderOf(const std::string& name) { return fs::path(KORVEL_GOLDEN_DIR) / name; }

// "1 64FF | 0102": the drain result, then what the back channel delivers; "silence" for no answer.
StatusAnswer parseAnswer(const std::string& words) {
  StatusAnswer answer;
  if (words == "silence") {
    answer.status = -1;
    return answer;
  }
  const size_t blank = words.find(' ');
  answer.status = std::stoi(words.substr(0, blank));
  std::istringstream in(blank == std::string::npos ? "" : words.substr(blank));
  for (std::string hex; std::getline(in, hex, '|');) answer.reads.push_back(bytesOf(hex));
  return answer;
}

// A line is a keyword and its values; # starts a comment.
GoldenJob readJob(const std::string& name) {
  GoldenJob job;
  std::string ppd;
  std::string model;
  std::vector<RasterPage> pages;
  for (const std::string& line : linesOf(readFile(folderOf(name) / "job.txt"))) {
    if (line.empty() || line[0] == '#') continue;
    const size_t blank = line.find(' ');
    const std::string keyword = line.substr(0, blank);
    const std::string words = blank == std::string::npos ? "" : line.substr(blank + 1);
    RasterPage page;
    if (keyword == "ppd") {
      ppd = words;
    } else if (keyword == "model") {
      model = words;
    } else if (keyword == "options") {
      job.plan.options = words;
    } else if (keyword == "page" && parseRasterPage(words, &page)) {
      pages.push_back(page);
      job.readable = job.readable && (page.padding == 0 || libraryReads(makeRaster({page})));
    } else if (keyword == "answer") {
      job.plan.answers.push_back(parseAnswer(words));
    } else if (keyword == "by" && words == "path") {
      job.plan.byPath = true;
    } else if (keyword == "status") {
      job.status = std::stoi(words);
    } else {
      job.fault = "not understood: " + line;
    }
  }
  job.plan.ppd = testPpd(ppd, model);
  job.plan.input = makeRaster(pages);
  if (job.plan.ppd.empty()) job.fault = "no such printer description: " + ppd;
  return job;
}

std::string sha256Of(const std::string& bytes) {
  // The library computes no checksum of nothing.
  if (bytes.empty()) return "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
  unsigned char hash[32];
  if (cupsHashData("sha2-256", bytes.data(), bytes.size(), hash, sizeof hash) != 32) return "";
  std::string text;
  for (const unsigned char byte : hash) {
    char pair[3];
    std::snprintf(pair, sizeof pair, "%02x", byte);
    text += pair;
  }
  return text;
}

// SHA256SUMS by case, in the form of sha256sum: "<checksum>  <case>/stream.bin".
std::map<std::string, std::string> readChecksums() {
  std::map<std::string, std::string> checksums;
  for (const std::string& line : linesOf(readFile(folderOf("SHA256SUMS")))) {
    const size_t blank = line.find("  ");
    const size_t slash = line.find("/stream.bin");
    if (blank == std::string::npos || slash == std::string::npos) continue;
    checksums[line.substr(blank + 2, slash - blank - 2)] = line.substr(0, blank);
  }
  return checksums;
}

void writeChecksums(const std::map<std::string, std::string>& checksums) {
  std::ofstream out(folderOf("SHA256SUMS"), std::ios::binary);
  for (const auto& [name, checksum] : checksums) {
    out << checksum << "  " << name << "/stream.bin\n";
  }
}

// The results of a job, as the files of its folder.
std::map<std::string, std::string> filesOf(const JobResult& result) {
  const StreamText stream = readStream(result.output);
  std::map<std::string, std::string> files;
  files["stream.txt"] = stream.text() + (stream.fault.empty() ? "" : stream.fault + "\n");
  files["messages.txt"] = maskAddresses(result.messages);
  for (size_t i = 0; i < stream.pictures.size(); ++i) {
    files["page-" + std::to_string(i + 1) + ".pbm"] = stream.pictures[i].pbm();
  }
  return files;
}

// The first line that differs, as have and want.
std::string firstDifference(const std::string& have, const std::string& want) {
  const std::vector<std::string> haveLines = linesOf(have);
  const std::vector<std::string> wantLines = linesOf(want);
  size_t line = 0;
  while (line < haveLines.size() && line < wantLines.size() && haveLines[line] == wantLines[line]) {
    ++line;
  }
  const std::string nothing = "(end)";
  return "line " + std::to_string(line + 1) + "\n have " +
         (line < haveLines.size() ? haveLines[line] : nothing) + "\n want " +
         (line < wantLines.size() ? wantLines[line] : nothing);
}

// The first dot that differs; both pictures end in the same number of packed or plain bytes.
std::string firstOffset(const std::string& have, const std::string& want) {
  const auto at = std::mismatch(have.begin(), have.end(), want.begin(), want.end());
  return "byte " + std::to_string(at.first - have.begin()) + ", sizes: have " +
         std::to_string(have.size()) + ", want " + std::to_string(want.size());
}

class GoldenJobs : public testing::TestWithParam<std::string> {};

TEST_P(GoldenJobs, PrintAsAlways) {
  const std::string& name = GetParam();
  const GoldenJob job = readJob(name);
  ASSERT_EQ(job.fault, "");
  if (!job.readable) GTEST_SKIP() << kLibraryRefuses;
  const JobResult result = runJob(job.plan);
  EXPECT_FALSE(result.timedOut);
  EXPECT_EQ(result.exitStatus, job.status);
  EXPECT_EQ(sha256Of(result.output), readChecksums()[name]) << "the stream's SHA-256";

  std::map<std::string, std::string> have = filesOf(result);
  for (const auto& entry : fs::directory_iterator(folderOf(name))) {
    have.try_emplace(entry.path().filename().string(), "");  // reported below as missing
  }
  have.erase("job.txt");
  for (const auto& [file, bytes] : have) {
    const std::string want = readFile(folderOf(name) / file);
    if (bytes == want) continue;
    ADD_FAILURE() << name << "/" << file << ": "
                  << (file.ends_with(".pbm") ? firstOffset(bytes, want)
                                             : firstDifference(bytes, want));
  }
}

std::vector<std::string> goldenNames() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(KORVEL_GOLDEN_DIR)) {
    if (fs::exists(entry.path() / "job.txt")) names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

INSTANTIATE_TEST_SUITE_P(, GoldenJobs, testing::ValuesIn(goldenNames()),
                         [](const auto& folder) { return folder.param; });

// Detects that the folder, or half of it, is missing.
TEST(GoldenFolder, HoldsAtLeastFortyJobs) { EXPECT_GE(goldenNames().size(), 40u); }

TEST(GoldenFolder, HasOneChecksumForEachJob) {
  std::vector<std::string> names;
  for (const auto& [name, checksum] : readChecksums()) names.push_back(name);
  EXPECT_EQ(names, goldenNames());
}

int writeRaster(const std::string& name) {
  const GoldenJob job = readJob(name);
  if (!job.fault.empty()) {
    std::fprintf(stderr, "%s\n", job.fault.c_str());
    return 1;
  }
  std::fwrite(job.plan.input.data(), 1, job.plan.input.size(), stdout);
  return 0;
}

int writeCase(const std::string& name) {
  const GoldenJob job = readJob(name);
  if (!job.fault.empty()) {
    std::fprintf(stderr, "%s\n", job.fault.c_str());
    return 1;
  }
  const JobResult result = runJob(job.plan);
  for (const auto& [file, bytes] : filesOf(result)) {
    std::ofstream(folderOf(name) / file, std::ios::binary) << bytes;
    std::printf("wrote %s/%s\n", name.c_str(), file.c_str());
  }
  std::map<std::string, std::string> checksums = readChecksums();
  checksums[name] = sha256Of(result.output);
  writeChecksums(checksums);
  std::printf("exit status %d, job.txt says %d\n", result.exitStatus, job.status);
  std::printf("Now look at every picture, and read stream.txt and messages.txt.\n");
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "--raster") == 0) return writeRaster(argv[2]);
  if (argc == 3 && std::strcmp(argv[1], "--write") == 0) return writeCase(argv[2]);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
