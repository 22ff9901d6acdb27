// SPDX-License-Identifier: Apache-2.0
#include "tests/sharing/phone.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int kPort = 631;
constexpr int kMilliseconds = 30000;

// Nobody at a phone knows a password of the server.
const char* noPassword(const char*, http_t*, const char*, const char*, void*) { return nullptr; }

}  // namespace

Phone::Phone(const std::string& address)
    : address_(address),
      connection_(httpConnect2(address.c_str(), kPort, nullptr, AF_UNSPEC,
                               HTTP_ENCRYPTION_IF_REQUESTED, 1, kMilliseconds, nullptr)) {
  cupsSetPasswordCB2(noPassword, nullptr);
}

ipp_t* Phone::request(ipp_op_t operation, const std::string& queue) const {
  const std::string host = address_.starts_with("/") ? "localhost" : address_;
  const std::string uri = "ipp://" + host + ":631/printers/" + queue;
  ipp_t* made = ippNewRequest(operation);
  ippAddString(made, IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, uri.c_str());
  ippAddString(made, IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr, "guest");
  return made;
}

int Phone::print(const std::string& queue, const std::string& file, const std::string& format,
                 const std::vector<std::string>& options) {
  ipp_t* made = request(IPP_OP_PRINT_JOB, queue);
  ippAddString(made, IPP_TAG_OPERATION, IPP_TAG_NAME, "job-name", nullptr, file.c_str());
  ippAddString(made, IPP_TAG_OPERATION, IPP_TAG_MIMETYPE, "document-format", nullptr,
               format.c_str());
  cups_option_t* list = nullptr;
  int count = 0;
  for (const std::string& option : options) count = cupsParseOptions(option.c_str(), count, &list);
  cupsEncodeOptions2(made, count, list, IPP_TAG_JOB);
  cupsFreeOptions(count, list);
  const std::string resource = "/printers/" + queue;
  ipp_t* answer = cupsDoFileRequest(connection_, made, resource.c_str(), file.c_str());
  const int job = ippGetInteger(ippFindAttribute(answer, "job-id", IPP_TAG_INTEGER), 0);
  ippDelete(answer);
  return job;
}

std::vector<std::string> Phone::ask(const std::string& queue, const char* attribute) {
  ipp_t* answer = cupsDoRequest(connection_, request(IPP_OP_GET_PRINTER_ATTRIBUTES, queue), "/");
  std::vector<std::string> values;
  ipp_attribute_t* found = ippFindAttribute(answer, attribute, IPP_TAG_ZERO);
  for (int i = 0; i < ippGetCount(found); ++i) {
    const char* text = ippGetString(found, i, nullptr);
    values.emplace_back(text == nullptr ? std::to_string(ippGetInteger(found, i)) : text);
  }
  ippDelete(answer);
  return values;
}

std::vector<std::string> Phone::jobs(const std::string& queue, const char* which) {
  ipp_t* made = request(IPP_OP_GET_JOBS, queue);
  ippAddString(made, IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "which-jobs", nullptr, which);
  ippAddString(made, IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes", nullptr,
               "job-name");
  ipp_t* answer = cupsDoRequest(connection_, made, "/");
  std::vector<std::string> names;
  for (ipp_attribute_t* one = ippFindAttribute(answer, "job-name", IPP_TAG_NAME); one != nullptr;
       one = ippFindNextAttribute(answer, "job-name", IPP_TAG_NAME)) {
    names.emplace_back(ippGetString(one, 0, nullptr));
  }
  ippDelete(answer);
  return names;
}

int Phone::readConfiguration() {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  const http_status_t status = cupsGetFd(connection_, "/admin/conf/cupsd.conf", nowhere);
  close(nowhere);
  return status;
}

int Phone::administer(ipp_op_t operation, const std::string& queue) {
  ipp_t* made = request(operation, queue);
  ippAddString(made, IPP_TAG_PRINTER, IPP_TAG_TEXT, "printer-info", nullptr, "mine");
  ippDelete(cupsDoRequest(connection_, made, "/admin/"));
  return cupsLastError();
}
