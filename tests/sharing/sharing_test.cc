// korvel-setup --share on a spooler as its package configures it: what the network sees then, what
// it may not do, and that --unshare leaves everything as it was. SPDX-License-Identifier:
// Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "tests/sharing/network_room.h"
#include "tests/sharing/phone.h"
#include "tests/spooler/documents.h"
#include "tests/spooler/private_spooler.h"
#include "tests/tools/emulator/printer_process.h"
#include "tools/setup/network_proof.h"

namespace {

using Words = std::vector<std::string>;

constexpr double kSeconds = 60;
constexpr char kUnpublished[] = "printer-is-shared=false";

std::string lastLine(const std::string& output) {
  const std::string text = output.substr(0, output.find_last_not_of('\n') + 1);
  return text.substr(text.rfind('\n') + 1);
}

const ipp_op_t kAdministration[] = {
    IPP_OP_CUPS_ADD_MODIFY_PRINTER, IPP_OP_CUPS_DELETE_PRINTER, IPP_OP_CUPS_SET_DEFAULT,
    IPP_OP_CUPS_REJECT_JOBS,        IPP_OP_PAUSE_PRINTER,       IPP_OP_PURGE_JOBS,
};

class Sharing : public testing::Test {
 protected:
  void SetUp() override {
    if (!room_.missing().empty()) GTEST_SKIP() << room_.missing();
    spooler_ = std::make_unique<PrivateSpooler>(stockConfiguration());
    ASSERT_FALSE(HasFailure());
    printer_ = std::make_unique<ListeningPrinter>(spooler_->toolPath("korvel-printer"),
                                                  Words{"--speed", "5000"});
  }

  CommandResult setup(Words words) {
    words.insert(words.begin(), spooler_->toolPath("korvel-setup"));
    words.insert(words.end(), {"--state-folder", spooler_->file("state")});
    return run(words, kSeconds, spooler_->clientEnvironment());
  }
  // In a terminal; `typed` is a format of printf.
  CommandResult inTerminal(const std::string& words, const std::string& typed) {
    const std::string command = spooler_->toolPath("korvel-setup") + " " + words +
                                " --state-folder " + spooler_->file("state");
    return run({"sh", "-c", "printf '" + typed + "' | script -qec '" + command + "' /dev/null"},
               kSeconds, spooler_->clientEnvironment());
  }
  void makeQueue(const std::string& name, const std::string& model) {
    const std::string uri = "socket://127.0.0.1:" + std::to_string(printer_->port());
    const CommandResult result = setup({"-v", uri, "-m", model, "-p", name});
    ASSERT_EQ(result.status, 0) << result.output;
  }
  std::string queueState(const std::string& queue) {
    return run({"lpoptions", "-p", queue}, kSeconds, spooler_->clientEnvironment()).output;
  }

  NetworkRoom room_;
  std::unique_ptr<PrivateSpooler> spooler_;
  std::unique_ptr<ListeningPrinter> printer_;
};

TEST_F(Sharing, IsSharedProvedAndTakenBack) {
  makeQueue("labels", "k220-203");
  makeQueue("other", "r57-203");
  const std::string configuration = spooler_->configuration();
  const std::string other = queueState("other");

  CommandResult result = setup({"--share", "labels", "-n", "-L", "Counter"});
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_NE(result.output.find("  - Listen localhost:631\n  + Port 631\n"), std::string::npos);
  EXPECT_EQ(spooler_->configuration(), configuration);  // only shown

  result = setup({"--share", "labels", "-L", "Counter"});
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(lastLine(result.output),
            "Tablets and phones find it as \"Labels (Korvel K220) @ shop\".");
  const std::string open = spooler_->configuration();
  const std::string address = "127.0.0.1:" + std::to_string(printer_->port());
  EXPECT_NE(queueState("labels").find("device-uri=korvel://" + address), std::string::npos);
  room_.atThePhone([this] {
    Phone phone(room_.address());
    ASSERT_TRUE(phone.connected());
    EXPECT_EQ(phone.ask("labels", "printer-info"), Words{"Labels (Korvel K220)"});
    EXPECT_EQ(phone.ask("labels", "printer-location"), Words{"Counter"});
    EXPECT_EQ(phone.ask("labels", "media-ready"), Words{"na_index-4x6_4x6in"});
  });

  result = setup({"--share", "labels"});  // once more changes nothing
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(result.output.substr(0, result.output.find('\n')), "Queue labels is already shared.");
  EXPECT_EQ(spooler_->configuration(), open);

  result = setup({"--unshare", "labels"});
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(spooler_->configuration(), configuration);
  EXPECT_EQ(queueState("other"), other);
  EXPECT_NE(queueState("labels").find("printer-info=labels "), std::string::npos);
  EXPECT_NE(queueState("labels").find("device-uri=socket://" + address), std::string::npos);
  room_.atThePhone([this] { EXPECT_FALSE(Phone(room_.address()).connected()); });
  result = setup({"--unshare", "labels"});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.output.find("was not shared by korvel-setup"), std::string::npos);
}

