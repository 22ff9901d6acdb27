// korvel-printer: emulates a printer. It receives the command stream, answers status requests, and
// writes pictures of the printed sheets.
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
#include "tools/emulator/printer_server.h"
#include "tools/stream/printer_scenario.h"

namespace {

constexpr char kProgram[] = "korvel-printer";

using korvel::later;

const korvel::Help kHelp = {
    later("Usage: korvel-printer [OPTION]..."),
    later("Emulates a printer: listens on a port of this machine, receives the command stream, "
          "answers status requests, prints one line per event, and draws one picture per sheet."),
    {later("--port N\tListen on port N (9100); 0 chooses a port and prints its number."),
     later("--control-port N\tAccept scenarios on port N, one per line; 0 as for --port."),
     later("--stdin\tRead one stream from standard input; do not listen."),
     later("--reply-fd N\tWith --stdin: write the replies to descriptor N."),
     later("--out DIR\tWrite each sheet to DIR/sheet-<number>.png."),
     later("--pages\tAlso write the dots of each page to DIR/page-<number>.png."),
     later("--dpi N\tDots per inch of the print head (203)."),
     later("--speed N\tMillimetres of paper per second (150)."),
     later("--media KIND\tgap, mark, continuous or sheet (gap)."),
     later("--scenario TEXT\tSimulate a fault; may be repeated."),
     later("--once\tExit after the first connection, when its pages have been printed."),
     later("-q, --quiet\tPrint no events.")},
    later("Scenarios (on the control port also state and quit):"),
    {"out-of-paper [for SECONDS] [after PAGES]", "load",
     "cover open, cover close, cover for SECONDS [at PAGE]", "silent [for SECONDS], silent off",
     "reply true|nothing|ready|paper-out|cover-open|HEX [times N]",
     "noise BYTES, split [BYTES], split off, glue", "slow BYTES_PER_SECOND, slow off",
     "stall for SECONDS [after BYTES]", "disconnect [after BYTES]"},
    later("Exit status: 0 success, 1 a port or a picture failed, 2 wrong usage.")};

using korvel::Arguments;
using korvel::Failure;
using korvel::filled;
using korvel::Result;
using korvel::ScenarioKind;
using korvel::translated;

korvel::Media media(Arguments* arguments) {
  const std::string text = arguments->value();
  if (text == "gap") return korvel::Media::kGap;
  if (text == "mark") return korvel::Media::kMark;
  if (text == "continuous") return korvel::Media::kContinuous;
  if (text == "sheet") return korvel::Media::kSheet;
  arguments->wrong(filled("--media needs gap, mark, continuous or sheet, not '%s'", text.c_str()));
}

korvel::Scenario scenario(Arguments* arguments) {
  const std::string text = arguments->value();
  const korvel::Result<korvel::Scenario> parsed = korvel::parseScenario(text);
  if (!parsed) arguments->wrong("--scenario: " + parsed.sentence());
  const ScenarioKind kind = parsed.value().kind;
  if (kind == ScenarioKind::kState || kind == ScenarioKind::kQuit) {
    arguments->wrong(filled("--scenario: '%s' is for the control port", text.c_str()));
  }
  if (korvel::needsSpooler(parsed.value())) {
    arguments->wrong(filled("--scenario: '%s' needs a spooler's side channel", text.c_str()));
  }
  return parsed.value();
}

// False when the current argument is no option with a value.
bool takeValued(Arguments* arguments, korvel::ServerOptions* options) {
  if (arguments->is("--port")) {
    options->port = arguments->number(0, 65535);
  } else if (arguments->is("--control-port")) {
    options->controlPort = arguments->number(0, 65535);
  } else if (arguments->is("--reply-fd")) {
    options->replyDescriptor = arguments->number(0, 1023);
  } else if (arguments->is("--out")) {
    options->folder = arguments->nonEmptyValue();
  } else if (arguments->is("--dpi")) {
    options->body.dpi = static_cast<unsigned>(arguments->number(1, 9999));
  } else if (arguments->is("--speed")) {
    options->body.speed = static_cast<unsigned>(arguments->number(1, 100000));
  } else if (arguments->is("--media")) {
    options->body.media = media(arguments);
  } else if (arguments->is("--scenario")) {
    options->scenarios.push_back(scenario(arguments));
  } else {
    return false;
  }
  return true;
}

void checkTogether(const Arguments& arguments, bool port, const korvel::ServerOptions& options) {
  const int replies = options.replyDescriptor;
  if (port && options.standardInput)
    arguments.wrong(translated("--port and --stdin cannot be combined"));
  if (replies >= 0 && !options.standardInput)
    arguments.wrong(translated("--reply-fd needs --stdin"));
  if (replies >= 0 && fcntl(replies, F_GETFD) < 0) {
    arguments.wrong(filled("--reply-fd: descriptor %d is not open", replies));
  }
  if (options.pages && options.folder.empty()) arguments.wrong(translated("--pages needs --out"));
}

korvel::ServerOptions parseArguments(int argc, char** argv) {
  korvel::ServerOptions options;
  bool port = false;
  Arguments arguments(argc, argv, kProgram, kHelp);
  while (arguments.next()) {
    port = port || arguments.is("--port");
    if (arguments.is("--stdin")) {
      options.standardInput = true;
    } else if (arguments.is("--pages")) {
      options.pages = true;
    } else if (arguments.is("--once")) {
      options.once = true;
    } else if (arguments.is("-q", "--quiet")) {
      options.quiet = true;
    } else if (!takeValued(&arguments, &options)) {
      arguments.unknown();
    }
  }
  checkTogether(arguments, port, options);
  return options;
}

// Otherwise a connection could get the number of a closed standard output, and receive the events.
void reserveStandardDescriptors() {
  int fd = open("/dev/null", O_RDWR);
  while (fd >= 0 && fd <= 2) fd = open("/dev/null", O_RDWR);
  if (fd > 2) close(fd);
}

volatile std::sig_atomic_t stopped = 0;

void stop(int) { stopped = 1; }

// The signals are delivered between two rounds of the server's loop, never inside one.
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

Result<void> createFolder(const std::string& folder) {
  std::error_code reason;
  if (folder.empty() || std::filesystem::is_directory(folder)) return {};
  std::filesystem::create_directories(folder, reason);
  if (!reason) return {};
  return Failure{
      filled("Cannot create the folder %s: %s.", folder.c_str(), reason.message().c_str())};
}

Result<bool> run(const korvel::ServerOptions& options) {
  const Result<void> created = createFolder(options.folder);
  if (!created) return created.failure();
  korvel::PrinterServer server(options);
  const Result<void> opened = server.open();
  if (!opened) return opened.failure();
  return server.run(stopped);
}

}  // namespace

int main(int argc, char** argv) {
  reserveStandardDescriptors();
  korvel::startTranslation();
  const korvel::ServerOptions options = parseArguments(argc, argv);
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  catchSignals();
  const Result<bool> good = run(options);
  if (!good) return korvel::reportFailure(kProgram, good.sentence());
  return good.value() ? 0 : 1;
}
