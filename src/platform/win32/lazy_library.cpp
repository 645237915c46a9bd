#include "platform/win32/lazy_library.h"

#include "platform/win32/win32_error.h"
#include "platform/win32/win32_text.h"

namespace quellix {

void SearchSystemFolderOnly() {
  using Function = BOOL(WINAPI*)(DWORD);
  const auto set = reinterpret_cast<Function>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetDefaultDllDirectories")));
  if (set != nullptr) set(LOAD_LIBRARY_SEARCH_SYSTEM32);
}

void* LazyLibrary::FindAddress(const char* name) {
  if (library_ == nullptr) {
    const std::wstring folder = GrowingText([](wchar_t* text, uint32_t size) {
      return static_cast<uint32_t>(GetSystemDirectoryW(text, size));
    });
    library_ = LoadLibraryW((folder + L"\\" + name_).c_str());
    if (library_ == nullptr) ThrowLastError(Mark("Cannot load %1: %2"), Narrow(name_));
  }
  const auto found = reinterpret_cast<void*>(GetProcAddress(library_, name));
  if (found == nullptr) ThrowLastError(Cannot::kUse, name);
  return found;
}

}  // namespace quellix
