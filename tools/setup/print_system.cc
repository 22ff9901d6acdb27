// Requests to the spooler with its own library. They name the attributes that are needed, so that
// answers are short on a server with many queues.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/print_system.h"

#include <cups/adminutil.h>
#include <cups/cups.h>
#include <cups/ppd.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "tools/common/file_content.h"
#include "tools/common/process.h"
#include "tools/common/translation.h"
#include "tools/description/description_text.h"
#include "tools/description/driver_names.h"

namespace korvel {

namespace {

constexpr int kConnectMilliseconds = 10000;
constexpr int kDeviceSeconds = 10;

// An answer of the server, which it owns.
class Answer {
 public:
  explicit Answer(ipp_t* answer) : answer_(answer) {}
  Answer(const Answer&) = delete;
  Answer& operator=(const Answer&) = delete;
  ~Answer() { ippDelete(answer_); }

  ipp_t* get() const { return answer_; }
  bool good() const {
    return answer_ != nullptr && ippGetStatusCode(answer_) < IPP_STATUS_REDIRECTION_OTHER_SITE;
  }

  // Calls `take` for each group of attributes of the kind `tag`.
  template <typename Take>
  void forEachGroup(ipp_tag_t tag, Take take) const {
    if (!good()) return;
    ipp_attribute_t* at = ippFirstAttribute(answer_);
    while (at != nullptr) {
      while (at != nullptr && ippGetGroupTag(at) != tag) at = ippNextAttribute(answer_);
      std::map<std::string, ipp_attribute_t*> group;
      for (; at != nullptr && ippGetGroupTag(at) == tag; at = ippNextAttribute(answer_)) {
        if (ippGetName(at) != nullptr) group[ippGetName(at)] = at;
      }
      if (!group.empty()) take(group);
    }
  }

 private:
  ipp_t* answer_;
};

using Group = std::map<std::string, ipp_attribute_t*>;

std::string text(const Group& group, const char* name) {
  const auto found = group.find(name);
  const char* value = found == group.end() ? nullptr : ippGetString(found->second, 0, nullptr);
  return value == nullptr ? "" : value;
}

int integer(const Group& group, const char* name) {
  const auto found = group.find(name);
  return found == group.end() ? 0 : ippGetInteger(found->second, 0);
}

ipp_t* request(ipp_op_t operation, const std::string& queue,
               const std::vector<const char*>& attributes) {
  ipp_t* made = ippNewRequest(operation);
  if (!queue.empty()) {
    char uri[HTTP_MAX_URI];
    httpAssembleURIf(HTTP_URI_CODING_ALL, uri, sizeof uri, "ipp", nullptr, "localhost", 0,
                     "/printers/%s", queue.c_str());
    ippAddString(made, IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, uri);
  }
  ippAddStrings(made, IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes",
                static_cast<int>(attributes.size()), nullptr, attributes.data());
  return made;
}

constexpr const char* kRaster = "application/vnd.cups-raster";

constexpr const char* kScalingDefaults[] = {"natural-scaling-default", "ppi-default",
                                            "print-scaling-default", "scaling-default"};

// The first default that makes the size of a picture depend on more than its pixels. Every queue
// has the default print-scaling=auto, which does not.
std::string scalingDefault(const Group& group) {
  for (const std::string name : kScalingDefaults) {
    const auto found = group.find(name);
    if (found == group.end()) continue;
    char value[64] = "";
    ippAttributeString(found->second, value, sizeof value);
    const std::string option = name.substr(0, name.size() - std::string("-default").size());
    const std::string shown = option + "=" + value;
    const bool harmless =
        shown == "scaling=100" || (option == "print-scaling" && shown != "print-scaling=none");
    if (!harmless) return shown;
  }
  return "";
}

Queue queueOf(const Group& group) {
  Queue queue;
  queue.name = text(group, "printer-name");
  queue.uri = text(group, "device-uri");
  queue.makeAndModel = text(group, "printer-make-and-model");
  queue.message = text(group, "printer-state-message");
  queue.info = text(group, "printer-info");
  queue.location = text(group, "printer-location");
  queue.stopped = integer(group, "printer-state") == IPP_PSTATE_STOPPED;
  queue.busy = integer(group, "printer-state") == IPP_PSTATE_PROCESSING;
  const auto accepting = group.find("printer-is-accepting-jobs");
  queue.accepting = accepting == group.end() || ippGetBoolean(accepting->second, 0) != 0;
  const auto shared = group.find("printer-is-shared");
  queue.shared = shared != group.end() && ippGetBoolean(shared->second, 0) != 0;
  const auto reasons = group.find("printer-state-reasons");
  const int count = reasons == group.end() ? 0 : ippGetCount(reasons->second);
  for (int i = 0; i < count; ++i) queue.reasons.insert(ippGetString(reasons->second, i, nullptr));
  queue.reasons.erase("none");
  queue.scaling = scalingDefault(group);
  return queue;
}

const std::vector<const char*> kQueueAttributes = {"printer-name",
                                                   "device-uri",
                                                   "printer-make-and-model",
                                                   "printer-state-message",
                                                   "printer-info",
                                                   "printer-location",
                                                   "printer-is-shared",
                                                   "printer-state",
                                                   "printer-state-reasons",
                                                   "printer-is-accepting-jobs",
                                                   "natural-scaling-default",
                                                   "ppi-default",
                                                   "print-scaling-default",
                                                   "scaling-default"};

const std::vector<const char*> kJobAttributes = {"job-id",
                                                 "job-state",
                                                 "document-format-detected",
                                                 "job-printer-state-message",
                                                 "job-media-sheets-completed",
                                                 "job-printer-up-time",
                                                 "time-at-creation",
                                                 "time-at-processing"};

Job jobOf(const Group& group) {
  Job job;
  job.number = integer(group, "job-id");
  job.state = integer(group, "job-state");
  job.message = text(group, "job-printer-state-message");
  job.format = text(group, "document-format-detected");
  job.sheets = integer(group, "job-media-sheets-completed");
  job.created = integer(group, "time-at-creation");
  job.begun = integer(group, "time-at-processing");
  job.now = integer(group, "job-printer-up-time");
  if (job.state == IPP_JSTATE_PROCESSING && job.begun > 0) job.seconds = job.now - job.begun;
  return job;
}

// While there is one, who may not read something is refused and not asked for a password.
class WithoutPassword {
 public:
  WithoutPassword() {
    cupsSetPasswordCB2([](const char*, http_t*, const char*, const char*,
                          void*) -> const char* { return nullptr; },
                       nullptr);
  }
  WithoutPassword(const WithoutPassword&) = delete;
  WithoutPassword& operator=(const WithoutPassword&) = delete;
  ~WithoutPassword() { cupsSetPasswordCB2(nullptr, nullptr); }
};

// The content of a temporary file of the library, which is then removed.
std::string taken(const char* path) {
  if (path == nullptr) return "";
  std::string all = contentOf(path);
  unlink(path);
  return all;
}

void addDevice(const char*, const char* id, const char* info, const char* makeAndModel,
               const char* uri, const char*, void* list) {
  // Backends without a certain device report only their scheme.
  if (std::string(uri).find(':') == std::string::npos) return;
  static_cast<std::vector<Device>*>(list)->push_back({uri, info, makeAndModel, id});
}

Failure jobRefused() {
  return {filled("The print service refused the job: %s", cupsLastErrorString())};
}

}  // namespace

std::string Description::bareName() const {
  const size_t slash = name.rfind('/');
  const std::string file = slash == std::string::npos ? name : name.substr(slash + 1);
  return file.substr(0, file.find(".ppd"));
}

bool Queue::isOurs() const { return makeAndModel.starts_with(kMake); }

HttpConnection connectToPrintService() {
  return HttpConnection(httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(),
                                     1, kConnectMilliseconds, nullptr));
}

