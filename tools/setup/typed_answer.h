// What users type at questions with a free answer: the address of a printer, the size of a label.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_TYPED_ANSWER_H
#define KORVEL_TOOLS_SETUP_TYPED_ANSWER_H

#include <string>
#include <vector>

#include "tools/description/option_check.h"

namespace korvel {

// The device URI meant by an answer: a URI as it is, or socket://HOST for an IP address or a host
// name, which may have a port. Empty when it is none of these.
std::string deviceUri(const std::string& answer);

struct SizeChoice {
  std::string choice;  // "4x6"
  std::string text;    // "4 x 6 in", in the user's language
};

// The most common sizes of a PPD, its default first.
std::vector<SizeChoice> commonSizes(const std::string& description);

// The choice of PageSize meant by an answer: the name of a choice, or width and height in mm, cm or
// inches ("57 x 32 mm", "2.25x1.25in"), which may be a custom size. Empty when the answer is
// neither or the printer does not support the size.
std::string pageSize(const std::string& description, const std::string& answer);

// The defaults for what a queue prints.
enum class Content { kBarcodesAndText = 1, kPictures, kBoth };
Options optionsFor(Content content);

}  // namespace korvel

#endif
