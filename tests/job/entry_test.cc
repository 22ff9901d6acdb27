// How a job starts and how it fails: arguments, raster file, paper size, descriptors.
// Every test checks the exit status, the exact messages and what reached the printer.
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

#include "tests/job/job_text.h"

namespace {

const char kPage[] = "8x4 203dpi picture=checker:2";
// An empty job: only its two print control packets.
const char kJobEnd[] = "64 0E 40 01 00 00 00 00 00 00 9B 64 0E 40 01 00 01 00 00 00 00 9B";

// The log of the settings, starting with the lines on the size.
std::string settingsLog(const std::string& sizeLines, const std::string& size,
                        const std::string& width, const std::string& height) {
  return sizeLines +
         "DEBUG:settings->Resolution:\nDEBUG:settings->MediaMethod:Direct\n"
         "DEBUG:settings->PaperType:LabelGap\nDEBUG:settings->GapsHeight:3\n"
         "DEBUG:settings->PostAction:None\nDEBUG:settings->Occurrence:EveryPage\n"
         "DEBUG:settings->Origin:Rotation0\nDEBUG:settings->MirrorImage:0\n"
         "DEBUG:settings->NegativeImage:0\nDEBUG:settings->PrintSpeed:\n"
         "DEBUG:settings->Darkness:8\nDEBUG:settings->halftoneType:0\nDEBUG:settings->PageSize:" +
         size + "\nDEBUG:settings->pageWidth:" + width + "\nDEBUG:settings->pageHeight:" + height +
         "\nDEBUG:settings->AntiWrinkle:-1\nDEBUG:settings->IsTattooPrinter:0\n"
         "DEBUG:settings->ModelName:L203\nDEBUG:settings->Brightness:0\n"
         "DEBUG:settings->Contrast:0\n";
}

TEST(JobEntry, PrintsItsUsageWhenArgumentsAreMissing) {
  for (size_t count = 0; count < 5; ++count) {
    JobPlan plan;
    plan.ppd = testPpd("label");
    plan.arguments = std::vector<std::string>(count, "x");
    const JobResult job = runJob(plan);
    SCOPED_TRACE(std::to_string(count) + " arguments");
    EXPECT_EQ(job.exitStatus, 1);
    EXPECT_EQ(job.output, "");
    EXPECT_EQ(job.messages,
              "rastertokorvel v1.0.0\n\nUsage:\n\n    rastertokorvel job_id user title copyies "
              "options [file]\n\n");
  }
}

TEST(JobEntry, ReadsStandardInputOrTheFileArgument) {
  JobPlan plan = labelJob({kPage});
  const JobResult fromInput = runJob(plan);
  plan.byPath = true;
  const JobResult fromFile = runJob(plan);
  EXPECT_EQ(fromInput.exitStatus, 0);
  EXPECT_EQ(fromFile.exitStatus, 0);
  EXPECT_EQ(imageHex(fromInput.output), "33 33 CC CC");
  EXPECT_EQ(hexText(fromFile.output), hexText(fromInput.output));
  EXPECT_EQ(maskAddresses(fromFile.messages), maskAddresses(fromInput.messages));
}

TEST(JobEntry, ArgumentsAfterTheFileAreIgnored) {
  JobPlan plan = labelJob({kPage});
  plan.arguments = {"1", "user", "title", "1", "", "/dev/null", "/no/such/file"};
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(hexText(job.output), kJobEnd);
}

TEST(JobEntry, ReportsARasterFileThatCannotBeOpened) {
  JobPlan plan = labelJob({kPage});
  plan.arguments = {"1", "user", "title", "1", "", "/no/such/folder/raster"};
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.exitStatus, 1);
  EXPECT_EQ(job.output, "");
  EXPECT_EQ(job.messages, "ERROR: Unable to open raster file - ");
}

