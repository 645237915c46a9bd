#include "support/unix_tools_win32.h"

#include <windows.h>

#include <stdexcept>

#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

constexpr std::wstring_view kScratch = L"C:\\QxScratch";
constexpr const wchar_t* kDone = L"C:\\QxDone";

using GetUnixName = char*(CDECL*)(const wchar_t*);

GetUnixName UnixNameFunction() {
  return reinterpret_cast<GetUnixName>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
}

std::wstring UnixName(const wchar_t* path) {
  char* name = UnixNameFunction()(path);
  if (!name) throw std::runtime_error("a folder of the tests has no Unix name");
  std::wstring wide = Wide(name);
  HeapFree(GetProcessHeap(), 0, name);
  return wide;
}

// Only the scratch folder is asked for: below it, names stand as they were made, and asking Wine
// for a link would answer with its target.
std::wstring InScratch(const std::wstring& path) {
  const bool inside = path.starts_with(kScratch) && (path + L"\\").find(L"\\..\\") == path.npos &&
                      path.find_first_of(L"'\"") == path.npos &&
                      (path.size() == kScratch.size() || path[kScratch.size()] == L'\\');
  if (!inside) throw std::runtime_error("a test's link must stay in the scratch folder");
  std::wstring unix_path = UnixName(std::wstring(kScratch).c_str()) + path.substr(kScratch.size());
  for (wchar_t& c : unix_path) c = c == L'\\' ? L'/' : c;
  return L"'" + unix_path + L"'";
}

// Wine gives no handle to wait for, so the command leaves a file when it has succeeded.
void Run(const std::wstring& tool) {
  DeleteFileW(kDone);
  std::wstring command =
      L"\\\\?\\unix\\bin\\sh -c \"" + tool + L" && : > '" + UnixName(L"C:\\") + L"/QxDone'\"";
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  bool done = CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, L"C:\\",
                             &start, &process);
  for (int tries = 0; done && tries < 5000; ++tries) {
    if (DeleteFileW(kDone)) return;
    Sleep(2);
  }
  throw std::runtime_error("failed: " + Narrow(tool));
}

}  // namespace

bool RunsUnderWine() { return UnixNameFunction() != nullptr; }

void MakeUnixLink(const std::wstring& link, const std::wstring& target) {
  Run(L"ln -sT " + InScratch(target) + L" " + InScratch(link));
}

void RemoveUnixLinks(const std::wstring& folder) {
  Run(L"find -P " + InScratch(folder) + L" -type l -delete");
}

}  // namespace quellix
