// What most tests include, compiled once for all of them.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_TEST_PREFIX_H_
#define KORVEL_TESTS_TEST_PREFIX_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#endif
