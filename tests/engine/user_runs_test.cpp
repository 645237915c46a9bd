// Cleaning for several users, one after the other, by the rules of its window.
#include "ui/user_runs.h"

#include "platform/error.h"
#include "support/plugin_fixture.h"

namespace quellix {
namespace {

// Anna and Bob, each of whom has the test's machine while it is his turn.
struct UserRunsTest : PluginFixture {
  UserRunsTest() {
    Tick({"CleanTempFiles"});
    engine.Save();
    machine->MakeFile(temp + "a.tmp", "12345");
    runs.List();
    for (const size_t row : {size_t{0}, size_t{1}}) runs.Toggle(row);
  }
  std::string Open(const UserProfile& user, const std::function<void(const Machine&)>& work,
                   const std::function<void()>& breathe) {
    breathe();
    turns.push_back(user.name);
    if (user.name == fails) throw Error(Error::Kind::kDenied, user.name + " has no registry.");
    work(ports);
    return left;
  }
  // Stops when it is asked for the time `at`, from 1 on.
  Pause StopsAt(int at) {
    return [this, at](const Progress&) { return ++asked >= at; };
  }
  bool Tells(const std::string& text) const { return Holds(runs.text(), text); }

  Names turns;
  std::string fails, left;  // whose machine cannot be had; what stays behind each
  int asked = 0;
  const OtherUsers both{[] {
                          return std::vector<UserProfile>{{"Bob", "S-1-5-21-2", "C:\\b"},
                                                          {"Anna", "S-1-5-21-1", "C:\\a"}};
                        },
                        [this](const auto& user, const auto& work, const auto& breathe) {
                          return Open(user, work, breathe);
                        }};
  UserRuns runs{ports, view, both};
};

TEST_F(UserRunsTest, EachHasHisTurnWhateverFailsForAnother) {
  fails = "Anna";
  left = "It stays loaded.";
  runs.Look({});
  EXPECT_EQ(turns, (Names{"Anna", "Bob"}));
  EXPECT_TRUE(Tells("== Anna\r\nAnna has no registry.\r\n== Bob\r\nIt stays loaded."));
  EXPECT_EQ(runs.Summary(), "1 entry of 2 users");
  EXPECT_EQ(runs.RowAt(0).user + "|" + runs.RowAt(0).where, "Bob|" + temp + "a.tmp");
  fails.clear();
  runs.Clean({});
  EXPECT_TRUE(Tells("== Anna\r\nNothing of his is cleaned, as what would go could not be looked"));
  EXPECT_FALSE(machine->Exists(temp + "a.tmp"));
  EXPECT_FALSE(Holds(ReadOwn("Settings.ini"), "LastCleaned"));

  // What stays behind is told as well where his part of the work failed.
  MakeUnreadable(own + "Settings.ini");
  runs.Look({});
  EXPECT_TRUE(Tells("The settings could not be read"));
  EXPECT_TRUE(Tells("== Bob\r\n") && runs.text().ends_with("It stays loaded.\r\n"));
  EXPECT_EQ(runs.Summary(), "0 entries of 2 users");
}

// Wherever a look is stopped, nobody is cleaned by it who was not looked at to the end.
TEST_F(UserRunsTest, AfterAStopNothingIsCleanedThatWasNotLookedAt) {
  const std::string file = temp + "a.tmp";
  const auto look_until = [this](int at) {
    asked = 0;
    const Pause pause = StopsAt(at);
    view.on_pause = [&] { view.stops = pause({}); };
    runs.Look(pause);
    view.on_pause = nullptr;
    view.stops = false;
  };
  look_until(1'000'000);
  ASSERT_TRUE(runs.WasLookedAt());
  const int all = asked;
  for (int later = all - 1; later >= 0; later -= 1 + later / 3) {
    SCOPED_TRACE(later);
    look_until(all - later);
    EXPECT_FALSE(runs.WasLookedAt());
    runs.Clean({});
    EXPECT_TRUE(Tells("== Bob\r\nNothing of his is cleaned"));
    EXPECT_EQ(machine->Exists(file), Tells("== Anna\r\nNothing of his is cleaned"));
    machine->MakeFile(file, "12345");
  }
  runs.Look({});
  asked = 0;
  runs.Clean(StopsAt(1));
  EXPECT_TRUE(machine->Exists(file) && runs.text().empty()) << "stopped before the first";
  turns.clear();
  runs.Clean({});
  EXPECT_EQ(turns, (Names{"Anna", "Bob"}));
  EXPECT_FALSE(machine->Exists(file));
}

TEST_F(UserRunsTest, WhatIsNewRunsOnceItsRowsWereShown) {
  WriteOwn("Winapp2.ini", "[Qx *]\r\nFileKey1=" + scratch + "|a.log\r\n");
  machine->MakeFile(scratch + "a.log", "1");
  engine.selection().recipes().SetTicked("Qx", true);
  engine.Save();
  const auto clean = [this] {
    runs.Look({});
    const std::string question = runs.question();
    runs.Clean({});
    return question;
  };
  EXPECT_TRUE(Holds(clean(), "New or changed, so left until you have looked at what goes:\nQx"));
  EXPECT_TRUE(Tells("Qx is not cleaned") && machine->Exists(scratch + "a.log"));
  runs.Look({});
  ASSERT_TRUE(runs.shown());
  runs.NoteShown();
  EXPECT_FALSE(Holds(clean(), "New or changed"));
  EXPECT_FALSE(machine->Exists(scratch + "a.log"));

  // Where it cannot be stored that is told, and the recipe stays unseen.
  WriteOwn("Winapp2.ini", "[Qx *]\r\nFileKey1=" + scratch + "|*.log\r\n");
  runs.Look({});
  MakeUnreadable(own + "recipes.txt");
  runs.NoteShown();
  EXPECT_TRUE(Tells("Which recipes you have seen could not be stored."));
}

TEST_F(UserRunsTest, BeyondAMillionRowsTheyAreCounted) {
  UserRuns few(ports, view, both, 1);
  few.List();
  for (const size_t row : {size_t{0}, size_t{1}}) few.Toggle(row);
  few.Look({});
  EXPECT_EQ(few.Summary(), "1 entry of 2 users; 1 not listed");
  EXPECT_EQ(few.RowAt(0).user, "Anna");
}

}  // namespace
}  // namespace quellix
