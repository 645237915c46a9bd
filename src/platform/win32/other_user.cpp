#include "platform/win32/other_user.h"

#include <algorithm>

#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr const char* kOnlyOwn = "Windows does this only for the user who runs the program.";

// Set by Windows itself, for everybody alike; of the other variables of this program's environment
// nobody can tell whether they are its user's own.
constexpr std::string_view kForEverybody[] = {
    "SystemRoot",         "windir",       "SystemDrive",        "ProgramFiles",
    "ProgramFiles(x86)",  "ProgramW6432", "CommonProgramFiles", "CommonProgramFiles(x86)",
    "CommonProgramW6432", "ProgramData",  "ALLUSERSPROFILE",    "PUBLIC"};

bool IsForEverybody(std::string_view name) {
  return std::ranges::any_of(kForEverybody,
                             [name](std::string_view each) { return EqualsNoCase(each, name); });
}

// A folder or what is in it, by names alone.
bool IsBelow(std::string_view folder, std::string_view path) {
  if (path.find("..") != path.npos || path.find('/') != path.npos) return false;
  return EqualsNoCase(path.substr(0, folder.size()), folder) &&
         (path.size() == folder.size() || path[folder.size()] == '\\');
}

}  // namespace

OtherUserSystem::OtherUserSystem(System& inner, Registry& registry, const UserProfile& user)
    : ForwardingSystem(inner),
      profile_(user.profile),
      variables_(
          registry, user,
          [this](std::string_view name) {
            return IsForEverybody(name) ? inner_.Environment(name) : std::nullopt;
          },
          [this] { return inner_.Version().major >= 6; }) {}

std::optional<std::string> OtherUserSystem::Environment(std::string_view name) {
  std::optional<std::string> value = variables_.Value(name);
  if (!value || IsForEverybody(name)) return value;
  const bool is_path = value->find_first_of(":\\/") != value->npos;
  return !is_path || IsBelow(profile_, *value) || EqualsNoCase(name, "HOMEDRIVE") ||
                 EqualsNoCase(name, "HOMEPATH")
             ? value
             : std::nullopt;
}

std::string OtherUserSystem::TempFolder() {
  for (const char* name : {"TMP", "TEMP"}) {
    if (const auto folder = Environment(name)) return WithBackslash(*folder);
  }
  return Environment("LOCALAPPDATA").value_or(profile_) + "\\Temp\\";
}

std::unique_ptr<Folder> OtherUserFiles::OpenFolder(std::string_view path) {
  const std::string_view plain = WithoutBackslash(path);
  if (!IsBelow(profile_, plain) || plain.size() == profile_.size()) return inner_.OpenFolder(path);
  const std::unique_ptr<Folder> profile = inner_.OpenFolder(profile_);
  return profile ? profile->OpenFolder(plain.substr(profile_.size() + 1)) : nullptr;
}

OtherUserMachine::OtherUserMachine(const std::string& program_folder, const UserProfile& user)
    : own_(program_folder),
      hive_(own_.machine().files, user),
      files_(own_.machine().files, user.profile),
      registry_(hive_.root(), hive_.classes(), user.sid),
      system_(own_.machine().system, registry_, user),
      shell_(own_.machine().shell),
      url_cache_(kOnlyOwn),
      cleaners_(kOnlyOwn),
      profile_(files_, system_) {}

Machine OtherUserMachine::machine() {
  const Machine own = own_.machine();
  return {files_,  registry_,   shell_,    url_cache_,        profile_,
          system_, own.session, cleaners_, own.program_folder};
}

std::vector<UserProfile> UsersHere(const Machine& machine) {
  std::vector<UserProfile> users = ListedProfiles(machine.registry, machine.system.WindowsFolder());
  std::erase_if(users, [&machine](const UserProfile& user) {
    const auto folder = machine.files.Look(user.profile, Detail::kKind);
    return !folder || !folder->is_folder || folder->is_link;
  });
  return users;
}

}  // namespace quellix