TEST(JobEntry, RefusesPaperOfOneMillimetreOrLess) {
  struct Case {
    const char* sentence;
    const char* size;
    const char* points;  // as logged
    const char* width;
    const char* height;
  };
  const Case kCases[] = {
      {"too low", "Slit", "300.000000,2.000000", "105.839996", "0.705600"},
      {"too narrow", "Hair", "2.000000,300.000000", "0.705600", "105.839996"},
      {"exactly one millimetre wide", "One", "2.834467,300.000000", "1.000000", "105.839996"},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    const JobResult job = runJob(labelJob({kPage}, std::string("PageSize=") + c.size));
    const std::string points = c.points;
    const std::string comma = ",";
    EXPECT_EQ(job.exitStatus, 1);
    EXPECT_EQ(job.output, "");
    EXPECT_EQ(
        job.messages,
        settingsLog("DEBUG:PageSizeName: " + std::string(c.size) + "\nDEBUG:Custom Size: (" +
                        points + ",0.000000,0.000000," + points + ")\nDEBUG:Set page size: width " +
                        c.width + " mm, height " + c.height + " mm\n",
                    c.size, c.width, c.height) +
            "ERROR: Paper size must not less than 1.0 : (" + c.width + ", " + c.height + ")\n");
  }
}

TEST(JobEntry, AcceptsPaperJustAboveOneMillimetre) {
  const JobResult job = runJob(labelJob({kPage}, "PageSize=Over"));
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(imageHex(job.output), "33 33 CC CC");
}

TEST(JobEntry, WithoutAPpdThereIsNoPageSize) {
  JobPlan plan = labelJob({kPage});
  plan.ppd.clear();
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.exitStatus, 1);
  EXPECT_EQ(job.output, "");
  EXPECT_EQ(job.messages,
            "DEBUG:PageSizeName: \n"
            "DEBUG:settings->Resolution:\nDEBUG:settings->MediaMethod:\n"
            "DEBUG:settings->PaperType:\nDEBUG:settings->GapsHeight:0\n"
            "DEBUG:settings->PostAction:\nDEBUG:settings->Occurrence:\n"
            "DEBUG:settings->Origin:\nDEBUG:settings->MirrorImage:0\n"
            "DEBUG:settings->NegativeImage:0\nDEBUG:settings->PrintSpeed:\n"
            "DEBUG:settings->Darkness:0\nDEBUG:settings->halftoneType:0\n"
            "DEBUG:settings->PageSize:\nDEBUG:settings->pageWidth:0.000000\n"
            "DEBUG:settings->pageHeight:0.000000\nDEBUG:settings->AntiWrinkle:-1\n"
            "DEBUG:settings->IsTattooPrinter:0\nDEBUG:settings->ModelName:\n"
            "DEBUG:settings->Brightness:0\nDEBUG:settings->Contrast:0\n"
            "ERROR: Paper size must not less than 1.0 : (0.000000, 0.000000)\n");
}

TEST(JobEntry, AJobWithoutPagesSendsOnlyItsEnd) {
  struct Case {
    const char* sentence;
    std::string input;
  };
  const std::string page = rasterOf({kPage});
  const Case kCases[] = {{"nothing at all", ""},
                         {"a sync word", page.substr(0, 4)},
                         {"half a header", page.substr(0, 900)},
                         {"something else", "%PDF-1.4 is not a raster stream"}};
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    JobPlan plan = labelJob({});
    plan.input = c.input;
    const JobResult job = runJob(plan);
    EXPECT_EQ(job.exitStatus, 0);
    EXPECT_EQ(hexText(job.output), kJobEnd);
    EXPECT_EQ(job.messages,
              settingsLog("DEBUG:PageSizeName: w144h72\nDEBUG:Custom Size: (144.000000,72.000000,"
                          "0.000000,0.000000,144.000000,72.000000)\nDEBUG:Set page size: width "
                          "50.803200 mm, height 25.401600 mm\n",
                          "w144h72", "50.803200", "25.401600") +
                  "DEBUG: Enter jobEnd\nDEBUG: Exit jobEnd\nSTATE: -media-empty-warning\n");
    EXPECT_EQ(job.dumps.size(), 0u);
    EXPECT_FALSE(job.pageNote.has_value());
  }
}

