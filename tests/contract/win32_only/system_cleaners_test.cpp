// Windows' own disk cleanup, by a handler of the tests.

#include "platform/win32/win32_system_cleaners.h"
#include "platform/win32/win32_text.h"
#include "support/registered_cleaner_win32.h"
#include "support/test_machine.h"

namespace quellix {
namespace {

struct SystemCleanersTest : ::testing::Test {
  SystemCleanersTest() { Fill(); }
  void Fill() {
    for (const char* name : {"a", "b"}) machine->MakeFile(scratch + name, "12345");
  }
  size_t CountLeft() { return machine->Tree(scratch).size(); }
  // What it came to: bytes, what it says it freed, its name; or why it did not.
  std::string Told(CleanerUse use, const Pause& pause = {}) {
    try {
      const CleanerFind find = Win32SystemCleaners(patience).Use("Qx", use, false, pause);
      return std::to_string(find.bytes) + " " +
             (find.freed ? std::to_string(*find.freed) : "unknown") +
             (find.is_stopped ? " stopped" : "") + " " + find.cleaner.name + "|" +
             find.cleaner.description + (find.cleaner.is_usual ? "|usual" : "");
    } catch (const Error& error) {
      return error.what();
    }
  }

  std::unique_ptr<TestMachine> machine = TestMachine::Create();
  std::string scratch = machine->Scratch();
  Win32SystemCleaners cleaners;
  uint32_t patience = 10'000;
};

TEST_F(SystemCleanersTest, ACleanerLooksAndCleansByItsOwnCodeAndAFailureIsTold) {
  constexpr const char* kNew = " Qx by itself|It is new.|usual";
  constexpr const char* kOld = " Qx, as it is registered|";
  const std::tuple<const char*, bool, std::string, std::string, size_t> kRows[] = {
      {"", false, std::string("10 unknown") + kNew, std::string("10 10") + kNew, 0},
      {"", true, std::string("10 unknown") + kOld, std::string("10 10") + kOld, 0},
      {"silent", false, std::string("10 unknown") + kNew, std::string("10 unknown") + kNew, 0},
      {"fails", false, "Cannot finish Qx: ", "Cannot finish Qx: ", 2},
      {"asks", false, std::string("10 unknown") + kNew, "Qx asked something, and nobody was there.",
       2},
      {"hangs", false, std::string("10 unknown") + kNew,
       "Qx was stopped and did not come to an end. It may still be at work.", 2}};
  for (const auto& [behaviour, is_old, looked, cleans, left] : kRows) {
    SCOPED_TRACE(std::string(behaviour) + (is_old ? ", old" : ""));
    Fill();
    const RegisteredCleaner registered(L"Qx", Wide(scratch), Wide(behaviour), is_old);
    EXPECT_TRUE(Told(CleanerUse::kLook).starts_with(looked)) << Told(CleanerUse::kLook);
    EXPECT_EQ(CountLeft(), 2u) << "a look changes nothing";
    patience = behaviour == std::string("hangs") ? 100 : 10'000;
    const std::string cleaned = Told(CleanerUse::kClean, [](const Progress& progress) {
      return progress.path.ends_with(": hanging");
    });
    EXPECT_TRUE(cleaned.starts_with(cleans)) << cleaned;
    EXPECT_EQ(CountLeft(), left);
    if (left > 0) continue;
    EXPECT_TRUE(Told(CleanerUse::kClean).starts_with("0 ")) << "a second time";
  }
}

TEST_F(SystemCleanersTest, AStopIsHandedOnAndWhatItDoesIsToldMeanwhile) {
  const RegisteredCleaner registered(L"Qx", Wide(scratch), L"endless");
  std::string status;
  const std::string told = Told(CleanerUse::kLook, [&](const Progress& progress) {
    status = progress.path;
    return status == "Qx: looking" && progress.done == 1;
  });
  EXPECT_EQ(told, "1 unknown stopped Qx by itself|It is new.|usual");
  EXPECT_EQ(CountLeft(), 2u);
}

TEST_F(SystemCleanersTest, OneThatAsksForItIsOffTheListOnceItHasCleaned) {
  const RegisteredCleaner registered(L"Qx", Wide(scratch), L"once");
  EXPECT_TRUE(Told(CleanerUse::kLook).starts_with("10 unknown"));
  const CleanerFind stopped =
      cleaners.Use("Qx", CleanerUse::kClean, false, [](const Progress&) { return true; });
  EXPECT_TRUE(stopped.is_off_the_list == !stopped.is_stopped);
  if (stopped.is_off_the_list) return;  // it was done before it could be stopped
  EXPECT_TRUE(Told(CleanerUse::kLook).ends_with("|usual")) << "a look, or a stop, changes nothing";
  EXPECT_TRUE(cleaners.Use("Qx", CleanerUse::kClean, false, {}).is_off_the_list);
  EXPECT_EQ(CountLeft(), 0u);
  EXPECT_EQ(Told(CleanerUse::kClean), "Qx is not registered with Windows.");
}

TEST_F(SystemCleanersTest, ThoseThatAreRegisteredAreListedWithoutBeingLoaded) {
  EXPECT_EQ(Told(CleanerUse::kLook), "Qx is not registered with Windows.");
  const size_t before = cleaners.List().size();
  const RegisteredCleaner registered(L"Qx", Wide(scratch), L"", true);
  registered.Set(nullptr, L"no class");
  const std::vector<SystemCleaner> list = cleaners.List();
  ASSERT_EQ(list.size(), before + 1);
  const auto found = std::ranges::find(list, "Qx", &SystemCleaner::key);
  ASSERT_NE(found, list.end());
  EXPECT_EQ(found->name + "|" + found->description, "Qx, as it is registered|");
  EXPECT_EQ(Told(CleanerUse::kLook), "Qx, as it is registered names no program that could do it.");
}

}  // namespace
}  // namespace quellix
