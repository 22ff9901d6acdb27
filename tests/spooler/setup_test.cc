// korvel-setup with the real spooler: creating, updating and refusing queues, a sheet without a
// printer, and the problems that --check finds.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/spooler/documents.h"
#include "tests/spooler/picture.h"
#include "tests/spooler/private_spooler.h"
#include "tests/support/raster_maker.h"
#include "tests/tools/emulator/printer_process.h"

namespace fs = std::filesystem;

namespace {

using Words = std::vector<std::string>;

constexpr double kSeconds = 60;

// A port on which nobody listens.
int freePort() {
  const korvel::Descriptor owner(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const int fd = owner.get();
  sockaddr_in address = {};
  socklen_t size = sizeof address;
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  EXPECT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), size), 0);
  EXPECT_EQ(getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size), 0);
  return ntohs(address.sin_port);
}

std::string asking(const std::string& uri) {
  return "Asking the printer at " + uri + " (at most 3 s)...\n";
}

std::string toPort(int port) { return "socket://127.0.0.1:" + std::to_string(port); }

bool hasDefault(const std::string& description, const std::string& choice) {
  return description.find("*Default" + choice + "\n") != std::string::npos;
}

class Setup : public testing::Test {
 protected:
  void SetUp() override { ASSERT_FALSE(HasFailure()); }

  CommandResult setup(Words words) {
    words.insert(words.begin(), spooler_.toolPath("korvel-setup"));
    return run(words, kSeconds, spooler_.clientEnvironment());
  }
  // In a terminal; `typed` is a format of printf.
  CommandResult inTerminal(const std::string& words, const std::string& typed) {
    const std::string line = "printf '" + typed + "' | script -qec '" +
                             spooler_.toolPath("korvel-setup") + " " + words + "' /dev/null";
    return run({"sh", "-c", line}, kSeconds, spooler_.clientEnvironment());
  }
  // A command of the spooler's own.
  void command(const Words& words) {
    const CommandResult result = run(words, kSeconds, spooler_.clientEnvironment());
    EXPECT_EQ(result.status, 0) << words[0] << ": " << result.output;
  }

  PrivateSpooler spooler_;
};

TEST_F(Setup, MakesAQueueThatPrintsAndCountsItsSheets) {
  const TemporaryFolder files;
  const ListeningPrinter printer(spooler_.toolPath("korvel-printer"), {"--speed", "5000"});
  const Words words = {"-v", toPort(printer.port()), "-m", "k220-203",          "-p", "labels",
                       "-o", "PageSize=4x4",         "-o", "PostAction=TearOff"};
  const std::string ready =
      asking(toPort(printer.port())) + "Queue labels is ready. Print with: lp -d labels FILE\n";
  CommandResult result = setup(words);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, ready);
  const std::string description = spooler_.queueDescription("labels");
  EXPECT_TRUE(hasDefault(description, "PageSize: 4x4"));
  EXPECT_TRUE(hasDefault(description, "PostAction: TearOff"));

  result = setup(words);  // once more changes nothing
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, ready);
  EXPECT_EQ(spooler_.queueDescription("labels"), description);

  const std::string label = files.write("label.pdf", makePdf({barLabel(4)}));
  const int job = spooler_.print("labels", {label});
  ASSERT_TRUE(spooler_.waitForJob(job, kSeconds));
  EXPECT_EQ(spooler_.pageLog(), "labels " + std::to_string(job) + " total 1\n");

  result = setup({"-p", "labels", "-m", "korvel-k220-203-oneway"});
  EXPECT_EQ(result.status, 0) << result.output;
  const std::string other = spooler_.queueDescription("labels");
  EXPECT_NE(other.find("*ModelName: \"K220-OneWay\""), std::string::npos);
  EXPECT_TRUE(hasDefault(other, "PageSize: 4x4"));
}

