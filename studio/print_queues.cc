// Requests by IPP through the spooler's library, each on a connection of its own.
// SPDX-License-Identifier: Apache-2.0
#include "studio/print_queues.h"

#include <cups/cups.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <utility>

#include "studio/sentences.h"
#include "tools/common/file_content.h"
#include "tools/description/driver_names.h"
#include "tools/description/printer_description.h"
#include "tools/preview/document.h"

namespace korvel {
namespace {

constexpr int kConnectMilliseconds = 5000;
constexpr size_t kSyncBytes =
    4;  // a raster stream's first word; pages follow each other without it

struct HttpCloser {
  void operator()(http_t* http) const { httpClose(http); }
};
using Connection = std::unique_ptr<http_t, HttpCloser>;

struct IppDeleter {
  void operator()(ipp_t* ipp) const { ippDelete(ipp); }
};
using Message = std::unique_ptr<ipp_t, IppDeleter>;

Connection connectToSpooler() {
  cupsSetUser(ownUser().c_str());
  return Connection(httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(), 1,
                                 kConnectMilliseconds, nullptr));
}

bool isGood(const Message& answer) {
  return answer && ippGetStatusCode(answer.get()) < IPP_STATUS_REDIRECTION_OTHER_SITE;
}

std::string text(ipp_t* message, const char* name) {
  const char* value = ippGetString(ippFindAttribute(message, name, IPP_TAG_ZERO), 0, nullptr);
  return value == nullptr ? "" : value;
}

int integer(ipp_t* message, const char* name) {
  ipp_attribute_t* found = ippFindAttribute(message, name, IPP_TAG_ZERO);
  return found == nullptr ? 0 : ippGetInteger(found, 0);
}

std::string textOf(ipp_attribute_t* attribute) {
  const char* value = ippGetString(attribute, 0, nullptr);
  return value == nullptr ? "" : value;
}

void takeReasons(ipp_attribute_t* attribute, std::vector<std::string>* reasons) {
  for (int i = 0; i < ippGetCount(attribute); ++i) {
    const std::string reason = ippGetString(attribute, i, nullptr);
    if (reason != "none") reasons->push_back(reason);
  }
}

const char* queueWord(int state) {
  return state == IPP_PSTATE_STOPPED      ? "stopped"
         : state == IPP_PSTATE_PROCESSING ? "printing"
                                          : "idle";
}

const char* jobWord(int state) {
  switch (state) {
    case IPP_JSTATE_HELD:
      return "held";
    case IPP_JSTATE_PROCESSING:
      return "printing";
    case IPP_JSTATE_STOPPED:
      return "stopped";
    case IPP_JSTATE_CANCELED:
      return "canceled";
    case IPP_JSTATE_ABORTED:
      return "aborted";
    case IPP_JSTATE_COMPLETED:
      return "done";
    default:
      return "waiting";
  }
}

void takeAttribute(ipp_attribute_t* attribute, QueueState* queue) {
  const std::string name = ippGetName(attribute);
  if (name == "printer-name") queue->name = textOf(attribute);
  if (name == "printer-info") queue->info = textOf(attribute);
  if (name == "printer-location") queue->location = textOf(attribute);
  if (name == "printer-make-and-model") queue->model = textOf(attribute);
  if (name == "printer-state") queue->state = queueWord(ippGetInteger(attribute, 0));
  if (name == "printer-state-reasons") takeReasons(attribute, &queue->reasons);
  if (name == "printer-state-message") queue->message = textOf(attribute);
  if (name == "printer-is-accepting-jobs") queue->accepting = ippGetBoolean(attribute, 0) != 0;
}

std::vector<QueueState> queuesIn(ipp_t* answer) {
  std::vector<QueueState> queues;
  bool inside = false;
  for (ipp_attribute_t* at = ippFirstAttribute(answer); at != nullptr;
       at = ippNextAttribute(answer)) {
    const bool isPrinter = ippGetGroupTag(at) == IPP_TAG_PRINTER && ippGetName(at) != nullptr;
    if (isPrinter && !inside) queues.emplace_back();
    inside = isPrinter;
    if (isPrinter) takeAttribute(at, &queues.back());
  }
  return queues;
}

Message jobRequest(ipp_op_t operation, int number) {
  Message request(ippNewRequest(operation));
  const std::string uri = "ipp://localhost/jobs/" + std::to_string(number);
  ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_URI, "job-uri", nullptr, uri.c_str());
  ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr,
               ownUser().c_str());
  return request;
}

