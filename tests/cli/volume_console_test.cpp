#include <sys/wait.h>

#include <cstdlib>

#include "cli/console_fixture.h"
#include "support/plugin_fixture.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

struct VolumeConsoleTest : ConsoleTest {
  VolumeTestMachine& volume() { return dynamic_cast<VolumeTestMachine&>(*machine); }
  ProgramResult CleanTemp(const Names& more = {}) {
    return Run(With({"clean", "--item", "CleanTempFiles"}, more));
  }
};

TEST_F(VolumeConsoleTest, BadVolumesAndUsersAreToldAndNothingIsTouched) {
  machine->MakeFile(temp + "a.tmp", "1");
  const std::string root = volume().options().volume;
  const std::tuple<const char*, Names, std::string> kRows[] = {
      {"no such user", {"--volume", root, "--user", "Nobody"}, kTesterName},
      {"bad drive", {"--volume", root, "--drive", "D=/x"}, "D:=DIR"},
      {"missing drive", {"--volume", root, "--drive", "D:=/no/such/folder"}, "/no/such/folder"}};
  Expect({"windows", "list"}, 1, {"work only on a running Windows"});
  for (const auto& [name, arguments, told] : kRows) {
    SCOPED_TRACE(name);
    StoreMachine(*machine);
    const ProgramResult result =
        RunQuellixctl(With({"clean", "--item", "CleanTempFiles"}, arguments));
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_TRUE(Holds(result.output, told));
    EXPECT_TRUE(machine->Exists(temp + "a.tmp"));
  }
}

TEST_F(VolumeConsoleTest, ListsAndPreviewsChangeNothingOnTheWholeVolume) {
  for (const std::string& path : {temp + "a.tmp", scratch + "junk.tmp", own + "Backup\\C_1.zip"})
    machine->MakeFile(path, "12345");
  WriteOwn("UNFI.txt", PluginFixture::Text("*.tmp|1|Temporary\r\n"));
  machine->MakeFile(own + "Plugins\\qx.cdp",
                    "D\x01Qx\r\nF\x01No\x01No\x01" + scratch + "*.tmp\r\n" +
                        "R\x01Yes\x01No\x01HKEY_CURRENT_USER\\Software\\Qx\x01\r\n");
  machine->SetText(kUser, kRunMruKey, "a", "cmd");
  machine->SetText(kUser, "Software\\Qx", "a", "1");
  StoreMachine(*machine);
  const auto picture = [this] { return PictureOf(volume().options().volume); };
  const auto before = picture();
  ASSERT_GT(before.size(), 15u);
  for (const char* method : {"delete", "recycle", "wipe", "backup"})
    Run({"clean", "--all", "--preview", "--method", method});
  const Names commands = Split(
      "search unnecessary/search unnecessary --delete --preview/registry file-references/"
      "registry app-paths --delete --preview/plugins preview qx/plugins list/recipes list --all/"
      "recipes check/backup list/keep list",
      '/');
  for (const std::string& command : commands) {
    const ProgramResult result = Run(WordsOf(command));
    EXPECT_TRUE(picture() == before) << command << result.output;
  }
}

// Several users of a volume, and several volumes, each with its own outcome.
struct ManyRuns : VolumeConsoleTest {
  ManyRuns() {
    StoreMachine(*machine);
    SeedUser(root_, "Other One", "S-1-5-21-1004336348-1177238915-682003330-1002");
    SeedUser(root_, "LocalService", "S-1-5-19");
    SeedUser(root_, "Default", "none");
    for (const std::string& name : AllNames()) WriteNative(TempOf(root_, name), "1");
    SeedWindows(second_.path());
    WriteNative(TempOf(second_.path(), kTesterName), "1");
  }
  static Names AllNames() { return {kTesterName, "Other One", "LocalService", "Default"}; }
  static std::string TempOf(const std::string& volume, const std::string& user) {
    return volume + "/Users/" + user + "/AppData/Local/Temp/a.tmp";
  }
  Names Left() {
    Names left;
    for (const std::string& name : AllNames()) {
      if (std::filesystem::exists(TempOf(root_, name))) left.push_back(name);
    }
    return left;
  }
  bool IsSecondLeft() { return std::filesystem::exists(TempOf(second_.path(), kTesterName)); }
  ProgramResult CleanThese(const std::string& command, const Names& more) {
    return RunQuellixctl(
        With(With(WordsOf(command), more), {"--settings", volume().options().settings}));
  }

  const std::string root_ = volume().options().volume;
  const TemporaryFolder second_, none_;
};