TEST_F(Setup, RefusesInOneSentence) {
  command({KORVEL_LPADMIN, "-p", "other", "-v", "socket://127.0.0.1:1", "-m", "raw"});
  spooler_.addQueue("labels", "korvel-k220-203", 1);
  const struct {
    const char* sentence;
    Words words;
    int status;
    const char* message;
  } kCases[] = {
      {"no device",
       {"-p", "new", "-m", "m6"},
       1,
       "korvel-setup: No Korvel printer was found; switch it on, or specify its address: -v "
       "socket://ADDRESS\n"},
      {"no description",
       {"-v", "socket://127.0.0.1"},
       1,
       "korvel-setup: The model of the printer at socket://127.0.0.1 is unknown; choose a driver "
       "with -m MODEL (korvel-setup --list shows all).\n"},
      {"two descriptions",
       {"-v", "usb://Korvel/K220"},
       1,
       "korvel-setup: More than one driver fits usb://Korvel/K220; choose one: -m korvel-k220-203, "
       "-m korvel-k220-300\n"},
      {"a description that is not there",
       {"-v", "socket://127.0.0.1", "-m", "k221"},
       1,
       "korvel-setup: There is no driver k221. Nearest drivers: k220-203, k220-203-oneway, "
       "k220-300, k220-300-oneway.\n"},
      {"a bad name",
       {"-v", "socket://127.0.0.1", "-m", "m6", "-p", "two words"},
       1,
       "korvel-setup: 'two words' is not a valid queue name; use letters, digits, hyphens "
       "and underscores.\n"},
      {"another driver's queue",
       {"-p", "other", "-m", "m6"},
       1,
       "korvel-setup: Queue other has another driver; choose another name with -p, or remove the "
       "queue: lpadmin -x other\n"},
      {"an option that is not there",
       {"-p", "labels", "-o", "PageSiz=4x4"},
       1,
       "korvel-setup: There is no option PageSiz. Nearest options: PageSize.\n"},
      {"a choice that is not there",
       {"-p", "labels", "-o", "PostAction=Burn"},
       1,
       "korvel-setup: There is no choice PostAction=Burn. All choices: None, TearOff, Cut.\n"},
      {"a custom size without its measures",
       {"-v", "socket://127.0.0.1", "-m", "m6", "-p", "new", "-o", "PageSize=Custom"},
       1,
       "korvel-setup: There is no choice PageSize=Custom. All choices: A4, Letter, Tattoo_A5, "
       "Tattoo_A6.\n"},
      {"a test page on an unknown queue",
       {"-t", "-d", "nobody"},
       1,
       "korvel-setup: There is no queue nobody. Show all queues: lpstat -e\n"},
      {"an unknown queue",
       {"--check", "nobody"},
       2,
       "korvel-setup: There is no queue nobody. Show all queues: lpstat -e\n"},
      {"a queue without a word",
       {"labels"},
       2,
       "korvel-setup: unexpected argument 'labels'; see korvel-setup --help\n"},
      {"a queue with nothing to do",
       {"-d", "labels"},
       2,
       "korvel-setup: -d needs --check or --test-page; see korvel-setup --help\n"},
      {"two things at once",
       {"--check", "--list"},
       2,
       "korvel-setup: --check, --list, --emulated, --share, --unshare and --feed cannot be "
       "combined; see korvel-setup --help\n"},
      {"a form without a check",
       {"--json", "--list"},
       2,
       "korvel-setup: --json needs --check; see korvel-setup --help\n"},
      {"a device that the print service does not know",
       {"-v", "foo:bar", "-m", "m6", "-p", "new"},
       1,
       "korvel-setup: The print service does not accept the device URI: \"Bad device-uri "
       "scheme \"foo\".\". Show all devices: korvel-setup --list\n"},
      {"no server",
       {"-h", "/nowhere/socket", "--check"},
       2,
       fs::exists("/run/systemd/system")
           ? "korvel-setup: The print service at /nowhere/socket does not answer. As root: "
             "systemctl start cups\n"
           : "korvel-setup: The print service at /nowhere/socket does not answer. As root: "
             "service cups start\n"},
  };
  for (const auto& c : kCases) {
    const CommandResult result = setup(c.words);
    EXPECT_EQ(result.status, c.status) << c.sentence;
    EXPECT_EQ(result.output, c.message) << c.sentence;
  }
}

