// Look-ups in a printer description, each with a default.
// The library accepts a null description in all of them.
// SPDX-License-Identifier: Apache-2.0
#include "driver/ppd_access.h"

#include <strings.h>

#include <cstdlib>

ppd_choice_t* pellamPpdGetChoice(ppd_file_t* ppd, const char* keyword, const char* /*unused*/) {
  ppd_choice_t* marked = ppdFindMarkedChoice(ppd, keyword);
  if (marked != nullptr) return marked;
  ppd_option_t* option = ppdFindOption(ppd, keyword);
  return option != nullptr ? ppdFindChoice(option, option->defchoice) : nullptr;
}

const char* pellamPpdGetChoiceAsStrDefault(ppd_file_t* ppd, const char* keyword,
                                           const char* fallback) {
  const ppd_choice_t* choice = pellamPpdGetChoice(ppd, keyword, fallback);
  return choice != nullptr ? choice->choice : fallback;
}

int pellamPpdGetChoiceAsIntDefault(ppd_file_t* ppd, const char* keyword, int fallback) {
  const ppd_choice_t* choice = pellamPpdGetChoice(ppd, keyword, nullptr);
  return choice != nullptr ? std::atoi(choice->choice) : fallback;
}

signed char pellamPpdGetChoiceAsBoolDefault(ppd_file_t* ppd, const char* keyword,
                                            signed char fallback) {
  const ppd_choice_t* choice = pellamPpdGetChoice(ppd, keyword, nullptr);
  if (choice == nullptr) return fallback;
  const char* text = choice->choice;
  if (strcasecmp(text, "true") == 0 || strcasecmp(text, "yes") == 0) return 1;
  if (strcasecmp(text, "false") == 0 || strcasecmp(text, "no") == 0) return 0;
  return static_cast<signed char>(std::atoi(text));  // 255 gives -1, 256 gives 0
}

const char* pellamPpdGetAttrAsStrDefault(ppd_file_t* ppd, const char* name, const char* spec,
                                         const char* fallback) {
  const ppd_attr_t* attribute = ppdFindAttr(ppd, name, spec);
  return attribute != nullptr && attribute->value != nullptr ? attribute->value : fallback;
}

double pellamPpdGetAttrAsFloatDefault(ppd_file_t* ppd, const char* name, const char* spec,
                                      double fallback) {
  const char* value = pellamPpdGetAttrAsStrDefault(ppd, name, spec, nullptr);
  return value != nullptr ? std::atof(value) : fallback;
}
