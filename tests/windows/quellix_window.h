#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "sandbox.h"
#include "ui/resource.h"
#include "window_input.h"

namespace quellix::test {

// One running quellix.exe. Ends with the object.
class QuellixProcess {
 public:
  // Starts the program, the first copy when the last one is gone; `flags` are those of
  // CreateProcess. `token`: with other rights than the tests have.
  explicit QuellixProcess(std::wstring_view arguments = {}, DWORD flags = 0,
                          HANDLE token = nullptr);
  ~QuellixProcess();
  QuellixProcess(const QuellixProcess&) = delete;
  QuellixProcess& operator=(const QuellixProcess&) = delete;

  bool HasEnded() const { return WaitForSingleObject(process_.hProcess, 0) == WAIT_OBJECT_0; }
  // Nothing when it does not end.
  std::optional<DWORD> AwaitExitCode() const;
  void Resume() const { ResumeThread(process_.hThread); }
  // Has the program load a library; throws when it cannot.
  void Load(const fs::path& library) const;
  // A visible window of the program that is no control, whatever it is; null for none.
  HWND AnyWindow() const;

 protected:
  PROCESS_INFORMATION process_{};
};

// One that shows its main window, driven from outside through its controls.
class QuellixWindow : public QuellixProcess {
 public:
  // Starts the program and waits for its main window.
  explicit QuellixWindow(std::wstring_view arguments = {}, HANDLE token = nullptr);

  HWND main() const { return main_; }
  // A visible window of the program, by its title; throws when it does not appear.
  HWND AwaitWindow(std::wstring_view title) const;
  // A message box or other dialog that shows a text which holds `part`; null when it does not
  // appear.
  HWND AwaitMessage(std::wstring_view part) const;
  bool HasWindow(std::wstring_view title) const { return Find(title, {}) != nullptr; }
  bool AwaitMenu() const;
  bool HasMenu() const;
  bool AwaitEnd() const;  // false when it ends with an error
  // Asks the main window to close and waits for the program's end.
  bool Close() const;

  HWND Control(int id) const { return GetDlgItem(main_, id); }
  // An item, by the number of its row, is ticked and is told apart as what cannot be.
  bool IsChecked(int id) const;
  bool IsEnabled(int id) const;
  // Answers a message that shows `part`; false when none appears.
  bool Answer(std::wstring_view part, int button) const;
  // What follows waits until the control and its window take input.
  HWND AwaitControl(int id) const;
  // Clicks a control, or the box of an item or of a group's heading, and returns when its effect is
  // there.
  void Click(int id) const;
  // The row of an item or of a heading in the list of items; throws when it is not there.
  int RowOf(int id) const;
  // Selects that row.
  void Select(int id) const;
  // The state image of a row: 0 none, 1 not ticked, 2 ticked, 3 in part, 4 and 5 dimmed.
  int BoxOf(int id) const;
  // Clicks a control that starts something longer; returns when that has begun.
  void Press(int id) const { test::Press(AwaitControl(id)); }
  // An entry of the main window's menu.
  void Choose(int entry) const;
  // The window that such an entry opens.
  HWND Open(int entry, std::wstring_view title) const;
  void PressKey(HWND control, WPARAM key) const;
  // Where an item's row stands on the screen.
  RECT PlaceOf(int id) const;
  // The right button over an item; false when the program does not answer, as with an open menu.
  bool RightClick(int id) const;
  std::wstring RowText(HWND list, int row, int column) const;
  // The image of a row, from 0.
  int ImageOf(HWND list, int row) const;
  // On the heading of a column: 1 for up, -1 for down, 0 without an arrow.
  int ArrowOf(HWND list, int column) const;
  // Its columns from left to right.
  std::vector<int> ColumnsOf(HWND list) const;
  void SetColumnsOf(HWND list, std::vector<int> columns) const;
  // Chooses a folder in the system's dialog for folders.
  void SelectFolder(HWND browser, const std::wstring& path) const;

 private:
  HWND Find(std::wstring_view title, std::wstring_view window_class) const;
  // Sends a message whose parameter points to `bytes`, which are copied to the program and back.
  LRESULT Exchange(HWND control, UINT message, WPARAM wparam, void* bytes, size_t size) const;

  HWND main_ = nullptr;
};

// A file that is open for as long as this lives; nobody may write or remove it, or, without
// sharing, read it.
class HeldFile {
 public:
  explicit HeldFile(const fs::path& path, DWORD share = FILE_SHARE_READ)
      : file_(CreateFileW(path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr)) {
    if (file_ == INVALID_HANDLE_VALUE) throw std::runtime_error("cannot hold " + path.string());
  }
  ~HeldFile() { CloseHandle(file_); }
  HeldFile(const HeldFile&) = delete;
  HeldFile& operator=(const HeldFile&) = delete;

 private:
  HANDLE file_;
};

}  // namespace quellix::test
