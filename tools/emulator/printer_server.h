// The emulated printer on its ports: one poll loop over a host's connection, the control port and
// the clock. It listens on the loopback address only, or reads a stream from standard input.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_EMULATOR_PRINTER_SERVER_H
#define KORVEL_TOOLS_EMULATOR_PRINTER_SERVER_H

#include <csignal>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/common/process.h"
#include "tools/common/result.h"
#include "tools/emulator/printer_world.h"
#include "tools/stream/printer_connection.h"
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

class PrinterServer {
 public:
  explicit PrinterServer(const ServerOptions& options);

  // Opens the ports, and prints the numbers of those that the system chose, one per line.
  Result<void> open();

  // Serves until a signal, "quit", or the end that the options ask for. SIGTERM and SIGINT must be
  // blocked; `stopped` becomes non-zero when one is delivered. False when a picture could not be
  // written, which has then been reported.
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
  std::string answerTo(const std::string& text);
  bool apply(const Scenario& scenario);
  void writePage(unsigned number, const PagePicture& page);
  void writeSheet(unsigned number, const SheetPicture& sheet, const char* what);
  void event(const std::string& line) const;
  void note(const std::string& what, bool hasShape, const Result<void>& written);

  ServerOptions options_;
  PrinterWorld world_;
  PrinterConnection connection_;
  Micros now_ = 0;

  Descriptor listener_, host_;
  int readFd_ = -1;   // host_, or standard input
  int writeFd_ = -1;  // host_, the reply descriptor, or none
  bool ending_ = false;
  bool quit_ = false;
  bool dropping_ = false;  // the stream is malformed: the rest is discarded
  bool failed_ = false;
  std::unique_ptr<StreamDecoder> decoder_;
  std::deque<PrinterConnection::Piece> pieces_;  // of replies, not yet written

  Descriptor controlListener_, control_;
  std::string controlBytes_;
};

}  // namespace korvel

#endif
