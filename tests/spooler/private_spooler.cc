// The folder: installed/ the install rules' tree, filled up with links to the stock filters and
// backends; etc/ the configuration; spool/, cache/, run/, log/ as their names say; socket/ the only
// way in, closed to others, for the spooler asks nobody for a password.
// SPDX-License-Identifier: Apache-2.0
#include "tests/spooler/private_spooler.h"

#include <cups/cups.h>
#include <dirent.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace fs = std::filesystem;

namespace {

constexpr double kStartSeconds = 30;
constexpr int kAnswerMilliseconds = 30000;
constexpr size_t kShownLogLines = 60;

std::string userName() {
  const passwd* user = geteuid() == 0 ? getpwnam("lp") : getpwuid(geteuid());
  return user == nullptr ? std::to_string(geteuid()) : user->pw_name;
}

std::string groupName() {
  const group* own = geteuid() == 0 ? getgrnam("lp") : getgrgid(getegid());
  return own == nullptr ? std::to_string(getegid()) : own->gr_name;
}

// What jobs said last, without the variables that their programs got.
std::string lastJobLines(const std::string& log) {
  std::istringstream in(log);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) {
    if (line.find("[Job ") != std::string::npos && line.find("envp[") == std::string::npos) {
      lines.push_back(line);
    }
  }
  std::string text;
  const size_t from = lines.size() > kShownLogLines ? lines.size() - kShownLogLines : 0;
  for (size_t i = from; i < lines.size(); ++i) text += lines[i] + "\n";
  return text;
}

std::string privateConfiguration() {
  return "Listen @SOCKET@\n"
         "Browsing No\n"
         "WebInterface No\n"
         "DefaultAuthType None\n"
         "LogLevel debug\n"
         "LogDebugHistory 0\n"
         "JobRetryInterval 3600\n"
         "MaxLogSize 0\n"
         "PageLogFormat %p %j %P %C\n"
         "<Location />\n"
         "  Order allow,deny\n"
         "  Allow all\n"
         "</Location>\n"
         "<Policy default>\n"
         "  JobPrivateAccess all\n"
         "  JobPrivateValues none\n"
         "  SubscriptionPrivateAccess all\n"
         "  SubscriptionPrivateValues none\n"
         "  <Limit All>\n"
         "    Order deny,allow\n"
         "  </Limit>\n"
         "</Policy>\n";
}

}  // namespace

PrivateSpooler::PrivateSpooler(const std::string& configuration) {
  chmod(folder_.path().c_str(), 0755);  // filters are not run as root
  install();
  if (testing::Test::HasFatalFailure()) return;
  configure(configuration);
  startDaemon();
}

PrivateSpooler::~PrivateSpooler() {
  disconnect();
  daemon_.stop();
  if (testing::Test::HasFailure()) {
    std::printf("The spooler's log ends so:\n%s", lastJobLines(errorLog()).c_str());
  }
}

// ---- Start ----

void PrivateSpooler::install() {
  const CommandResult result = run({KORVEL_CMAKE, "--install", KORVEL_BUILD_DIR}, 60,
                                   {{"DESTDIR", folder_.file("installed")}});
  ASSERT_EQ(result.status, 0) << result.output;
  linkStock(KORVEL_STOCK_SERVERBIN, installed(KORVEL_CUPS_SERVERBIN), {"filter", "backend"});
  linkStock(KORVEL_STOCK_DATADIR, installed(KORVEL_CUPS_DATADIR), {});
  fs::copy_file(KORVEL_DIVERTED_FILES, folder_.file("diverted_files.so"));
}

// Links to every stock entry that is not there already; goes into the folders `merged`.
void PrivateSpooler::linkStock(const std::string& stock, const std::string& ours,
                               const std::vector<std::string>& merged) {
  for (const fs::directory_entry& entry : fs::directory_iterator(stock)) {
    const fs::path target = fs::path(ours) / entry.path().filename();
    if (!fs::exists(fs::symlink_status(target))) fs::create_symlink(entry.path(), target);
  }
  for (const std::string& name : merged) linkStock(stock + "/" + name, ours + "/" + name, {});
}

