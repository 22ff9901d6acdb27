// Reads the folder.
// SPDX-License-Identifier: Apache-2.0
#include "studio/page_assets.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "tools/common/translation.h"

namespace fs = std::filesystem;

namespace korvel {
namespace {

std::string typeOf(const std::string& extension) {
  if (extension == ".html") return "text/html; charset=utf-8";
  if (extension == ".css") return "text/css; charset=utf-8";
  if (extension == ".js") return "text/javascript; charset=utf-8";
  if (extension == ".svg") return "image/svg+xml";
  return "";
}

}  // namespace

Result<void> PageAssets::load(const std::string& folder) {
  std::error_code fault;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder, fault)) {
    const std::string type = typeOf(entry.path().extension());
    if (type.empty() || !entry.is_regular_file(fault)) continue;
    std::ifstream in(entry.path(), std::ios::binary);
    assets_["/" + entry.path().lexically_relative(folder).string()] = {
        type, std::string{std::istreambuf_iterator<char>(in), {}}};
  }
  if (!assets_.contains("/index.html")) {
    return Failure{filled("The page is not in %s; install korvel-studio again.", folder.c_str())};
  }
  return {};
}

const PageAsset* PageAssets::find(const std::string& path) const {
  const auto found = assets_.find(path == "/" ? "/index.html" : path);
  return found == assets_.end() ? nullptr : &found->second;
}

}  // namespace korvel
