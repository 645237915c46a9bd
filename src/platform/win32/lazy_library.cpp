#include "platform/win32/lazy_library.h"

#include "platform/win32/win32_error.h"
#include "platform/win32/win32_text.h"

namespace quellix {

void* LazyLibrary::FindAddress(const char* name) {
  if (library_ == nullptr) {
    const std::wstring folder = GrowingText([](wchar_t* text, uint32_t size) {
      return static_cast<uint32_t>(GetSystemDirectoryW(text, size));
    });
    library_ = LoadLibraryW((folder + L"\\" + name_).c_str());
    if (library_ == nullptr) ThrowLastError("load", Narrow(name_));
  }
  const auto found = reinterpret_cast<void*>(GetProcAddress(library_, name));
  if (found == nullptr) ThrowLastError("use", name);
  return found;
}

}  // namespace quellix