void PrivateSpooler::configure(const std::string& configuration) {
  for (const char* name :
       {"etc", "spool", "spool/tmp", "spool/tmp/dumps", "cache", "run", "log", "socket"}) {
    fs::create_directory(folder_.file(name));
  }
  chmod(folder_.file("socket").c_str(), 0700);
  chmod(folder_.file("spool/tmp/dumps").c_str(), 01777);  // filters run as another user
  std::string text = configuration.empty() ? privateConfiguration() : configuration;
  const std::string mark = "@SOCKET@";
  folder_.write("etc/cupsd.conf", text.replace(text.find(mark), mark.size(), socket()));
  std::ostringstream files;
  files << "ServerRoot " << folder_.file("etc") << "\n"
        << "RequestRoot " << folder_.file("spool") << "\n"
        << "TempDir " << temporaryFiles() << "\n"
        << "CacheDir " << folder_.file("cache") << "\n"
        << "StateDir " << folder_.file("run") << "\n"
        << "ServerBin " << installed(KORVEL_CUPS_SERVERBIN) << "\n"
        << "DataDir " << installed(KORVEL_CUPS_DATADIR) << "\n"
        << "AccessLog " << folder_.file("log/access") << "\n"
        << "ErrorLog " << folder_.file("log/error") << "\n"
        << "PageLog " << folder_.file("log/page") << "\n"
        << "User " << userName() << "\n"
        << "Group " << groupName() << "\n"
        << "SystemGroup " << (groupName() == "root" ? "sys" : "root") << "\n"  // never the same
        << "SetEnv LD_PRELOAD " << folder_.file("diverted_files.so") << "\n"
        << "SetEnv KORVEL_SANDBOX " << temporaryFiles() << "\n"
        << "SetEnv ASAN_OPTIONS verify_asan_link_order=0:detect_leaks=0\n";
  folder_.write("etc/cups-files.conf", files.str());
}

void PrivateSpooler::startDaemon() {
  daemon_.start({{KORVEL_CUPSD, "-f", "-c", folder_.file("etc/cupsd.conf"), "-s",
                  folder_.file("etc/cups-files.conf")},
                 folder_.file("log/daemon"),
                 {}});
  bool ended = false;
  waitUntil(kStartSeconds, [&] {
    ended = daemon_.wait(0) != -1;
    connection_ = httpConnect2(socket().c_str(), 0, nullptr, AF_LOCAL, HTTP_ENCRYPTION_IF_REQUESTED,
                               1, kAnswerMilliseconds, nullptr);
    return ended || connection_ != nullptr;
  });
  ASSERT_NE(connection_, nullptr) << "the spooler does not start; is cups-daemon installed?\n"
                                  << folder_.read("log/daemon") << errorLog();
}

void PrivateSpooler::disconnect() {
  if (connection_ != nullptr) httpClose(connection_);
  connection_ = nullptr;
}

void PrivateSpooler::restart() {
  disconnect();
  daemon_.stop();
  startDaemon();
}

void PrivateSpooler::restartWith(const std::string& configuration) {
  folder_.write("etc/cupsd.conf", configuration);
  restart();
}

void PrivateSpooler::killAndRestart() {
  disconnect();
  daemon_.killProgram();
  EXPECT_NE(daemon_.wait(kStartSeconds), -1);
  startDaemon();
}

// ---- Commands ----

std::map<std::string, std::string> PrivateSpooler::clientEnvironment() const {
  return {{"CUPS_SERVER", socket()},
          {"CUPS_SERVERBIN", installed(KORVEL_CUPS_SERVERBIN)},
          {"LC_ALL", "C"}};
}

void PrivateSpooler::addQueue(const std::string& queue, const std::string& description, int port) {
  const CommandResult result =
      run({KORVEL_LPADMIN, "-h", socket(), "-p", queue, "-E", "-v",
           "socket://127.0.0.1:" + std::to_string(port), "-P", descriptionPath(description)});
  ASSERT_EQ(result.status, 0) << result.output;
}

void PrivateSpooler::setDevice(const std::string& queue, const std::string& uri) {
  const CommandResult result = run({KORVEL_LPADMIN, "-h", socket(), "-p", queue, "-v", uri});
  ASSERT_EQ(result.status, 0) << result.output;
}

void PrivateSpooler::setDefault(const std::string& queue, const std::string& option) {
  const CommandResult result = run({KORVEL_LPADMIN, "-h", socket(), "-p", queue, "-o", option});
  ASSERT_EQ(result.status, 0) << result.output;
}

