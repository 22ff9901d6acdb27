// The order of a change: it is recorded, then queues change, then the server is opened, so that an
// interruption at any point exposes nothing and can be taken back.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/queue_sharing.h"

#include <cups/cups.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

#include "drawing/dot_canvas.h"
#include "tools/common/process.h"
#include "tools/common/translation.h"
#include "tools/description/description_text.h"
#include "tools/description/size_order.h"
#include "tools/setup/apple_raster.h"
#include "tools/setup/network_proof.h"
#include "tools/setup/preset.h"
#include "tools/setup/queue_setup.h"
#include "tools/setup/server_config.h"
#include "tools/setup/sharing_state.h"

namespace korvel {

namespace {

using Sizes = std::vector<std::string>;

constexpr char kServerConfig[] = "/admin/conf/cupsd.conf";
constexpr char kAvahiSocket[] = "/run/avahi-daemon/socket";
constexpr char kAvahiProgram[] = "/usr/sbin/avahi-daemon";
constexpr int kRestartSeconds = 15;
constexpr int kLookUpMilliseconds = 1000;
constexpr int kLookUps = 8;

std::string hostName() {
  char name[256] = "";
  gethostname(name, sizeof name - 1);
  return name;
}

// "Korvel K220" of "Korvel K220 203 dpi, 1.0".
std::string shortModel(const std::string& makeAndModel) {
  const size_t second = makeAndModel.find(' ', makeAndModel.find(' ') + 1);
  return makeAndModel.substr(0, second);
}

// The sizes that cupsd reports as ready without a line of its own, by the paper of this country.
Sizes stockReadySizes() {
  std::ifstream file("/etc/papersize");
  std::string paper;
  file >> paper;
  const Sizes a4 = {"A4", "A3", "A5", "A6", "EnvDL"};
  const Sizes letter = {"Letter", "Legal", "Tabloid", "4x6", "Env10"};
  if (paper == "a4") return a4;
  if (paper == "letter") return letter;
  Sizes both = a4;
  both.insert(both.end(), letter.begin(), letter.end());
  return both;
}

Sizes merged(Sizes base, const SharingState& state) {
  for (const QueueRecord& queue : state.queues) {
    for (const std::string& size : queue.readySizes) {
      if (std::find(base.begin(), base.end(), size) == base.end()) base.push_back(size);
    }
  }
  return base;
}

// Another order of a queue's sizes: where two are close, the server takes the first one.
struct SizeChange {
  std::string queue;
  std::string description;  // the PPD to be; empty: it stays
  std::vector<std::string> notes;
};

// What a command is about to change.
struct Plan {
  SharingState state;  // after the change
  ConfigChange config;
  SizeChange sizes;
  std::vector<QueueRecord> published, hidden;  // queues as they are to be
  bool startAvahi = false;
  bool stopAvahi = false;
  bool empty() const {
    return config.edits.empty() && published.empty() && hidden.empty() && !startAvahi &&
           sizes.description.empty();
  }
};

QueueRecord asItIs(const Queue& queue) {
  return {queue.name, queue.shared, queue.info, queue.location, {}, false};
}

// Clients send job after job: a lost connection must not hold the queue up, nor lose a label.
bool moves(const Queue& queue) { return addressWithTurns(queue.uri) != queue.uri; }

// Where the queue was before it was shared; empty when it is elsewhere by now, or when another
// queue takes turns with it.
std::string formerDevice(const PrintSystem& system, const Queue& queue, const std::string& uri) {
  if (uri.empty() || addressWithTurns(uri) != queue.uri) return "";
  for (const Queue& other : system.queues()) {
    const bool takesTurns = !moves(other) && deviceOf(other.uri) == deviceOf(uri);
    if (other.name != queue.name && takesTurns) return "";
  }
  return uri;
}

// The queue as people are to find it.
QueueRecord asShared(const Queue& queue, const std::string& description,
                     const SharingRequest& request) {
  QueueRecord wanted = asItIs(queue);
  wanted.wasShared = true;
  const bool unnamed =
      queue.info.empty() || queue.info == queue.name || queue.info == queue.makeAndModel;
  const std::string model = shortModel(queue.makeAndModel);
  if (unnamed) {
    wanted.info = takesSingleSheets(description) ? filled("Stencils (%s)", model.c_str())
                                                 : filled("Labels (%s)", model.c_str());
  }
  if (queue.location.empty()) wanted.location = hostName();
  if (!request.info.empty()) wanted.info = request.info;
  if (!request.location.empty()) wanted.location = request.location;
  if (moves(queue)) wanted.uri = addressWithTurns(queue.uri);
  return wanted;
}

bool differs(const QueueRecord& wanted, const Queue& queue) {
  return wanted.wasShared != queue.shared || wanted.info != queue.info ||
         wanted.location != queue.location || !wanted.uri.empty();
}

// Phones show the announced name only: two queues must not have the same.
std::string distinctInfo(const PrintSystem& system, const std::string& queue, std::string info) {
  for (const Queue& other : system.queues()) {
    if (other.name != queue && other.shared && other.info == info) info += " " + queue;
  }
  return info;
}

void recordShared(const Queue& queue, const Sizes& sizes, SharingState* state) {
  QueueRecord* old = state->find(queue.name);
  if (old == nullptr) {
    state->queues.push_back(asItIs(queue));
    old = &state->queues.back();
  }
  if (moves(queue)) old->uri = queue.uri;
  old->hidden = false;
  old->readySizes = sizes;
}

// While nothing was shared, queues marked as shared were private all the same; they stay so.
void planHidden(const PrintSystem& system, const std::string& shared, Plan* plan) {
  for (const Queue& other : system.queues()) {
    if (other.name == shared || !other.shared) continue;
    QueueRecord record = asItIs(other);
    record.hidden = true;
    plan->state.queues.push_back(record);
    record.wasShared = false;
    plan->hidden.push_back(record);
  }
}

// Clients get the sizes that the printer holds, not others that are nearly as large.
SizeChange planSizes(const std::string& queue, const std::string& description, const Sizes& held) {
  SizeChange change = {queue, "", {}};
  for (const std::string& size : held) {
    const std::string taken = sizeTakenFor(description, size);
    if (std::find(held.begin(), held.end(), taken) != held.end()) continue;
    change.notes.push_back(
        filled("Queue %s: %s becomes the first size; tablets and phones that ask for it would "
               "get %s.",
               queue.c_str(), size.c_str(), taken.c_str()));
  }
  if (!change.notes.empty()) change.description = withSizesFirst(description, held);
  return change;
}

// The driver's own order.
SizeChange planSizesBack(const PrintSystem& system, const std::string& queue) {
  const std::string description = system.queueDescription(queue);
  const std::string driver = system.installedDescription(system.installedFor(description).name);
  SizeChange change = {queue, withSizesFirst(description, sizeNames(driver)), {}};
  if (change.description == description) return {};
  change.notes.push_back(
      filled("Queue %s: the sizes get the order of the driver again.", queue.c_str()));
  return change;
}

Result<Plan> planToShare(const PrintSystem& system, const Queue& queue,
                         const SharingRequest& request) {
  Result<std::string> text = readServerConfig(system);
  if (!text) return text.failure();
  const std::string description = system.queueDescription(queue.name);
  const Sizes sizes = request.readySizes.empty() ? sizesHeld(description) : request.readySizes;
  Plan plan;
  plan.state = loadState(request.stateFolder);
  const SharingConfig config = readSharingConfig(*text);
  if (!plan.state.sharesAny()) {
    plan.state.readyBase = config.readySizes.empty() ? stockReadySizes() : config.readySizes;
  }
  const bool closed = !config.listens || !config.admitsNetwork || !config.browsing;
  if (closed) planHidden(system, queue.name, &plan);
  recordShared(queue, sizes, &plan.state);
  plan.sizes = planSizes(queue.name, description, sizes);
  Result<ConfigChange> change = planSharing(*text, merged(plan.state.readyBase, plan.state));
  if (!change) return change.failure();
  plan.config = *change;
  plan.state.add(plan.config.edits);
  QueueRecord wanted = asShared(queue, description, request);
  wanted.info = distinctInfo(system, queue.name, wanted.info);
  if (differs(wanted, queue)) plan.published.push_back(wanted);
  plan.startAvahi = access(kAvahiSocket, F_OK) != 0 && access(kAvahiProgram, X_OK) == 0;
  plan.state.startedAvahi = plan.state.startedAvahi || plan.startAvahi;
  return plan;
}

// ---- Show ----

void showEdit(const LineEdit& edit) {
  const std::string section = edit.section.empty() ? "" : "  (" + edit.section + ")";
  if (!edit.before.empty()) std::printf("  - %s%s\n", edit.before.c_str(), section.c_str());
  if (!edit.after.empty()) std::printf("  + %s%s\n", edit.after.c_str(), section.c_str());
}

void showQueue(const QueueRecord& queue) {
  std::printf("  lpadmin -p %s -o printer-is-shared=%s -D '%s' -L '%s'", queue.name.c_str(),
              queue.wasShared ? "true" : "false", queue.info.c_str(), queue.location.c_str());
  if (!queue.uri.empty()) std::printf(" -v '%s'", queue.uri.c_str());
  std::printf("\n");
}

void show(const Plan& plan) {
  if (!plan.config.edits.empty()) {
    std::printf("%s\n", translated("Changes to the print server's cupsd.conf:"));
    for (const LineEdit& edit : plan.config.edits) showEdit(edit);
  }
  if (!plan.published.empty() || !plan.hidden.empty()) {
    std::printf("%s\n", translated("Changes to queues:"));
    for (const QueueRecord& queue : plan.published) showQueue(queue);
    for (const QueueRecord& queue : plan.hidden) showQueue(queue);
  }
  for (const std::string& note : plan.sizes.notes) std::printf("%s\n", note.c_str());
  if (plan.startAvahi) {
    std::printf("%s\n  systemctl enable --now avahi-daemon\n",
                translated("Announcing printers needs the service avahi-daemon:"));
  }
}

// ---- Change ----

Failure notAllowed() {
  return Failure{filled("The print server does not accept changes: %s; run the command as root.",
                        cupsLastErrorString())};
}

Result<void> writeServerConfig(const std::string& text) {
  const Descriptor file(memfd_create("cupsd.conf", MFD_CLOEXEC));
  if (write(file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
      lseek(file.get(), 0, SEEK_SET) != 0) {
    return notAllowed();
  }
  const HttpConnection connection = connectToPrintService();
  const http_status_t status = cupsPutFd(connection.get(), kServerConfig, file.get());
  if (status != HTTP_STATUS_CREATED) return notAllowed();
  return {};
}

// The server reads its configuration again between two clients.
Result<void> waitForServer(const PrintSystem& system, const std::string& text) {
  for (int i = 0; i < kRestartSeconds * 10; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    if (!system.isThere()) continue;
    Result<std::string> now = readServerConfig(system);
    if (now && *now == text) return {};
  }
  return Failure{
      translated("The print server did not come back after its configuration was "
                 "changed; as root: systemctl restart cups")};
}

Result<void> applyQueue(const QueueRecord& queue) {
  const std::string shared = queue.wasShared ? "true" : "false";
  std::vector<std::string> arguments = {"-p", queue.name, "-o", "printer-is-shared=" + shared,
                                        "-D", queue.info, "-L", queue.location};
  if (!queue.uri.empty()) arguments.insert(arguments.end(), {"-v", queue.uri});
  return runLpadmin(arguments);
}

// The bytes in a file that the owner removes; empty on failure.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& bytes) {
    char path[1024];
    const Descriptor file(cupsTempFd(path, sizeof path));
    if (!file.isOpen()) return;
    path_ = path;
    isWritten_ = write(file.get(), bytes.data(), bytes.size()) == ssize(bytes);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (!path_.empty()) unlink(path_.c_str());
  }
  bool isWritten() const { return isWritten_; }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
  bool isWritten_ = false;
};

Result<void> applySizes(const SizeChange& change) {
  if (change.description.empty()) return {};
  const TemporaryFile file(change.description);
  if (!file.isWritten()) return notAllowed();
  return runLpadmin({"-p", change.queue, "-P", file.path()});
}

Result<void> applyConfig(const PrintSystem& system, const ConfigChange& change) {
  if (change.edits.empty()) return {};
  // The server keeps what it knows about a queue when that is not older, by seconds, than its
  // configuration; a queue made in this second would keep its old sizes.
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  if (Result<void> written = writeServerConfig(change.text); !written) return written;
  return waitForServer(system, change.text);
}

// Whether it worked is seen by the check that follows.
void switchAvahi(const char* verb) {
  Program systemctl;
  systemctl.arguments = {"systemctl", verb, "--now", "avahi-daemon"};
  (void)runProgram(systemctl, kWithOutput);
}

// The server is opened last: by then every queue has the name, and the mark, that it is to have.
Result<void> apply(const PrintSystem& system, const Plan& plan) {
  for (const std::vector<QueueRecord>* queues : {&plan.hidden, &plan.published}) {
    for (const QueueRecord& queue : *queues) {
      if (Result<void> done = applyQueue(queue); !done) return done;
    }
  }
  if (Result<void> done = applySizes(plan.sizes); !done) return done;
  if (plan.startAvahi) switchAvahi("enable");
  return applyConfig(system, plan.config);
}

bool mayChange(const SharingRequest& request) {
  return !request.dryRun && (!request.agreed || request.agreed());
}

// The responder announces a printer a second or two after it was shared.
bool isAnnounced(const std::string& queue, const std::string& name) {
  for (int i = 0; i < kLookUps; ++i) {
    const ServiceInstance found = lookUpPrinter(name, kLookUpMilliseconds);
    const auto resource = found.text.find("rp");
    if (resource != found.text.end() && resource->second == "printers/" + queue) return true;
  }
  return false;
}

std::string joined(const Sizes& list) {
  std::string text;
  for (const std::string& one : list) text += (text.empty() ? "" : ", ") + one;
  return text;
}

Result<Queue> sharedCandidate(const PrintSystem& system, const std::string& name) {
  if (!system.isThisMachine()) {
    return Failure{translated("Run --share and --unshare on the computer of the print server.")};
  }
  const auto queue = system.queue(name);
  if (queue) return *queue;
  return Failure{filled("There is no queue %s. Show all queues: lpstat -e", name.c_str())};
}

}  // namespace

