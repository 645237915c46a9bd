#include "platform/win32/win32_registry.h"

#include <windows.h>
#include <winternl.h>

#include <algorithm>
#include <vector>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/user_profiles.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_file_time.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

constexpr const char* kCannotChangeKey = Mark("Cannot change the registry key %1: %2");
constexpr const char* kCannotOpenKey = Mark("Cannot open the registry key %1: %2");
constexpr const char* kCannotReadKey = Mark("Cannot read the registry key %1: %2");
constexpr const char* kCannotWriteKey = Mark("Cannot write the registry key %1: %2");

constexpr size_t kUsualData = 1024;    // bytes; more is asked for again
constexpr DWORD kLongestName = 16384;  // characters of a value name with its NUL

HKEY Predefined(RegistryRoot root) {
  switch (root) {
    case RegistryRoot::kClassesRoot:
      return HKEY_CLASSES_ROOT;
    case RegistryRoot::kCurrentUser:
      return HKEY_CURRENT_USER;
    case RegistryRoot::kLocalMachine:
      return HKEY_LOCAL_MACHINE;
    case RegistryRoot::kUsers:
      return HKEY_USERS;
  }
  return nullptr;
}

REGSAM Rights(RegistryAccess access) {
  return access == RegistryAccess::kWrite ? KEY_READ | KEY_WRITE : KEY_READ;
}

bool MeansMissing(LSTATUS status) {
  return status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND ||
         status == ERROR_BAD_PATHNAME || status == ERROR_KEY_DELETED;
}

// The languages below Perflib open as roots of their own, which hold no keys and cannot be listed.
bool IsPerformanceData(HKEY key) {
  return key == HKEY_PERFORMANCE_DATA || key == HKEY_PERFORMANCE_TEXT ||
         key == HKEY_PERFORMANCE_NLSTEXT;
}

// The calls by name end at a NUL and would reach another value.
bool HasNul(std::string_view name) { return name.find('\0') != std::string_view::npos; }

bool IsAtOrBelow(std::string_view top, std::string_view key) {
  return key.size() >= top.size() && EqualsNoCase(key.substr(0, top.size()), top) &&
         (key.size() == top.size() || key[top.size()] == '\\');
}

// A call of the kernel for which there is no import.
template <typename Call>
Call KernelCall(const char* name) {
  return reinterpret_cast<Call>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
}

// What the kernel calls a predefined key, which is no handle of its own.
std::string TrueNameOf(HKEY key);
std::string TrueNameOfPredefined(HKEY key) {
  if (key == HKEY_LOCAL_MACHINE) return "\\REGISTRY\\MACHINE";
  if (key == HKEY_USERS) return "\\REGISTRY\\USER";
  if (key == HKEY_CLASSES_ROOT) return "\\REGISTRY\\MACHINE\\SOFTWARE\\Classes";
  UniqueKey user;
  const LSTATUS status = RegOpenCurrentUser(KEY_READ, user.Put());
  if (status != ERROR_SUCCESS) {
    throw WindowsError(static_cast<DWORD>(status), Mark("Cannot open the registry of the user: %2"),
                       "");
  }
  return TrueNameOf(user.Get());
}

std::string TrueNameOf(HKEY key) {
  if (key == HKEY_LOCAL_MACHINE || key == HKEY_USERS || key == HKEY_CLASSES_ROOT ||
      key == HKEY_CURRENT_USER) {
    return TrueNameOfPredefined(key);
  }
  static const auto query =
      KernelCall<LONG(WINAPI*)(HANDLE, int, void*, ULONG, ULONG*)>("NtQueryKey");
  constexpr int kNameInformation = 3;
  std::vector<ULONG> buffer(16384);  // first the bytes of the name, which follows
  ULONG used = 0;
  if (query == nullptr || query(key, kNameInformation, buffer.data(),
                                static_cast<ULONG>(buffer.size() * sizeof(ULONG)), &used) != 0) {
    throw WindowsError(ERROR_INVALID_HANDLE, Mark("Cannot tell the name of a registry key: %2"),
                       "");
  }
  const auto* const name = reinterpret_cast<const wchar_t*>(buffer.data() + 1);
  return Narrow({name, buffer[0] / sizeof(wchar_t)});
}

