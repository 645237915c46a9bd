#include "app/recipe_sections.h"

#include <algorithm>
#include <map>

#include "app/short_text.h"
#include "platform/text.h"
#include "platform/words.h"
#include "plugins/recipe_finder.h"
#include "plugins/recipe_rights.h"
#include "plugins/recipe_run.h"

namespace quellix {
namespace {

using modPlugin::ListedRecipe;
using modPlugin::Plugin;
using modPlugin::RecipeLists;

constexpr size_t kLongestLabel = 120, kLongestLine = 300;  // bytes
constexpr size_t kMostLines = 40;

// Paragraphs of a pane, none of them endless.
class Paragraphs {
 public:
  void Begin(std::string_view heading) {
    text_.append(text_.empty() ? "" : "\r\n\r\n").append(heading);
    lines_ = left_out_ = 0;
  }
  void Add(std::string_view line) {
    if (++lines_ <= kMostLines) {
      text_.append("\r\n").append(Shortened(line, kLongestLine));
    } else {
      ++left_out_;
    }
  }
  void End() {
    if (left_out_ > 0) text_ += "\r\n" + Tr("and %1 more", std::to_string(left_out_));
  }
  std::string Take() { return std::move(text_); }

 private:
  std::string text_;
  size_t lines_ = 0, left_out_ = 0;
};

std::string TextOf(const modPlugin::FileEntry& entry) {
  if (entry.remove_self)
    return Tr("%1, with all folders below and the folder itself", entry.location);
  return entry.recurse ? Tr("%1, in all folders below too", entry.location) : entry.location;
}

std::string TextOf(const modPlugin::RegistryEntry& entry) {
  if (entry.delete_subkey) return Tr("%1, with all below", entry.key);
  return Tr("%1, the value %2", entry.key, entry.value_name);
}

std::string DetailsOf(const ListedRecipe& recipe) {
  const Plugin& plugin = recipe.plugin;
  Paragraphs text;
  text.Begin(Tr("Removes:"));
  for (const auto& entry : plugin.files) text.Add(TextOf(entry));
  for (const auto& entry : plugin.registry) text.Add(TextOf(entry));
  text.End();
  if (!plugin.exclusions.empty()) {
    text.Begin(Tr("Leaves:"));
    for (const auto& exclusion : plugin.exclusions) text.Add(exclusion.place);
    text.End();
  }
  if (!recipe.warning.empty())
    text.Begin(Tr("Its author warns: %1", Shortened(recipe.warning, 1000)));
  if (!recipe.remarks.empty()) {
    text.Begin(Tr("In the list:"));
    for (const auto& remark : recipe.remarks) text.Add(remark.text);
    text.End();
  }
  return text.Take();
}

// What is found of the lists, or why nothing is.
std::string Told(const RecipeLists& lists, size_t found) {
  std::string told;
  for (const Sentence& problem : lists.problems) told += problem.shown + " ";
  const std::string count = std::to_string(lists.recipes.size());
  if (lists.paths.empty()) {
    if (!told.empty()) told.pop_back();
    return told;
  }
  if (lists.recipes.empty()) return told + Tr("There is no entry in %1.", lists.paths[0]);
  if (found == 0) return told + Tr("None of %1 in the list finds anything here.", count);
  // TRANSLATORS: %1 of the %2 entries of the list find something on this computer.
  return told + Tr("%1 of %2 in the list", std::to_string(found), count);
}

struct LessNoCase {
  bool operator()(const std::string& a, const std::string& b) const {
    return CompareNoCase(a, b) < 0;
  }
};

}  // namespace

ListSection::Row RowOf(const Machine& machine, const ListedRecipe& recipe) {
  const Plugin& plugin = recipe.plugin;
  return {.name = recipe.name,
          .rule = modPlugin::RuleOf(recipe.name),
          .label = Shortened(recipe.name, kLongestLabel),
          .cost = plugin.cost,
          .details = DetailsOf(recipe),
          .is_risky = plugin.loses_data,
          .goes_along = plugin.cost.empty(),
          .needs_administrator = modPlugin::NeedsAdministrator(plugin),
          .fingerprints = modPlugin::FingerprintsOf(machine, recipe)};
}

FoundRecipes FindRecipeSections(const Machine& machine, const Pause& pause) {
  bool is_stopped = false;
  const Pause noted = [&](const Progress& progress) { return is_stopped |= pause(progress); };
  const RecipeLists lists = modPlugin::LoadRecipeLists(machine, noted);
  const std::vector<bool> found = modPlugin::FindRecipes(machine, lists.recipes, noted);
  std::map<std::string, std::vector<ListSection::Row>, LessNoCase> groups;
  for (size_t i = 0; i < found.size() && !noted(); ++i) {
    const ListedRecipe& recipe = lists.recipes[i];
    if (found[i])
      groups[Shortened(recipe.plugin.group, kLongestLabel)].push_back(RowOf(machine, recipe));
  }
  if (is_stopped) return {{}, false};
  size_t count = 0;
  for (const auto& [group, rows] : groups) count += rows.size();
  const std::string told = Told(lists, count);
  FoundRecipes result;
  if (told.empty()) return result;
  result.sections.push_back(
      {.kind = ListSection::Kind::kRecipes, .title = Tr("Programs found here"), .told = told});
  for (auto& [group, rows] : groups) {
    std::ranges::stable_sort(rows, LessNoCase(), &ListSection::Row::name);
    result.sections.push_back(
        {.kind = ListSection::Kind::kRecipes, .title = Tr(group), .rows = std::move(rows)});
  }
  return result;
}

}  // namespace quellix
