// A list of recipes: whatever stands in it, each entry is a recipe that means the same as a
// plug-in's file, is judged without a fault, and names nothing precious that it would remove.
#include "fuzz/check.h"
#include "platform/path.h"
#include "platform/profile_strings.h"
#include "platform/text.h"
#include "plugins/plugin_places.h"
#include "plugins/recipe_judgement.h"
#include "plugins/recipe_keys.h"
#include "run/working_folder.h"
#include "support/volume_seed.h"

using namespace quellix;

namespace {

void CheckRecipe(const Machine& machine, ProtectedPlaces& places,
                 const modPlugin::ListedRecipe& recipe) {
  const modPlugin::Plugin& plugin = recipe.plugin;
  const std::string written = modPlugin::FormatPlugin(plugin);
  const modPlugin::Plugin read = modPlugin::ParsePlugin(written);
  Check(modPlugin::FormatPlugin(read) == written && read.cost == plugin.cost);
  Check(read.has_unknown_exclusion == plugin.has_unknown_exclusion);
  Check(!recipe.name.empty() && recipe.name.find(modPlugin::kSeparator) == recipe.name.npos);
  const modPlugin::Judgement judged = modPlugin::Judge(machine, places, recipe);
  const bool is_whole = judged.standing == modPlugin::Standing::kWhole;
  const std::string windows = machine.system.WindowsFolder();
  for (const modPlugin::FileEntry& entry : plugin.files) {
    const modPlugin::FilesPlace place = modPlugin::FindFolders(machine, places, entry);
    Check(!is_whole || place.refusals.empty());
    for (const std::string& folder : place.folders)
      Check(!entry.recurse || !EqualsNoCase(windows, folder));
  }
  for (const modPlugin::RegistryEntry& entry : plugin.registry) {
    for (const modPlugin::KeyPlace& place : modPlugin::FindKeys(machine.registry, entry))
      Check(place.root.has_value() || !is_whole);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const auto volume = VolumeTestMachine::CreateVolume();
  const Machine machine = volume->machine();
  static ProtectedPlaces places = LoadPlaces(machine);
  const std::string text = DecodeIni(BytesOf(data, size), machine.system);
  const auto recipes = modPlugin::ParseRecipeLists({text, text});
  Check(recipes.size() % 2 == 0);
  for (const modPlugin::ListedRecipe& recipe : recipes) CheckRecipe(machine, places, recipe);
  return 0;
}
