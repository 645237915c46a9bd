#include "ui/frm_main.h"

#include <shellapi.h>
#include <windowsx.h>

#include <algorithm>

#include "app/entry_list.h"
#include "app/mod_shut_down.h"
#include "app/preview_run.h"
#include "app/run_report.h"
#include "platform/error.h"
#include "platform/win32/win32_text.h"
#include "plugins/plugin_manager.h"
#include "run/run_steps.h"
#include "ui/dpi.h"
#include "ui/group_heading.h"
#include "ui/resource.h"

namespace quellix {
namespace {

constexpr Anchor kAnchors[] = {
    {lblTip, 2 / 3.0, 0, 1, 0}, {txtTip, 2 / 3.0, 0, 1, 1}, {cmdNextTip, 2 / 3.0, 1, 2 / 3.0, 1},
    {lblStatus, 0, 1, 1, 1},    {pgClean, 0, 1, 1, 1},      {lblCleanCaption, 0, 1, 0, 1},
    {lblCleanDate, 0, 1, 1, 1}, {cmdPreview, 1, 1, 1, 1},   {cmdClean, 1, 1, 1, 1},
    {cmdStop, 1, 1, 1, 1},
};

constexpr int kFooterControls[] = {lblStatus,  lblCleanCaption, lblCleanDate, pgClean,
                                   cmdPreview, cmdClean,        cmdStop};

struct TurnOffEntry {
  int entry;
  void (*end_session)(Session&);
};
constexpr TurnOffEntry kTurnOff[] = {
    {mnuPowrOff, modShutDown::PowerOff},
    {mnu_Restart, modShutDown::Restart},
    {mnuLogOff, modShutDown::LogOff},
    {mnuShutDown, modShutDown::ShutDown},
    {mnuForceShutDOwn, modShutDown::ForceShutDown},
};

constexpr UINT kMillisecondsPerTick = 5000;

}  // namespace

void FrmMain::Open(HWND owner, StartMode mode) {
  const bool is_hidden = mode == StartMode::kHidden;
  const std::string problems = engine_.Load(is_hidden ? nullptr : &tips_);
  engine_.ClearLeftovers();
  Create(frmMain, owner);
  if (is_hidden) return RunHidden();
  ShowWindow(window(), SW_SHOW);
  if (!problems.empty()) Warn(problems);
  if (mode != StartMode::kNormal) display_.SetStatus("");
  if (engine_.is_loaded() && CleansAtStart(mode, engine_.preferences().startup_clean)) {
    Run([this] { engine_.RunCleaning(); });
  }
}

// Nobody is told anything; so where settings or ticked items could not be read, nothing is removed.
void FrmMain::RunHidden() {
  RunState& state = engine_.state();
  state.Hidden = true;
  exit_code_ = kFailed;
  if (engine_.is_loaded()) {
    Run([this] { engine_.RunCleaning(); });
    exit_code_ = ExitCodeOf(state);
  }
  state.Hidden = false;
  // Who has started the program meanwhile has got this window and keeps it.
  if (IsWindowVisible(window())) {
    exit_code_ = kDone;
  } else {
    Close();
  }
}

void FrmMain::OnInit() {
  prompts_.Attach(window());
  AddAnchors();
  boxes_.Fill();
  boxes_.ShowTicks();
  SetTimer(window(), tmrSettle, USER_TIMER_MINIMUM, nullptr);
  windows_.on_options = [this] { FollowSettings(); };
  preview_.on_clean = [this](std::shared_ptr<RunChoice> choice) {
    Run([this, choice] { engine_.RunCleaning(choice); });
  };
  preview_.asks = [this] { return engine_.preferences().ask; };
  FollowSettings();
  display_.Attach(window(), [this](const Item* item) { PlaceCurrentItem(item); });
  display_.ReviewFinds(machine_);
  display_.Flush();
}

void FrmMain::AddAnchors() {
  layout().Add(kAnchors);
  layout().Add(ItemBoxes::Anchors());
}

void FrmMain::ShowTip() {
  const std::string tip = engine_.preferences().tip_box ? tips_.Next() : "";
  for (const int control : {lblTip, txtTip, cmdNextTip}) {
    ShowWindow(Control(control), tip.empty() ? SW_HIDE : SW_SHOW);
  }
  SetText(txtTip, tip);
}

// Settings that were read anew. A tip that is shown stays.
void FrmMain::FollowSettings() {
  boxes_.ShowEnabled(tool_tips_);
  boxes_.ShowTicks();
  const bool tip_is_shown = (GetWindowLongW(Control(txtTip), GWL_STYLE) & WS_VISIBLE) != 0;
  if (!tip_is_shown || !engine_.preferences().tip_box ||
      GetWindowTextLengthW(Control(txtTip)) == 0) {
    ShowTip();
  }
  if (engine_.auto_clean().IsOn()) {
    SetTimer(window(), tmrClean, kMillisecondsPerTick, nullptr);
  } else {
    KillTimer(window(), tmrClean);
  }
}

// What nobody misses until the window has been painted: timers come last.
void FrmMain::Settle() {
  KillTimer(window(), tmrSettle);
  tool_tips_.Attach(window());
  boxes_.ShowEnabled(tool_tips_);
}

// Whether the user could press Clean: no run is in progress, and neither a window before this one
// nor a menu is open.
bool FrmMain::CanClean() const {
  GUITHREADINFO thread{};
  thread.cbSize = sizeof(thread);
  GetGUIThreadInfo(GetCurrentThreadId(), &thread);
  return !work_.working() && IsWindowEnabled(window()) && !(thread.flags & GUI_INMENUMODE);
}

// Of a run that begins by itself while no window is shown, nobody is told anything.
void FrmMain::OnTimer(UINT_PTR id) {
  if (id == tmrSettle) return Settle();
  if (id != tmrClean) return;
  engine_.auto_clean().Tick([this] { return CanClean(); },
                            [this] {
                              engine_.state().Hidden = !IsWindowVisible(window());
                              Run([this] { engine_.RunCleaning(); });
                              engine_.state().Hidden = false;
                            });
}

void FrmMain::OnSized() {
  tool_tips_.Move();
  PlaceCurrentItem(current_item_);
  InvalidateRect(window(), nullptr, TRUE);
}

// The next size asks for the picture anew.
void FrmMain::OnResolution() { picture_.Reset(); }

void FrmMain::ShowPicture() {
  const int side = Scale(16, dpi());
  if (!picture_) picture_ = LoadProgramIcon(icoCurrent, side, side);
  SendDlgItemMessageW(window(), imgCurrent, STM_SETICON, reinterpret_cast<WPARAM>(picture_.Get()),
                      0);
}

void FrmMain::OnCommand(int id, int code) {
  if (id == cmdStop || (id == IDCANCEL && work_.working())) return work_.Stop();
  if (work_.working() || (code != BN_CLICKED && code != BN_DOUBLECLICKED)) return;
  if (boxes_.Toggle(id)) return boxes_.ShowTicks();
  if (TurnOff(id)) return;
  switch (id) {
    case cmdPreview:
    case mnuPreview:
      return ShowPreview(LookAhead(nullptr));
    case cmdClean:
    case mnuClean:
      return Clean(nullptr);
    case mnuLastLog:
      return ShowLastLog();
    case mnuProcessPlugin:
      return ProcessPlugins();
    case cmdNextTip:
      return ShowTip();
    case mnuExit:
      return Exit();
    default:
      windows_.Open(id, window());
  }
}

bool FrmMain::TurnOff(int id) {
  const auto command = std::ranges::find(kTurnOff, id, &TurnOffEntry::entry);
  if (command == std::end(kTurnOff)) return false;
  command->end_session(machine_.session);
  return true;
}

// A run that the user starts. Without anything that cannot be had back nothing is asked.
void FrmMain::Clean(const Item* item) {
  const auto clean = [this, item] {
    item != nullptr ? engine_.RunOneItem(*item) : engine_.RunCleaning();
  };
  if (!engine_.preferences().ask) return Run(clean);
  const std::shared_ptr<const RunEntries> found = LookAhead(item);
  if (!found) return;
  const std::string question = EntryList(machine_.system, found, true).Question();
  if (question.empty()) return Run(clean);
  switch (AskForGood(window(), question, item == nullptr)) {
    case AskedForGood::kYes:
      return Run(clean);
    case AskedForGood::kShow:
      return ShowPreview(found);
    case AskedForGood::kCancel:
      break;
  }
}

// What a run would come by now; null when the look was stopped, or the window has gone.
std::shared_ptr<const RunEntries> FrmMain::LookAhead(const Item* item) {
  PreviewRun preview(machine_, display_);
  bool is_whole = false;
  Run([&] {
    item != nullptr ? preview.RunOneItem(*item) : preview.Run(engine_.selection());
    is_whole = true;
  });
  if (!window() || !is_whole || preview.state().AbortRequested) return nullptr;
  if (preview.state().SomeErrors) Warn(preview.state().RunLog);
  const bool is_refused = preview.state().SomeErrors && preview.entries()->all.empty();
  return is_refused ? nullptr : preview.entries();
}

void FrmMain::ShowPreview(std::shared_ptr<const RunEntries> found) {
  if (!found) return;
  if (found->all.empty()) return prompts_.Inform("There is nothing to remove.");
  preview_.Show(window(), std::move(found));
}

void FrmMain::Run(const std::function<void()>& work) {
  if (work_.working()) return;
  if (!engine_.state().Hidden) log_.Close();  // a hidden run has none to put in its place
  const auto run = [&](const Pause& pause) {
    display_.BreatheBy(pause);
    try {
      work();
    } catch (const std::exception& error) {
      ReportCritical(engine_.context(), error.what());
    }
    display_.Flush();
  };
  AfterRun(work_.Run({.show = [this](const Progress&) { display_.Flush(); }}, run));
}

void FrmMain::ProcessPlugins() {
  std::string told;
  Run([&] { told = modPlugin::ProcessTickedPlugins(engine_.context()); });
  if (!told.empty() && window()) prompts_.Inform(told);
}

void FrmMain::AfterRun(LongWork::End end) {
  const bool has_report = KeepReport();
  if (end == LongWork::End::kCloses) return Exit();
  if (!has_report) return;
  if (!engine_.state().Hidden) return display_.is_kept_only() ? void() : ShowLastLog();
  const std::string told = BriefReport(engine_.context());
  tray_.SetText(Wide(std::string(kApplicationTitle) + "\n" + told).c_str());
  display_.SetStatus(told);
  display_.Flush();
}

void FrmMain::ShowLastLog() {
  if (last_report_) log_.Show(window(), *last_report_);
}

// The report of the run that has just ended, if it has one, for Last log.
bool FrmMain::KeepReport() {
  std::optional<RunReport> report = display_.TakeReport();
  if (!report) return false;
  last_report_ = std::move(report);
  EnableMenuItem(GetMenu(window()), mnuLastLog, MF_BYCOMMAND | MF_ENABLED);
  return true;
}

void FrmMain::OnContextMenu(HWND control, POINT screen) {
  const Item* item = ItemBoxes::ItemOf(GetDlgCtrlID(control));
  if (!item || work_.working()) return;
  if (screen.x == -1 && screen.y == -1) {  // from the keyboard
    RECT place;
    GetWindowRect(control, &place);
    screen = {place.left + Scale(16, dpi()), place.bottom};
  }
  ShowOneItemMenu(*item, control, screen);
}

void FrmMain::ShowOneItemMenu(const Item& item, HWND box, POINT screen) {
  const UniqueMenu menu(LoadMenuW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(mnuDummy)));
  const HMENU entries = GetSubMenu(menu.Get(), 0);
  ModifyMenuW(entries, mnuPopup, MF_BYCOMMAND, mnuPopup, Wide(item.command).c_str());
  SetFocus(box);
  const int chosen = TrackPopupMenu(entries, TPM_RETURNCMD | TPM_RIGHTBUTTON, screen.x, screen.y, 0,
                                    window(), nullptr);
  if (chosen == mnuPopup) Clean(&item);
}

