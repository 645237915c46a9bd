#include "ui/frm_main.h"

#include <algorithm>
#include <utility>

#include "app/recipe_sections.h"
#include "app/rights.h"
#include "app/run_report.h"
#include "app/updates.h"
#include "platform/error.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/dpi.h"
#include "ui/group_heading.h"
#include "ui/looks.h"
#include "ui/resource.h"

namespace quellix {
namespace {

// Of the window's growth, the part that the list takes; the rest is the pane's.
constexpr double kListShare = 0.5;

constexpr Anchor kAnchors[] = {
    {lstvItems, 0, 0, kListShare, 1},
    {Check3, 0, 1, 0, 1},
    {lblItem, kListShare, 0, 1, 0},
    {txtItem, kListShare, 0, 1, 0},
    {lblTip, kListShare, 0, 1, 0},
    {txtTip, kListShare, 0, 1, 0},
    {lblRunSummary, kListShare, 0, 1, 0},
    {lstvRun, kListShare, 0, 1, 1},
    {cmdNextTip, kListShare, 0, kListShare, 0},
    {lnkRemoval, 0, 1, 1, 1},
    {cmdRights, 1, 1, 1, 1},
    {lblStatus, 0, 1, 1, 1},
    {pgClean, 0, 1, 1, 1},
    {lblCleanCaption, 0, 1, 0, 1},
    {lblCleanDate, 0, 1, 1, 1},
    {lblProgress, 0, 1, 1, 1},
    {cmdBackups, 1, 1, 1, 1},
    {cmdPreview, 1, 1, 1, 1},
    {cmdClean, 1, 1, 1, 1},
    {cmdStop, 1, 1, 1, 1},
    {chkThenShutDown, 1, 1, 1, 1},
};

constexpr int kFooterControls[] = {lnkRemoval,   cmdRights,   lblStatus, lblCleanCaption,
                                   lblCleanDate, lblProgress, pgClean,   cmdBackups,
                                   cmdPreview,   cmdClean,    cmdStop,   chkThenShutDown};

// Where the screen has room for it, in 96-DPI units.
constexpr int kWidthAtFirst = 980, kHeightAtFirst = 700;

constexpr UINT kMillisecondsPerTick = 5000, kLookAgain = 500;
// Until the server may be asked for a new version, and between looks whether that is due.
constexpr UINT kUntilUpdates = 60'000, kBetweenUpdates = 6 * 3'600'000;

}  // namespace

void FrmMain::Open(HWND owner, StartMode mode, modShutDown::Ending ending) {
  with_end_ = ending;
  Make(owner, mode);
  if (mode == StartMode::kHidden) return RunHidden();
  if (mode != StartMode::kNormal) display_.SetStatus("");
  if (with_rights_ && engine_.is_loaded()) return Clean({});
  if (mode == StartMode::kNormal && engine_.is_loaded()) {
    welcome_.ShowOnce(window(), [this] {
      engine_.ApplyGeneralSettings();
      FollowSettings();
    });
  }
  if (engine_.is_loaded() && CleansAtStart(mode, engine_.preferences().startup_clean)) {
    engine_.state().BySelf = mode == StartMode::kWithWindows;
    RunAndEnd([this] { engine_.RunCleaning(); });
    engine_.state().BySelf = false;
  }
}

// A run's log stays as it was written. What a report says besides is in the language of windows: it
// is made again.
void FrmMain::OpenAgain(HWND owner, StartMode mode, const Legacy& legacy) {
  Make(owner, mode);
  with_end_ = legacy.ending;
  CheckDlgButton(window(), chkThenShutDown, legacy.is_ticked ? BST_CHECKED : BST_UNCHECKED);
  if (!legacy.last_report) return;
  last_report_ = MakeReport(*legacy.last_report->totals, machine_.system.UserLocale());
  EnableMenuItem(GetMenu(window()), mnuLastLog, MF_BYCOMMAND | MF_ENABLED);
}

void FrmMain::Make(HWND owner, StartMode mode) {
  const bool is_hidden = mode == StartMode::kHidden;
  const std::string problems = engine_.Load(is_hidden ? nullptr : &tips_);
  engine_.ClearLeftovers();
  with_rights_ = mode == StartMode::kWithRights;
  if (with_rights_) KeepOnlyRights(machine_, engine_.selection());
  Create(frmMain, owner);
  if (is_hidden) return;
  if (with_rights_) SetWindowTextW(window(), Wide(Tr("Quellix (Administrator)")).c_str());
  if (!is_remembered()) Enlarge();
  BeginRemembering();
  ShowWindow(window(), SW_SHOW);
  if (!problems.empty()) Warn(problems);
}

void FrmMain::OnInit() {
  language_ = engine_.preferences().language;
  prompts_.Attach(window());
  layout().Add(kAnchors);
  Remember(machine_, "frmMain", {&items_.view()});
  BindItems();
  windows_.on_options = [this] { FollowSettings(); };
  preview_.on_clean = [this](std::shared_ptr<RunChoice> choice, bool leaves_to_start) {
    RunAndEnd([this, choice, leaves_to_start] {
      engine_.state().LeavesToStart = leaves_to_start;
      RunTarget(previewed_, choice);
    });
  };
  preview_.question_of = [this](const EntryList& list) { return Question(list, previewed_offer_); };
  FollowSettings();
  SetTimer(window(), tmrSettle, USER_TIMER_MINIMUM, nullptr);
  SetTimer(window(), tmrUpdates, kUntilUpdates, nullptr);
  display_.Attach(window(), [this](const Item* item) { ShowCurrentItem(item); });
  display_.ReviewFinds(machine_);
  if (!machine_.session.HasAdministratorRights()) {
    EnableMenuItem(GetMenu(window()), mnuUsers, MF_BYCOMMAND | MF_GRAYED);
  }
  display_.Flush();
}

void FrmMain::BindItems() {
  items_.may_change = [this] { return !work_.working(); };
  items_.on_ticks = [this] { ShowSummary(); };
  items_.on_selected = [this] { ShowSelected(); };
  items_.on_moved = [this] { PlaceCurrentItem(); };
  pane_.on_kept = [this] { ForgetLook(); };
  items_.Attach(window());
  pane_.Attach();
}

// The window's least size suits the smallest screen; it begins with what fits on this one.
void FrmMain::Enlarge() const {
  MONITORINFO screen{};
  screen.cbSize = sizeof(screen);
  GetMonitorInfoW(MonitorFromWindow(window(), MONITOR_DEFAULTTONEAREST), &screen);
  const RECT& work = screen.rcWork;
  const int width = std::min<int>(Scale(kWidthAtFirst, dpi()), work.right - work.left);
  const int height = std::min<int>(Scale(kHeightAtFirst, dpi()), work.bottom - work.top);
  SetWindowPos(window(), nullptr, (work.left + work.right - width) / 2,
               (work.top + work.bottom - height) / 2, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

void FrmMain::ShowSelected() { pane_.Show(items_.list(), items_.Selected()); }

// What is ticked and how it goes, with the way to where that is chosen.
void FrmMain::ShowSummary() {
  const std::string what = items_.list().Summary();
  const std::string how = Tr(RemovalText(engine_.preferences().RemovalMode));
  // What is no link stays as it is in the light.
  std::string summary =
      // TRANSLATORS: What is ticked ("12 items, 1.40 GB"), and how it goes ("deleted for good").
      IsDark() ? "<a>" + Tr("%1, %2", what, how) + "</a>"
               : Tr("%1, %2", what, "<a>" + how + "</a>");
  ShowRights();
  if (summary == summary_) return;  // a link that is set anew paints itself
  summary_ = std::move(summary);
  SetText(lnkRemoval, summary_);
}

// The button by which what needs administrator rights is cleaned, while something of that is
// ticked.
void FrmMain::ShowRights() {
  const bool wants = items_.list().LacksRights();
  const HWND button = Control(cmdRights);
  const bool is_shown = (GetWindowLongW(button, GWL_STYLE) & WS_VISIBLE) != 0;
  if (wants == is_shown) return;
  if (!wants && GetFocus() == button) FocusOn(Control(lstvItems));
  SendMessageW(button, BCM_SETSHIELD, 0, TRUE);
  ShowWindow(button, wants ? SW_SHOWNA : SW_HIDE);
}

// Settings that were read anew: a look may find other things by them. A tip that is shown stays.
void FrmMain::FollowSettings() {
  ForgetLook();
  const bool wants_tip = engine_.preferences().tip_box;
  if (wants_tip != pane_.ShowsTip()) pane_.NextTip(wants_tip);
  if (with_rights_) {
    engine_.auto_clean().Start(std::nullopt);
    engine_.low_disk().Start(0);
  }
  if (engine_.preferences().language != language_) {
    SetTimer(window(), tmrLanguage, USER_TIMER_MINIMUM, nullptr);
  }
  if (BeginsRuns()) {
    SetTimer(window(), tmrClean, kMillisecondsPerTick, nullptr);
  } else {
    KillTimer(window(), tmrClean);
  }
}

// All windows are made anew in the language that was chosen, once no other one is open.
void FrmMain::SpeakAnew() {
  const bool has_orders = is_asked_ || !named_.empty() || named_too_many_ > 0;
  if (has_orders || search_.working() || !CanClean()) {
    SetTimer(window(), tmrLanguage, kLookAgain, nullptr);
    return;
  }
  KillTimer(window(), tmrLanguage);
  // Its ticks are of this window alone: the language is of the next start.
  if (with_rights_) return;
  if (const std::string problem = Save(); !problem.empty()) return Warn(problem);
  legacy_ = {with_end_, IsTicked(window(), chkThenShutDown), last_report_};
  exit_code_ = kOtherLanguage;
  Exit();
}

// Whether the user could press Clean: no run is in progress, and neither a window before this one
// nor a menu is open.
bool FrmMain::CanClean() const {
  GUITHREADINFO thread{};
  thread.cbSize = sizeof(thread);
  GetGUIThreadInfo(GetCurrentThreadId(), &thread);
  return !work_.working() && IsWindowEnabled(window()) && !(thread.flags & GUI_INMENUMODE);
}

// What nobody misses until the window has been painted: timers come last.
void FrmMain::FindPrograms() {
  KillTimer(window(), tmrSettle);
  sections_ = FindSections(machine_);
  ShowSections();
  LookForRecipes();
}

void FrmMain::ShowSections() {
  std::vector<ListSection> all = sections_;
  all.insert(all.end(), recipes_.begin(), recipes_.end());
  items_.SetSections(std::move(all));
  ShowSummary();
}

void FrmMain::LookForRecipes() {
  knows_recipes_ = false;
  SetTimer(window(), tmrRecipes, USER_TIMER_MINIMUM, nullptr);
}

// A list of thousands takes a while. Everything can be used meanwhile; a run stops the search,
// which begins anew when it is over.
void FrmMain::FindRecipes() {
  KillTimer(window(), tmrRecipes);
  if (work_.working() || search_.working()) return;
  if (!CanClean()) {  // on the loop of a dialog or menu this would keep its buttons waiting
    SetTimer(window(), tmrRecipes, kLookAgain, nullptr);
    return;
  }
  FoundRecipes found;
  const auto end =
      search_.Run({}, [&](const Pause& pause) { found = FindRecipeSections(machine_, pause); });
  if (end == LongWork::End::kGone) return;
  if (!found.is_whole) return LookForRecipes();
  knows_recipes_ = true;
  std::swap(recipes_, found.sections);
  if (!recipes_.empty() || !found.sections.empty()) ShowSections();
}

// Once a week, where the user wants it. Only a new version is told of; whoever is working, or sees
// no window, is left alone.
void FrmMain::AskForUpdates() {
  SetTimer(window(), tmrUpdates, kBetweenUpdates, nullptr);
  if (!engine_.preferences().check_updates || with_rights_ || !IsWindowVisible(window())) return;
  if (search_.working() || !CanClean() || !IsUpdateCheckDue(machine_)) return;
  UpdateCheck check;
  const auto end = search_.Run({}, [&](const Pause& pause) {
    try {
      check = CheckForUpdate(*OpenHttp(), UpdateSourceOf(machine_), pause);
    } catch (const Error&) {
      return;  // then another time
    }
  });
  const bool is_known = check.result == UpdateResult::kNew || check.result == UpdateResult::kNone;
  if (end != LongWork::End::kDone || !is_known) return;
  NoteUpdateCheck(machine_);
  if (check.result == UpdateResult::kNew && CanClean()) windows_.ShowUpdate(window(), check);
}

// Of a run that begins by itself while no window is shown, nobody is told anything.
void FrmMain::CleanByItself() {
  engine_.state().BySelf = true;
  engine_.state().Hidden = !IsWindowVisible(window());
  Run([this] { engine_.RunCleaning(); });
  engine_.state().Hidden = engine_.state().BySelf = false;
}

// By a start that was to run hidden, as that of the task scheduler.
void FrmMain::CleanAsAsked() {
  if (is_asked_ && !CanClean()) return void(SetTimer(window(), tmrAsked, kLookAgain, nullptr));
  KillTimer(window(), tmrAsked);
  if (std::exchange(is_asked_, false)) CleanByItself();
}

void FrmMain::OnTimer(UINT_PTR id) {
  if (id == tmrSettle) return FindPrograms();
  if (id == tmrRecipes) return FindRecipes();
  if (id == tmrAsked) return CleanAsAsked();
  if (id == tmrNamed) return ShowNamed();
  if (id == tmrUpdates) return AskForUpdates();
  if (id == tmrLanguage) return SpeakAnew();
  if (id != tmrClean) return;
  const auto can_clean = [this] { return engine_.is_loaded() && CanClean(); };
  engine_.auto_clean().Tick([this] { return CanClean(); }, [this] { CleanByItself(); });
  if (window()) engine_.low_disk().Tick(can_clean, [this] { CleanByItself(); });
}

bool FrmMain::BeginsRuns() const {
  return engine_.auto_clean().IsOn() || engine_.low_disk().IsOn();
}

void FrmMain::OnSized() {
  items_.OnSized(dpi());
  PlaceCurrentItem();
  InvalidateRect(window(), nullptr, TRUE);
}

// The next size asks for the picture anew.
void FrmMain::OnResolution() {
  picture_.Reset();
  items_.OnResolution(dpi());
  pane_.OnResolution(dpi());
}

void FrmMain::ShowPicture() {
  const int side = Scale(16, dpi());
  if (!picture_) picture_ = LoadProgramIcon(icoCurrent, side, side);
  SendDlgItemMessageW(window(), imgCurrent, STM_SETICON, reinterpret_cast<WPARAM>(picture_.Get()),
                      0);
}

LRESULT FrmMain::OnNotify(NMHDR& header) {
  LRESULT result = 0;
  const bool is_link = header.idFrom == lnkRemoval;
  if (is_link && (header.code == NM_CLICK || header.code == NM_RETURN) && !work_.working()) {
    windows_.OpenRemovalOptions(window());
  } else if (!items_.OnNotify(header, result)) {
    pane_.OnNotify(header, result);
  }
  return result;
}

void FrmMain::ShowCurrentItem(const Item* item) {
  current_item_ = item;
  if (item != nullptr) items_.BringIntoView(*item);
  PlaceCurrentItem();
}

// The picture stands in the margin, to the left of the item's row.
void FrmMain::PlaceCurrentItem() {
  const HWND picture = Control(imgCurrent);
  const RECT row = current_item_ ? items_.PlaceOf(*current_item_) : RECT{};
  if (IsRectEmpty(&row)) {
    ShowWindow(picture, SW_HIDE);
    return;
  }
  ShowPicture();
  const int side = Scale(16, dpi()),
            list = static_cast<int>(PlaceInParent(Control(lstvItems)).left);
  SetWindowPos(picture, HWND_TOP, list - side - Scale(4, dpi()), (row.top + row.bottom - side) / 2,
               side, side, SWP_NOACTIVATE | SWP_SHOWWINDOW);
}

void FrmMain::OnEndSession() { Save(); }

void FrmMain::Warn(const std::string& text) const {
  ShowBox(window(), text, MB_OK | MB_ICONWARNING);
}

std::string FrmMain::Save() const {
  tips_.Save();
  try {
    if (!with_rights_) engine_.Save();
    return "";
  } catch (const Error& error) {
    return Tr("The ticked items could not be saved. %1", Shown(error));
  }
}

void FrmMain::OnDrawItem(const DRAWITEMSTRUCT& item) {
  DrawGroupHeading(item, BrushOf(Paint::kPaper));
}

// The list and the pane stand on paper, the commands on a bar below.
HBRUSH FrmMain::OnControlColor(HDC target, HWND control) {
  const bool in_footer = std::ranges::count(kFooterControls, GetDlgCtrlID(control)) > 0;
  return in_footer ? nullptr : Paper(target);
}

int FrmMain::FooterTop() const {
  return static_cast<int>(PlaceInParent(Control(lnkRemoval)).top) - Scale(9, dpi());
}

bool FrmMain::OnEraseBackground(HDC target) {
  RECT paper, footer;
  GetClientRect(window(), &paper);
  footer = paper;
  paper.bottom = footer.top = FooterTop();
  FillRect(target, &paper, BrushOf(Paint::kPaper));
  FillRect(target, &footer, BrushOf(Paint::kFace));
  footer.bottom = footer.top + 1;
  FillRect(target, &footer, BrushOf(Paint::kLine));
  return true;
}

}  // namespace quellix
