#include "app/schedule.h"

#include <algorithm>
#include <cstdio>

#include "platform/error.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/exit_code.h"
#include "settings/numbers.h"

namespace quellix {
namespace {

using When = Schedule::When;

// As the scheduler spells them.
constexpr std::string_view kDays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                      "Thursday", "Friday", "Saturday"};

// What of a text has a meaning of its own in XML.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char letter : text) {
    switch (letter) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      default:
        escaped += letter;
    }
  }
  return escaped;
}

// The time of day alone counts: the day is long gone.
std::string StartOf(const Schedule& schedule) {
  char text[40];
  std::snprintf(text, sizeof text, "2000-01-01T%02d:%02d:00", std::clamp(schedule.hour, 0, 23),
                std::clamp(schedule.minute, 0, 59));
  return text;
}

std::string Calendar(const Schedule& schedule, const std::string& days) {
  return "<CalendarTrigger><StartBoundary>" + StartOf(schedule) +
         "</StartBoundary><Enabled>true</Enabled>" + days + "</CalendarTrigger>";
}

std::string TriggerOf(const Schedule& schedule, std::string_view user) {
  switch (schedule.when) {
    case When::kWeekly:
      return Calendar(schedule, "<ScheduleByWeek><WeeksInterval>1</WeeksInterval><DaysOfWeek><" +
                                    std::string(kDays[schedule.weekday % 7]) +
                                    " /></DaysOfWeek></ScheduleByWeek>");
    case When::kAtLogOn:
      return "<LogonTrigger><Enabled>true</Enabled><UserId>" + Escaped(user) +
             "</UserId></LogonTrigger>";
    case When::kWhenIdle:
      return "<IdleTrigger><Enabled>true</Enabled></IdleTrigger>";
    default:
      return Calendar(schedule, "<ScheduleByDay><DaysInterval>1</DaysInterval></ScheduleByDay>");
  }
}

bool Has(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// What stands between a tag and its end; "" without one.
std::string_view Inside(std::string_view text, std::string_view tag) {
  const std::string begin = "<" + std::string(tag) + ">", end = "</" + std::string(tag) + ">";
  const size_t from = text.find(begin), to = text.find(end);
  if (from == text.npos || to == text.npos || to < from) return {};
  return text.substr(from + begin.size(), to - from - begin.size());
}

int NumberAt(std::string_view text, size_t at) {
  return text.size() < at + 2 ? 0 : ToInt16(text.substr(at, 2)).value_or(0);
}

// Without what its kind does not ask for.
Schedule Plain(Schedule schedule) {
  const bool is_weekly = schedule.when == When::kWeekly;
  const Schedule empty{.when = schedule.when};
  if (!is_weekly) schedule.weekday = empty.weekday;
  return is_weekly || schedule.when == When::kDaily ? schedule : empty;
}

// The program may have moved since, and not each scheduler tells what a task starts.
bool IsOfOthers(std::string_view description) {
  const std::string_view command = Inside(description, "Command");
  return !command.empty() && !ContainsNoCase(command, "quellix.exe");
}

void RequireOurs(const std::optional<Scheduler::Task>& task, const std::string& name) {
  if (task && IsOfOthers(task->description))
    throw Error(Error::Kind::kOther,
                Say("Windows' task scheduler has another task called %1.", name));
}

std::string ResultText(int32_t code) {
  switch (code) {
    case kHandedOn:
      return Tr("Quellix was open and was asked to clean; File, Last log tells what came of it");
    case kDone:
      return Tr("all was done");
    case kSomeFilesStayed:
      return Tr("some files stayed; File, Last log names them");
    case kFailed:
      return Tr("something failed; File, Last log tells what");
    default:
      return Tr("the scheduler tells the code %1", std::to_string(code));
  }
}

}  // namespace

