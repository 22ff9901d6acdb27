// Writes the texts of descriptions as a print dialog would show them, a line each: the file, what
// it is, the text. The spooler's library takes its language once a process, from the environment.
// SPDX-License-Identifier: Apache-2.0
#include <cups/ppd.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

void show(const char* file, const std::string& what, const char* text) {
  std::printf("%s\t%s\t%s\n", file, what.c_str(), text);
}

void showOption(const char* file, const ppd_option_t& option) {
  const std::string keyword = option.keyword;
  show(file, keyword, option.text);
  for (int i = 0; i < option.num_choices; ++i) {
    show(file, keyword + "=" + option.choices[i].choice, option.choices[i].text);
  }
}

void showStates(const char* file, ppd_file_t* ppd) {
  // The library has one place in its list: all reasons first, then their sentences.
  std::vector<std::string> reasons;
  for (const ppd_attr_t* state = ppdFindAttr(ppd, "cupsIPPReason", nullptr); state != nullptr;
       state = ppdFindNextAttr(ppd, "cupsIPPReason", nullptr)) {
    reasons.emplace_back(state->spec);
  }
  for (const std::string& reason : reasons) {
    char sentence[256] = "";
    ppdLocalizeIPPReason(ppd, reason.c_str(), nullptr, sentence, sizeof sentence);
    show(file, reason, sentence);
    const ppd_attr_t* state = ppdLocalizeAttr(ppd, "cupsIPPReason", reason.c_str());
    show(file, reason + " in short", state == nullptr ? "" : state->text);
  }
}

bool showDescription(const char* file) {
  ppd_file_t* ppd = ppdOpenFile(file);
  if (ppd == nullptr) return false;
  ppdLocalize(ppd);
  for (int g = 0; g < ppd->num_groups; ++g) {
    show(file, std::string("group ") + ppd->groups[g].name, ppd->groups[g].text);
    for (int i = 0; i < ppd->groups[g].num_options; ++i) {
      const ppd_option_t& option = ppd->groups[g].options[i];
      // The sizes once more, for the rasteriser: no dialog shows them.
      if (std::string(option.keyword) != "PageRegion") showOption(file, option);
    }
  }
  showStates(file, ppd);
  ppdClose(ppd);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  bool good = argc > 1;
  for (int i = 1; i < argc; ++i) good = showDescription(argv[i]) && good;
  return good ? 0 : 1;
}
