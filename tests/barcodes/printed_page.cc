// cupsfilter up to the raster, then the filter alone, as the scheduler would run it.
// SPDX-License-Identifier: Apache-2.0
#include "tests/barcodes/printed_page.h"

#include "tests/job/stream_text.h"
#include "tests/ppd/descriptions.h"
#include "tests/support/job_runner.h"
#include "tests/support/temporary_folder.h"

namespace {

DotPage dotsOf(const SentPicture& picture) {
  static const char* const kNibbles[] = {"0000", "0001", "0010", "0011", "0100", "0101",
                                         "0110", "0111", "1000", "1001", "1010", "1011",
                                         "1100", "1101", "1110", "1111"};
  std::string dots;
  for (const std::string& block : picture.blocks) {
    for (const char byte : block) {
      dots += kNibbles[static_cast<unsigned char>(byte) >> 4];
      dots += kNibbles[static_cast<unsigned char>(byte) & 15];
    }
  }
  DotPage page;
  page.width = static_cast<int>(picture.bytesPerRow()) * 8;
  const size_t width = static_cast<size_t>(page.width);
  for (size_t at = 0; width != 0 && at + width <= dots.size(); at += width) {
    page.rows.push_back(dots.substr(at, width));
  }
  return page;
}

}  // namespace

std::string rasterOf(const PrintRequest& request) {
  const TemporaryFolder folder;
  const std::string document = folder.write("document", request.document);
  std::string command = KORVEL_CUPSFILTER " -p " + quoted(ppdPath(description(request.printer))) +
                        " -i " + request.type + " -m application/vnd.cups-raster";
  for (const std::string& option : request.options) command += " -o " + quoted(option);
  runCommand(command + " " + quoted(document) + " > " + quoted(folder.file("pages.ras")) +
             " 2>/dev/null");
  return folder.read("pages.ras");
}

std::vector<DotPage> printed(const PrintRequest& request) {
  JobPlan plan;
  plan.ppd = ppdText(description(request.printer));
  for (const std::string& option : request.options) plan.options += option + " ";
  plan.input = rasterOf(request);
  const JobResult job = runJob(plan);
  std::vector<DotPage> pages;
  if (job.exitStatus != 0) return pages;
  for (const SentPicture& picture : readStream(job.output).pictures)
    pages.push_back(dotsOf(picture));
  return pages;
}