TEST_F(Setup, AcceptsAnAddressForAUri) {
  const ListeningPrinter printer(spooler_.toolPath("korvel-printer"), {});
  const std::string address = "127.0.0.1:" + std::to_string(printer.port());
  const CommandResult result = setup({"-v", address, "-m", "k220-203", "-p", "labels"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, asking("socket://" + address) +
                               "Queue labels is ready. Print with: lp -d labels FILE\n");
}

TEST_F(Setup, SaysWhatThePrinterAnswers) {
  const ListeningPrinter printer(spooler_.toolPath("korvel-printer"), {});
  const std::string uri = toPort(printer.port());
  const std::string nowhere = toPort(freePort());
  const std::string ready = "Queue labels is ready. Print with: lp -d labels FILE\n";
  const struct {
    const char* command;  // to the printer
    const char* model;
    std::string uri, want;
  } kCases[] = {
      {"silent off", "k220-203", nowhere,
       "Queue labels was set up, but the printer at " + nowhere +
           " cannot be reached. Switch it on, check its cable and address, then run: korvel-setup "
           "--check labels\n"},
      {"silent", "k220-203", uri,
       "Queue labels was set up, but the printer at " + uri +
           " does not answer; with this driver each page takes about 20 minutes. The one-way "
           "driver does not wait for the printer (20 labels: 25 s instead of 82 s), but does not "
           "report missing paper: korvel-setup -p labels -m korvel-k220-203-oneway\n"},
      {"silent", "k220-203-oneway", uri, ready},
      {"silent off", "k220-203", uri, ready},
      {"cover open", "k220-203", uri,
       ready + "The printer's cover is open; close it before printing.\n"},
  };
  for (const auto& c : kCases) {
    printer.command(c.command);
    const CommandResult result = setup({"-v", c.uri, "-m", c.model, "-p", "labels"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, asking(c.uri) + c.want) << c.command << " " << c.model;
  }
}

TEST_F(Setup, AcceptsCustomSizesWithWidthAndHeightOnly) {
  spooler_.addQueue("labels", "korvel-k220-203", 1);
  for (const std::string size :
       {"Custom", "custom", "Custom.axb", "Custom.50x", "custom.50x80mm"}) {
    const CommandResult result = setup({"-p", "labels", "-o", "PageSize=" + size});
    EXPECT_EQ(result.status, 1) << size;
    EXPECT_EQ(result.output, "korvel-setup: There is no choice PageSize=" + size +
                                 ". Nearest choices: Custom.WIDTHxHEIGHTmm.\n");
  }
  EXPECT_EQ(setup({"-p", "labels", "-o", "PageSize=Custom.50x80mm"}).status, 0);
  EXPECT_TRUE(hasDefault(spooler_.queueDescription("labels"), "PageSize: Custom.50x80mm"));
}

// The program's terminal shows questions and answers; the answers are typed ahead.
TEST_F(Setup, AsksInATerminalForMissingValues) {
  const struct {
    const char* sentence;
    const char* words;
    const char* typed;
    const char* queue;
    const char* model;
    std::vector<const char*> defaults;
  } kCases[] = {
      {"proposals accepted",
       "-v usb://Korvel/R57",
       "\\n\\n\\n\\nno\\n",
       "r57",
       "Korvel R57 203 dpi, 1.0",
       {"PageSize: 4x6", "HalftoneType: Ordered", "Contrast: 50"}},
      {"the second driver, a common size, barcodes, and a name",
       "-v usb://Korvel/R57",
       "2\\n2\\n1\\nboxes\\nno\\n",
       "boxes",
       "Korvel R57 300 dpi, 1.0",
       {"PageSize: 4x8", "HalftoneType: None", "Contrast: 50"}},
      {"wrong numbers first; a size of one's own, and pictures",
       "-v lpd://127.0.0.1/r57-korvel",
       "9\\nx\\n2\\n55 x 33\\n55 x 33 mm\\n4\\n2\\ntags\\nn\\n",
       "tags",
       "Korvel R57 300 dpi one-way, 1.0",
       {"PageSize: Custom.55x33mm", "HalftoneType: Ordered", "Contrast: 0"}},
      {"values of the command line are not asked for",
       "-v usb://Korvel/R57 -o PageSize=4x4 -o Contrast=20",
       "\\nsquare\\nn\\n",
       "square",
       "Korvel R57 203 dpi, 1.0",
       {"PageSize: 4x4", "Contrast: 20"}},
      {"a name that is used for another device gets a number",
       "-v usb://Korvel/R57?serial=2",
       "1\\n\\n\\n\\nn\\n",
       "r57-2",
       "Korvel R57 203 dpi, 1.0",
       {}},
      {"an unknown printer is taken for one that answers",
       "-v usb://Unknown/Printer",
       "\\n\\n\\n\\nn\\n",
       "k220",
       "Korvel K220 203 dpi, 1.0",
       {}},
      {"but not where nothing comes back",
       "-v lpd://127.0.0.1/x",
       "\\n\\n\\n\\nn\\n",
       "k220-2",
       "Korvel K220 203 dpi one-way, 1.0",
       {}},
      {"no Korvel printer: its address is asked for, and used although nothing answers",
       "",
       "\\nsocket://127.0.0.1:2\\ny\\n\\n\\n\\nfar\\nn\\n",
       "far",
       "Korvel K220 203 dpi, 1.0",
       {}},
      {"an IP address for the number of a device; another one after it failed",
       "",
       "127.0.0.1:2\\n\\nlpd://127.0.0.1/k220\\n\\n\\n\\nnear\\nn\\n",
       "near",
       "Korvel K220 203 dpi one-way, 1.0",
       {}},
      {"a URI for the number of a device",
       "",
       "usb://Korvel/M6\\n\\n2\\nsheets\\nn\\n",
       "sheets",
       "Korvel M6 300 dpi, 1.0",
       {"PageSize: Letter"}},
  };
  for (const auto& c : kCases) {
    const CommandResult result = inTerminal(c.words, c.typed);
    EXPECT_EQ(result.status, 0) << c.sentence << "\n" << result.output;
    EXPECT_NE(result.output.find("Which driver? [1] "), std::string::npos) << result.output;
    EXPECT_EQ(result.output.find("192.0.2."), std::string::npos) << result.output;
    const std::string description = spooler_.queueDescription(c.queue);
    const std::string nickname = std::string("*NickName: \"") + c.model + "\"";
    EXPECT_NE(description.find(nickname), std::string::npos) << c.sentence << "\n" << result.output;
    for (const char* one : c.defaults)
      EXPECT_TRUE(hasDefault(description, one)) << c.sentence << one;
  }
}

TEST_F(Setup, TheEmulatedPrinterIsADeviceOfTheDialog) {
  const TemporaryFolder files;
  const std::string port = std::to_string(freePort());
  const CommandResult result =
      inTerminal("--test-page -m r57-203 -p try --port " + port + " --out " + files.file("sheets"),
                 "emulated:\\n2\\n1\\n");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_TRUE(hasDefault(spooler_.queueDescription("try"), "PageSize: 4x8"));
  EXPECT_TRUE(hasDefault(spooler_.queueDescription("try"), "HalftoneType: None"));
  EXPECT_GT(readPicture(files.file("sheets/sheet-1.png")).printed(), 0u) << result.output;
}

TEST_F(Setup, ProposesTheOneWayDriverWhenThePrinterIsSilent) {
  const ListeningPrinter printer(spooler_.toolPath("korvel-printer"), {});
  printer.command("silent");
  const struct {
    const char* typed;
    const char* model;
  } kCases[] = {
      {"\\nn\\n", "Korvel R57 203 dpi one-way, 1.0"},
      {"n\\nn\\n", "Korvel R57 203 dpi, 1.0"},
  };
  for (const auto& c : kCases) {
    command({KORVEL_LPADMIN, "-p", "r57", "-v", "socket://127.0.0.1:1", "-m", "raw"});
    command({KORVEL_LPADMIN, "-x", "r57"});
    const CommandResult result = inTerminal(
        "-p r57 -m r57-203 -o PageSize=4x4 -o Contrast=0 -v " + toPort(printer.port()), c.typed);
    EXPECT_EQ(result.status, 0) << result.output;
    const std::string nickname = std::string("*NickName: \"") + c.model + "\"";
    EXPECT_NE(spooler_.queueDescription("r57").find(nickname), std::string::npos) << result.output;
  }
}

TEST_F(Setup, PrintsATestPageOnAnEmulatedPrinterOfTheModelsKind) {
  const struct {
    const char* model;
    const char* size;
    size_t headDots;
  } kCases[] = {
      {"k220-203", "PageSize=1x1", 1728},
      {"z4", "PageSize=Tattoo_A6", 2592},
  };
  for (const auto& c : kCases) {
    const TemporaryFolder files;
    const std::string port = std::to_string(freePort());
    const CommandResult result =
        setup({"--emulated", "-m", c.model, "-p", c.model, "-o", c.size, "--test-page", "--port",
               port, "--out", files.file("sheets")});
    EXPECT_EQ(result.status, 0) << result.output;
    const Picture sheet = readPicture(files.file("sheets/sheet-1.png"));
    EXPECT_EQ(sheet.width, c.headDots) << result.output;
    EXPECT_GT(sheet.printed(), 0u) << c.model;
  }
}

TEST_F(Setup, TakesAnEmulatedPrinterThatIsThere) {
  const ListeningPrinter printer(spooler_.toolPath("korvel-printer"), {});
  const std::string port = std::to_string(printer.port());
  const CommandResult result = setup({"--emulated", "--port", port});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output,
            "Queue emulated is ready. Print with: lp -d emulated FILE\n"
            "A printer is already listening on port " +
                port + " and prints the jobs of this queue.\n");
}

TEST_F(Setup, RefusesAnEmulatedPrinterThatItCannotStart) {
  const ListeningPrinter printer(spooler_.toolPath("korvel-printer"), {});
  const std::string port = std::to_string(printer.port());
  const std::string running =
      "korvel-setup: A printer is already listening on port " + port +
      ", so that -m and --out would have no effect; stop it, or choose another port with --port.\n";
  const struct {
    const char* command;
    Words words;
    std::string message;
  } kCases[] = {
      {"silent off", {"-m", "z4"}, running},
      {"silent off", {"--out", "/nowhere"}, running},
      {"silent",
       {},
       "korvel-setup: Port " + port +
           " is used by another program, or by a printer that is busy; choose another port with "
           "--port.\n"},
  };
  for (const auto& c : kCases) {
    printer.command(c.command);
    Words words = {"--emulated", "--port", port};
    words.insert(words.end(), c.words.begin(), c.words.end());
    const CommandResult result = setup(words);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, c.message);
  }
}

