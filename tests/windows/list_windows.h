// The lists of all windows, and what they need to have rows.
#pragma once

#include <gtest/gtest.h>

#include <span>
#include <string>

#include "quellix_window.h"

namespace quellix::test {

struct ListCase {
  const char* name;
  HWND (*open)(const QuellixWindow& window);
  int list;
  const wchar_t* path;                // what "Copy path" copies of the first row; null for none
  const wchar_t* question = nullptr;  // before Del deletes; null where it deletes nothing
  int yes = kYes, no = IDCANCEL;      // the answers to it
  bool single = false;                // one row at most is selected
  int button = 0;                     // acts on the ticked rows; 0 for none
  const wchar_t* begins = nullptr;    // a row that Del deletes; null for the first
};
std::span<const ListCase> ListCases();
const ListCase& ListNamed(std::string_view name);

// A sandbox in which each of the lists has some rows, for as long as it lives.
class SeededLists {
 public:
  SeededLists();
  ~SeededLists() { CleanUp(); }
  SeededLists(const SeededLists&) = delete;
  SeededLists& operator=(const SeededLists&) = delete;

 private:
  static void SeedRegistry();
  static void SeedCookies();
  static void CleanUp();

  static inline std::wstring cookies_before_;  // where they were; "" for as they are
};

// One list of a window, with the keyboard on it.
struct OpenList {
  const QuellixWindow& window;
  HWND list, top;

  OpenList(const QuellixWindow& program, HWND list_window)
      : window(program), list(list_window), top(GetAncestor(list_window, GA_ROOT)) {
    AwaitInput(list);
    // Behind all rows: a click there takes the keyboard and ticks nothing.
    RECT client{};
    GetClientRect(list, &client);
    for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONUP})
      SendMessageW(list, message, MK_LBUTTON, MAKELPARAM(client.right - 3, client.bottom - 3));
  }
  int Rows() const { return CountRows(list); }
  std::wstring First() const { return window.RowText(list, 0, 0); }
  std::wstring Last() const { return window.RowText(list, Rows() - 1, 0); }
  int Focused() const {
    return static_cast<int>(
        SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED));
  }
  int Selected() const { return static_cast<int>(SendMessageW(list, LVM_GETSELECTEDCOUNT, 0, 0)); }
  void SelectFirst() const {
    for (const WPARAM key : {VK_END, VK_HOME}) window.PressKey(list, key);
  }
  void ClickHeading() const {
    const HWND header = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
    for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONUP})
      SendMessageW(header, message, MK_LBUTTON, MAKELPARAM(20, 8));
    AwaitInput(list);  // which may have something to read then
  }
  // The selected rows as they are to be copied.
  std::wstring Text(int rows) const {
    const HWND header = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
    const int columns = static_cast<int>(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
    std::wstring text;
    for (int row = 0; row < rows; ++row) {
      for (int column = 0; column < columns; ++column)
        text += (column == 0 ? L"" : L"\t") + window.RowText(list, row, column);
      text += L"\r\n";
    }
    return text;
  }
};

}  // namespace quellix::test
