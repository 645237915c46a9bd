// What commands of the registry start, in every form that they are written in.

#include "platform/forwarding_system.h"
#include "registry_tools/file_reference.h"
#include "support/registry_fixture.h"

namespace quellix {
namespace {

using State = CommandTarget::State;

// Says that programs are looked for elsewhere.
struct PathSystem : ForwardingSystem {
  using ForwardingSystem::ForwardingSystem;
  std::optional<std::string> Environment(std::string_view name) override {
    return EqualsNoCase(name, "PATH") ? path : inner_.Environment(name);
  }
  std::string path;
};

struct CommandRow {
  const char* row;
  std::string command;
  State state;
  std::string file;  // in any case
  std::string arguments = "";
};

struct CommandReferenceTest : RegistryFixture {
  CommandReferenceTest() {
    for (const char* name : {"a b\\run me.exe", "a b\\plain.exe", "a b\\lib.dll", "a.bat"})
      machine->MakeFile(scratch + name, "x");
    // In the folder of Windows, where some are looked for; those of the system stay.
    for (const std::string& name : own_names) MakeOwn(system + "\\" + name);
    for (const char* name : {"qx32.exe", "qx32.dll", "rundll32.exe"})
      MakeOwn(windows + "\\SysWOW64\\" + name);
  }
  ~CommandReferenceTest() override {
    for (const std::string& path : made) ports.files.RemoveFile(path);
  }
  void MakeOwn(const std::string& path) {
    if (machine->Exists(path)) return;
    machine->MakeFile(path, "x");
    made.push_back(path);
  }

  void Expect(std::span<const CommandRow> rows) {
    ReferenceJudge judge(ports);
    for (const CommandRow& row : rows) {
      SCOPED_TRACE(row.row);
      const CommandTarget target = judge.Judge(row.command);
      EXPECT_EQ(static_cast<int>(target.state), static_cast<int>(row.state));
      EXPECT_TRUE(EqualsNoCase(target.file, row.file)) << target.file;
      EXPECT_EQ(target.arguments, row.arguments);
    }
  }

