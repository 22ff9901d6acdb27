// The table of descriptions and the small services around it.
// SPDX-License-Identifier: Apache-2.0
#include "tests/ppd/descriptions.h"

#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>

const std::vector<Description>& descriptions() {
  static const std::vector<Description> kAll = {
      // name, chosen as, model, dpi, stencil, cutter, halftone
      {"k220-203", "Korvel K220 203 dpi", "K220", 203, false, true, "Ordered"},
      {"k220-203-oneway", "Korvel K220 203 dpi one-way", "K220-OneWay", 203, false, true,
       "Ordered"},
      {"k220-300", "Korvel K220 300 dpi", "K220", 300, false, true, "Ordered"},
      {"k220-300-oneway", "Korvel K220 300 dpi one-way", "K220-OneWay", 300, false, true,
       "Ordered"},
      {"r57-203", "Korvel R57 203 dpi", "R57", 203, false, false, "Ordered"},
      {"r57-203-oneway", "Korvel R57 203 dpi one-way", "R57-OneWay", 203, false, false, "Ordered"},
      {"r57-300", "Korvel R57 300 dpi", "R57", 300, false, false, "Ordered"},
      {"r57-300-oneway", "Korvel R57 300 dpi one-way", "R57-OneWay", 300, false, false, "Ordered"},
      {"label-203", "Korvel Label 203 dpi", "L203", 203, false, true, "Ordered"},
      {"label-300", "Korvel Label 300 dpi", "L300", 300, false, true, "Ordered"},
      {"m6", "Korvel M6 300 dpi", "M6", 300, true, false, "Tattoo"},
      {"m6-oneway", "Korvel M6 300 dpi one-way", "M6-OneWay", 300, true, false, "Tattoo"},
      {"z4", "Korvel Z4 300 dpi", "Z4", 300, true, false, "Tattoo_Z4"},
      {"z4-oneway", "Korvel Z4 300 dpi one-way", "Z4-OneWay", 300, true, false, "Tattoo_Z4"},
      {"stencil-300", "Korvel Stencil 300 dpi", "S300", 300, true, false, "Tattoo"},
  };
  return kAll;
}

const Description& description(const std::string& name) {
  for (const Description& each : descriptions()) {
    if (each.name == name) return each;
  }
  throw std::runtime_error("no description " + name);
}

bool reportsStatus(const Description& description) {
  const std::string model = description.model;
  return model == "R57" || model == "K220" || model == "M6" || model == "Z4";
}

std::string ppdPath(const Description& description) {
  return std::string(KORVEL_PPD_DIR "/korvel-") + description.name + ".ppd";
}

std::string ppdText(const Description& description) {
  std::ifstream in(ppdPath(description), std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

OpenPpd openPpd(const Description& description) {
  OpenPpd ppd(ppdOpenFile(ppdPath(description).c_str()), ppdClose);
  if (ppd != nullptr) ppdMarkDefaults(ppd.get());
  return ppd;
}

void forEachOption(const ppd_file_t& ppd, const std::function<void(const ppd_option_t&)>& visit) {
  for (int g = 0; g < ppd.num_groups; ++g) {
    const ppd_group_t& group = ppd.groups[g];
    for (int i = 0; i < group.num_options; ++i) visit(group.options[i]);
  }
}

std::string attribute(ppd_file_t* ppd, const char* name, const char* spec) {
  const ppd_attr_t* found = ppdFindAttr(ppd, name, spec);
  return found == nullptr || found->value == nullptr ? "(none)" : found->value;
}

CommandResult runCommand(const std::string& command) {
  CommandResult result;
  FILE* pipe = popen(("LC_ALL=C; export LC_ALL; " + command).c_str(), "r");
  if (pipe == nullptr) return result;
  char bytes[4096];
  for (size_t count; (count = fread(bytes, 1, sizeof bytes, pipe)) > 0;) {
    result.output.append(bytes, count);
  }
  const int status = pclose(pipe);
  if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
  return result;
}

std::string quoted(const std::string& word) { return "'" + word + "'"; }
