// A whole job in this process: an arbitrary raster stream under arbitrary options, through the
// filter's own main. It must end with 0 or 1, its stream must be whole packets, and every line of
// its messages must begin as the filter's do.
// First line: label or stencil, "/" and a model name if the printer reports, then the options.
// The rest is the raster stream.
// SPDX-License-Identifier: Apache-2.0
#include <cups/raster.h>
#include <cups/sidechannel.h>
#include <dlfcn.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "fuzz/caught_streams.h"
#include "fuzz/demand.h"
#include "fuzz/header_line.h"
#include "fuzz/short_sleep.h"
#include "protocol/korvel_printer.h"
#include "tests/support/temporary_folder.h"
#include "tools/stream/stream_decoder.h"

extern uint64_t page_index;

int filterMain(int argc, char** argv);  // driver/main.cc, renamed

namespace {

// Larger pages and frames say nothing new here and take all the time.
constexpr uint64_t kMaxPixels = uint64_t{1} << 18;
constexpr uint32_t kMaxFrameResolution = 60;
constexpr uint32_t kMaxPages = 20;

uint32_t pages = 0;          // headers read by the job
bool framesAreHuge = false;  // a frame of level -1 is a million dots wide
bool asked = false;          // the printer was asked for its state and has not answered yet
uint32_t requests = 0;

// Where the job's files go: a folder in place of the spooler's, emptied after each job.
class Places {
 public:
  Places() : raster_(memfd_create("raster", MFD_CLOEXEC)) {
    std::filesystem::create_directory(folder_.file("dumps"));
    setenv("KORVEL_SANDBOX", folder_.path().c_str(), 1);
  }

  std::string rasterPath() const { return "/proc/self/fd/" + std::to_string(raster_); }

  void setRaster(std::string_view bytes) const {
    const bool written =
        ftruncate(raster_, 0) == 0 &&
        pwrite(raster_, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size());
    demand(written, "the raster can be written");
  }

  void empty() const {
    for (const auto& entry : std::filesystem::directory_iterator(folder_.file("dumps"))) {
      std::filesystem::remove(entry.path());
    }
  }

  // "stencil/Z4": a PPD of the tests, with another model name; "label" otherwise.
  void choosePrinter(std::string_view words) {
    const std::string name = words.starts_with("stencil") ? "stencil" : "label";
    std::string model;
    for (const char* reporting : {"R57", "K220", "M6", "Z4"}) {
      if (words.ends_with(reporting)) model = reporting;
    }
    std::string& path = descriptions_[name + model];
    if (path.empty()) path = folder_.write(name + model + ".ppd", description(name, model));
    setenv("PPD", path.c_str(), 1);
  }

 private:
  static std::string description(const std::string& name, const std::string& model) {
    std::ifstream in(std::string(KORVEL_TEST_PPD_DIR) + "/" + name + ".ppd");
    std::string text;
    for (std::string line; std::getline(in, line);) {
      const bool ours = !model.empty() && line.starts_with("*ModelName:");
      text += (ours ? "*ModelName: \"" + model + "\"" : line) + "\n";
    }
    demand(!text.empty(), "the tests' printer descriptions can be read");
    return text;
  }

  int raster_;
  TemporaryFolder folder_;
  std::map<std::string, std::string> descriptions_;
};

// Each message is one line that begins as one of the filter's; a text of the options that brought
// a line end along would make one that does not.
void demandMessages(const std::string& messages, int status) {
  static const char* const kBegins[] = {
      "DEBUG:", "WARN:", "ERROR:", "CRIT:", "INFO: ", "STATE:", "PellamPrinter::saveImage: "};
  size_t from = 0;
  std::string last;
  while (from < messages.size()) {
    const size_t end = std::min(messages.find('\n', from), messages.size());
    const std::string line = messages.substr(from, end - from);
    from = end + 1;
    if (line.empty()) continue;  // some messages end their line twice
    bool known = false;
    for (const char* begin : kBegins) known = known || line.starts_with(begin);
    demand(known, "a message begins as the filter's do: " + line);
    last = line;
  }
  demand((status == 0) == (last == "STATE: -media-empty-warning"),
         "status 0 goes with the job's last message");
}

void demandStream(const std::string& stream) {
  korvel::StreamDecoder decoder([](const korvel::StreamItem&) {});
  decoder.push(reinterpret_cast<const uint8_t*>(stream.data()), stream.size());
  decoder.finish();
  demand(decoder.error().empty(), "the stream is whole packets: " + decoder.error());
}

// Runs the job as the spooler would; returns its exit status.
int runJob(const std::string& options, const std::string& raster) {
  std::string words[] = {"rastertokorvel", "1", "user", "title", "1", options, raster};
  char* arguments[8] = {};
  for (size_t i = 0; i < 7; ++i) arguments[i] = words[i].data();
  struct sigaction kept {};
  sigaction(SIGTERM, nullptr, &kept);
  bNeedGoBack = 0;
  page_index = 0;
  pages = 0;
  requests = 0;
  const char* ppd = std::getenv("PPD");
  framesAreHuge = std::strstr(ppd, "stencil") == nullptr || options.find("-1") != std::string::npos;
  const ShortSleep shortSleep;
  const int status = filterMain(7, arguments);
  sigaction(SIGTERM, &kept, nullptr);
  return status;
}

}  // namespace

// ---- in place of the libraries' ----

// The raster library reserves a line of any length that a header claims; a sanitizer takes seconds
// for gigabytes, so it refuses them.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer's name for it
extern "C" const char* __asan_default_options() {
  return "max_allocation_size_mb=300:allocator_may_return_null=1";
}

extern "C" unsigned cupsRasterReadHeader2(cups_raster_t* raster, cups_page_header2_t* header) {
  using Reader = unsigned (*)(cups_raster_t*, cups_page_header2_t*);
  static const auto read = reinterpret_cast<Reader>(dlsym(RTLD_NEXT, "cupsRasterReadHeader2"));
  if (read(raster, header) == 0 || ++pages > kMaxPages) return 0;
  const bool framed = header->cupsPageSizeName[0] == 'A' || header->cupsPageSizeName[0] == 'L' ||
                      header->cupsPageSizeName[0] == 'T';
  if (framed && (framesAreHuge || header->HWResolution[0] > kMaxFrameResolution)) return 0;
  return uint64_t{header->cupsBytesPerLine} * header->cupsHeight <= kMaxPixels ? 1 : 0;
}

// The printer is ready each first time it is asked, and its sheet is out each second time.
extern "C" cups_sc_status_t cupsSideChannelDoRequest(cups_sc_command_t, char*, int*, double) {
  asked = true;
  ++requests;
  return CUPS_SC_STATUS_OK;
}

extern "C" ssize_t cupsBackChannelRead(char* buffer, size_t, double) {
  if (!asked) return 0;
  asked = false;
  char reply[13] = {'\x64', '\xFF'};
  reply[7] = requests % 2 != 0 ? '\x80' : '\x08';
  std::memcpy(buffer, reply, sizeof reply);
  return sizeof reply;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count) {
  static Places places;
  HeaderLine line(bytes, count);
  places.choosePrinter(line.word());
  places.setRaster(line.rest());

  CatchStreams caught;
  const int status = runJob(std::string(line.remainder()), places.rasterPath());
  demand(status == 0 || status == 1, "the job ends with 0 or 1");
  demandStream(caught.out());
  demandMessages(caught.messages(), status);
  places.empty();
  return 0;
}
