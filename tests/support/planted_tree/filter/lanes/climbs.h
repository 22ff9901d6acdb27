// Planted for the dependency test: a header at the bottom that includes one at the top.
// SPDX-License-Identifier: Apache-2.0
#include "driver/settings_reader.h"