  const std::string windows = ports.system.WindowsFolder(), system = ports.system.SystemFolder();
  const std::string there = scratch + "a b\\run me.exe", gone = scratch + "a b\\gone me.exe";
  const std::string tool = system + "\\qxtool.exe";
  const std::string drive = windows.substr(0, 2);
  const Names own_names = {"qxtool.exe", "rundll32.exe", "msiexec.exe"};
  Names made;
};

TEST_F(CommandReferenceTest, APathIsFoundAsWindowsFindsIt) {
  const CommandRow kRows[] = {
      {"quoted", "\"" + there + "\" /quiet -x", State::kThere, there, "/quiet -x"},
      {"quoted without an end", "\"" + there, State::kThere, there},
      {"quoted, without its ending", "\"" + scratch + "a b\\plain\"", State::kThere,
       scratch + "a b\\plain.exe"},
      {"quoted and gone", "\"" + gone + "\" /quiet", State::kGone, gone, "/quiet"},
      {"unquoted with blanks", there + " /quiet", State::kThere, there, "/quiet"},
      {"unquoted without its ending", scratch + "a b\\plain -q", State::kThere,
       scratch + "a b\\plain.exe", "-q"},
      {"unquoted, gone, called like a program", gone + " /x there.exe", State::kGone, gone,
       "/x there.exe"},
      {"unquoted, with a variable that nobody knows", scratch + "gone dir\\%QX_NONE%\\a.exe",
       State::kNotJudged, ""},
      {"unquoted, with a percent sign", scratch + "100 gone%\\a.exe", State::kNotJudged, ""},
      {"unquoted, gone, a variable behind it", gone + " %1", State::kGone, gone, "%1"},
      {"unquoted, gone, a quote behind it", gone + " \"%1\"", State::kGone, gone, "\"%1\""},
      {"a name, a variable behind it", "qxnowhere %QX_NONE%\\a", State::kNotJudged, ""},
      {"a path behind it", gone + " " + there, State::kGone, gone, there},
      {"blanks around it", "  " + there + "  ", State::kThere, there},
      {"forward slashes", "\"" + ReplaceNoCase(there, "\\", "/") + "\"", State::kThere, there},
      {"another case", UpCase(std::string_view(there)), State::kThere, there},
      {"a folder", scratch + "a b", State::kThere, scratch + "a b"},
      {"a batch file by its stem", scratch + "a", State::kThere, scratch + "a.bat"},
      {"a variable", "%SystemRoot%\\" + system.substr(windows.size() + 1) + "\\qxtool.exe -k net",
       State::kThere, tool, "-k net"},
      {"a variable that nobody knows", "%QX_NONE%\\a.exe", State::kNotJudged, ""}};
  Expect(kRows);
}

TEST_F(CommandReferenceTest, NamesAndOtherFormsOfPathsAreFoundAsWindowsFindsThem) {
  const CommandRow kRows[] = {
      {"a service's path", "system32\\qxtool.exe", State::kThere, tool},
      {"a service's path that is gone", "System32\\drivers\\qxgone.exe", State::kGone,
       windows + "\\System32\\drivers\\qxgone.exe"},
      {"the root of the system", "\\SystemRoot\\System32\\qxtool.exe", State::kThere, tool},
      {"a path of the kernel", "\\??\\" + there, State::kThere, there},
      {"a long path", "\"\\\\?\\" + there + "\"", State::kThere, there},
      {"on the drive of Windows", there.substr(2), State::kThere, drive + there.substr(2)},
      {"a name alone", "qxtool", State::kThere, tool},
      {"a name with arguments", "qxtool.exe /start", State::kThere, tool, "/start"},
      {"a name that is nowhere", "qxnowhere.exe /start", State::kGone, "", "/start"}};
  Expect(kRows);
}

TEST_F(CommandReferenceTest, OfAHostTheLibraryIsJudged) {
  const std::string dll = scratch + "a b\\lib.dll";
  const std::string rundll = system + "\\rundll32.exe", msi = system + "\\msiexec.exe";
  const CommandRow kRows[] = {
      {"a library", "rundll32 \"" + dll + "\",Start", State::kThere, dll, "\"" + dll + "\",Start"},
      {"a library, unquoted", rundll + " " + dll + ",Start 1", State::kThere, dll,
       dll + ",Start 1"},
      {"a library without its ending", "rundll32.exe " + scratch + "a b\\lib,Start", State::kThere,
       dll, scratch + "a b\\lib,Start"},
      {"a library that is gone", "rundll32.exe " + scratch + "gone.dll,Start", State::kGone,
       scratch + "gone.dll", scratch + "gone.dll,Start"},
      {"an installer's product", "MsiExec.exe /X{1-2}", State::kThere, msi, "/X{1-2}"}};
  Expect(kRows);
}

TEST_F(CommandReferenceTest, WhatNobodyCanKnowIsNotJudged) {
  const CommandRow kRows[] = {
      {"a server", "\"\\\\server\\share\\a.exe\" -x", State::kNotJudged, "", "-x"},
      {"an address", "https://example.com/a.exe", State::kNotJudged, ""},
      {"another drive", "Q:\\a.exe", State::kNotJudged, ""},
      {"relative to some folder", "folder\\a.exe", State::kNotJudged, ""},
      {"on a drive, relative", "C:a.exe", State::kNotJudged, ""},
      {"arguments alone", "/background -x", State::kNotJudged, ""},
      {"nothing", "", State::kNotJudged, ""},
      {"quotes alone", "\"\" -x", State::kNotJudged, "", "-x"},
      {"signs that no name has", "a<b>.exe", State::kNotJudged, ""},
      {"thousands of blanks", scratch + "none" + std::string(5000, ' ') + "x", State::kGone,
       scratch + "none", "x"}};
  Expect(kRows);
}

TEST_F(CommandReferenceTest, NamesAreLookedForWhereProgramsAreRegistered) {
  Set(kMachine, std::string(kApps) + "\\qxapp.exe", "", Text("\"" + there + "\""));
  Set(kMachine, std::string(kApps) + "\\qxgone.exe", "", Text(scratch + "gone.exe"));
  ReferenceJudge judge(ports);
  for (const char* command : {"qxapp.exe -x", "QxApp -x"}) {
    const CommandTarget target = judge.Judge(command);
    EXPECT_TRUE(target.state == State::kThere && target.file == there) << command;
    EXPECT_EQ(target.arguments, "-x");
  }
  EXPECT_EQ(static_cast<int>(judge.Judge("qxgone.exe").state), static_cast<int>(State::kGone));
}

TEST_F(CommandReferenceTest, WhatMayLieWhereNobodyCanLookIsNotCalledGone) {
  PathSystem elsewhere(ports.system);
  const Machine of{ports.files, ports.registry, ports.shell,    ports.url_cache,     ports.profile,
                   elsewhere,   ports.session,  ports.cleaners, ports.program_folder};
  Set(kMachine, std::string(kApps) + "\\qxnet.exe", "", Text("\\\\server\\share\\a.exe"));
  Set(kMachine, std::string(kApps) + "\\qxdisk.exe", "", Text("Q:\\a.exe"));
  const std::tuple<const char*, std::string, std::string, State> kRows[] = {
      {"a folder that is here", scratch + "a b", "qxnowhere.exe", State::kGone},
      {"nothing at all", " ;;", "qxnowhere.exe", State::kGone},
      {"a server", scratch + ";\\\\server\\bin", "qxnowhere.exe", State::kNotJudged},
      {"a drive that is not there", "\"Q:\\bin\"", "qxnowhere.exe", State::kNotJudged},
      {"an unknown variable", "%QX_NONE%\\bin", "qxnowhere.exe", State::kNotJudged},
      {"and yet it is found", "Q:\\bin", "qxtool.exe", State::kThere},
      {"registered on a server", "", "qxnet.exe /x", State::kNotJudged},
      {"registered on a drive that is not there", "", "qxdisk", State::kNotJudged}};
  for (const auto& [row, path, command, state] : kRows) {
    elsewhere.path = path;
    ReferenceJudge judge(of);
    EXPECT_EQ(static_cast<int>(judge.Judge(command).state), static_cast<int>(state)) << row;
  }
}

TEST_F(CommandReferenceTest, TheRunningProgramOf32BitsLooksIntoItsOwnFolderFirst) {
  const std::string program = windows + "\\SysWOW64\\rundll32.exe ";
  const std::string mine = windows + "\\SysWOW64\\qx32.dll";
  MakeOwn(system + "\\qx64.dll");
  ReferenceJudge judge(ports);
  EXPECT_EQ(judge.Judge(program + "qx32.dll,Start").file, mine);
  EXPECT_EQ(judge.Judge(program + "\"" + system + "\\qx32.dll\",Start").file, mine);
  EXPECT_EQ(judge.Judge(program + "qx64.dll,Start").file, system + "\\qx64.dll");
  EXPECT_EQ(static_cast<int>(judge.Judge("rundll32.exe qx32.dll,Start").state),
            static_cast<int>(State::kGone))
      << "of 64 bits it sees the other folder";
}

TEST_F(CommandReferenceTest, APathAloneIsOneOnADrive) {
  ReferenceJudge judge(ports);
  const std::pair<std::string, State> kRows[] = {
      {scratch + "a b", State::kThere},     {scratch + "none", State::kGone},
      {"My program", State::kNotJudged},    {"\\gone", State::kNotJudged},
      {"%QX_NONE%\\a", State::kNotJudged},  {"Q:\\a", State::kNotJudged},
      {"\\\\server\\a", State::kNotJudged}, {"", State::kNotJudged}};
  for (const auto& [path, state] : kRows) {
    const CommandTarget target = judge.JudgePath(path, CommandOf::kAnyProgram);
    EXPECT_EQ(static_cast<int>(target.state), static_cast<int>(state)) << path;
  }
  // Programs of 32 bits see folders of their own.
  const std::string seen = system + "\\qx32.exe", own_one = windows + "\\SysWOW64\\qx32.exe";
  EXPECT_EQ(static_cast<int>(judge.Judge(seen).state), static_cast<int>(State::kGone));
  EXPECT_EQ(judge.Judge(seen, CommandOf::k32BitProgram).file, own_one);
  EXPECT_EQ(judge.JudgePath(seen, CommandOf::k32BitProgram).file, own_one);
}

}  // namespace
}  // namespace quellix
