#include "app/startup.h"

#include "app/mod_shut_down.h"
#include "app/tips.h"
#include "registry_tools/mod_registry.h"
#include "support/recording_session.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

constexpr const char* kTipStore = "Software\\VB and VBA Program Settings\\kvmo\\Settings";

TEST(CommandLineTest, OnlyOneSwitchByItselfCounts) {
  const struct {
    const char* arguments;
    StartMode want;
  } kRows[] = {
      {"", StartMode::kNormal},
      {"-s", StartMode::kWithWindows},
      {"-S", StartMode::kWithWindows},
      {" -S  ", StartMode::kWithWindows},
      {"-c", StartMode::kCleanNow},
      {"-C", StartMode::kCleanNow},
      {"-h", StartMode::kHidden},
      {"-H", StartMode::kHidden},
      {"-s -c", StartMode::kNormal},
      {"-h -h", StartMode::kNormal},
      {"-h file", StartMode::kNormal},
      {"-hh", StartMode::kNormal},
      {"/h", StartMode::kNormal},
      {"--h", StartMode::kNormal},
      {"h", StartMode::kNormal},
      {"\"-h\"", StartMode::kNormal},
      {"\xE2\x80\x91h", StartMode::kNormal},
      {"\xFF-h", StartMode::kNormal},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(ParseCommandLine(row.arguments), row.want) << '"' << row.arguments << '"';
    const bool always = row.want == StartMode::kCleanNow || row.want == StartMode::kHidden;
    EXPECT_EQ(CleansAtStart(row.want, false), always);
    EXPECT_EQ(CleansAtStart(row.want, true), always || row.want == StartMode::kWithWindows);
  }
}

// A day of ticks every few seconds, with a clock that can be set.
class AutoCleanTest : public ::testing::Test {
 protected:
  static constexpr int64_t kSecond = 10'000'000;
  static constexpr int kTickSeconds = 5;

  // Ticks until the clock has shown so many more seconds; the runs that started meanwhile.
  int TickFor(int64_t seconds) {
    const int before = runs_;
    for (int64_t past = 0; past < seconds; past += kTickSeconds) {
      now_ += kTickSeconds * kSecond;
      Tick();
    }
    return runs_ - before;
  }
  void Tick() {
    auto_clean_.Tick([this] { return can_clean_; },
                     [this] {
                       ++runs_;
                       now_ += run_seconds_ * kSecond;
                     });
  }
  void SetClock(int hour, int minute, int second) {
    now_ = (kDay + hour * 3600 + minute * 60 + second) * kSecond;
  }

  static constexpr int64_t kDay = int64_t{420} * 365 * 86400;
  int64_t now_ = kDay * kSecond;
  int64_t run_seconds_ = 0;
  bool can_clean_ = true;
  int runs_ = 0;
  AutoClean auto_clean_{[this] { return now_; }};
};

TEST_F(AutoCleanTest, ARunStartsWhenMoreMinutesHaveBegunThanTheIntervalHas) {
  const struct {
    const char* name;
    std::optional<int16_t> minutes;
    int start_second, last_idle_minute, last_idle_second, next_second;
  } kRows[] = {
      {"one minute", int16_t{1}, 0, 1, 59, 60},
      {"one minute, from the last second of a minute", int16_t{1}, 59, 1, 59, 60},
      {"two minutes", int16_t{2}, 30, 2, 59, 60},
      {"none", int16_t{0}, 30, 0, 59, 60},
      {"less than none", int16_t{-5}, 30, 0, 59, 60},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    runs_ = 0;
    SetClock(10, 0, row.start_second);
    auto_clean_.Start(row.minutes);
    Tick();
    SetClock(10, row.last_idle_minute, row.last_idle_second);
    Tick();
    EXPECT_EQ(runs_, 0);
    SetClock(10, row.last_idle_minute, row.next_second);
    Tick();
    EXPECT_EQ(runs_, 1);
    Tick();
    EXPECT_EQ(runs_, 1);
  }
}

TEST_F(AutoCleanTest, WithoutAnIntervalNothingRuns) {
  EXPECT_EQ(TickFor(86400), 0);
  auto_clean_.Start(std::nullopt);
  EXPECT_FALSE(auto_clean_.IsOn());
  EXPECT_EQ(TickFor(86400), 0);
  auto_clean_.Start(int16_t{32767});
  EXPECT_TRUE(auto_clean_.IsOn());
  EXPECT_EQ(TickFor(int64_t{32767} * 60), 0);
  EXPECT_EQ(TickFor(60), 1);
}

TEST_F(AutoCleanTest, ARunWaitsUntilTheUserCouldCleanAndTheNextIntervalBeginsAtItsEnd) {
  run_seconds_ = 600;
  auto_clean_.Start(int16_t{9});
  EXPECT_EQ(TickFor(10 * 60), 1);
  EXPECT_EQ(TickFor(9 * 60), 0);
  EXPECT_EQ(TickFor(60), 1);
  // Two more minutes a round: one that only begins counts, and ticks do not fall on minutes.
  EXPECT_EQ(TickFor(24 * 3600), 24 * 60 / 10);
  can_clean_ = false;
  EXPECT_EQ(TickFor(3600), 0);
  can_clean_ = true;
  EXPECT_EQ(TickFor(5), 1);
}

