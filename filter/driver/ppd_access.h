// Look-ups in a printer's PPD, each with a default. A null PPD is allowed everywhere and yields
// the defaults.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_DRIVER_PPD_ACCESS_H
#define KORVEL_DRIVER_PPD_ACCESS_H

#include <cups/ppd.h>

// The marked choice of an option, else its default choice, else null. The third argument is not
// used. The choice belongs to the description.
ppd_choice_t* pellamPpdGetChoice(ppd_file_t* ppd, const char* keyword, const char* unused);

// The choice's text, valid until ppdClose, or `fallback`.
const char* pellamPpdGetChoiceAsStrDefault(ppd_file_t* ppd, const char* keyword,
                                           const char* fallback);

// The choice's text as a decimal number, or `fallback`.
int pellamPpdGetChoiceAsIntDefault(ppd_file_t* ppd, const char* keyword, int fallback);

// 1 for "true" and "yes", 0 for "false" and "no", in any case; another text's number cut to a
// signed 8-bit value; `fallback` without a choice.
signed char pellamPpdGetChoiceAsBoolDefault(ppd_file_t* ppd, const char* keyword,
                                            signed char fallback);

// An attribute's value, valid until ppdClose, or `fallback`.
const char* pellamPpdGetAttrAsStrDefault(ppd_file_t* ppd, const char* name, const char* spec,
                                         const char* fallback);
double pellamPpdGetAttrAsFloatDefault(ppd_file_t* ppd, const char* name, const char* spec,
                                      double fallback);

#endif
