#include "ui/frm_backups.h"

#include <shellapi.h>
#include <shlobj.h>

#include <algorithm>

#include "engine.h"
#include "platform/error.h"
#include "platform/text.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/win32_text.h"
#include "ui/dpi.h"

namespace quellix {
namespace {

constexpr Column kOfArchives[kArchiveColumns] = {{L"Drive", 130},
                                                 {L"Date", 190},
                                                 {L"Files", 110, true},
                                                 {L"Size (bytes)", 140, true},
                                                 {L"State", 150}};
constexpr Column kOfEntries[kEntryColumns] = {{L"Path", 200},
                                              {L"Size (bytes)", 90, true},
                                              {L"Date", 145},
                                              {L"Attributes", 75},
                                              {L"State", 80}};

constexpr Anchor kAnchors[] = {
    {lstvArchives, 0, 0, 1, 0.3}, {lblEntries, 0, 0.3, 1, 0.3}, {lstvEntries, 0, 0.3, 1, 1},
    {lblOverwrite, 0, 1, 0, 1},   {cboOverwrite, 0, 1, 0, 1},   {lblOutcome, 0, 1, 0, 1},
    {txtOutcome, 0, 1, 1, 1},     {cmdView, 0, 1, 0, 1},        {cmdRestoreSelected, 0, 1, 0, 1},
    {cmdRestoreAll, 0, 1, 0, 1},  {cmdRestoreInto, 0, 1, 0, 1}, {cmdDeleteArchive, 0, 1, 0, 1},
    {IDCANCEL, 1, 1, 1, 1},
};

struct ModeText {
  OverwriteMode mode;
  const wchar_t* text;
};
constexpr ModeText kModeTexts[] = {{OverwriteMode::kAsk, L"Ask"},
                                   {OverwriteMode::kAlways, L"Replace it always"},
                                   {OverwriteMode::kNewer, L"Replace it when older"},
                                   {OverwriteMode::kNever, L"Leave it always"}};

// An edit control wants both characters at a line's end.
std::string WithCarriageReturns(const std::string& lines) {
  return ReplaceNoCase(lines, "\n", "\r\n");
}

INT_PTR CALLBACK OverwriteProcedure(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_INITDIALOG) {
    SetDlgItemTextW(dialog, txtTarget, reinterpret_cast<const wchar_t*>(lparam));
    SetFocus(GetDlgItem(dialog, IDNO));
    return FALSE;
  }
  if (message != WM_COMMAND) return FALSE;
  const int id = LOWORD(wparam);
  if (id != txtTarget) EndDialog(dialog, id);
  return TRUE;
}

// The folder the user chose, "" for none.
std::string AskForFolder(HWND owner) {
  static LazyLibrary shell32(L"shell32.dll"), ole32(L"ole32.dll");
  ole32.Find<decltype(&CoInitialize)>("CoInitialize")(nullptr);
  BROWSEINFOW dialog{};
  dialog.hwndOwner = owner;
  dialog.lpszTitle = L"Restore into this folder:";
  dialog.ulFlags = BIF_RETURNONLYFSDIRS | BIF_NEWDIALOGSTYLE;
  const auto browse = shell32.Find<decltype(&SHBrowseForFolderW)>("SHBrowseForFolderW");
  const auto path_of = shell32.Find<decltype(&SHGetPathFromIDListW)>("SHGetPathFromIDListW");
  wchar_t path[MAX_PATH] = {};
  if (LPITEMIDLIST chosen = browse(&dialog)) {
    path_of(chosen, path);
    ole32.Find<decltype(&CoTaskMemFree)>("CoTaskMemFree")(chosen);
  }
  ole32.Find<decltype(&CoUninitialize)>("CoUninitialize")();
  return Narrow(path);
}

bool OpenByShell(HWND owner, const std::string& path) {
  static LazyLibrary shell32(L"shell32.dll");
  const auto open = shell32.Find<decltype(&ShellExecuteW)>("ShellExecuteW");
  const HINSTANCE result =
      open(owner, nullptr, Wide(path).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
  return reinterpret_cast<INT_PTR>(result) > 32;  // smaller ones are errors
}

}  // namespace

void FrmBackups::Show(HWND owner) {
  const HCURSOR arrow = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
  browser_.emplace(machine_);
  SetCursor(arrow);
  owner_ = owner;
  Create(frmBackups, owner);
  EnableWindow(owner, FALSE);
  ShowWindow(window(), SW_SHOW);
}

void FrmBackups::OnInit() {
  layout().Add(kAnchors);
  archives_.Attach(Control(lstvArchives), kOfArchives, [this](int row, int column) {
    return Cell{Wide(browser_->ArchiveText(static_cast<size_t>(row), ArchiveColumn(column)))};
  });
  entries_.Attach(Control(lstvEntries), kOfEntries, [this](int row, int column) {
    return Cell{Wide(browser_->EntryText(static_cast<size_t>(row), EntryColumn(column)))};
  });
  for (const ModeText& row : kModeTexts) {
    SendDlgItemMessageW(window(), cboOverwrite, CB_ADDSTRING, 0,
                        reinterpret_cast<LPARAM>(row.text));
  }
  const auto mode = std::ranges::find(kModeTexts, browser_->mode(), &ModeText::mode);
  SendDlgItemMessageW(window(), cboOverwrite, CB_SETCURSEL,
                      static_cast<WPARAM>(mode - std::begin(kModeTexts)), 0);
  ShowArchives();
  ShowEntries();
}

void FrmBackups::OnResolution() {
  archives_.SetResolution(dpi(), kOfArchives, {});
  entries_.SetResolution(dpi(), kOfEntries, {});
}

void FrmBackups::OnSized() {
  archives_.FillWith(static_cast<int>(ArchiveColumn::kState), Scale(100, dpi()));
  entries_.FillWith(static_cast<int>(EntryColumn::kPath), Scale(kOfEntries[0].width, dpi()));
}

void FrmBackups::ShowArchives() {
  filling_ = true;
  archives_.SetRows(static_cast<int>(browser_->ArchiveCount()));
  if (browser_->Chosen()) archives_.Select(browser_->ChosenRow());
  archives_.ShowOrder(static_cast<int>(browser_->archive_order().column),
                      browser_->archive_order().descending);
  filling_ = false;
}

void FrmBackups::ShowEntries() {
  filling_ = true;
  entries_.SetRows(static_cast<int>(browser_->EntryCount()));
  SetText(lblEntries, "&" + ReplaceNoCase(browser_->EntriesTitle(), "&", "&&"));
  entries_.ShowOrder(static_cast<int>(browser_->entry_order().column),
                     browser_->entry_order().descending);
  filling_ = false;
  EnableCommands();
  ShowOutcome();
}

void FrmBackups::ShowOutcome() { SetText(txtOutcome, WithCarriageReturns(browser_->outcome())); }

// The focus moves along: a disabled button would swallow the keyboard.
void FrmBackups::EnableCommands() {
  const BackupBrowser::Commands can =
      browser_->Available(static_cast<size_t>(entries_.CountSelected()));
  const std::pair<int, bool> kCommands[] = {{cmdView, can.view},
                                            {cmdRestoreSelected, can.restore_selected},
                                            {cmdRestoreAll, can.restore_all},
                                            {cmdRestoreInto, can.restore_into},
                                            {cmdDeleteArchive, can.delete_archive}};
  for (const auto& [id, enabled] : kCommands) {
    if (!enabled && GetFocus() == Control(id)) {
      SendMessageW(window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(lstvArchives)), TRUE);
    }
    EnableWindow(Control(id), enabled);
  }
}

