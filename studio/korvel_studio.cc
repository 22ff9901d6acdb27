// korvel-studio: a web server that shows in the browser every dot of a stencil or label before it
// is printed, and prints it. A client of the print system; it keeps no queue of its own.
// SPDX-License-Identifier: Apache-2.0
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <system_error>

#include "studio/api.h"
#include "studio/studio_arguments.h"
#include "tools/common/installation.h"
#include "tools/common/translation.h"

namespace fs = std::filesystem;

namespace {

using korvel::Failure;
using korvel::filled;
using korvel::Result;

constexpr char kProgram[] = "korvel-studio";

// Uploads and pages, gone with the program. Only this process and its children may look into it.
class PrivateFolder {
 public:
  PrivateFolder() = default;
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;
  ~PrivateFolder() {
    std::error_code ignored;
    if (!path_.empty()) fs::remove_all(path_, ignored);
  }

  Result<void> open() {
    const char* parent = std::getenv("TMPDIR");
    std::string name = std::string(parent == nullptr ? "/tmp" : parent) + "/korvel-studio-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
      return Failure{
          filled("Cannot create the folder %s for documents; check TMPDIR.", name.c_str())};
    }
    path_ = name;
    return {};
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

bool isProgram(const std::string& path) { return access(path.c_str(), X_OK) == 0; }

// Beside this program in a build, in a folder of its own when installed.
std::string workerPath() {
  const std::string own = korvel::programFolder();
  const std::string beside = own + "/korvel-studio-worker";
  return isProgram(beside) ? beside : own + "/" KORVEL_WAY_TO_WORKER "/korvel-studio-worker";
}

std::string filterPath(const korvel::StudioArguments& arguments) {
  if (!arguments.filter.empty()) return arguments.filter;
  const char* folder = std::getenv("CUPS_SERVERBIN");
  return (folder != nullptr ? folder : korvel::spoolerFolder(KORVEL_CUPS_SERVERBIN)) +
         "/filter/rastertokorvel";
}

std::string pagePath(const korvel::StudioArguments& arguments) {
  if (!arguments.page.empty()) return arguments.page;
  return korvel::programFolder() + "/" KORVEL_WAY_TO_PAGE;
}

std::set<std::string> hostNames(const korvel::StudioArguments& arguments) {
  std::set<std::string> names(arguments.names.begin(), arguments.names.end());
  char name[256] = "";
  if (!korvel::isLoopback(arguments.address) && gethostname(name, sizeof name - 1) == 0) {
    names.insert(name);
    names.insert(std::string(name) + ".local");
  }
  return names;
}

// Empty on loopback addresses, unless a token is asked for.
Result<std::string> makeToken(const korvel::StudioArguments& arguments) {
  if (arguments.tokenFile.empty()) {
    return korvel::isLoopback(arguments.address) ? std::string() : korvel::unguessableName();
  }
  std::ifstream in(arguments.tokenFile);
  std::string token;
  in >> token;
  if (token.size() < 16) {
    return Failure{filled("%s does not hold a token of at least 16 characters; write one there.",
                          arguments.tokenFile.c_str())};
  }
  return token;
}

std::string shownAddress(const korvel::StudioArguments& arguments, int port,
                         const std::string& token) {
  const bool isSix = arguments.address.find(':') != std::string::npos;
  const std::string host = isSix ? "[" + arguments.address + "]" : arguments.address;
  return "http://" + host + ":" + std::to_string(port) + "/" +
         (token.empty() ? "" : "?token=" + token);
}

// Blocked in every thread; main waits for them.
sigset_t endSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, signal);
  return signals;
}

Result<void> serve(const korvel::StudioArguments& arguments) {
  const std::string worker = workerPath();
  const std::string filter = filterPath(arguments);
  for (const std::string& program : {worker, filter}) {
    if (isProgram(program)) continue;
    return Failure{filled("There is no program %s; install the driver again.", program.c_str())};
  }
  Result<std::string> token = makeToken(arguments);
  if (!token) return token.failure();
  korvel::PageAssets assets;
  Result<void> done = assets.load(pagePath(arguments));
  if (!done) return done;
  PrivateFolder folder;
  done = folder.open();
  if (!done) return done;

  const korvel::Gatekeeper gatekeeper(korvel::isLoopback(arguments.address), hostNames(arguments),
                                      *token);
  korvel::DocumentStore documents(folder.path());
  korvel::PrintQueues queues(arguments.queues, folder.path());
  korvel::Renderer renderer(worker, filter, folder.path());
  korvel::Api api({&gatekeeper, &assets, &documents, &queues, &renderer});
  korvel::HttpServer server(&api);
  done = server.listen(arguments.address, arguments.port);
  if (!done) return done;
  std::printf("%s\n", shownAddress(arguments, server.port(), *token).c_str());
  std::fflush(stdout);
  const sigset_t signals = endSignals();
  int signal = 0;
  sigwait(&signals, &signal);
  return {};
}

}  // namespace

int main(int argc, char** argv) {
  korvel::startTranslation();
  korvel::Arguments words(argc, argv, kProgram, korvel::kStudioHelp);
  const korvel::StudioArguments arguments = korvel::parseStudioArguments(&words);
  const sigset_t signals = endSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  signal(SIGPIPE, SIG_IGN);
  umask(077);
  const Result<void> served = serve(arguments);
  return served ? 0 : korvel::reportFailure(kProgram, served.sentence());
}