// Who runs the program may change what Windows lets him. Of the machine of another user only what
// is that user's own is changed, wherever the links lead that he may have made.
enum class Whose { kUnchecked, kOwn, kOthers };

struct Ownership {
  Whose whose = Whose::kUnchecked;
  std::vector<std::string> tops = {};  // for kOwn: true names, all at or below which is his own
};

// That of a key below HKEY_USERS, or elsewhere, by its name alone. `own`: see OwnAt.
Ownership OwnershipOf(const KeyHome& place, const std::vector<std::string>& own) {
  if (own.empty()) return {};
  Ownership owner{Whose::kOthers};
  for (const std::string& top : own) {
    owner.tops.push_back(TrueNameOf(HKEY_USERS).append("\\").append(top));
    if (place.root == RegistryRoot::kUsers && IsAtOrBelow(top, place.key))
      owner.whose = Whose::kOwn;
  }
  return owner;
}

// That of an open key, which was opened below one of that ownership.
Ownership OwnershipOf(HKEY key, const Ownership& above) {
  if (above.whose != Whose::kOwn) return {above.whose};
  const std::string name = TrueNameOf(key);
  const bool is_own = std::ranges::any_of(
      above.tops, [&name](const std::string& top) { return IsAtOrBelow(top, name); });
  return is_own ? Ownership{Whose::kOwn, {name}} : Ownership{Whose::kOthers};
}

[[noreturn]] void RefuseOthers(std::string_view path) {
  throw Error(Error::Kind::kDenied,
              Say("%1 is not this user's own: for another user nothing else in the registry is "
                  "changed.",
                  path));
}

class Win32Key : public RegistryKey {
 public:
  Win32Key(UniqueKey key, std::string path, Ownership owner)
      : key_(std::move(key)), path_(std::move(path)), owner_(std::move(owner)) {}

  std::unique_ptr<RegistryKey> Open(std::string_view path, RegistryAccess access) override;
  std::optional<RegistryValue> QueryValue(std::string_view name) override;
  std::optional<RegistryValueInfo> ValueAt(uint32_t index) override;
  bool ReadValueAt(uint32_t index, std::string& name, RegistryValue& value) override;
  std::optional<std::string> SubKeyAt(uint32_t index) override;
  bool IsLink(std::string_view path) override;
  std::string TrueName() override;
  int64_t LastWrite() override;
  void SetValue(std::string_view name, const RegistryValue& value) override;
  bool DeleteValue(std::string_view name) override;
  bool DeleteSubKey(std::string_view path) override;
  // Windows writes its hives by itself, also when the program or the machine ends; forcing it
  // here would stop the whole system for a moment at each key.
  void Flush() override {}

  std::unique_ptr<RegistryKey> CreateBelow(std::string_view path);

 private:
  void RequireOwn(std::string_view path) const {
    if (owner_.whose == Whose::kOthers) RefuseOthers(path);
  }
  LSTATUS Remove(std::string_view path, Win32Key& child);
  void Check(LSTATUS status, const char* cannot) const {
    if (status != ERROR_SUCCESS) {
      throw WindowsError(static_cast<DWORD>(status), cannot, path_);
    }
  }

  UniqueKey key_;
  std::string path_;  // for messages
  Ownership owner_;
  std::vector<wchar_t> name_;
};

