#pragma once

#include <functional>
#include <string_view>

#include "platform/machine.h"

namespace quellix {

// Removes the archives and undo files in the backup folder (ends in "\") whose names are of our
// form and that were last written more than `days` days ago; `days` of 0 or less removes none, and
// `goes` is asked for each. Told to `removed`, and to `stayed` with the reason. A folder that
// cannot be listed has none. Never throws.
struct ExpirySteps {
  std::function<bool(Folder& folder, const std::string& path, const FileInfo& file)> goes;
  std::function<void(const std::string& path, const FileInfo& file)> removed;
  std::function<void(const std::string& path, const Sentence& why)> stayed;
};
void RemoveExpiredBackups(const Machine& machine, std::string_view folder, int days,
                          const ExpirySteps& steps);

}  // namespace quellix
