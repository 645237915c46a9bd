#include "ui/frm_users.h"

#include "platform/error.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/dpi.h"
#include "ui/row_menu.h"
#include "ui/window_prompts.h"

namespace quellix {
namespace {

constexpr Column kUserColumns[] = {{Mark("User"), 150}, {Mark("Profile"), 380}};
constexpr Column kFoundColumns[] = {{Mark("User"), 110}, {Mark("What"), 130}, {Mark("Where"), 300}};

constexpr Anchor kAnchors[] = {
    {lblUsers, 0, 0, 1, 0},           {lstvUsers, 0, 0, 1, 0.3},   {lblUsersFound, 0, 0.3, 0, 0.3},
    {lstvUsersFound, 0, 0.3, 1, 0.8}, {txtUsers, 0, 0.8, 1, 1},    {lblStatus, 0, 1, 1, 1},
    {cmdUsersLook, 0, 1, 0, 1},       {cmdUsersClean, 0, 1, 0, 1}, {cmdStop, 0, 1, 0, 1},
    {IDCANCEL, 1, 1, 1, 1},
};

constexpr int kIdle[] = {lstvUsers, cmdUsersLook, cmdUsersClean};

}  // namespace

void FrmUsers::Show(HWND owner) {
  try {
    runs_.List();
  } catch (const Error& error) {
    WindowPrompts prompts;
    prompts.Attach(owner);
    return prompts.Inform(Shown(error));
  }
  Open(frmUsers, owner);
}

void FrmUsers::OnInit() {
  layout().Add(kAnchors);
  Remember(machine_, "frmUsers", {&users_, &found_});
  display_.Attach(window());
  users_.Attach(Control(lstvUsers), kUserColumns, [this](int row, int column) {
    const UserProfile& user = runs_.user(static_cast<size_t>(row));
    return Cell{Wide(column == 0 ? user.name : user.profile)};
  });
  users_.SetCheckBoxes([this](int row) { return runs_.IsTicked(static_cast<size_t>(row)); },
                       [this](int row) {
                         runs_.Toggle(static_cast<size_t>(row));
                         ShowTicks();
                       });
  found_.Attach(Control(lstvUsersFound), kFoundColumns, [this](int row, int column) {
    const UserRuns::Row found = runs_.RowAt(static_cast<size_t>(row));
    return Cell{Wide(column == 0 ? found.user : column == 1 ? found.what : found.where)};
  });
  const Locale locale = machine_.system.UserLocale();
  users_.SetTotals(locale);
  users_.SetEmpty([] { return Tr("Nobody else has a profile on this computer."); });
  found_.SetTotals(locale);
  found_.SetEmpty([this]() -> std::string {
    return runs_.HasTicks() ? Tr("Preview shows here what would be cleaned for the ticked users.")
                            : Tr("Tick users above; Preview then shows what would be cleaned.");
  });
  found_.SetRows(0);
  users_.SetRows(static_cast<int>(runs_.count()));
  if (runs_.count() > 0) users_.Select(0);
  display_.SetStatus(runs_.count() > 0 ? "" : Tr("Nobody else has a profile on this computer."));
  display_.Flush();
  ShowTicks();
}

void FrmUsers::ShowTicks() {
  for (const int button : {cmdUsersLook, cmdUsersClean}) {
    EnableWindow(Control(button), runs_.HasTicks());
  }
  found_.Recount();
}

void FrmUsers::OnResolution() {
  users_.SetResolution(dpi(), kUserColumns, {});
  found_.SetResolution(dpi(), kFoundColumns, {});
}

void FrmUsers::OnSized() {
  users_.FillWith(1, Scale(200, dpi()));
  found_.FillWith(2, Scale(200, dpi()));
}

// False when the window is gone or goes.
bool FrmUsers::Work(const std::string& status, void (UserRuns::*work)(const Pause& pause)) {
  found_.SetRows(0);
  const LongWork::End end = work_.Run({.idle = kIdle,
                                       .stop = cmdStop,
                                       .rest = lstvUsersFound,
                                       .show = [this](const Progress&) { display_.Flush(); }},
                                      [&](const Pause& pause) {
                                        display_.BreatheBy(pause);
                                        display_.SetStatus(status);
                                        display_.Flush();
                                        (runs_.*work)(pause);
                                      });
  if (end == LongWork::End::kGone) return false;
  if (end == LongWork::End::kCloses) {
    OwnedWindow::OnClose();
    return false;
  }
  found_.SetRows(static_cast<int>(runs_.row_count()));
  SetText(txtUsers, runs_.text());
  display_.SetStatus(runs_.Summary());
  display_.Flush();
  return true;
}

// What it lists counts as seen.
void FrmUsers::Look() {
  if (!Work(Tr("Looking..."), &UserRuns::Look) || !runs_.WasLookedAt()) return;
  runs_.NoteShown();
  modPlugin::NoteShown(engine_.selection().recipes(), runs_.shown());
  SetText(txtUsers, runs_.text());
  RedrawWindow(GetWindow(window(), GW_OWNER), nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
}

// What cannot be undone is asked before, user by user, but at once.
void FrmUsers::Clean() {
  if (!Work(Tr("Looking..."), &UserRuns::Look) || !runs_.WasLookedAt()) return;
  if (!MayGo(window(), runs_.question().empty() ? "" : Tr("Clean for the ticked users?"),
             runs_.question()))
    return;
  Work(Tr("Cleaning..."), &UserRuns::Clean);
}

void FrmUsers::OnCommand(int id, int /*code*/) {
  if (id == cmdStop) work_.Stop();
  if (id == IDCANCEL) return OnClose();
  if (work_.working()) return;
  if (id == cmdUsersLook) Look();
  if (id == cmdUsersClean) Clean();
}

LRESULT FrmUsers::OnNotify(NMHDR& header) {
  LRESULT result = 0;
  if (!users_.OnNotify(header, result)) found_.OnNotify(header, result);
  return result;
}

void FrmUsers::OnContextMenu(HWND control, POINT screen) {
  const bool users = control == Control(lstvUsers);
  if (work_.working() || (!users && control != Control(lstvUsersFound))) return;
  const auto place_of = [this, users](size_t row) {
    return PlaceNamedBy(users ? runs_.user(row).profile : runs_.RowAt(row).where);
  };
  RowMenu{users ? users_ : found_, machine_.shell, place_of}.Show(window(), screen);
}

// While it works, closing stops it first.
void FrmUsers::OnClose() { work_.working() ? work_.StopAndClose() : OwnedWindow::OnClose(); }

HBRUSH FrmUsers::OnControlColor(HDC target, HWND control) {
  return control == Control(txtUsers) ? Paper(target) : nullptr;
}

}  // namespace quellix
