// Asks a network printer for its status: whether it can be reached, answers, has paper.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_PRINTER_PROBE_H
#define KORVEL_TOOLS_SETUP_PRINTER_PROBE_H

#include <cstddef>
#include <optional>
#include <string>

namespace korvel {

// How the printer reacted to a status request.
enum class PrinterAnswer { kAnswers, kSilent, kNotReached, kNotAsked };

struct PrinterReply {
  PrinterAnswer answer = PrinterAnswer::kNotAsked;
  bool coverOpen = false;
  bool noPaper = false;  // or a sheet is still in the output of a stencil printer
};

constexpr int kProbeSeconds = 3;

// Whether askPrinter(uri) asks at this address: socket://HOST[:PORT] or korvel://HOST[:PORT].
bool canBeAsked(const std::string& uri);

// Connects and waits for the reply, at most kProbeSeconds in total after the host name is resolved.
// Printers accept one connection at a time, so ask only while no job is being sent.
PrinterReply askPrinter(const std::string& uri);

// The reply in the first `count` bytes; kSilent when they are not a whole reply.
PrinterReply parseReply(const unsigned char* bytes, size_t count);

// Seconds since a byte was received on a connection from this machine to the printer, whichever
// program owns it; empty when there is no such connection or the system does not report it.
std::optional<int> secondsOfSilence(const std::string& uri);

}  // namespace korvel

#endif
