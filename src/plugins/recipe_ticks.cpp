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

RecipeTicks::Rows RecipeTicks::Read(const Machine& machine) {
  Rows rows;
  for (const std::string& line : ReadListFile(machine, kFile)) {
    const ListRow read = ParseListRow(line);
    if (read.text.empty()) continue;
    Row& row = rows.try_emplace(UpCase(read.text), Row{read.text}).first->second;
    row.ticked = row.ticked || read.ticked;
    row.seen = read.description;
  }
  return rows;
}

void RecipeTicks::Load(const Machine& machine) {
  rows_.clear();
  stored_.clear();
  rows_ = stored_ = Read(machine);
}

void RecipeTicks::Save(const Machine& machine) {
  if (rows_ == stored_) return;
  Rows rows = Read(machine);
  for (const auto& [key, row] : rows_) {
    const auto before = stored_.find(key);
    const Row old = before == stored_.end() ? Row{row.name} : before->second;
    if (row == old) continue;
    Row& now = rows.try_emplace(key, Row{row.name}).first->second;
    if (row.ticked != old.ticked) now.ticked = row.ticked;
    if (row.seen != old.seen) now.seen = row.seen;
  }
  std::vector<std::string> lines;
  for (const auto& [key, row] : rows) {
    if (row.ticked || !row.seen.empty())
      lines.push_back(FormatListRow({row.ticked, row.name, row.seen}));
  }
  WriteListFile(machine, kFile, lines);
  rows_ = stored_ = std::move(rows);
}

bool RecipeTicks::IsTicked(std::string_view name) const {
  const auto row = rows_.find(UpCase(name));
  return row != rows_.end() && row->second.ticked;
}

void RecipeTicks::SetTicked(std::string_view name, bool ticked) { RowOf(name).ticked = ticked; }

void RecipeTicks::Clear() {
  for (auto& [key, row] : rows_) row.ticked = false;
}

std::vector<std::string> RecipeTicks::Ticked() const {
  std::vector<std::string> names;
  for (const RecipeChoice& choice : Choices()) names.push_back(choice.name);
  return names;
}

std::vector<RecipeChoice> RecipeTicks::Choices() const {
  std::vector<RecipeChoice> choices;
  for (const auto& [key, row] : rows_) {
    if (row.ticked) choices.push_back({row.name, row.seen});
  }
  return choices;
}

RecipeChoice RecipeTicks::ChoiceOf(std::string_view name) const {
  const auto row = rows_.find(UpCase(name));
  return {std::string(name), row == rows_.end() ? "" : row->second.seen};
}

void RecipeTicks::SetSeen(std::string_view name, std::string fingerprint) {
  Row& row = RowOf(name);
  row.name = name;
  row.seen = std::move(fingerprint);
}

}  // namespace quellix::modPlugin