// The picture stands 10 dialog units to the left of the box.
void FrmMain::PlaceCurrentItem(const Item* item) {
  current_item_ = item;
  const HWND picture = Control(imgCurrent);
  if (!item) {
    ShowWindow(picture, SW_HIDE);
    return;
  }
  ShowPicture();
  RECT offset{10, 0, 0, 0};
  MapDialogRect(window(), &offset);
  const RECT box = PlaceInParent(Control(ItemBoxes::BoxOf(*item)));
  const int side = Scale(16, dpi());
  SetWindowPos(picture, HWND_TOP, box.left - offset.left, (box.top + box.bottom - side) / 2, side,
               side, SWP_NOACTIVATE | SWP_SHOWWINDOW);
}

void FrmMain::OnClose() {
  const bool stays = engine_.auto_clean().IsOn() && engine_.preferences().tray_icon;
  return stays && IsWindowVisible(window()) ? GoToTray() : Exit();
}

// Where no notification area takes the icon, the window must stay within reach.
void FrmMain::GoToTray() {
  const bool has_icon = tray_.Show(window(), Wide(kApplicationTitle).c_str());
  ShowWindow(window(), has_icon ? SW_HIDE : SW_MINIMIZE);
}

bool FrmMain::OnMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  tray_.Follow(message);
  if (message == WM_SHOWWINDOW && wparam) tray_.Hide();
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
  const UniqueMenu menu(LoadMenuW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(mnuTray)));
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
  if (chosen == mnuTrayClean) Clean(nullptr);
  if (chosen == mnuTrayExit) Exit();
}

