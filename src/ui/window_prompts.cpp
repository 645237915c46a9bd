#include "ui/window_prompts.h"

#include <commdlg.h>
#include <shellapi.h>
#include <shlobj.h>

#include <algorithm>
#include <vector>

#include "app/run_question.h"
#include "engine.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/control_text.h"
#include "ui/dialog_template.h"
#include "ui/help.h"
#include "ui/language.h"
#include "ui/resource.h"

namespace quellix {
namespace {

INT_PTR CALLBACK OverwriteProcedure(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_INITDIALOG) {
    SetDlgItemTextW(dialog, txtTarget, reinterpret_cast<const wchar_t*>(lparam));
    SetFocus(GetDlgItem(dialog, IDNO));
    return FALSE;
  }
  if (message == WM_HELP) ShowHelp(dialog, "overwrite");
  if (message != WM_COMMAND) return message == WM_HELP;
  const int id = LOWORD(wparam);
  if (id != txtTarget) EndDialog(dialog, id);
  return TRUE;
}

struct TextQuestion {
  std::wstring question, preset;
  std::string answer = {};
};

INT_PTR CALLBACK TextProcedure(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_INITDIALOG) {
    const auto asked = reinterpret_cast<TextQuestion*>(lparam);
    SetWindowLongPtrW(dialog, DWLP_USER, lparam);
    SetWindowTextW(dialog, Wide(kApplicationTitle).c_str());
    SetDlgItemTextW(dialog, lblQuestion, asked->question.c_str());
    SetDlgItemTextW(dialog, txtAnswer, asked->preset.c_str());
    return TRUE;
  }
  if (message != WM_COMMAND) return FALSE;
  const int id = LOWORD(wparam);
  if (id == IDOK) {
    reinterpret_cast<TextQuestion*>(GetWindowLongPtrW(dialog, DWLP_USER))->answer =
        ControlText(GetDlgItem(dialog, txtAnswer));
  }
  if (id == IDOK || id == IDCANCEL) EndDialog(dialog, id);
  return TRUE;
}

INT_PTR ShowDialog(HWND owner, int template_id, DLGPROC procedure, const void* parameter) {
  const DialogTemplate made(template_id);
  return DialogBoxIndirectParamW(GetModuleHandleW(nullptr), made.Get(), owner, procedure,
                                 reinterpret_cast<LPARAM>(parameter));
}

// Titles and masks in turn, each ended by a NUL, as the file dialogs take them.
std::wstring FilterText(std::span<const FileFilter> filters) {
  std::wstring text;
  for (const FileFilter& filter : filters) {
    text.append(Wide(Tr(filter.title)))
        .append(1, L'\0')
        .append(Wide(filter.masks))
        .append(1, L'\0');
  }
  return text;
}

// Runs a file dialog that begins with the name in `path` and leaves the chosen path there.
bool RunFileDialog(const char* function, OPENFILENAMEW& dialog, std::vector<wchar_t>& path) {
  static LazyLibrary comdlg32(L"comdlg32.dll");
  dialog.lStructSize = sizeof(dialog);
  dialog.lpstrFile = path.data();
  dialog.nMaxFile = static_cast<DWORD>(path.size());
  dialog.Flags |=
      OFN_EXPLORER | OFN_ENABLESIZING | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_PATHMUSTEXIST;
  return comdlg32.Find<decltype(&GetOpenFileNameW)>(function)(&dialog) != FALSE;
}

constexpr size_t kLongestPath = 32768;

}  // namespace

int ShowBox(HWND owner, std::string_view text, UINT style, std::string_view title) {
  const UINT direction = IsRightToLeft() ? MB_RTLREADING | MB_RIGHT : 0;
  return MessageBoxW(owner, Wide(text).c_str(),
                     Wide(title.empty() ? kApplicationTitle : title).c_str(), style | direction);
}

void WindowPrompts::Inform(std::string_view text) {
  ShowBox(owner_, text, MB_OK | MB_ICONINFORMATION);
}

bool WindowPrompts::AskYesNo(std::string_view question) {
  return ShowBox(owner_, VerbAndQuestion(question).question,
                 MB_YESNO | MB_DEFBUTTON2 | MB_ICONQUESTION) == IDYES;
}

