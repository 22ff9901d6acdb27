// An arbitrary PPD with arbitrary options: the settings record always follows its rules. The first
// line is the job's option string, the rest is the PPD.
// SPDX-License-Identifier: Apache-2.0
#include "driver/settings_reader.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz/caught_streams.h"
#include "fuzz/demand.h"
#include "fuzz/header_line.h"

namespace {

// A file in memory that the variable PPD names.
class Description {
 public:
  Description() : descriptor_(memfd_create("ppd", MFD_CLOEXEC)) {
    setenv("PPD", ("/proc/self/fd/" + std::to_string(descriptor_)).c_str(), 1);
  }

  void set(std::string_view text) const {
    const bool written =
        ftruncate(descriptor_, 0) == 0 &&
        pwrite(descriptor_, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size());
    demand(written, "the description can be written");
  }

 private:
  int descriptor_;
};

template <size_t kSize>
void demandEnd(const char (&text)[kSize], const char* field) {
  demand(std::memchr(text, '\0', kSize) != nullptr, std::string(field) + " has no end");
}

void demandRules(const Settings& settings) {
  demandEnd(settings.ModelName, "ModelName");
  demandEnd(settings.PageSize, "PageSize");
  demandEnd(settings.Resolution, "Resolution");
  demandEnd(settings.MediaMethod, "MediaMethod");
  demandEnd(settings.PaperType, "PaperType");
  demandEnd(settings.PostAction, "PostAction");
  demandEnd(settings.Occurrence, "Occurrence");
  demandEnd(settings.Origin, "Origin");
  demandEnd(settings.PrintSpeed, "PrintSpeed");
  demand(settings.FilterOutputPath[0] == '\0', "no option names a copy file");
  demand(settings.Rotate180 == (std::strcmp(settings.Origin, "Rotation180") == 0 ? 1 : 0),
         "the turn follows Origin");
  demand(settings.IsTattooPrinter == (settings.AntiWrinkle != -1 ? 1 : 0),
         "a stencil printer is one with AntiWrinkle");
  demand(settings.halftoneType >= 0 && settings.halftoneType <= 9, "the halftone is one of ten");
  demand(settings.Darkness == 0 || settings.Darkness == 1 || settings.Darkness == 8 ||
             settings.Darkness == 15,
         "the density is one of four");
  demand(settings.MirrorImage >= -128 && settings.MirrorImage <= 127, "MirrorImage has 8 bits");
  demand(settings.NegativeImage >= -128 && settings.NegativeImage <= 127,
         "NegativeImage has 8 bits");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count) {
  static const Description description;
  const HeaderLine line(bytes, count);
  description.set(line.rest());
  const std::string options(line.remainder());

  CatchStreams caught;
  Settings settings;
  std::memset(&settings, 0x5A, sizeof settings);  // nothing may be left as it was
  parseSettings(&settings, options.c_str());
  demandRules(settings);
  const std::string first = caught.messages();

  CatchStreams again;
  Settings second;
  std::memset(&second, 0xA5, sizeof second);
  parseSettings(&second, options.c_str());
  demandSame(again.messages(), first, "the logs of two readings");
  return 0;
}
