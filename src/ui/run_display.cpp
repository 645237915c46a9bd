#include "ui/run_display.h"

#include <utility>

#include "engine.h"
#include "platform/win32/win32_text.h"
#include "ui/control_text.h"
#include "ui/dialog.h"
#include "ui/long_work.h"
#include "ui/resource.h"
#include "ui/window_prompts.h"

namespace quellix {

void RunDisplay::Attach(HWND window, ShowItem show_item) {
  window_ = window;
  show_item_ = std::move(show_item);
}

void RunDisplay::ReviewFinds(const Machine& machine) {
  results_ = std::make_unique<FrmDeletetion>(machine);
}

HWND RunDisplay::Front() const {
  return results_ && results_->IsOpen() ? results_->window() : window_;
}

bool RunDisplay::OpenResults(SearchResults& results) {
  if (!results_) return false;
  Flush();
  results_->Show(window_, results);
  return true;
}

void RunDisplay::AwaitResults() {
  Flush();
  if (results_->IsOpen()) results_->Refresh();
  MSG message;
  while (results_->IsOpen()) {
    if (GetMessageW(&message, nullptr, 0, 0) <= 0) {
      PostQuitMessage(static_cast<int>(message.wParam));
      return results_->Close();
    }
    Dialog::Dispatch(message);
  }
}

std::optional<RunReport> RunDisplay::TakeReport() { return std::exchange(report_, std::nullopt); }

void RunDisplay::ShowCurrentItem(const Item* item) {
  item_ = item;
  if (!item) return;
  Flush();
  UpdateWindow(window_);
}

void RunDisplay::ShowCritical(std::string_view text) {
  Flush();
  ShowBox(Front(), text, MB_OK | MB_ICONERROR);
}

bool RunDisplay::AskBeforeRun(HWND owner, std::string_view question) {
  return ShowBox(owner, question, MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2) == IDYES;
}

bool RunDisplay::AskToGoOn(std::string_view question) {
  Flush();
  return AskBeforeRun(Front(), question);
}

ProgramAnswer RunDisplay::AskAboutProgram(const ProgramQuestion& question) {
  Flush();
  return AskAboutProgramBefore(Front(), question);
}

void RunDisplay::Flush() {
  FlushText(lblStatus, status_, shown_status_);
  FlushText(lblCleanDate, last_cleaned_, shown_last_cleaned_);
  if (bar_ != shown_bar_) FlushProgress();
  if (commands_ != shown_commands_) FlushCommands();
  if (item_ != shown_item_) show_item_(item_);
  shown_item_ = item_;
}

void RunDisplay::FlushText(int control, const std::string& text, std::string& shown) const {
  if (text == shown) return;
  SetDlgItemTextW(window_, control, Wide(text).c_str());
  shown = text;
}

void RunDisplay::FlushProgress() {
  const HWND bar = GetDlgItem(window_, pgClean);
  const Progress files = StepsOf(files_);
  const Progress steps{.done = static_cast<uint64_t>(bar_.value),
                       .total = static_cast<uint64_t>(bar_.max)};
  ShowSteps(bar, files.total != 0 ? files : steps);
  ShowWindow(bar, bar_.visible ? SW_SHOWNA : SW_HIDE);
  shown_bar_ = bar_;
}

void RunDisplay::ShowFigures(const Locale& locale, uint64_t milliseconds) {
  const std::string text = ProgressText(files_, locale, milliseconds);
  if (text.empty()) return;
  FlushProgress();
  ShowLine(text);
}

void RunDisplay::ShowStopped(std::string_view text) { ShowLine(text); }

// "" brings back when was cleaned last.
void RunDisplay::ShowLine(std::string_view text) {
  ShowControlText(GetDlgItem(window_, lblProgress), text);
  const bool has_text = !text.empty();
  ShowWindow(GetDlgItem(window_, lblProgress), has_text ? SW_SHOWNA : SW_HIDE);
  for (const int id : {lblCleanCaption, lblCleanDate}) {
    ShowWindow(GetDlgItem(window_, id), has_text ? SW_HIDE : SW_SHOWNA);
  }
}

// The focus moves along: a disabled button would swallow the keyboard.
void RunDisplay::FlushCommands() {
  const HWND stop = GetDlgItem(window_, cmdStop), focus = GetFocus();
  if (commands_.stop) EnableWindow(stop, TRUE);
  for (const int command : {cmdBackups, cmdPreview, cmdClean, cmdRights}) {
    const HWND button = GetDlgItem(window_, command);
    if (!commands_.clean && focus == button) {
      pressed_ = button;
      SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(stop), TRUE);
    }
    EnableWindow(button, commands_.clean);
  }
  if (!commands_.stop && GetFocus() == stop) {
    const HWND back = pressed_ ? pressed_ : GetDlgItem(window_, cmdClean);
    SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(back), TRUE);
  }
  EnableWindow(stop, commands_.stop);
  if (commands_.menus != shown_commands_.menus) EnableMenus(commands_.menus);
  shown_commands_ = commands_;
}

void RunDisplay::EnableMenus(bool enable) const {
  for (const int menu : {mnuFile, mnuPlugins, mnuTools, mnuHelp}) {
    EnableMenuItem(GetMenu(window_), static_cast<UINT>(menu - mnuFile),
                   MF_BYPOSITION | (enable ? MF_ENABLED : MF_GRAYED));
  }
  DrawMenuBar(window_);
}

}  // namespace quellix
