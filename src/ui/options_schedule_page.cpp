#include "ui/options_schedule_page.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"

namespace quellix {
namespace {

using When = Schedule::When;

constexpr Anchor kAnchors[] = {{fraSchedule, 0, 0, 1, 0},
                               {lblScheduleProblem, 0, 0, 1, 0},
                               {lblScheduleHint, 0, 0, 1, 0},
                               {lblNextRun, 0, 0, 1, 0},
                               {lblLastRun, 0, 0, 1, 0}};

// By When.
constexpr int kChoices[] = {optNever, optDaily, optWeekly, optAtLogOn, optWhenIdle};

// As the user's language calls it; 0 is Sunday.
std::wstring NameOfDay(int weekday) {
  constexpr LCTYPE kFromMonday = LOCALE_SDAYNAME1;
  wchar_t name[80] = {};
  GetLocaleInfoW(LOCALE_USER_DEFAULT, kFromMonday + static_cast<LCTYPE>((weekday + 6) % 7), name,
                 static_cast<int>(std::size(name)));
  return name;
}

}  // namespace

void OptionsSchedulePage::Fill() {
  layout().Add(kAnchors);
  is_read_ = is_changed_ = false;
  for (int day = 0; day < 7; ++day) {
    SendDlgItemMessageW(window(), cboWeekday, CB_ADDSTRING, 0,
                        reinterpret_cast<LPARAM>(NameOfDay(day).c_str()));
  }
  ShowSchedule({});
}

void OptionsSchedulePage::Reveal(bool visible) {
  if (visible && !is_read_) Look();
  OptionsPageWindow::Reveal(visible);
}

// Without a scheduler nothing can be chosen.
void OptionsSchedulePage::Look() {
  is_read_ = true;
  std::string problem;
  ScheduleState state;
  try {
    state = context().schedule.Look(context().machine.system.UserLocale());
  } catch (const Error& error) {
    problem = Shown(error);
  }
  ShowSchedule(state.schedule);
  SetText(lblNextRun, state.next);
  SetText(lblLastRun, state.last);
  SetText(lblScheduleProblem, problem);
  for (const int choice : kChoices) Enable(choice, problem.empty());
}

void OptionsSchedulePage::ShowSchedule(const Schedule& schedule) {
  CheckRadioButton(window(), optNever, optWhenIdle, kChoices[static_cast<size_t>(schedule.when)]);
  SendDlgItemMessageW(window(), cboWeekday, CB_SETCURSEL, static_cast<WPARAM>(schedule.weekday), 0);
  SYSTEMTIME time{};
  GetLocalTime(&time);
  time.wHour = static_cast<WORD>(schedule.hour);
  time.wMinute = static_cast<WORD>(schedule.minute);
  time.wSecond = 0;
  DateTime_SetSystemtime(Control(dtpTime), GDT_VALID, &time);
  EnableFields();
}

Schedule OptionsSchedulePage::Chosen() const {
  Schedule schedule;
  for (size_t i = 0; i < std::size(kChoices); ++i) {
    if (IsChecked(kChoices[i])) schedule.when = static_cast<When>(i);
  }
  SYSTEMTIME time{};
  DateTime_GetSystemtime(Control(dtpTime), &time);
  schedule.hour = time.wHour;
  schedule.minute = time.wMinute;
  const LRESULT day = SendDlgItemMessageW(window(), cboWeekday, CB_GETCURSEL, 0, 0);
  schedule.weekday = static_cast<int>(std::max<LRESULT>(day, 0));
  return schedule;
}

void OptionsSchedulePage::EnableFields() const {
  const bool is_weekly = IsChecked(optWeekly);
  Enable(cboWeekday, is_weekly);
  Enable(dtpTime, is_weekly || IsChecked(optDaily));
}

void OptionsSchedulePage::OnControl(int id, int code) {
  const bool is_choice = std::ranges::count(kChoices, id) > 0 && code == BN_CLICKED;
  if (!is_choice && (id != cboWeekday || code != CBN_SELCHANGE)) return;
  is_changed_ = true;
  EnableFields();
  Changed();
}

LRESULT OptionsSchedulePage::OnNotify(NMHDR& header) {
  if (header.idFrom == dtpTime && header.code == DTN_DATETIMECHANGE && is_read_) {
    is_changed_ = true;
    Changed();
  }
  return 0;
}

std::string OptionsSchedulePage::Store() {
  if (!is_changed_) return {};
  try {
    context().schedule.Set(Chosen());
  } catch (const Error& error) {
    return Tr("Windows' task scheduler did not take the schedule. %1", Shown(error));
  }
  is_changed_ = false;
  Look();
  return {};
}

}  // namespace quellix