TEST_F(AutoCleanTest, AClockThatIsSetStartsNoStormAndDelaysNoRun) {
  const struct {
    const char* name;
    int64_t jump;  // seconds
    int at_once;
  } kRows[] = {
      {"back by an hour", -3600, 0},  {"back by years", -int64_t{400} * 86400, 0},
      {"back by a second", -1, 0},    {"forward within the interval", 600, 0},
      {"forward by a day", 86400, 1}, {"forward by years", int64_t{9000} * 86400, 1},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    SetClock(10, 0, 0);
    auto_clean_.Start(int16_t{60});
    EXPECT_EQ(TickFor(20 * 60), 0);
    now_ += row.jump * kSecond;
    EXPECT_EQ(TickFor(5), row.at_once);
    EXPECT_EQ(TickFor(62 * 60), row.at_once + (row.at_once ? 0 : 1));
    // Put right again, it goes on at its pace.
    now_ -= row.jump * kSecond;
    EXPECT_LE(TickFor(5), 1);
    const int runs = TickFor(10 * 3600);
    EXPECT_TRUE(runs == 9 || runs == 10) << runs;
  }
}

class TipsTest : public RunFixture {
 protected:
  TipsTest() { Forget(); }
  ~TipsTest() override { Forget(); }

  void Forget() { machine->RemoveRegistryTree(kUser, kTipStore); }
  void WriteTips(const std::string& text) {
    ports.files.WriteWholeFile(ports.program_folder + "\\tips.txt", text);
  }
  void StoreIndex(const std::string& text) { machine->SetText(kUser, kTipStore, "Last Tip", text); }
  // What a start shows and its end stores.
  std::string ShowOne() {
    Tips tips(ports);
    EXPECT_TRUE(tips.Load());
    const std::string tip = tips.Next();
    tips.Save();
    return tip;
  }
  std::string Stored() {
    return modRegistry::ReadRegString({ports.registry, ports.system}, kUser, kTipStore, "Last Tip");
  }
};

TEST_F(TipsTest, EachStartShowsTheNextOne) {
  WriteTips("one\r\n\r\ntwo\r\n \r\nthree");
  for (const char* tip : {"one", "two", "three", "one", "two"}) EXPECT_EQ(ShowOne(), tip);
  EXPECT_EQ(Stored(), "1");
  WriteTips("other\n");
  EXPECT_EQ(ShowOne(), "other");
  EXPECT_EQ(Stored(), "0");
}

TEST_F(TipsTest, AnyStoredNumberLeadsToATip) {
  WriteTips("one\ntwo\nthree\n");
  const struct {
    const char* stored;
    const char* want;
  } kRows[] = {
      {"0", "two"},          {" 1 ", "three"}, {"2", "one"},           {"3", "one"},
      {"2147483647", "one"}, {"-1", "one"},    {"-2147483648", "one"}, {"99999999999", "one"},
      {"nonsense", "one"},   {"", "one"}};
  for (const auto& row : kRows) {
    StoreIndex(row.stored);
    EXPECT_EQ(ShowOne(), row.want) << row.stored;
  }
}

TEST_F(TipsTest, OfNoTipsNothingIsShownAndWhereNothingCanBeStoredNothingIsSaid) {
  EXPECT_FALSE(Tips(ports).Load());
  for (const std::string& text : {std::string(), std::string("\r\n\r\n"),
                                  std::string((1 << 20) + 1, 'x'), std::string(17 << 20, 'x')}) {
    WriteTips(text);
    EXPECT_EQ(ShowOne(), "");
  }
  EXPECT_EQ(Stored(), "");
  WriteTips("one\ntwo\n");
  StoreIndex("0");
  {
    const auto denial = machine->DenyRegistryWrites(kUser, kTipStore);
    EXPECT_EQ(ShowOne(), "two");
  }
  EXPECT_EQ(Stored(), "0");
}

using LoadTest = TipsTest;

TEST_F(LoadTest, AMissingTipsFileIsToldOnlyWhereTipsAreShown) {
  Tips tips(ports);
  EXPECT_EQ(engine.Load(), "");
  EXPECT_EQ(engine.Load(&tips),
            "A file needed is missing. Re-installing this application may fix this problem.\n");
  WriteTips("");
  EXPECT_EQ(engine.Load(&tips), "");
}

TEST_F(LoadTest, AutomaticCleaningIsOnWhenItHasAnInterval) {
  const struct {
    const char* settings;
    bool on;
  } kRows[] = {
      {"", false},
      {"AutoClean=1", true},
      {"AutoClean=1\nDuration=5\nHM=0", true},
      {"AutoClean=0\nDuration=5\nHM=0", false},
      {"AutoClean=1\nDuration=547\nHM=1", false},
      {"AutoClean=1\nDuration=soon", false},
      {"AutoClean=1\nDuration=", false},
      {"AutoClean=1\nDuration=40000\nHM=0", false},
      {"AutoClean=yes\nDuration=5", false},
  };
  for (const auto& row : kRows) {
    WriteSettings(std::string("[General]\n") + row.settings);
    engine.ApplyGeneralSettings();
    EXPECT_EQ(engine.auto_clean().IsOn(), row.on) << row.settings;
  }
}

TEST(ShutDownTest, EachCommandPassesItsFlags) {
  const struct {
    const char* name;
    void (*command)(Session&);
    const char* exit;
  } kRows[] = {
      {"Power Off", modShutDown::PowerOff, "exit 8 4294967295"},
      {"Restart", modShutDown::Restart, "exit 4 4294967295"},
      {"Log Off", modShutDown::LogOff, "exit 0 4294967295"},
      {"Shutdown", modShutDown::ShutDown, "exit 1 4294967295"},
      {"Force Shutdown", modShutDown::ForceShutDown, "exit 4 4294967295"},
  };
  for (const auto& row : kRows) {
    for (const bool fails : {false, true}) {
      RecordingSession session;
      session.fails = fails;
      row.command(session);
      EXPECT_EQ(session.calls, (std::vector<std::string>{"enable SeShutdownPrivilege", row.exit}))
          << row.name;
    }
  }
}

}  // namespace
}  // namespace quellix