bool PrintSystem::isThere() const { return connectToPrintService() != nullptr; }

bool PrintSystem::isThisMachine() const {
  const std::string server = cupsServer();
  return server.starts_with("/") || server == "localhost" || server == "127.0.0.1";
}

std::vector<Device> PrintSystem::devices() const {
  std::vector<Device> found;
  cupsGetDevices(CUPS_HTTP_DEFAULT, kDeviceSeconds, CUPS_INCLUDE_ALL, CUPS_EXCLUDE_NONE, addDevice,
                 &found);
  return found;
}

std::vector<Description> PrintSystem::descriptions() const {
  const Answer answer(
      cupsDoRequest(CUPS_HTTP_DEFAULT,
                    request(IPP_OP_CUPS_GET_PPDS, "", {"ppd-name", "ppd-make-and-model"}), "/"));
  std::vector<Description> all;
  answer.forEachGroup(IPP_TAG_PRINTER, [&all](const Group& group) {
    const std::string makeAndModel = text(group, "ppd-make-and-model");
    if (makeAndModel.starts_with(kMake)) all.push_back({text(group, "ppd-name"), makeAndModel});
  });
  return all;
}

std::optional<Queue> PrintSystem::queue(const std::string& name) const {
  const Answer answer(cupsDoRequest(
      CUPS_HTTP_DEFAULT, request(IPP_OP_GET_PRINTER_ATTRIBUTES, name, kQueueAttributes), "/"));
  std::optional<Queue> found;
  answer.forEachGroup(IPP_TAG_PRINTER, [&found](const Group& group) { found = queueOf(group); });
  return found;
}

std::vector<Queue> PrintSystem::queues() const {
  const Answer answer(cupsDoRequest(CUPS_HTTP_DEFAULT,
                                    request(IPP_OP_CUPS_GET_PRINTERS, "", kQueueAttributes), "/"));
  std::vector<Queue> all;
  answer.forEachGroup(IPP_TAG_PRINTER,
                      [&all](const Group& group) { all.push_back(queueOf(group)); });
  return all;
}

