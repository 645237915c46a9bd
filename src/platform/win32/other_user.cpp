#include "platform/win32/other_user.h"

#include <algorithm>

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

}  // namespace

OtherUserSystem::OtherUserSystem(System& inner, Registry& registry, const UserProfile& user)
    : ForwardingSystem(inner),
      variables_(
          registry, user,
          [this](std::string_view name) {
            return IsForEverybody(name) ? inner_.Environment(name) : std::nullopt;
          },
          [this] { return inner_.Version().major >= 6; }) {}

OtherUserMachine::OtherUserMachine(const std::string& program_folder, const UserProfile& user)
    : own_(program_folder),
      hive_(own_.machine().files, user),
      registry_(hive_.root(), hive_.classes(), user.sid),
      system_(own_.machine().system, registry_, user),
      shell_(own_.machine().shell),
      url_cache_(kOnlyOwn),
      cleaners_(kOnlyOwn),
      profile_(own_.machine().files, system_) {}

Machine OtherUserMachine::machine() {
  const Machine own = own_.machine();
  return {own.files, registry_,   shell_,    url_cache_,        profile_,
          system_,   own.session, cleaners_, own.program_folder};
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