std::optional<std::string> WindowPrompts::AskText(std::string_view question,
                                                  std::string_view preset) {
  TextQuestion asked{Wide(question), Wide(preset)};
  if (ShowDialog(owner_, frmAskText, TextProcedure, &asked) != IDOK) return {};
  return asked.answer;
}

std::optional<std::string> WindowPrompts::AskFile(std::span<const FileFilter> filters,
                                                  std::string_view folder) {
  std::vector<wchar_t> path(kLongestPath);
  const std::wstring filter = FilterText(filters), start = Wide(folder);
  OPENFILENAMEW dialog{};
  dialog.hwndOwner = owner_;
  dialog.lpstrFilter = filter.c_str();
  dialog.lpstrInitialDir = start.empty() ? nullptr : start.c_str();
  dialog.Flags = OFN_FILEMUSTEXIST;
  if (!RunFileDialog("GetOpenFileNameW", dialog, path)) return {};
  return Narrow(path.data());
}

std::optional<std::string> WindowPrompts::AskFolder(std::string_view title) {
  static LazyLibrary shell32(L"shell32.dll"), ole32(L"ole32.dll");
  ole32.Find<decltype(&CoInitialize)>("CoInitialize")(nullptr);
  const std::wstring text = Wide(title);
  BROWSEINFOW dialog{};
  dialog.hwndOwner = owner_;
  dialog.lpszTitle = text.c_str();
  dialog.ulFlags = BIF_RETURNONLYFSDIRS | BIF_NEWDIALOGSTYLE;
  const auto browse = shell32.Find<decltype(&SHBrowseForFolderW)>("SHBrowseForFolderW");
  const auto path_of = shell32.Find<decltype(&SHGetPathFromIDListW)>("SHGetPathFromIDListW");
  wchar_t path[MAX_PATH] = {};
  if (LPITEMIDLIST chosen = browse(&dialog)) {
    path_of(chosen, path);
    ole32.Find<decltype(&CoTaskMemFree)>("CoTaskMemFree")(chosen);
  }
  ole32.Find<decltype(&CoUninitialize)>("CoUninitialize")();
  if (path[0] == L'\0') return {};
  return Narrow(path);
}

