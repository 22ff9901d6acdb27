// korvel-printer: behaves as the printer at the other end of a connection. Takes the command
// stream, answers status requests, and writes what a user would hold in hand as pictures.
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#include "tools/common/arguments.h"
#include "tools/common/translation.h"
#include "tools/emulator/printer_scenario.h"
#include "tools/emulator/printer_server.h"

namespace {

constexpr const char* kUsage = korvel::later(
    "Usage: korvel-printer [OPTION]...\n"
    "Stands in for a printer: listens on a port of this machine, takes the command stream, "
    "answers\n"
    "status requests, prints a line an event, and draws a picture a sheet.\n\n"
    "  --port N           listen on port N (9100); 0 picks one and prints its number\n"
    "  --control-port N   take scenarios on port N, a line each; 0 as above\n"
    "  --stdin            read one stream from standard input, no port\n"
    "  --reply-fd N       with --stdin: write the replies to descriptor N\n"
    "  --out DIR          write each sheet to DIR/sheet-<number>.png\n"
    "  --pages            write each page's dots alone to DIR/page-<number>.png\n"
    "  --dpi N            the head's dots per inch (203)\n"
    "  --speed N          the motor's millimetres per second (150)\n"
    "  --media KIND       gap, mark, continuous or sheet (gap)\n"
    "  --scenario TEXT    let something go wrong; may be given more than once:\n"
    "                       out-of-paper [for SECONDS] [after PAGES], load\n"
    "                       cover open, cover close, cover for SECONDS [at PAGE]\n"
    "                       silent [for SECONDS], silent off, noise BYTES, glue\n"
    "                       split [BYTES], split off, slow BYTES_PER_SECOND, slow off\n"
    "                       stall for SECONDS [after BYTES], disconnect [after BYTES]\n"
    "                     on the control port also: state, quit\n"
    "  --once             end when the first connection has closed and its pages are out\n"
    "  -q, --quiet        print no events\n"
    "  --help, --version\n\n"
    "Status: 0 a normal end, 1 a port or a picture failed, 2 wrong usage.\n");

using korvel::Arguments;
using korvel::filled;
using korvel::ScenarioKind;
using korvel::translated;

korvel::Media media(Arguments* words) {
  const std::string text = words->value();
  if (text == "gap") return korvel::Media::kGap;
  if (text == "mark") return korvel::Media::kMark;
  if (text == "continuous") return korvel::Media::kContinuous;
  if (text == "sheet") return korvel::Media::kSheet;
  words->wrong(filled("--media wants gap, mark, continuous or sheet, have '%s'", text.c_str()));
}

korvel::Scenario scenario(Arguments* words) {
  const std::string text = words->value();
  korvel::Scenario parsed;
  std::string fault;
  if (!korvel::parseScenario(text, &parsed, &fault)) words->wrong("--scenario: " + fault);
  if (parsed.kind == ScenarioKind::kState || parsed.kind == ScenarioKind::kQuit) {
    words->wrong(filled("--scenario: '%s' belongs on the control port", text.c_str()));
  }
  return parsed;
}

// Takes the option at hand when it has a value; false when there is no such option.
bool takeValued(Arguments* words, korvel::ServerOptions* options) {
  if (words->is("--port")) {
    options->port = words->number(0, 65535);
  } else if (words->is("--control-port")) {
    options->controlPort = words->number(0, 65535);
  } else if (words->is("--reply-fd")) {
    options->replyDescriptor = words->number(0, 1023);
  } else if (words->is("--out")) {
    options->folder = words->value();
    if (options->folder.empty()) words->wrong(translated("--out wants a folder"));
  } else if (words->is("--dpi")) {
    options->body.dpi = static_cast<unsigned>(words->number(1, 9999));
  } else if (words->is("--speed")) {
    options->body.speed = static_cast<unsigned>(words->number(1, 100000));
  } else if (words->is("--media")) {
    options->body.media = media(words);
  } else if (words->is("--scenario")) {
    options->scenarios.push_back(scenario(words));
  } else {
    return false;
  }
  return true;
}

void checkTogether(const Arguments& words, bool port, const korvel::ServerOptions& options) {
  const int replies = options.replyDescriptor;
  if (port && options.standardInput)
    words.wrong(translated("--port and --stdin exclude each other"));
  if (replies >= 0 && !options.standardInput)
    words.wrong(translated("--reply-fd wants --stdin beside it"));
  if (replies >= 0 && fcntl(replies, F_GETFD) < 0) {
    words.wrong(filled("--reply-fd: descriptor %d is not open", replies));
  }
  if (options.pages && options.folder.empty())
    words.wrong(translated("--pages wants --out beside it"));
}

korvel::ServerOptions parseArguments(int argc, char** argv) {
  korvel::ServerOptions options;
  bool port = false;
  Arguments words(argc, argv, "korvel-printer", korvel::translated(kUsage));
  while (words.next()) {
    port = port || words.is("--port");
    if (words.is("--stdin")) {
      options.standardInput = true;
    } else if (words.is("--pages")) {
      options.pages = true;
    } else if (words.is("--once")) {
      options.once = true;
    } else if (words.is("-q", "--quiet")) {
      options.quiet = true;
    } else if (!takeValued(&words, &options)) {
      words.unknown();
    }
  }
  checkTogether(words, port, options);
  return options;
}

// Events must not land in a connection that got the number of a closed standard output.
void reserveStandardDescriptors() {
  int fd = open("/dev/null", O_RDWR);
  while (fd >= 0 && fd <= 2) fd = open("/dev/null", O_RDWR);
  if (fd > 2) close(fd);
}

volatile std::sig_atomic_t stopped = 0;

void stop(int) { stopped = 1; }

// Both ends of a job's life arrive between two rounds of the loop, never inside one.
void catchSignals() {
  struct sigaction action = {};
  action.sa_handler = stop;
  sigaction(SIGTERM, &action, nullptr);
  sigaction(SIGINT, &action, nullptr);
  action.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &action, nullptr);
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
}

bool complain(const std::string& fault) {
  std::fprintf(stderr, "korvel-printer: %s\n", fault.c_str());
  return false;
}

bool makeFolder(const std::string& folder) {
  std::error_code reason;
  if (folder.empty() || std::filesystem::is_directory(folder)) return true;
  std::filesystem::create_directories(folder, reason);
  return !reason || complain(filled("cannot make the folder %s: %s", folder.c_str(),
                                    reason.message().c_str()));
}

}  // namespace

int main(int argc, char** argv) {
  reserveStandardDescriptors();
  korvel::startTranslation();
  const korvel::ServerOptions options = parseArguments(argc, argv);
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  catchSignals();
  if (!makeFolder(options.folder)) return 1;
  korvel::PrinterServer server(options);
  const std::string fault = server.open();
  if (!fault.empty()) {
    complain(fault);
    return 1;
  }
  return server.run(stopped) ? 0 : 1;
}
