

#include <exception>

#include "app/rights.h"
#include "app/startup.h"
#include "engine.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/other_user.h"
#include "platform/win32/win32_machine.h"
#include "platform/win32/win32_scheduler.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "run/exit_code.h"
#include "settings/settings.h"
#include "ui/cls_prev_instance.h"
#include "ui/dialog.h"
#include "ui/frm_main.h"
#include "ui/language.h"
#include "ui/run_display.h"
#include "ui/window_prompts.h"
#include "ui/windows_api.h"

namespace {

using quellix::FrmMain;
using quellix::StartMode;

void LoadControlClasses() {
  INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_PROGRESS_CLASS | ICC_LISTVIEW_CLASSES |
                                                    ICC_DATE_CLASSES | ICC_TAB_CLASSES |
                                                    ICC_LINK_CLASS};
  InitCommonControlsEx(&classes);
}

void Tell(const std::string& problem) { quellix::ShowBox(nullptr, problem, MB_OK | MB_ICONERROR); }

std::string StaysLoaded() {
  return quellix::Tr(
      "His registry stays loaded, as another program uses it. Until it is unloaded, at the next "
      "start of Windows at the latest, this user cannot log on with his own profile.");
}

quellix::OtherUsers UsersOf(const quellix::Machine& machine) {
  return {.list = [machine] { return quellix::UsersHere(machine); },
          .open =
              [machine](const quellix::UserProfile& user,
                        const std::function<void(const quellix::Machine&)>& work,
                        const std::function<void()>& breathe) {
                quellix::OtherUserMachine his(
                    "", user, quellix::Settings(machine).Load().BackupFolder, breathe);
                work(his.machine());
                return his.Unload(breathe) ? "" : StaysLoaded();
              }};
}

int HandOver(const std::string& path) {
  using Taken = quellix::clsPrevInstance::Taken;
  const Taken taken = quellix::clsPrevInstance::HandOver(quellix::Wide(path));
  if (taken == Taken::kYes) return quellix::kDone;
  Tell(taken == Taken::kRefused
           ? quellix::Tr("Quellix is open and does not take what this names: %1", path)
           : quellix::Tr("Quellix is open and does not answer, or has other rights. Drop the files "
                         "on its window."));
  return quellix::kFailed;
}

// The program runs already: it comes forward, or takes what Explorer's menu names.
int LeaveItToTheOther(StartMode mode, const std::optional<std::string>& named) {
  if (mode == StartMode::kHidden)
    return quellix::clsPrevInstance::AskToClean() ? quellix::kHandedOn : quellix::kFailed;
  if (named) return HandOver(*named);
  quellix::clsPrevInstance::ActivatePrevInstance();
  return quellix::kDone;
}

void SpeakAsChosen(const quellix::Machine& machine) {
  const quellix::Preferences preferences = quellix::Settings(machine).Load();
  quellix::SpeakAs(preferences.language, machine);
  quellix::SpeakInLogs(preferences.log_in_language);
}

// Until the window ends; its exit code, and what it hands on.
int ShowMain(const quellix::Machine& machine, quellix::Scheduler& scheduler,
             FrmMain::Legacy& legacy, const std::function<void(FrmMain&)>& open) {
  quellix::RunDisplay display;
  quellix::Engine engine(machine, display);
  FrmMain window(engine, display, machine, UsersOf(machine), scheduler);
  open(window);
  MSG message{};
  while (GetMessageW(&message, nullptr, 0, 0) > 0) quellix::Dialog::Dispatch(message);
  legacy = window.legacy();
  return static_cast<int>(message.wParam);
}

// `profile`: for whom a start with rights is to clean. `named`: what is to be removed by hand.
int RunProgram(StartMode mode, quellix::modShutDown::Ending ending,
               const std::optional<quellix::Profile>& profile,
               const std::optional<std::string>& named) {
  quellix::Win32Machine live;
  const quellix::Machine machine = live.machine();
  SpeakAsChosen(machine);
  const std::string why = profile ? WhyNotSame(*profile, ProfileOf(machine)) : "";
  if (!why.empty()) {
    Tell(why);
    return quellix::kFailed;
  }
  const std::string name =
      std::string(quellix::kApplicationTitle) + (profile ? " with rights" : "");
  if (!machine.session.ClaimInstance(name)) {
    if (!profile) return LeaveItToTheOther(mode, named);
    Tell(
        quellix::Tr("Quellix is open with administrator rights already. Close that window first."));
    return quellix::kDone;
  }
  LoadControlClasses();
  const quellix::HiddenOwner owner(name);
  quellix::Win32Com com;
  quellix::Win32Scheduler scheduler(com);
  FrmMain::Legacy legacy;
  int code = ShowMain(machine, scheduler, legacy, [&](FrmMain& window) {
    window.Open(owner.window(), mode, ending);
    if (named) window.RemoveNamed(*named);
  });
  while (code == FrmMain::kOtherLanguage) {
    SpeakAsChosen(machine);
    // Whoever has chosen it sees the window, also one of a hidden start that he has brought
    // forward.
    const StartMode again = mode == StartMode::kHidden ? StartMode::kNormal : mode;
    code = ShowMain(machine, scheduler, legacy,
                    [&](FrmMain& window) { window.OpenAgain(owner.window(), again, legacy); });
  }
  return code;
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR arguments, int) {
  quellix::SearchSystemFolderOnly();
  const auto profile = quellix::ParseRightsArguments(arguments);
  std::string rest = arguments;
  const auto ending = quellix::TakeEnding(rest);
  const StartMode mode = profile ? StartMode::kWithRights : quellix::ParseCommandLine(rest);
  try {
    return RunProgram(mode, ending, profile,
                      quellix::ParseRemoval(quellix::Narrow(GetCommandLineW())));
  } catch (const std::exception& error) {
    if (mode == StartMode::kHidden) return quellix::kFailed;
    Tell(quellix::Shown(error));
    return quellix::kFailed;
  }
}
