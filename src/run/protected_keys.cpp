#include "run/protected_keys.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/text.h"

namespace quellix::ProtectedKeys {
namespace {

// "*" stands for any one key.
constexpr const char* kWhole[] = {
    "MACHINE\\SYSTEM\\*\\Services",
    "MACHINE\\SYSTEM\\*\\Control",
    "MACHINE\\SAM",
    "MACHINE\\SECURITY",
    "MACHINE\\SOFTWARE\\Microsoft\\Windows NT",
    "MACHINE\\SOFTWARE\\Wow6432Node\\Microsoft\\Windows NT",
};

// Roots, by all the places where they show: they and the keys directly in them. What Windows itself
// starts from lies directly in SYSTEM.
constexpr const char* kRoots[] = {
    "",
    "MACHINE",
    "MACHINE\\SYSTEM",
    "MACHINE\\SYSTEM\\*\\Hardware Profiles\\*",
    "MACHINE\\SOFTWARE\\Classes",
    "MACHINE\\SOFTWARE\\Classes\\Wow6432Node",
    "MACHINE\\SOFTWARE\\Wow6432Node\\Classes",
    "USER",
    "USER\\*",
    "USER\\*\\Software\\Classes",
};

// Keys that stay as a whole, with those that they lie in; what is in them may go by its name.
constexpr const char* kBranches[] = {
    "MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion",
    "MACHINE\\SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion",
    "USER\\*\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders",
};

std::vector<std::string> PartsOf(std::string_view path) {
  std::vector<std::string> parts;
  for (std::string& part : Split(path, '\\')) {
    if (!part.empty()) parts.push_back(std::move(part));
  }
  return parts;
}

// Behind "\REGISTRY\".
std::vector<std::string> KeyOf(std::string_view true_name) {
  std::vector<std::string> key = PartsOf(true_name);
  if (!key.empty()) key.erase(key.begin());
  return key;
}

enum class Relation { kApart, kAbove, kAtOrBelow };

struct Place {
  Relation relation;
  size_t levels_below = 0;
};

Place PlaceTo(const std::vector<std::string>& key, const char* pattern) {
  const std::vector<std::string> parts = PartsOf(pattern);
  const auto differ = std::ranges::mismatch(
      key, parts, [](const auto& a, const auto& b) { return b == "*" || EqualsNoCase(a, b); });
  if (differ.in2 == parts.end()) return {Relation::kAtOrBelow, key.size() - parts.size()};
  return {differ.in1 == key.end() ? Relation::kAbove : Relation::kApart};
}

std::string_view TrueRoot(RegistryRoot root) {
  switch (root) {
    case RegistryRoot::kClassesRoot:
      return "\\REGISTRY\\MACHINE\\SOFTWARE\\Classes\\";
    case RegistryRoot::kCurrentUser:
      return "\\REGISTRY\\USER\\*\\";
    case RegistryRoot::kLocalMachine:
      return "\\REGISTRY\\MACHINE\\";
    case RegistryRoot::kUsers:
      break;
  }
  return "\\REGISTRY\\USER\\";
}

}  // namespace

bool KeepsName(std::string_view true_name, Part part) {
  const std::vector<std::string> key = KeyOf(true_name);
  const auto keeps = [&](const char* pattern, size_t levels_below) {
    const Place place = PlaceTo(key, pattern);
    if (place.relation == Relation::kAtOrBelow) return place.levels_below <= levels_below;
    return part == Part::kTree && place.relation == Relation::kAbove;
  };
  return std::ranges::any_of(kWhole, [&](const char* tree) { return keeps(tree, SIZE_MAX); }) ||
         std::ranges::any_of(kRoots, [&](const char* root) { return keeps(root, 1); }) ||
         (part == Part::kTree &&
          std::ranges::any_of(kBranches, [&](const char* branch) { return keeps(branch, 0); }));
}

bool Keeps(RegistryKey& key, Part part) { return KeepsName(key.TrueName(), part); }

bool KeepsPath(RegistryRoot root, std::string_view path, Part part) {
  return KeepsName(std::string(TrueRoot(root)).append(path), part);
}

bool IsInKeptTree(RegistryRoot root, std::string_view path) {
  const std::vector<std::string> key = KeyOf(std::string(TrueRoot(root)).append(path));
  return std::ranges::any_of(kWhole, [&key](const char* tree) {
    return PlaceTo(key, tree).relation == Relation::kAtOrBelow;
  });
}

}  // namespace quellix::ProtectedKeys
