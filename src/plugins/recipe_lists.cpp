// Which lists there are, and what they hold together.
#include "platform/error.h"
#include "platform/path.h"
#include "platform/profile_strings.h"
#include "platform/text.h"
#include "plugins/recipe_folders.h"
#include "plugins/recipe_list.h"
#include "settings/own_files.h"
#include "settings/settings.h"

namespace quellix::modPlugin {
namespace {

constexpr const char* kUsualName = "Winapp2.ini";
constexpr size_t kLongestSetting = 32768;

std::string PathOfList(const Machine& machine, const std::string& name) {
  const std::string path = name.find('%') == name.npos ? name : ExpandPluginPath(machine, name);
  return ParsePattern(path) ? path : FoundPath(machine, path);
}

}  // namespace

const ListedRecipe* RecipeLists::Find(std::string_view name) const {
  const auto found = by_name.find(UpCase(name));
  return found == by_name.end() ? nullptr : &recipes[found->second];
}

RecipeLists LoadRecipeLists(const Machine& machine, const Pause& pause) {
  RecipeLists lists;
  const std::string named = Settings(machine).ReadIniValue("Recipes", "File", "", kLongestSetting);
  std::vector<std::string> texts;
  for (const std::string& name : Split(named.empty() ? kUsualName : named, '|')) {
    if (TrimBlanks(name).empty() || pause()) continue;
    const std::string path = PathOfList(machine, std::string(TrimBlanks(name)));
    try {
      if (const auto bytes = machine.files.ReadWholeFile(path)) {
        texts.push_back(DecodeIni(*bytes, machine.system));
        lists.paths.push_back(path);
      } else if (!named.empty()) {
        lists.problems.push_back(Say("There is no list of recipes %1.", path));
      }
    } catch (const Error& error) {
      lists.problems.push_back({path + ": " + error.what(), path + ": " + Shown(error)});
    }
  }
  lists.recipes = ParseRecipeLists(texts, pause);
  for (const ListedRecipe& recipe : lists.recipes) {
    lists.by_name.emplace(UpCase(recipe.name), lists.by_name.size());
  }
  return lists;
}

}  // namespace quellix::modPlugin
