// The type of a document, cupsfilter as a child process, and the first page of a raster stream.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview/document.h"

#include <cups/file.h>
#include <fcntl.h>
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

#include "tools/common/png_file.h"
#include "tools/common/translation.h"
#include "tools/host/raster_stream.h"

namespace korvel {
namespace {

constexpr size_t kHeadBytes = 65536;

struct CupsFileCloser {
  void operator()(cups_file_t* file) const { cupsFileClose(file); }
};
using CupsFile = std::unique_ptr<cups_file_t, CupsFileCloser>;

bool isRaster(std::string_view head) {
  constexpr std::string_view kSyncWords[] = {"RaSt", "tSaR", "RaS2", "2SaR", "RaS3", "3SaR"};
  return std::any_of(std::begin(kSyncWords), std::end(kSyncWords),
                     [head](std::string_view word) { return head.starts_with(word); });
}

// Text has no control characters except tab, line end and form feed.
bool isText(std::string_view head) {
  return std::none_of(head.begin(), head.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte < 32 && std::strchr("\t\n\f\r", c) == nullptr) || byte == 0 || byte == 127;
  });
}

Failure cannotRead(const std::string& path) {
  return {filled("Cannot read %s: %s.", path.c_str(), std::strerror(errno))};
}

Failure noPages() { return {translated("There are no pages.")}; }

std::string typeOf(std::string_view head, bool compressed) {
  if (isRaster(head)) return kRasterType;
  if (compressed) return std::string();  // the other types are never compressed
  if (head.starts_with("%PDF-")) return "application/pdf";
  if (head.starts_with("\x89PNG\r\n\x1a\n")) return "image/png";
  if (head.starts_with("\xff\xd8\xff")) return "image/jpeg";
  if (head.starts_with({"II*\0", 4}) || head.starts_with({"MM\0*", 4})) return "image/tiff";
  return isText(head) ? "text/plain" : std::string();
}

}  // namespace

namespace {

// Why a file cannot be printed, before it has been opened.
Result<void> checkFile(const std::string& path) {
  const char* name = path.c_str();
  struct stat info = {};
  if (stat(name, &info) != 0) return cannotRead(path);
  if (S_ISDIR(info.st_mode)) return Failure{filled("%s is a directory.", name)};
  if (!S_ISREG(info.st_mode)) return Failure{filled("%s is not a regular file.", name)};
  if (info.st_size == 0) return Failure{filled("%s is empty.", name)};
  return {};
}

}  // namespace

Result<std::string> identifyDocument(const std::string& path) {
  const Result<void> checked = checkFile(path);
  if (!checked) return checked.failure();
  const CupsFile file(cupsFileOpen(path.c_str(), "r"));  // which decompresses
  if (!file) return cannotRead(path);
  std::string head(kHeadBytes, '\0');
  const ssize_t count = cupsFileRead(file.get(), head.data(), head.size());
  head.resize(static_cast<size_t>(std::max<ssize_t>(count, 0)));
  const std::string type = typeOf(head, cupsFileCompression(file.get()) != 0);
  if (!type.empty()) return type;
  return Failure{
      filled("%s is not a PDF, PNG, JPEG, TIFF, text or CUPS raster file.", path.c_str())};
}

// ---- The rasteriser ----

std::string asOperand(const std::string& path) {
  return path.starts_with('-') ? "./" + path : path;
}

