// The print filter: one job from the spooler's arguments to its exit status.
// Reads raster pages one by one; printer bytes go to standard output, messages to standard error.
// SPDX-License-Identifier: Apache-2.0
#include <cups/raster.h>
#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "driver/inherited_state.h"
#include "driver/page_sequence.h"
#include "driver/settings_reader.h"
#include "driver/waiting_stream.h"
#include "printer/log.h"
#include "printer/own_file.h"
#include "printer/text.h"
#include "protocol/job_sequence.h"
#include "protocol/korvel_printer.h"

const char* const sVersion = "1.0.0";

namespace {

KorvelPrinter* sPrinter = nullptr;  // borrowed from the job while it runs

constexpr int kReservedDescriptors = 5;  // standard streams, back channel, side channel
constexpr uint64_t kMaxPageBytes = uint64_t{256} << 20;
constexpr double kMillimetresPerInch = 25.4;

struct CFileCloser {
  void operator()(FILE* file) const { std::fclose(file); }
};

struct RasterCloser {
  void operator()(cups_raster_t* raster) const { cupsRasterClose(raster); }
};

struct Free {
  void operator()(unsigned char* bytes) const { std::free(bytes); }
};

// The raster input; a file is closed with it, standard input is not.
class RasterInput {
 public:
  RasterInput() = default;
  RasterInput(const RasterInput&) = delete;
  RasterInput& operator=(const RasterInput&) = delete;
  ~RasterInput() {
    if (descriptor_ != STDIN_FILENO) close(descriptor_);
  }
  bool openFile(const char* path) {
    descriptor_ = open(path, O_RDONLY);
    return descriptor_ != -1;
  }
  int descriptor() const { return descriptor_; }

 private:
  int descriptor_ = STDIN_FILENO;
};

// What one job owns. Clean-up goes upwards: pixels, raster, input, copy file, printer.
struct Job {
  Job() = default;
  Job(const Job&) = delete;
  Job& operator=(const Job&) = delete;
  ~Job() { sPrinter = nullptr; }

  Settings settings{};
  cups_page_header2_t header{};
  std::unique_ptr<KorvelPrinter> printer;
  std::unique_ptr<FILE, CFileCloser> copyFile;
  RasterInput input;
  std::unique_ptr<cups_raster_t, RasterCloser> raster;
  std::unique_ptr<unsigned char, Free> pixels;
  int32_t page = 0;  // pages printed
};

// Ends the process at once. Not by exit: that would flush to a printer that may have stalled, or
// lock a heap that is just being changed.
void terminalJob(int /*signal*/) { _exit(1); }

void installTerminationHandler() {
  struct sigaction action {};
  action.sa_handler = terminalJob;
  sigaction(SIGTERM, &action, nullptr);
}

// The spooler's processes share standard error: a line leaves whole, or it gets torn.
void bufferMessagesByLine() {
  static char buffer[16384];
  stderr = openWaitingStream(stderr);
  std::setvbuf(stderr, buffer, _IOLBF, sizeof buffer);
}

// Packets leave in blocks as large as a pipe holds. Whoever waits for an answer or ends a page
// flushes.
void bufferPackets() {
  static char buffer[65536];
  stdout = openWaitingStream(stdout);
  std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
}

// What a page frees stays in the heap, its memory in place, for the next page; the limits are those
// that the allocator reaches by itself on large pages. Only for jobs of some length: memory kept is
// memory held, and after two pages a job has held as much already.
void keepFreedMemory() {
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, 64 << 20);
}

// Occupies closed descriptors, so that no file of ours lands on a channel of the spooler.
void reserveDescriptors() {
  for (int descriptor = 0; descriptor < kReservedDescriptors; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) == -1) open("/dev/null", O_RDWR);
  }
}

void printUsage(const char* program) {
  const char* name = pellamPathGetBasename(program);
  std::fprintf(stderr, "%s v%s\n\nUsage:\n\n    %s job_id user title copyies options [file]\n\n",
               name, sVersion, name);
}

