// cupsd.conf changed for sharing: which lines, and that taking it back leaves the file as it was.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/server_config.h"

#include <gtest/gtest.h>

#include "tools/setup/sharing_state.h"

namespace {

using korvel::LineEdit;

const char kStock[] =
    "# A comment of the package.\n"
    "LogLevel warn\n"
    "\n"
    "# Only listen for connections from the local machine.\n"
    "Listen localhost:631\n"
    "Listen /run/cups/cups.sock\n"
    "Browsing Yes\n"
    "<Location />\n"
    "  Order allow,deny\n"
    "</Location>\n"
    "<Location /admin>\n"
    "  Order allow,deny\n"
    "</Location>\n"
    "<Policy default>\n"
    "  <Limit Create-Job>\n"
    "    Order deny,allow\n"
    "  </Limit>\n"
    "</Policy>\n";

std::string changed(std::string text, const std::string& from, const std::string& to) {
  return text.replace(text.find(from), from.size(), to);
}

TEST(ServerConfig, OpensAStockFileLineByLine) {
  const auto change = korvel::planSharing(kStock, {"A4", "4x6"});
  ASSERT_TRUE(change.ok());
  std::string want = changed(kStock, "Listen localhost:631\n", "Port 631\n");
  want = changed(want, "  Order allow,deny\n", "  Order allow,deny\n  Allow @LOCAL\n");
  EXPECT_EQ(change.value().text, want + "ReadyPaperSizes A4,4x6\nDirtyCleanInterval 0\n");
  const std::vector<LineEdit> edits = {{"", "Listen localhost:631", "Port 631"},
                                       {"<Location />", "", "  Allow @LOCAL"},
                                       {"", "", "ReadyPaperSizes A4,4x6"},
                                       {"", "", "DirtyCleanInterval 0"}};
  EXPECT_EQ(change.value().edits, edits);
}

struct Before {
  const char* description;
  std::string text;
};

// Every file here is opened, opened again without a change, and taken back to what it was.
const Before kFiles[] = {
    {"stock", kStock},
    {"browsing off", changed(kStock, "Browsing Yes", "Browsing Off")},
    {"no location for all", changed(kStock, "<Location />\n  Order allow,deny\n</Location>\n", "")},
    {"several addresses of this computer",
     changed(kStock, "Listen localhost:631\n", "Listen 127.0.0.1:631\nListen [::1]:631\n")},
    {"sizes and saving set before",
     std::string(kStock) + "ReadyPaperSizes A4\nDirtyCleanInterval 10\n"},
    {"indented with tabs", changed(kStock, "Browsing Yes", "\tBrowsing No   # quiet")},
    {"open already",
     changed(changed(kStock, "localhost:631", "*:631"), "  Order allow,deny", "  Allow all")},
};

TEST(ServerConfig, TakenBackTheFileIsAsItWas) {
  for (const Before& file : kFiles) {
    SCOPED_TRACE(file.description);
    const auto first = korvel::planSharing(file.text, {"4x6"});
    ASSERT_TRUE(first.ok());
    const korvel::SharingConfig config = korvel::readSharingConfig(first.value().text);
    EXPECT_TRUE(config.listens && config.admitsNetwork && config.browsing && config.adminIsLocal);
    const auto again = korvel::planSharing(first.value().text, {"4x6"});
    ASSERT_TRUE(again.ok());
    EXPECT_TRUE(again.value().edits.empty());
    EXPECT_EQ(korvel::takeBack(first.value().text, first.value().edits), file.text);
  }
}

TEST(ServerConfig, TakesBackTwoChangesOfOneLineAndSparesLinesOfOthers) {
  korvel::SharingState state;
  const auto first = korvel::planSharing(kStock, {"4x6"});
  state.add(first.value().edits);
  const auto second = korvel::planSharing(first.value().text, {"4x6", "A4"});
  state.add(second.value().edits);
  EXPECT_EQ(state.edits.size(), 4u);
  const std::string later = changed(second.value().text, "LogLevel warn", "LogLevel debug");
  EXPECT_EQ(korvel::takeBack(later, korvel::readState(korvel::writeState(state)).edits),
            changed(kStock, "LogLevel warn", "LogLevel debug"));
  // A line that somebody changed since is theirs.
  const std::string theirs = changed(second.value().text, "Port 631", "Port 8631");
  EXPECT_NE(korvel::takeBack(theirs, state.edits).find("Port 8631\n"), std::string::npos);
}

const Before kHandWritten[] = {
    {"another port", changed(kStock, "localhost:631", "localhost:8631")},
    {"an address", changed(kStock, "localhost:631", "192.0.2.7:631")},
    {"encrypted only", changed(kStock, "Listen localhost:631", "SSLListen 192.0.2.7:443")},
    {"a network", changed(kStock, "  Order allow,deny", "  Order allow,deny\n  Allow 192.0.2.*")},
    {"a password", changed(kStock, "  Order allow,deny", "  AuthType Basic\n  Require valid-user")},
    {"somebody kept out", changed(kStock, "  Order allow,deny", "  Deny 192.0.2.9")},
};

TEST(ServerConfig, LeavesAFileThatWasWrittenByHand) {
  for (const Before& file : kHandWritten) {
    SCOPED_TRACE(file.description);
    const auto change = korvel::planSharing(file.text, {"4x6"});
    ASSERT_FALSE(change.ok());
    EXPECT_EQ(change.sentence().find("cupsd.conf was edited by hand"), 0u);
  }
}

TEST(ServerConfig, SeesAdministrationFromTheNetwork) {
  EXPECT_TRUE(korvel::readSharingConfig(kStock).adminIsLocal);
  const std::string open =
      changed(kStock, "<Location /admin>\n", "<Location /admin>\n  Allow all\n");
  EXPECT_FALSE(korvel::readSharingConfig(open).adminIsLocal);
}

TEST(SharingState, IsReadAsItWasWritten) {
  korvel::SharingState state;
  state.queues = {{"labels", true, "Labels, 4 x 6", "", {"4x6", "A4"}, false, "socket://192.0.2.7"},
                  {"other", true, "", "Room 7", {}, true}};
  state.edits = {{"<Location />", "", "\tAllow\\ @LOCAL"}, {"", "Listen x", "Port 631"}};
  state.readyBase = {"A4"};
  state.startedAvahi = true;
  const korvel::SharingState read = korvel::readState(korvel::writeState(state));
  EXPECT_EQ(read.queues, state.queues);
  EXPECT_EQ(read.edits, state.edits);
  EXPECT_EQ(read.readyBase, state.readyBase);
  EXPECT_TRUE(read.startedAvahi);
  EXPECT_EQ(korvel::writeState({}), "");
}

}  // namespace
