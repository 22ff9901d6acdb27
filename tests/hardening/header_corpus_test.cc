// Headers that no rasteriser writes: whatever they say, the page prints by the rules or the job
// ends with one line that says why; and nothing is reserved for pixels that nobody sends.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstring>

#include "tests/hardening/hard_job.h"

namespace {

using Header = cups_page_header2_t;

// Enumerated fields get numbers that their types do not have.
template <typename Field>
void put(Field* field, unsigned value) {
  static_assert(sizeof *field == sizeof value);
  std::memcpy(field, &value, sizeof value);
}

struct Case {
  const char* sentence;
  void (*spoil)(Header*);
  int status;
  const char* shape;  // one letter a packet
  size_t errors;      // lines
};

// A header that the spooler's library refuses is the end of the input.
const char kPrints[] = "S(d)(I)()";
const char kEnds[] = "()";

const Case kCases[] = {
    {"nothing spoilt", [](Header*) {}, 0, kPrints, 0},
    {"a width below the line", [](Header* h) { h->cupsWidth = 7; }, 0, kPrints, 0},
    {"a line shorter than the width", [](Header* h) { h->cupsWidth = 9; }, 1, "", 1},
    {"a width of 2^32 - 1", [](Header* h) { h->cupsWidth = ~0u; }, 1, "", 1},
    {"width 0: a page without an image, and the job goes on", [](Header* h) { h->cupsWidth = 0; },
     0, "S(d)()()", 1},
    {"no rows", [](Header* h) { h->cupsHeight = 0; }, 0, kEnds, 0},
    {"no bytes", [](Header* h) { h->cupsBytesPerLine = 0; }, 0, kEnds, 0},
    {"planar, one colour", [](Header* h) { put(&h->cupsColorOrder, 2); }, 0, kPrints, 0},
    {"planar, three colours: the first plane prints",
     [](Header* h) {
       put(&h->cupsColorOrder, 2);
       h->cupsColorSpace = CUPS_CSPACE_RGB;
       h->cupsNumColors = 3;
     },
     0, kPrints, 0},
    {"banded, one colour", [](Header* h) { put(&h->cupsColorOrder, 1); }, 0, kPrints, 0},
    {"banded, three colours",
     [](Header* h) {
       put(&h->cupsColorOrder, 1);
       h->cupsColorSpace = CUPS_CSPACE_RGB;
       h->cupsNumColors = 3;
     },
     0, kPrints, 0},
    {"a colour order of no name", [](Header* h) { put(&h->cupsColorOrder, ~0u); }, 0, kPrints, 0},
    {"a colour space of no name", [](Header* h) { put(&h->cupsColorSpace, ~0u); }, 0, kPrints, 0},
    {"0 bits a colour", [](Header* h) { h->cupsBitsPerColor = 0; }, 0, kEnds, 0},
    {"1 bit a colour", [](Header* h) { h->cupsBitsPerColor = 1; }, 0, kPrints, 0},
    {"16 bits a colour", [](Header* h) { h->cupsBitsPerColor = 16; }, 0, kPrints, 0},
    {"2^32 - 1 bits a colour", [](Header* h) { h->cupsBitsPerColor = ~0u; }, 0, kEnds, 0},
    {"0 bits a pixel", [](Header* h) { h->cupsBitsPerPixel = 0; }, 0, kEnds, 0},
    {"1 bit a pixel", [](Header* h) { h->cupsBitsPerPixel = 1; }, 1, "", 1},
    {"7 bits a pixel", [](Header* h) { h->cupsBitsPerPixel = 7; }, 1, "", 1},
    {"9 bits a pixel", [](Header* h) { h->cupsBitsPerPixel = 9; }, 1, "", 1},
    {"24 bits a pixel in lines of 8 bytes", [](Header* h) { h->cupsBitsPerPixel = 24; }, 0, kEnds,
     0},
    {"2^32 - 1 bits a pixel", [](Header* h) { h->cupsBitsPerPixel = ~0u; }, 0, kEnds, 0},
    {"no colours", [](Header* h) { h->cupsNumColors = 0; }, 0, kPrints, 0},
    {"2^32 - 1 colours", [](Header* h) { h->cupsNumColors = ~0u; }, 0, kPrints, 0},
    {"2^32 - 1 rows", [](Header* h) { h->cupsHeight = ~0u; }, 1, "", 1},
    {"2^32 - 1 bytes a line", [](Header* h) { h->cupsBytesPerLine = ~0u; }, 0, kEnds, 0},
    {"numbers that nobody reads",
     [](Header* h) {
       h->cupsCompression = h->cupsRowCount = h->cupsRowFeed = h->cupsRowStep = ~0u;
       h->NumCopies = h->cupsMediaType = ~0u;
       std::memset(h->cupsString, 0xFF, sizeof h->cupsString);
     },
     0, kPrints, 0},
    {"all bits set", [](Header* h) { std::memset(h, 0xFF, sizeof *h); }, 0, kEnds, 0},
    {"all bits clear", [](Header* h) { *h = Header{}; }, 0, kEnds, 0},
};

TEST(HeaderCorpus, PrintsByTheRulesOrSaysWhyNot) {
  std::string leftOut;
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    Header header = plainHeader();
    c.spoil(&header);
    const JobPlan plan = rawJob(header, std::string(32, '\xFF'));
    if (std::string(c.shape) != kEnds && !libraryReads(plan.input)) {
      leftOut += std::string("; ") + c.sentence;
      continue;
    }
    const JobResult job = runJob(plan);
    EXPECT_EQ(disorderOf(job), "");
    EXPECT_EQ(job.exitStatus, c.status);
    EXPECT_EQ(shape(job.output), c.shape);
    EXPECT_EQ(errorLines(job.messages), c.errors) << job.messages;
  }
  // The others have been tried.
  if (!leftOut.empty()) GTEST_SKIP() << kLibraryRefuses << leftOut;
}