// ---- Feeding ----

// The events of the media, in order; controls and connections left out.
Words feedsOf(const ListeningPrinter& printer) { return printer.events({"feed mode", "cut"}); }

TEST_F(Setup, FeedsTheMediaOfAQueue) {
  const struct {
    const char* sentence;
    const char* model;
    const char* paper;
    Words words;
    Words feeds;
    const char* output;
  } kCases[] = {
      {"to the edge",
       "korvel-label-203",
       "LabelGap",
       {},
       {"feed mode 3 lines 0"},
       "The media is at the tear-off edge. When it is torn off, take it back to the print "
       "position: korvel-setup --feed labels --back\n"},
      {"to the edge after a black mark, with a two-way driver",
       "korvel-k220-203",
       "LabelMark",
       {},
       {"feed mode 5 lines 0"},
       "The media is at the tear-off edge. When it is torn off, take it back to the print "
       "position: korvel-setup --feed labels --back\n"},
      {"back",
       "korvel-label-203",
       "LabelGap",
       {"--back"},
       {"feed mode 4 lines 0"},
       "The media is at the print position.\n"},
      {"cut, and back",
       "korvel-k220-203",
       "LabelGap",
       {"--cut"},
       {"feed mode 3 lines 0", "cut", "feed mode 4 lines 0"},
       "The media is at the print position.\n"},
  };
  for (const auto& c : kCases) {
    const ListeningPrinter printer(spooler_.toolPath("korvel-printer"), {"--speed", "5000"});
    spooler_.addQueue("labels", c.model, printer.port());
    spooler_.setDefault("labels", std::string("PaperType=") + c.paper);
    Words words = {"--feed", "labels"};
    words.insert(words.end(), c.words.begin(), c.words.end());
    const CommandResult result = setup(words);
    EXPECT_EQ(result.status, 0) << c.sentence;
    EXPECT_EQ(result.output, c.output) << c.sentence;
    EXPECT_TRUE(printer.waitForEvent(c.feeds.back(), kSeconds)) << c.sentence;
    EXPECT_EQ(feedsOf(printer), c.feeds) << c.sentence;
  }
}

