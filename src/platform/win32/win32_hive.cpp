#include "platform/win32/win32_hive.h"

#include <windows.h>

#include "platform/error.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

constexpr const wchar_t* kPrivileges[] = {L"SeBackupPrivilege", L"SeRestorePrivilege"};

// What loading and unloading a hive needs. Held no longer: with it access lists count for nothing.
class Privileges {
 public:
  Privileges() {
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY,
                          token_.Put())) {
      ThrowLastError("open", "the program's own rights");
    }
    for (size_t i = 0; i < std::size(kPrivileges); ++i) {
      TOKEN_PRIVILEGES wanted{};
      wanted.PrivilegeCount = 1;
      wanted.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
      LookupPrivilegeValueW(nullptr, kPrivileges[i], &wanted.Privileges[0].Luid);
      DWORD size = 0;
      AdjustTokenPrivileges(token_.Get(), FALSE, &wanted, sizeof(before_[i]), &before_[i], &size);
    }
  }
  ~Privileges() {
    for (TOKEN_PRIVILEGES& before : before_) {
      if (before.PrivilegeCount > 0)
        AdjustTokenPrivileges(token_.Get(), FALSE, &before, 0, nullptr, nullptr);
    }
  }
  Privileges(const Privileges&) = delete;
  Privileges& operator=(const Privileges&) = delete;

 private:
  UniqueHandle token_;
  TOKEN_PRIVILEGES before_[std::size(kPrivileges)]{};
};

bool IsLoaded(const std::string& key) {
  UniqueKey open;
  return RegOpenKeyExW(HKEY_USERS, Wide(key).c_str(), 0, KEY_READ, open.Put()) == ERROR_SUCCESS;
}

}  // namespace

// What a killed run has left loaded is taken as it is, and unloaded at the end.
std::string UserHive::Find(FileSystem& files, const std::string& in_use, const std::string& file) {
  if (IsLoaded(in_use)) return in_use;
  const std::optional<FileInfo> info = files.Look(file);
  if (!info) return {};
  if (info->is_link || info->is_folder) {
    throw Error(Error::Kind::kDenied, "The registry " + file + " is not loaded: it is no file.");
  }
  std::string key = "Quellix " + in_use;
  if (!IsLoaded(key)) {
    const Privileges privileges;
    const LSTATUS status = RegLoadKeyW(HKEY_USERS, Wide(key).c_str(), Wide(file).c_str());
    if (status != ERROR_SUCCESS)
      throw WindowsError(static_cast<DWORD>(status), "load the registry", file);
  }
  loaded_.push_back(key);
  return key;
}

UserHive::UserHive(FileSystem& files, const UserProfile& user) {
  root_ = Find(files, user.sid, user.profile + "\\NTUSER.DAT");
  if (root_.empty()) {
    throw Error(Error::Kind::kMissing,
                "The user " + user.name + " has no registry: " + user.profile + "\\NTUSER.DAT");
  }
  try {
    classes_ = Find(files, user.sid + "_Classes",
                    user.profile + "\\AppData\\Local\\Microsoft\\Windows\\UsrClass.dat");
  } catch (const Error&) {  // without it there is less to find
  }
}

UserHive::~UserHive() {
  if (loaded_.empty()) return;
  try {
    const Privileges privileges;
    for (const std::string& key : loaded_) RegUnLoadKeyW(HKEY_USERS, Wide(key).c_str());
  } catch (const Error&) {
  }
}

}  // namespace quellix
