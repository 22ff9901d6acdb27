// A network of a test's own: the process and all that it starts see no other one. In it are this
// computer, with a message bus and the responder that announces printers, and a phone.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SHARING_NETWORK_ROOM_H
#define KORVEL_TESTS_SHARING_NETWORK_ROOM_H

#include <functional>
#include <string>

#include "tests/spooler/guarded_process.h"
#include "tests/support/temporary_folder.h"

class NetworkRoom {
 public:
  // Enters the network, for the rest of the process, and starts the responder.
  NetworkRoom();
  NetworkRoom(const NetworkRoom&) = delete;
  NetworkRoom& operator=(const NetworkRoom&) = delete;

  // Why there is none: no rights, or programs that are not installed. Empty when there is.
  const std::string& missing() const { return missing_; }
  std::string address() const { return "10.77.0.1"; }  // of this computer in it

  // Runs `deed` in a network namespace of its own, whose only link leads to this computer. The
  // phone's address is 10.77.0.2.
  void atThePhone(const std::function<void()>& deed) const;
  // Gives the phone an address that belongs to none of this computer's networks.
  void movePhoneElsewhere() const;

  // Without the responder nothing is announced.
  void startResponder();
  void stopResponder();

 private:
  std::string enter();
  void startBus();

  TemporaryFolder folder_;
  GuardedProcess bus_, responder_;
  std::string missing_;
};

// The configuration that the spooler's package installs, for PrivateSpooler.
std::string stockConfiguration();

#endif