// The first sheet after a feed has the dots of one without a feed, at the same place.
TEST_F(Setup, FeedingMovesNoLabelThatIsPrintedLater) {
  const TemporaryFolder files;
  const std::string document = files.write("label.pdf", makePdf({barLabel(3)}));
  const auto firstSheet = [&](const char* queue, bool feeds) {
    const ListeningPrinter printer(spooler_.toolPath("korvel-printer"), {"--speed", "5000"});
    spooler_.addQueue(queue, "korvel-k220-203", printer.port());
    if (feeds) {
      const CommandResult result = inTerminal(std::string("--feed ") + queue, "\\n");
      EXPECT_EQ(result.status, 0) << result.output;
      EXPECT_NE(result.output.find("Tear off the media, then press Enter"), std::string::npos);
      EXPECT_TRUE(printer.waitForEvent("feed mode 4", kSeconds));
    }
    const int job = spooler_.print(queue, {"-o", "PageSize=2x2", document});
    EXPECT_TRUE(spooler_.waitForJob(job, kSeconds));
    EXPECT_TRUE(printer.waitForEvent("sheet 1 out", kSeconds));
    return readPicture(printer.sheetPath(1));
  };
  const Picture plain = firstSheet("plain", false);
  EXPECT_GT(plain.printed(), 0u);
  EXPECT_EQ(difference(firstSheet("fed", true), plain), "");
}

