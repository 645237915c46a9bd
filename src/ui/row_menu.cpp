#include "ui/row_menu.h"

#include <shellapi.h>

#include "platform/error.h"
#include "platform/text.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "settings/path_check.h"
#include "ui/clipboard.h"
#include "ui/window_prompts.h"
#include "ui/window_words.h"

namespace quellix {
namespace {

// Beyond all numbers of resources; the columns come last.
enum Entry : int {
  kOpenFolder = 30000,
  kOpenKey,
  kCopyPath,
  kProperties,
  kTick,
  kUntick,
  kErase,
  kSortBy
};

void Add(HMENU menu, int id, const wchar_t* text, bool enabled) {
  AppendMenuW(menu, MF_STRING | (enabled ? MF_ENABLED : MF_GRAYED), static_cast<UINT_PTR>(id),
              text);
}

void Add(HMENU menu, int id, const std::string& text, bool enabled) {
  Add(menu, id, Wide(text).c_str(), enabled);
}

void Tell(HWND window, const std::string& sentence) {
  ShowBox(window, sentence, MB_OK | MB_ICONINFORMATION);
}

// The editor opens at the key that it showed last.
void OpenRegistryEditor(HWND window, const std::string& key) {
  const std::wstring last = Wide(key);
  RegSetKeyValueW(HKEY_CURRENT_USER,
                  L"Software\\Microsoft\\Windows\\CurrentVersion\\Applets\\Regedit", L"LastKey",
                  REG_SZ, last.c_str(), static_cast<DWORD>((last.size() + 1) * sizeof(wchar_t)));
  const auto result = reinterpret_cast<INT_PTR>(
      ShellExecuteW(window, L"open", L"regedit.exe", L"/m", nullptr, SW_SHOWNORMAL));
  if (result > 32) return;
  Tell(window,
       Tr("The registry editor could not be started (error %1). Start regedit yourself; the "
          "key is %2",
          std::to_string(result), key));
}

}  // namespace

RowPlace PlaceNamedBy(std::string_view text) {
  if (EqualsNoCase(text.substr(0, 5), "HKEY_")) {
    return {.key = std::string(text.substr(0, text.find('|')))};
  }
  return WhyNoPath(text).empty() ? RowPlace{.path = std::string(text)} : RowPlace{};
}

RowPlace RowMenu::Focused() const {
  const int row = list.FocusedRow();
  return row < 0 || list.CountSelected() == 0 ? RowPlace{} : place_of(static_cast<size_t>(row));
}

void RowMenu::Fill(HMENU menu) const {
  const RowPlace place = Focused();
  Add(menu, kOpenFolder, Tr("&Open file location"), !place.path.empty());
  Add(menu, kOpenKey, Tr("Open &key in the registry editor"), !place.key.empty());
  Add(menu, kCopyPath, Tr("Copy &path"), !place.path.empty() || !place.key.empty());
  Add(menu, kProperties, Tr("P&roperties"), !place.path.empty());
  AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
  Add(menu, kTick, Tr("&Tick"), list.CanTick(true));
  Add(menu, kUntick, Tr("&Untick"), list.CanTick(false));
  Add(menu, kErase, Tr("&Delete\tDel"), list.CanErase());
  AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
  const HMENU columns = CreatePopupMenu();
  int id = kSortBy;
  for (const std::wstring& title : list.Titles()) Add(columns, id++, title.c_str(), true);
  AppendMenuW(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(columns), Wide(Tr("Sort &by")).c_str());
  if (own != 0) AddOwn(menu);
}

void RowMenu::AddOwn(HMENU menu) const {
  const UniqueMenu loaded = LoadProgramMenu(own);
  const HMENU entries = GetSubMenu(loaded.Get(), 0);
  AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
  for (int i = 0; i < GetMenuItemCount(entries); ++i) {
    wchar_t text[128] = {};
    GetMenuStringW(entries, static_cast<UINT>(i), text, 128, MF_BYPOSITION);
    const auto id = static_cast<int>(GetMenuItemID(entries, i));
    text[0] ? Add(menu, id, text, is_enabled(id))
            : static_cast<void>(AppendMenuW(menu, MF_SEPARATOR, 0, nullptr));
  }
}

int RowMenu::Show(HWND window, POINT screen) const {
  const UniqueMenu menu(CreatePopupMenu());
  Fill(menu.Get());
  const POINT place = list.MenuPlace(screen);
  const int chosen = TrackPopupMenu(menu.Get(), TPM_RETURNCMD | TPM_RIGHTBUTTON, place.x, place.y,
                                    0, window, nullptr);
  if (chosen < kOpenFolder) return chosen;
  try {
    Do(window, chosen);
  } catch (const Error& error) {
    Tell(window, Shown(error));
  }
  return 0;
}

void RowMenu::Do(HWND window, int chosen) const {
  switch (chosen) {
    case kOpenFolder:
      return shell.OpenFolderOf(Focused().path);
    case kOpenKey:
      return OpenRegistryEditor(window, Focused().key);
    case kCopyPath:
      return CopyPaths(window);
    case kProperties:
      return shell.ShowProperties(Focused().path);
    case kTick:
    case kUntick:
      return list.TickSelected(chosen == kTick);
    case kErase:
      return list.Erase();
    default:
      return list.SortBy(chosen - kSortBy);
  }
}

// One alone without an end of its line, to be put into a field.
void RowMenu::CopyPaths(HWND window) const {
  std::string text;
  for (const size_t row : list.SelectedRows()) {
    const RowPlace place = place_of(row);
    const std::string& line = place.path.empty() ? place.key : place.path;
    if (!line.empty()) text += (text.empty() ? "" : "\r\n") + line;
  }
  if (!text.empty()) PutIntoClipboard(window, Wide(text));
}

}  // namespace quellix
