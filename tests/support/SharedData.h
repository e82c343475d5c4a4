#pragma once
// The shared part data as the tests read them: the files of one data folder, their JSON
// documents and the rings in them. Without the data there are no files, and the tests skip.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "orvane/foundation/Point2D.h"

namespace orvane::testing {

// The files of the data folder Folder whose names start with Prefix and end with Ext, sorted,
// so that seeded tests meet them in one order.
inline std::vector<std::filesystem::path> DataFiles(const std::string& Folder, std::string_view Ext,
                                                    std::string_view Prefix = "") {
  std::vector<std::filesystem::path> files;
  const std::filesystem::path dir = std::filesystem::path(ORVANE_SHARED_DATA_DIR) / Folder;
  if (!std::filesystem::is_directory(dir)) return files;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    const std::string name = entry.path().filename().string();
    if (name.ends_with(Ext) && name.starts_with(Prefix)) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

inline nlohmann::json ReadJson(const std::filesystem::path& File) {
  std::ifstream in(File);
  return nlohmann::json::parse(in);
}

// A ring [[x, y], ...] of the data files, as written.
inline TDynPoints2D JsonRing(const nlohmann::json& Xys) {
  TDynPoints2D ring;
  for (const nlohmann::json& xy : Xys) ring.emplace_back(xy[0].get<double>(), xy[1].get<double>());
  return ring;
}

}  // namespace orvane::testing
