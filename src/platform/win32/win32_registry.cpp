#include "platform/win32/win32_registry.h"

#include <windows.h>

#include <algorithm>
#include <vector>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

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

// What the kernel calls a predefined key, which is no handle of its own.
std::string TrueNameOf(HKEY key);
std::string TrueNameOfPredefined(HKEY key) {
  if (key == HKEY_LOCAL_MACHINE) return "\\REGISTRY\\MACHINE";
  if (key == HKEY_USERS) return "\\REGISTRY\\USER";
  if (key == HKEY_CLASSES_ROOT) return "\\REGISTRY\\MACHINE\\SOFTWARE\\Classes";
  UniqueKey user;
  const LSTATUS status = RegOpenCurrentUser(KEY_READ, user.Put());
  if (status != ERROR_SUCCESS) {
    throw WindowsError(static_cast<DWORD>(status), "open", "the registry of the user");
  }
  return TrueNameOf(user.Get());
}

std::string TrueNameOf(HKEY key) {
  if (key == HKEY_LOCAL_MACHINE || key == HKEY_USERS || key == HKEY_CLASSES_ROOT ||
      key == HKEY_CURRENT_USER) {
    return TrueNameOfPredefined(key);
  }
  using QueryKey = LONG(WINAPI*)(HANDLE, int, void*, ULONG, ULONG*);
  static const auto query = reinterpret_cast<QueryKey>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryKey")));
  constexpr int kNameInformation = 3;
  std::vector<ULONG> buffer(16384);  // first the bytes of the name, which follows
  ULONG used = 0;
  if (query == nullptr || query(key, kNameInformation, buffer.data(),
                                static_cast<ULONG>(buffer.size() * sizeof(ULONG)), &used) != 0) {
    throw WindowsError(ERROR_INVALID_HANDLE, "tell the name of", "a registry key");
  }
  const auto* const name = reinterpret_cast<const wchar_t*>(buffer.data() + 1);
  return Narrow({name, buffer[0] / sizeof(wchar_t)});
}

// Of the machine of another user only what is his own may be changed.
enum class Whose { kOwn, kOthers };

[[noreturn]] void RefuseOthers(std::string_view path) {
  throw Error(Error::Kind::kDenied,
              std::string(path).append(
                  " is not this user's own: for another user nothing else in the registry is "
                  "changed."));
}

class Win32Key : public RegistryKey {
 public:
  Win32Key(UniqueKey key, std::string path, Whose whose)
      : key_(std::move(key)), path_(std::move(path)), whose_(whose) {}

  std::unique_ptr<RegistryKey> Open(std::string_view path, RegistryAccess access) override;
  std::optional<RegistryValue> QueryValue(std::string_view name) override;
  std::optional<RegistryValueInfo> ValueAt(uint32_t index) override;
  bool ReadValueAt(uint32_t index, std::string& name, RegistryValue& value) override;
  std::optional<std::string> SubKeyAt(uint32_t index) override;
  bool IsLink(std::string_view path) override;
  std::string TrueName() override;
  void SetValue(std::string_view name, const RegistryValue& value) override;
  bool DeleteValue(std::string_view name) override;
  bool DeleteSubKey(std::string_view path) override;
  // Windows writes its hives by itself, also when the program or the machine ends; forcing it
  // here would stop the whole system for a moment at each key.
  void Flush() override {}

 private:
  void Check(LSTATUS status, std::string_view action) const {
    if (status != ERROR_SUCCESS) {
      throw WindowsError(static_cast<DWORD>(status), action, "the registry key " + path_);
    }
  }

  UniqueKey key_;
  std::string path_;  // for messages
  Whose whose_;
  std::vector<wchar_t> name_;
};

std::unique_ptr<Win32Key> OpenBelow(HKEY parent, std::string_view path, REGSAM rights,
                                    Whose whose) {
  const std::string_view plain = WithoutBackslash(path);
  UniqueKey key;
  const LSTATUS status = RegOpenKeyExW(parent, Wide(plain).c_str(), 0, rights, key.Put());
  if (MeansMissing(status) || IsPerformanceData(key.Get())) return nullptr;
  if (status != ERROR_SUCCESS) {
    throw WindowsError(static_cast<DWORD>(status), "open",
                       "the registry key " + std::string(plain));
  }
  return std::make_unique<Win32Key>(std::move(key), std::string(plain), whose);
}

