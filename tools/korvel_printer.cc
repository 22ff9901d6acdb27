// korvel-printer: behaves as the printer at the other end of a connection. Takes the command
// stream, answers status requests, and writes what a user would hold in hand as pictures.
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include "tools/printer_scenario.h"
#include "tools/printer_server.h"

namespace {

const char kUsage[] =
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
    "  --quiet            print no events\n"
    "  --help, --version\n\n"
    "Status: 0 a normal end, 1 a port or a picture failed, 2 wrong usage.\n";

[[noreturn]] void usageError(const std::string& what) {
  std::fprintf(stderr, "korvel-printer: %s; see korvel-printer --help\n", what.c_str());
  std::exit(2);
}

int number(const std::string& option, const std::string& text, int least, int most) {
  char* end = nullptr;
  const long value = std::strtol(text.c_str(), &end, 10);
  const bool digits = text.find_first_not_of("0123456789") == std::string::npos;
  if (text.empty() || !digits || *end != '\0' || value < least || value > most) {
    usageError(option + " wants a number from " + std::to_string(least) + " to " +
               std::to_string(most) + ", have '" + text + "'");
  }
  return static_cast<int>(value);
}

korvel::Media media(const std::string& text) {
  if (text == "gap") return korvel::Media::kGap;
  if (text == "mark") return korvel::Media::kMark;
  if (text == "continuous") return korvel::Media::kContinuous;
  if (text == "sheet") return korvel::Media::kSheet;
  usageError("--media wants gap, mark, continuous or sheet, have '" + text + "'");
}

korvel::Scenario scenario(const std::string& text) {
  korvel::Scenario parsed;
  std::string fault;
  if (!korvel::parseScenario(text, &parsed, &fault)) usageError("--scenario: " + fault);
  if (parsed.kind == korvel::ScenarioKind::kState || parsed.kind == korvel::ScenarioKind::kQuit) {
    usageError("--scenario: '" + text + "' belongs on the control port");
  }
  return parsed;
}

// Takes the option `word`, which has a value; false when there is no such option.
template <typename Value>
bool takeValued(const std::string& word, const Value& value, korvel::ServerOptions* options) {
  if (word == "--port") {
    options->port = number(word, value(), 0, 65535);
  } else if (word == "--control-port") {
    options->controlPort = number(word, value(), 0, 65535);
  } else if (word == "--reply-fd") {
    options->replyDescriptor = number(word, value(), 0, 1023);
  } else if (word == "--out") {
    options->folder = value();
    if (options->folder.empty()) usageError("--out wants a folder");
  } else if (word == "--dpi") {
    options->body.dpi = static_cast<unsigned>(number(word, value(), 1, 9999));
  } else if (word == "--speed") {
    options->body.speed = static_cast<unsigned>(number(word, value(), 1, 100000));
  } else if (word == "--media") {
    options->body.media = media(value());
  } else if (word == "--scenario") {
    options->scenarios.push_back(scenario(value()));
  } else {
    return false;
  }
  return true;
}

korvel::ServerOptions parseArguments(int argc, char** argv) {
  korvel::ServerOptions options;
  bool port = false;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const auto value = [&]() -> std::string {
      if (++i >= argc) usageError(word + " wants a value");
      return argv[i];
    };
    port = port || word == "--port";
    if (word == "--help") {
      std::fputs(kUsage, stdout);
      std::exit(0);
    } else if (word == "--version") {
      std::puts("korvel-printer 1.0.0");
      std::exit(0);
    } else if (word == "--stdin") {
      options.standardInput = true;
    } else if (word == "--pages") {
      options.pages = true;
    } else if (word == "--once") {
      options.once = true;
    } else if (word == "--quiet") {
      options.quiet = true;
    } else if (!takeValued(word, value, &options)) {
      usageError((word.starts_with("-") ? "unknown option '" : "unexpected argument '") + word +
                 "'");
    }
  }
  if (port && options.standardInput) usageError("--port and --stdin exclude each other");
  if (options.replyDescriptor >= 0 && !options.standardInput) {
    usageError("--reply-fd wants --stdin beside it");
  }
  if (options.replyDescriptor >= 0 && fcntl(options.replyDescriptor, F_GETFD) < 0) {
    usageError("--reply-fd: descriptor " + std::to_string(options.replyDescriptor) +
               " is not open");
  }
  if (options.pages && options.folder.empty()) usageError("--pages wants --out beside it");
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
  return !reason || complain("cannot make the folder " + folder + ": " + reason.message());
}

}  // namespace

int main(int argc, char** argv) {
  reserveStandardDescriptors();
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