TEST(HeaderCorpus, EveryColourSpaceIsTakenAsBytes) {
  JobPlan plan = labelJob({});
  std::string want;
  for (unsigned space = 0; space < 64; ++space) {
    Header header = plainHeader(5, 1);
    put(&header.cupsColorSpace, space);
    if (!libraryReads(rawJob(header, "").input))
      GTEST_SKIP() << kLibraryRefuses << ": colour space " << space;
    plan.input += headerBytes(header) + bytesOf("00 FF 00 80 81");
    want += space == 0 ? "48" : " | 48";
  }
  const JobResult job = runJob(plan);
  EXPECT_EQ(disorderOf(job), "");
  EXPECT_EQ(imageHex(job.output), want);
}

TEST(HeaderCorpus, AnyResolutionPrints) {
  struct Resolution {
    unsigned dpi;
    const char* area;  // centred on 2592 dots
    const char* size;  // as logged
  };
  const Resolution kResolutions[] = {
      {0, "area offset 1288 width 8", "pageWidth: inf,pageHeight: inf\n"},
      {1, "area offset 1288 width 8", "pageWidth: 203.199997,pageHeight: 101.599998\n"},
      {0x80000000u, "area offset 1288 width 8", "pageWidth: 0.000000,pageHeight: 0.000000\n"},
      {~0u, "area offset 1288 width 8", "pageWidth: 0.000000,pageHeight: 0.000000\n"},
  };
  for (const Resolution& c : kResolutions) {
    SCOPED_TRACE(c.dpi);
    Header header = plainHeader();
    header.HWResolution[0] = header.HWResolution[1] = c.dpi;
    const JobResult job = runJob(rawJob(header, std::string(32, '\xFF')));
    EXPECT_EQ(disorderOf(job), "");
    EXPECT_EQ(job.exitStatus, 0);
    EXPECT_EQ(countOf(readStream(job.output).text(), c.area), 1u);
    EXPECT_EQ(countOf(job.messages, c.size), 1u) << job.messages;
    EXPECT_EQ(imageHex(job.output), "FF FF FF FF");
  }
}

// Needs under 16 MiB and 10 ms; a second and four times the memory are for a busy machine.
void expectCheapRefusal(const JobResult& job) {
  EXPECT_EQ(disorderOf(job), "");
  EXPECT_EQ(job.exitStatus, 1);
  EXPECT_EQ(errorLines(job.messages), 1u) << job.messages;
  if (underSanitizer() || underMemcheck()) return;  // their own memory counts
  EXPECT_LT(job.peakKilobytes, 64 * 1024);
}

TEST(ImpossiblePages, AreRefusedBeforeAnythingIsReserved) {
  struct Size {
    const char* sentence;
    unsigned width;
    unsigned height;
  };
  const Size kSizes[] = {
      {"the product is 2^32", 1u << 16, 1u << 16},
      {"the product is 2^32 + 4, which 32 bits take for 4", 1431655766u, 6},
      {"the product is nearly 2^63", (1u << 31) - 8, ~0u},
      {"one row above the limit", 1u << 14, (1u << 14) + 1},
      {"one byte above the limit", (1u << 28) + 1, 1},
  };
  std::string leftOut;
  for (const Size& c : kSizes) {
    SCOPED_TRACE(c.sentence);
    JobPlan plan = rawJob(plainHeader(c.width, c.height), "");
    if (!libraryReads(plan.input)) {
      leftOut += std::string("; ") + c.sentence;
      continue;
    }
    plan.inputStaysOpen = true;  // the header alone must do
    expectCheapRefusal(runJob(plan));
  }
  if (!leftOut.empty()) GTEST_SKIP() << kLibraryRefuses << leftOut;
}

TEST(ImpossiblePages, ASmallCompressedStreamClaimsAGigabyte) {
  // Two bytes per run: a row of 32768 is 256 runs, and one row is repeated 256 times.
  std::string row(1, '\xFF');
  for (int run = 0; run < 256; ++run) row += bytesOf("7F AA");
  std::string stream;
  const unsigned word = CUPS_RASTER_SYNCv2;
  // The compressed form is in network order.
  for (int shift = 24; shift >= 0; shift -= 8) stream += static_cast<char>(word >> shift);
  Header header = plainHeader(32768, 32768);
  std::string bytes = headerBytes(header);
  for (size_t at = offsetof(Header, AdvanceDistance); at + 4 <= offsetof(Header, cupsString);
       at += 4) {
    std::swap(bytes[at], bytes[at + 3]);
    std::swap(bytes[at + 1], bytes[at + 2]);
  }
  for (int i = 0; i < 6; ++i) bytes += row;
  ASSERT_LT(bytes.size(), 5120u);
  JobPlan plan = labelJob({});
  plan.input = stream + bytes;
  const JobResult job = runJob(plan);
  expectCheapRefusal(job);
  EXPECT_EQ(countOf(job.messages, "Page too large : have 1073741824 bytes"), 1u) << job.messages;
}

}  // namespace