void openCopyFile(Job& job) {
  if (job.settings.FilterOutputPath[0] == '\0') return;
  job.copyFile.reset(std::fopen(job.settings.FilterOutputPath, "w"));
  pellamLogCommon(0, "Filter data output to: %s", job.settings.FilterOutputPath);
  job.printer->getOutputStreams().push_back(job.copyFile.get());
}

bool hasPaperSize(const Settings& settings) {
  for (const float side : {settings.pageWidth, settings.pageHeight}) {
    if (1.0f < side) continue;
    std::fprintf(stderr, "ERROR: Paper size must not less than 1.0 : (%f, %f)\n",
                 static_cast<double>(settings.pageWidth), static_cast<double>(settings.pageHeight));
    return false;
  }
  return true;
}

// Leaves the page's measures where a person in need finds them. A failure is ignored.
void notePageSize(const cups_page_header2_t& header) {
  constexpr const char* kPath = "/tmp/xxxxx.log";
  if (!pellamDumpsAreOn()) return;
  OwnFile file = pellamOpenOwnFile(kPath, DiskReserve::kNone);
  if (file.state != OwnFileState::kOpen) return;
  std::fprintf(
      file.stream, "cupsWidth:%d, cupsHeight:%d, cupsBytesPerLine:%d, cupsBitsPerPixel:%d\n",
      static_cast<int>(header.cupsWidth), static_cast<int>(header.cupsHeight),
      static_cast<int>(header.cupsBytesPerLine), static_cast<int>(header.cupsBitsPerPixel));
  pellamCloseOwnFile(&file, kPath);
}

// Makes room for the page's pixels. Returns false for a page that cannot be held.
bool makeRoom(Job& job) {
  const cups_page_header2_t& header = job.header;
  const uint64_t size = uint64_t{header.cupsHeight} * header.cupsBytesPerLine;
  if (header.cupsBytesPerLine < header.cupsWidth) {
    pellamLogCommon(3, "Page rows too short : have %u bytes, want %u pixels!",
                    header.cupsBytesPerLine, header.cupsWidth);
    return false;
  }
  if (size > kMaxPageBytes) {
    pellamLogCommon(3, "Page too large : have %llu bytes, want at most %llu!",
                    static_cast<unsigned long long>(size),
                    static_cast<unsigned long long>(kMaxPageBytes));
    return false;
  }
  auto* grown = static_cast<unsigned char*>(std::realloc(job.pixels.get(), size));
  if (grown == nullptr) return false;
  static_cast<void>(job.pixels.release());  // grown stands for it now
  job.pixels.reset(grown);
  return true;
}

// A field as the number that it is: a raster may carry one that an enumerated type does not have.
template <typename Field>
int numberIn(const Field& field) {
  int number = 0;
  static_assert(sizeof number == sizeof field);
  std::memcpy(&number, &field, sizeof number);
  return number;
}

void logHeader(const cups_page_header2_t& header, int32_t page) {
  pellamLogCommon(0, "PAGE: %d %d\n", page, static_cast<int>(header.NumCopies));
  pellamLogCommon(0, "header.HWResolution[0]:%d\n", static_cast<int>(header.HWResolution[0]));
  pellamLogCommon(0, "header.HWResolution[1]:%d", static_cast<int>(header.HWResolution[1]));
  pellamLogCommon(0, "header.cupsWidth:%d", static_cast<int>(header.cupsWidth));
  pellamLogCommon(0, "header.cupsHeight:%d", static_cast<int>(header.cupsHeight));
  pellamLogCommon(0, "header.cupsMediaType:%d", static_cast<int>(header.cupsMediaType));
  pellamLogCommon(0, "header.cupsBitsPerColor:%d", static_cast<int>(header.cupsBitsPerColor));
  pellamLogCommon(0, "header.cupsBitsPerPixel:%d", static_cast<int>(header.cupsBitsPerPixel));
  pellamLogCommon(0, "header.cupsBytesPerLine:%d", static_cast<int>(header.cupsBytesPerLine));
  pellamLogCommon(0, "header.cupsColorOrder:%d", numberIn(header.cupsColorOrder));
  pellamLogCommon(0, "header.cupsColorSpace:%d", numberIn(header.cupsColorSpace));
  pellamLogCommon(0, "header.cupsCompression:%d", static_cast<int>(header.cupsCompression));
  pellamLogCommon(0, "header.cupsRowCount:%d", static_cast<int>(header.cupsRowCount));
  pellamLogCommon(0, "header.cupsRowFeed:%d", static_cast<int>(header.cupsRowFeed));
  pellamLogCommon(0, "header.cupsRowStep:%d", static_cast<int>(header.cupsRowStep));
}

