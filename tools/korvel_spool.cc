// korvel-spool: runs the filter on a raster file as the spooler would, the printer's answers
// included, and passes the printer's bytes on to standard output.
// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "tools/emulated_spooler.h"

namespace {

const char kUsage[] =
    "Usage: korvel-spool --filter PATH [OPTION]... RASTER\n"
    "Runs a print filter on RASTER (- is standard input) with the spooler's descriptors and a\n"
    "printer that answers status requests; the printer's bytes go to standard output.\n\n"
    "  --filter PATH       the filter program\n"
    "  --ppd FILE          the printer description; without it PPD is unset\n"
    "  --options \"A=B ...\" the job's options\n"
    "  --job N --user U --title T --copies N\n"
    "  --raster-as-file    name RASTER in the seventh argument\n"
    "  -e, --expect TEXT   the printer's answers, one a status request, then auto again:\n"
    "                      ready, out, cover or hex bytes (+ glues, | parts them), auto,\n"
    "                      none, refuse, timeout; *N repeats; commas between entries\n"
    "  --script FILE       the same from a file, entries on lines, # comments\n"
    "  --timeout S         seconds after which the filter is killed (120)\n"
    "  --log FILE          the filter's messages; standard error without it\n"
    "  --help, --version\n\n"
    "Status: the filter's own; 2 wrong usage, 3 cannot run it, 124 out of time,\n"
    "128 + N when signal N ended it.\n";

[[noreturn]] void stop(int status, const std::string& what) {
  std::fprintf(stderr, "korvel-spool: %s\n", what.c_str());
  std::exit(status);
}

[[noreturn]] void usageError(const std::string& what) {
  stop(2, what + "; see korvel-spool --help");
}

std::string readScript(const std::string& path) {
  std::ifstream file(path);
  std::ostringstream text;
  if (!file || !(text << file.rdbuf())) usageError("cannot read the script " + path);
  return text.str();
}

double parseSeconds(const std::string& text) {
  char* end = nullptr;
  const double seconds = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !(seconds > 0) || seconds > 1e6) {
    usageError("--timeout wants seconds, have '" + text + "'");
  }
  return seconds;
}

struct Request {
  korvel::SpoolerJob job;
  std::string log;
};

void setScript(const std::string& text, korvel::SpoolerJob* job) {
  std::string fault;
  if (!korvel::parseStatusScript(text, &job->script, &fault)) usageError(fault);
}

Request parseArguments(int argc, char** argv) {
  Request request;
  korvel::SpoolerJob& job = request.job;
  const std::map<std::string, std::string*> texts = {
      {"--filter", &job.filter}, {"--ppd", &job.ppd},     {"--options", &job.options},
      {"--job", &job.jobId},     {"--user", &job.user},   {"--title", &job.title},
      {"--copies", &job.copies}, {"--log", &request.log},
  };
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const auto value = [&]() -> std::string {
      if (++i >= argc) usageError(word + " wants a value");
      return argv[i];
    };
    if (word == "--help") {
      std::fputs(kUsage, stdout);
      std::exit(0);
    } else if (word == "--version") {
      std::puts("korvel-spool 1.0.0");
      std::exit(0);
    } else if (texts.contains(word)) {
      *texts.at(word) = value();
    } else if (word == "-e" || word == "--expect") {
      setScript(value(), &job);
    } else if (word == "--script") {
      setScript(readScript(value()), &job);
    } else if (word == "--timeout") {
      job.timeoutSeconds = parseSeconds(value());
    } else if (word == "--raster-as-file") {
      job.rasterAsFile = true;
    } else if (word.size() > 1 && word[0] == '-') {
      usageError("unknown option '" + word + "'");
    } else if (!job.raster.empty()) {
      usageError("more than one raster file");
    } else {
      job.raster = word;
    }
  }
  if (job.filter.empty()) usageError("no --filter given");
  if (job.raster.empty()) usageError("no raster file given");
  return request;
}

korvel::SpoolerJob::Sink fileSink(std::FILE* file) {
  return [file](const char* bytes, size_t count) {
    std::fwrite(bytes, 1, count, file);
    std::fflush(file);
  };
}

}  // namespace

int main(int argc, char** argv) {
  Request request = parseArguments(argc, argv);
  std::FILE* log = stderr;
  if (!request.log.empty()) log = std::fopen(request.log.c_str(), "wb");
  if (log == nullptr) stop(3, "cannot write " + request.log + ": " + std::strerror(errno));
  request.job.output = fileSink(stdout);
  request.job.messages = fileSink(log);
  const korvel::SpoolerOutcome outcome = korvel::runSpoolerJob(request.job);
  if (std::ferror(stdout) != 0 || std::ferror(log) != 0)
    stop(3, "cannot write the filter's output");
  if (log != stderr) std::fclose(log);
  if (!outcome.fault.empty()) stop(3, outcome.fault);
  if (outcome.timedOut) stop(124, "the filter was still running after its time and was killed");
  if (outcome.signal != 0) {
    stop(128 + outcome.signal, "the filter was ended by signal " + std::to_string(outcome.signal));
  }
  return outcome.status;
}
