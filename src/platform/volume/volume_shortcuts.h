#pragma once

#include <memory>

#include "platform/shell.h"
#include "platform/volume/volume_file_system.h"

namespace quellix {

// Shortcuts of a volume. Which file defines it depends on the libraries that are there: without
// liblnk it throws NotAvailable.
std::unique_ptr<ShortcutReader> OpenVolumeShortcuts(VolumeFileSystem& files);

}  // namespace quellix