std::unique_ptr<RegistryKey> Win32Key::Open(std::string_view path, RegistryAccess access) {
  if (whose_ == Whose::kOthers && access == RegistryAccess::kWrite) RefuseOthers(path);
  return OpenBelow(key_.Get(), path, Rights(access), whose_);
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
    if (status != ERROR_MORE_DATA) Check(status, "read");
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
  Check(status, "read");
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
    if (status != ERROR_MORE_DATA) Check(status, "read");
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
  Check(status, "read");
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

// Windows counts a NUL that happens to stand behind a text in memory to the text; so none does.
void Win32Key::SetValue(std::string_view name, const RegistryValue& value) {
  if (HasNul(name)) throw WindowsError(ERROR_INVALID_PARAMETER, "write", path_);
  const std::string bytes = value.bytes + "\xFF\xFF";
  Check(RegSetValueExW(key_.Get(), Wide(name).c_str(), 0, value.type,
                       reinterpret_cast<const BYTE*>(bytes.data()),
                       static_cast<DWORD>(value.bytes.size())),
        "write");
}

bool Win32Key::DeleteValue(std::string_view name) {
  if (HasNul(name)) return false;
  const LSTATUS status = RegDeleteValueW(key_.Get(), Wide(name).c_str());
  if (MeansMissing(status)) return false;
  Check(status, "change");
  return true;
}

// Windows says no more than "access denied" for a key that has sub-keys, and old versions removed
// them all.
bool Win32Key::DeleteSubKey(std::string_view path) {
  const std::string_view plain = WithoutBackslash(path);
  if (plain.empty()) throw WindowsError(ERROR_ACCESS_DENIED, "remove", path_);
  if (IsLink(plain)) throw WindowsError(ERROR_ACCESS_DENIED, "remove the link", plain);
  if (whose_ == Whose::kOthers) RefuseOthers(plain);
  const auto child = OpenBelow(key_.Get(), plain, KEY_READ | DELETE, whose_);
  if (!child) return false;
  if (child->SubKeyAt(0)) throw WindowsError(ERROR_DIR_NOT_EMPTY, "remove", plain);
  const LSTATUS status = RegDeleteKeyW(key_.Get(), Wide(plain).c_str());
  if (MeansMissing(status)) return false;
  Check(status, "change");
  return true;
}

}  // namespace

// A user's classes are a hive of their own, which only a link makes part of his key, and
// HKEY_CLASSES_ROOT shows those of who runs the program.
KeyHome Win32Registry::Place(RegistryRoot root, std::string_view path) const {
  constexpr std::string_view kClasses = "Software\\Classes";
  std::string plain(WithoutBackslash(path));
  if (user_.empty()) return {root, std::move(plain)};
  const auto below = [](const std::string& top, std::string_view rest) {
    return top + (rest.empty() ? "" : "\\") + std::string(rest);
  };
  if (root == RegistryRoot::kClassesRoot)
    return {RegistryRoot::kLocalMachine, below(std::string(kClasses), plain)};
  if (root != RegistryRoot::kCurrentUser) return {root, std::move(plain)};
  const bool is_class = EqualsNoCase(plain.substr(0, kClasses.size()), kClasses) &&
                        (plain.size() == kClasses.size() || plain[kClasses.size()] == '\\');
  if (!is_class || classes_.empty()) return {RegistryRoot::kUsers, below(user_, plain)};
  const std::string rest = plain.size() > kClasses.size() ? plain.substr(kClasses.size() + 1) : "";
  return {RegistryRoot::kUsers, below(classes_, rest)};
}

bool Win32Registry::IsOwn(const KeyHome& place) const {
  if (user_.empty()) return true;
  const auto holds = [&place](std::string_view top) {
    return !top.empty() && EqualsNoCase(place.key.substr(0, top.size()), top) &&
           (place.key.size() == top.size() || place.key[top.size()] == '\\');
  };
  return place.root == RegistryRoot::kUsers && (holds(user_) || holds(classes_) || holds(lasting_));
}

KeyHome Win32Registry::LastingName(RegistryRoot root, std::string_view key) {
  if (user_.empty() || root != RegistryRoot::kCurrentUser) return {root, std::string(key)};
  return {RegistryRoot::kUsers, lasting_ + "\\" + std::string(key)};
}

std::unique_ptr<RegistryKey> Win32Registry::Open(RegistryRoot root, std::string_view path,
                                                 RegistryAccess access) {
  const KeyHome place = Place(root, path);
  const bool is_own = IsOwn(place);
  if (access == RegistryAccess::kWrite && !is_own) RefuseOthers(place.key);
  return OpenBelow(Predefined(place.root), place.key, Rights(access),
                   is_own ? Whose::kOwn : Whose::kOthers);
}

std::unique_ptr<RegistryKey> Win32Registry::Create(RegistryRoot root, std::string_view path) {
  const KeyHome place = Place(root, path);
  const std::string& plain = place.key;
  if (!IsOwn(place)) RefuseOthers(plain);
  UniqueKey key;
  const LSTATUS status =
      RegCreateKeyExW(Predefined(place.root), Wide(plain).c_str(), 0, nullptr, 0,
                      Rights(RegistryAccess::kWrite), nullptr, key.Put(), nullptr);
  if (status != ERROR_SUCCESS) {
    throw WindowsError(static_cast<DWORD>(status), "make", "the registry key " + plain);
  }
  return std::make_unique<Win32Key>(std::move(key), plain, Whose::kOwn);
}

}  // namespace quellix