Message send(http_t* http, Message request, const char* resource) {
  return Message(cupsDoRequest(http, request.release(), resource));
}

std::string lastPart(const std::string& uri) { return uri.substr(uri.rfind('/') + 1); }

class Options {
 public:
  explicit Options(const Choices& choices) {
    for (const auto& [name, value] : choices) {
      count_ = cupsAddOption(name.c_str(), value.c_str(), count_, &list_);
    }
  }
  Options(const Options&) = delete;
  Options& operator=(const Options&) = delete;
  ~Options() { cupsFreeOptions(count_, list_); }
  int count() const { return count_; }
  cups_option_t* list() const { return list_; }

 private:
  int count_ = 0;
  cups_option_t* list_ = nullptr;
};

// The page as often as there are copies: a raster job prints as it is.
bool writePages(http_t* http, const PrintJob& job) {
  std::vector<char> bytes(size_t{1} << 18);
  for (int copy = 0; copy < job.copies; ++copy) {
    std::ifstream in(job.raster, std::ios::binary);
    if (copy > 0) in.seekg(kSyncBytes);
    if (!in) return false;
    while (in.read(bytes.data(), static_cast<std::streamsize>(bytes.size())), in.gcount() > 0) {
      const auto count = static_cast<size_t>(in.gcount());
      if (cupsWriteRequestData(http, bytes.data(), count) != HTTP_STATUS_CONTINUE) return false;
    }
  }
  return true;
}

struct JobHead {
  const std::string& queue;
  const std::string& title;
  const char* type;  // MIME type
};

// `write` sends the document and returns whether all of it has arrived.
Result<int> sendJob(const JobHead& job, const Choices& choices,
                    const std::function<bool(http_t*)>& write) {
  const Connection http = connectToSpooler();
  if (!http) return Failure{kNoSpooler.english};
  const Options options(choices);
  const char* queue = job.queue.c_str();
  const int number =
      cupsCreateJob(http.get(), queue, job.title.c_str(), options.count(), options.list());
  if (number == 0) return Failure{kRefused.english};
  const bool sent = cupsStartDocument(http.get(), queue, number, job.title.c_str(), job.type, 1) ==
                        HTTP_STATUS_CONTINUE &&
                    write(http.get()) &&
                    cupsFinishDocument(http.get(), queue) < IPP_STATUS_REDIRECTION_OTHER_SITE;
  if (sent) return number;
  cupsCancelJob2(CUPS_HTTP_DEFAULT, queue, number, 0);
  return Failure{kRefused.english};
}

}  // namespace

std::string ownUser() {
  const passwd* user = getpwuid(geteuid());
  return user == nullptr ? "korvel-studio" : user->pw_name;
}

PrintQueues::PrintQueues(const std::vector<std::string>& offered, const std::string& folder)
    : offered_(offered), folder_(folder) {}

Result<std::vector<QueueState>> PrintQueues::list() {
  static constexpr const char* kWanted[] = {"printer-name",          "printer-info",
                                            "printer-location",      "printer-make-and-model",
                                            "printer-state",         "printer-state-reasons",
                                            "printer-state-message", "printer-is-accepting-jobs"};
  const Connection http = connectToSpooler();
  if (!http) return Failure{kNoSpooler.english};
  Message request(ippNewRequest(IPP_OP_CUPS_GET_PRINTERS));
  ippAddStrings(request.get(), IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes",
                static_cast<int>(std::size(kWanted)), nullptr, kWanted);
  const Message answer = send(http.get(), std::move(request), "/");
  if (answer && ippGetStatusCode(answer.get()) == IPP_STATUS_ERROR_NOT_FOUND) {
    return std::vector<QueueState>();  // the spooler has no queue at all
  }
  if (!isGood(answer)) return Failure{kNoSpooler.english};
  std::vector<QueueState> queues = queuesIn(answer.get());
  std::erase_if(queues, [this](const QueueState& queue) {
    const bool named = offered_.empty() ||
                       std::find(offered_.begin(), offered_.end(), queue.name) != offered_.end();
    return !named || !queue.model.starts_with(kMake);
  });
  return queues;
}

