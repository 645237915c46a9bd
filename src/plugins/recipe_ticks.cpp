#include "plugins/recipe_ticks.h"

#include "platform/text.h"
#include "settings/list_files.h"

namespace quellix::modPlugin {
namespace {

constexpr std::string_view kFile = "recipes.txt";

}  // namespace

RecipeTicks::Row& RecipeTicks::RowOf(std::string_view name) {
  return rows_.try_emplace(UpCase(name), Row{std::string(name)}).first->second;
}

void RecipeTicks::Load(const Machine& machine) {
  rows_.clear();
  for (const std::string& line : ReadListFile(machine, kFile)) {
    const ListRow read = ParseListRow(line);
    if (read.text.empty()) continue;
    Row& row = RowOf(read.text);
    row.ticked = row.ticked || read.ticked;
    row.seen = read.description;
  }
  stored_ = rows_;
}

void RecipeTicks::Save(const Machine& machine) {
  if (rows_ == stored_) return;
  std::vector<std::string> lines;
  for (const auto& [key, row] : rows_) {
    if (row.ticked || !row.seen.empty())
      lines.push_back(FormatListRow({row.ticked, row.name, row.seen}));
  }
  WriteListFile(machine, kFile, lines);
  stored_ = rows_;
}

bool RecipeTicks::IsTicked(std::string_view name) const {
  const auto row = rows_.find(UpCase(name));
  return row != rows_.end() && row->second.ticked;
}

void RecipeTicks::SetTicked(std::string_view name, bool ticked) { RowOf(name).ticked = ticked; }

std::vector<std::string> RecipeTicks::Ticked() const {
  std::vector<std::string> names;
  for (const auto& [key, row] : rows_) {
    if (row.ticked) names.push_back(row.name);
  }
  return names;
}

bool RecipeTicks::IsSeen(const ListedRecipe& recipe) const {
  const auto row = rows_.find(UpCase(recipe.name));
  return row != rows_.end() && row->second.seen == FingerprintOf(recipe);
}

void RecipeTicks::SetSeen(std::string_view name, std::string fingerprint) {
  Row& row = RowOf(name);
  row.name = name;
  row.seen = std::move(fingerprint);
}

}  // namespace quellix::modPlugin