float millimetres(unsigned int dots, unsigned int resolution) {
  const double length = dots * kMillimetresPerInch / resolution;
  // No dots at no resolution: processors differ in the sign of what is no number, and the log
  // would show it.
  if (std::isnan(length)) return -std::numeric_limits<float>::quiet_NaN();
  return static_cast<float>(length);
}

// Prints page after page. Returns true at the end of the input, false when a page cannot be
// printed; a page whose pixels cannot be read is left out.
bool printPages(Job& job) {
  cups_page_header2_t& header = job.header;
  while (cupsRasterReadHeader2(job.raster.get(), &header) != 0) {
    if (header.cupsBitsPerPixel != 8) {
      pellamLogCommon(3, "Unsupported bits per pixel : %d ! Requires 8 bits per pixel!",
                      static_cast<int>(header.cupsBitsPerPixel));
      return false;
    }
    if (header.cupsHeight == 0 || header.cupsBytesPerLine == 0) return true;
    notePageSize(header);
    if (!makeRoom(job)) return false;
    job.settings.pageWidth = millimetres(header.cupsWidth, header.HWResolution[0]);
    job.settings.pageHeight = millimetres(header.cupsHeight, header.HWResolution[1]);
    pellamLogCommon(0, "pageWidth: %f,pageHeight: %f", static_cast<double>(job.settings.pageWidth),
                    static_cast<double>(job.settings.pageHeight));
    startPage(job.printer.get(), &job.settings, &header);
    logHeader(header, job.page);
    const unsigned int size = header.cupsHeight * header.cupsBytesPerLine;  // makeRoom limits it
    if (cupsRasterReadPixels(job.raster.get(), job.pixels.get(), size) == 0) continue;
    printPage(job.printer.get(), job.settings, header, job.pixels.get(), job.page);
    if (++job.page == 2) keepFreedMemory();
  }
  return true;
}

// Returns whether the whole job was printed.
bool runJob(Job& job, int argc, char** argv) {
  if (argc < 6) {
    printUsage(argv[0]);
    return false;
  }
  if (argc >= 7 && argv[6] != nullptr && !job.input.openFile(argv[6])) {
    std::fprintf(stderr, "ERROR: Unable to open raster file - ");
    return false;
  }
  job.printer = std::make_unique<KorvelPrinter>();
  sPrinter = job.printer.get();
  if (!parseSettings(&job.settings, argv[5])) return false;
  openCopyFile(job);
  if (!hasPaperSize(job.settings)) return false;
  job.raster.reset(cupsRasterOpen(job.input.descriptor(), CUPS_RASTER_READ));
  if (!printPages(job)) return false;

  jobEnd(sPrinter, &job.settings);
  for (FILE* stream : job.printer->getOutputStreams()) std::fflush(stream);
  std::fprintf(stderr, "STATE: -media-empty-warning\n");
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  installTerminationHandler();  // first: what comes earlier ends the process by the signal itself
  restoreInheritedState();
  reserveDescriptors();
  bufferMessagesByLine();
  bufferPackets();
  try {
    Job job;
    return runJob(job, argc, argv) ? 0 : 1;
  } catch (const std::bad_alloc&) {
    pellamLogCommon(3, "main: Memory allocation failed, ending the job");
    return 1;
  }
}