std::unique_ptr<Win32Key> OpenBelow(HKEY parent, std::string_view path, REGSAM rights,
                                    const Ownership& above) {
  const std::string_view plain = WithoutBackslash(path);
  UniqueKey key;
  const LSTATUS status = RegOpenKeyExW(parent, Wide(plain).c_str(), 0, rights, key.Put());
  if (MeansMissing(status) || IsPerformanceData(key.Get())) return nullptr;
  if (status != ERROR_SUCCESS) {
    throw WindowsError(static_cast<DWORD>(status), kCannotOpenKey, plain);
  }
  Ownership owner = OwnershipOf(key.Get(), above);
  if (owner.whose == Whose::kOthers && rights != KEY_READ) RefuseOthers(plain);
  return std::make_unique<Win32Key>(std::move(key), std::string(plain), std::move(owner));
}

std::unique_ptr<Win32Key> MakeBelow(HKEY parent, std::string_view path, const Ownership& above) {
  UniqueKey key;
  const LSTATUS status =
      RegCreateKeyExW(parent, Wide(path).c_str(), 0, nullptr, 0, Rights(RegistryAccess::kWrite),
                      nullptr, key.Put(), nullptr);
  if (status != ERROR_SUCCESS) {
    throw WindowsError(static_cast<DWORD>(status), Mark("Cannot make the registry key %1: %2"),
                       path);
  }
  Ownership owner = OwnershipOf(key.Get(), above);
  if (owner.whose == Whose::kOthers) RefuseOthers(path);
  return std::make_unique<Win32Key>(std::move(key), std::string(path), std::move(owner));
}

std::unique_ptr<RegistryKey> Win32Key::Open(std::string_view path, RegistryAccess access) {
  if (access == RegistryAccess::kWrite) RequireOwn(path);
  return OpenBelow(key_.Get(), path, Rights(access), owner_);
}

std::optional<RegistryValue> Win32Key::QueryValue(std::string_view name) {
  if (HasNul(name)) return std::nullopt;
  const std::wstring wide = Wide(name);
  RegistryValue value{kRegNone, std::string(256, '\0')};
  while (true) {
    auto size = static_cast<DWORD>(value.bytes.size());
    const LSTATUS status =
        RegQueryValueExW(key_.Get(), wide.c_str(), nullptr, reinterpret_cast<DWORD*>(&value.type),
                         reinterpret_cast<BYTE*>(value.bytes.data()), &size);
    if (MeansMissing(status)) return std::nullopt;
    if (status != ERROR_MORE_DATA) Check(status, kCannotReadKey);
    value.bytes.resize(size);
    if (status == ERROR_SUCCESS) return value;
  }
}

std::optional<RegistryValueInfo> Win32Key::ValueAt(uint32_t index) {
  name_.resize(kLongestName);
  DWORD length = kLongestName, type = 0, size = 0;
  const LSTATUS status =
      RegEnumValueW(key_.Get(), index, name_.data(), &length, nullptr, &type, nullptr, &size);
  if (status == ERROR_NO_MORE_ITEMS || MeansMissing(status)) return std::nullopt;
  Check(status, kCannotReadKey);
  return RegistryValueInfo{Narrow({name_.data(), length}), type, size};
}

bool Win32Key::ReadValueAt(uint32_t index, std::string& name, RegistryValue& value) {
  name_.resize(kLongestName);
  value.bytes.resize(std::max(value.bytes.capacity(), kUsualData));
  while (true) {
    DWORD length = kLongestName, type = 0;
    auto size = static_cast<DWORD>(value.bytes.size());
    const LSTATUS status = RegEnumValueW(key_.Get(), index, name_.data(), &length, nullptr, &type,
                                         reinterpret_cast<BYTE*>(value.bytes.data()), &size);
    if (status == ERROR_NO_MORE_ITEMS || MeansMissing(status)) return false;
    if (status != ERROR_MORE_DATA) Check(status, kCannotReadKey);
    value.bytes.resize(size);
    if (status == ERROR_MORE_DATA) continue;
    value.type = type;
    name = Narrow({name_.data(), length});
    return true;
  }
}

std::optional<std::string> Win32Key::SubKeyAt(uint32_t index) {
  name_.resize(kLongestName);
  DWORD length = kLongestName;
  const LSTATUS status =
      RegEnumKeyExW(key_.Get(), index, name_.data(), &length, nullptr, nullptr, nullptr, nullptr);
  if (status == ERROR_NO_MORE_ITEMS || MeansMissing(status)) return std::nullopt;
  Check(status, kCannotReadKey);
  return Narrow({name_.data(), length});
}

