// What the main window does when it is told to: by its menus and buttons, by keys, from the
// notification area and by other copies of the program.
#include "ui/frm_main.h"

#include <shellapi.h>
#include <windowsx.h>

#include <algorithm>

#include "app/mod_shut_down.h"
#include "cleaners/junk_cleaners.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/cls_prev_instance.h"
#include "ui/control_text.h"
#include "ui/dropped_files.h"
#include "ui/resource.h"
#include "ui/window_words.h"

namespace quellix {
namespace {

// What each command does, as the countdown before it tells.
struct TurnOffEntry {
  int entry;
  void (*end_session)(Session&);
  std::string_view does;
};
constexpr TurnOffEntry kTurnOff[] = {
    {mnuPowrOff, modShutDown::PowerOff, Mark("The computer is turned off")},
    {mnu_Restart, modShutDown::Restart, Mark("You are logged off by force")},
    {mnuLogOff, modShutDown::LogOff, Mark("You are logged off")},
    {mnuShutDown, modShutDown::ShutDown, Mark("Windows is shut down")},
    {mnuForceShutDOwn, modShutDown::ForceShutDown, Mark("You are logged off by force")},
};

}  // namespace

void FrmMain::OnCommand(int id, int code) {
  if (id == cmdStop || (id == IDCANCEL && work_.working())) return work_.Stop();
  if (pane_.OnCommand(id, code)) return;
  if (work_.working() || (code != BN_CLICKED && code != BN_DOUBLECLICKED)) return;
  if (TurnOff(id)) return;
  switch (id) {
    case cmdPreview:
    case mnuPreview:
      return Preview({});
    case cmdClean:
    case mnuClean:
      return Clean({});
    case cmdRights:
      return CleanWithRights();
    case mnuLastLog:
      return ShowLastLog();
    case mnuProcessPlugin:
      return ProcessPlugins();
    case cmdNextTip:
      return pane_.NextTip(true);
    case Check3:
      return items_.ToggleAll();
    case mnuUsers:
      return CleanForOthers();
    case mnuRemoveCopied:
      return RemoveByHand(CopiedFiles(window()));
    case mnuEmptyFolders:
      return Run([this] { engine_.RunOthers({.searches = {&EmptyFolderSearch()}}); });
    case cmdBackups:
      windows_.Open(mnuBackups, window());
      return;
    case mnuExit:
      return Exit();
    default:
      windows_.Open(id, window());
  }
}

bool FrmMain::TurnOff(int id) {
  const auto command = std::ranges::find(kTurnOff, id, &TurnOffEntry::entry);
  if (command == std::end(kTurnOff)) return false;
  const auto end = [this, command] { command->end_session(machine_.session); };
  engine_.preferences().ask ? countdown_.Show(window(), Tr(command->does), end) : end();
  return true;
}

// What was chosen for the end of a cleaning, once it has ended well. Who is there may still keep
// the session; of a run that nobody watches none is asked.
void FrmMain::EndAsChosen() {
  const modShutDown::Ending ending =
      with_end_ == modShutDown::Ending::kNone && IsTicked(window(), chkThenShutDown)
          ? modShutDown::Ending::kShutDown
          : with_end_;
  const RunState& state = engine_.state();
  if (ending == modShutDown::Ending::kNone) return;
  // It was for this run alone, however that ended.
  with_end_ = modShutDown::Ending::kNone;
  CheckDlgButton(window(), chkThenShutDown, BST_UNCHECKED);
  if (state.AbortRequested || state.SomeErrors || !engine_.is_loaded()) return;
  const auto end = [this, ending] { modShutDown::End(machine_.session, ending); };
  state.Hidden && !IsWindowVisible(window())
      ? end()
      : countdown_.Show(window(), Tr(modShutDown::TextOf(ending)), end);
}

void FrmMain::OnContextMenu(HWND control, POINT screen) {
  if (work_.working() || pane_.OnContextMenu(control, screen)) return;
  const std::optional<size_t> row = items_.RowForMenu(control, screen);
  if (row) ShowRowMenu(*row, screen);
}

void FrmMain::ShowRowMenu(size_t row, POINT screen) {
  const UniqueMenu menu = LoadProgramMenu(mnuDummy);
  const HMENU entries = GetSubMenu(menu.Get(), 0);
  const Target target{items_.list().At(row).item, items_.list().ChoiceAt(row)};
  const std::string command = items_.list().CommandAt(row);
  ModifyMenuW(entries, mnuPopup, MF_BYCOMMAND, mnuPopup, Wide(command).c_str());
  if (target.item != nullptr) DeleteMenu(entries, mnuPreviewRow, MF_BYCOMMAND);
  const int chosen = TrackPopupMenu(entries, TPM_RETURNCMD | TPM_RIGHTBUTTON, screen.x, screen.y, 0,
                                    window(), nullptr);
  if (chosen == mnuPopup) Clean(target);
  if (chosen == mnuPreviewRow) Preview(target);
}

void FrmMain::OnClose() {
  const bool stays = BeginsRuns() && engine_.preferences().tray_icon;
  return stays && IsWindowVisible(window()) ? GoToTray() : Exit();
}

// Where no notification area takes the icon, the window must stay within reach.
void FrmMain::GoToTray() {
  const bool has_icon = tray_.Show(window(), Wide(kApplicationTitle).c_str());
  ShowWindow(window(), has_icon ? SW_HIDE : SW_MINIMIZE);
}

// Esc in a field of several lines would close the window; what is typed into none is a command.
bool FrmMain::OnKey(MSG& message) {
  const bool is_paste = message.message == WM_KEYDOWN && message.wParam == 'V' &&
                        GetKeyState(VK_CONTROL) < 0 && GetKeyState(VK_SHIFT) >= 0 &&
                        GetKeyState(VK_MENU) >= 0;
  if (is_paste) {
    OnCommand(mnuRemoveCopied, BN_CLICKED);
    return true;
  }
  if (message.message != WM_KEYDOWN || message.wParam != VK_ESCAPE)
    return IsLetterForButton(message);
  OnCommand(IDCANCEL, BN_CLICKED);
  return true;
}

bool FrmMain::OnMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  tray_.Follow(message);
  if (message == WM_SHOWWINDOW && wparam) tray_.Hide();
  if (message == WM_DROPFILES) {
    RemoveByHand(TakeDropped(wparam));
    return true;
  }
  if (message == clsPrevInstance::CleanMessage() && engine_.is_loaded() && takes_requests_) {
    is_asked_ = true;
    SetTimer(window(), tmrAsked, USER_TIMER_MINIMUM, nullptr);
    SetWindowLongPtrW(window(), DWLP_MSGRESULT, clsPrevInstance::kTakenOn);
    return true;
  }
  if (message == WM_COPYDATA) {
    const bool is_taken = TakeNamed(clsPrevInstance::HandedOver(lparam));
    SetWindowLongPtrW(window(), DWLP_MSGRESULT, is_taken ? TRUE : FALSE);
    return true;
  }
  if (message != TrayIcon::kMessage) return false;
  switch (LOWORD(lparam)) {
    case NIN_SELECT:
    case NIN_KEYSELECT:
      ComeForward();
      break;
    case WM_CONTEXTMENU:
      ShowTrayMenu({GET_X_LPARAM(wparam), GET_Y_LPARAM(wparam)});
      break;
  }
  return true;
}