TEST_F(ManyRuns, UsersThatAreNamedOrAllPersonsAreCleaned) {
  const std::tuple<const char*, Names, Names, int> kRows[] = {
      {"several", {"--user", "other one", "--user", kTesterName}, {kTesterName, "Other One"}, 0},
      {"all", {"--all-users"}, {kTesterName, "Other One"}, 0},
      {"all and one more", {"--all-users", "--user", "Default"}, {"Default"}, 0},
      {"a service", {"--user", "localservice"}, {"LocalService"}, 0},
      {"one that is none", {"--user", "Nobody", "--user", kTesterName}, {kTesterName}, 1}};
  for (const auto& [row, users, cleaned, exit_code] : kRows) {
    SCOPED_TRACE(row);
    for (const std::string& name : AllNames()) WriteNative(TempOf(root_, name), "1");
    const Names arguments = With({"--volume", root_}, users);
    const auto before = PictureOf(root_);
    CleanThese("clean --item CleanTempFiles --preview", arguments);
    EXPECT_TRUE(PictureOf(root_) == before);
    const ProgramResult result = CleanThese("clean --item CleanTempFiles", arguments);
    EXPECT_EQ(result.exit_code, exit_code) << result.output;
    const Names left = Left();
    for (const std::string& name : cleaned)
      EXPECT_EQ(std::ranges::count(left, name), 0) << name << result.output;
    EXPECT_EQ(std::ranges::count(left, "LocalService"), std::string_view(row) != "a service");
    EXPECT_EQ(std::ranges::count(left, "Default"), std::string_view(row) != "all and one more");
  }
}

TEST_F(ManyRuns, VolumesHaveTheirOwnReportsAndOneSummary) {
  const std::string list = none_.path() + "/list", report = none_.path() + "/r.json";
  WriteNative(
      list, "# ours\r\n" + second_.path() + "\t" + none_.path() + "/own\n\n" + none_.path() + "\n");
  for (const char* jobs : {"1", "3"}) {
    SCOPED_TRACE(jobs);
    WriteNative(TempOf(root_, kTesterName), "1");
    WriteNative(TempOf(second_.path(), kTesterName), "1");
    WriteNative(none_.path() + "/r-4.json", "of an earlier run");
    const ProgramResult result =
        CleanThese("clean --item CleanTempFiles --all-users",
                   {"--volume", root_, "--volumes-from", list, "--jobs", jobs, "--report", report});
    EXPECT_EQ(result.exit_code, 1) << result.output;
    for (const std::string& told :
         {"== " + root_ + ", " + kTesterName + "\n", root_ + ", Other One: done\n",
          second_.path() + ", " + kTesterName + ": done\n",
          none_.path() + ": failed, stopped or not begun\n", std::string("no folder in "),
          std::string("== 4 runs\n")}) {
      EXPECT_TRUE(Holds(result.output, told));
    }
    EXPECT_EQ(Left(), (Names{"LocalService", "Default"}));
    EXPECT_FALSE(IsSecondLeft());
    EXPECT_TRUE(std::filesystem::exists(none_.path() + "/own"));
    EXPECT_TRUE(Holds(ReadNative(report), "\"user\":\"Other One\",\"exitCode\":0"));
    EXPECT_TRUE(Holds(ReadNative(none_.path() + "/r-3.json"),
                      "\"volume\":\"" + second_.path() + "\",\"user\":\"" + kTesterName));
    EXPECT_FALSE(std::filesystem::exists(none_.path() + "/r-4.json"));
    EXPECT_TRUE(Holds(ReadNative(report), "\"exitCode\":1,\"report\":null"));
    EXPECT_TRUE(Holds(ReadNative(report), "r-3.json\""));
  }
  const Names both = {"--volume", root_, "--volume", second_.path(), "--all-users"};
  const ProgramResult csv = CleanThese("clean --item CleanTempFiles --csv", both);
  EXPECT_EQ(csv.output.find("volume,user,kind"), csv.output.rfind("volume,user,kind"));
  const std::pair<const char*, Names> kRefused[] = {
      {"restore", WordsOf("backup restore C_1.zip")},
      {"a list", WordsOf("keep list")},
      {"a drive", WordsOf("clean --all --drive D:=/")}};
  for (const auto& [row, command] : kRefused)
    EXPECT_EQ(RunQuellixctl(With(command, both)).exit_code, 2) << row;
  EXPECT_EQ(RunQuellixctl({"clean", "--all"}).exit_code, 2);
}

TEST_F(ManyRuns, AVolumeSpelledTwiceIsWorkedOnOnce) {
  std::filesystem::create_directory_symlink(second_.path(), none_.path() + "/link");
  for (const std::string& other : {second_.path() + "/", none_.path() + "/link", second_.path()}) {
    SCOPED_TRACE(other);
    const ProgramResult result =
        CleanThese("clean --item CleanTempFiles --jobs 2",
                   {"--volume", second_.path(), "--volume", other, "--volume", none_.path()});
    EXPECT_TRUE(Holds(result.output, other + " is the same folder as " + second_.path()));
    EXPECT_TRUE(Holds(result.output, "== 2 runs\n"));
  }
}

