#include "platform/win32/win32_hive.h"

#include <windows.h>

#include <chrono>
#include <future>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_folder.h"
#include "platform/win32/win32_path.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

constexpr const wchar_t* kPrivileges[] = {L"SeBackupPrivilege", L"SeRestorePrivilege"};

// What loading and unloading a hive needs. Held no longer, and by this thread alone: with it access
// lists count for nothing.
class Privileges {
 public:
  Privileges() {
    UniqueHandle token;
    if (!ImpersonateSelf(SecurityImpersonation))
      ThrowLastError(Mark("Cannot take the program's own rights: %2"), "");
    OpenThreadToken(GetCurrentThread(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, TRUE, token.Put());
    // Without them what follows is refused by Windows.
    for (const wchar_t* const name : kPrivileges) {
      TOKEN_PRIVILEGES wanted{};
      wanted.PrivilegeCount = 1;
      wanted.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
      LookupPrivilegeValueW(nullptr, name, &wanted.Privileges[0].Luid);
      AdjustTokenPrivileges(token.Get(), FALSE, &wanted, 0, nullptr, nullptr);
    }
  }
  ~Privileges() { RevertToSelf(); }
  Privileges(const Privileges&) = delete;
  Privileges& operator=(const Privileges&) = delete;
};

bool IsLoaded(const std::string& key) {
  UniqueKey open;
  return RegOpenKeyExW(HKEY_USERS, Wide(key).c_str(), 0, KEY_READ, open.Put()) == ERROR_SUCCESS;
}

UniqueHandle TakeTurn(const UserProfile& user) {
  const std::wstring name = L"Global\\Quellix " + Wide(user.sid);
  SetLastError(ERROR_SUCCESS);
  UniqueHandle turn(CreateMutexW(nullptr, FALSE, name.c_str()));
  if (turn && GetLastError() != ERROR_ALREADY_EXISTS) return turn;
  throw Error(Error::Kind::kInUse,
              Say("Another Quellix works on what is the user %1's. Try again when it has "
                  "ended.",
                  user.name));
}

// The path that is handed over stays that of the file which was looked at, as far as a folder held
// in its place makes it so.
LSTATUS Load(Win32Folder& folder, const std::string& key, const std::string& file) {
  UniqueFile held;
  const NTSTATUS status = folder.Hold(held);
  if (status < 0)
    throw NtError(status, Mark("Cannot keep the folder in its place of %1: %2"), file);
  const std::wstring place = FinalPath(held);
  const auto info = folder.Look(NamePart(file));
  if (place.empty() || !info || info->is_link || info->is_folder) {
    throw Error(Error::Kind::kDenied, Say("The registry %1 is not loaded: it is no file.", file));
  }
  const std::wstring path = place + L"\\" + Wide(NamePart(file));
  const Privileges privileges;
  return RegLoadKeyW(HKEY_USERS, Wide(key).c_str(), path.c_str());
}

constexpr std::chrono::milliseconds kBreath{20};

// Throws what the work throws.
void WhileBreathing(const std::function<void()>& breathe, const std::function<void()>& work) {
  if (!breathe) return work();
  std::future<void> done = std::async(std::launch::async, work);
  while (done.wait_for(kBreath) != std::future_status::ready) breathe();
  done.get();
}

}  // namespace

// What a killed run has left loaded is taken as it is, and unloaded at the end.
std::string UserHive::Find(FileSystem& files, const std::string& in_use, const std::string& file) {
  if (IsLoaded(in_use)) return in_use;
  const std::unique_ptr<Folder> folder = files.OpenFolder(FolderPart(file));
  auto* const open = dynamic_cast<Win32Folder*>(folder.get());
  if (open == nullptr || !open->Look(NamePart(file))) return {};
  std::string key = "Quellix " + in_use;
  if (!IsLoaded(key)) {
    const LSTATUS status = Load(*open, key, file);
    if (status != ERROR_SUCCESS)
      throw WindowsError(static_cast<DWORD>(status), Mark("Cannot load the registry %1: %2"), file);
  }
  loaded_.push_back(key);
  return key;
}

UserHive::UserHive(FileSystem& files, const UserProfile& user, const std::function<void()>& breathe)
    : turn_(TakeTurn(user)) {
  try {
    WhileBreathing(breathe, [&] { LoadBoth(files, user); });
  } catch (...) {
    Unload(breathe);
    throw;
  }
}

void UserHive::LoadBoth(FileSystem& files, const UserProfile& user) {
  root_ = Find(files, user.sid, user.profile + "\\NTUSER.DAT");
  if (root_.empty()) {
    throw Error(Error::Kind::kMissing,
                Say("The user %1 has no registry: %2", user.name, user.profile + "\\NTUSER.DAT"));
  }
  try {
    classes_ = Find(files, user.sid + "_Classes",
                    user.profile + "\\AppData\\Local\\Microsoft\\Windows\\UsrClass.dat");
  } catch (const Error&) {  // without it there is less to find
  }
}

bool UserHive::TryToUnload() {
  try {
    const Privileges privileges;
    std::erase_if(loaded_, [](const std::string& key) {
      return RegUnLoadKeyW(HKEY_USERS, Wide(key).c_str()) == ERROR_SUCCESS;
    });
  } catch (const Error&) {
  }
  return loaded_.empty();
}

bool UserHive::Unload(const std::function<void()>& breathe) {
  constexpr int kTries = 20;
  constexpr DWORD kMilliseconds = 100;
  WhileBreathing(breathe, [this] {
    for (int tries = 1; !TryToUnload() && tries < kTries; ++tries) Sleep(kMilliseconds);
  });
  has_given_up_ = !loaded_.empty();
  return loaded_.empty();
}

}  // namespace quellix
