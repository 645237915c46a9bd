#pragma once

#include <string>
#include <utility>
#include <vector>

namespace quellix {

// What was found out about a place that may hold a Windows that is not running, without a change.
struct SurveyedVolume {
  // What the facts are about; each may be told several times.
  static constexpr const char *kWindows = "windows", *kProduct = "product", *kVersion = "version",
                              *kInstalled = "installed", *kUser = "user", *kDrive = "drive",
                              *kHindrance = "hindrance", *kUnknown = "unknown";
  struct Fact {
    std::string kind;
    std::string name;   // whose: a user's, a drive's letter; "" else
    std::string value;  // a time as "2026-11-22T08:30:00Z"
  };

  std::string place;  // a folder, an image file or a device
  bool has_windows = false;
  std::vector<Fact> facts;

  void Add(std::string kind, std::string name, std::string value) {
    facts.push_back({std::move(kind), std::move(name), std::move(value)});
  }
};

}  // namespace quellix
