// What the print server's error log says of a job.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_ERROR_LOG_H
#define KORVEL_TOOLS_SETUP_ERROR_LOG_H

#include <string>

namespace korvel {

// The errors of the last time that the job was stopped, a line each, without date and number. `log`
// is the text of the error log.
std::string loggedErrors(const std::string& log, int job);

}  // namespace korvel

#endif