void FrmMain::ComeForward() const {
  ShowWindow(window(), SW_SHOW);
  OpenIcon(window());
  SetForegroundWindow(GetLastActivePopup(window()));
}

// Only a menu of the foreground window goes away when the user clicks elsewhere.
void FrmMain::ShowTrayMenu(POINT screen) {
  const UniqueMenu menu = LoadProgramMenu(mnuTray);
  const HMENU entries = GetSubMenu(menu.Get(), 0);
  if (!CanClean()) EnableMenuItem(entries, mnuTrayClean, MF_BYCOMMAND | MF_GRAYED);
  if (work_.working() || !last_report_)
    EnableMenuItem(entries, mnuTrayLog, MF_BYCOMMAND | MF_GRAYED);
  SetForegroundWindow(window());
  const int chosen = TrackPopupMenu(entries, TPM_RETURNCMD | TPM_RIGHTBUTTON, screen.x, screen.y, 0,
                                    window(), nullptr);
  PostMessageW(window(), WM_NULL, 0, 0);
  if (chosen == mnuTrayLog) ShowLastLog();
  if (chosen == mnuTrayOpen) ComeForward();
  if (chosen == mnuTrayClean) Clean({});
  if (chosen == mnuTrayExit) Exit();
}

void FrmMain::Exit() {
  if (work_.working()) return work_.StopAndClose();
  const std::string problem = Save();
  if (!problem.empty() && !engine_.state().Hidden) Warn(problem);
  Close();
}

}  // namespace quellix
