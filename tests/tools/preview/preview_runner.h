// Runs korvel-preview as a user does, and makes the same print the long way round: rasteriser,
// filter and emulated printer as programs of their own.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_PREVIEW_PREVIEW_RUNNER_H_
#define KORVEL_TESTS_PREVIEW_PREVIEW_RUNNER_H_

#include <string>
#include <vector>

#include "tests/spooler/guarded_process.h"
#include "tests/support/temporary_folder.h"

using Words = std::vector<std::string>;

class PreviewRunner {
 public:
  // With the filter of this build; its diagnostic files and all passing ones land in a folder of
  // our own. `server` is the spooler's address; the default is one that nobody listens at.
  CommandResult preview(const Words& arguments, const std::string& server = "/nowhere/cups.sock");

  // The same, started in `folder`.
  CommandResult previewIn(const std::string& folder, const Words& arguments);

  // Another command with the same surroundings.
  CommandResult started(const Words& words);

  // Prints a document on the emulated printer and returns the folder of its sheet-N.png.
  std::string print(const std::string& document, const std::string& description,
                    const std::string& options, int copies, const Words& printer);

  const TemporaryFolder& files() const { return files_; }
  std::string passing() const { return files_.file("tmp"); }  // where passing files are made

 private:
  TemporaryFolder files_;
  int prints_ = 0;
};

// The label's columns on a printed sheet, which is as wide as the head.
struct LabelColumns {
  size_t left;
  size_t width;
};

// The picture of a preview has all dots and marks of the printed sheet below the label's columns,
// at their places; there are no dots elsewhere; and around the label is an outline.
void expectCropped(const std::string& shownPath, const std::string& printedPath,
                   const LabelColumns& label);

std::string ppdOf(const std::string& name);          // "korvel-label-203"
std::string exampleFile(const std::string& name);    // "label.pdf"
std::string rasterOf(const std::string& pageWords);  // one line per page, see raster_maker.h
std::string fileBytes(const std::string& path);      // "(none)" when it cannot be read

#endif