// ---- Ask ----

Result<std::string> readServerConfig(const PrintSystem& system) {
  const std::optional<std::string> text = system.administratorsFile(kServerConfig);
  if (text) return *text;
  return Failure{
      translated("The print server's configuration cannot be read; run the command as "
                 "root.")};
}

bool isSharedByUs(const std::string& stateFolder, const std::string& queue) {
  SharingState state = loadState(stateFolder);
  const QueueRecord* record = state.find(queue);
  return record != nullptr && !record->hidden;
}

Sizes sizesHeld(const std::string& description) {
  if (!takesSingleSheets(description)) {
    const std::string size = keyword(description, "DefaultPageSize");
    return size.starts_with(kCustomChoice) ? Sizes() : Sizes{size};
  }
  Sizes all;
  const Ppd ppd = openDescription(description);
  for (int i = 0; ppd != nullptr && i < ppd->num_sizes; ++i) all.emplace_back(ppd->sizes[i].name);
  return all;
}

Sizes parseSizes(const std::string& text) {
  Sizes sizes;
  std::istringstream in(text);
  for (std::string size; std::getline(in, size, ',');) {
    if (!size.empty()) sizes.push_back(size);
  }
  return sizes;
}

// ---- Share ----

Result<void> shareQueue(const PrintSystem& system, const SharingRequest& request) {
  const Result<Queue> queue = sharedCandidate(system, request.queue);
  if (!queue) return queue.failure();
  Result<Plan> plan = planToShare(system, queue.value(), request);
  if (!plan) return plan.failure();
  if (plan->empty()) {
    std::printf("%s\n", filled("Queue %s is already shared.", request.queue.c_str()).c_str());
    return request.dryRun ? Result<void>() : proveSharing(*system.queue(request.queue));
  }
  show(*plan);
  if (!mayChange(request)) return {};
  if (Result<void> saved = saveState(request.stateFolder, plan->state); !saved) return saved;
  if (Result<void> done = apply(system, *plan); !done) return done;
  return proveSharing(*system.queue(request.queue));
}

