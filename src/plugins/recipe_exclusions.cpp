#include "plugins/recipe_exclusions.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "plugins/plugin_places.h"
#include "plugins/recipe_folders.h"
#include "plugins/recipe_keys.h"

namespace quellix::modPlugin {
namespace {

using Kind = RegistryTarget::Kind;

bool FitsAll(std::string_view mask) { return mask == "*.*" || mask == "*"; }

std::string TrueNameOf(RegistryKey& key) { return UpCase(key.TrueName()) + "\\"; }

// The names of folders below one, as a walk comes by them: `ids` from the innermost on. Throws
// Error where they are not there.
std::string NamesOf(Folder& folder, const std::vector<FileId>& ids) {
  std::string names;
  std::unique_ptr<Folder> held;
  for (auto id = ids.rbegin(); id != ids.rend(); ++id) {
    Folder& at = held ? *held : folder;
    std::string name;
    at.Enumerate(Detail::kKind, [&](const Entry& entry) {
      const bool may_be = entry.info.is_folder && !entry.info.is_link;
      if (may_be && at.IdOf(entry.name) == *id) name = entry.name;
      return name.empty();
    });
    auto next = name.empty() ? nullptr : at.OpenFolder(name);
    if (!next) throw Error(Error::Kind::kOther, Say("What is to be left cannot be found there."));
    names += name + "\\";
    held = std::move(next);
  }
  return names;
}

}  // namespace

void WalkExclusions::Add(std::string folder, bool below, std::string mask) {
  rows_.push_back({UpCase(WithBackslash(folder)), below, std::move(mask)});
}

bool WalkExclusions::Fits(const Row& row, std::string_view upper) const {
  return row.below ? upper.starts_with(row.folder) : upper == row.folder;
}

bool WalkExclusions::LeavesFile(std::string_view folder, std::string_view name) const {
  if (rows_.empty()) return false;
  const std::string upper = UpCase(folder);
  return std::ranges::any_of(
      rows_, [&](const Row& row) { return Fits(row, upper) && MatchesMask(name, row.mask); });
}

bool WalkExclusions::LeavesFolder(std::string_view folder) const {
  if (rows_.empty()) return false;
  const std::string upper = UpCase(folder);
  return std::ranges::any_of(
      rows_, [&](const Row& row) { return row.below && FitsAll(row.mask) && Fits(row, upper); });
}

Exclusions::Exclusions(const Machine& machine, const std::vector<Exclusion>& exclusions,
                       const Pause& pause) {
  for (const Exclusion& exclusion : exclusions) {
    if (exclusion.kind == Exclusion::Kind::kKey) {
      AddKeys(machine, exclusion, pause);
    } else {
      AddFiles(machine, exclusion, pause);
    }
  }
}

void Exclusions::AddFiles(const Machine& machine, const Exclusion& exclusion, const Pause& pause) {
  const std::string mask(NamePart(exclusion.place));
  const auto sides = ExpandFolder(machine, FolderPart(exclusion.place), true);
  const auto refuse = [&](const char* why) { refusals_.push_back(Say(why, exclusion.place)); };
  if (sides.empty())
    return refuse(Mark("The exclusion of %1 has a variable without a value on this machine."));
  const bool is_cut_off = mask.ends_with('.') && !HasNameWildcards(mask);
  if (mask.empty() || is_cut_off || !MayBeFileName(mask))
    return refuse(Mark("The exclusion of %1 names nothing that a file can be called."));
  for (const std::string& side : sides) {
    const std::optional<PathPattern> pattern = ParsePattern(side);
    if (!pattern)
      return refuse(Mark("The exclusion of %1 does not begin with the full path of a folder."));
    for (const std::string& folder : FindMatches(machine.files, *pattern, pause)) {
      const bool below = exclusion.kind == Exclusion::Kind::kPath;
      AddFolder(machine, folder, below, mask);
      // A folder named by itself is meant with all that is in it.
      const std::string named = folder + "\\" + mask;
      const auto info = HasNameWildcards(mask) ? std::nullopt : machine.files.Look(named);
      if (below && info && info->is_folder) AddFolder(machine, named, below, "*.*");
    }
  }
}

void Exclusions::AddFolder(const Machine& machine, const std::string& path, bool below,
                           const std::string& mask) {
  try {
    const auto folder = machine.files.OpenFolder(path.size() == 2 ? path + "\\" : path);
    if (folder) {
      places_.push_back({folder->Id(), folder->Above(), below, mask});
    }
  } catch (const Error& error) {
    refusals_.push_back(
        Say("The exclusion of %1 cannot be looked up: %2", path, SentenceOf(error)));
  }
}

void Exclusions::AddKeys(const Machine& machine, const Exclusion& exclusion, const Pause& pause) {
  const RegistryEntry entry{
      .delete_subkey = true, .key = exclusion.place, .value_name = "", .both_views = true};
  for (const KeyPlace& place : FindAnyKeys(machine.registry, entry, pause)) {
    try {
      if (!place.root) {
        refusals_.push_back(place.refusal);
        continue;
      }
      for (const KeyHome& home : KeyHomes(*place.root, place.subkey)) {
        const auto key = machine.registry.Open(home.root, home.key, RegistryAccess::kRead);
        if (key) keys_.push_back(TrueNameOf(*key));
      }
    } catch (const Error& error) {
      refusals_.push_back(
          Say("The exclusion of %1 cannot be looked up: %2", exclusion.place, SentenceOf(error)));
    }
  }
}

// An excluded folder is the walk's own, lies above it, or so many levels below it.
WalkExclusions Exclusions::In(Folder& folder, std::string_view path) const {
  WalkExclusions here;
  if (places_.empty()) return here;
  const FileId id = folder.Id();
  const std::vector<FileId> above = folder.Above();
  for (const Place& place : places_) {
    const auto level = std::ranges::find(place.above, id);
    if (place.id == id || (place.below && std::ranges::find(above, place.id) != above.end())) {
      here.Add(std::string(path), place.below, place.mask);
    } else if (level != place.above.end()) {
      std::vector<FileId> ids = {place.id};
      ids.insert(ids.end(), place.above.begin(), level);
      here.Add(WithBackslash(path) + NamesOf(folder, ids), place.below, place.mask);
    }
  }
  return here;
}

std::vector<RegistryTarget> Exclusions::Without(Registry& registry,
                                                const RegistryTarget& target) const {
  if (keys_.empty()) return {target};
  std::vector<RegistryTarget> targets;
  for (const KeyHome& home : KeyHomes(target.root, target.key)) {
    const RegistryTarget here{target.kind, home.root, home.key, target.name};
    const std::string above(WithoutBackslash(FolderPart(home.key)));
    const auto holder = registry.Open(home.root, above, RegistryAccess::kRead);
    const bool is_link = holder && holder->IsLink(NamePart(home.key));
    if (target.kind == Kind::kTree && is_link) {
      targets.push_back(here);  // which then is refused
    } else if (const auto key = registry.Open(home.root, home.key, RegistryAccess::kRead)) {
      Divide(*key, here, targets);
    }
  }
  return targets;
}

void Exclusions::Divide(RegistryKey& key, const RegistryTarget& target,
                        std::vector<RegistryTarget>& targets) const {
  const std::string name = TrueNameOf(key);
  const auto holds = [](const std::string& text, const std::string& start) {
    return text.starts_with(start);
  };
  if (std::ranges::any_of(keys_, [&](const std::string& left) { return holds(name, left); }))
    return;
  const bool is_whole =
      target.kind == Kind::kValue ||
      std::ranges::none_of(keys_, [&](const std::string& left) { return holds(left, name); });
  if (is_whole) return targets.push_back(target);
  for (uint32_t i = 0; const auto value = key.ValueAt(i); ++i) {
    targets.push_back({Kind::kValue, target.root, target.key, value->name});
  }
  for (const std::string& below : SubKeyNames(key)) {
    const auto opened = key.IsLink(below) ? nullptr : key.Open(below, RegistryAccess::kRead);
    if (opened) Divide(*opened, {Kind::kTree, target.root, target.key + "\\" + below}, targets);
  }
}

}  // namespace quellix::modPlugin