void FrmMain::Exit() {
  if (work_.working()) return work_.StopAndClose();
  const std::string problem = Save();
  if (!problem.empty() && !engine_.state().Hidden) Warn(problem);
  Close();
}

void FrmMain::OnEndSession() { Save(); }

void FrmMain::Warn(const std::string& text) const {
  MessageBoxW(window(), Wide(text).c_str(), Wide(kApplicationTitle).c_str(),
              MB_OK | MB_ICONWARNING);
}

std::string FrmMain::Save() const {
  tips_.Save();
  try {
    engine_.Save();
    return "";
  } catch (const Error& error) {
    return std::string("The ticked items could not be saved. ") + error.what();
  }
}

void FrmMain::OnDrawItem(const DRAWITEMSTRUCT& item) {
  DrawGroupHeading(item, GetSysColorBrush(COLOR_WINDOW));
}

// The boxes stand on paper, the commands on a bar below.
HBRUSH FrmMain::OnControlColor(HDC target, HWND control) {
  const bool in_footer = std::ranges::count(kFooterControls, GetDlgCtrlID(control)) > 0;
  return in_footer ? nullptr : Paper(target);
}

int FrmMain::FooterTop() const {
  return static_cast<int>(PlaceInParent(Control(lblCleanDate)).top) - Scale(12, dpi());
}

bool FrmMain::OnEraseBackground(HDC target) {
  RECT paper, footer;
  GetClientRect(window(), &paper);
  footer = paper;
  paper.bottom = footer.top = FooterTop();
  FillRect(target, &paper, GetSysColorBrush(COLOR_WINDOW));
  FillRect(target, &footer, GetSysColorBrush(COLOR_3DFACE));
  footer.bottom = footer.top + 1;
  FillRect(target, &footer, GetSysColorBrush(COLOR_3DSHADOW));
  return true;
}

}  // namespace quellix
