#include <windows.h>
// After windows.h, whose types it uses.
#include <winver.h>

#include <cstdio>
#include <vector>

#include "platform/error.h"
#include "platform/file_version.h"
#include "platform/text.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

LazyLibrary version_library(L"version.dll");

constexpr DWORD kLargestVersion = 1 << 20;  // bytes

std::vector<BYTE> LoadVersion(const std::wstring& path) {
  static const auto size_of =
      version_library.Find<decltype(&GetFileVersionInfoSizeW)>("GetFileVersionInfoSizeW");
  static const auto load =
      version_library.Find<decltype(&GetFileVersionInfoW)>("GetFileVersionInfoW");
  DWORD unused = 0;
  const DWORD size = size_of(path.c_str(), &unused);
  if (size == 0 || size > kLargestVersion) return {};
  std::vector<BYTE> bytes(size);
  if (!load(path.c_str(), 0, size, bytes.data())) bytes.clear();
  return bytes;
}

// A part of it, "" when it has none.
std::wstring_view Part(const std::vector<BYTE>& bytes, const std::wstring& name) {
  static const auto query = version_library.Find<decltype(&VerQueryValueW)>("VerQueryValueW");
  void* part = nullptr;
  UINT size = 0;
  if (!query(bytes.data(), name.c_str(), &part, &size) || part == nullptr) return {};
  // The size is the file's word.
  const auto* const start = static_cast<const BYTE*>(part);
  const BYTE* const end = bytes.data() + bytes.size();
  if (start < bytes.data() || start >= end) return {};
  const auto room = static_cast<size_t>(end - start) / sizeof(wchar_t);
  return {static_cast<const wchar_t*>(part), std::min<size_t>(size, room)};
}

// The first of its languages; English where it names none.
std::wstring TableName(const std::vector<BYTE>& bytes) {
  const std::wstring_view languages = Part(bytes, L"\\VarFileInfo\\Translation");
  wchar_t name[] = L"\\StringFileInfo\\040904b0\\";
  // Its length is in bytes.
  if (languages.size() >= 4) {
    std::swprintf(name, std::size(name), L"\\StringFileInfo\\%04x%04x\\", unsigned{languages[0]},
                  unsigned{languages[1]});
  }
  return name;
}

std::string TextOf(const std::vector<BYTE>& bytes, const std::wstring& name) {
  const std::string text = Narrow(Part(bytes, name));
  return std::string(TrimBlanks(TrimNull(text)));
}

}  // namespace

std::optional<FileVersion> ReadFileVersion(FileSystem&, std::string_view path) {
  try {
    const std::vector<BYTE> bytes = LoadVersion(Wide(path));
    if (bytes.empty()) return std::nullopt;
    const std::wstring table = TableName(bytes);
    return FileVersion{.company = TextOf(bytes, table + L"CompanyName"),
                       .description = TextOf(bytes, table + L"FileDescription"),
                       .product = TextOf(bytes, table + L"ProductName"),
                       .version = TextOf(bytes, table + L"FileVersion")};
  } catch (const Error&) {  // a Windows without that library
    return std::nullopt;
  }
}

}  // namespace quellix
