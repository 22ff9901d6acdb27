// Each symbol becomes a grey picture file. The file's name says which symbol an answer belongs to.
// SPDX-License-Identifier: Apache-2.0
#include "tests/barcodes/code_readers.h"

#include <cmath>
#include <deque>
#include <functional>
#include <map>
#include <sstream>

#include "tests/ppd/descriptions.h"
#include "tests/support/temporary_folder.h"

namespace {

constexpr int kPixelsPerDot[] = {3, 2, 1};

using Answers = std::map<std::string, std::string>;  // by the number in the file's name

std::string greyPicture(const DotPage& page, const PlacedSymbol& placed, int scale) {
  const double margin = placed.quiet();
  const int left = static_cast<int>(std::floor(placed.left - margin));
  const int top = static_cast<int>(std::floor(placed.top - margin / 2));
  const int width = static_cast<int>(std::ceil(placed.width() + 2 * margin));
  const int height = static_cast<int>(std::ceil(placed.height() + margin));
  std::string picture =
      "P5 " + std::to_string(width * scale) + " " + std::to_string(height * scale) + " 255\n";
  for (int y = 0; y < height; ++y) {
    std::string row;
    for (int x = 0; x < width; ++x) {
      row.append(static_cast<size_t>(scale), page.dot(left + x, top + y) ? '\0' : '\xFF');
    }
    for (int i = 0; i < scale; ++i) picture += row;
  }
  return picture;
}

std::string named(size_t number) { return "symbol" + std::to_string(number) + ".pgm"; }

std::string numberIn(const std::string& line) {
  const size_t at = line.rfind("symbol") + 6;
  return line.substr(at, line.find_first_not_of("0123456789", at) - at);
}

Answers askZbar(const std::string& folder, const std::string& files) {
  const CommandResult run =
      runCommand("cd " + quoted(folder) + " && zbarimg -q --xml " + files + " 2>/dev/null");
  Answers answers;
  std::string number;
  std::istringstream in(run.output);
  for (std::string line; std::getline(in, line);) {
    if (line.find("<source href=") != std::string::npos) number = numberIn(line);
    if (line.find("<data") != std::string::npos) answers[number] += line;
  }
  return answers;
}

Answers askZxing(const std::string& folder, const std::string& files) {
  const CommandResult run =
      runCommand("cd " + quoted(folder) + " && ZXingReader -1 " + files + " 2>/dev/null");
  Answers answers;
  std::istringstream in(run.output);
  for (std::string line; std::getline(in, line);) {
    if (line.find("symbol") == 0) answers[numberIn(line)] += line.substr(line.find(' '));
  }
  return answers;
}

// libdmtx's program does not say which file an answer is from.
Answers askDmtx(const std::string& folder, const std::string& files) {
  const CommandResult run =
      runCommand("cd " + quoted(folder) + " && for f in " + files +
                 "; do echo \"$f $(dmtxread -N1 -m500 $f 2>/dev/null)\"; done");
  Answers answers;
  std::istringstream in(run.output);
  for (std::string line; std::getline(in, line);) {
    answers[numberIn(line.substr(0, line.find(' ')))] = line.substr(line.find(' '));
  }
  return answers;
}

struct Reader {
  const char* name;
  bool Symbology::*knows;
  Answers (*ask)(const std::string& folder, const std::string& files);
};

const Reader kReaders[] = {
    {"zbar", &Symbology::zbar, askZbar},
    {"libdmtx", &Symbology::dmtx, askDmtx},
    {"zxing-cpp", &Symbology::zxing, askZxing},
};

std::string answerOf(const Answers& answers, size_t number) {
  const auto answer = answers.find(std::to_string(number));
  return answer == answers.end() ? "" : answer->second;
}

// Asks the reader for all its symbols that it has not read yet.
void ask(const Reader& reader, const std::string& folder, std::vector<Vote*> votes) {
  std::string files;
  for (size_t i = 0; i < votes.size(); ++i) {
    if (votes[i] != nullptr && !votes[i]->read) files += " " + named(i);
  }
  if (files.empty()) return;
  const Answers answers = reader.ask(folder, files);
  for (size_t i = 0; i < votes.size(); ++i) {
    if (votes[i] == nullptr || votes[i]->read) continue;
    const Symbology& symbology = *votes[i]->symbol->symbol->symbology;
    votes[i]->read = answerOf(answers, i).find(symbology.answer) != std::string::npos;
  }
}

// By the symbol's number; null for those that the reader does not know.
std::vector<Vote*> votesOf(const Reader& reader, const std::vector<PlacedSymbol>& symbols,
                           std::deque<Vote>* votes) {
  std::vector<Vote*> own;
  for (const PlacedSymbol& symbol : symbols) {
    const bool knows = symbol.symbol->symbology->*reader.knows;
    if (knows) votes->push_back({&symbol, reader.name, false});
    own.push_back(knows ? &votes->back() : nullptr);
  }
  return own;
}

}  // namespace

std::vector<Vote> votesOn(const std::vector<DotPage>& pages, const SymbolSheet& sheet) {
  const std::vector<PlacedSymbol>& symbols = sheet.symbols();
  std::deque<Vote> votes;  // whose places in memory do not change
  std::vector<std::vector<Vote*>> byReader;
  for (const Reader& reader : kReaders) byReader.push_back(votesOf(reader, symbols, &votes));
  for (const int scale : kPixelsPerDot) {
    const TemporaryFolder folder;
    for (size_t i = 0; i < symbols.size(); ++i) {
      if (symbols[i].page >= pages.size()) continue;
      folder.write(named(i), greyPicture(pages[symbols[i].page], symbols[i], scale));
    }
    for (size_t r = 0; r < std::size(kReaders); ++r) ask(kReaders[r], folder.path(), byReader[r]);
  }
  return {votes.begin(), votes.end()};
}