TEST_F(Setup, FeedsOnlyWhatCanBeFed) {
  spooler_.addQueue("m6", "korvel-m6", 1);
  spooler_.addQueue("r57", "korvel-r57-203", 1);
  command({KORVEL_LPADMIN, "-p", "other", "-v", "socket://127.0.0.1:1", "-m", "raw"});
  const struct {
    Words words;
    int status;
    const char* message;
  } kCases[] = {
      {{"--feed", "nobody"}, 1, "There is no queue nobody. Show all queues: lpstat -e\n"},
      {{"--feed", "other"}, 1, "Queue other does not have an installed Korvel driver.\n"},
      {{"--feed", "m6"},
       1,
       "The printer of queue m6 takes single sheets, which are not fed to a next label.\n"},
      {{"--feed", "r57", "--cut"},
       1,
       "The driver of queue r57 has no cutter. Feed to the tear-off edge: korvel-setup --feed "
       "r57\n"},
      {{"--back"}, 2, "--cut and --back need --feed; see korvel-setup --help\n"},
      {{"--feed", "r57", "--cut", "--back"},
       2,
       "--cut and --back cannot be combined; see korvel-setup --help\n"},
  };
  for (const auto& c : kCases) {
    const CommandResult result = setup(c.words);
    EXPECT_EQ(result.status, c.status) << c.message;
    EXPECT_EQ(result.output, std::string("korvel-setup: ") + c.message);
  }
  // A queue that does not send it: the job waits, and the command says which one.
  command({"cupsdisable", "r57"});
  const CommandResult result = setup({"--feed", "r57"});
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(result.output.starts_with("korvel-setup: Job r57-")) << result.output;
  EXPECT_TRUE(result.output.ends_with(
      ", which feeds the media, has not been sent. Find out why: korvel-setup --check r57\n"))
      << result.output;
}

// ---- The doctor ----

class Doctor : public Setup {
 protected:
  Doctor()
      : printer_(spooler_.toolPath("korvel-printer"),
                 {"--dpi", "300", "--media", "sheet", "--speed", "5000"}) {
    uri_ = toPort(printer_.port());
    spooler_.addQueue("m6", "korvel-m6", printer_.port());
  }

  // Its findings about the queue, followed by its exit status.
  std::string findings(const Words& more = {}) {
    Words words = {"--check", "m6"};
    words.insert(words.end(), more.begin(), more.end());
    const CommandResult result = setup(words);
    return result.output + std::to_string(result.status);
  }

  const std::string well_ = "Queue m6 (Korvel M6 300 dpi, 1.0): no problems found.\n0";
  const std::string noSheet_ =
      "m6: The printer has no sheet loaded, or the last one is still in its output; it will wait "
      "for a sheet when a job starts.\n";
  ListeningPrinter printer_;
  std::string uri_;
};

TEST_F(Doctor, ChecksDriverFilterAndDumps) {
  EXPECT_EQ(findings(), well_);

  fs::permissions(spooler_.filterPath(), fs::perms::owner_read | fs::perms::others_read);
  const std::string path = spooler_.filterPath();
  EXPECT_EQ(findings(), "m6: The print filter " + path + " is not executable. As root: chmod 755 " +
                            path + "\n1");
  fs::permissions(path, fs::perms(0757));
  EXPECT_EQ(findings(),
            "m6: The print service does not run filters that other users can change. As root: "
            "chown root:root " +
                path + " && chmod 755 " + path + "\n1");
  fs::rename(path, path + ".away");
  EXPECT_EQ(findings(), "m6: The print filter " + path +
                            " is missing; reinstall the package printer-driver-korvel.\n1");
  fs::rename(path + ".away", path);
  fs::permissions(path, fs::perms(0755));

  const TemporaryFolder dumps;
  for (const char* name : {"origin_1.bmp", "dithered_1.bmp", "other.bmp"}) {
    fs::resize_file(dumps.write(name, ""), 600'000'000);  // holes, no blocks
  }
  const std::string& folder = dumps.path();
  EXPECT_EQ(findings({"--dump-folder", folder}),
            "m6: The image dumps of the filter in " + folder + " take 1200 MB. As root: find " +
                folder +
                " -maxdepth 1 \\( -name 'origin_*.bmp' -o -name 'dithered_*.bmp' \\) -delete\n1");

  std::ofstream(spooler_.descriptionPath("korvel-m6"), std::ios::app) << "*New: True\n";
  EXPECT_EQ(findings(),
            "m6: The driver of queue m6 is not the installed version. Update it: korvel-setup -p "
            "m6 -m korvel-m6\n1");
  EXPECT_EQ(setup({"-p", "m6", "-m", "korvel-m6"}).status, 0);
  EXPECT_EQ(findings(), well_);
}

