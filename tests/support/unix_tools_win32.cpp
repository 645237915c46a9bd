#include "support/unix_tools_win32.h"

#include <windows.h>

#include <stdexcept>

#include "platform/win32/unique.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

constexpr std::wstring_view kScratch = L"C:\\QxScratch";

using GetUnixName = char*(CDECL*)(const wchar_t*);

GetUnixName UnixNameFunction() {
  return reinterpret_cast<GetUnixName>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
}

// Only the scratch folder is asked for: below it, names stand as they were made, and asking Wine
// for a link would answer with its target.
std::wstring UnixPath(const std::wstring& path) {
  const bool inside = path.starts_with(kScratch) && path.find(L"..") == path.npos &&
                      (path.size() == kScratch.size() || path[kScratch.size()] == L'\\');
  if (!inside) throw std::runtime_error("a test's link must stay in the scratch folder");
  char* scratch = UnixNameFunction()(std::wstring(kScratch).c_str());
  if (!scratch) throw std::runtime_error("the scratch folder has no Unix name");
  std::wstring unix_path = Wide(scratch) + path.substr(kScratch.size());
  HeapFree(GetProcessHeap(), 0, scratch);
  for (wchar_t& c : unix_path) c = c == L'\\' ? L'/' : c;
  return L'"' + unix_path + L'"';
}

void Run(const std::wstring& tool, const std::wstring& arguments) {
  std::wstring command = L"\\\\?\\unix\\usr\\bin\\" + tool + L" " + arguments;
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, L"C:\\", &start,
                      &process)) {
    throw std::runtime_error("cannot start " + Narrow(tool));
  }
  const UniqueHandle handle(process.hProcess), thread(process.hThread);
  WaitForSingleObject(handle.Get(), INFINITE);
  DWORD code = 1;
  GetExitCodeProcess(handle.Get(), &code);
  if (code != 0) throw std::runtime_error(Narrow(tool) + " failed");
}

}  // namespace

bool RunsUnderWine() { return UnixNameFunction() != nullptr; }

void MakeUnixLink(const std::wstring& link, const std::wstring& target) {
  Run(L"ln", L"-sT " + UnixPath(target) + L" " + UnixPath(link));
}

void RemoveUnixLinks(const std::wstring& folder) {
  Run(L"find", L"-P " + UnixPath(folder) + L" -type l -delete");
}

}  // namespace quellix