void FrmBackups::OnCommand(int id, int code) {
  if (working_) return;
  switch (id) {
    case cboOverwrite:
      if (code == CBN_SELCHANGE) ChangeMode();
      return;
    case cmdView:
      return View();
    case cmdRestoreSelected:
    case cmdRestoreAll:
    case cmdRestoreInto:
      return Restore(id);
    case cmdDeleteArchive:
      return DeleteArchive();
    case IDCANCEL:
      return OnClose();
  }
}

LRESULT FrmBackups::OnNotify(NMHDR& header) {
  if (archives_.OnNotify(header) || entries_.OnNotify(header) || filling_ || working_) return 0;
  if (header.idFrom == lstvArchives) OnArchivesNotify(header);
  if (header.idFrom == lstvEntries) OnEntriesNotify(header);
  return 0;
}

void FrmBackups::OnArchivesNotify(const NMHDR& header) {
  const auto& item = reinterpret_cast<const NMLISTVIEW&>(header);
  if (header.code == LVN_COLUMNCLICK) SortArchives(item.iSubItem);
  if (header.code == LVN_KEYDOWN &&
      reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey == VK_DELETE) {
    DeleteArchive();
  }
  if (header.code != LVN_ITEMCHANGED || item.iItem < 0 || !(item.uNewState & LVIS_SELECTED)) return;
  browser_->ChooseArchive(static_cast<size_t>(item.iItem));
  ShowEntries();
}

void FrmBackups::OnEntriesNotify(const NMHDR& header) {
  switch (header.code) {
    case LVN_COLUMNCLICK:
      return SortEntries(reinterpret_cast<const NMLISTVIEW&>(header).iSubItem);
    case LVN_KEYDOWN:
      if (reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey == 'A' && GetKeyState(VK_CONTROL) < 0)
        entries_.SelectAll();
      return;
    case NM_DBLCLK:
      if (reinterpret_cast<const NMITEMACTIVATE&>(header).iItem >= 0) View();
      return;
    case LVN_ITEMCHANGED:
    case LVN_ODSTATECHANGED:
      return EnableCommands();
  }
}