TEST_F(Doctor, ChecksTheConnectionAndItsAdviceHelps) {
  printer_.command("silent");
  EXPECT_EQ(findings(), "m6: The printer at " + uri_ +
                            " does not answer; this costs about 20 minutes per page. Switch it off "
                            "and on again. If it still does not answer, choose the one-way driver: "
                            "korvel-setup -p m6 -m korvel-m6-oneway\n1");
  EXPECT_EQ(setup({"-p", "m6", "-m", "korvel-m6-oneway"}).status, 0);
  const std::string wellOneWay = "Queue m6 (Korvel M6 300 dpi one-way, 1.0): no problems found.\n0";
  EXPECT_EQ(findings(), wellOneWay);

  printer_.command("silent off");
  EXPECT_EQ(findings(), "m6: The printer at " + uri_ +
                            " answers; with its two-way driver the queue would report missing "
                            "paper and an open cover, but wait for the printer after each sheet "
                            "(20 labels: 82 s instead of 25 s): korvel-setup -p m6 -m korvel-m6\n" +
                            wellOneWay);

  EXPECT_EQ(setup({"-p", "m6", "-m", "m6", "-v", "lpd://127.0.0.1/raw"}).status, 0);
  EXPECT_EQ(findings(),
            "m6: Queue m6 waits for replies of the printer, but lpd://127.0.0.1/raw returns none; "
            "this costs about 20 minutes per page. Choose the one-way driver: korvel-setup -p m6 "
            "-m korvel-m6-oneway\n1");

  const std::string nowhere = toPort(freePort());
  EXPECT_EQ(setup({"-p", "m6", "-v", nowhere}).status, 0);
  const std::string port = nowhere.substr(nowhere.rfind(':') + 1);
  EXPECT_EQ(findings(), "m6: Nothing listens at " + nowhere +
                            ". Start the emulated printer again: korvel-setup --emulated -p m6 -m "
                            "korvel-m6 --port " +
                            port + "\n1");
}

