#include "platform/win32/win32_scheduler.h"

#include <gtest/gtest.h>

#include "app/schedule.h"
#include "platform/error.h"
#include "support/holds.h"

namespace quellix {
namespace {

using When = Schedule::When;

constexpr const char* kProgram = "C:\\Program Files\\A & B\\quellix.exe";

// Wine keeps who registered a task and how it is to run, but neither when nor what: that the text
// holds both is asked of the text itself.
TEST(Win32SchedulerTest, ATaskIsStoredFoundReplacedAndRemoved) {
  Win32Com com;
  Win32Scheduler scheduler(com);
  ScheduledCleaning cleaning(scheduler, kProgram, "S-1-5-21-1-2-3-1000");
  const std::string name = "Quellix S-1-5-21-1-2-3-1000";
  cleaning.Set({});
  EXPECT_FALSE(scheduler.Find(name));
  EXPECT_EQ(cleaning.Look({}).schedule, Schedule{});
  scheduler.Remove(name);  // one that is missing is no error
  for (const Schedule& schedule : {Schedule{When::kDaily, 7, 30}, Schedule{When::kWeekly, 22, 5, 0},
                                   Schedule{When::kAtLogOn}, Schedule{When::kWhenIdle}}) {
    SCOPED_TRACE(static_cast<int>(schedule.when));
    cleaning.Set(schedule);
    EXPECT_NE(cleaning.Look({}).schedule.when, When::kNever);
    const auto task = scheduler.Find(name);
    ASSERT_TRUE(task);
    EXPECT_TRUE(Holds(task->description, "<Author>Quellix</Author>"));
    EXPECT_TRUE(Holds(task->description, "<StartWhenAvailable>true</StartWhenAvailable>"));
    EXPECT_FALSE(task->last_run) << "it never ran";
  }
  EXPECT_THROW(scheduler.Register(name, "<Task>no task"), Error);
  EXPECT_TRUE(scheduler.Find(name)) << "what was there is as it was";
  cleaning.Set({});
  EXPECT_FALSE(scheduler.Find(name));
}

}  // namespace
}  // namespace quellix
