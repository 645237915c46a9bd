#pragma once

#include <functional>
#include <string_view>

#include "platform/machine.h"

namespace quellix {

// Removes the archives and undo files in the backup folder (ends in "\") whose names are of our
// form and that were last written more than `days` days ago; `days` of 0 or less removes none. Told
// to `removed` with its size and time, and to `stayed` with the reason. A folder that cannot be
// listed has none. Never throws.
void RemoveExpiredBackups(
    const Machine& machine, std::string_view folder, int days,
    const std::function<void(const std::string& path, const FileInfo& file)>& removed,
    const std::function<void(const std::string& path, std::string_view why)>& stayed);

}  // namespace quellix