int PrivateSpooler::print(const std::string& queue, const std::vector<std::string>& arguments) {
  std::vector<std::string> words = {KORVEL_LP, "-h", socket(), "-d", queue};
  words.insert(words.end(), arguments.begin(), arguments.end());
  const CommandResult result = run(words);
  EXPECT_EQ(result.status, 0) << result.output;
  const std::string before = "request id is " + queue + "-";  // then the number
  const size_t at = result.output.find(before);
  EXPECT_NE(at, std::string::npos) << result.output;
  if (at == std::string::npos) return 0;
  return std::atoi(result.output.c_str() + at + before.size());
}

void PrivateSpooler::cancel(int job) {
  const CommandResult result = run({KORVEL_CANCEL, "-h", socket(), std::to_string(job)});
  EXPECT_EQ(result.status, 0) << result.output;
}

// ---- What the spooler reports ----

ipp_t* PrivateSpooler::ask(ipp_op_t operation, const std::string& path) {
  ipp_t* request = ippNewRequest(operation);
  const bool job = operation == IPP_OP_GET_JOB_ATTRIBUTES;
  const std::string uri = "ipp://localhost" + path;
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_URI, job ? "job-uri" : "printer-uri", nullptr,
               uri.c_str());
  return cupsDoRequest(connection_, request, path.c_str());
}

int PrivateSpooler::askInteger(ipp_op_t operation, const std::string& path, const char* attribute) {
  ipp_t* answer = ask(operation, path);
  const int value = ippGetInteger(ippFindAttribute(answer, attribute, IPP_TAG_ZERO), 0);
  ippDelete(answer);
  return value;
}

int PrivateSpooler::jobState(int job) {
  return askInteger(IPP_OP_GET_JOB_ATTRIBUTES, "/jobs/" + std::to_string(job), "job-state");
}

int PrivateSpooler::sheetsCompleted(int job) {
  return askInteger(IPP_OP_GET_JOB_ATTRIBUTES, "/jobs/" + std::to_string(job),
                    "job-media-sheets-completed");
}

bool PrivateSpooler::waitForJob(int job, double seconds) {
  return job != 0 && waitUntil(seconds, [&] { return jobState(job) >= IPP_JSTATE_STOPPED; }) &&
         jobState(job) == IPP_JSTATE_COMPLETED;
}

int PrivateSpooler::queueState(const std::string& queue) {
  return askInteger(IPP_OP_GET_PRINTER_ATTRIBUTES, "/printers/" + queue, "printer-state");
}

std::set<std::string> PrivateSpooler::reasons(const std::string& queue) {
  std::set<std::string> all;
  ipp_t* answer = ask(IPP_OP_GET_PRINTER_ATTRIBUTES, "/printers/" + queue);
  ipp_attribute_t* found = ippFindAttribute(answer, "printer-state-reasons", IPP_TAG_KEYWORD);
  for (int i = 0; i < ippGetCount(found); ++i) all.insert(ippGetString(found, i, nullptr));
  ippDelete(answer);
  all.erase("none");
  return all;
}

// The spooler gives its programs the variable CUPS_SERVERROOT, ours alone.
std::set<std::string> PrivateSpooler::jobPrograms() const {
  std::set<std::string> programs;
  const std::string mark = "CUPS_SERVERROOT=" + folder_.file("etc");
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
    std::ifstream environment(entry.path() / "environ", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(environment), {}};
    if (text.find(mark) == std::string::npos) continue;
    std::error_code gone;
    const fs::path program = fs::read_symlink(entry.path() / "exe", gone);
    if (!gone) programs.insert(program.filename().string());
  }
  return programs;
}

std::string PrivateSpooler::descriptionPath(const std::string& description) const {
  return installed(KORVEL_CUPS_DATADIR) + "/model/korvel/" + description + ".ppd";
}

std::string PrivateSpooler::filterPath() const {
  return installed(KORVEL_CUPS_SERVERBIN) + "/filter/rastertokorvel";
}

std::string PrivateSpooler::toolPath(const std::string& tool) const {
  return installed(KORVEL_INSTALL_PREFIX) + "/bin/" + tool;
}
