// By ear alone: every control of every window is told apart by its name and its role.
#include "screen_reader.h"

#include <gtest/gtest.h>

#include <vector>

#include "options_window.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

// The program's file, looked into without starting it; its templates are made with the looks and
// controls that its manifest asks for.
class ProgramFile {
 public:
  ProgramFile()
      : path_((ProgramFolder() / L"quellix.exe").wstring()),
        module_(LoadLibraryExW(path_.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE)) {
    ACTCTXW context{};
    context.cbSize = sizeof context;
    context.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID;
    context.lpSource = path_.c_str();
    context.lpResourceName = MAKEINTRESOURCEW(1);
    context_ = CreateActCtxW(&context);
    ActivateActCtx(context_, &cookie_);
    const HMODULE controls = LoadLibraryW(L"comctl32.dll");
    const INITCOMMONCONTROLSEX classes{sizeof classes, 0xFFFF};
    using Init = BOOL(WINAPI*)(const INITCOMMONCONTROLSEX*);
    reinterpret_cast<Init>(
        reinterpret_cast<void*>(GetProcAddress(controls, "InitCommonControlsEx")))(&classes);
  }
  ~ProgramFile() {
    DeactivateActCtx(0, cookie_);
    ReleaseActCtx(context_);
    FreeLibrary(module_);
  }
  ProgramFile(const ProgramFile&) = delete;
  ProgramFile& operator=(const ProgramFile&) = delete;

  std::vector<const wchar_t*> Dialogs() const {
    std::vector<const wchar_t*> names;
    EnumResourceNamesW(
        module_, RT_DIALOG,
        [](HMODULE, const wchar_t*, wchar_t* name, LONG_PTR list) {
          reinterpret_cast<std::vector<const wchar_t*>*>(list)->push_back(name);
          return TRUE;
        },
        reinterpret_cast<LONG_PTR>(&names));
    return names;
  }
  HWND Make(const wchar_t* dialog, HWND parent) const {
    return CreateDialogParamW(
        module_, dialog, parent, [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0);
  }

 private:
  std::wstring path_;
  HMODULE module_;
  HANDLE context_ = nullptr;
  ULONG_PTR cookie_ = 0;
};

TEST(ScreenReaderTest, EveryControlOfEveryWindowHasAName) {
  const ProgramFile program;
  const std::vector<const wchar_t*> dialogs = program.Dialogs();
  EXPECT_GE(dialogs.size(), 28u);
  const HWND parent = CreateWindowW(L"Static", L"", 0, 0, 0, 10, 10, nullptr, nullptr, nullptr, 0);
  for (const wchar_t* const dialog : dialogs) {
    SCOPED_TRACE(reinterpret_cast<size_t>(dialog));
    const HWND window = program.Make(dialog, parent);
    ASSERT_TRUE(window) << GetLastError();
    ExpectNames(window);
    DestroyWindow(window);
  }
  DestroyWindow(parent);
}

using SpokenWindowTest = SandboxTest;

TEST_F(SpokenWindowTest, WhatIsShownIsSpoken) {
  WriteBytes(TempFolder() / "a.tmp", "12345");
  const QuellixWindow window;
  window.Select(chkTemp);
  ExpectSpoken(window.main());
  window.Click(chkTemp);
  window.Press(cmdPreview);
  const HWND preview = window.AwaitWindow(L"Preview");
  ExpectSpoken(preview);
  ASSERT_TRUE(CloseAndAwait(preview));
  ExpectSpoken(window.main());  // now with the entries
  window.Press(cmdClean);
  const HWND log = window.AwaitWindow(L"Cleaning log");
  ExpectSpoken(log);
  ASSERT_TRUE(CloseAndAwait(log));
  const OptionsWindow options(window);
  for (int page = 0; page < kOptionsPages; ++page) {
    SCOPED_TRACE(page);
    options.GoTo(OptionsPage(page));
    ExpectSpoken(options.window());
  }
}

}  // namespace
}  // namespace quellix::test
