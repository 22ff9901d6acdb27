// korvel-spool: runs the filter on a raster file as the spooler would, with a printer that answers,
// and writes the printer's bytes to standard output. For developers: neither installed nor
// translated. SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>

#include "tools/common/arguments.h"
#include "tools/host/emulated_spooler.h"
#include "tools/host/raster_check.h"

namespace {

const korvel::Help kHelp = {
    "Usage: korvel-spool --filter PATH [OPTION]... RASTER",
    "Runs a print filter on RASTER (- is standard input) with the spooler's descriptors and a "
    "printer that answers status requests. The printer's bytes go to standard output.",
    {"--filter PATH\tThe filter program.",
     "-p, --ppd FILE\tThe PPD; without it the variable PPD is unset.",
     "-o, --options \"A=B ...\"\tThe job's options; may be repeated.",
     "--job N\tThe job's number (1).", "-U, --user NAME\tThe job's user.",
     "-t, --title TEXT\tThe job's title.", "-n, --copies N\tThe job's copies (1).",
     "--raster-as-file\tPass RASTER as the filter's last argument.",
     "--scenario TEXT\tSimulate a fault; may be repeated.",
     "--timeout SECONDS\tKill the filter after so long (120).",
     "--log FILE\tWhere the filter's messages go, instead of standard error."},
    "Scenarios:",
    {"reply ANSWER [times N]   answer the next status requests with ANSWER:",
     "                         true, nothing, drain-refused, drain-ignored, or",
     "                         ready, paper-out, cover-open, hex digits;",
     "                         + joins replies, | splits one",
     "silent [for SECONDS], silent off, noise BYTES, split [BYTES], split off, glue",
     "                         as for korvel-printer"},
    "Exit status: 0 the filter succeeded, 1 it failed, was killed or could not be run, or the file "
    "RASTER is damaged, 2 wrong usage."};

constexpr char kProgram[] = "korvel-spool";

using korvel::Arguments;
using korvel::Failure;
using korvel::Result;

struct Request {
  korvel::SpoolerJob job;
  std::string log;
};

korvel::Scenario parseScenario(const Arguments& arguments, const std::string& text) {
  const Result<korvel::Scenario> scenario = korvel::parseScenario(text);
  if (!scenario) arguments.wrong("--scenario: " + scenario.sentence());
  if (!korvel::isPlayable(scenario.value())) {
    arguments.wrong("--scenario: only korvel-printer can play '" + text + "'");
  }
  return scenario.value();
}

double parseSeconds(const Arguments& arguments, const std::string& text) {
  char* end = nullptr;
  const double seconds = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !(seconds > 0) || seconds > 1e6) {
    arguments.wrong("--timeout needs seconds, not '" + text + "'");
  }
  return seconds;
}

Request parseArguments(int argc, char** argv) {
  Request request;
  korvel::SpoolerJob& job = request.job;
  const std::map<std::string, std::string*> texts = {
      {"--filter", &job.filter}, {"--job", &job.jobId},     {"--log", &request.log},
      {"-p", &job.ppd},          {"-U", &job.user},         {"-t", &job.title},
      {"--ppd", &job.ppd},       {"--user", &job.user},     {"--title", &job.title},
      {"-n", &job.copies},       {"--copies", &job.copies},
  };
  Arguments arguments(argc, argv, kProgram, kHelp);
  while (arguments.next()) {
    if (arguments.isOption() && texts.contains(arguments.text())) {
      std::string* text = texts.at(arguments.text());
      *text = arguments.value();
    } else if (arguments.is("-o", "--options")) {
      job.options += (job.options.empty() ? "" : " ") + arguments.value();
    } else if (arguments.is("--scenario")) {
      job.scenarios.push_back(parseScenario(arguments, arguments.value()));
    } else if (arguments.is("--timeout")) {
      job.timeoutSeconds = parseSeconds(arguments, arguments.value());
    } else if (arguments.is("--raster-as-file")) {
      job.rasterAsFile = true;
    } else if (arguments.isOption()) {
      arguments.unknown();
    } else if (!job.raster.empty()) {
      arguments.wrong("more than one raster file");
    } else {
      job.raster = arguments.text();
    }
  }
  if (job.filter.empty()) arguments.wrong("no --filter given");
  if (job.raster.empty()) arguments.wrong("no raster file given");
  return request;
}

korvel::SpoolerJob::Sink fileSink(std::FILE* file) {
  return [file](const char* bytes, size_t count) {
    std::fwrite(bytes, 1, count, file);
    std::fflush(file);
  };
}

// The exit status of the command.
Result<int> statusOf(const korvel::SpoolerOutcome& outcome) {
  if (outcome.timedOut) return Failure{"The filter did not end in time and was killed."};
  if (outcome.signal != 0) {
    return Failure{"The filter was ended by signal " + std::to_string(outcome.signal) + "."};
  }
  if (outcome.status > 1) {
    return Failure{"The filter ended with status " + std::to_string(outcome.status) + "."};
  }
  return outcome.status;
}

// What comes from standard input cannot be read twice.
Result<void> checkRasterFile(const std::string& path) {
  if (!std::filesystem::is_regular_file(path)) return {};
  return korvel::checkRaster(path);
}

Result<int> run(Request request) {
  std::FILE* log = request.log.empty() ? stderr : std::fopen(request.log.c_str(), "wb");
  if (log == nullptr) {
    return Failure{"Cannot write " + request.log + ": " + std::strerror(errno) + "."};
  }
  request.job.output = fileSink(stdout);
  request.job.messages = fileSink(log);
  const Result<korvel::SpoolerOutcome> outcome = korvel::runSpoolerJob(request.job);
  const bool written = std::ferror(stdout) == 0 && std::ferror(log) == 0;
  if (log != stderr) std::fclose(log);
  if (!outcome) return outcome.failure();
  if (!written) return Failure{"Cannot write the filter's output."};
  const Result<int> status = statusOf(outcome.value());
  if (!status || status.value() != 0) return status;
  const Result<void> whole = checkRasterFile(request.job.raster);
  if (!whole) return Failure{request.job.raster + ": " + whole.sentence()};
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  const Result<int> status = run(parseArguments(argc, argv));
  return status ? status.value() : korvel::reportFailure(kProgram, status.sentence());
}