TEST_F(Doctor, ReportsWhatTheQueueWaitsForAndWhyAJobFailed) {
  const TemporaryFolder files;
  const std::string document = files.write("sheet.pdf", makePdf({barLabel(3)}));
  command({"cupsreject", "m6"});
  EXPECT_EQ(findings(), "m6: Queue m6 rejects new jobs. Let it accept them: cupsaccept m6\n1");
  command({"cupsaccept", "m6"});
  command({"cupsdisable", "m6"});
  EXPECT_EQ(
      findings(),
      "m6: Queue m6 is stopped. Solve the problems shown here, then start it: cupsenable m6\n1");
  command({"cupsenable", "m6"});

  const struct {
    const char* scenario;
    const char* remedy;
    const char* reason;
    const char* finding;
  } kCases[] = {
      {"cover open", "cover close", "cover-open-warning",
       "m6: The printer's cover is open; close it to continue queue m6.\n1"},
      {"out-of-paper", "load", "media-empty-warning",
       "m6: The printer has no paper, or a sheet is still in its output; load paper or remove the "
       "sheet to continue queue m6.\n1"},
  };
  for (const auto& c : kCases) {
    printer_.command(c.scenario);
    const int job = spooler_.print("m6", {"-o", "PageSize=Tattoo_A6", document});
    ASSERT_TRUE(waitUntil(kSeconds, [&] { return spooler_.reasons("m6").contains(c.reason); }));
    EXPECT_EQ(findings(), c.finding);
    printer_.command(c.remedy);
    ASSERT_TRUE(spooler_.waitForJob(job, kSeconds));
  }
  ASSERT_TRUE(waitUntil(kSeconds, [&] { return spooler_.reasons("m6").empty(); }));
  EXPECT_EQ(findings(), noSheet_ + well_);  // the last one is still in the output

  const ListeningPrinter other(spooler_.toolPath("korvel-printer"), {});
  spooler_.addQueue("label", "korvel-label-203", other.port());
  const int job = spooler_.print("label", {"-o", "PageSize=Custom.0.9x0.9mm", document});
  ASSERT_TRUE(waitUntil(kSeconds, [&] { return spooler_.jobState(job) == IPP_JSTATE_STOPPED; }));
  // The spooler's message of the job is the reason, or "Filter failed" if it notices that first.
  const CommandResult result = setup({"--check", "-d", "label"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "label: Job " + std::to_string(job) +
                               " has a page size that the driver does not support; choose another "
                               "size, or a custom size of at least 10 mm.\nlabel: Job " +
                               std::to_string(job) +
                               " is stopped. After solving its problem, start it again: lp -i "
                               "label-" +
                               std::to_string(job) + " -H restart (or remove it: cancel label-" +
                               std::to_string(job) + ")\n");
}

TEST_F(Doctor, FindsARasterFileThatIsNotWholeAlthoughItsJobIsPrinted) {
  const ListeningPrinter other(spooler_.toolPath("korvel-printer"), {"--speed", "5000"});
  spooler_.addQueue("label", "korvel-label-203", other.port());
  RasterPage page;
  ASSERT_TRUE(parseRasterPage("400x200 203dpi picture=ramp", &page));
  const TemporaryFolder files;
  const std::string whole = files.write("whole.ras", makeRaster({page}));
  page.pixelBytes = 400 * 150;
  const std::string cut = files.write("cut.ras", makeRaster({page}));
  const std::string packed = cut + ".gz";
  command({"sh", "-c", "gzip -n < " + cut + " > " + packed});
  const struct {
    const char* description;
    std::string file;
    bool damaged;
  } kCases[] = {{"whole", whole, false},
                {"cut short", cut, true},
                {"and compressed", packed, true},
                {"no longer the newest", whole, false}};
  for (const auto& c : kCases) {
    const int job = spooler_.print("label", {c.file});
    ASSERT_TRUE(spooler_.waitForJob(job, kSeconds)) << c.description;
    const std::string output = setup({"--check", "-d", "label"}).output;
    const std::string finding = "label: The pages of job " + std::to_string(job) +
                                " are damaged; print the document again from its application.\n";
    EXPECT_EQ(output.find(finding) != std::string::npos, c.damaged) << c.description << output;
  }
}

TEST_F(Doctor, AsksAnIdlePrinterForItsStatus) {
  printer_.command("cover open");
  EXPECT_EQ(findings(), "m6: The printer's cover is open; close it to continue queue m6.\n1");
  EXPECT_EQ(
      findings({"--json"}),
      "{\"queues\": [{\"queue\": \"m6\", \"driver\": \"Korvel M6 300 dpi, 1.0\", \"good\": "
      "false, \"findings\": [{\"kind\": \"problem\", \"text\": \"The printer's cover is open; "
      "close it to continue queue m6.\"}]}]}\n1");
  printer_.command("cover close");
  printer_.command("out-of-paper");
  EXPECT_EQ(findings(), noSheet_ + well_);
}

TEST_F(Doctor, FindsASilentPrinterAfterHalfAMinute) {
  const TemporaryFolder files;
  const std::string document = files.write("sheet.pdf", makePdf({barLabel(3)}));
  printer_.command("silent");
  const int job = spooler_.print("m6", {"-o", "PageSize=Tattoo_A6", document});
  ASSERT_TRUE(printer_.waitForEvent("status request -> silence", kSeconds));
  EXPECT_EQ(findings(), well_);
  std::string found;
  ASSERT_TRUE(waitUntil(kSeconds, [&] { return (found = findings()) != well_; }));
  EXPECT_TRUE(found.starts_with("m6: Job " + std::to_string(job) + " has been printing for "))
      << found;
  EXPECT_TRUE(
      found.ends_with("s and the printer does not answer. Switch it off and on again. If "
                      "that does not help, cancel the job (cancel m6-" +
                      std::to_string(job) +
                      ") and choose the one-way driver: korvel-setup -p m6 -m "
                      "korvel-m6-oneway\n1"))
      << found;
  spooler_.cancel(job);
}

TEST_F(Doctor, ItsAdviceStartsAStoppedOrHeldJobAgain) {
  const TemporaryFolder files;
  const std::string document = files.write("sheet.pdf", makePdf({barLabel(3)}));
  const std::string path = spooler_.filterPath();
  fs::permissions(path, fs::perms(0757));  // the print service refuses to run it
  const int stopped = spooler_.print("m6", {"-o", "PageSize=Tattoo_A6", document});
  ASSERT_TRUE(
      waitUntil(kSeconds, [&] { return spooler_.jobState(stopped) == IPP_JSTATE_STOPPED; }));
  const int held = spooler_.print("m6", {"-o", "PageSize=Tattoo_A6", "-H", "hold", document});
  const std::string restart = "lp -i m6-" + std::to_string(stopped) + " -H restart";
  const std::string resume = "lp -i m6-" + std::to_string(held) + " -H resume";
  const std::string found = findings();
  EXPECT_NE(found.find(restart), std::string::npos) << found;
  EXPECT_NE(found.find(resume), std::string::npos) << found;
  fs::permissions(path, fs::perms(0755));
  command({"sh", "-c", restart});
  command({"sh", "-c", resume});
  EXPECT_TRUE(spooler_.waitForJob(stopped, kSeconds));
  EXPECT_TRUE(spooler_.waitForJob(held, kSeconds));
}

}  // namespace
