#include "platform/win32/win32_path.h"

#include <winternl.h>

#include <algorithm>
#include <vector>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

bool IsDrive(std::string_view text) {
  return text.size() == 2 && text[1] == ':' && ((text[0] | 0x20) >= 'a' && (text[0] | 0x20) <= 'z');
}

bool AreNames(std::string_view rest) {
  while (!rest.empty()) {
    const size_t end = std::min(rest.find('\\'), rest.size());
    if (!IsName(rest.substr(0, end))) return false;
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return true;
}

// Wine's other call tells no path of 260 characters or more; some memory disks and network drives
// have a device's name only.
std::wstring ObjectPath(const UniqueFile& file) {
  std::vector<char> buffer(sizeof(UNICODE_STRING) + UNICODE_STRING_MAX_BYTES);
  const auto* name = reinterpret_cast<const UNICODE_STRING*>(buffer.data());
  ULONG used = 0;
  if (NtQueryObject(file.Get(), static_cast<OBJECT_INFORMATION_CLASS>(1), buffer.data(),
                    static_cast<ULONG>(buffer.size()), &used) < 0 ||
      name->Length == 0) {
    return {};
  }
  const std::wstring_view path(name->Buffer, name->Length / sizeof(wchar_t));
  if (path.starts_with(L"\\??\\")) return L"\\\\?\\" + std::wstring(path.substr(4));
  return L"\\\\?\\GLOBALROOT" + std::wstring(path);
}

}  // namespace

bool IsName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." &&
         std::none_of(name.begin(), name.end(), [](char c) {
           return static_cast<unsigned char>(c) < 0x20 ||
                  std::string_view("*?<>\"|/\\:").find(c) != std::string_view::npos;
         });
}

std::optional<std::wstring> ToWidePath(std::string_view path) {
  const std::string_view plain = WithoutBackslash(path);
  if (plain.starts_with("\\\\")) {
    const std::string_view share = plain.substr(2);
    if (share.find('\\') == std::string_view::npos || !AreNames(share)) return std::nullopt;
    return L"\\\\?\\UNC\\" + Wide(share);
  }
  if (IsDrive(plain)) return L"\\\\?\\" + Wide(plain) + L"\\";
  if (plain.size() < 4 || plain[2] != '\\' || !IsDrive(plain.substr(0, 2))) return std::nullopt;
  if (!AreNames(plain.substr(3))) return std::nullopt;
  return L"\\\\?\\" + Wide(plain);
}

std::wstring WidePath(const char* cannot, std::string_view path) {
  if (auto wide = ToWidePath(path)) return *std::move(wide);
  throw Error(Error::Kind::kMissing,
              Say(cannot, path, Say("this is not the full path of a file or folder.")));
}

UniqueFile OpenItself(const std::wstring& wide, DWORD access, DWORD share) {
  return UniqueFile(CreateFileW(wide.c_str(), access, share, nullptr, OPEN_EXISTING,
                                FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                                nullptr));
}

// The path of what another thread has just moved may be none.
std::wstring NtPath(std::wstring_view wide) {
  wide.remove_prefix(std::min<size_t>(4, wide.size()));
  return L"\\??\\" + std::wstring(wide);
}

std::wstring FinalPath(const UniqueFile& file) {
  std::wstring path = GrowingText([&](wchar_t* text, uint32_t size) {
    return GetFinalPathNameByHandleW(file.Get(), text, size, VOLUME_NAME_DOS);
  });
  if (path.empty()) path = ObjectPath(file);
  if (path.ends_with(L'\\')) path.pop_back();
  return path;
}

bool SamePath(std::wstring_view a, std::wstring_view b) {
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                              static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

}  // namespace quellix
