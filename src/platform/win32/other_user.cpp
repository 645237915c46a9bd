#include "platform/win32/other_user.h"

#include <algorithm>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/win32/win32_programs.h"

namespace quellix {
namespace {

constexpr const char* kOnlyOwn = Mark("Windows does this only for the user who runs the program.");

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
  return !is_path || IsAtOrBelow(profile_, *value) || EqualsNoCase(name, "HOMEDRIVE") ||
                 EqualsNoCase(name, "HOMEPATH")
             ? value
             : std::nullopt;
}

std::string OtherUserSystem::TempFolder() {
  for (const char* name : {"TMP", "TEMP"}) {
    const auto folder = Environment(name);
    if (folder && IsAtOrBelow(profile_, *folder)) return WithBackslash(*folder);
  }
  return Environment("LOCALAPPDATA").value_or(profile_) + "\\Temp\\";
}

bool OtherUserSystem::IsProgramRunning(std::string_view name) {
  return !ProcessesNamed(name, Sessions::kAll).empty();
}

OtherUserMachine::OtherUserMachine(const std::string& program_folder, const UserProfile& user,
                                   const std::string& backup_folder,
                                   const std::function<void()>& breathe)
    : own_(program_folder),
      files_(own_.machine().files, user, {own_.machine().program_folder, backup_folder}),
      hive_(files_, user, breathe),
      registry_(hive_.root(), hive_.classes(), user.sid),
      system_(own_.machine().system, registry_, user),
      shell_(own_.machine().shell),
      session_(own_.machine().session),
      url_cache_(kOnlyOwn),
      cleaners_(kOnlyOwn),
      profile_(files_, system_) {}

Machine OtherUserMachine::machine() {
  const Machine own = own_.machine();
  return {files_,  registry_, shell_,    url_cache_,         profile_,
          system_, session_,  cleaners_, own.program_folder, own.installed_folder};
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
