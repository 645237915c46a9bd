#include "plugins/recipe_detection.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "platform/error.h"
#include "plugins/recipe_folders.h"
#include "plugins/recipe_keys.h"

namespace quellix::modPlugin {
namespace {

using Number = std::pair<int, int>;  // major, minor

std::optional<Number> ParseVersion(const std::string& text) {
  Number number;
  const char* end = text.data() + text.size();
  const auto major = std::from_chars(text.data(), end, number.first);
  if (major.ec != std::errc() || major.ptr == end || *major.ptr != '.') return std::nullopt;
  const auto minor = std::from_chars(major.ptr + 1, end, number.second);
  const bool is_good = minor.ec == std::errc() && minor.ptr == end;
  return is_good && number.first >= 0 && number.second >= 0 ? std::optional(number) : std::nullopt;
}

bool IsOfVersion(const Machine& machine, const Detection& detection) {
  const WindowsVersion version = machine.system.Version();
  const Number here{version.major, version.minor};
  if (!FaultOf(machine, detection).empty()) return false;
  return (detection.place.empty() || *ParseVersion(detection.place) <= here) &&
         (detection.last.empty() || here <= *ParseVersion(detection.last));
}

bool IsThere(const Machine& machine, const std::string& path) {
  for (const std::string& side : ExpandFolder(machine, path, true)) {
    const auto pattern = ParsePattern(side);
    if (pattern && HasMatch(machine.files, *pattern)) return true;
  }
  return false;
}

std::vector<KeyPlace> KeysOf(const Machine& machine, const Detection& detection) {
  return FindAnyKeys(machine.registry, {.delete_subkey = detection.last.empty(),
                                        .key = detection.place,
                                        .value_name = detection.last,
                                        .both_views = true});
}

bool HasKey(const Machine& machine, const Detection& detection) {
  return std::ranges::any_of(KeysOf(machine, detection), [&](const KeyPlace& place) {
    if (!place.root) return false;
    try {
      const auto key = machine.registry.Open(*place.root, place.subkey, RegistryAccess::kRead);
      return key && (detection.last.empty() || key->QueryValue(detection.last));
    } catch (const Error&) {
      return true;
    }
  });
}

}  // namespace

bool Holds(const Machine& machine, const Detection& detection) {
  switch (detection.kind) {
    case Detection::Kind::kFile:
      return IsThere(machine, detection.place);
    case Detection::Kind::kKey:
      return HasKey(machine, detection);
    case Detection::Kind::kVersion:
      return IsOfVersion(machine, detection);
  }
  return false;
}

std::string FaultOf(const Machine& machine, const Detection& detection) {
  if (detection.kind == Detection::Kind::kVersion) {
    const auto first = ParseVersion(detection.place), last = ParseVersion(detection.last);
    const bool is_bad = (!detection.place.empty() && !first) || (!detection.last.empty() && !last);
    if (is_bad) return Tr("A version of Windows is two numbers with a dot between them.");
    return first && last && *last < *first ? Tr("No Windows is of such a version.") : "";
  }
  if (detection.kind == Detection::Kind::kKey) {
    const std::vector<KeyPlace> places = KeysOf(machine, detection);
    return places.empty() || places.front().root ? "" : places.front().refusal.shown;
  }
  const std::vector<std::string> sides = ExpandFolder(machine, detection.place, true);
  if (sides.empty())
    return Tr("%1: a variable in it has no value on this machine.", detection.place);
  return ParsePattern(sides.front()) ? "" : Tr("%1 is no full path.", detection.place);
}

bool IsFound(const Machine& machine, const Plugin& plugin) {
  bool asks_version = false, is_version = false, asks_place = false, is_there = false;
  for (const Detection& detection : plugin.detections) {
    const bool is_of_version = detection.kind == Detection::Kind::kVersion;
    bool& asks = is_of_version ? asks_version : asks_place;
    bool& holds = is_of_version ? is_version : is_there;
    asks = true;
    holds = holds || Holds(machine, detection);
  }
  return (!asks_version || is_version) && (!asks_place || is_there);
}

}  // namespace quellix::modPlugin
