// A stock file, or one that cupsctl wrote, has few forms of each line; any other form is taken for
// an administrator's. SPDX-License-Identifier: Apache-2.0
#include "tools/setup/server_config.h"

#include <strings.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "tools/common/translation.h"

namespace korvel {

namespace {

constexpr char kRoot[] = "<Location />";

struct Line {
  std::string text;     // as in the file
  std::string section;  // normalised opening line around it; an opening line is in its own section
  std::string name;     // "Listen", "<Location", "</Location>"
  std::string value;    // without a comment, and without the > of an opening line
};

bool same(const std::string& a, const std::string& b) {
  return strcasecmp(a.c_str(), b.c_str()) == 0;
}

std::string trimmed(const std::string& text) {
  const size_t from = text.find_first_not_of(" \t\r");
  if (from == std::string::npos) return "";
  return text.substr(from, text.find_last_not_of(" \t\r") - from + 1);
}

void splitLine(Line* line) {
  const std::string plain = trimmed(line->text.substr(0, line->text.find('#')));
  const size_t space = plain.find_first_of(" \t");
  line->name = plain.substr(0, space);
  if (space != std::string::npos) line->value = trimmed(plain.substr(space));
}

std::vector<Line> linesOf(const std::string& text) {
  std::vector<Line> lines;
  std::istringstream in(text);
  std::string section;
  for (std::string one; std::getline(in, one);) {
    Line line = {one, section, "", ""};
    splitLine(&line);
    const bool opens = line.name.starts_with("<") && !line.name.starts_with("</");
    // A <Limit> belongs to the section around it.
    if (opens && !same(line.name, "<Limit") && !same(line.name, "<LimitExcept")) {
      section = line.name + " " + line.value;
      line.section = section;
    } else if (same(line.name, "</Location>") || same(line.name, "</Policy>")) {
      section.clear();
    }
    lines.push_back(line);
  }
  return lines;
}

std::string joined(const std::vector<Line>& lines) {
  std::string text;
  for (const Line& line : lines) text += line.text + "\n";
  return text;
}

std::vector<std::string> listOf(const std::string& value) {
  std::vector<std::string> items;
  std::istringstream in(value);
  for (std::string item; std::getline(in, item, ',');) items.push_back(trimmed(item));
  return items;
}

bool isOneOf(const std::string& text, std::initializer_list<const char*> list) {
  return std::any_of(list.begin(), list.end(), [&](const char* one) { return same(text, one); });
}

bool isLoopback(const std::string& address) {
  return isOneOf(address, {"localhost:631", "127.0.0.1:631", "[::1]:631"});
}

bool isListen(const Line& line) { return same(line.name, "Listen") || same(line.name, "Port"); }

void readListen(const Line& line, SharingConfig* config) {
  const bool port = same(line.name, "Port");
  if (!port && (line.value.starts_with("/") || isLoopback(line.value))) return;
  const bool loopback = line.value.starts_with("localhost") || line.value.starts_with("127.") ||
                        line.value.starts_with("[::1]");
  if (!loopback) config->listens = true;
  if (!port || line.value != "631") config->handWritten = true;
}

void readRootLine(const Line& line, SharingConfig* config) {
  if (same(line.name, "Order")) {
    // With this order everybody may, unless a line denies it.
    if (same(line.value, "deny,allow")) config->admitsNetwork = true;
    return;
  }
  if (!same(line.name, "Allow")) {
    config->handWritten = true;
    return;
  }
  std::string who = line.value;
  if (strncasecmp(who.c_str(), "from ", 5) == 0) who = trimmed(who.substr(5));
  if (isOneOf(who, {"@LOCAL", "all"})) config->admitsNetwork = true;
  if (!isOneOf(who, {"@LOCAL", "all", "localhost", "127.0.0.1"})) config->handWritten = true;
}

void readAdminLine(const Line& line, SharingConfig* config) {
  const bool allows = same(line.name, "Allow") && !isOneOf(line.value, {"localhost", "127.0.0.1"});
  if (allows || (same(line.name, "Order") && same(line.value, "deny,allow"))) {
    config->adminIsLocal = false;
  }
}

void readTopLine(const Line& line, SharingConfig* config) {
  if (isListen(line)) {
    readListen(line, config);
  } else if (isOneOf(line.name, {"SSLListen", "SSLPort", "Include"})) {
    config->handWritten = true;
  } else if (same(line.name, "Browsing")) {
    config->browsing = isOneOf(line.value, {"yes", "on", "true"});
  } else if (same(line.name, "ReadyPaperSizes")) {
    config->readySizes = listOf(line.value);
  } else if (same(line.name, "DirtyCleanInterval")) {
    config->dirtyCleanInterval = line.value;
  }
}

// Changes lines and notes what it changed.
class Editor {
 public:
  explicit Editor(const std::string& text) : lines_(linesOf(text)) {}

