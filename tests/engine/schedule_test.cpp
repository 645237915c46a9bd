#include "app/schedule.h"

#include <gtest/gtest.h>

#include <map>

#include "platform/error.h"
#include "platform/text.h"
#include "support/holds.h"

namespace quellix {
namespace {

using When = Schedule::When;

// A scheduler that keeps what it is given and starts nothing.
struct KeepingScheduler : Scheduler {
  std::map<std::string, Task> tasks;
  int registered = 0, removed = 0;
  bool refuses = false;

  std::optional<Task> Find(std::string_view name) override {
    const auto found = tasks.find(std::string(name));
    return found == tasks.end() ? std::nullopt : std::optional(found->second);
  }
  void Register(std::string_view name, std::string_view description) override {
    if (refuses) throw Error(Error::Kind::kDenied, "refused");
    ++registered;
    tasks[std::string(name)].description = description;
  }
  void Remove(std::string_view name) override {
    ++removed;
    tasks.erase(std::string(name));
  }
};

TEST(ScheduleTest, EachIsReadBackAsItWasWritten) {
  const std::tuple<const char*, Schedule, const char*> kRows[] = {
      {"daily", {When::kDaily, 7, 5}, "2000-01-01T07:05:00</StartBoundary>"},
      {"weekly", {When::kWeekly, 23, 59, 0}, "<DaysOfWeek><Sunday /></DaysOfWeek>"},
      {"weekly at its end", {When::kWeekly, 0, 0, 6}, "<Saturday />"},
      {"at log-on", {When::kAtLogOn}, "<LogonTrigger><Enabled>true</Enabled><UserId>S-1&amp;"},
      {"when idle", {When::kWhenIdle}, "<IdleTrigger>"},
  };
  for (const auto& [what, schedule, part] : kRows) {
    SCOPED_TRACE(what);
    const std::string text = ScheduleText(schedule, "C:\\A & B\\quellix.exe", "S-1&2");
    EXPECT_TRUE(Holds(text, part));
    EXPECT_TRUE(Holds(text, "<Command>\"C:\\A &amp; B\\quellix.exe\"</Command>"));
    EXPECT_TRUE(Holds(text, "<Arguments>-h</Arguments>"));
    EXPECT_EQ(ParseSchedule(text), schedule);
  }
  for (const char* none : {"", "<Task/>", "<Triggers></Triggers>", "<Triggers>x</Triggers>",
                           "</Triggers><Triggers><Arguments>-h</Arguments>"})
    EXPECT_EQ(ParseSchedule(none), std::nullopt) << none;
}

TEST(ScheduleTest, TheOneTaskIsFoundChangedAndNeverDoubled) {
  KeepingScheduler scheduler;
  ScheduledCleaning cleaning(scheduler, "C:\\Q\\quellix.exe", "S-1");
  ScheduledCleaning other(scheduler, "C:\\Q\\quellix.exe", "S-2");
  EXPECT_EQ(cleaning.Look({}).schedule, Schedule{});
  cleaning.Set({});
  EXPECT_EQ(scheduler.removed, 0) << "there was none";
  cleaning.Set({When::kDaily, 7, 30});
  cleaning.Set({When::kDaily, 7, 30, 4});
  EXPECT_EQ(scheduler.registered, 1) << "it was so already";
  cleaning.Set({When::kWeekly, 7, 30, 4});
  other.Set({When::kWhenIdle, 9, 9});
  EXPECT_EQ(scheduler.registered, 3);
  ASSERT_EQ(scheduler.tasks.size(), 2u);
  EXPECT_EQ(cleaning.Look({}).schedule, (Schedule{When::kWeekly, 7, 30, 4}));
  // Of a copy of the program elsewhere it comes to this one.
  ScheduledCleaning moved(scheduler, "D:\\quellix.exe", "S-1");
  moved.Set({When::kWeekly, 7, 30, 4});
  ASSERT_EQ(scheduler.tasks.size(), 2u);
  EXPECT_TRUE(Holds(scheduler.tasks["Quellix S-1"].description, "\"D:\\quellix.exe\""));
  scheduler.refuses = true;
  EXPECT_THROW(cleaning.Set({When::kAtLogOn}), Error);
  EXPECT_EQ(cleaning.Look({}).schedule.when, When::kWeekly);
  cleaning.Set({});
  EXPECT_EQ(scheduler.tasks.count("Quellix S-1"), 0u);
  EXPECT_EQ(other.Look({}).schedule, (Schedule{When::kWhenIdle}));
}

TEST(ScheduleTest, NextAndLastTimesAreToldInTheUsersForm) {
  KeepingScheduler scheduler;
  ScheduledCleaning cleaning(scheduler, "C:\\quellix.exe", "");
  cleaning.Set({When::kDaily, 7, 30});
  Scheduler::Task& task = scheduler.tasks["Quellix"];
  EXPECT_EQ(cleaning.Look({}).next + cleaning.Look({}).last, "");
  task.next_run = LocalTime{2026, 11, 24, 7, 30, 0};
  EXPECT_EQ(cleaning.Look({}).next, "Next: 11/24/2026 7:30:00 AM.");
  const std::pair<std::optional<int32_t>, const char*> kRows[] = {
      {0, ", all was done."},
      {3, ", some files stayed; File, Last log names them."},
      {1, ", something failed; File, Last log tells what."},
      {4, ", Quellix was open and was asked to clean; File, Last log tells what came of it."},
      {267011, ", the scheduler tells the code 267011."},
      {std::nullopt, "."}};
  task.last_run = LocalTime{2026, 11, 23, 7, 30, 0};
  for (const auto& [code, text] : kRows) {
    task.last_result = code;
    EXPECT_EQ(cleaning.Look({}).last, std::string("Last: 11/23/2026 7:30:00 AM") + text);
  }
}

TEST(ScheduleTest, WhatWasChangedInTheSchedulerItselfIsTold) {
  KeepingScheduler scheduler;
  ScheduledCleaning cleaning(scheduler, "C:\\quellix.exe", "");
  cleaning.Set({When::kDaily, 7, 30});
  Scheduler::Task& task = scheduler.tasks["Quellix"];
  task.next_run = LocalTime{2026, 11, 24, 7, 30, 0};
  task.is_enabled = false;
  EXPECT_TRUE(Holds(cleaning.Look({}).next, "switched off"));
  cleaning.Set({When::kDaily, 7, 30});
  EXPECT_EQ(scheduler.registered, 2) << "it is wanted";
  task.description = ReplaceNoCase(task.description, "quellix.exe", "other.exe");
  EXPECT_THROW(cleaning.Look({}), Error);
  EXPECT_THROW(cleaning.Set({}), Error);
  EXPECT_EQ(scheduler.registered + scheduler.removed, 2) << "the task of others stays";
}

}  // namespace
}  // namespace quellix
