// Planted for the dependency test: a source that no line of the table covers.
// SPDX-License-Identifier: Apache-2.0
#include <vector>
