// What starts with Windows: listed from every place with its marks, switched off and on, deleted
// and restored.

#include "platform/forwarding_system.h"
#include "registry_tools/startup_approval.h"
#include "registry_tools/startup_tasks.h"
#include "support/program_bytes.h"
#include "support/registry_fixture.h"
#include "support/shortcut_bytes.h"

namespace quellix {
namespace {

// Says that it is another version of Windows.
struct VersionSystem : ForwardingSystem {
  using ForwardingSystem::ForwardingSystem;

  WindowsVersion Version() override { return version; }

  WindowsVersion version{2, 10, 0};
};

// A start-up folder of the test's own, and its values apart from those of the machine.
struct StartupProgramsTest : RegistryFixture {
  StartupProgramsTest() {
    for (const auto& [root, name] : kFolderValues) {
      const auto key = ports.registry.Open(root, kFolders, RegistryAccess::kRead);
      folders_before.push_back(key ? key->QueryValue(name) : std::nullopt);
      Set(root, kFolders, name, Text(FolderOf(root)));
      machine->MakeFolder(FolderOf(root));
    }
    machine->MakeFile(there, ProgramBytes("Maker", "A program"));
  }
  ~StartupProgramsTest() override {
    for (size_t i = 0; i < std::size(kFolderValues); ++i) {
      const auto key =
          ports.registry.Open(kFolderValues[i].first, kFolders, RegistryAccess::kWrite);
      key->DeleteValue(kFolderValues[i].second);
      if (folders_before[i]) key->SetValue(kFolderValues[i].second, *folders_before[i]);
    }
    for (const char* key : kKeys) {
      for (const RegistryRoot root : {kUser, kMachine}) DeleteOwnValues(root, key);
    }
    for (const char* name : kServiceNames)
      machine->RemoveRegistryTree(kMachine, std::string(kServices) + name);
    for (const std::string& path : tasks) ports.files.RemoveFile(path);
  }
  void DeleteOwnValues(RegistryRoot root, const std::string& key) {
    const auto open = ports.registry.Open(root, key, RegistryAccess::kWrite);
    for (const std::string& name : machine->ValueNames(root, key)) {
      if (name.starts_with("Qx")) open->DeleteValue(name);
    }
  }
  std::string FolderOf(RegistryRoot root) const {
    return scratch + (root == kUser ? "start" : "start all");
  }
  void MakeTask(const std::string& name, const std::string& inside, bool utf16 = true) {
    tasks.push_back(ports.system.SystemFolder() + "\\Tasks\\Qx" + name);
    const std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\r\n<Task version=\"1.2\" "
        "xmlns=\"http://schemas.microsoft.com/windows/2004/02/mit/task\">" +
        inside + "</Task>";
    machine->MakeFile(tasks.back(), utf16 ? "\xFF\xFE" + ToUtf16Bytes(text) : text);
  }
  void MakeService(const char* name, uint32_t start, const std::string& image,
                   uint32_t type = 0x10) {
    const std::string key = std::string(kServices) + name;
    Set(kMachine, key, "Start", Number(start));
    Set(kMachine, key, "Type", Number(type));
    Set(kMachine, key, "ImagePath", Text(image, kRegExpandSz));
  }
  std::unique_ptr<RegistryScan> Scan() { return ScanOf(ScanTool::kStartup, today); }
  // Mark, name, publisher, description, state and place.
  static Names Rows(const RegistryScan& scan) {
    return RowsOf(
        scan, [](const std::string& name) { return Holds(name, "Qx"); },
        [](const ScanRow& row) {
          std::string line;
          for (const size_t column : {0, 2, 3, 4, 5}) line += "|" + row.texts[column];
          return line;
        });
  }
  RegistryPicture PictureOfKeys() {
    RegistryPicture picture;
    for (const char* key : kKeys) {
      for (const RegistryRoot root : {kUser, kMachine}) Picture(root, key, picture);
    }
    return picture;
  }
  std::string Approval(RegistryRoot root, const std::string& key, const std::string& name) {
    const auto open = ports.registry.Open(root, kApprovedKey + key, RegistryAccess::kRead);
    const auto value = open ? open->QueryValue(name) : std::nullopt;
    return value ? value->bytes : "<none>";
  }

