// The emulated printer behind a queue: the installed program, its events, its sheets, and the port
// on which things are made to go wrong.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SPOOLER_PRINTER_PROCESS_H
#define KORVEL_TESTS_SPOOLER_PRINTER_PROCESS_H

#include <string>
#include <vector>

#include "tests/spooler/guarded_process.h"
#include "tests/support/temporary_folder.h"

class PrinterProcess {
 public:
  // Starts `program` with more arguments; a failure is the test's.
  PrinterProcess(const std::string& program, const std::vector<std::string>& arguments);

  int port() const { return port_; }
  int controlPort() const { return controlPort_; }
  // Sends a line to the control port; returns the answer, which begins with "ok".
  std::string command(const std::string& line) const;

  std::vector<std::string> events() const;
  // Those events that begin with one of the words, "feed mode" for one.
  std::vector<std::string> events(const std::vector<std::string>& beginnings) const;
  bool waitForEvent(const std::string& beginning, double seconds) const;

  std::string pagePath(int number) const { return picturePath("page", number); }
  std::string sheetPath(int number) const { return picturePath("sheet", number); }

 private:
  std::string picturePath(const std::string& what, int number) const {
    return folder_.file("out/" + what + "-" + std::to_string(number) + ".png");
  }

  TemporaryFolder folder_;
  GuardedProcess process_;
  int port_ = 0;
  int controlPort_ = 0;
};

#endif