void FrmBackups::SortArchives(int column) {
  browser_->SortArchives(ArchiveColumn(column));
  ShowArchives();
}

void FrmBackups::SortEntries(int column) {
  browser_->SortEntries(EntryColumn(column));
  ShowEntries();
}

// What the headings do by mouse, for the keyboard.
void FrmBackups::OnContextMenu(HWND control, POINT screen) {
  const bool archives = control == Control(lstvArchives);
  if (!archives && control != Control(lstvEntries)) return;
  if (screen.x == -1 && screen.y == -1) {  // from the keyboard
    RECT place;
    GetWindowRect(control, &place);
    screen = {place.left + Scale(16, dpi()), place.top + Scale(28, dpi())};
  }
  const UniqueMenu menu(CreatePopupMenu());
  UINT id = 0;
  for (const Column& column : archives ? kOfArchives : kOfEntries) {
    AppendMenuW(menu.Get(), MF_STRING, ++id, (std::wstring(L"Sort by ") + column.title).c_str());
  }
  const int chosen = TrackPopupMenu(menu.Get(), TPM_RETURNCMD | TPM_RIGHTBUTTON, screen.x, screen.y,
                                    0, window(), nullptr);
  if (chosen == 0) return;
  archives ? SortArchives(chosen - 1) : SortEntries(chosen - 1);
}

void FrmBackups::ChangeMode() {
  const LRESULT row = SendDlgItemMessageW(window(), cboOverwrite, CB_GETCURSEL, 0, 0);
  browser_->SetMode(kModeTexts[row].mode);
  ShowOutcome();
}

void FrmBackups::View() {
  const std::vector<size_t> rows = entries_.SelectedRows();
  if (rows.size() != 1) return;
  const std::string path = browser_->View(rows[0]);
  if (!path.empty() && !OpenByShell(window(), path)) {
    browser_->Say("Windows has no program to open " + path + ".");
  }
  ShowOutcome();
}

void FrmBackups::Restore(int command) {
  const std::vector<size_t> rows = entries_.SelectedRows();
  std::string folder;
  if (command == cmdRestoreInto && (folder = AskForFolder(window())).empty()) return;
  working_ = true;
  SetText(txtOutcome, "Restoring...");
  UpdateWindow(window());
  const HCURSOR arrow = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
  if (command == cmdRestoreAll) browser_->RestoreAll(*this);
  if (command == cmdRestoreSelected) browser_->RestoreSelected(rows, *this);
  if (command == cmdRestoreInto) browser_->RestoreInto(rows, folder, *this);
  SetCursor(arrow);
  working_ = false;
  ShowOutcome();
}

OverwriteAnswer FrmBackups::AskOverwrite(std::string_view path) {
  const std::wstring target = Wide(path);
  switch (DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(frmOverwrite), window(),
                          OverwriteProcedure, reinterpret_cast<LPARAM>(target.c_str()))) {
    case IDYES:
      return OverwriteAnswer::kYes;
    case IDNO:
      return OverwriteAnswer::kNo;
    case cmdYesToAll:
      return OverwriteAnswer::kAll;
    case cmdNoToAll:
      return OverwriteAnswer::kNone;
    default:
      return OverwriteAnswer::kCancel;
  }
}

void FrmBackups::DeleteArchive() {
  const BackupInfo* const chosen = browser_->Chosen();
  if (!chosen) return;
  const std::string question =
      "Delete the archive " + chosen->name + "? The files in it cannot be restored afterwards.";
  if (MessageBoxW(window(), Wide(question).c_str(), L"Delete archive",
                  MB_YESNO | MB_DEFBUTTON2 | MB_ICONWARNING) != IDYES) {
    return;
  }
  browser_->DeleteArchive();
  ShowArchives();
  ShowEntries();
}

// The owner comes back to life first, or Windows would hand the focus to another program.
void FrmBackups::OnClose() {
  if (working_) return;
  EnableWindow(owner_, TRUE);
  Close();
}

void FrmBackups::OnDestroyed() {
  EnableWindow(owner_, TRUE);
  if (!working_) browser_.reset();
}

// A text that cannot be changed would be grey; this one is there to be read.
HBRUSH FrmBackups::OnControlColor(HDC target, HWND control) {
  if (control != Control(txtOutcome)) return nullptr;
  SetBkColor(target, GetSysColor(COLOR_WINDOW));
  SetTextColor(target, GetSysColor(COLOR_WINDOWTEXT));
  return GetSysColorBrush(COLOR_WINDOW);
}

}  // namespace quellix
