#include "ui/frm_update.h"

#include "platform/error.h"
#include "platform/text.h"
#include "platform/words.h"
#include "ui/control_text.h"
#include "ui/resource.h"

namespace quellix {
namespace {

constexpr UINT_PTR kTimer = 1;
constexpr UINT kUntilSeen = 50;  // milliseconds

constexpr Anchor kAnchors[] = {
    {txtUpdate, 0, 0, 1, 1},  {lblStatus, 0, 1, 1, 1}, {pgUpdate, 0, 1, 1, 1},
    {cmdInstall, 0, 1, 0, 1}, {cmdStop, 0, 1, 0, 1},   {IDCANCEL, 1, 1, 1, 1},
};

}  // namespace

void FrmUpdate::Show(HWND owner) {
  if (work_.working()) return;
  Show(owner, {});
  SetText(txtUpdate, "");
  SetText(lblStatus, "");
  SetTimer(window(), kTimer, kUntilSeen, nullptr);
}

void FrmUpdate::Show(HWND owner, const UpdateCheck& check) {
  if (work_.working()) return;
  source_ = UpdateSourceOf(machine_);
  check_ = check;
  Open(frmUpdate, owner);
  ShowResult();
}

void FrmUpdate::OnInit() {
  prompts_.Attach(window());
  layout().Add(kAnchors);
  Remember(machine_, "frmUpdate");
}

void FrmUpdate::OnTimer(UINT_PTR id) {
  if (id != kTimer) return;
  KillTimer(window(), kTimer);
  if (!work_.working()) Ask();
}

// False when the window is gone or goes.
bool FrmUpdate::Work(const std::string& status, const LongWork::Work& work) {
  SetText(lblStatus, status);
  std::string problem;
  const LongWork::End end =
      work_.Run({.stop = cmdStop, .rest = IDCANCEL, .bar = pgUpdate}, work, problem);
  if (end == LongWork::End::kCloses) OwnedWindow::OnClose();
  if (end != LongWork::End::kDone) return false;
  SetText(lblStatus, "");
  if (!problem.empty()) prompts_.Inform(problem);
  return problem.empty();
}

void FrmUpdate::Ask() {
  const bool is_done = Work(Tr("Asking the server..."), [this](const Pause& pause) {
    check_ = CheckForUpdate(*OpenHttp(), source_, pause);
    if (check_.result == UpdateResult::kNew || check_.result == UpdateResult::kNone)
      NoteUpdateCheck(machine_);
  });
  if (is_done) ShowResult();
}

void FrmUpdate::ShowResult() {
  const std::string why = check_.result == UpdateResult::kNew ? WhyNotFetched(source_).shown : "";
  SetText(txtUpdate,
          ReplaceNoCase(check_.Text() + (why.empty() ? "" : "\n" + why + "\n"), "\n", "\r\n"));
  SetText(lblStatus, check_.result == UpdateResult::kNoServer ? Tr("Nobody was asked.")
                                                              : Tr("The server was asked."));
  EnableControl(cmdInstall, check_.result == UpdateResult::kNew && why.empty(), IDCANCEL);
}

// Kept in memory until its user has agreed.
void FrmUpdate::Install() {
  EnableControl(cmdInstall, false, IDCANCEL);
  std::string bytes;
  const bool is_fetched = Work(Tr("Fetching the new version..."), [&](const Pause& pause) {
    bytes = FetchInstaller(*OpenHttp(), source_, check_.version, pause);
  });
  if (!window()) return;
  const std::string question =
      Tr("Version %1 was fetched, and is what its makers signed.\n\nStart its installer now?",
         check_.version);
  ShowResult();
  if (is_fetched && prompts_.AskYesNo(question)) Start(bytes);
}

// What is started asks by itself where it goes, and for this program to be closed.
void FrmUpdate::Start(const std::string& bytes) {
  try {
    const bool is_started = StartInstaller(machine_, check_.version, bytes);
    SetText(lblStatus, is_started ? Tr("The installer was started.")
                                  : Tr("The installer was not started: it was refused the rights "
                                       "that it asks for."));
  } catch (const Error& error) {
    prompts_.Inform(Shown(error));
  }
}

void FrmUpdate::OnCommand(int id, int code) {
  if (id == IDCANCEL) return OnClose();
  if (id == cmdStop) return work_.Stop();
  if (id == cmdInstall && code == BN_CLICKED && !work_.working()) Install();
}

HBRUSH FrmUpdate::OnControlColor(HDC target, HWND control) {
  return control == Control(txtUpdate) ? Paper(target) : nullptr;
}

// An installer that still runs stays.
void FrmUpdate::OnDestroyed() {
  ClearInstallers(machine_);
  OwnedWindow::OnDestroyed();
}

void FrmUpdate::OnClose() { work_.working() ? work_.StopAndClose() : OwnedWindow::OnClose(); }

}  // namespace quellix