TEST_F(Sharing, AnnouncesWhatTabletsLookAt) {
  makeQueue("labels", "k220-203");
  makeQueue("hidden", "r57-300");
  ASSERT_EQ(setup({"--share", "labels", "-D", "Shipping labels", "-L", "Counter"}).status, 0);
  std::vector<korvel::ServiceInstance> found;
  room_.atThePhone([&found] { found = korvel::lookUpServices(korvel::kAirPrintService, 2000); });
  ASSERT_EQ(found.size(), 1u);  // the other queue stays private
  EXPECT_EQ(found[0].name, "Shipping labels @ shop");
  EXPECT_EQ(found[0].host, "shop.local");
  EXPECT_EQ(found[0].port, 631);
  const std::map<std::string, std::string> text = found[0].text;
  const std::map<std::string, std::string> want = {
      {"txtvers", "1"},
      {"qtotal", "1"},
      {"rp", "printers/labels"},
      {"ty", "Korvel K220 203 dpi, 1.0"},
      {"note", "Counter"},
      {"product", "(K220 203 dpi)"},
      {"pdl",
       "application/pdf,application/postscript,image/jpeg,image/png,image/pwg-raster,"
       "image/urf"},
  };
  for (const auto& [key, value] : want) EXPECT_EQ(text.contains(key) ? text.at(key) : "", value);
  // Grey of 8 bits at the head's resolution; without this field iOS does not show the printer.
  EXPECT_EQ(text.at("URF").find("V1.4,CP1,W8,PQ4"), 0u) << text.at("URF");
  EXPECT_NE(text.at("URF").find(",RS203,"), std::string::npos) << text.at("URF");
}

TEST_F(Sharing, LetsTheNetworkPrintAndNothingElse) {
  makeQueue("labels", "label-203");
  ASSERT_EQ(setup({"--share", "labels"}).status, 0);
  const TemporaryFolder files;
  const std::string pdf = files.write("label.pdf", makePdf({barLabel(3)}));
  room_.atThePhone([&] {
    Phone phone(room_.address());
    ASSERT_TRUE(phone.connected());
    EXPECT_NE(phone.print("labels", pdf, "application/pdf"), 0);
    EXPECT_TRUE(printer_->waitForEvent("sheet 1", kSeconds));
    EXPECT_EQ(phone.readConfiguration(), HTTP_STATUS_FORBIDDEN);
    for (const ipp_op_t operation : kAdministration) {
      EXPECT_EQ(Phone(room_.address()).administer(operation, "labels"), IPP_STATUS_ERROR_FORBIDDEN)
          << ippOpString(operation);
    }
  });
  EXPECT_EQ(spooler_->queueState("labels"), IPP_PSTATE_IDLE);
}

TEST_F(Sharing, KeepsOtherNetworksOut) {
  makeQueue("labels", "label-203");
  ASSERT_EQ(setup({"--share", "labels"}).status, 0);
  const TemporaryFolder files;
  const std::string pdf = files.write("label.pdf", makePdf({barLabel(3)}));
  room_.movePhoneElsewhere();
  room_.atThePhone([&] {
    Phone phone(room_.address());
    ASSERT_TRUE(phone.connected());
    EXPECT_EQ(phone.print("labels", pdf, "application/pdf"), 0);
    EXPECT_EQ(phone.ask("labels", "printer-info"), Words());
  });
}

