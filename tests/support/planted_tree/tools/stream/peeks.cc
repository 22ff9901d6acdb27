// Planted for the dependency test: a decoder that uses the code it is meant to check.
// SPDX-License-Identifier: Apache-2.0
#include "protocol/packet.h"
