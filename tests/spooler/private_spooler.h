// Debian's print spooler, private to a test: its own configuration, spool and socket in a temporary
// folder, the filter and the descriptions as the install rules put them, no port, no browsing.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SPOOLER_PRIVATE_SPOOLER_H
#define KORVEL_TESTS_SPOOLER_PRIVATE_SPOOLER_H

#include <cups/http.h>
#include <cups/ipp.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/spooler/guarded_process.h"
#include "tests/support/temporary_folder.h"

class PrivateSpooler {
 public:
  // Installs the build and starts the spooler; a failure is the test's. `configuration` is another
  // cupsd.conf, in which @SOCKET@ is replaced by the address of this spooler.
  explicit PrivateSpooler(const std::string& configuration = "");
  PrivateSpooler(const PrivateSpooler&) = delete;
  PrivateSpooler& operator=(const PrivateSpooler&) = delete;
  // Stops it; when the test has failed, shows the end of the spooler's log.
  ~PrivateSpooler();

  // Ends the spooler with everything that it started, by the signal that a system stops it with, or
  // at once, as a crash or a power cut does; then starts it again.
  void restart();
  void restartWith(const std::string& configuration);  // the whole cupsd.conf, as configuration()
  void killAndRestart();

  // What leads the spooler's own clients, and ours, to it; in English.
  std::map<std::string, std::string> clientEnvironment() const;

  // A queue to a printer on a port of this machine. `description` is the file's bare name.
  void addQueue(const std::string& queue, const std::string& description, int port);

  void setDevice(const std::string& queue, const std::string& uri);
  void setDefault(const std::string& queue, const std::string& option);  // "Darkness=Dark"
  std::string address() const { return socket(); }  // for the variable CUPS_SERVER

  // Hands a job over by the command line. Returns its number, or 0 after a failure of the test's.
  int print(const std::string& queue, const std::vector<std::string>& arguments);
  void cancel(int job);

  // Such as IPP_JOB_COMPLETED; 0 when the spooler does not report it.
  int jobState(int job);
  bool waitForJob(int job, double seconds);                 // until it is completed
  int sheetsCompleted(int job);                             // as the spooler counts them
  int queueState(const std::string& queue);                 // such as IPP_PRINTER_IDLE
  std::set<std::string> reasons(const std::string& queue);  // printer-state-reasons but "none"

  // Processes of filters and backends that are alive, by program.
  std::set<std::string> jobPrograms() const;
  std::string pageLog() const { return folder_.read("log/page"); }
  std::string queueDescription(const std::string& queue) const {
    return folder_.read("etc/ppd/" + queue + ".ppd");
  }
  std::string filterPath() const;
  std::string configuration() const { return folder_.read("etc/cupsd.conf"); }
  std::string file(const std::string& name) const { return folder_.file(name); }
  std::string errorLog() const { return folder_.read("log/error"); }
  std::string descriptionPath(const std::string& description) const;
  std::string toolPath(const std::string& tool) const;
  std::string temporaryFiles() const { return folder_.file("spool/tmp"); }

 private:
  void install();
  void linkStock(const std::string& stock, const std::string& ours,
                 const std::vector<std::string>& merged);
  void configure(const std::string& configuration);
  void startDaemon();
  void disconnect();
  std::string socket() const { return folder_.file("socket/cups"); }
  std::string installed(const std::string& path) const { return folder_.file("installed" + path); }
  ipp_t* ask(ipp_op_t operation, const std::string& path);
  int askInteger(ipp_op_t operation, const std::string& path, const char* attribute);

  TemporaryFolder folder_;
  GuardedProcess daemon_;
  http_t* connection_ = nullptr;
};

#endif