Result<QueueState> PrintQueues::state(const std::string& name) {
  Result<std::vector<QueueState>> queues = list();
  if (!queues) return queues.failure();
  for (const QueueState& queue : *queues) {
    if (queue.name == name) return queue;
  }
  return Failure{kNoQueue.english};
}

Result<Queue> PrintQueues::queue(const std::string& name) {
  const Result<QueueState> found = state(name);
  if (!found) return found.failure();
  const Connection http = connectToSpooler();
  if (!http) return Failure{kNoSpooler.english};
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto known = known_.find(name);
  time_t modified = known == known_.end() ? 0 : known->second.modified;
  char path[1024] = "";
  const http_status_t status = cupsGetPPD3(http.get(), name.c_str(), &modified, path, sizeof path);
  if (status == HTTP_STATUS_NOT_MODIFIED && known != known_.end()) {
    unlink(path);
    return known->second.queue;
  }
  if (status != HTTP_STATUS_OK) return Failure{kNoQueue.english};
  Result<Queue> kept = keep(name, path, modified);
  unlink(path);
  return kept;
}

Result<Queue> PrintQueues::keep(const std::string& name, const std::string& path, time_t modified) {
  Result<std::shared_ptr<const QueueDriver>> driver = QueueDriver::open(contentOf(path));
  if (!driver) return driver.failure();
  const std::string version = std::to_string(++fileNumber_);
  const std::string copy = folder_ + "/queue-" + version + ".ppd";
  if (!copyDescription(path, copy, true)) return Failure{kDiskFull.english};
  known_[name] = {modified, {name, *driver, copy, version}};
  return known_[name].queue;
}

Result<int> PrintQueues::print(const PrintJob& job) {
  return sendJob({job.queue, job.title, kRasterType}, job.choices,
                 [&job](http_t* http) { return writePages(http, job); });
}

Result<int> PrintQueues::sendCommands(const std::string& queue, const std::string& title,
                                      const std::string& commands) {
  return sendJob({queue, title, CUPS_FORMAT_RAW}, {}, [&commands](http_t* http) {
    return cupsWriteRequestData(http, commands.data(), commands.size()) == HTTP_STATUS_CONTINUE;
  });
}

Result<JobState> PrintQueues::job(int number) {
  const Connection http = connectToSpooler();
  if (!http) return Failure{kNoSpooler.english};
  const Message answer = send(http.get(), jobRequest(IPP_OP_GET_JOB_ATTRIBUTES, number), "/jobs/");
  if (!isGood(answer)) return Failure{kNoJob.english};
  JobState job;
  job.number = number;
  job.queue = lastPart(text(answer.get(), "job-printer-uri"));
  job.title = text(answer.get(), "job-name");
  job.user = text(answer.get(), "job-originating-user-name");
  job.state = jobWord(integer(answer.get(), "job-state"));
  job.message = text(answer.get(), "job-printer-state-message");
  job.sheets = integer(answer.get(), "job-media-sheets-completed");
  if (!state(job.queue)) return Failure{kNoJob.english};
  return job;
}

Result<void> PrintQueues::cancel(int number) {
  const Result<JobState> found = job(number);
  if (!found) return found.failure();
  if (found.value().user != ownUser() || found.value().hasEnded()) {
    return Failure{kNotOurJob.english};
  }
  const Connection http = connectToSpooler();
  if (!http) return Failure{kNoSpooler.english};
  const Message answer = send(http.get(), jobRequest(IPP_OP_CANCEL_JOB, number), "/jobs/");
  if (!isGood(answer)) return Failure{kNotOurJob.english};
  return {};
}

}  // namespace korvel
