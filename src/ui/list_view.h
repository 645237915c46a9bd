#pragma once

#include <functional>
#include <span>
#include <string>

#include "ui/handles.h"
#include "ui/windows_api.h"

namespace quellix {

struct Column {
  const wchar_t* title;
  int width;  // 96-DPI units
};

struct Cell {
  std::wstring text;
  int image = -1;  // of the images given, from 0; only the first column shows one
};

// A list in report form whose rows live elsewhere and are asked for when they are shown.
class ListView {
 public:
  using Provider = std::function<Cell(int row, int column)>;

  // `list` is an owner-data list view and outlives its use here.
  void Attach(HWND list, std::span<const Column> columns, Provider provider);
  // Images and column widths for a resolution. `icons` are resources of the program.
  void SetResolution(int dpi, std::span<const Column> columns, std::span<const int> icons);
  void SetRows(int count);
  // True when the notification was this list's and is answered.
  bool OnNotify(NMHDR& header);

 private:
  HWND list_ = nullptr;
  Provider provider_;
  UniqueImages images_;
};

}  // namespace quellix
