// The list of plug-ins: whatever stands in it, only files of the folder are listed, each once, and
// what was read is written and read back the same.

#include "fuzz/check.h"
#include "fuzz/volume_file.h"
#include "platform/text.h"
#include "plugins/plugin_list.h"

using namespace quellix;

namespace {

// With a few plug-ins, inside the folder and out of it.
struct ListFile : VolumeFile {
  ListFile() : VolumeFile("plg.txt") {
    const std::string folder = machine().program_folder;
    machine().files.CreateFolder(folder + "\\Plugins");
    machine().files.CreateFolder(folder + "\\Plugins\\sub");
    for (const char* name : {"Plugins\\a.cdp", "Plugins\\B.cdp", "Plugins\\sub\\c.cdp", "out.cdp"})
      machine().files.WriteWholeFile(folder + "\\" + name, "");
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static ListFile file;
  file.Write(BytesOf(data, size));
  const Machine machine = file.machine();
  const auto plugins = modPlugin::ReadPluginList(machine);
  std::set<std::string> names;
  for (const modPlugin::InstalledPlugin& plugin : plugins) {
    Check(names.insert(UpCase(plugin.file)).second);
    Check(!EqualsNoCase(plugin.file, "..\\out.cdp"));
    Check(machine.files.Look(modPlugin::PluginPath(machine, plugin.file)).has_value());
  }
  file.Write("");
  modPlugin::WritePluginList(machine, plugins);
  const auto again = modPlugin::ReadPluginList(machine);
  Check(again.size() == plugins.size());
  for (size_t i = 0; i < again.size(); ++i) {
    Check(again[i].file == plugins[i].file && again[i].ticked == plugins[i].ticked);
    Check(again[i].description == plugins[i].description);
  }
  return 0;
}