  // Gives the first line with this name at the top level another text, or adds one at the end.
  void set(const std::string& name, const std::string& after) {
    for (Line& line : lines_) {
      if (!line.section.empty() || !same(line.name, name)) continue;
      edit(&line, after);
      return;
    }
    edits_.push_back({"", "", after});
    lines_.push_back({after, "", name, ""});
  }

  // The first address of this computer alone gives way to every address; further ones go.
  void listenEverywhere() {
    bool open = false;
    for (size_t i = 0; i < lines_.size();) {
      const bool gives = lines_[i].section.empty() && same(lines_[i].name, "Listen") &&
                         isLoopback(lines_[i].value);
      if (gives && open) {
        edits_.push_back({"", lines_[i].text, ""});
        lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(i));
        continue;
      }
      if (gives) edit(&lines_[i], "Port 631");
      open = open || gives;
      ++i;
    }
    if (!open) set("Port", "Port 631");
  }

  void admitNetwork() {
    const std::string line = "  Allow @LOCAL";
    for (size_t i = 0; i < lines_.size(); ++i) {
      if (lines_[i].section != kRoot || !same(lines_[i].name, "</Location>")) continue;
      edits_.push_back({kRoot, "", line});
      lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(i), {line, kRoot, "Allow", ""});
      return;
    }
    for (const std::string& one : {std::string(kRoot), std::string("  Order allow,deny"), line,
                                   std::string("</Location>")}) {
      edits_.push_back({kRoot, "", one});
      lines_.push_back({one, kRoot, "", ""});
    }
  }

  ConfigChange change() const { return {joined(lines_), edits_}; }

 private:
  void edit(Line* line, const std::string& after) {
    edits_.push_back({line->section, line->text, after});
    line->text = after;
  }

  std::vector<Line> lines_;
  std::vector<LineEdit> edits_;
};

std::string readyLine(const std::vector<std::string>& sizes) {
  std::string line = "ReadyPaperSizes ";
  for (size_t i = 0; i < sizes.size(); ++i) line += (i == 0 ? "" : ",") + sizes[i];
  return line;
}

}  // namespace

SharingConfig readSharingConfig(const std::string& text) {
  SharingConfig config;
  for (const Line& line : linesOf(text)) {
    if (line.name.empty() || line.name.starts_with("<")) continue;
    if (line.section.empty()) readTopLine(line, &config);
    if (line.section == kRoot) readRootLine(line, &config);
    if (line.section.starts_with("<Location /admin")) readAdminLine(line, &config);
  }
  return config;
}

Result<ConfigChange> planSharing(const std::string& text,
                                 const std::vector<std::string>& readySizes) {
  const SharingConfig config = readSharingConfig(text);
  const bool closed = !config.listens || !config.admitsNetwork || !config.browsing;
  if (closed && config.handWritten) {
    return Failure{
        translated("cupsd.conf was edited by hand and does not let the local network print; it was "
                   "not changed. Add to it: Port 631, Browsing Yes, and Allow @LOCAL in "
                   "<Location />. Then repeat the command.")};
  }
  Editor editor(text);
  if (!config.listens) editor.listenEverywhere();
  if (!config.browsing) editor.set("Browsing", "Browsing Yes");
  if (!config.admitsNetwork) editor.admitNetwork();
  if (config.readySizes != readySizes) editor.set("ReadyPaperSizes", readyLine(readySizes));
  if (config.dirtyCleanInterval.empty()) editor.set("DirtyCleanInterval", "DirtyCleanInterval 0");
  return editor.change();
}

namespace {

void takeBackOne(std::vector<Line>* lines, const LineEdit& edit) {
  if (edit.after.empty()) {  // a removed line comes back where its neighbour was changed
    const auto at = std::find_if(lines->begin(), lines->end(), isListen);
    const auto after = at == lines->end() ? at : at + 1;
    lines->insert(after, {edit.before, edit.section, "Listen", ""});
    return;
  }
  const auto at = std::find_if(lines->begin(), lines->end(), [&edit](const Line& line) {
    return line.section == edit.section && line.text == edit.after;
  });
  if (at == lines->end()) return;
  if (edit.before.empty()) {
    lines->erase(at);
  } else {
    at->text = edit.before;
  }
}

}  // namespace

std::string takeBack(const std::string& text, const std::vector<LineEdit>& edits) {
  std::vector<Line> lines = linesOf(text);
  for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) takeBackOne(&lines, *edit);
  return joined(lines);
}

}  // namespace korvel
