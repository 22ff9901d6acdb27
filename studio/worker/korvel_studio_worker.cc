// One step of a preview, in a process of its own with limits on memory, time and file size, started
// by korvel-studio: reading an upload, making a raster page of it, making its dots, looking for
// barcodes. Answers with one line of JSON.
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <locale>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "studio/sentences.h"
#include "studio/worker/barcode_reader.h"
#include "studio/worker/page_composer.h"
#include "studio/worker/page_dots.h"
#include "studio/worker/picture_placer.h"
#include "studio/worker/picture_reader.h"
#include "studio/worker/worker_answer.h"
#include "tools/common/result.h"

namespace korvel {

namespace {
// What decoders print by themselves must not reach the answer.
int answerDescriptor = STDOUT_FILENO;

void answer(const nlohmann::json& text) {
  const std::string line = text.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
  if (write(answerDescriptor, line.data(), line.size()) < 0) _exit(1);
}
}  // namespace

void endWorker(const std::string& sentence) {
  answer({{"error", sentence}});
  _exit(1);
}

void endWorker(const Sentence& sentence) { endWorker(std::string(sentence.english)); }

}  // namespace korvel

namespace {

using korvel::endWorker;
using nlohmann::json;
using Words = std::vector<std::string>;

#ifdef KORVEL_ADDRESS_SANITIZER  // it reserves terabytes
constexpr rlim_t kMemoryBytes = RLIM_INFINITY;
#else
constexpr rlim_t kMemoryBytes = rlim_t{1} << 30;
#endif
constexpr rlim_t kProcessorSeconds = 30;
constexpr rlim_t kFileBytes = rlim_t{512} << 20;
constexpr rlim_t kOpenFiles = 256;

template <typename T>
T must(korvel::Result<T> result) {
  if (!result) endWorker(result.sentence());
  return std::move(result).value();
}
void must(const korvel::Result<void>& result) {
  if (!result) endWorker(result.sentence());
}

void limit(int resource, rlim_t most) {
  rlimit old = {};
  getrlimit(static_cast<__rlimit_resource>(resource), &old);
  const rlim_t value = old.rlim_max == RLIM_INFINITY || old.rlim_max > most ? most : old.rlim_max;
  const rlimit wanted = {value, value};
  setrlimit(static_cast<__rlimit_resource>(resource), &wanted);
}

// Inherited by everything that the worker starts.
void setLimits() {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  limit(RLIMIT_AS, kMemoryBytes);
  limit(RLIMIT_CPU, kProcessorSeconds);
  limit(RLIMIT_FSIZE, kFileBytes);
  limit(RLIMIT_NOFILE, kOpenFiles);
  limit(RLIMIT_CORE, 0);
  setenv("KORVEL_DUMPS", "off", 1);
}

std::string headOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::string head(16, '\0');
  in.read(head.data(), static_cast<std::streamsize>(head.size()));
  head.resize(static_cast<size_t>(in.gcount()));
  return head;
}

// import UPLOAD GREY: GREY is written for pictures.
json import(const Words& words) {
  const std::string& upload = words.at(0);
  const std::string head = headOf(upload);
  if (head.empty()) endWorker(korvel::kEmptyFile);
  if (head.starts_with("%PDF-")) {
    json pages = json::array();
    for (const auto& page : must(korvel::readPdfPages(upload))) {
      pages.push_back({page.width, page.height});
    }
    return {{"kind", "pdf"}, {"pages", pages}};
  }
  const std::string type = korvel::pictureType(head);
  if (type.empty()) endWorker(korvel::kUnknownKind);
  korvel::GreyPicture picture = must(korvel::readPicture(upload, type));
  korvel::reduceToPrintable(&picture);
  must(korvel::saveGrey(picture, words.at(1)));
  return {{"kind", "picture"},
          {"width", picture.width},
          {"height", picture.height},
          {"dpi", picture.dpi}};
}

// Rasterises a composed page and removes it.
json rasterise(const std::string& composed, const std::string& ppd, const std::string& options,
               const std::string& raster) {
  auto size = korvel::rasterisePage(composed, ppd, options, raster);
  std::remove(composed.c_str());
  const korvel::RasterPageInfo made = must(std::move(size));
  return {{"width", made.width}, {"height", made.height}};
}

// blank MEDIAWIDTH MEDIAHEIGHT PPD OPTIONS RASTER
json blank(const Words& words) {
  const std::string composed = words.at(4) + ".pdf";
  must(korvel::composeBlankPage({std::stod(words.at(0)), std::stod(words.at(1)), ""}, composed));
  return rasterise(composed, words.at(2), words.at(3), words.at(4));
}

// pdf FILE PAGE MEDIAWIDTH MEDIAHEIGHT MATRIX PPD OPTIONS RASTER
json pdf(const Words& words) {
  const std::string composed = words.at(7) + ".pdf";
  must(korvel::composePdfPage(words.at(0), static_cast<unsigned>(std::stoul(words.at(1))),
                              {std::stod(words.at(2)), std::stod(words.at(3)), words.at(4)},
                              composed));
  return rasterise(composed, words.at(5), words.at(6), words.at(7));
}

korvel::Matrix matrixOf(const std::string& text) {
  std::istringstream in(text);
  in.imbue(std::locale::classic());
  korvel::Matrix matrix = {};
  for (double& value : matrix) in >> value;
  if (!in) throw std::invalid_argument("matrix");
  return matrix;
}

// picture GREY MATRIX BLANK RASTER
json picture(const Words& words) {
  must(korvel::drawPicture(must(korvel::loadGrey(words.at(0))), matrixOf(words.at(1)), words.at(2),
                           words.at(3)));
  return json::object();
}

// move RASTER RIGHT DOWN TARGET: by dots
json move(const Words& words) {
  must(korvel::movePage(words.at(0), std::stol(words.at(1)), std::stol(words.at(2)), words.at(3)));
  return json::object();
}

// dots FILTER RASTER PPD OPTIONS PNG
json dots(const Words& words) {
  const korvel::DotsSize size =
      must(korvel::makeDots({words.at(0), words.at(1), words.at(2), words.at(3), words.at(4)}));
  return {{"width", size.width}, {"height", size.height}, {"printed", size.printed}};
}

// barcodes RASTER PNG
json barcodes(const Words& words) { return korvel::readBarcodes(words.at(0), words.at(1)); }

struct Step {
  const char* verb;
  json (*run)(const Words& words);
};
constexpr Step kSteps[] = {{"import", import},    {"blank", blank}, {"pdf", pdf},
                           {"picture", picture},  {"move", move},   {"dots", dots},
                           {"barcodes", barcodes}};

}  // namespace

int main(int argc, char** argv) {
  setLimits();
  korvel::answerDescriptor = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 10);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  const Words words(argv + std::min(argc, 2), argv + argc);
  const std::string verb = argc > 1 ? argv[1] : "";
  try {
    for (const Step& step : kSteps) {
      if (verb != step.verb) continue;
      korvel::answer(step.run(words));
      return 0;
    }
  } catch (const std::bad_alloc&) {
    endWorker(korvel::kTooManyPixels);
  } catch (const std::exception&) {
    endWorker(korvel::kDamaged);
  }
  return 2;
}