TEST_F(Sharing, PrintsATestSheetAsATabletDoes) {
  makeQueue("labels", "label-203");
  const CommandResult result = setup({"--share", "labels", "-t"});
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(lastLine(result.output), "The test sheet is job labels-1, sent as a tablet would.");
  EXPECT_TRUE(printer_->waitForEvent("sheet 1", kSeconds));
}

TEST_F(Sharing, LeavesAConfigurationThatWasWrittenByHand) {
  std::string text = stockConfiguration();
  text.replace(text.find("Order allow,deny"), 16, "Order allow,deny\n  Allow 192.0.2.9");
  spooler_.reset();
  spooler_ = std::make_unique<PrivateSpooler>(text);
  makeQueue("labels", "k220-203");
  const std::string configuration = spooler_->configuration();
  const CommandResult result = setup({"--share", "labels"});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.output.find("cupsd.conf was edited by hand"), std::string::npos);
  EXPECT_EQ(spooler_->configuration(), configuration);
  EXPECT_NE(queueState("labels").find("printer-info=labels "), std::string::npos);
}

TEST_F(Sharing, IsOfferedByTheDialog) {
  const std::string configuration = spooler_->configuration();
  const std::string question = "Let tablets and phones of the local network print on it? [no] ";
  CommandResult result = inTerminal("-v usb://Korvel/M6 -m m6 -o PageSize=A4", "m6\\nno\\n\\n");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_NE(result.output.find(question), std::string::npos) << result.output;
  EXPECT_EQ(spooler_->configuration(), configuration);  // the default is no

  result = inTerminal("-v usb://Korvel/Z4 -m z4 -o PageSize=A4 -L Studio", "z4\\nno\\nyes\\nno\\n");
  EXPECT_NE(result.output.find("Make these changes?"), std::string::npos) << result.output;
  EXPECT_EQ(spooler_->configuration(), configuration);

  result = inTerminal("-v usb://Korvel/R57 -m r57-203 -o PageSize=4x4 -o Contrast=0 -L Studio",
                      "tags\\nno\\nyes\\nyes\\n");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_NE(result.output.find("find it as \"Labels (Korvel R57) @ shop\"."), std::string::npos)
      << result.output;
  room_.atThePhone([this] {
    EXPECT_EQ(Phone(room_.address()).ask("tags", "printer-location"), Words{"Studio"});
    EXPECT_EQ(Phone(room_.address()).ask("m6", "printer-is-shared"), Words{"0"});
  });
}

TEST_F(Sharing, SharesAPresetAsAPrinterOfItsOwn) {
  makeQueue("m6", "m6");
  ASSERT_EQ(setup({"--share", "m6"}).status, 0);
  CommandResult result =
      setup({"-p", "m6", "--preset", "Stencil, mirrored", "-o", "MirrorImage=True"});
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(lastLine(result.output), "Tablets and phones find it as \"Stencil, mirrored @ shop\".");
  const std::string description = spooler_->queueDescription("m6-stencil-mirrored");
  EXPECT_NE(description.find("*DefaultMirrorImage: True\n"), std::string::npos);
  EXPECT_NE(spooler_->queueDescription("m6").find("*DefaultMirrorImage: False\n"),
            std::string::npos);
  const std::string device = "device-uri=korvel://127.0.0.1:" + std::to_string(printer_->port());
  EXPECT_NE(queueState("m6").find(device), std::string::npos) << queueState("m6");
  EXPECT_NE(queueState("m6-stencil-mirrored").find(device), std::string::npos);
}