namespace {

Program cupsfilter(const RasteriserJob& job) {
  Program program;
  program.arguments = {"cupsfilter", "-p",        job.ppd, "-i",      job.type,
                       "-m",         kRasterType, "-n",    job.copies};
  if (!job.options.empty()) {
    program.arguments.insert(program.arguments.end(), {"-o", job.options});
  }
  return program;
}

// Starts cupsfilter, with its messages in the job's log.
Result<void> startProgram(Program program, const std::string& log, Descriptor* output,
                          Child* child) {
  Descriptor theirs;
  const Result<void> opened = openPipe(output, &theirs);
  if (!opened) return opened;
  const Descriptor messages(open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (!messages.isOpen()) return cannotWrite(log);
  program.descriptors = {kNullDevice, theirs.get(), messages.get()};
  if (child->start(program)) return {};
  return Failure{translated("Cannot start cupsfilter; install the package cups.")};
}

// The first line that reports an error, without its prefix.
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

Result<void> Rasteriser::start(const RasteriserJob& job) {
  job_ = job;
  Program program = cupsfilter(job);
  program.arguments.push_back(asOperand(job.document));
  return startProgram(program, job.log, &output_, &child_);
}

Result<void> Rasteriser::finish() {
  output_.reset();
  int status = 0;
  if (!child_.wait(&status)) return {};
  const bool readerGone = (WIFSIGNALED(status) && WTERMSIG(status) == SIGPIPE) ||
                          (WIFEXITED(status) && WEXITSTATUS(status) == 128 + SIGPIPE);
  if (status == 0 || readerGone) return {};
  std::string reason = firstError(job_.log);
  if (reason.empty()) reason = filled("exit status %d", WEXITSTATUS(status));
  return Failure{filled("Cannot convert %s to pages: %s", job_.document.c_str(), reason.c_str())};
}

Result<std::string> rasteriserChain(const RasteriserJob& job) {
  Program program = cupsfilter(job);
  program.arguments.insert(program.arguments.end(), {"--list-filters", asOperand(job.document)});
  const Result<ProgramOutput> output = runProgram(program, kNullDevice);
  if (!output) return output.failure();
  const std::string& text = output.value().text;
  if (output.value().waitStatus != 0)
    return Failure{translated("Cannot start cupsfilter; install the package cups.")};
  std::string names = text.substr(0, text.find_last_not_of('\n') + 1);
  std::replace(names.begin(), names.end(), '\n', ' ');
  return names;
}

// ---- Raster ----

Result<void> unpackRaster(const std::string& path, const std::string& target) {
  const CupsFile from(cupsFileOpen(path.c_str(), "r"));
  if (!from) return cannotRead(path);
  std::FILE* to = std::fopen(target.c_str(), "wb");
  if (to == nullptr) return cannotWrite(target);
  std::vector<char> bytes(kHeadBytes);
  ssize_t count = 0;
  bool good = true;
  while (good && (count = cupsFileRead(from.get(), bytes.data(), bytes.size())) > 0) {
    good =
        std::fwrite(bytes.data(), 1, static_cast<size_t>(count), to) == static_cast<size_t>(count);
  }
  good = std::fclose(to) == 0 && good;
  if (!good) return cannotWrite(target);
  return {};
}

Result<RasterPageInfo> readRasterPage(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) return cannotRead(path);
  const Raster raster(cupsRasterOpen(file.get(), CUPS_RASTER_READ));
  cups_page_header2_t header = {};
  if (!raster || cupsRasterReadHeader2(raster.get(), &header) == 0) return noPages();
  return RasterPageInfo{
      header.cupsWidth, header.cupsHeight, header.HWResolution[0],
      std::string(header.cupsPageSizeName,
                  strnlen(header.cupsPageSizeName, sizeof header.cupsPageSizeName))};
}

Result<RasterPage> readFirstPage(int descriptor) {
  const Raster from(cupsRasterOpen(descriptor, CUPS_RASTER_READ));
  RasterPage page;
  if (!from || cupsRasterReadHeader2(from.get(), &page.header) == 0) return noPages();
  const uint64_t size = uint64_t{page.header.cupsHeight} * page.header.cupsBytesPerLine;
  if (size == 0) return Failure{translated("The first page is empty.")};
  if (size > kMostPageBytes) return Failure{translated("The first page is too large to print.")};
  page.pixels.resize(size);
  const auto bytes = static_cast<unsigned>(size);
  if (cupsRasterReadPixels(from.get(), page.pixels.data(), bytes) != bytes) {
    return Failure{translated("The first page is not complete.")};
  }
  return page;
}

Result<void> writePage(const std::string& target, RasterPage* page) {
  const Descriptor file(open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (!file.isOpen()) return cannotWrite(target);
  const auto bytes = static_cast<unsigned>(page->pixels.size());
  const Raster to(cupsRasterOpen(file.get(), CUPS_RASTER_WRITE));
  if (!to || cupsRasterWriteHeader2(to.get(), &page->header) == 0 ||
      cupsRasterWritePixels(to.get(), page->pixels.data(), bytes) != bytes) {
    return cannotWrite(target);
  }
  return {};
}

Result<void> keepFirstPage(int descriptor, const std::string& target) {
  Result<RasterPage> page = readFirstPage(descriptor);
  if (!page) return page.failure();
  return writePage(target, &*page);
}

}  // namespace korvel
