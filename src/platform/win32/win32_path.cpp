#include "platform/win32/win32_path.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

bool IsDrive(std::string_view text) {
  return text.size() == 2 && text[1] == ':' && ((text[0] | 0x20) >= 'a' && (text[0] | 0x20) <= 'z');
}

bool IsName(std::string_view component) {
  return !component.empty() && component != "." && component != ".." &&
         std::none_of(component.begin(), component.end(), [](char c) {
           return static_cast<unsigned char>(c) < 0x20 ||
                  std::string_view("*?<>\"|/:").find(c) != std::string_view::npos;
         });
}

bool AreNames(std::string_view rest) {
  while (!rest.empty()) {
    const size_t end = std::min(rest.find('\\'), rest.size());
    if (!IsName(rest.substr(0, end))) return false;
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return true;
}

std::wstring FinalPath(const UniqueFile& file, DWORD form) {
  return GrowingText([&](wchar_t* text, uint32_t size) {
    return GetFinalPathNameByHandleW(file.Get(), text, size, form);
  });
}

}  // namespace

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

std::wstring WidePath(std::string_view action, std::string_view path) {
  if (auto wide = ToWidePath(path)) return *std::move(wide);
  throw Error(Error::Kind::kMissing, "Cannot " + std::string(action) + " " + std::string(path) +
                                         ": this is not the full path of a file or folder.");
}

UniqueFile OpenItself(const std::wstring& wide, DWORD access, DWORD share) {
  return UniqueFile(CreateFileW(wide.c_str(), access, share, nullptr, OPEN_EXISTING,
                                FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                                nullptr));
}

std::wstring FinalPath(const UniqueFile& file) {
  std::wstring path = FinalPath(file, VOLUME_NAME_DOS);
  // Some memory disks and network drives have a device's name only.
  if (path.empty()) path = FinalPath(file, VOLUME_NAME_NT);
  if (path.ends_with(L'\\')) path.pop_back();
  return path;
}

bool SamePath(std::wstring_view a, std::wstring_view b) {
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                              static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

}  // namespace quellix