bool Win32Key::IsLink(std::string_view path) {
  UniqueKey itself;
  RegOpenKeyExW(key_.Get(), Wide(WithoutBackslash(path)).c_str(), REG_OPTION_OPEN_LINK,
                KEY_QUERY_VALUE, itself.Put());
  DWORD type = 0;
  return itself &&
         RegQueryValueExW(itself.Get(), L"SymbolicLinkValue", nullptr, &type, nullptr, nullptr) ==
             ERROR_SUCCESS &&
         type == REG_LINK;
}

std::string Win32Key::TrueName() { return TrueNameOf(key_.Get()); }

int64_t Win32Key::LastWrite() {
  FILETIME time{};
  const LSTATUS status = RegQueryInfoKeyW(key_.Get(), nullptr, nullptr, nullptr, nullptr, nullptr,
                                          nullptr, nullptr, nullptr, nullptr, nullptr, &time);
  return status == ERROR_SUCCESS ? FromFileTime(time) : 0;
}

// Windows counts a NUL that happens to stand behind a text in memory to the text; so none does.
void Win32Key::SetValue(std::string_view name, const RegistryValue& value) {
  RequireOwn(path_);
  if (HasNul(name)) throw WindowsError(ERROR_INVALID_PARAMETER, Cannot::kWrite, path_);
  const std::string bytes = value.bytes + "\xFF\xFF";
  Check(RegSetValueExW(key_.Get(), Wide(name).c_str(), 0, value.type,
                       reinterpret_cast<const BYTE*>(bytes.data()),
                       static_cast<DWORD>(value.bytes.size())),
        kCannotWriteKey);
}

bool Win32Key::DeleteValue(std::string_view name) {
  RequireOwn(path_);
  if (HasNul(name)) return false;
  const LSTATUS status = RegDeleteValueW(key_.Get(), Wide(name).c_str());
  if (MeansMissing(status)) return false;
  Check(status, kCannotChangeKey);
  return true;
}

// Windows says no more than "access denied" for a key that has sub-keys, and old versions removed
// them all.
bool Win32Key::DeleteSubKey(std::string_view path) {
  const std::string_view plain = WithoutBackslash(path);
  if (plain.empty()) throw WindowsError(ERROR_ACCESS_DENIED, Cannot::kRemove, path_);
  if (IsLink(plain))
    throw WindowsError(ERROR_ACCESS_DENIED, Mark("Cannot remove the link %1: %2"), plain);
  RequireOwn(plain);
  const auto child = OpenBelow(key_.Get(), plain, KEY_READ | DELETE, owner_);
  if (!child) return false;
  if (child->SubKeyAt(0)) throw WindowsError(ERROR_DIR_NOT_EMPTY, Cannot::kRemove, plain);
  const LSTATUS status = Remove(plain, *child);
  if (MeansMissing(status)) return false;
  Check(status, kCannotChangeKey);
  return true;
}

// By its name another user could have it lead elsewhere by now.
LSTATUS Win32Key::Remove(std::string_view path, Win32Key& child) {
  if (owner_.whose != Whose::kOwn) return RegDeleteKeyW(key_.Get(), Wide(path).c_str());
  static const auto remove = KernelCall<LONG(WINAPI*)(HANDLE)>("NtDeleteKey");
  const LONG status = remove(child.key_.Get());
  return static_cast<LSTATUS>(RtlNtStatusToDosError(status));
}

// A link to nothing would have its target made.
std::unique_ptr<RegistryKey> Win32Key::CreateBelow(std::string_view path) {
  if (IsLink(path.substr(0, path.find('\\')))) RefuseOthers(path);
  return MakeBelow(key_.Get(), path, owner_);
}

}  // namespace