// The server takes the first size that is nearly as large as the one that a client asks for.
TEST_F(Sharing, OffersTheSizeThatThePrinterHolds) {
  makeQueue("labels", "r57-203-oneway");
  const auto hold = [this](const char* size) {
    const Words words = {"lpadmin", "-p", "labels", "-o", std::string("PageSize=") + size};
    EXPECT_EQ(run(words, kSeconds, spooler_->clientEnvironment()).status, 0);
  };
  hold("100x100mm");
  const std::string description = spooler_->queueDescription("labels");
  CommandResult result = setup({"--share", "labels"});
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_NE(result.output.find("Queue labels: 100x100mm becomes the first size; tablets and phones "
                               "that ask for it would get 4x4."),
            std::string::npos)
      << result.output;
  EXPECT_EQ(setup({"--check", "-p", "labels"}).status, 0);
  room_.atThePhone([this] {
    // Among those that the server has by the paper of this country.
    const Words ready = Phone(room_.address()).ask("labels", "media-ready");
    EXPECT_EQ(std::count(ready.begin(), ready.end(), "custom_100.1x100.2mm_100.1x100.2mm"), 1);
  });

  hold("50x100mmRotated");  // other labels are loaded
  result = setup({"--check", "-p", "labels"});
  EXPECT_NE(result.output.find("that ask for the size 50x100mmRotated of queue labels get "
                               "2x4Rotated: korvel-setup --share labels"),
            std::string::npos)
      << result.output;
  EXPECT_EQ(setup({"--share", "labels"}).status, 0);
  EXPECT_EQ(setup({"--check", "-p", "labels"}).status, 0);

  hold("100x100mm");
  EXPECT_EQ(setup({"--unshare", "labels"}).status, 0);
  EXPECT_EQ(spooler_->queueDescription("labels"), description);
}

// Spoils one thing after the other on the living server, looks, and mends it.
TEST_F(Sharing, TheDoctorSaysWhatKeepsTabletsAway) {
  makeQueue("labels", "label-203");
  makeQueue("tags", "r57-203-oneway");
  ASSERT_EQ(setup({"--share", "labels", "-D", "Labels"}).status, 0);
  ASSERT_EQ(setup({"--share", "tags", "-D", "Tags"}).status, 0);
  const auto client = [this](const Words& words) {
    return [this, words] {
      const CommandResult result = run(words, kSeconds, spooler_->clientEnvironment());
      EXPECT_EQ(result.status, 0) << result.output;
    };
  };
  const auto check = [this] { return setup({"--check", "-p", "labels"}); };
  const std::string open = spooler_->configuration();
  const auto edit = [this, open](const std::string& from, const std::string& to) {
    return [this, open, from, to] {
      std::string text = open;
      ASSERT_NE(text.find(from), std::string::npos) << text;
      spooler_->restartWith(text.replace(text.find(from), from.size(), to));
    };
  };
  const auto reopen = [this, open] { spooler_->restartWith(open); };
  ASSERT_EQ(check().status, 0) << check().output;
  const struct {
    const char* description;
    std::function<void()> spoil;
    const char* finding;
    std::function<void()> mend;
  } kCases[] = {
      {"a queue that is not published", client({"lpadmin", "-p", "labels", "-o", kUnpublished}),
       "Queue labels was shared, but the print server or the queue no longer lets",
       client({"lpadmin", "-p", "labels", "-o", "printer-is-shared=true"})},
      {"a server that listens to this machine only", edit("Port 631", "Listen localhost:631"),
       "Queue labels was shared, but the print server or the queue no longer lets", reopen},
      {"administration from the network",
       edit("<Location /admin>", "<Location /admin>\n  Allow @LOCAL"),
       "The print server can be administered from the network", reopen},
      {"a size that is not ready", client({"lpadmin", "-p", "labels", "-o", "PageSize=2x2"}),
       "Tablets and phones are not offered the size 2x2 of queue labels",
       client({"lpadmin", "-p", "labels", "-o", "PageSize=4x6"})},
      {"two printers of one name", client({"lpadmin", "-p", "tags", "-D", "Labels"}),
       "Queues labels and tags have the same name",
       client({"lpadmin", "-p", "tags", "-D", "Tags"})},
      {"no responder", [this] { room_.stopResponder(); },
       "Queue labels is shared, but not announced; install and start avahi-daemon.",
       [this] { room_.startResponder(); }},
  };
  for (const auto& one : kCases) {
    SCOPED_TRACE(one.description);
    one.spoil();
    const CommandResult result = check();
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find(one.finding), std::string::npos) << result.output;
    one.mend();
    EXPECT_TRUE(waitUntil(kSeconds, [&] { return check().status == 0; })) << check().output;
  }
  for (const char* queue : {"labels", "tags"})
    spooler_->setDevice(queue, "usb://Korvel/R57?serial=1");
  const std::string output = check().output;
  EXPECT_NE(output.find("Queues labels and tags use the same USB printer; a job waits"),
            std::string::npos)
      << output;
}

