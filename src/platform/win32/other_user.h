#pragma once

#include "platform/absent_ports.h"
#include "platform/forwarding_file_system.h"
#include "platform/forwarding_system.h"
#include "platform/user_profiles.h"
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

 private:
  const std::string profile_;
  UserVariables variables_;
};

// The files, where links in his profile lead nowhere, for the same reason.
class OtherUserFiles : public ForwardingFileSystem {
 public:
  OtherUserFiles(FileSystem& inner, std::string profile)
      : ForwardingFileSystem(inner), profile_(std::move(profile)) {}

  std::unique_ptr<Folder> OpenFolder(std::string_view path) override;

 private:
  const std::string profile_;
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
  std::unique_ptr<ShortcutReader> OpenShortcuts() override { return inner_.OpenShortcuts(); }

 private:
  [[noreturn]] static void Refuse() {
    throw NotAvailable("Windows does this only for the user who runs the program.");
  }

  Shell& inner_;
};

// The Windows that the program runs on, as it is for another of its users.
class OtherUserMachine {
 public:
  // Throws Error: see UserHive.
  OtherUserMachine(const std::string& program_folder, const UserProfile& user);

  Machine machine();

 private:
  Win32Machine own_;
  UserHive hive_;
  OtherUserFiles files_;
  Win32Registry registry_;
  OtherUserSystem system_;
  OtherUserShell shell_;
  AbsentUrlCache url_cache_;
  AbsentSystemCleaners cleaners_;
  IniFiles profile_;
};

// The users of this Windows whose profile folders are there, whoever runs the program among them.
// Throws Error.
std::vector<UserProfile> UsersHere(const Machine& machine);

}  // namespace quellix
