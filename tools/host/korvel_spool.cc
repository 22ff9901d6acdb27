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

#include "tools/common/arguments.h"
#include "tools/common/translation.h"
#include "tools/host/emulated_spooler.h"

namespace {

constexpr const char* kUsage = korvel::later(
    "Usage: korvel-spool --filter PATH [OPTION]... RASTER\n"
    "Runs a print filter on RASTER (- is standard input) with the spooler's descriptors and a\n"
    "printer that answers status requests; the printer's bytes go to standard output.\n\n"
    "  --filter PATH       the filter program\n"
    "  -p, --ppd FILE      the printer description; without it PPD is unset\n"
    "  -o, --options \"A=B ...\"\n"
    "                      the job's options; more than one -o adds up\n"
    "  --job N             the job's number (1)\n"
    "  -U, --user U        its user\n"
    "  -t, --title T       its title\n"
    "  -n, --copies N      its copies (1)\n"
    "  --raster-as-file    name RASTER in the seventh argument\n"
    "  -e, --expect TEXT   the printer's answers, one a status request, then auto again:\n"
    "                      ready, out, cover or hex bytes (+ glues, | parts them), auto,\n"
    "                      none, refuse, timeout; *N repeats; commas between entries\n"
    "  --script FILE       the same from a file, entries on lines, # comments\n"
    "  --timeout S         seconds after which the filter is killed (120)\n"
    "  --log FILE          the filter's messages; standard error without it\n"
    "  --help, --version\n\n"
    "Status: 0 when the filter ended with 0, 1 when it failed, was ended or could not be run,\n"
    "2 wrong usage.\n");

using korvel::Arguments;
using korvel::filled;
using korvel::translated;

[[noreturn]] void stop(const std::string& what) {
  std::fprintf(stderr, "korvel-spool: %s\n", what.c_str());
  std::exit(1);
}

struct Request {
  korvel::SpoolerJob job;
  std::string log;
};

void setScript(const Arguments& words, const std::string& text, korvel::SpoolerJob* job) {
  std::string fault;
  if (!korvel::parseStatusScript(text, &job->script, &fault)) words.wrong(fault);
}

void readScript(const Arguments& words, const std::string& path, korvel::SpoolerJob* job) {
  std::ifstream file(path);
  std::ostringstream text;
  if (!file || !(text << file.rdbuf()))
    words.wrong(filled("cannot read the script %s", path.c_str()));
  setScript(words, text.str(), job);
}

double parseSeconds(const Arguments& words, const std::string& text) {
  char* end = nullptr;
  const double seconds = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !(seconds > 0) || seconds > 1e6) {
    words.wrong(filled("--timeout wants seconds, have '%s'", text.c_str()));
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
  Arguments words(argc, argv, "korvel-spool", korvel::translated(kUsage));
  while (words.next()) {
    if (words.isOption() && texts.contains(words.word())) {
      *texts.at(words.word()) = words.value();
    } else if (words.is("-o", "--options")) {
      job.options += (job.options.empty() ? "" : " ") + words.value();
    } else if (words.is("-e", "--expect")) {
      setScript(words, words.value(), &job);
    } else if (words.is("--script")) {
      readScript(words, words.value(), &job);
    } else if (words.is("--timeout")) {
      job.timeoutSeconds = parseSeconds(words, words.value());
    } else if (words.is("--raster-as-file")) {
      job.rasterAsFile = true;
    } else if (words.isOption()) {
      words.unknown();
    } else if (!job.raster.empty()) {
      words.wrong(translated("more than one raster file"));
    } else {
      job.raster = words.word();
    }
  }
  if (job.filter.empty()) words.wrong(translated("no --filter given"));
  if (job.raster.empty()) words.wrong(translated("no raster file given"));
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
  korvel::startTranslation();
  Request request = parseArguments(argc, argv);
  std::FILE* log = stderr;
  if (!request.log.empty()) log = std::fopen(request.log.c_str(), "wb");
  if (log == nullptr)
    stop(filled("cannot write %s: %s", request.log.c_str(), std::strerror(errno)));
  request.job.output = fileSink(stdout);
  request.job.messages = fileSink(log);
  const korvel::SpoolerOutcome outcome = korvel::runSpoolerJob(request.job);
  if (std::ferror(stdout) != 0 || std::ferror(log) != 0)
    stop(translated("cannot write the filter's output"));
  if (log != stderr) std::fclose(log);
  if (!outcome.fault.empty()) stop(outcome.fault);
  if (outcome.timedOut)
    stop(translated("the filter was still running after its time and was killed"));
  if (outcome.signal != 0) {
    stop(filled("the filter was ended by signal %d", outcome.signal));
  }
  if (outcome.status > 1) stop(filled("the filter ended with status %d", outcome.status));
  return outcome.status;
}