Result<void> proveSharing(const Queue& queue) {
  const std::vector<std::string> addresses = networkAddresses();
  if (addresses.empty()) {
    return Failure{
        translated("This computer has no network address; connect it to the network of "
                   "the tablets and phones.")};
  }
  Result<SharedQueue> answer = askOverNetwork(addresses[0], queue.name);
  if (!answer) return answer.failure();
  std::printf("%s\n", filled("Queue %s answers at ipp://%s:631/printers/%s.", queue.name.c_str(),
                             addresses[0].c_str(), queue.name.c_str())
                          .c_str());
  if (!answer->takesAppleRaster) {
    return Failure{
        translated("The print server cannot convert what tablets and phones send; "
                   "install cups-filters.")};
  }
  const Sizes& ready = answer->readySizes;
  if (std::find(ready.begin(), ready.end(), answer->defaultSize) == ready.end()) {
    return Failure{
        filled("Queue %s does not offer its own paper size; set a size of its driver: "
               "korvel-setup -p %s -o PageSize=SIZE, then repeat --share.",
               queue.name.c_str(), queue.name.c_str())};
  }
  std::printf("%s\n", filled("Paper offered: %s", joined(ready).c_str()).c_str());
  if (!isAnnounced(queue.name, answer->announcedName)) {
    return Failure{
        translated("The printer is not announced on the network; install and start "
                   "avahi-daemon, and let the firewall pass UDP port 5353.")};
  }
  std::printf(
      "%s\n",
      filled("Tablets and phones find it as \"%s\".", answer->announcedName.c_str()).c_str());
  return {};
}

