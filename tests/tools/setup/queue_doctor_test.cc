// Every finding of the doctor with its sentence, and the facts that must not be found fault with.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/queue_doctor.h"

#include <cups/ipp.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>

#include "tools/description/description_text.h"

namespace {

using korvel::FilterFile;
using korvel::PrinterAnswer;
using korvel::QueueFacts;

const char kDescription[] =
    "*PPD-Adobe: \"4.3\"\n"
    "*cupsFilter: \"application/vnd.cups-raster 0 rastertokorvel\"\n"
    "*ModelName: \"K220\"\n"
    "*DefaultPageSize: 4x6\n";

QueueFacts wellQueue() {
  QueueFacts facts;
  facts.queue.name = "labels";
  facts.queue.uri = "socket://192.0.2.7";
  facts.description = kDescription;
  facts.installed = kDescription;
  facts.installedName = "korvel-k220-203";
  facts.filterPath = "/usr/lib/cups/filter/rastertokorvel";
  facts.filter = FilterFile::kFine;
  facts.reply.answer = PrinterAnswer::kAnswers;
  facts.dumpFolder = "/var/spool/cups/tmp";
  return facts;
}

void beOneWay(QueueFacts* facts) {
  facts->installedName = "korvel-k220-203-oneway";
  const size_t at = facts->description.find("\"K220\"");
  facts->description.replace(at, 6, "\"K220-OneWay\"");
  facts->installed = facts->description;
}

void failWith(QueueFacts* facts, const char* message) {
  facts->jobs = {{7, IPP_JSTATE_ABORTED, message}};
}

struct Case {
  const char* sentence;
  std::function<void(QueueFacts*)> change;
  const char* want;  // the findings, hints after a question mark; one per line
};

void expectFindings(const Case& c) {
  QueueFacts facts = wellQueue();
  c.change(&facts);
  std::string have;
  for (const korvel::Finding& finding : korvel::examine(facts)) {
    have += (finding.fault ? "" : "? ") + finding.text + "\n";
  }
  EXPECT_EQ(have, c.want) << c.sentence;
}

TEST(QueueDoctor, FindsWhatIsWrongWithTheInstallation) {
  const Case kCases[] = {
      {"another driver's queue", [](QueueFacts* f) { f->description = "*PPD-Adobe: \"4.3\"\n"; },
       "Queue labels does not use a Korvel driver. Create a queue that does: korvel-setup -v "
       "'socket://192.0.2.7' -p NAME\n"},
      {"an old description", [](QueueFacts* f) { f->installed += "*New: True\n"; },
       "The driver of queue labels is not the installed version. Update it: korvel-setup -p labels "
       "-m korvel-k220-203\n"},
      {"a description from before bars were exact",
       [](QueueFacts* f) { f->installed += "*DefaultCenterOfPixel: True\n"; },
       "Queue labels has an old driver, which prints the bars of barcodes too wide. Update it: "
       "korvel-setup -p labels -m korvel-k220-203\n"},
      {"exact bars that are switched off",
       [](QueueFacts* f) {
         f->description += "*DefaultCenterOfPixel: False\n";
         f->installed += "*DefaultCenterOfPixel: True\n";
       },
       ""},
      {"a default that scales pictures",
       [](QueueFacts* f) { f->queue.scaling = "natural-scaling=100"; },
       "? Queue labels scales pictures by default (natural-scaling=100), so that barcodes may not "
       "scan. Remove the default: lpadmin -p labels -R natural-scaling-default\n"},
      {"a description that is gone", [](QueueFacts* f) { f->installedName = f->installed = ""; },
       "The driver of queue labels is not installed. Choose another one: korvel-setup -p labels -m "
       "MODEL (korvel-setup --list shows all)\n"},
      {"no filter", [](QueueFacts* f) { f->filter = FilterFile::kMissing; },
       "The print filter /usr/lib/cups/filter/rastertokorvel is missing; reinstall the package "
       "printer-driver-korvel.\n"},
      {"a filter without the right to run",
       [](QueueFacts* f) { f->filter = FilterFile::kNotExecutable; },
       "The print filter /usr/lib/cups/filter/rastertokorvel is not executable. As root: chmod 755 "
       "/usr/lib/cups/filter/rastertokorvel\n"},
      {"a filter that others may write", [](QueueFacts* f) { f->filter = FilterFile::kUnsafe; },
       "The print service does not run filters that other users can change. As root: chown "
       "root:root /usr/lib/cups/filter/rastertokorvel && chmod 755 "
       "/usr/lib/cups/filter/rastertokorvel\n"},
      {"a job that the server's end interrupted", [](QueueFacts* f) { f->interruptedJob = 12; },
       "? Job 12 was interrupted when the print server stopped, and was printed again from its "
       "first page; look for labels that were printed twice.\n"},
      {"many pictures", [](QueueFacts* f) { f->dumpBytes = 1234567890; },
       "The image dumps of the filter in /var/spool/cups/tmp take 1234 MB. As root: find "
       "/var/spool/cups/tmp -maxdepth 1 \\( -name 'origin_*.bmp' -o -name 'dithered_*.bmp' \\) "
       "-delete\n"},
  };
  for (const Case& c : kCases) expectFindings(c);
}

TEST(QueueDoctor, FindsWhatIsWrongWithTheConnection) {
  const Case kCases[] = {
      {"a reporting model on a one-way connection",
       [](QueueFacts* f) {
         f->queue.uri = "lpd://192.0.2.7/raw";
         f->reply.answer = PrinterAnswer::kNotAsked;
       },
       "Queue labels waits for replies of the printer, but lpd://192.0.2.7/raw returns none; this "
       "costs about 20 minutes per page. Choose the one-way driver: korvel-setup -p labels -m "
       "korvel-k220-203-oneway\n"},
      {"a silent printer", [](QueueFacts* f) { f->reply.answer = PrinterAnswer::kSilent; },
       "The printer at socket://192.0.2.7 does not answer; this costs about 20 minutes per page. "
       "Switch it off and on again. If it still does not answer, choose the one-way driver: "
       "korvel-setup -p labels -m korvel-k220-203-oneway\n"},
      {"nobody there", [](QueueFacts* f) { f->reply.answer = PrinterAnswer::kNotReached; },
       "Cannot reach the printer at socket://192.0.2.7; switch it on and check its cable, or "
       "change the address: korvel-setup -p labels -v socket://ADDRESS\n"},
      {"an emulated printer that does not run",
       [](QueueFacts* f) {
         f->queue.uri = "socket://127.0.0.1:9101";
         f->reply.answer = PrinterAnswer::kNotReached;
       },
       "Nothing listens at socket://127.0.0.1:9101. Start the emulated printer again: "
       "korvel-setup --emulated -p labels -m korvel-k220-203 --port 9101\n"},
      {"a one-way description that need not be", [](QueueFacts* f) { beOneWay(f); },
       "? The printer at socket://192.0.2.7 answers; with its two-way driver the queue would "
       "report missing paper and an open cover, but wait for the printer after each sheet (20 "
       "labels: 82 s instead of 25 s): korvel-setup -p labels -m korvel-k220-203\n"},
  };
  for (const Case& c : kCases) expectFindings(c);
}

TEST(QueueDoctor, ReportsWhatTheQueueWaitsFor) {
  const Case kCases[] = {
      {"open cover", [](QueueFacts* f) { f->queue.reasons = {"cover-open-warning"}; },
       "The printer's cover is open; close it to continue queue labels.\n"},
      {"no paper", [](QueueFacts* f) { f->queue.reasons = {"media-empty-warning"}; },
       "The printer has no paper, or a sheet is still in its output; load paper or remove the "
       "sheet to continue queue labels.\n"},
      {"an open cover of an idle printer", [](QueueFacts* f) { f->reply.coverOpen = true; },
       "The printer's cover is open; close it to continue queue labels.\n"},
      {"an open cover that the queue reports too",
       [](QueueFacts* f) {
         f->reply.coverOpen = true;
         f->queue.reasons = {"cover-open-warning"};
       },
       "The printer's cover is open; close it to continue queue labels.\n"},
      {"no paper in an idle printer", [](QueueFacts* f) { f->reply.noPaper = true; },
       "The printer has no paper, or a sheet is still in its output; load paper or remove the "
       "sheet to continue queue labels.\n"},
      {"no sheet in an idle stencil printer",
       [](QueueFacts* f) {
         f->description += "*OpenUI *AntiWrinkle/x: Boolean\n";
         f->installed = f->description;
         f->reply.noPaper = true;
       },
       "? The printer has no sheet loaded, or the last one is still in its output; it will wait "
       "for a sheet when a job starts.\n"},
      {"a stopped queue that takes no jobs",
       [](QueueFacts* f) {
         f->queue.stopped = true;
         f->queue.accepting = false;
       },
       "Queue labels is stopped. Solve the problems shown here, then start it: cupsenable labels\n"
       "Queue labels rejects new jobs. Let it accept them: cupsaccept labels\n"},
  };
  for (const Case& c : kCases) expectFindings(c);
}

TEST(QueueDoctor, ExplainsTheLastError) {
  const Case kCases[] = {
      {"page size",
       [](QueueFacts* f) { failWith(f, "Paper size must not less than 1.0 : (0.9, 0.9)"); },
       "Job 7 has a page size that the driver does not support; choose another size, or a custom "
       "size of at least 10 mm.\n"},
      {"another description's pages",
       [](QueueFacts* f) {
         failWith(f, "Unsupported bits per pixel : 1 ! Requires 8 bits per pixel!");
       },
       "The pages of job 7 were made for another driver; choose the queue's driver again with "
       "korvel-setup and print again.\n"},
      {"a raster file that is not whole, printed as far as it is",
       [](QueueFacts* f) { f->damagedJob = 7; },
       "The pages of job 7 are damaged; print the document again from its application.\n"},
      {"damaged pages", [](QueueFacts* f) { failWith(f, "Page rows too short"); },
       "The pages of job 7 are damaged; print the document again from its application.\n"},
      {"a giant page", [](QueueFacts* f) { failWith(f, "Page too large"); },
       "A page of job 7 is too long for the printer; divide the document into pages.\n"},
      {"no pages", [](QueueFacts* f) { failWith(f, "Unable to open raster file - No such file"); },
       "Cannot read the pages of job 7; check whether the disk is full, and print again.\n"},
      {"no response", [](QueueFacts* f) { failWith(f, "The printer is not responding."); },
       "The printer did not respond to job 7; switch it on and check its cable.\n"},
      {"no printer",
       [](QueueFacts* f) {
         failWith(f, "The printer may not exist or is unavailable at this time.");
       },
       "Cannot reach the printer of job 7; switch it on, and check its cable and address.\n"},
      {"a busy printer", [](QueueFacts* f) { failWith(f, "The printer is busy."); },
       "The printer was busy with another job during job 7; wait, or cancel the other job.\n"},
      {"an unknown name", [](QueueFacts* f) { failWith(f, "Unable to locate printer \"k220\"."); },
       "The printer's host name in job 7 is unknown; use its IP address.\n"},
      {"a missing program",
       [](QueueFacts* f) { failWith(f, "cannot start filter - No such file or directory"); },
       "A program that job 7 needs is missing; reinstall the packages cups-filters and "
       "printer-driver-korvel.\n"},
      {"a crash", [](QueueFacts* f) { failWith(f, "rastertokorvel crashed on signal 11"); },
       "A filter of job 7 crashed; print the document again, and if it crashes again, print it as "
       "a PDF.\n"},
      {"a failed filter", [](QueueFacts* f) { failWith(f, "Filter failed"); },
       "A filter of job 7 failed; run cupsctl --debug-logging, print again, and read the end of "
       "/var/log/cups/error_log.\n"},
      {"an unknown message", [](QueueFacts* f) { failWith(f, "Out of luck"); },
       "Job 7 failed: \"Out of luck\". Run cupsctl --debug-logging, print again, and read the end "
       "of /var/log/cups/error_log.\n"},
      {"a job that is being tried again",
       [](QueueFacts* f) {
         f->jobs = {{7, IPP_JSTATE_PROCESSING, ""}};
         f->queue.message = "The printer is not responding.";
       },
       "The printer did not respond to job 7; switch it on and check its cable.\n"},
  };
  for (const Case& c : kCases) expectFindings(c);
}

constexpr char kStuck[] =
    "Job 7 has been printing for %s s and the printer does not answer. Switch it off and on again. "
    "If that does not help, cancel the job (cancel labels-7) and choose the one-way driver: "
    "korvel-setup -p labels -m korvel-k220-203-oneway\n";

TEST(QueueDoctor, FindsAJobWhosePrinterIsSilent) {
  const struct {
    const char* sentence;
    int seconds, sheets;
    std::optional<int> silent;
    std::function<void(QueueFacts*)> change;
    const char* reported;  // the seconds of the finding; empty: none
  } kCases[] = {
      {"thirty seconds", 30, 0, 30, [](QueueFacts*) {}, ""},
      {"longer, all of them in silence", 31, 0, 30, [](QueueFacts*) {}, "31"},
      {"longer, but the printer answers", 800, 0, 1, [](QueueFacts*) {}, ""},
      {"silence that ends soon enough", 800, 0, 29, [](QueueFacts*) {}, ""},
      {"unknown silence, one sheet", 31, 1, {}, [](QueueFacts*) {}, "31"},
      {"unknown silence, thirty seconds", 30, 1, {}, [](QueueFacts*) {}, ""},
      {"unknown silence, as long as twenty labels may take", 220, 20, {}, [](QueueFacts*) {}, ""},
      {"unknown silence, longer", 221, 20, {}, [](QueueFacts*) {}, "221"},
      {"the one-way driver", 800, 1, 800, [](QueueFacts* f) { beOneWay(f); }, ""},
      {"a reason to wait that the queue reports", 800, 1, 1,
       [](QueueFacts* f) { f->queue.reasons = {"connecting-to-device"}; }, ""},
  };
  for (const auto& c : kCases) {
    QueueFacts facts = wellQueue();
    facts.reply = {};
    c.change(&facts);
    facts.jobs = {{7, IPP_JSTATE_PROCESSING, "", c.seconds, c.sheets}};
    facts.silentSeconds = c.silent;
    std::string want = *c.reported == 0 ? "" : kStuck;
    if (!want.empty()) want.replace(want.find("%s"), 2, c.reported);
    std::string have;
    for (const korvel::Finding& finding : korvel::examine(facts)) have += finding.text + "\n";
    EXPECT_EQ(have, want) << c.sentence;
  }
}

TEST(QueueDoctor, LooksAtEveryJobThatIsStoppedOrHeld) {
  QueueFacts facts = wellQueue();
  facts.jobs = {{3, IPP_JSTATE_STOPPED, "Filter failed"},
                {4, IPP_JSTATE_HELD, ""},
                {5, IPP_JSTATE_PENDING, ""},
                {9, IPP_JSTATE_STOPPED, "Out of luck"}};
  std::string have;
  for (const korvel::Finding& finding : korvel::examine(facts)) have += finding.text + "\n";
  EXPECT_EQ(have,
            "A filter of job 3 failed; run cupsctl --debug-logging, print again, and read the end "
            "of /var/log/cups/error_log.\n"
            "Job 3 is stopped. After solving its problem, start it again: lp -i labels-3 -H "
            "restart (or remove it: cancel labels-3)\n"
            "Job 4 is held. Print it: lp -i labels-4 -H resume (or remove it: cancel labels-4)\n"
            "Job 9 failed: \"Out of luck\". Run cupsctl --debug-logging, print again, and read the "
            "end of /var/log/cups/error_log.\n"
            "Job 9 is stopped. After solving its problem, start it again: lp -i labels-9 -H "
            "restart (or remove it: cancel labels-9)\n");
}

TEST(QueueDoctor, FindsNoFaultWithAWellQueue) {
  const Case kCases[] = {
      {"nothing", [](QueueFacts*) {}, ""},
      {"defaults of its own",
       [](QueueFacts* f) {
         f->description.replace(f->description.find("4x6"), 3, "2x2");
         f->installed += "*DefaultNew: True\r\n";
       },
       ""},
      {"one-way on a one-way connection",
       [](QueueFacts* f) {
         beOneWay(f);
         f->queue.uri = "lpd://192.0.2.7/raw";
         f->reply.answer = PrinterAnswer::kNotAsked;
       },
       ""},
      {"one-way and silent",
       [](QueueFacts* f) {
         beOneWay(f);
         f->reply.answer = PrinterAnswer::kSilent;
       },
       ""},
      {"a printer that was not asked",
       [](QueueFacts* f) { f->reply.answer = PrinterAnswer::kNotAsked; }, ""},
      {"a filter on another machine", [](QueueFacts* f) { f->filter = FilterFile::kNotLookedAt; },
       ""},
      {"a few pictures", [](QueueFacts* f) { f->dumpBytes = 999'999'999; }, ""},
      {"a job that is printing",
       [](QueueFacts* f) {
         f->jobs = {{7, IPP_JSTATE_PROCESSING, "Printing page 3, 20% complete."}};
       },
       ""},
      {"a job that went through",
       [](QueueFacts* f) {
         f->jobs = {{7, IPP_JSTATE_COMPLETED, "The printer is not responding."}};
       },
       ""},
      {"a cancelled job",
       [](QueueFacts* f) {
         f->jobs = {{7, IPP_JSTATE_CANCELED, "Page too large"}};
       },
       ""},
  };
  for (const Case& c : kCases) expectFindings(c);
}

TEST(DescriptionText, GivesTheValueOfAKeyword) {
  const struct {
    const char* text;
    const char* want;
  } kCases[] = {
      {"*ModelName: \"M6\"\n", "M6"},
      {"*ModelName:\t\"M 6\"\r\n", "M 6"},
      {"*ModelName: M6", "M6"},
      {"*ModelNames: \"M7\"\n", ""},
      {"*% *ModelName: \"M7\"\n", ""},
      {"*ModelName: \"\"\n", ""},
      {"*A: \"1\"\n*ModelName: \"2\"", "2"},
      {"", ""},
  };
  for (const auto& c : kCases) EXPECT_EQ(korvel::keyword(c.text, "ModelName"), c.want) << c.text;
}

TEST(DescriptionText, DiffersByEverythingButDefaults) {
  const struct {
    const char* sentence;
    const char* one;
    const char* other;
    bool same;
  } kCases[] = {
      {"the same", "*A: 1\n*B: 2\n", "*A: 1\n*B: 2\n", true},
      {"other defaults", "*A: 1\n*DefaultB: 2\n", "*A: 1\n*DefaultB: 3\n", true},
      {"a default more", "*A: 1\n", "*DefaultB: 3\n*A: 1\n", true},
      {"other line ends", "*A: 1\r\n", "*A: 1\n", true},
      {"another line", "*A: 1\n", "*A: 2\n", false},
      {"a line more", "*A: 1\n*B: 2\n", "*A: 1\n", false},
      {"a line less", "*A: 1\n", "*A: 1\n*B: 2\n", false},
      {"nothing and a line", "", "*A: 1\n", false},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(korvel::sameDescription(c.one, c.other), c.same) << c.sentence;
  }
}

}  // namespace
