// A recipe: whatever stands in it, it is read, checked and found its places without a fault, what
// was read is written and read back the same, and nothing precious is let through.
#include "fuzz/check.h"
#include "platform/profile_strings.h"
#include "platform/text.h"
#include "plugins/ini_outline.h"
#include "plugins/plugin_check.h"
#include "plugins/plugin_file.h"
#include "plugins/plugin_places.h"
#include "plugins/recipe_keys.h"
#include "run/precious_names.h"
#include "run/working_folder.h"
#include "support/volume_seed.h"

using namespace quellix;

namespace {

void CheckPlaces(const Machine& machine, const modPlugin::Plugin& plugin) {
  static ProtectedPlaces places = LoadPlaces(machine);
  const std::string windows = machine.system.WindowsFolder() + "\\";
  for (const modPlugin::FileEntry& entry : plugin.files) {
    const modPlugin::FilesPlace place = modPlugin::FindFolders(machine, places, entry);
    for (const std::string& folder : place.folders) {
      // Right in a drive only what ends as junk does, and nothing below.
      const bool is_drive = folder.size() == 2 && folder[1] == ':';
      Check(is_drive ? !entry.recurse && HasHarmlessExtension(place.mask)
                     : folder.find('\\') != std::string::npos);
      Check(folder.find("..") != 0);
      Check(is_drive || !EqualsNoCase(windows.substr(0, folder.size() + 1), folder + "\\"));
    }
  }
  for (const modPlugin::RegistryEntry& entry : plugin.registry) {
    for (const modPlugin::KeyPlace& place : modPlugin::FindKeys(machine.registry, entry)) {
      Check(place.root.has_value() == place.refusal.empty());
      if (place.root) Check(place.subkey.find('\\') != std::string::npos);
    }
  }
  for (const modPlugin::IniEntry& entry : plugin.ini) {
    const modPlugin::IniPlace place = modPlugin::FindIni(machine, places, entry);
    Check(place.path.empty() != place.refusal.empty());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const auto volume = VolumeTestMachine::CreateVolume();
  const Machine machine = volume->machine();
  const std::string_view bytes = BytesOf(data, size);
  const std::string text = DecodeText(bytes, machine.system);
  const modPlugin::Plugin plugin = modPlugin::ParsePlugin(text);
  const std::string written = modPlugin::FormatPlugin(plugin);
  Check(modPlugin::FormatPlugin(modPlugin::ParsePlugin(written)) == written);
  modPlugin::CheckPlugin(machine, bytes);
  modPlugin::OutlineIni(text);
  CheckPlaces(machine, plugin);
  return 0;
}