// ---- Test sheet ----

namespace {

struct SheetSize {
  int width = 0, height = 0, dpi = 0;  // dots
};

SheetSize sheetSize(const std::string& description) {
  SheetSize sheet;
  const Ppd ppd = openDescription(description);
  if (ppd == nullptr) return sheet;
  ppdMarkDefaults(ppd.get());
  const ppd_size_t* size = ppdPageSize(ppd.get(), nullptr);
  sheet.dpi = std::atoi(keyword(description, "DefaultResolution").c_str());
  if (size != nullptr) {
    sheet.width = static_cast<int>(std::lround(double{size->width} * sheet.dpi / 72));
    sheet.height = static_cast<int>(std::lround(double{size->length} * sheet.dpi / 72));
  }
  return sheet;
}

// A frame and two lines of text, so that missing edges and a wrong size are seen at once.
DotCanvas testSheet(const SheetSize& size, const std::string& name) {
  DotCanvas canvas(size.width, size.height);
  const int margin = size.dpi / 12;
  canvas.frame(margin, margin, size.width - 2 * margin, size.height - 2 * margin, size.dpi / 50);
  const double room = size.width - 4.0 * margin;
  const TextStyle one = {10};
  const double height =
      std::min(10 * room / textWidth(name, one), (size.height - 4.0 * margin) / 4);
  drawTextCentred(&canvas, {size.width / 2.0, size.height / 2.0 - height}, name, {height});
  return canvas;
}

}  // namespace

