#include "plugins/recipe_finder.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/forwarding_file_system.h"
#include "platform/forwarding_system.h"
#include "platform/text.h"
#include "plugins/recipe_detection.h"

namespace quellix::modPlugin {
namespace {

// Files as they are when they are first looked at. What a path names is told by the listings of the
// folders on its way; where one of them is a link or cannot be listed, the path itself is asked.
class ListedFiles : public ForwardingFileSystem {
 public:
  using ForwardingFileSystem::ForwardingFileSystem;

  std::optional<FileInfo> Look(std::string_view path, Detail detail) override {
    const bool may_know = detail == Detail::kKind && path.size() > 3 && path[1] == ':' &&
                          path.find('~') == path.npos && path.back() != '\\';
    if (!may_know) return inner_.Look(path, detail);
    for (size_t start = 3;;) {
      const size_t end = std::min(path.find('\\', start), path.size());
      const Listing& listing = ListingOf(path.substr(0, start));
      if (!listing) return inner_.Look(path, detail);
      const auto entry = listing->find(UpCase(path.substr(start, end - start)));
      if (entry == listing->end()) return std::nullopt;
      if (end == path.size()) return entry->second;
      if (entry->second.is_link) return inner_.Look(path, detail);
      if (!entry->second.is_folder) return std::nullopt;
      start = end + 1;
    }
  }

 private:
  using Listing = std::optional<std::unordered_map<std::string, FileInfo>>;  // in upper case

  const Listing& ListingOf(std::string_view folder) {
    const auto [place, is_new] = listings_.try_emplace(UpCase(folder));
    Listing& listing = place->second;
    if (!is_new) return listing;
    listing.emplace();
    const bool is_listed = inner_.Enumerate(folder, Detail::kKind, [&listing](const Entry& entry) {
      listing->try_emplace(UpCase(entry.name), entry.info);
      return true;
    });
    if (!is_listed) listing.reset();
    return listing;
  }

  std::unordered_map<std::string, Listing> listings_;  // by path in upper case
};

// A system whose variables are asked for once.
class RememberedSystem : public ForwardingSystem {
 public:
  using ForwardingSystem::ForwardingSystem;

  std::string WindowsFolder() override { return windows_; }
  std::string SystemFolder() override { return system_; }
  WindowsVersion Version() override { return version_; }
  std::optional<std::string> Environment(std::string_view name) override {
    const auto [place, is_new] = variables_.try_emplace(UpCase(name));
    if (is_new) place->second = inner_.Environment(name);
    return place->second;
  }

 private:
  const std::string windows_ = inner_.WindowsFolder(), system_ = inner_.SystemFolder();
  const WindowsVersion version_ = inner_.Version();
  std::unordered_map<std::string, std::optional<std::string>> variables_;  // in upper case
};

}  // namespace

std::vector<bool> FindRecipes(const Machine& machine, const std::vector<ListedRecipe>& recipes,
                              const Pause& pause) {
  ListedFiles files(machine.files);
  RememberedSystem system(machine.system);
  const Machine seen{
      files,  machine.registry, machine.shell,    machine.url_cache,      machine.profile,
      system, machine.session,  machine.cleaners, machine.program_folder, machine.installed_folder};
  std::vector<bool> found;
  for (const ListedRecipe& recipe : recipes) {
    if (pause()) break;
    found.push_back(IsFound(seen, recipe.plugin));
  }
  found.resize(recipes.size());
  return found;
}

}  // namespace quellix::modPlugin
