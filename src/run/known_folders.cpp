#include "run/known_folders.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr const char* kUserFolders =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";

constexpr struct {
  std::string_view name;
  const char* value;  // of kUserFolders
  const char* usual;  // below the profile
} kFolders[] = {
    {"Desktop", "Desktop", "\\Desktop"},
    {"Documents", "Personal", "\\Documents"},
    {"Downloads", "{374DE290-123F-4565-9164-39C4925E467B}", "\\Downloads"},
    {"Favorites", "Favorites", "\\Favorites"},
    {"Music", "My Music", "\\Music"},
    {"Pictures", "My Pictures", "\\Pictures"},
    {"Videos", "My Video", "\\Videos"},
    {"LocalLowAppData", "{A520A1A4-1780-4FF6-BD18-167343C5AF16}", "\\AppData\\LocalLow"},
};

std::string MovedTo(const Machine& machine, const char* value) {
  try {
    const auto key =
        machine.registry.Open(RegistryRoot::kCurrentUser, kUserFolders, RegistryAccess::kRead);
    return key ? ReadFolderValue(machine, *key, value) : "";
  } catch (const Error&) {  // a registry that cannot be read tells of no move
    return {};
  }
}

}  // namespace

std::string ReadFolderValue(const Machine& machine, RegistryKey& key, std::string_view name) {
  const auto value = key.QueryValue(name);
  if (!value || (value->type != kRegSz && value->type != kRegExpandSz)) return {};
  const std::string text = FromUtf16Bytes(value->bytes);
  return ExpandEnvironment(machine.system, TrimNull(text));
}

std::optional<std::string> KnownFolder(const Machine& machine, std::string_view name) {
  const auto known = std::ranges::find_if(
      kFolders, [name](const auto& folder) { return EqualsNoCase(folder.name, name); });
  if (known == std::end(kFolders)) return std::nullopt;
  if (std::string moved = MovedTo(machine, known->value); !moved.empty()) return moved;
  const auto profile = machine.system.Environment("USERPROFILE");
  return profile ? std::optional(*profile + known->usual) : std::nullopt;
}

}  // namespace quellix
