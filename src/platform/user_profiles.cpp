#include "platform/user_profiles.h"

#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr std::string_view kProfileList =
    "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList";
constexpr std::string_view kMachineEnvironment =
    "SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment";
// Variables that name themselves, however far round or often, end here.
constexpr int kDeepest = 8, kMost = 256;

}  // namespace

// A ".bak" behind an identifier is what Windows leaves of a profile that it could not load.
bool IsPerson(std::string_view sid) {
  const bool known = sid.starts_with("S-1-5-21-") || sid.starts_with("S-1-12-1-");
  return known && sid.find('.') == std::string_view::npos;
}

std::optional<std::string> ReadText(Registry& registry, RegistryRoot root, std::string_view key,
                                    std::string_view name) {
  const auto open = registry.Open(root, key, RegistryAccess::kRead);
  const auto value = open ? open->QueryValue(name) : std::nullopt;
  if (!value || (value->type != kRegSz && value->type != kRegExpandSz)) return std::nullopt;
  return std::string(TrimNull(FromUtf16Bytes(value->bytes)));
}

std::vector<UserProfile> ListedProfiles(Registry& registry, const std::string& windows_folder,
                                        Persons persons) {
  std::vector<UserProfile> users;
  const auto key = registry.Open(RegistryRoot::kLocalMachine, kProfileList, RegistryAccess::kRead);
  for (uint32_t i = 0; key; ++i) {
    const auto sid = key->SubKeyAt(i);
    if (!sid) break;
    if (IsPerson(*sid) != (persons == Persons::kYes)) continue;
    auto path = ReadText(registry, RegistryRoot::kLocalMachine,
                         std::string(kProfileList) + "\\" + *sid, "ProfileImagePath");
    if (!path) continue;
    *path = ReplaceNoCase(*path, "%SystemDrive%", windows_folder.substr(0, 2));
    *path = ReplaceNoCase(*path, "%SystemRoot%", windows_folder);
    std::string profile(WithoutBackslash(*path));
    std::string name(NamePart(profile));
    users.push_back({std::move(name), *sid, std::move(profile)});
  }
  return users;
}

std::string UserVariables::LocalFolder(std::string_view now, std::string_view before_vista) const {
  return user_.profile + std::string(is_new_() ? now : before_vista);
}

std::string UserVariables::TempFolder() const {
  for (const char* name : {"TMP", "TEMP"}) {
    const auto folder = Value(name);
    if (folder && !folder->empty()) return WithBackslash(*folder);
  }
  return WithBackslash(LocalFolder("\\AppData\\Local\\Temp", "\\Local Settings\\Temp"));
}

std::optional<std::string> UserVariables::Value(std::string_view name) const {
  Expansion expansion;
  return Variable(name, expansion);
}

std::optional<std::string> UserVariables::Variable(std::string_view name,
                                                   Expansion& expansion) const {
  const auto value = RawVariable(name);
  if (!value) return std::nullopt;
  ++expansion.depth;
  ++expansion.count;
  std::string expanded = Expand(*value, expansion);
  --expansion.depth;
  return expanded;
}

// A user's own variable comes before the machine's, but those Windows sets itself cannot be
// replaced.
std::optional<std::string> UserVariables::RawVariable(std::string_view name) const {
  if (auto value = of_windows_(name)) return value;
  if (auto value = OfUser(name)) return value;
  if (auto value = ReadText(registry_, RegistryRoot::kCurrentUser, "Environment", name)) {
    return value;
  }
  if (auto value = ReadText(registry_, RegistryRoot::kLocalMachine, kMachineEnvironment, name)) {
    return value;
  }
  if (EqualsNoCase(name, "TEMP") || EqualsNoCase(name, "TMP")) {
    return LocalFolder("\\AppData\\Local\\Temp", "\\Local Settings\\Temp");
  }
  return std::nullopt;
}

std::optional<std::string> UserVariables::OfUser(std::string_view name) const {
  const auto is = [name](std::string_view other) { return EqualsNoCase(name, other); };
  if (is("USERPROFILE")) return user_.profile;
  if (is("HOMEDRIVE")) return user_.profile.substr(0, 2);
  if (is("HOMEPATH")) return user_.profile.substr(2);
  if (is("USERNAME")) return user_.name;
  if (is("APPDATA")) return LocalFolder("\\AppData\\Roaming", "\\Application Data");
  if (is("LOCALAPPDATA")) {
    return LocalFolder("\\AppData\\Local", "\\Local Settings\\Application Data");
  }
  return std::nullopt;
}

std::string UserVariables::Expand(std::string_view text, Expansion& expansion) const {
  std::string result;
  for (;;) {
    const size_t start = text.find('%');
    const size_t end = start == text.npos ? text.npos : text.find('%', start + 1);
    if (end == text.npos || expansion.depth >= kDeepest || expansion.count >= kMost) {
      return result + std::string(text);
    }
    result += text.substr(0, start);
    const auto value = Variable(text.substr(start + 1, end - start - 1), expansion);
    // What is no variable stays, and its second sign may begin one.
    result += value ? *value : std::string(text.substr(start, end - start));
    text.remove_prefix(value ? end + 1 : end);
  }
}

}  // namespace quellix