std::string ScheduleText(const Schedule& schedule, std::string_view program,
                         std::string_view user) {
  const std::string who = Escaped(user);
  return "<?xml version=\"1.0\"?>\n"
         "<Task version=\"1.2\" xmlns=\"http://schemas.microsoft.com/windows/2004/02/mit/task\">"
         "<RegistrationInfo><Author>Quellix</Author><Description>Cleans what is ticked in "
         "Quellix, without a window.</Description></RegistrationInfo>"
         "<Triggers>" +
         TriggerOf(schedule, user) +
         "</Triggers>"
         "<Principals><Principal id=\"Author\"><UserId>" +
         who +
         "</UserId><LogonType>InteractiveToken</LogonType><RunLevel>LeastPrivilege</RunLevel>"
         "</Principal></Principals>"
         "<Settings><MultipleInstancesPolicy>IgnoreNew</MultipleInstancesPolicy>"
         "<DisallowStartIfOnBatteries>false</DisallowStartIfOnBatteries>"
         "<StopIfGoingOnBatteries>false</StopIfGoingOnBatteries>"
         "<StartWhenAvailable>true</StartWhenAvailable>"
         "<IdleSettings><StopOnIdleEnd>false</StopOnIdleEnd></IdleSettings>"
         "<Enabled>true</Enabled></Settings>"
         "<Actions Context=\"Author\"><Exec><Command>\"" +
         Escaped(program) + "\"</Command><Arguments>-h</Arguments></Exec></Actions></Task>";
}

std::optional<Schedule> ParseSchedule(std::string_view text) {
  const std::string_view triggers = Inside(text, "Triggers");
  if (triggers.empty() || !Has(text, "<Arguments>-h</Arguments>")) return std::nullopt;
  Schedule schedule{.when = When::kDaily};
  if (Has(triggers, "<LogonTrigger")) schedule.when = When::kAtLogOn;
  if (Has(triggers, "<IdleTrigger")) schedule.when = When::kWhenIdle;
  const std::string_view start = Inside(triggers, "StartBoundary");
  const size_t time = std::min(start.find('T'), start.size());
  if (time < start.size()) {
    schedule.hour = NumberAt(start, time + 1);
    schedule.minute = NumberAt(start, time + 4);
  }
  const std::string_view week = Inside(triggers, "DaysOfWeek");
  for (int day = 0; day < 7; ++day) {
    if (!Has(week, std::string("<") + std::string(kDays[day]))) continue;
    schedule.when = When::kWeekly;
    schedule.weekday = day;
    break;
  }
  return schedule;
}

// Users of one computer have tasks of their own.
std::string ScheduledCleaning::Name() const {
  return user_.empty() ? "Quellix" : "Quellix " + user_;
}

ScheduleState ScheduledCleaning::Look(const Locale& locale) const {
  const std::optional<Scheduler::Task> task = scheduler_.Find(Name());
  ScheduleState state;
  if (!task) return state;
  RequireOurs(task, Name());
  state.schedule = ParseSchedule(task->description).value_or(Schedule{.when = When::kDaily});
  if (!task->is_enabled) {
    state.next = Tr("It is switched off in Windows' task scheduler; OK switches it on again.");
  } else if (task->next_run) {
    // TRANSLATORS: %1 is a date with its time.
    state.next = Tr("Next: %1.", FormatDateTime(*task->next_run, locale));
  }
  if (!task->last_run) return state;
  const std::string when = FormatDateTime(*task->last_run, locale);
  // TRANSLATORS: %1 is a date with its time, %2 is what came of it: "all was done".
  state.last = task->last_result ? Tr("Last: %1, %2.", when, ResultText(*task->last_result))
                                 : Tr("Last: %1.", when);
  return state;
}

void ScheduledCleaning::Set(const Schedule& wanted) {
  const Schedule schedule = Plain(wanted);
  const std::optional<Scheduler::Task> task = scheduler_.Find(Name());
  RequireOurs(task, Name());
  if (schedule.when == When::kNever) {
    if (task) scheduler_.Remove(Name());
    return;
  }
  const std::string text = ScheduleText(schedule, program_, user_);
  const bool is_so = task && task->is_enabled && ParseSchedule(task->description) == schedule &&
                     Has(task->description, Escaped(program_));
  if (!is_so) scheduler_.Register(Name(), text);
}

}  // namespace quellix
