// The kind of a document, cupsfilter as a child, and the few things to know of a raster stream.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview/document.h"

#include <cups/file.h>
#include <cups/raster.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <string_view>
#include <vector>

#include "tools/common/translation.h"

namespace korvel {
namespace {

constexpr size_t kHeadBytes = 65536;
constexpr uint64_t kMostPageBytes = uint64_t{256} << 20;  // the filter takes no larger page

struct CupsFileCloser {
  void operator()(cups_file_t* file) const { cupsFileClose(file); }
};
using CupsFile = std::unique_ptr<cups_file_t, CupsFileCloser>;

struct RasterCloser {
  void operator()(cups_raster_t* raster) const { cupsRasterClose(raster); }
};
using Raster = std::unique_ptr<cups_raster_t, RasterCloser>;

bool isRaster(std::string_view head) {
  constexpr std::string_view kSyncWords[] = {"RaSt", "tSaR", "RaS2", "2SaR", "RaS3", "3SaR"};
  return std::any_of(std::begin(kSyncWords), std::end(kSyncWords),
                     [head](std::string_view word) { return head.starts_with(word); });
}

// Text has no control bytes but blanks, tabs, line and page ends.
bool isText(std::string_view head) {
  return std::none_of(head.begin(), head.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte < 32 && std::strchr("\t\n\f\r", c) == nullptr) || byte == 0 || byte == 127;
  });
}

std::string typeOf(std::string_view head, bool compressed) {
  if (isRaster(head)) return kRasterType;
  if (compressed) return std::string();  // the other kinds are not compressed by themselves
  if (head.starts_with("%PDF-")) return "application/pdf";
  if (head.starts_with("\x89PNG\r\n\x1a\n")) return "image/png";
  if (head.starts_with("\xff\xd8\xff")) return "image/jpeg";
  return isText(head) ? "text/plain" : std::string();
}

}  // namespace

std::string identifyDocument(const std::string& path, std::string* type) {
  struct stat info = {};
  if (stat(path.c_str(), &info) != 0) {
    if (errno == ENOENT) return filled("there is no file %s", path.c_str());
    return filled("%s cannot be read: %s", path.c_str(), std::strerror(errno));
  }
  if (S_ISDIR(info.st_mode)) return filled("%s is a directory", path.c_str());
  if (!S_ISREG(info.st_mode)) return filled("%s is not a plain file", path.c_str());
  if (info.st_size == 0) return filled("%s is empty", path.c_str());
  const CupsFile file(cupsFileOpen(path.c_str(), "r"));  // sees through compression
  if (!file) return filled("%s cannot be read: %s", path.c_str(), std::strerror(errno));
  std::string head(kHeadBytes, '\0');
  const ssize_t count = cupsFileRead(file.get(), head.data(), head.size());
  head.resize(static_cast<size_t>(std::max<ssize_t>(count, 0)));
  *type = typeOf(head, cupsFileCompression(file.get()) != 0);
  if (type->empty()) {
    return filled("%s is not a PDF, PNG, JPEG, text or CUPS raster file", path.c_str());
  }
  return std::string();
}

// ---- The rasteriser ----

namespace {

std::vector<std::string> cupsfilterWords(const RasteriserJob& job) {
  std::vector<std::string> words = {"cupsfilter", "-p",        job.ppd, "-i",      job.type,
                                    "-m",         kRasterType, "-n",    job.copies};
  if (!job.options.empty()) words.insert(words.end(), {"-o", job.options});
  return words;
}

[[noreturn]] void becomeProgram(std::vector<std::string> words, pid_t parent, int output,
                                const std::string& log) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(127);
  const int messages = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  const int nothing = open("/dev/null", O_RDONLY);
  if (messages < 0 || nothing < 0) _exit(127);
  dup2(nothing, 0);
  dup2(output, 1);
  dup2(messages, 2);
  signal(SIGPIPE, SIG_DFL);
  const std::vector<char*> arguments = execWords(words);
  execvp(arguments[0], arguments.data());
  // Not on every user's path.
  execv(("/usr/sbin/" + words[0]).c_str(), arguments.data());
  _exit(127);
}

std::string startProgram(const std::vector<std::string>& words, const std::string& log,
                         Descriptor* output, Child* child) {
  Descriptor theirs;
  if (!openPipe(output, &theirs)) {
    return filled("cannot open a pipe: %s", std::strerror(errno));
  }
  const pid_t parent = getpid();
  const pid_t pid = fork();
  if (pid < 0) return filled("cannot start a process: %s", std::strerror(errno));
  if (pid == 0) becomeProgram(words, parent, theirs.get(), log);
  child->start(pid);
  return std::string();
}

// The first line that tells an error, without what stands before it.
std::string firstError(const std::string& log) {
  std::ifstream file(log);
  for (std::string line; std::getline(file, line);) {
    for (const char* mark : {"ERROR: ", "CRIT: ", "EMERG: ", "ALERT: ", "cupsfilter: "}) {
      if (line.starts_with(mark)) return line.substr(std::strlen(mark));
    }
  }
  return std::string();
}

}  // namespace

