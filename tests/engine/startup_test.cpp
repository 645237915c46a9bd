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
  const std::pair<StartMode, Names> kRows[] = {
      {StartMode::kNormal,
       {"", "-s -c", "-h -h", "-h file", "-hh", "/h", "--h", "h", "\"-h\"", "\u2011h", "\xFF-h"}},
      {StartMode::kWithWindows, {"-s", "-S", " -S  "}},
      {StartMode::kCleanNow, {"-c", "-C"}},
      {StartMode::kHidden, {"-h", "-H"}}};
  for (const auto& [mode, lines] : kRows) {
    for (const std::string& line : lines) EXPECT_EQ(ParseCommandLine(line), mode) << line;
    const bool always = mode == StartMode::kCleanNow || mode == StartMode::kHidden;
    EXPECT_EQ(CleansAtStart(mode, false), always);
    EXPECT_EQ(CleansAtStart(mode, true), always || mode == StartMode::kWithWindows);
  }
}

TEST(CommandLineTest, ExplorersMenuNamesOneFullPath) {
  const std::tuple<const char*, std::string, std::string> kRows[] = {
      {"quoted program", R"("C:\Pro grams\quellix.exe" --remove "C:\a b.txt")", R"(C:\a b.txt)"},
      {"plain program", R"(quellix.exe   --REMOVE   "C:\a")", R"(C:\a)"},
      {"a drive", R"(q --remove "D:\")", R"(D:\)"},
      {"a share", R"(q --remove "\\server\share\a")", R"(\\server\share\a)"},
      {"like switches", R"(q --remove "C:\-h --then shutdown")", R"(C:\-h --then shutdown)"},
      {"outside ASCII", "q --remove \"C:\\\xD0\x96\"", "C:\\\xD0\x96"},
      {"nothing", "", ""},
      {"the program alone", R"("C:\q.exe")", ""},
      {"no path", "q --remove", ""},
      {"an empty one", R"(q --remove "")", ""},
      {"without quotes", R"(q --remove C:\a)", ""},
      {"relative", R"(q --remove "a\b")", ""},
      {"relative on a drive", R"(q --remove "C:a")", ""},
      {"a quote inside", R"(q --remove "C:\a" "C:\b")", ""},
      {"an open quote", R"(q --remove "C:\a)", ""},
      {"something before", R"(q -h --remove "C:\a")", ""},
      {"another switch", R"(q --removed "C:\a")", ""}};
  for (const auto& [row, line, path] : kRows) {
    EXPECT_EQ(ParseRemoval(line).value_or(""), path) << row;
  }
}

// A day of ticks every few seconds, with a clock that can be set.
struct AutoCleanTest : ::testing::Test {
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
  const std::tuple<const char*, std::optional<int16_t>, int, int, int, int> kRows[] = {
      {"one minute", int16_t{1}, 0, 1, 59, 60},
      {"one minute, from the last second of a minute", int16_t{1}, 59, 1, 59, 60},
      {"two minutes", int16_t{2}, 30, 2, 59, 60},
      {"none", int16_t{0}, 30, 0, 59, 60},
      {"less than none", int16_t{-5}, 30, 0, 59, 60}};
  for (const auto& [name, minutes, start_second, last_idle_minute, last_idle_second, next_second] :
       kRows) {
    SCOPED_TRACE(name);
    runs_ = 0;
    SetClock(10, 0, start_second);
    auto_clean_.Start(minutes);
    Tick();
    SetClock(10, last_idle_minute, last_idle_second);
    Tick();
    EXPECT_EQ(runs_, 0);
    SetClock(10, last_idle_minute, next_second);
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
  // jump: seconds.
  const std::tuple<const char*, int64_t, int> kRows[] = {
      {"back by an hour", -3600, 0},  {"back by years", -int64_t{400} * 86400, 0},
      {"back by a second", -1, 0},    {"forward within the interval", 600, 0},
      {"forward by a day", 86400, 1}, {"forward by years", int64_t{9000} * 86400, 1}};
  for (const auto& [name, jump, at_once] : kRows) {
    SCOPED_TRACE(name);
    SetClock(10, 0, 0);
    auto_clean_.Start(int16_t{60});
    EXPECT_EQ(TickFor(20 * 60), 0);
    now_ += jump * kSecond;
    EXPECT_EQ(TickFor(5), at_once);
    EXPECT_EQ(TickFor(62 * 60), at_once + (at_once ? 0 : 1));
    // Put right again, it goes on at its pace.
    now_ -= jump * kSecond;
    EXPECT_LE(TickFor(5), 1);
    const int runs = TickFor(10 * 3600);
    EXPECT_TRUE(runs == 9 || runs == 10) << runs;
  }
}

struct TipsTest : RunFixture {
  TipsTest() { Forget(); }
  ~TipsTest() override { Forget(); }

  void Forget() { machine->RemoveRegistryTree(kUser, kTipStore); }
  void WriteTips(const std::string& text) { WriteOwn("tips.txt", text); }
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
  const std::pair<const char*, const char*> kRows[] = {
      {"0", "two"},          {" 1 ", "three"}, {"2", "one"},           {"3", "one"},
      {"2147483647", "one"}, {"-1", "one"},    {"-2147483648", "one"}, {"99999999999", "one"},
      {"nonsense", "one"},   {"", "one"}};
  for (const auto& [stored, want] : kRows) {
    StoreIndex(stored);
    EXPECT_EQ(ShowOne(), want) << stored;
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

TEST(ShutDownTest, EachCommandPassesItsFlags) {
  const std::tuple<const char*, void (*)(Session&), const char*> kRows[] = {
      {"Power Off", modShutDown::PowerOff, "exit 8 4294967295"},
      {"Restart", modShutDown::Restart, "exit 4 4294967295"},
      {"Log Off", modShutDown::LogOff, "exit 0 4294967295"},
      {"Shutdown", modShutDown::ShutDown, "exit 1 4294967295"},
      {"Force Shutdown", modShutDown::ForceShutDown, "exit 4 4294967295"}};
  for (const auto& [name, command, exit_call] : kRows) {
    for (const bool fails : {false, true}) {
      RecordingSession session;
      session.fails = fails;
      command(session);
      EXPECT_EQ(session.calls, (Names{"enable SeShutdownPrivilege", exit_call})) << name;
    }
  }
}

TEST(ShutDownTest, ACleaningEndsAsItsCommandLineSays) {
  using modShutDown::Ending;
  const std::tuple<const char*, const char*, Ending, Names> kRows[] = {
      {"-h --then shutdown", "-h", Ending::kShutDown, {"exit 8 4294967295"}},
      {" -C  --THEN Restart ", "-C ", Ending::kRestart, {"exit 2 4294967295"}},
      {"--then logoff", "", Ending::kLogOff, {"exit 0 4294967295"}},
      {"-h --then sleep", "-h --then sleep", Ending::kNone, {}},
      {"-h shutdown", "-h shutdown", Ending::kNone, {}},
      {"--then shutdown -h", "--then shutdown -h", Ending::kNone, {}},
      {"-h", "-h", Ending::kNone, {}},
      {"", "", Ending::kNone, {}}};
  for (const auto& [given, rest, ends, calls] : kRows) {
    SCOPED_TRACE(given);
    std::string arguments = given;
    const Ending ending = TakeEnding(arguments);
    EXPECT_EQ(ending, ends);
    EXPECT_EQ(arguments, rest);
    RecordingSession session;
    modShutDown::End(session, ending);
    std::erase(session.calls, "enable SeShutdownPrivilege");
    EXPECT_EQ(session.calls, calls);
  }
}

}  // namespace
}  // namespace quellix