Result<int> printSharedTestSheet(const PrintSystem& system, const std::string& queue) {
  const std::string description = system.queueDescription(queue);
  const SheetSize size = sheetSize(description);
  const std::vector<std::string> addresses = networkAddresses();
  if (size.width < 1 || size.height < 1 || addresses.empty()) {
    return Failure{filled("A test sheet for queue %s cannot be made.", queue.c_str())};
  }
  const std::string page = appleRaster(testSheet(size, queue), size.dpi);
  const TemporaryFile file(page);
  if (!file.isWritten()) return notAllowed();
  return printOverNetwork(addresses[0], queue, file.path(), "image/urf", "Test sheet");
}

// ---- Unshare ----

namespace {

Failure notShared(const std::string& queue) {
  return Failure{
      filled("Queue %s was not shared by korvel-setup; nothing was changed. To stop "
             "sharing it: lpadmin -p %s -o printer-is-shared=false",
             queue.c_str(), queue.c_str())};
}

void forget(const std::string& queue, SharingState* state) {
  std::erase_if(state->queues, [&queue](const auto& one) { return one.name == queue; });
}

// The last shared queue closes the server again, and hidden queues get their mark back.
void planToClose(const PrintSystem& system, const std::string& text, Plan* plan) {
  for (const QueueRecord& one : plan->state.queues) {
    if (system.queue(one.name)) plan->hidden.push_back(one);
  }
  plan->config.text = takeBack(text, plan->state.edits);
  if (plan->config.text != text) {
    for (const LineEdit& edit : plan->state.edits) {
      plan->config.edits.push_back({edit.section, edit.after, edit.before});
    }
  }
  plan->stopAvahi = plan->state.startedAvahi;
  plan->state = {};
}

Result<Plan> planToUnshare(const PrintSystem& system, const Queue& queue,
                           const SharingRequest& request) {
  Plan plan;
  plan.state = loadState(request.stateFolder);
  const QueueRecord* record = plan.state.find(request.queue);
  if (record == nullptr || record->hidden) return notShared(request.queue);
  Result<std::string> text = readServerConfig(system);
  if (!text) return text.failure();
  plan.published.push_back(*record);
  plan.published[0].uri = formerDevice(system, queue, record->uri);
  plan.sizes = planSizesBack(system, request.queue);
  QueueRecord hidden = *record;
  hidden.uri.clear();
  forget(request.queue, &plan.state);
  if (!plan.state.sharesAny()) {
    planToClose(system, *text, &plan);
    return plan;
  }
  // The server stays open for the others: only the last one gives this queue its mark back.
  if (hidden.wasShared) {
    hidden.hidden = true;
    hidden.readySizes.clear();
    plan.state.queues.push_back(hidden);
    plan.published[0].wasShared = false;
  }
  Result<ConfigChange> change = planSharing(*text, merged(plan.state.readyBase, plan.state));
  if (!change) return change.failure();
  plan.config = *change;
  plan.state.add(plan.config.edits);
  return plan;
}

}  // namespace

Result<void> unshareQueue(const PrintSystem& system, const SharingRequest& request) {
  const Result<Queue> queue = sharedCandidate(system, request.queue);
  if (!queue) return queue.failure();
  Result<Plan> plan = planToUnshare(system, queue.value(), request);
  if (!plan) return plan.failure();
  show(*plan);
  if (!mayChange(request)) return {};
  // The queue stops being published before the server closes; hidden ones come back after it.
  if (Result<void> done = applyQueue(plan->published[0]); !done) return done;
  if (Result<void> done = applySizes(plan->sizes); !done) return done;
  if (Result<void> done = applyConfig(system, plan->config); !done) return done;
  for (const QueueRecord& hidden : plan->hidden) {
    if (Result<void> done = applyQueue(hidden); !done) return done;
  }
  if (plan->stopAvahi) switchAvahi("disable");
  if (Result<void> saved = saveState(request.stateFolder, plan->state); !saved) return saved;
  std::printf("%s\n", filled("Queue %s is no longer shared.", request.queue.c_str()).c_str());
  return {};
}

}  // namespace korvel
