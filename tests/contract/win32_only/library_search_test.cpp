#include <windows.h>

#include "platform/win32/lazy_library.h"
#include "platform/win32/win32_text.h"
#include "support/test_machine.h"

namespace quellix {
namespace {

// A library of the name stands in the folder that is looked into before the system's.
TEST(LibrarySearch, OnlyTheSystemFolderIsLookedInto) {
  const auto test = TestMachine::Create();
  const auto loads = [](const wchar_t* name) {
    const HMODULE library = LoadLibraryW(name);
    if (library != nullptr) FreeLibrary(library);
    return library != nullptr;
  };
  const std::wstring planted = Wide(test->Scratch()) + L"qxplanted.dll";
  ASSERT_TRUE(CopyFileW(L"C:\\windows\\system32\\version.dll", planted.c_str(), FALSE));
  SetDllDirectoryW(Wide(test->Scratch()).c_str());
  EXPECT_TRUE(loads(L"qxplanted.dll"));
  SearchSystemFolderOnly();
  EXPECT_TRUE(!loads(L"qxplanted.dll") && loads(L"version.dll"));
  LazyLibrary lazy(L"version.dll");
  EXPECT_NO_THROW(lazy.Find<FARPROC>("GetFileVersionInfoSizeW"));
  SetDllDirectoryW(nullptr);
}

}  // namespace
}  // namespace quellix
