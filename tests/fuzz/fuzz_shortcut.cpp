// Shortcuts as a volume has them.
#include "fuzz/check.h"
#include "fuzz/volume_file.h"

using namespace quellix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static VolumeFile file("fuzzed.lnk");
  static const auto reader = file.machine().shell.OpenShortcuts();
  file.Write(BytesOf(data, size));
  const std::optional<Shortcut> shortcut = reader->Read(file.path());
  if (shortcut) {
    file.machine().files.IsGone(shortcut->target);
    file.machine().files.IsGone(shortcut->working_folder);
  }
  return 0;
}
