#pragma once

#include <functional>
#include <string>

#include "run/list_totals.h"
#include "ui/windows_api.h"

namespace quellix {

// What stands around the rows of a list: below it a line with their totals, for which the list
// gives up some of its room; in the place of rows, where there are none, why; and on a button how
// many are ticked.
class ListFooter {
 public:
  // A button is disabled while it would do nothing, and while `may` says no.
  struct Button {
    HWND window = nullptr;
    std::string caption = {};  // without its figures
    std::function<bool()> may = {};
  };

  // From now on `list` has a line below it. Its number is that of the list and lblTotals.
  void Attach(HWND list, const Locale& locale);
  void SetButton(HWND button, std::function<bool()> may);
  // A sentence or two: why there are no rows, and what to do.
  void SetEmpty(std::function<std::string()> why) { why_empty_ = std::move(why); }

  bool is_attached() const { return line_ != nullptr; }
  void Show(const ListTotals& totals) const;
  // In place of the rows of a list that has none.
  void PaintEmpty(HDC target) const;

 private:
  static LRESULT CALLBACK Follow(HWND list, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR id,
                                 DWORD_PTR line);
  void ShowButton(const ListTotals& totals) const;

  HWND list_ = nullptr, line_ = nullptr;
  Locale locale_;
  Button button_;
  std::function<std::string()> why_empty_;
};

}  // namespace quellix
