// Stands in for volume_shortcuts.cpp where liblnk is missing.
#include "platform/error.h"
#include "platform/volume/volume_shortcuts.h"

namespace quellix {

std::unique_ptr<ShortcutReader> OpenVolumeShortcuts(VolumeFileSystem&) {
  throw NotAvailable("Shortcuts cannot be read: this program was built without liblnk.");
}

}  // namespace quellix