TEST(JobEntry, ClosedDescriptorsAreNotReusedForTheRasterFile) {
  struct Case {
    const char* sentence;
    std::vector<int> closed;
    bool byPath;
    const char* image;  // as it reaches standard output
  };
  const Case kCases[] = {
      {"no standard input, but a file", {0}, true, "33 33 CC CC"},
      {"no standard input and no file: no pages", {0}, false, ""},
      {"no channels", {3, 4}, true, "33 33 CC CC"},
      {"no channels, from standard input", {3, 4}, false, "33 33 CC CC"},
      {"nothing but the output", {0, 2, 3, 4}, true, "33 33 CC CC"},
      {"no output", {1}, true, ""},
      {"nothing at all", {0, 1, 2, 3, 4}, true, ""},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    const bool closesMessages = std::find(c.closed.begin(), c.closed.end(), 2) != c.closed.end();
    if (underMemcheck() && closesMessages) continue;  // valgrind itself needs standard error
    JobPlan plan = labelJob({kPage});
    plan.closed = c.closed;
    plan.byPath = c.byPath;
    const JobResult job = runJob(plan);
    EXPECT_FALSE(job.timedOut);
    EXPECT_EQ(job.exitStatus, 0);
    EXPECT_EQ(imageHex(job.output), c.image);
  }
}

TEST(JobEntry, AFullDiskBehindStandardOutputDoesNotCrash) {
  JobPlan plan = labelJob({"400x400 203dpi picture=noise:1", kPage});
  plan.outputPath = "/dev/full";
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.signal, 0);
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_TRUE(job.messages.ends_with("STATE: -media-empty-warning\n"));
}

TEST(JobEntry, EveryMessageIsWrittenAsWholeLines) {
  // Each write arrives as one packet of the socket. A line must begin and end in the same packet,
  // or lines of processes that share the pipe are split.
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
  JobPlan plan = labelJob({kPage, "40x20 203dpi picture=noise:1"});
  plan.messagesDescriptor = ends[1];
  plan.dumpFolder = false;  // the message about it does not go through the log
  EXPECT_EQ(runJob(plan).exitStatus, 0);
  close(ends[1]);
  size_t lines = 0;
  char bytes[16384];
  for (ssize_t n; (n = read(ends[0], bytes, sizeof bytes)) > 0;) {
    const std::string packet(bytes, static_cast<size_t>(n));
    EXPECT_EQ(packet.back(), '\n') << "split: " << packet;
    lines += countOf(packet, "\n");
  }
  close(ends[0]);
  EXPECT_GT(lines, 100u);
}

TEST(JobEntry, LinesStayWholeWhenProcessesShareAPipe) {
  const JobPlan lone = labelJob({kPage, "64x64 203dpi picture=text:2"});
  const std::vector<std::string> want = linesOf(maskAddresses(runJob(lone).messages));

  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
  fcntl(ends[1], F_SETFL, 0);
  JobPlan sharing = lone;
  sharing.messagesDescriptor = ends[1];
  std::string all;
  char bytes[65536];
  for (int round = 0; round < 4; ++round) {
    JobRunner first(sharing);
    JobRunner second(sharing);
    EXPECT_EQ(first.finish().exitStatus, 0);
    EXPECT_EQ(second.finish().exitStatus, 0);
    for (ssize_t n; (n = read(ends[0], bytes, sizeof bytes)) > 0;) {
      all.append(bytes, static_cast<size_t>(n));
    }
  }
  close(ends[0]);
  close(ends[1]);

  const std::vector<std::string> have = linesOf(maskAddresses(all));
  EXPECT_EQ(have.size(), want.size() * 8);
  for (const std::string& line : have) {
    const bool known = std::find(want.begin(), want.end(), line) != want.end();
    EXPECT_TRUE(known) << "split line: " << line;
  }
}

}  // namespace
