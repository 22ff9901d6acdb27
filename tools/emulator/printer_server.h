// The emulated printer on its ports: one poll loop over a host's connection, the control port and
// the clock. Listens on the loopback address only, or reads a stream from standard input.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_EMULATOR_PRINTER_SERVER_H
#define KORVEL_TOOLS_EMULATOR_PRINTER_SERVER_H

#include <csignal>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/emulator/printer_line.h"
#include "tools/emulator/printer_world.h"
#include "tools/stream/stream_decoder.h"

namespace korvel {

struct ServerOptions {
  PrinterBody body;
  int port = 9100;                 // 0: a free one
  std::optional<int> controlPort;  // 0: a free one
  bool standardInput = false;      // instead of the port
  int replyDescriptor = -1;        // of standard input's replies; -1: nowhere
  std::string folder;              // of the pictures; empty: none are written
  bool pages = false;              // write the pages without their sheets as well
  bool once = false;               // end when the first connection has closed
  bool quiet = false;              // no events
  std::vector<Scenario> scenarios;
};

// A descriptor of ours, closed when it goes.
class OwnDescriptor {
 public:
  explicit OwnDescriptor(int fd = -1) : fd_(fd) {}
  OwnDescriptor(const OwnDescriptor&) = delete;
  OwnDescriptor& operator=(const OwnDescriptor&) = delete;
  ~OwnDescriptor() { reset(); }

  int get() const { return fd_; }
  bool isOpen() const { return fd_ >= 0; }
  void reset(int fd = -1);

 private:
  int fd_;
};

class PrinterServer {
 public:
  explicit PrinterServer(const ServerOptions& options);

  // Opens the ports and prints those that were picked, a line each. Returns an empty text, or one
  // sentence on what went wrong.
  std::string open();

  // Serves until a signal, "quit", or the end that the options ask for. SIGTERM and SIGINT must
  // be blocked; `stopped` says that one has been delivered. False when a picture was not written.
  bool run(const volatile std::sig_atomic_t& stopped);

 private:
  void poll();
  bool isDone() const;
  std::optional<Micros> nextMoment() const;
  void attach(int readFd, int writeFd);
  void detach(const std::string& how);
  bool mayRead() const;
  void readStream();
  void takeItem(const StreamItem& item);
  void malformed();
  void answerStatus();
  void sendDue();
  void acceptControl();
  void readControl();
  void takeControlLine(const std::string& line);
  bool apply(const Scenario& scenario);
  void writePage(unsigned number, const PagePicture& page);
  void writeSheet(unsigned number, const SheetPicture& sheet, const char* what);
  void event(const std::string& line) const;
  void note(const std::string& what, bool hasShape, const std::string& fault);

  ServerOptions options_;
  PrinterWorld world_;
  PrinterLine line_;
  Micros now_ = 0;

  OwnDescriptor listener_, connection_;
  int readFd_ = -1;   // connection_, or standard input
  int writeFd_ = -1;  // connection_, the reply descriptor, or none
  bool ending_ = false;
  bool quit_ = false;
  bool dropping_ = false;  // the stream broke: what still comes is thrown away
  bool failed_ = false;
  std::unique_ptr<StreamDecoder> decoder_;
  std::deque<PrinterLine::Piece> pieces_;  // of replies, not yet written

  OwnDescriptor controlListener_, control_;
  std::string controlBytes_;
};

}  // namespace korvel

#endif
