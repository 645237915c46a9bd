#include "plugins/recipe_keys.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "plugins/plugin_places.h"
#include "run/protected_keys.h"

namespace quellix::modPlugin {
namespace {

using ProtectedKeys::Part;

constexpr std::string_view kSoftware = "SOFTWARE";
constexpr std::ptrdiff_t kDeepest = 512;  // levels of keys that Windows allows
constexpr const char* kCurrentConfig = "SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current\\";

std::string WithoutEmptyParts(std::string_view subkey) {
  std::string result;
  for (const std::string& part : Split(subkey, '\\')) {
    if (!part.empty()) result += (result.empty() ? "" : "\\") + part;
  }
  return result;
}

// By what the key is, or by its name where it is not there or cannot be opened.
bool IsProtected(Registry& registry, RegistryRoot root, const std::string& subkey,
                 ProtectedKeys::Part part) {
  if (ProtectedKeys::KeepsPath(root, subkey, part)) return true;
  try {
    const auto key = registry.Open(root, subkey, RegistryAccess::kRead);
    return key && ProtectedKeys::Keeps(*key, part);
  } catch (const Error&) {
    return false;  // what cannot be opened cannot be deleted either, and that is told
  }
}

// Each key of a key would be that key by another name, and so would each key of those.
bool IsRefused(Registry& registry, const RegistryEntry& entry, const KeyPlace& place) {
  const Part part = entry.delete_subkey ? Part::kTree : Part::kValue;
  if (IsProtected(registry, *place.root, place.subkey, part)) return true;
  if (!entry.delete_subkey || place.subkey.ends_with("\\*")) return false;
  std::vector<std::string> written = Split(WithoutEmptyParts(entry.key), '\\');
  for (std::string above = place.subkey; written.back() == "*"; written.pop_back()) {
    above = WithoutBackslash(FolderPart(above));
    if (IsProtected(registry, *place.root, above, Part::kTree)) return true;
  }
  return false;
}

bool IsIn(std::string_view subkey, std::string_view branch) {
  return subkey.size() > branch.size() && subkey[branch.size()] == '\\' &&
         EqualsNoCase(subkey.substr(0, branch.size()), branch);
}

// Finds the keys that a path with "*" names stands for.
class KeySearch {
 public:
  KeySearch(Registry& registry, RegistryRoot root, const Pause& pause)
      : registry_(registry), root_(root), pause_(pause) {}

  void Find(const std::string& subkey, std::vector<KeyPlace>& places) {
    names_ = Split(subkey, '\\');
    places_ = &places;
    Descend("", 0, false);
  }

 private:
  void Descend(std::string path, size_t depth, bool behind_star) {
    for (; depth < names_.size() && names_[depth] != "*"; ++depth) {
      if (behind_star && IsLinkOrMissing(path, names_[depth])) return;
      Append(path, names_[depth]);
    }
    if (depth == names_.size()) return places_->push_back({root_, path, {}});
    for (const std::string& name : NamesFor(path)) {
      std::string below = path;
      Append(below, name);
      Descend(std::move(below), depth + 1, behind_star || name != "*");
    }
  }

  static void Append(std::string& path, const std::string& name) {
    path.append(path.empty() ? "" : "\\").append(name);
  }

  bool IsLinkOrMissing(const std::string& path, const std::string& name) {
    try {
      const auto key = registry_.Open(root_, path, RegistryAccess::kRead);
      return !key || key->IsLink(name) || !key->Open(name, RegistryAccess::kRead);
    } catch (const Error& error) {
      Refuse(path + "\\" + name, error);
      return true;
    }
  }

  // What "*" stands for in a key.
  std::vector<std::string> NamesFor(const std::string& path) {
    const bool is_classes_root =
        path.empty() ? root_ == RegistryRoot::kClassesRoot
                     : path.size() >= 7 && EqualsNoCase(path.substr(path.size() - 7), "Classes");
    if (is_classes_root) return {"*"};
    if (pause_()) return {};
    try {
      const auto key = registry_.Open(root_, path, RegistryAccess::kRead);
      if (!key) return {};
      if (key->Open("*", RegistryAccess::kRead)) return {"*"};
      std::vector<std::string> names = SubKeyNames(*key, pause_);
      std::erase_if(names, [&key](const std::string& name) { return key->IsLink(name); });
      return names;
    } catch (const Error& error) {
      Refuse(path, error);
      return {};
    }
  }

  void Refuse(const std::string& path, const Error& error) {
    const std::string key = std::string(RootName(root_)) + "\\" + path;
    places_->push_back({{}, "", Refusal(key, SentenceOf(error))});
  }

  Registry& registry_;
  RegistryRoot root_;
  const Pause& pause_;
  std::vector<std::string> names_;
  std::vector<KeyPlace>* places_ = nullptr;
};

}  // namespace

std::vector<KeyPlace> FindAnyKeys(Registry& registry, const RegistryEntry& entry,
                                  const Pause& pause) {
  const size_t end = std::min(entry.key.find('\\'), entry.key.size());
  const uint32_t handle = RootKeyFromName(std::string_view(entry.key).substr(0, end));
  if (handle == 0) return {{{}, "", Refusal(entry.key, Say("it begins with no known root key."))}};
  RegistryRoot root = RegistryRoot::kLocalMachine;
  std::string subkey = WithoutEmptyParts(std::string_view(entry.key).substr(end));
  if (std::ranges::count(subkey, '\\') >= kDeepest)
    return {{{}, "", Refusal(entry.key.substr(0, 80), Say("no key lies so deep."))}};
  if (handle <= RootKeyFromName("HKEY_USERS")) {
    root = static_cast<RegistryRoot>(handle - RootKeyFromName("HKEY_CLASSES_ROOT"));
  } else if (handle == RootKeyFromName("HKEY_CURRENT_CONFIG")) {
    subkey.insert(0, kCurrentConfig);
  } else {
    return {{{}, "", Refusal(entry.key, Say("nothing can be removed below that root key."))}};
  }
  std::vector<KeyPlace> places;
  KeySearch(registry, root, pause).Find(subkey, places);
  if (entry.both_views && root == RegistryRoot::kLocalMachine && IsIn(subkey, kSoftware)) {
    subkey.insert(kSoftware.size(), "\\Wow6432Node");
    KeySearch(registry, root, pause).Find(subkey, places);
  }
  return places;
}

std::vector<KeyPlace> FindKeys(Registry& registry, const RegistryEntry& entry, const Pause& pause) {
  std::vector<KeyPlace> places = FindAnyKeys(registry, entry, pause);
  const bool is_written_so = entry.key.find('*') == entry.key.npos && !entry.both_views;
  for (KeyPlace& place : places) {
    if (!place.root || !IsRefused(registry, entry, place)) continue;
    const std::string name = std::string(RootName(*place.root)) + "\\" + place.subkey;
    place.root.reset();
    place.refusal =
        Refusal(is_written_so ? entry.key : name,
                Say("it is, or holds, a root key, one of its main branches or what Windows "
                    "depends on."));
  }
  return places;
}

}  // namespace quellix::modPlugin