const char* const kLabelModels[] = {
    "k220-203",  "k220-300",        "r57-203",         "r57-300",        "label-203",
    "label-300", "k220-203-oneway", "k220-300-oneway", "r57-203-oneway", "r57-300-oneway"};
const char* const kStencilModels[] = {"m6", "m6-oneway", "z4", "z4-oneway", "stencil-300"};

// The attributes that the spooler's conformance test misses or finds wrong. It needs a compressed
// copy of the document.
std::set<std::string> faults(const std::string& queue, const std::string& document,
                             const std::string& test = "ipp-2.0.test") {
  const CommandResult result = run({KORVEL_IPPTOOL, "-V", "2.0", "-I", "-tf", document,
                                    "ipp://127.0.0.1:631/printers/" + queue, test},
                                   240);
  EXPECT_NE(result.output.find("[PASS]"), std::string::npos) << result.output;
  std::set<std::string> found;
  const std::string mark = "EXPECTED: ";
  for (size_t at = 0; (at = result.output.find(mark, at)) != std::string::npos;) {
    at += mark.size();
    found.insert(result.output.substr(at, result.output.find_first_of(" \n", at) - at));
  }
  EXPECT_EQ(found.empty(), result.output.find("[FAIL]") == std::string::npos) << result.output;
  return found;
}

// The names of sizes are the spooler's, which puts fractions into them; see docs/platforms.md.
TEST_F(Sharing, ConformsToIppButForTheSpoolersNamesOfSizes) {
  if (std::string(KORVEL_IPPTOOL).empty()) GTEST_SKIP() << "ipptool is not installed";
  const TemporaryFolder files;
  const std::string document = files.write("label.pdf", makePdf({barLabel(2)}));
  ASSERT_EQ(run({"gzip", "-k", document}).status, 0);
  for (const char* model : kLabelModels) {
    SCOPED_TRACE(model);
    makeQueue(model, model);
    EXPECT_EQ(faults(model, document), std::set<std::string>{"media-supported"});
  }
  for (const char* model : kStencilModels) {
    SCOPED_TRACE(model);
    makeQueue(model, model);
    EXPECT_EQ(faults(model, document), std::set<std::string>());
  }
}

// What no driver can add, and newer spoolers have in part; see docs/platforms.md.
const std::set<std::string> kNotOfDrivers = {
    "operations-supported",  // Identify-Printer
    "identify-actions-default",
    "identify-actions-supported",
    "ipp-features-supported",
    "overrides-supported",
    "preferred-attributes-supported",
    "print-content-optimize-default",
    "print-content-optimize-supported",
    "print-rendering-intent-default",
    "print-rendering-intent-supported",
    "printer-device-id",
    "printer-supply",
    "printer-supply-description",
    "printer-supply-info-uri",
    "pwg-raster-document-sheet-back",
};

TEST_F(Sharing, ConformsToTheOtherTestsButForWhatTheSpoolerLacks) {
  if (std::string(KORVEL_IPPTOOL).empty()) GTEST_SKIP() << "ipptool is not installed";
  const TemporaryFolder files;
  const std::string document = files.write("label.pdf", makePdf({barLabel(2)}));
  ASSERT_EQ(run({"gzip", "-k", document}).status, 0);
  for (const char* model : {"k220-203", "m6"}) {
    SCOPED_TRACE(model);
    makeQueue(model, model);
    ASSERT_EQ(setup({"--share", model}).status, 0);
    EXPECT_EQ(faults(model, document, "ipp-1.1.test"), std::set<std::string>());
    std::set<std::string> found = faults(model, document, "ipp-everywhere.test");
    std::erase_if(found, [](const auto& one) { return kNotOfDrivers.contains(one); });
    const bool isLabel = std::string(model) == "k220-203";
    EXPECT_EQ(found, isLabel ? std::set<std::string>{"media-supported"} : std::set<std::string>());
  }
}

}  // namespace
