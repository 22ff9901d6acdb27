// The files of the page, read once at start: a request chooses among their names and opens nothing.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_PAGE_ASSETS_H
#define KORVEL_STUDIO_PAGE_ASSETS_H

#include <map>
#include <string>

#include "tools/common/result.h"

namespace korvel {

struct PageAsset {
  std::string type;
  std::string content;
};

class PageAssets {
 public:
  // Every HTML, CSS, JavaScript and SVG file of `folder` and of its folder languages.
  Result<void> load(const std::string& folder);

  // Null when there is none. "/" is the page itself.
  const PageAsset* find(const std::string& path) const;

 private:
  std::map<std::string, PageAsset> assets_;  // by path, "/languages/de.js"
};

}  // namespace korvel

#endif
