#pragma once

#include "platform/absent_ports.h"
#include "platform/forwarding_system.h"
#include "platform/user_profiles.h"
#include "platform/win32/other_user_files.h"
#include "platform/win32/win32_hive.h"
#include "platform/win32/win32_machine.h"

namespace quellix {

// What the running Windows tells, with the folders and variables of another user. He may set his
// variables as he likes, and must have nothing removed that he could not remove himself; so one
// that leads out of his profile is none.
class OtherUserSystem : public ForwardingSystem {
 public:
  OtherUserSystem(System& inner, Registry& registry, const UserProfile& user);

  std::string TempFolder() override;
  std::optional<std::string> Environment(std::string_view name) override;
  // In his session or any other.
  bool IsProgramRunning(std::string_view name) override;

 private:
  const std::string profile_;
  UserVariables variables_;
};

// The shell of one user does nothing for another.
class OtherUserShell : public Shell {
 public:
  explicit OtherUserShell(Shell& inner) : inner_(inner) {}

  RecycleBinContent QueryRecycleBin() override { Refuse(); }
  void EmptyRecycleBin() override { Refuse(); }
  std::vector<std::string> RecycleBins() override { return {}; }
  void ClearAddressHistory() override { Refuse(); }
  void EmptyClipboard() override { Refuse(); }
  // What is recycled goes to the bin of who runs this.
  void Require(ShellFeature feature) override {
    if (feature != ShellFeature::kRecycleBin) Refuse();
  }
  void ShowProperties(std::string_view path) override { inner_.ShowProperties(path); }
  void OpenFolderOf(std::string_view path) override { inner_.OpenFolderOf(path); }
  bool StartProgram(std::string_view, std::string_view) override { Refuse(); }
  // Windows finds their targets by the folders and rights of who asks.
  std::unique_ptr<ShortcutReader> OpenShortcuts() override { Refuse(); }

 private:
  [[noreturn]] static void Refuse() {
    throw NotAvailable(Say("Windows does this only for the user who runs the program."));
  }

  Shell& inner_;
};

// The session of who runs this, whose programs are not the other user's: none is asked to close.
class OtherUserSession : public Session {
 public:
  explicit OtherUserSession(Session& inner) : inner_(inner) {}

  bool ClaimInstance(std::string_view name) override { return inner_.ClaimInstance(name); }
  void EnablePrivilege(std::string_view name) override { inner_.EnablePrivilege(name); }
  bool HasAdministratorRights() override { return inner_.HasAdministratorRights(); }
  std::string UserId() override { return inner_.UserId(); }
  std::vector<std::string> ProgramsUsing(const std::string& path) override {
    return inner_.ProgramsUsing(path);
  }
  bool RunsPrograms() override { return inner_.RunsPrograms(); }
  std::unique_ptr<ClosingPrograms> AskToClose(const ProgramUse&) override { return nullptr; }
  void Exit(uint32_t flags, uint32_t reason) override { inner_.Exit(flags, reason); }

 private:
  Session& inner_;
};

// The Windows that the program runs on, as it is for another of its users.
class OtherUserMachine {
 public:
  // `backup_folder`: where the settings have files backed up. `breathe` is called while his
  // registry is being loaded. Throws Error: see UserHive.
  OtherUserMachine(const std::string& program_folder, const UserProfile& user,
                   const std::string& backup_folder = "",
                   const std::function<void()>& breathe = {});

  Machine machine();
  // See UserHive; the machine is of no use behind it.
  bool Unload(const std::function<void()>& breathe = {}) { return hive_.Unload(breathe); }

 private:
  Win32Machine own_;
  OtherUserFiles files_;
  UserHive hive_;
  Win32Registry registry_;
  OtherUserSystem system_;
  OtherUserShell shell_;
  OtherUserSession session_;
  AbsentUrlCache url_cache_;
  AbsentSystemCleaners cleaners_;
  IniFiles profile_;
};

// The users of this Windows whose profile folders are there, whoever runs the program among them.
// Throws Error.
std::vector<UserProfile> UsersHere(const Machine& machine);

}  // namespace quellix
