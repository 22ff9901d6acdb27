// The commands that move media without printing, as the filter sends them after a page and before
// the next one. The printers have no command that calibrates their sensors.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_STREAM_FEED_COMMANDS_H
#define KORVEL_TOOLS_STREAM_FEED_COMMANDS_H

#include <string>

namespace korvel {

enum class Feed {
  kToEdge,  // the gap or mark after the last label, to the tear-off edge
  kBack,    // from the edge back to the print position
  kCut,     // to the edge, cut, and back
};

// The bytes of a job. On media with black marks the feed to the edge is another one.
std::string feedCommands(Feed feed, bool blackMarks);

}  // namespace korvel

#endif
