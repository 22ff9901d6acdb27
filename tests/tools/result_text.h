// A Result in the tables of the tests: the sentence of its failure, or an empty text.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_TOOLS_RESULT_TEXT_H
#define KORVEL_TESTS_TOOLS_RESULT_TEXT_H

#include <string>

#include "tools/common/result.h"

template <typename T>
std::string failureOf(const korvel::Result<T>& result) {
  return result ? std::string() : result.sentence();
}

#endif