std::string Rasteriser::start(const RasteriserJob& job) {
  job_ = job;
  std::vector<std::string> words = cupsfilterWords(job);
  words.push_back(job.document);
  return startProgram(words, job.log, &output_, &child_);
}

std::string Rasteriser::finish() {
  output_.reset();
  int status = 0;
  if (!child_.wait(&status)) return std::string();
  const bool readerGone = (WIFSIGNALED(status) && WTERMSIG(status) == SIGPIPE) ||
                          (WIFEXITED(status) && WEXITSTATUS(status) == 128 + SIGPIPE);
  if (status == 0 || readerGone) return std::string();
  if (WIFEXITED(status) && WEXITSTATUS(status) == 127) {
    return translated(
        "there is no program cupsfilter; it comes with the spooler (Debian package cups)");
  }
  std::string reason = firstError(job_.log);
  if (reason.empty()) reason = filled("status %d", WEXITSTATUS(status));
  return filled("the rasteriser cannot make pages of %s: %s", job_.document.c_str(),
                reason.c_str());
}

std::string rasteriserChain(const RasteriserJob& job) {
  std::vector<std::string> words = cupsfilterWords(job);
  words.insert(words.end(), {"--list-filters", job.document});
  Descriptor output;
  Child child;
  if (!startProgram(words, job.log, &output, &child).empty()) return std::string();
  std::string names;
  char bytes[4096];
  for (ssize_t count = 0; (count = read(output.get(), bytes, sizeof bytes)) > 0;) {
    names.append(bytes, static_cast<size_t>(count));
  }
  int status = 0;
  if (!child.wait(&status) || status != 0) return std::string();
  while (names.ends_with('\n')) names.pop_back();
  std::replace(names.begin(), names.end(), '\n', ' ');
  return names;
}

// ---- Raster ----

std::string unpackRaster(const std::string& path, const std::string& target) {
  const CupsFile from(cupsFileOpen(path.c_str(), "r"));
  std::FILE* to = std::fopen(target.c_str(), "wb");
  if (!from || to == nullptr) {
    const int reason = errno;
    if (to != nullptr) std::fclose(to);
    return filled("cannot copy %s: %s", path.c_str(), std::strerror(reason));
  }
  std::vector<char> bytes(kHeadBytes);
  ssize_t count = 0;
  bool good = true;
  while (good && (count = cupsFileRead(from.get(), bytes.data(), bytes.size())) > 0) {
    good =
        std::fwrite(bytes.data(), 1, static_cast<size_t>(count), to) == static_cast<size_t>(count);
  }
  good = std::fclose(to) == 0 && good;
  if (!good) return filled("cannot write %s: %s", target.c_str(), std::strerror(errno));
  return std::string();
}

std::string readRasterPage(const std::string& path, RasterPageInfo* info) {
  Descriptor file;
  if (!file.adopt(open(path.c_str(), O_RDONLY))) {
    return filled("cannot read %s: %s", path.c_str(), std::strerror(errno));
  }
  const Raster raster(cupsRasterOpen(file.get(), CUPS_RASTER_READ));
  cups_page_header2_t header = {};
  if (!raster || cupsRasterReadHeader2(raster.get(), &header) == 0)
    return translated("it has no pages");
  info->dpi = header.HWResolution[0];
  info->sizeName = std::string(header.cupsPageSizeName,
                               strnlen(header.cupsPageSizeName, sizeof header.cupsPageSizeName));
  return std::string();
}

std::string keepFirstPage(int descriptor, const std::string& target) {
  const Raster from(cupsRasterOpen(descriptor, CUPS_RASTER_READ));
  cups_page_header2_t header = {};
  if (!from || cupsRasterReadHeader2(from.get(), &header) == 0)
    return translated("it has no pages");
  const uint64_t size = uint64_t{header.cupsHeight} * header.cupsBytesPerLine;
  if (size == 0) return translated("its first page is empty");
  if (size > kMostPageBytes) return translated("its first page is too large to print");
  std::vector<unsigned char> pixels(size);
  const auto bytes = static_cast<unsigned>(size);
  if (cupsRasterReadPixels(from.get(), pixels.data(), bytes) != bytes) {
    return translated("its first page breaks off");
  }
  Descriptor file;
  if (!file.adopt(open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600))) {
    return filled("cannot write %s: %s", target.c_str(), std::strerror(errno));
  }
  const Raster to(cupsRasterOpen(file.get(), CUPS_RASTER_WRITE));
  if (!to || cupsRasterWriteHeader2(to.get(), &header) == 0 ||
      cupsRasterWritePixels(to.get(), pixels.data(), bytes) != bytes) {
    return filled("cannot write %s: %s", target.c_str(), std::strerror(errno));
  }
  return std::string();
}

}  // namespace korvel
