// A preset: a second queue to a printer with other defaults, for clients that show no options.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_PRESET_H
#define KORVEL_TOOLS_SETUP_PRESET_H

#include <string>
#include <vector>

#include "tools/setup/print_system.h"
#include "tools/setup/queue_setup.h"

namespace korvel {

// "m6-stencil-mirrored" for the preset "Stencil, mirrored" of m6.
std::string presetQueueName(const std::string& queue, const std::string& preset);

// Addresses socket://... become korvel://..., where queues of one printer take turns. Those of
// other backends stay: usb, parallel and serial open their device for one job at a time, and
// network queues take turns at the other end.
std::string addressWithTurns(const std::string& uri);

// The device that an address leads to, the same text for all URIs that reach it through the
// spooler's backends.
std::string deviceOf(const std::string& uri);

// The defaults that a queue's driver has been given, besides those of the installed driver.
Options ownDefaults(const std::string& description, const std::string& installed);

// The queue of the preset: the driver, device and defaults of `base`, then `options`.
QueuePlan planPreset(const PrintSystem& system, const Queue& base, const std::string& preset,
                     const Options& options);

}  // namespace korvel

#endif