  static constexpr const char* kFolders =
      "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
  static constexpr std::pair<RegistryRoot, const char*> kFolderValues[] = {
      {kUser, "Startup"}, {kMachine, "Common Startup"}};
  static constexpr const char* kRun = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";
  static constexpr const char* kRun32 =
      "Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Run";
  static constexpr const char* kOnce = "Software\\Microsoft\\Windows\\CurrentVersion\\RunOnce";
  static constexpr const char* kKeys[] = {
      kRun,
      kRun32,
      kOnce,
      "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\Run",
      "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\Run32",
      "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\StartupFolder"};
  static constexpr const char* kServices = "SYSTEM\\CurrentControlSet\\Services\\";
  static constexpr const char* kServiceNames[] = {"QxAuto", "QxGone", "QxByHand", "QxDriver",
                                                  "QxShared"};
  VersionSystem system{ports.system};
  const Machine today{ports.files,     ports.registry, ports.shell,
                      ports.url_cache, ports.profile,  system,
                      ports.session,   ports.cleaners, ports.program_folder};
  std::vector<std::optional<RegistryValue>> folders_before;
  Names tasks;
  const std::string there = scratch + "programs\\a b.exe", gone = scratch + "programs\\gone.exe";
};

constexpr const char* kAtLogon =
    "<Triggers><LogonTrigger><Enabled>true</Enabled></LogonTrigger>"
    "</Triggers>";

TEST_F(StartupProgramsTest, EachPlaceIsListedWithItsMarks) {
  Set(kUser, kRun, "QxThere", Text("\"" + there + "\" /min"));
  Set(kUser, kRun, "QxGone", Text(gone));
  Set(kUser, kRun, "QxServer", Text("\\\\server\\share\\a.exe"));
  Set(kUser, kRun, "QxNumber", Number(1));
  Set(kUser, kOnce, "QxOnce", Text(there));
  Set(kMachine, kRun, "QxAll", Text(there, kRegExpandSz));
  Set(kMachine, kRun32, "QxOld", Text(gone));
  Set(kUser, std::string(kApprovedKey) + "Run", "QxThere",
      {kRegBinary, std::string("\3\0\0\0\0\0\0\0\0\0\0\0", 12)});
  Set(kMachine, std::string(kApprovedKey) + "Run32", "QxOld",
      {kRegBinary, std::string("\6\0\0\0\0\0\0\0\0\0\0\0", 12)});
  machine->MakeFile(FolderOf(kUser) + "\\Qx there.lnk", ShortcutBytes(there, ""));
  machine->MakeFile(FolderOf(kUser) + "\\Qx gone.lnk", ShortcutBytes(gone, ""));
  machine->MakeFile(FolderOf(kUser) + "\\desktop.ini", "[Qx]");
  machine->MakeFile(FolderOf(kMachine) + "\\Qx all.bat", "echo");
  machine->MakeFile(FolderOf(kMachine) + "\\Qx none.lnk", "no shortcut");
  const auto scan = Scan();
  EXPECT_EQ(
      Rows(*scan),
      (Names{"!|Qx gone.lnk|||On, missing|Start-up folder (user)",
             "!|QxGone|||On, missing|Run (user)", "!|QxOld|||On, missing|Run, 32 bits (machine)",
             "+|Qx all.bat|||On|Start-up folder (all users)",
             "+|Qx there.lnk|Maker|A program|On|Start-up folder (user)",
             "+|QxAll|Maker|A program|On|Run (machine)",
             "+|QxOnce|Maker|A program|On|RunOnce (user)",
             "+|QxThere|Maker|A program|Off|Run (user)",
             "?|Qx none.lnk|||On|Start-up folder (all users)", "?|QxServer|||On|Run (user)"}));
  EXPECT_TRUE(Holds(scan->status(), " without their program, 1 switched off"));
  EXPECT_EQ(scan->row(RowOf(*scan, "QxThere")).file, there);
  EXPECT_NE(scan->row(RowOf(*scan, "QxAll")).texts[6], "") << "since when";
}

TEST_F(StartupProgramsTest, TasksAndServicesAreReadAndWindowsOwnAreLeftOut) {
  const std::string exec = "<Actions><Exec><Command>" + there +
                           "</Command><Arguments>-a &amp; &#66;</Arguments></Exec></Actions>";
  MakeTask("\\Logon", "<RegistrationInfo><Author>Somebody</Author></RegistrationInfo>" +
                          std::string(kAtLogon) + exec);
  MakeTask("\\Off",
           std::string(kAtLogon) + "<Settings><Enabled>false</Enabled></Settings>" +
               "<Actions><Exec><Command>" + gone + "</Command></Exec></Actions>",
           false);
  MakeTask("\\Daily", "<Triggers><CalendarTrigger/></Triggers>" + exec);
  MakeTask("\\TriggerOff",
           "<Triggers><LogonTrigger><Enabled>false</Enabled></LogonTrigger></Triggers>" + exec);
  MakeTask("\\Handler",
           "<Triggers><BootTrigger /></Triggers><Actions><ComHandler><ClassId>{1}"
           "</ClassId></ComHandler></Actions>");
  MakeTask("\\Broken", "<Triggers>");
  MakeService("QxAuto", 2, "\"" + there + "\" -service");
  MakeService("QxGone", 2, gone);
  MakeService("QxByHand", 3, gone);
  MakeService("QxDriver", 2, gone, 1);
  MakeService("QxShared", 2, ports.system.SystemFolder() + "\\svchost.exe -k qx", 0x20);
  Set(kMachine, std::string(kServices) + "QxShared\\Parameters", "ServiceDll", Text(there));
  Set(kMachine, std::string(kServices) + "QxAuto", "DisplayName", Text("Qx service"));
  const auto scan = Scan();
  EXPECT_EQ(Rows(*scan),
            (Names{"!|QxGone|||On, missing|Service", "!|\\Qx\\Off|||Off, missing|Task",
                   "+|Qx service (QxAuto)|Maker|A program|On|Service",
                   "+|QxShared|Maker|A program|On|Service", "+|\\Qx\\Logon|Maker|A program|On|Task",
                   "?|\\Qx\\Handler|||On|Task"}));
  EXPECT_EQ(scan->row(RowOf(*scan, "\\Qx\\Logon")).texts[1], "\"" + there + "\" -a & B");
  EXPECT_TRUE(Holds(scan->status(), "1 could not be read: ") && Holds(scan->status(), "Broken"));
  ports.files.WriteWholeFile(there, ProgramBytes("Microsoft Corporation", "Not in its folder"));
  EXPECT_EQ(Rows(*Scan()).size(), 6u) << "Windows' own lie in its folder";
}

TEST_F(StartupProgramsTest, EntriesAreSwitchedOffAndOnAsTheTaskManagerDoes) {
  Set(kUser, kRun, "QxUser", Text(there));
  Set(kMachine, kRun32, "QxOld", Text(there));
  Set(kUser, kOnce, "QxOnce", Text(there));
  machine->MakeFile(FolderOf(kUser) + "\\Qx.lnk", ShortcutBytes(there, ""));
  const struct {
    const char *name, *key;
    RegistryRoot root;
  } kRows[] = {
      {"QxUser", "Run", kUser}, {"QxOld", "Run32", kMachine}, {"Qx.lnk", "StartupFolder", kUser}};
  const auto scan = Scan();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    const size_t index = RowOf(*scan, row.name);
    EXPECT_TRUE(scan->Offers(ScanAction::kDisable, index));
    EXPECT_FALSE(scan->Offers(ScanAction::kEnable, index));
    scan->Act(ScanAction::kDisable, {index});
    EXPECT_EQ(scan->failure(), "");
    const std::string off = Approval(row.root, row.key, row.name);
    ASSERT_EQ(off.size(), 12u);
    EXPECT_EQ(off.substr(0, 4), std::string("\3\0\0\0", 4));
    EXPECT_NE(off.substr(4), std::string(8, '\0')) << "when it was switched off";
    EXPECT_EQ(scan->row(index).texts[4], "Off");
    EXPECT_EQ(Scan()->row(RowOf(*Scan(), row.name)).texts[4], "Off") << "read again";
    scan->Act(ScanAction::kDisable, {index});
    EXPECT_EQ(Approval(row.root, row.key, row.name), off) << "a second time changes nothing";
    scan->Act(ScanAction::kEnable, {index});
    EXPECT_EQ(Approval(row.root, row.key, row.name), std::string("\2\0\0\0\0\0\0\0\0\0\0\0", 12));
    EXPECT_EQ(scan->row(index).texts[4], "On");
  }
  ASSERT_EQ(UndoFiles().size(), 1u);
  for (int time = 0; time < 2; ++time) {
    EXPECT_TRUE(RestoreFile(UndoFiles()[0]).problems.empty());
    for (const auto& row : kRows)
      EXPECT_EQ(Approval(row.root, row.key, row.name), "<none>") << "as before the first change";
  }
  const size_t once = RowOf(*scan, "QxOnce");
  EXPECT_FALSE(scan->Offers(ScanAction::kDisable, once) || scan->Offers(ScanAction::kEnable, once));
}

TEST_F(StartupProgramsTest, WhatIsDeletedComesBackAndWhatIsOnlyReadStays) {
  Set(kUser, kRun, "QxUser", Text(gone));
  Set(kMachine, kRun, "QxAll", Text(there, kRegExpandSz));
  machine->MakeFile(FolderOf(kUser) + "\\Qx.lnk", ShortcutBytes(gone, ""));
  MakeService("QxAuto", 2, there);
  const RegistryPicture before = PictureOfKeys();
  const auto scan = Scan();
  const size_t rows = scan->RowCount();
  std::vector<size_t> chosen;
  for (const char* name : {"QxUser", "QxAll", "Qx.lnk", "QxAuto"})
    chosen.push_back(RowOf(*scan, name));
  scan->DeleteRows(chosen, false);
  EXPECT_EQ(scan->stayed(), 1u);
  EXPECT_TRUE(Holds(scan->failure(), "Services are only read here"));
  EXPECT_TRUE(scan->status().ends_with(", 1 could not be deleted: " + scan->failure()));
  EXPECT_EQ(scan->RowCount(), rows - 3) << "what stayed is still listed";
  EXPECT_TRUE(machine->KeyExists(kMachine, std::string(kServices) + "QxAuto"));
  EXPECT_FALSE(machine->Exists(FolderOf(kUser) + "\\Qx.lnk"));
  EXPECT_EQ(Rows(*Scan()), (Names{"+|QxAuto|Maker|A program|On|Service"}));
  RestoreAll();
  EXPECT_EQ(PictureOfKeys(), before);
  EXPECT_EQ(scan->QuestionFor(2, false), "");
  WriteSettings("[General]\r\nAsk=1\r\n");
  EXPECT_EQ(scan->QuestionFor(2, false), "Delete 2 start-up entries?");
}

TEST_F(StartupProgramsTest, WhatCannotBeSwitchedIsToldAndStaysAsItIs) {
  Set(kUser, kRun, "QxUser", Text(there));
  Set(kUser, std::string(kApprovedKey) + "Run", "QxOther", {kRegBinary, "\2"});
  const auto scan = Scan();
  const size_t row = RowOf(*scan, "QxUser");
  {
    const auto denied = machine->DenyRegistryWrites(kUser, std::string(kApprovedKey) + "Run");
    scan->Act(ScanAction::kDisable, {row});
  }
  EXPECT_EQ(scan->stayed(), 1u);
  EXPECT_NE(scan->failure(), "");
  EXPECT_TRUE(scan->status().ends_with(scan->failure()));
  EXPECT_EQ(scan->row(row).texts[4], "On");
  EXPECT_EQ(Approval(kUser, "Run", "QxUser"), "<none>");
}

TEST_F(StartupProgramsTest, WhatHasChangedSinceItWasListedStays) {
  for (const char* name : {"QxSame", "QxOther"}) Set(kUser, kRun, name, Text(gone));
  const std::string link = FolderOf(kUser) + "\\Qx.lnk";
  machine->MakeFile(link, ShortcutBytes(gone, ""));
  auto scan = Scan();
  Set(kUser, kRun, "QxOther", Text(gone + " /new"));
  machine->MakeFile(link, ShortcutBytes(gone + "2", ""));
  const auto delete_all = [&] {
    scan->DeleteRows({RowOf(*scan, "QxSame"), RowOf(*scan, "QxOther"), RowOf(*scan, "Qx.lnk")},
                     false);
  };
  delete_all();
  EXPECT_EQ(scan->stayed(), 2u);
  EXPECT_TRUE(Holds(scan->failure(), "It has changed since it was listed: Qx"));
  EXPECT_EQ(Rows(*Scan()).size(), 2u);
  Set(kUser, kRun, "QxSame", Text(gone));
  scan = Scan();
  machine->MakeFile(gone, "x");
  delete_all();
  EXPECT_EQ(scan->stayed(), 2u) << "the program of both is there again";
}

TEST_F(StartupProgramsTest, WindowsBefore8KnowsNoSwitching) {
  Set(kUser, kRun, "QxUser", Text(there));
  const auto scan = Scan();
  for (const WindowsVersion version : {WindowsVersion{2, 6, 1}, WindowsVersion{2, 5, 1}}) {
    system.version = version;
    scan->Act(ScanAction::kDisable, {RowOf(*scan, "QxUser")});
    EXPECT_TRUE(Holds(scan->failure(), "that came with Windows 8"));
    EXPECT_EQ(Approval(kUser, "Run", "QxUser"), "<none>");
  }
}

TEST_F(StartupProgramsTest, WhatIsKeptStaysAndAStopLeavesTheRest) {
  Set(kUser, kRun, "QxKept", Text(gone));
  machine->MakeFile(FolderOf(kUser) + "\\Qx.lnk", ShortcutBytes(gone, ""));
  WriteOwn("keep.txt",
           "HKEY_CURRENT_USER\\" + std::string(kRun) + "|QxKept\r\n" + FolderOf(kUser) + "\\\r\n");
  const auto scan = Scan();
  scan->DeleteRows({RowOf(*scan, "QxKept"), RowOf(*scan, "Qx.lnk")}, false);
  EXPECT_EQ(scan->stayed(), 2u);
  EXPECT_EQ(Rows(*Scan()).size(), 2u);
  size_t pauses = 0;
  const auto counted = MakeScan(ScanTool::kStartup, ports, scan_view);
  counted->StartScan([&pauses](const Progress&) { return ++pauses == 0; });
  EXPECT_GE(pauses, 2 * counted->RowCount()) << "each entry has its own";
  const auto stopped = MakeScan(ScanTool::kStartup, ports, scan_view);
  stopped->StartScan([](const Progress&) { return true; });
  EXPECT_EQ(stopped->RowCount(), 0u);
  EXPECT_EQ(stopped->status(), "");
}

TEST(StartupTaskTest, WhatIsNoTaskIsRefused) {
  const std::string deep(70, '<');
  std::string nested;
  for (int i = 0; i < 100; ++i) nested += "<a>";
  const std::pair<const char*, std::string> kRows[] = {
      {"nothing", ""},
      {"a text", "Task"},
      {"another document", "<Note></Note>"},
      {"not closed", "<Task><Actions>"},
      {"closed otherwise", "<Task></Tusk>"},
      {"entities of its own", "<!DOCTYPE t [<!ENTITY a \"b\">]><Task>&a;</Task>"},
      {"an unknown entity", "<Task><a>&qx;</a></Task>"},
      {"an entity without an end", "<Task>a & b</Task>"},
      {"nested deep", nested},
      {"brackets", deep},
      {"zeros", std::string(1000, '\0')}};
  for (const auto& [row, bytes] : kRows) {
    SCOPED_TRACE(row);
    EXPECT_THROW(ParseTask(bytes), Error);
  }
  const ScheduledTask task = ParseTask(
      "<!-- a > b --><t:Task a='>'><Triggers><t:LogonTrigger/></Triggers><Actions><Exec><Command>"
      "<![CDATA[a&b.exe]]></Command></Exec></Actions></t:Task>");
  EXPECT_TRUE(task.starts_by_itself && task.is_on);
  EXPECT_EQ(task.commands, Names{"a&b.exe"});
}

}  // namespace
}  // namespace quellix