std::vector<Job> PrintSystem::jobs(const std::string& queue) const {
  ipp_t* asked = request(IPP_OP_GET_JOBS, queue, kJobAttributes);
  ippAddString(asked, IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "which-jobs", nullptr, "all");
  const Answer answer(cupsDoRequest(CUPS_HTTP_DEFAULT, asked, "/"));
  std::vector<Job> all;
  answer.forEachGroup(IPP_TAG_JOB, [&all](const Group& group) { all.push_back(jobOf(group)); });
  std::sort(all.begin(), all.end(),
            [](const Job& one, const Job& other) { return one.number < other.number; });
  return all;
}

std::vector<Job> jobsToExamine(std::vector<Job> all) {
  const int newest = all.empty() ? 0 : all.back().number;
  std::erase_if(all, [newest](const Job& job) {
    const bool failed = job.state == IPP_JSTATE_ABORTED;
    const bool printedRaster = job.state == IPP_JSTATE_COMPLETED && job.format == kRaster;
    return job.state >= IPP_JSTATE_CANCELED && (job.number != newest || !(failed || printedRaster));
  });
  return all;
}

bool PrintSystem::fetchDocument(int job, const std::string& path) const {
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (file.get() < 0) return false;
  ipp_t* asked = ippNewRequest(IPP_OP_CUPS_GET_DOCUMENT);
  const std::string uri = "ipp://localhost/jobs/" + std::to_string(job);
  ippAddString(asked, IPP_TAG_OPERATION, IPP_TAG_URI, "job-uri", nullptr, uri.c_str());
  ippAddString(asked, IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr, cupsUser());
  ippAddInteger(asked, IPP_TAG_OPERATION, IPP_TAG_INTEGER, "document-number", 1);
  const WithoutPassword asksNobody;
  const Answer answer(cupsDoIORequest(CUPS_HTTP_DEFAULT, asked, "/", -1, file.get()));
  return cupsLastError() == IPP_STATUS_OK;
}

std::optional<std::string> PrintSystem::administratorsFile(const char* path) const {
  const Descriptor file(memfd_create("answer", MFD_CLOEXEC));
  const HttpConnection connection = connectToPrintService();
  const WithoutPassword asksNobody;
  if (cupsGetFd(connection.get(), path, file.get()) != HTTP_STATUS_OK) return std::nullopt;
  return contentOf("/proc/self/fd/" + std::to_string(file.get()));
}

std::string PrintSystem::queueDescription(const std::string& queue) const {
  return taken(cupsGetPPD2(CUPS_HTTP_DEFAULT, queue.c_str()));
}

std::string PrintSystem::installedDescription(const std::string& name) const {
  return taken(cupsGetServerPPD(CUPS_HTTP_DEFAULT, name.c_str()));
}

Description PrintSystem::installedFor(const std::string& description) const {
  const std::string model = keyword(description, "ShortNickName");
  for (const Description& one : descriptions()) {
    if (one.makeAndModel.substr(0, one.makeAndModel.find(',')) == model) return one;
  }
  return {};
}

Result<int> PrintSystem::print(const std::string& queue, const std::string& file,
                               const std::string& title) const {
  const int job =
      cupsPrintFile2(CUPS_HTTP_DEFAULT, queue.c_str(), file.c_str(), title.c_str(), 0, nullptr);
  if (job != 0) return job;
  return jobRefused();
}

Result<int> PrintSystem::printRaw(const std::string& queue, const std::string& bytes,
                                  const std::string& title) const {
  const int job = cupsCreateJob(CUPS_HTTP_DEFAULT, queue.c_str(), title.c_str(), 0, nullptr);
  if (job == 0) return jobRefused();
  const bool sent =
      cupsStartDocument(CUPS_HTTP_DEFAULT, queue.c_str(), job, title.c_str(), CUPS_FORMAT_RAW, 1) ==
          HTTP_STATUS_CONTINUE &&
      cupsWriteRequestData(CUPS_HTTP_DEFAULT, bytes.data(), bytes.size()) == HTTP_STATUS_CONTINUE &&
      cupsFinishDocument(CUPS_HTTP_DEFAULT, queue.c_str()) == IPP_STATUS_OK;
  if (sent) return job;
  const Failure refused = jobRefused();
  cupsCancelJob2(CUPS_HTTP_DEFAULT, queue.c_str(), job, 0);
  return refused;
}

int PrintSystem::jobState(int job) const {
  ipp_t* asked = request(IPP_OP_GET_JOB_ATTRIBUTES, "", {"job-state"});
  ippAddString(asked, IPP_TAG_OPERATION, IPP_TAG_URI, "job-uri", nullptr,
               ("ipp://localhost/jobs/" + std::to_string(job)).c_str());
  const Answer answer(cupsDoRequest(CUPS_HTTP_DEFAULT, asked, "/"));
  int state = 0;
  answer.forEachGroup(IPP_TAG_JOB,
                      [&state](const Group& group) { state = integer(group, "job-state"); });
  return state;
}

}  // namespace korvel
