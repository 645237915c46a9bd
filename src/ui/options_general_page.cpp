#include "ui/options_general_page.h"

#include <algorithm>

#include "app/nearest_language.h"
#include "platform/error.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "settings/numbers.h"
#include "settings/settings.h"
#include "ui/removal_choice.h"

namespace quellix {
namespace {

constexpr Anchor kGeneralAnchors[] = {{fraAutoClean, 0, 0, 1, 0},
                                      {fraStart, 0, 0, 1, 0},
                                      {lblRunEntry, 0, 0, 1, 0},
                                      {fraProtect, 0, 0, 1, 0},
                                      {lblProtect, 0, 0, 1, 0}};
constexpr Anchor kDeletionAnchors[] = {{fraMethod, 0, 0, 1, 0},       {txtBackup, 0, 0, 1, 0},
                                       {cmdBrowseBackup, 1, 0, 1, 0}, {fraWipe, 0, 0, 1, 0},
                                       {cmbWipeStep, 0, 0, 1, 0},     {fraBackup, 0, 0, 1, 0}};
constexpr Anchor kBackupsAnchors[] = {{lblBackupHint, 0, 0, 1, 0}, {txtBackupHint, 0, 0, 1, 0}};

constexpr SettingBox kGeneralBoxes[] = {{chkAutoClean, &GeneralOptions::auto_clean},
                                        {chkTrayIcon, &GeneralOptions::tray_icon},
                                        {chkStartWWindows, &GeneralOptions::start_with_windows},
                                        {chkCleanStartup, &GeneralOptions::startup_clean},
                                        {Check1, &GeneralOptions::protect1},
                                        {Check2, &GeneralOptions::protect2},
                                        {Check3, &GeneralOptions::tip_box},
                                        {chkUpdates, &GeneralOptions::check_updates},
                                        {chkLogLanguage, &GeneralOptions::log_in_language}};
constexpr SettingBox kDeletionBoxes[] = {{chkExtraSecurity, &GeneralOptions::extra_security},
                                         {chkRename, &GeneralOptions::rename},
                                         {chkStrict, &GeneralOptions::Strict},
                                         {chkKeepOnAbort, &GeneralOptions::KeepOnAbort},
                                         {chkBackupRegistry, &GeneralOptions::BackupRegistry}};

constexpr Anchor kRunsAnchors[] = {{fraBefore, 0, 0, 1, 0}, {fraAfter, 0, 0, 1, 0}};
constexpr SettingBox kRunsBoxes[] = {{chkAsk, &GeneralOptions::ask},
                                     {chkSelectRisky, &GeneralOptions::select_risky},
                                     {chkKeepPins, &GeneralOptions::KeepPins},
                                     {chkExplorerMenu, &GeneralOptions::explorer_menu}};
// Fields for whole numbers of up to four digits.
constexpr struct {
  int control;
  int16_t GeneralOptions::*value;
} kRunsNumbers[] = {{txtOlderThan, &GeneralOptions::OlderThanDays},
                    {txtKeepLogs, &GeneralOptions::kept_logs},
                    {txtKeepDays, &GeneralOptions::KeepDays}};
constexpr WPARAM kMostDigits = 4, kMostPercentDigits = 2;

constexpr WPARAM kFastStep = 65536;

void AddEntry(HWND list, const std::string& text, WPARAM data) {
  const LRESULT row =
      SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Wide(text).c_str()));
  SendMessageW(list, CB_SETITEMDATA, static_cast<WPARAM>(row), static_cast<LPARAM>(data));
}

}  // namespace

void OptionsGeneralPage::Fill() {
  layout().Add(kGeneralAnchors);
  const GeneralOptions& general = options().general;
  ShowBoxes(kGeneralBoxes);
  AddEntry(Control(cmbAutoClean), Tr("Minute(s)"), 0);
  AddEntry(Control(cmbAutoClean), Tr("Hour(s)"), 1);
  SendDlgItemMessageW(window(), cmbAutoClean, CB_SETCURSEL, general.InHours() ? 1 : 0, 0);
  SetText(cmbAutoClean1, general.typed_duration);
  SendDlgItemMessageW(window(), txtLowDisk, EM_LIMITTEXT, kMostPercentDigits, 0);
  SetText(txtLowDisk, general.typed_low_disk);
  FillLanguages();
  ShowSaved();
  EnableFields();
}

// A language that is named by hand, such as a file, stays one.
void OptionsGeneralPage::FillLanguages() {
  const HWND list = Control(cboLanguage);
  const std::string& chosen = options().general.language;
  languages_ = Languages();
  languages_.insert(languages_.begin(), {"", Tr("As Windows")});
  const auto is_chosen = [&](const Language& language) {
    return IsSameLanguage(language.tag, chosen);
  };
  if (std::ranges::none_of(languages_, is_chosen)) languages_.push_back({chosen, chosen});
  for (const Language& language : languages_) AddEntry(list, language.name, 0);
  const auto place = std::ranges::find_if(languages_, is_chosen) - languages_.begin();
  SendMessageW(list, CB_SETCURSEL, static_cast<WPARAM>(place), 0);
}

// The Run value: said only while there is something to say.
void OptionsGeneralPage::ShowSaved() {
  try {
    const bool is_changed = LookAtRunValue(context().machine) == RunValue::kChanged;
    SetText(lblRunEntry,
            is_changed
                ? Tr("Another program changed how Quellix starts with Windows; OK sets it right.")
                : "");
  } catch (const Error& error) {
    SetText(lblRunEntry, Shown(error));
  }
}