OverwriteAnswer WindowPrompts::AskOverwrite(std::string_view path) {
  const std::wstring target = Wide(path);
  switch (ShowDialog(owner_, frmOverwrite, OverwriteProcedure, target.c_str())) {
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

std::optional<SavePlace> AskWhereToSave(HWND owner, std::span<const FileFilter> filters,
                                        std::string_view name) {
  std::vector<wchar_t> path(kLongestPath);
  const std::wstring masks = FilterText(filters), start = Wide(name);
  start.copy(path.data(), path.size() - 1);
  OPENFILENAMEW dialog{};
  dialog.hwndOwner = owner;
  dialog.lpstrFilter = masks.c_str();
  dialog.nFilterIndex = 1;
  dialog.lpstrDefExt = L"";
  dialog.Flags = OFN_OVERWRITEPROMPT;
  if (!RunFileDialog("GetSaveFileNameW", dialog, path)) return {};
  SavePlace place{Narrow(path.data()),
                  std::clamp<size_t>(dialog.nFilterIndex, 1, filters.size()) - 1};
  const std::string_view extension = filters[place.filter].masks.substr(1);
  const size_t dot = place.path.rfind('.');
  if (dot == place.path.npos || dot < place.path.rfind('\\')) place.path += extension;
  return place;
}

namespace {

// The texts must outlive it.
TASKDIALOGCONFIG TaskDialogOf(HWND owner, std::span<const TASKDIALOG_BUTTON> buttons) {
  static const std::wstring title = Wide(kApplicationTitle);
  TASKDIALOGCONFIG dialog{};
  dialog.cbSize = sizeof(dialog);
  dialog.hwndParent = owner;
  dialog.dwFlags = TDF_ALLOW_DIALOG_CANCELLATION | TDF_POSITION_RELATIVE_TO_WINDOW |
                   (IsRightToLeft() ? TDF_RTL_LAYOUT : 0);
  dialog.pszWindowTitle = title.c_str();
  dialog.pszMainIcon = TD_WARNING_ICON;
  dialog.cButtons = static_cast<UINT>(buttons.size());
  dialog.pButtons = buttons.data();
  return dialog;
}

// The button that was pressed; IDCANCEL also where the dialog cannot be shown.
int Pressed(const TASKDIALOGCONFIG& dialog, BOOL* is_ticked = nullptr) {
  int pressed = IDCANCEL;
  return FAILED(TaskDialogIndirect(&dialog, &pressed, nullptr, is_ticked)) ? IDCANCEL : pressed;
}

}  // namespace

AskedForGood AskForGood(HWND owner, std::string_view question, std::string_view text, bool shows,
                        FurtherChoice* further) {
  constexpr int kYes = 100, kShow = 101;
  const auto [verb, asked] = VerbAndQuestion(question);
  const std::wstring heading = Wide(asked), below = Wide(text),
                     box = Wide(further ? further->text : ""), yes = L"&" + Wide(verb),
                     show = Wide(Tr("&Show what goes...")), cancel = Wide(Tr("Cancel"));
  // The system's own cancel button speaks its language, not the program's.
  std::vector<TASKDIALOG_BUTTON> buttons{{kYes, yes.c_str()}, {IDCANCEL, cancel.c_str()}};
  if (shows) buttons.insert(buttons.begin() + 1, {kShow, show.c_str()});
  TASKDIALOGCONFIG dialog = TaskDialogOf(owner, buttons);
  dialog.pszMainInstruction = heading.c_str();
  dialog.pszContent = below.empty() ? nullptr : below.c_str();
  dialog.pszVerificationText = box.empty() ? nullptr : box.c_str();
  dialog.nDefaultButton = IDCANCEL;
  BOOL is_ticked = FALSE;
  const int pressed = Pressed(dialog, &is_ticked);
  if (further) further->is_ticked = pressed == kYes && is_ticked;
  return pressed == kYes    ? AskedForGood::kYes
         : pressed == kShow ? AskedForGood::kShow
                            : AskedForGood::kCancel;
}

ProgramAnswer AskAboutProgramBefore(HWND owner, const ProgramQuestion& question) {
  constexpr int kClose = 100, kSkip = 101, kRetry = 102;
  const std::wstring close = Wide(Tr("&Close it")), skip = Wide(Tr("&Skip")),
                     retry = Wide(Tr("&Retry"));
  const TASKDIALOG_BUTTON buttons[] = {
      {kClose, close.c_str()}, {kSkip, skip.c_str()}, {kRetry, retry.c_str()}};
  const std::wstring heading = Wide(Tr("%1 is running", question.program)),
                     text = Wide((question.told.empty() ? "" : question.told + "\n\n") +
                                 Tr("It has to be closed before this is cleaned: %1.\n\nClose it "
                                    "asks the program to close, as its own close button does. Skip "
                                    "leaves what it holds as it is.",
                                    question.what));
  TASKDIALOGCONFIG dialog = TaskDialogOf(owner, buttons);
  dialog.pszMainInstruction = heading.c_str();
  dialog.pszContent = text.c_str();
  dialog.nDefaultButton = kSkip;
  switch (Pressed(dialog)) {
    case kClose:
      return ProgramAnswer::kClose;
    case kRetry:
      return ProgramAnswer::kRetry;
    default:
      return ProgramAnswer::kSkip;
  }
}

bool StartWithRights(HWND owner, std::string_view arguments) {
  static LazyLibrary shell32(L"shell32.dll");
  const auto execute = shell32.Find<decltype(&ShellExecuteExW)>("ShellExecuteExW");
  std::vector<wchar_t> program(kLongestPath);
  GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
  const std::wstring parameters = Wide(arguments);
  SHELLEXECUTEINFOW start{};
  start.cbSize = sizeof(start);
  start.hwnd = owner;
  start.lpVerb = L"runas";
  start.lpFile = program.data();
  start.lpParameters = parameters.c_str();
  start.nShow = SW_SHOWNORMAL;
  return execute(&start) != FALSE;
}

bool OpenByShell(HWND owner, std::string_view target) {
  static LazyLibrary shell32(L"shell32.dll");
  const auto open = shell32.Find<decltype(&ShellExecuteW)>("ShellExecuteW");
  const HINSTANCE result =
      open(owner, nullptr, Wide(target).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
  return reinterpret_cast<INT_PTR>(result) > 32;  // smaller ones are errors
}

}  // namespace quellix