// A user's classes are a hive of their own, which only a link makes part of his key, and
// HKEY_CLASSES_ROOT shows those of who runs the program.
KeyHome Win32Registry::Place(RegistryRoot root, std::string_view path) const {
  constexpr std::string_view kClasses = "Software\\Classes";
  std::string plain(WithoutBackslash(path));
  if (user_.empty()) return {root, std::move(plain)};
  if (root == RegistryRoot::kUsers && !lasting_.empty() && IsAtOrBelow(lasting_, plain)) {
    return Place(RegistryRoot::kCurrentUser,
                 std::string_view(plain).substr(std::min(lasting_.size() + 1, plain.size())));
  }
  const auto below = [](const std::string& top, std::string_view rest) {
    return top + (rest.empty() ? "" : "\\") + std::string(rest);
  };
  if (root == RegistryRoot::kClassesRoot)
    return {RegistryRoot::kLocalMachine, below(std::string(kClasses), plain)};
  if (root != RegistryRoot::kCurrentUser) return {root, std::move(plain)};
  const bool is_class = IsAtOrBelow(kClasses, plain);
  if (!is_class || classes_.empty()) return {RegistryRoot::kUsers, below(user_, plain)};
  const std::string rest = plain.size() > kClasses.size() ? plain.substr(kClasses.size() + 1) : "";
  return {RegistryRoot::kUsers, below(classes_, rest)};
}

std::vector<std::string> Win32Registry::OwnAt(const KeyHome& place) const {
  if (!user_.empty()) {
    std::vector<std::string> own = {user_, classes_, lasting_};
    std::erase(own, "");
    return own;
  }
  if (place.root != RegistryRoot::kUsers) return {};
  constexpr std::string_view kClasses = "_CLASSES";
  std::string user = UpCase(place.key.substr(0, place.key.find('\\')));
  if (user.ends_with(kClasses)) user.resize(user.size() - kClasses.size());
  const std::string self = TrueNameOf(HKEY_CURRENT_USER);
  if (!IsPerson(user) || EqualsNoCase(NamePart(self), user)) return {};
  return {user, user.append(kClasses)};
}

KeyHome Win32Registry::LastingName(RegistryRoot root, std::string_view key) {
  if (user_.empty() || root != RegistryRoot::kCurrentUser) return {root, std::string(key)};
  return {RegistryRoot::kUsers, lasting_ + "\\" + std::string(key)};
}

std::unique_ptr<RegistryKey> Win32Registry::Open(RegistryRoot root, std::string_view path,
                                                 RegistryAccess access) {
  const KeyHome place = Place(root, path);
  const Ownership owner = OwnershipOf(place, OwnAt(place));
  if (access == RegistryAccess::kWrite && owner.whose == Whose::kOthers) RefuseOthers(place.key);
  return OpenBelow(Predefined(place.root), place.key, Rights(access), owner);
}

// For another user it is made below the nearest key that is there, once that was seen to be his,
// which HKEY_USERS itself never is.
std::unique_ptr<RegistryKey> Win32Registry::Create(RegistryRoot root, std::string_view path) {
  const KeyHome place = Place(root, path);
  const HKEY top = Predefined(place.root);
  const Ownership owner = OwnershipOf(place, OwnAt(place));
  if (owner.whose == Whose::kUnchecked) return MakeBelow(top, place.key, owner);
  if (auto key = Open(root, path, RegistryAccess::kWrite)) return key;
  std::string_view above = place.key;
  std::unique_ptr<Win32Key> nearest;
  while (!nearest) {
    above = WithoutBackslash(FolderPart(above));
    if (above.empty()) {
      throw Error(
          Error::Kind::kMissing,
          Say("The registry of that user is not loaded, as he is not logged on: %1", place.key));
    }
    nearest = OpenBelow(top, above, KEY_READ | KEY_CREATE_SUB_KEY, owner);
  }
  return nearest->CreateBelow(std::string_view(place.key).substr(above.size() + 1));
}

}  // namespace quellix
