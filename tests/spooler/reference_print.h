// What the developer's script prints without a spooler: the dots that a queue must print as well.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SPOOLER_REFERENCE_PRINT_H
#define KORVEL_TESTS_SPOOLER_REFERENCE_PRINT_H

#include <string>
#include <vector>

#include "tests/spooler/picture.h"

// The pages of `./dev print`; none after a failure, which is the test's. `options` are words such
// as "Darkness=Dark".
std::vector<Picture> referencePages(const std::string& document, const std::string& description,
                                    const std::vector<std::string>& options, int copies = 1);

#endif
