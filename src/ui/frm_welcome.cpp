#include "ui/frm_welcome.h"

#include <utility>

#include "platform/error.h"
#include "platform/words.h"
#include "ui/control_text.h"
#include "ui/removal_choice.h"
#include "ui/window_prompts.h"

namespace quellix {
namespace {

constexpr std::string_view kSection = "General", kKey = "Welcome";
constexpr size_t kLongest = 16;

}  // namespace

void FrmWelcome::ShowOnce(HWND owner, std::function<void()> on_chosen) {
  if (settings_.ReadIniValue(kSection, kKey, "0", kLongest) != "1") return;
  on_chosen_ = std::move(on_chosen);
  Open(frmWelcome, owner);
}

void FrmWelcome::OnInit() {
  const int16_t mode = settings_.Load().RemovalMode;
  for (const RemovalChoice& way : kRemovalChoices) {
    CheckDlgButton(window(), way.control, way.mode == mode ? BST_CHECKED : BST_UNCHECKED);
  }
  // Asked only where there is a server to ask.
  if (!settings_.ReadIniValue("Updates", "Server", "").empty())
    ShowWindow(Control(chkUpdates), SW_SHOWNA);
  try {
    settings_.WriteIniValue(kSection, kKey, "0");
  } catch (const Error&) {
    // Then it comes again; the options tell of a folder that cannot be written.
  }
}

void FrmWelcome::Choose() {
  const Preferences stored = settings_.Load();
  Preferences preferences = stored;
  for (const RemovalChoice& way : kRemovalChoices) {
    if (IsTicked(window(), way.control)) preferences.RemovalMode = way.mode;
  }
  if (IsTicked(window(), chkUpdates)) preferences.check_updates = true;
  const bool is_same = preferences.RemovalMode == stored.RemovalMode &&
                       preferences.check_updates == stored.check_updates;
  if (is_same) return;
  try {
    settings_.Save(preferences, stored, false);
    on_chosen_();
  } catch (const Error& error) {
    WindowPrompts prompts;
    prompts.Attach(window());
    prompts.Inform(Tr("The choice could not be stored. %1", Shown(error)));
  }
}

void FrmWelcome::OnCommand(int id, int /*code*/) {
  if (id == IDOK) Choose();
  if (id == IDOK || id == IDCANCEL) OnClose();
}

}  // namespace quellix