void OptionsGeneralPage::EnableFields() const {
  const GeneralOptions& general = options().general;
  for (const int id : {cmbAutoClean1, cmbAutoClean}) Enable(id, general.auto_clean);
  Enable(chkTrayIcon, general.auto_clean || ToInt16(general.typed_low_disk).value_or(0) > 0);
}

void OptionsGeneralPage::OnControl(int id, int code) {
  GeneralOptions& general = options().general;
  if (id == cmbAutoClean1 && code == EN_CHANGE) {
    general.typed_duration = TextOf(cmbAutoClean1);
  } else if (id == txtLowDisk && code == EN_CHANGE) {
    TypeLowDisk(general, TextOf(txtLowDisk));
    Check(chkTrayIcon, general.tray_icon);
  } else if (id == chkTrayIcon && code == BN_CLICKED) {
    TakeTrayIcon(general, IsChecked(chkTrayIcon));
    if (TextOf(txtLowDisk) != general.typed_low_disk) SetText(txtLowDisk, general.typed_low_disk);
  } else if (id == cmbAutoClean && code == CBN_SELCHANGE) {
    general.hours =
        static_cast<int16_t>(SendDlgItemMessageW(window(), cmbAutoClean, CB_GETCURSEL, 0, 0));
  } else if (id == cboLanguage && code == CBN_SELCHANGE) {
    const LRESULT row = SendDlgItemMessageW(window(), cboLanguage, CB_GETCURSEL, 0, 0);
    general.language = languages_[static_cast<size_t>(row)].tag;
  } else if (!TakeBox(kGeneralBoxes, id)) {
    return;
  }
  EnableFields();
  Changed();
}

void OptionsDeletionPage::Fill() {
  layout().Add(kDeletionAnchors);
  ShowBoxes(kDeletionBoxes);
  for (const RemovalChoice& method : kRemovalChoices) {
    Check(method.control, method.mode == options().general.RemovalMode);
  }
  FillWipeSteps();
  SetText(txtBackup, options().general.BackupFolder);
}

// A step that neither entry names was written into the settings by hand and stays one.
void OptionsDeletionPage::FillWipeSteps() const {
  const HWND steps = Control(cmbWipeStep);
  const uint64_t step = options().general.WipeStep;
  AddEntry(steps, Tr("one byte at a time, as slow as it is thorough"), 1);
  AddEntry(steps, Tr("64 KB at a time, fast"), kFastStep);
  if (step != 1 && step != kFastStep) {
    AddEntry(steps, TrN("%1 byte at a time", "%1 bytes at a time", step, std::to_string(step)),
             step);
  }
  SendMessageW(steps, CB_SETCURSEL, step == 1 ? 0 : step == kFastStep ? 1 : 2, 0);
}

void OptionsDeletionPage::OnControl(int id, int code) {
  if (id == cmdBrowseBackup) return BrowseForBackup();
  if (TakeBox(kDeletionBoxes, id) || Take(id, code)) Changed();
}

bool OptionsDeletionPage::Take(int id, int code) {
  GeneralOptions& general = options().general;
  if (id == txtBackup) {
    general.BackupFolder = TextOf(txtBackup);
    return code == EN_CHANGE;
  }
  if (id == cmbWipeStep) {
    const LRESULT row = SendDlgItemMessageW(window(), id, CB_GETCURSEL, 0, 0);
    general.WipeStep = static_cast<uint64_t>(
        SendDlgItemMessageW(window(), id, CB_GETITEMDATA, static_cast<WPARAM>(row), 0));
    return code == CBN_SELCHANGE;
  }
  const auto method = std::ranges::find(kRemovalChoices, id, &RemovalChoice::control);
  if (method == std::end(kRemovalChoices) || !IsChecked(id)) return false;
  general.RemovalMode = method->mode;
  return true;
}

void OptionsDeletionPage::BrowseForBackup() {
  const std::optional<std::string> folder =
      context().prompts.AskFolder(Tr("Keep the backups in this folder:"));
  if (folder) SetText(txtBackup, *folder);
}

void OptionsRunsPage::Fill() {
  layout().Add(kRunsAnchors);
  ShowBoxes(kRunsBoxes);
  for (const auto& number : kRunsNumbers) {
    SendDlgItemMessageW(window(), number.control, EM_LIMITTEXT, kMostDigits, 0);
    SetText(number.control, std::to_string(options().general.*number.value));
  }
}

void OptionsRunsPage::OnControl(int id, int code) {
  if (TakeBox(kRunsBoxes, id)) return Changed();
  for (const auto& number : kRunsNumbers) {
    if (number.control != id || code != EN_CHANGE) continue;
    // More than four digits come from Settings.ini alone.
    options().general.*number.value = ToInt16(TextOf(id)).value_or(0);
    Changed();
  }
}

void OptionsBackupsPage::Fill() {
  layout().Add(kBackupsAnchors);
  ShowSaved();
}

void OptionsBackupsPage::ShowSaved() {
  SetText(txtBackupHint, Settings(context().machine).Load().BackupFolder);
}

void OptionsBackupsPage::OnControl(int id, int /*code*/) {
  if (id == cmdBackups) context().show_backups(GetParent(window()));
}

}  // namespace quellix
