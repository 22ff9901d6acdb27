// The message format of RFC 1035 section 4: a header of 12 bytes, then questions, then records,
// with names that may continue elsewhere in the message. SPDX-License-Identifier: Apache-2.0
#include "tools/setup/dnssd_message.h"

#include <strings.h>

#include <algorithm>
#include <optional>

namespace korvel {

namespace {

constexpr int kPtr = 12, kTxt = 16, kSrv = 33;
constexpr char kIpp[] = "_ipp._tcp.local";
constexpr int kMostJumps = 32;  // a damaged name may point to itself

void append16(std::string* message, int value) {
  message->push_back(static_cast<char>(value >> 8));
  message->push_back(static_cast<char>(value & 0xFF));
}

using Labels = std::vector<std::string>;

// Reads a message from front to back. After `failed` every value is 0 or empty.
class Reader {
 public:
  explicit Reader(std::string_view message) : message_(message) {}

  bool failed() const { return failed_; }
  size_t at() const { return at_; }
  void goTo(size_t place) {
    failed_ = failed_ || place > message_.size();
    at_ = place;
  }

  int read8() {
    if (failed_ || at_ >= message_.size()) failed_ = true;
    return failed_ ? 0 : static_cast<unsigned char>(message_[at_++]);
  }
  int read16() {
    const int high = read8();
    return high << 8 | read8();
  }
  std::string readText(size_t length) {
    if (failed_ || message_.size() - at_ < length) failed_ = true;
    if (failed_) return "";
    at_ += length;
    return std::string(message_.substr(at_ - length, length));
  }

  Labels readName() {
    Labels labels;
    std::optional<size_t> behind;  // the first pointer; reading goes on there
    for (int jumps = 0; !failed_;) {
      const int length = read8();
      if (length == 0) break;
      if (length < 0x40) {
        labels.push_back(readText(static_cast<size_t>(length)));
        continue;
      }
      const size_t place = static_cast<size_t>((length & 0x3F) << 8 | read8());
      if (!behind) behind = at_;
      failed_ = failed_ || ++jumps > kMostJumps;
      if (!failed_) goTo(place);
    }
    if (behind && !failed_) goTo(*behind);
    return labels;
  }

 private:
  std::string_view message_;
  size_t at_ = 0;
  bool failed_ = false;
};

std::string joined(const Labels& labels, size_t from) {
  std::string name;
  for (size_t i = from; i < labels.size(); ++i) name += (name.empty() ? "" : ".") + labels[i];
  return name;
}

struct Records {
  std::vector<Labels> instances;  // what PTR records of the service point to
  std::map<Labels, ServiceInstance> details;
};

std::map<std::string, std::string> readPairs(Reader* reader, size_t end) {
  std::map<std::string, std::string> pairs;
  while (!reader->failed() && reader->at() < end) {
    const std::string pair = reader->readText(static_cast<size_t>(reader->read8()));
    const size_t equals = pair.find('=');
    if (equals != std::string::npos) pairs[pair.substr(0, equals)] = pair.substr(equals + 1);
  }
  return pairs;
}

void readRecord(Reader* reader, const std::string& service, Records* records) {
  const Labels owner = reader->readName();
  const int type = reader->read16();
  reader->readText(6);  // class and time to live
  const size_t length = static_cast<size_t>(reader->read16());
  const size_t end = reader->at() + length;
  if (type == kPtr && strcasecmp(joined(owner, 0).c_str(), service.c_str()) == 0) {
    const Labels instance = reader->readName();
    if (!reader->failed()) records->instances.push_back(instance);
  } else if (type == kSrv) {
    reader->readText(4);  // priority and weight
    records->details[owner].port = reader->read16();
    records->details[owner].host = joined(reader->readName(), 0);
  } else if (type == kTxt) {
    records->details[owner].text = readPairs(reader, end);
  }
  reader->goTo(end);
}

Records readRecords(std::string_view answer, const std::string& service) {
  Reader reader(answer);
  reader.readText(4);  // number and flags
  const int questions = reader.read16();
  const int count = reader.read16() + reader.read16() + reader.read16();
  for (int i = 0; i < questions && !reader.failed(); ++i) {
    reader.readName();
    reader.readText(4);
  }
  Records records;
  for (int i = 0; i < count && !reader.failed(); ++i) readRecord(&reader, service, &records);
  return records;
}

Labels labelsOf(const std::string& name) {
  Labels labels;
  for (size_t from = 0; from < name.size();) {
    const size_t dot = std::min(name.find('.', from), name.size());
    labels.push_back(name.substr(from, dot - from));
    from = dot + 1;
  }
  return labels;
}

std::string question(const Labels& name, int type) {
  std::string message;
  for (const int value : {1, 0, 1, 0, 0, 0}) append16(&message, value);  // number 1, one question
  for (const std::string& label : name) {
    message.push_back(static_cast<char>(label.size()));
    message += label;
  }
  message.push_back('\0');
  append16(&message, type);
  append16(&message, 1);  // the Internet's class
  return message;
}

Labels printerLabels(const std::string& name) {
  Labels labels = labelsOf(kIpp);
  labels.insert(labels.begin(), name);
  return labels;
}

}  // namespace

std::string dnssdQuestion(const std::string& service) { return question(labelsOf(service), kPtr); }

std::string dnssdPrinterQuestion(const std::string& name) {
  return question(printerLabels(name), kTxt);
}

std::vector<ServiceInstance> dnssdInstances(std::string_view answer, const std::string& service) {
  Records records = readRecords(answer, service);
  std::vector<ServiceInstance> found;
  for (const Labels& labels : records.instances) {
    if (labels.empty()) continue;
    found.push_back(records.details[labels]);
    found.back().name = labels[0];
  }
  return found;
}

ServiceInstance dnssdPrinter(std::string_view answer, const std::string& name) {
  Records records = readRecords(answer, kIpp);
  const auto found = records.details.find(printerLabels(name));
  if (found == records.details.end()) return {};
  found->second.name = name;
  return found->second;
}

}  // namespace korvel
