#pragma once

#include "platform/path.h"
#include "platform/user_profiles.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_text.h"
#include "support/run_fixture.h"

namespace quellix {

// A second user of this Windows, who is not logged on, and one whose profile has gone.
inline constexpr const char* kProfiles =
    "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\";
inline constexpr const char* kSeed = "Software\\QxSeed";

struct OtherUserFixture : RunFixture {
  OtherUserFixture() {
    Remove();
    machine->SetText(kMachine, kProfiles + user.sid, "ProfileImagePath",
                     "%SystemDrive%\\users\\qx2");
    machine->SetText(kMachine, kProfiles + gone.sid, "ProfileImagePath", gone.profile);
    machine->MakeFile(his_temp + "a.tmp", "12345");
    machine->MakeFile(his_temp + "b.keep", "1");
    machine->MakeFile(temp + "mine.tmp", "1");
    machine->RemoveRegistryTree(kUser, kRunMruKey);
    machine->SetText(kUser, kRunMruKey, "a", "mine");
    WriteOwn("keep.txt", "*.keep\r\n");
  }
  ~OtherUserFixture() override { Remove(); }

  void Remove() {
    for (const UserProfile& each : {user, gone})
      machine->RemoveRegistryTree(kMachine, kProfiles + each.sid);
    for (const std::string& name : machine->Tree(user.profile)) {
      if (!name.ends_with('\\')) ports.files.RemoveFile(user.profile + "\\" + name);
    }
    machine->RemoveRegistryTree(kUser, kSeed);
  }
  // As he left it when he logged off.
  void StoreHive(const std::string& temp_folder = "%USERPROFILE%\\his temp") {
    const std::string seed = std::string(kSeed) + "\\";
    machine->SetText(kUser, seed + kRunMruKey, "a", "his");
    for (const char* name : {"TEMP", "TMP"})
      machine->SetText(kUser, seed + "Environment", name, temp_folder);
    Session& session = ports.session;
    session.EnablePrivilege("SeBackupPrivilege");
    UniqueKey key;
    RegOpenKeyExW(HKEY_CURRENT_USER, Wide(kSeed).c_str(), 0, KEY_READ, key.Put());
    const std::wstring file = Wide(user.profile + "\\NTUSER.DAT");
    DeleteFileW(file.c_str());
    ASSERT_EQ(RegSaveKeyW(key.Get(), file.c_str(), nullptr), ERROR_SUCCESS);
  }
  bool IsLoaded() { return machine->KeyExists(RegistryRoot::kUsers, "Quellix " + user.sid); }

  const UserProfile user{"qx2", "S-1-5-21-7-7-7-1002", "C:\\users\\qx2"},
      gone{"qx3", "S-1-5-21-7-7-7-1003", "C:\\users\\qx3"};
  const std::string his_temp = "C:\\users\\qx2\\his temp\\";
};

}  // namespace quellix
