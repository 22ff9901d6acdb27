// Command streams with wrong bytes and false ends, before the decoder: it names the offset or reads
// on, and never falls over. The emulated printer's like is PrinterMalformed.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <random>

#include "tests/hardening/hard_job.h"
#include "tests/support/temporary_folder.h"
#include "tools/stream/page_picture.h"
#include "tools/stream/stream_decoder.h"
#include "tools/stream/stream_listing.h"

namespace {

std::string realStream() {
  return runJob(stencilJob({"61x23 203dpi picture=noise:3", "16x6 203dpi picture=ramp",
                            "1728x5 203dpi picture=noise:1"},
                           "PostAction=Cut Occurrence=EveryPage AntiWrinkle=1"))
      .output;
}

// Decodes, lists and draws. Returns the error, empty for a sound stream.
std::string errorOf(const std::string& bytes) {
  korvel::PagePicture picture;
  korvel::StreamListing listing([](const std::string&) {});
  korvel::StreamDecoder decoder([&](const korvel::StreamItem& item) {
    listing.add(item);
    picture.add(item);
  });
  decoder.push(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  decoder.finish();
  listing.finish();
  return decoder.error();
}

// Whether an error is none or names an offset of the stream.
bool namesAnOffset(const std::string& error, size_t size) {
  if (error.empty()) return true;
  return error.starts_with("offset ") && std::stoul(error.substr(7)) <= size;
}

TEST(DamagedStream, CutAnywhereNamesItsEnd) {
  const std::string whole = realStream();
  ASSERT_EQ(errorOf(whole), "");
  size_t sound = 0;
  for (size_t kept = 0; kept < whole.size(); ++kept) {
    const std::string error = errorOf(whole.substr(0, kept));
    if (error.empty()) {
      ++sound;
      continue;
    }
    ASSERT_TRUE(error.starts_with("offset " + std::to_string(kept) + ": have the end"))
        << kept << ": " << error;
  }
  EXPECT_LT(sound, 80u) << "only between packets";
}

TEST(DamagedStream, AWrongByteAnywhereNamesAnOffset) {
  const std::string whole = realStream();
  for (size_t at = 0; at < whole.size(); ++at) {
    for (const int change : {0x01, 0x40, 0x80, 0xFF}) {
      std::string spoilt = whole;
      spoilt[at] = static_cast<char>(spoilt[at] ^ change);
      const std::string error = errorOf(spoilt);
      ASSERT_TRUE(namesAnOffset(error, whole.size())) << at << ": " << error;
      if (!error.empty()) {
        ASSERT_GE(std::stoul(error.substr(7)) + 64, at) << error;
      }
    }
  }
}

TEST(DamagedStream, NoiseNamesAnOffset) {
  std::mt19937 dice(1);
  for (int round = 0; round < 2000; ++round) {
    std::string noise(dice() % 400, '\0');
    for (char& byte : noise) byte = static_cast<char>(dice());
    if (round % 2 == 0) noise = bytesOf("64 43 00 04 00") + noise;
    if (round % 3 == 0) noise = bytesOf("64 03 00 FF FF") + noise;
    ASSERT_TRUE(namesAnOffset(errorOf(noise), noise.size())) << hexText(noise);
  }
}

struct Decoded {
  int status;
  std::string errors;
};

Decoded decodeByProgram(const TemporaryFolder& folder, const std::string& bytes) {
  folder.write("stream", bytes);
  const std::string command = std::string(KORVEL_DECODE) + " --png " + folder.file("page-") + " " +
                              folder.file("stream") + " > /dev/null 2> " + folder.file("errors");
  const int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, folder.read("errors")};
}

TEST(DecodeProgram, EndsInOrderOnDamagedStreams) {
  const TemporaryFolder folder;
  const std::string whole = realStream();
  EXPECT_EQ(decodeByProgram(folder, whole).status, 0);
  for (size_t at = 1; at < whole.size(); at += whole.size() / 25) {
    const Decoded cut = decodeByProgram(folder, whole.substr(0, at));
    EXPECT_TRUE(cut.status == 0 || cut.status == 1) << at;
    if (!errorOf(whole.substr(0, at)).empty()) {
      EXPECT_EQ(cut.status, 1) << at;
      EXPECT_NE(cut.errors.find("korvel-decode: offset " + std::to_string(at)), std::string::npos)
          << cut.errors;
    }
    std::string spoilt = whole;
    spoilt[at] = static_cast<char>(spoilt[at] ^ 0x55);
    const Decoded wrong = decodeByProgram(folder, spoilt);
    EXPECT_TRUE(wrong.status == 0 || wrong.status == 1) << at;
  }
}

}  // namespace