TEST_F(ManyRuns, AllUsersAreThoseOfAllDrivesOrNone) {
  SeedWindows(none_.path());
  SeedUser(none_.path(), "Third", "S-1-5-21-1-2-3-1003");
  const auto list = [&](const std::string& name, const std::string& number) {
    machine->SetText(
        RegistryRoot::kLocalMachine,
        "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\S-1-5-21-1-2-3-" + number,
        "ProfileImagePath", "D:\\Users\\" + name);
    StoreMachine(*machine);
  };
  const auto clean = [&] {
    for (const std::string& name : AllNames()) WriteNative(TempOf(root_, name), "1");
    WriteNative(TempOf(none_.path(), "Third"), "1");
    return CleanThese("clean --item CleanTempFiles --all-users",
                      {"--volume", root_, "--drive", "D:=" + none_.path()});
  };
  list("Third", "1003");
  list("third", "1004");
  const ProgramResult all = clean();
  EXPECT_EQ(all.exit_code, 0) << all.output;
  EXPECT_TRUE(Holds(all.output, "== 3 runs\n"));
  EXPECT_FALSE(std::filesystem::exists(TempOf(none_.path(), "Third")));
  WriteNative(root_ + "/Users/Other One/NTUSER.DAT", "damaged");
  clean();
  EXPECT_EQ(std::ranges::count(Left(), kTesterName), 0);
  EXPECT_FALSE(std::filesystem::exists(TempOf(none_.path(), "Third")));
  list(kTesterName, "1005");
  const ProgramResult alike = clean();
  EXPECT_EQ(alike.exit_code, 1);
  for (const char* drive : {"C:", "D:"})
    EXPECT_TRUE(Holds(alike.output, std::string(drive) + "\\Users\\" + kTesterName));
  EXPECT_EQ(Left(), AllNames());
}

TEST_F(VolumeConsoleTest, ADamagedHiveIsSaidAndDoesNotHideTheReferencesOfTheOthers) {
  machine->SetText(kMachine, "Software\\Qx", "QxGone", "C:\\qx none\\a.txt");
  StoreMachine(*machine);
  const std::string hive = volume().Native("C:\\Users\\Quellix Tester\\NTUSER.DAT");
  for (const std::string& bytes : {std::string(), std::string(5000, '\x5A')}) {
    WriteNative(hive, bytes);
    Expect({"clean", "--item", "CleanRunMRU"}, 1, {"NTUSER.DAT"});
  }
  Expect({"registry", "file-references", "--thorough"}, 1,
         {"NTUSER.DAT", "\tQxGone\t", "1 invalid references"});
}

TEST_F(VolumeConsoleTest, WhatBelongsToARunningWindowsIsSaidAndTheRunGoesOn) {
  machine->MakeFile(temp + "a.tmp", "1");
  const ProgramResult result = CleanTemp({"CleanClipboard", "CleanCache", "CleanHistory"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_TRUE(Holds(result.output, "Temporary files... Files Deleted: 1 "));
  for (const char* caption :
       {"\nWindows Clipboard...", "\nHistory...", "\nTemporary Internet Files (Cache)..."}) {
    const size_t at = result.output.find(caption);
    ASSERT_NE(at, std::string::npos) << result.output;
    EXPECT_NE(result.output.find("running Windows", at), std::string::npos) << caption;
  }
  for (const char* command : {"list", "delete"}) {
    Expect({"cache", command}, 1,
           {"quellixctl: The browser cache belongs to a running Windows.\n"});
  }
}

// With a folder and a command: interrupts the command once it asks whether to replace a file, and
// answers it then.
constexpr const char* kInterrupting = R"(set -m
mkfifo "$1/answers"
exec 3<> "$1/answers"
"${@:2}" < "$1/answers" > "$1/said" 2>&1 &
until grep -qs 'is there already' "$1/said"; do kill -0 $! || exit 99; sleep 0.05; done
kill -INT $!
echo a >&3
wait $!)";

TEST_F(VolumeConsoleTest, CtrlCEndsARestore) {
  for (const char* name : {"a.tmp", "b.tmp"}) machine->MakeFile(temp + name, "backup");
  ASSERT_EQ(CleanTemp({"--method", "backup"}).exit_code, 0);
  const std::string archive = machine->Tree(own + "Backup").at(0);
  for (const char* name : {"a.tmp", "b.tmp"}) machine->MakeFile(temp + name, "there");
  const std::string folder = volume().options().volume + "/Scratch", script = folder + "/script";
  WriteNative(script, kInterrupting);
  std::string command = "bash '" + script + "' '" + folder + "' '" QUELLIXCTL "'";
  for (const std::string& argument :
       With({"backup", "restore", archive}, MachineArguments(*machine)))
    command += " '" + argument + "'";
  EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1);
  const std::string said = ReadNative(folder + "/said");
  EXPECT_TRUE(Holds(said, "0 files restored, 0 left as they were; stopped at your wish"));
  for (const char* name : {"a.tmp", "b.tmp"}) EXPECT_EQ(Read(temp + name), "there");
}

}  // namespace
}  // namespace quellix
