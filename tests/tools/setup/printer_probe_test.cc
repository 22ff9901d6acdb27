// Status replies as bytes, addresses that can be asked, and the silence of a connection.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/printer_probe.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <string>
#include <thread>

#include "tools/common/process.h"

namespace {

using korvel::Descriptor;
using korvel::PrinterAnswer;

std::string bytes(const char* hex) {
  std::string all;
  for (const char* at = hex; *at != 0; at += at[2] == ' ' ? 3 : 2) {
    all.push_back(static_cast<char>(std::stoi(std::string(at, 2), nullptr, 16)));
  }
  return all;
}

TEST(PrinterProbe, ReadsTheStatusWord) {
  const struct {
    const char* sentence;
    const char* reply;
    bool answers, coverOpen, noPaper;
  } kCases[] = {
      {"ready", "64 FF 00 08 00 00 00 80 00 00 00 00 00", true, false, false},
      {"cover open", "64 FF 00 08 00 00 00 01 00 00 00 00 00", true, true, false},
      {"no paper", "64 FF 00 08 00 00 00 08 00 00 00 00 00", true, false, true},
      {"both, in the shortest reply", "64 FF 00 00 00 00 00 09 00", true, true, true},
      {"other bits", "64 FF 01 01 01 FF FF F6 FF", true, false, false},
      {"a reply that is cut off", "64 FF 00 08 00 00 00 09", false, false, false},
      {"another program", "48 54 54 50 2F 31 2E 31 20 34 30 30", false, false, false},
  };
  for (const auto& c : kCases) {
    const std::string reply = bytes(c.reply);
    const korvel::PrinterReply have =
        korvel::parseReply(reinterpret_cast<const unsigned char*>(reply.data()), reply.size());
    EXPECT_EQ(have.answer == PrinterAnswer::kAnswers, c.answers) << c.sentence;
    EXPECT_EQ(have.coverOpen, c.coverOpen) << c.sentence;
    EXPECT_EQ(have.noPaper, c.noPaper) << c.sentence;
  }
}

TEST(PrinterProbe, AsksOnlyWhereAReplyCanBeRead) {
  EXPECT_TRUE(korvel::canBeAsked("socket://192.0.2.7"));
  EXPECT_TRUE(korvel::canBeAsked("korvel://192.0.2.7"));
  for (const char* uri : {"usb://Korvel/K220", "lpd://192.0.2.7/raw", "ipp://192.0.2.7/"}) {
    EXPECT_FALSE(korvel::canBeAsked(uri)) << uri;
    EXPECT_EQ(korvel::askPrinter(uri).answer, PrinterAnswer::kNotAsked) << uri;
    EXPECT_EQ(korvel::secondsOfSilence(uri), std::nullopt) << uri;
  }
}

// A program that accepts connections and never says anything.
class SilentListener {
 public:
  SilentListener() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address_;
    EXPECT_EQ(bind(socket_.get(), name(), size), 0);
    EXPECT_EQ(listen(socket_.get(), 4), 0);
    EXPECT_EQ(getsockname(socket_.get(), name(), &size), 0);
  }
  std::string uri() const {
    return "socket://127.0.0.1:" + std::to_string(ntohs(address_.sin_port));
  }
  sockaddr* name() { return reinterpret_cast<sockaddr*>(&address_); }

 private:
  Descriptor socket_;
  sockaddr_in address_ = {};
};

TEST(PrinterProbe, FindsASilentProgramAndNobody) {
  SilentListener listener;
  EXPECT_EQ(korvel::askPrinter(listener.uri()).answer, PrinterAnswer::kSilent);
  EXPECT_EQ(korvel::askPrinter("socket://127.0.0.1:1").answer, PrinterAnswer::kNotReached);
}

TEST(PrinterProbe, MeasuresTheSilenceOfAConnection) {
  SilentListener listener;
  EXPECT_EQ(korvel::secondsOfSilence(listener.uri()), std::nullopt);
  const Descriptor host(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  ASSERT_EQ(connect(host.get(), listener.name(), sizeof(sockaddr_in)), 0);
  if (!korvel::secondsOfSilence(listener.uri())) {
    GTEST_SKIP() << "this kernel does not report connections (no sock_diag)";
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  const std::optional<int> silence = korvel::secondsOfSilence(listener.uri());
  ASSERT_TRUE(silence.has_value());
  EXPECT_GE(*silence, 1);
}

}  // namespace
