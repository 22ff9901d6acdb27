// The emulated printer as a process of a test, and a host's connection to it. Every wait ends when
// something happens, or after a generous time; nothing outlives the test.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_TOOLS_EMULATOR_PRINTER_PROCESS_H
#define KORVEL_TESTS_TOOLS_EMULATOR_PRINTER_PROCESS_H

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"
#include "tools/common/process.h"

using Lines = std::vector<std::string>;

// Any invocation of the program, through pipes.
class PrinterProcess {
 public:
  // Descriptors 0, 1 and 2 are pipes; the printer's 3 is the writing end of a pipe of replies. A
  // program that cannot be started is a failure of the test.
  PrinterProcess(const std::string& program, const Lines& arguments);

  // The next line of its output, without its end; "(end)" when there is none any more.
  std::string line();
  int number();  // the next line's
  // The lines up to and including the first that begins with `start`.
  Lines linesTo(const std::string& start);
  bool reports(const std::string& start) { return linesTo(start).back() != "(end)"; }
  // All further output that is there now, as whole lines; does not wait.
  Lines linesSoFar();

  void feed(const std::vector<uint8_t>& bytes) const;
  void closeInput() { in_.reset(); }
  void signal(int number) const { child_.signal(number); }

  // Waits for its end. Returns the exit status, or 1000 and the signal that ended it.
  int status();
  std::string errors() { return all(errors_); }
  std::string replies() { return all(replies_); }

 private:
  static std::string all(const korvel::Descriptor& from);

  korvel::Descriptor in_, out_, errors_, replies_;
  std::string output_;
  korvel::Child child_;
};

// A printer that listens: on a port for a host or a queue, and on another for scenarios.
class ListeningPrinter {
 public:
  // Starts `program` with more arguments; it writes its sheets and pages to a folder.
  ListeningPrinter(const std::string& program, const Lines& arguments);

  int port() const { return port_; }
  int controlPort() const { return controlPort_; }
  // Sends a line to the control port; returns the answer, which must begin with "ok".
  std::string command(const std::string& line) const;

  const Lines& events() const;
  // Those events that begin with one of the texts, "feed mode" for example.
  Lines events(const Lines& beginnings) const;
  bool waitForEvent(const std::string& beginning, double seconds) const;

  std::string pagePath(int number) const { return picturePath("page", number); }
  std::string sheetPath(int number) const { return picturePath("sheet", number); }

 private:
  Lines allArguments(const Lines& arguments) const;
  std::string picturePath(const std::string& what, int number) const {
    return folder_.file("out/" + what + "-" + std::to_string(number) + ".png");
  }

  TemporaryFolder folder_;
  mutable PrinterProcess process_;
  mutable Lines events_;
  int port_ = 0;
  int controlPort_ = 0;
};

// A host on the loopback address.
class HostConnection {
 public:
  explicit HostConnection(int port);

  bool connected() const { return connected_; }
  void send(const std::string& bytes) const { send(bytes.data(), bytes.size()); }
  void send(const std::vector<uint8_t>& bytes) const {
    send(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  }
  void endSending() const;
  void hangUp() { socket_.reset(); }
  // The next `count` bytes, or fewer at the end.
  std::string receive(size_t count);
  std::string receiveAll();
  // Sends a line to the control port; returns the answer.
  std::string ask(const std::string& line);

 private:
  void send(const char* bytes, size_t count) const;

  korvel::Descriptor socket_;
  bool connected_ = false;
  std::string received_;
};

#endif
