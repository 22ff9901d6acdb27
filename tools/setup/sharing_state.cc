// Fields are separated by tabs, which no line of cupsd.conf and no queue's text needs.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/sharing_state.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "tools/common/file_content.h"
#include "tools/common/translation.h"

namespace fs = std::filesystem;

namespace korvel {

namespace {

constexpr char kFile[] = "/sharing";

std::string clean(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\t' || c == '\n'; }, ' ');
  return text;
}

// A line of cupsd.conf may be indented with tabs.
std::string escaped(const std::string& text) {
  std::string out;
  for (const char c : text) out += c == '\t' ? "\\t" : c == '\\' ? "\\\\" : std::string(1, c);
  return out;
}

std::string unescaped(const std::string& text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool escape = text[i] == '\\' && i + 1 < text.size();
    if (escape) ++i;
    out += escape && text[i] == 't' ? '\t' : text[i];
  }
  return out;
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  size_t from = 0;
  for (;;) {
    const size_t end = text.find(separator, from);
    parts.push_back(text.substr(from, end - from));
    if (end == std::string::npos) return parts;
    from = end + 1;
  }
}

std::vector<std::string> listOf(const std::string& text) {
  return text.empty() ? std::vector<std::string>() : split(text, ',');
}

std::string joined(const std::vector<std::string>& list) {
  std::string text;
  for (size_t i = 0; i < list.size(); ++i) text += (i == 0 ? "" : ",") + list[i];
  return text;
}

void readLine(const std::vector<std::string>& fields, SharingState* state) {
  if (fields[0] == "queue" && fields.size() == 8) {
    state->queues.push_back({fields[1], fields[2] == "shared", fields[3], fields[4],
                             listOf(fields[5]), fields[6] == "hidden", fields[7]});
  } else if (fields[0] == "edit" && fields.size() == 4) {
    state->edits.push_back({unescaped(fields[1]), unescaped(fields[2]), unescaped(fields[3])});
  } else if (fields[0] == "ready" && fields.size() == 2) {
    state->readyBase = listOf(fields[1]);
  } else if (fields[0] == "avahi") {
    state->startedAvahi = true;
  }
}

Failure cannotWrite(const std::string& path) {
  return Failure{filled("Cannot write %s: %s; nothing was changed. Run the command as root.",
                        path.c_str(), std::strerror(errno))};
}

}  // namespace

QueueRecord* SharingState::find(const std::string& queue) {
  for (QueueRecord& one : queues) {
    if (one.name == queue) return &one;
  }
  return nullptr;
}

bool SharingState::sharesAny() const {
  return std::any_of(queues.begin(), queues.end(), [](const auto& one) { return !one.hidden; });
}

void SharingState::add(const std::vector<LineEdit>& more) {
  for (const LineEdit& edit : more) {
    const auto older = std::find_if(edits.begin(), edits.end(), [&edit](const LineEdit& one) {
      return !edit.before.empty() && one.section == edit.section && one.after == edit.before;
    });
    if (older == edits.end()) {
      edits.push_back(edit);
    } else {
      older->after = edit.after;
    }
  }
}

std::string writeState(const SharingState& state) {
  std::ostringstream out;
  for (const QueueRecord& one : state.queues) {
    out << "queue\t" << one.name << "\t" << (one.wasShared ? "shared" : "private") << "\t"
        << clean(one.info) << "\t" << clean(one.location) << "\t" << joined(one.readySizes) << "\t"
        << (one.hidden ? "hidden" : "published") << "\t" << one.uri << "\n";
  }
  for (const LineEdit& edit : state.edits) {
    out << "edit\t" << escaped(edit.section) << "\t" << escaped(edit.before) << "\t"
        << escaped(edit.after) << "\n";
  }
  if (!state.readyBase.empty()) out << "ready\t" << joined(state.readyBase) << "\n";
  if (state.startedAvahi) out << "avahi\tstarted\n";
  return out.str();
}

SharingState readState(const std::string& text) {
  SharingState state;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) readLine(split(line, '\t'), &state);
  return state;
}

SharingState loadState(const std::string& folder) { return readState(contentOf(folder + kFile)); }

Result<void> saveState(const std::string& folder, const SharingState& state) {
  const std::string path = folder + kFile;
  const std::string text = writeState(state);
  std::error_code fault;
  if (text.empty()) {
    fs::remove(path, fault);
    return {};
  }
  fs::create_directories(folder, fault);
  std::ofstream file(path + ".new");
  file << text << std::flush;
  if (!file) return cannotWrite(path);
  file.close();
  fs::rename(path + ".new", path, fault);
  if (fault) return cannotWrite(path);
  return {};
}

}  // namespace korvel
