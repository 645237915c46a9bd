// The registry tools over a registry with entries of every kind: what they list, what they delete,
// and how it comes back.

#include "support/registry_fixture.h"
#include "support/scripted_prompts.h"

namespace quellix {
namespace {

struct RegistryScanTest : RegistryFixture {
  // Rows of one scan, a line each: mark, tick and columns.
  static Names Rows(const RegistryScan& scan) {
    Names rows;
    for (size_t i = 0; i < scan.RowCount(); ++i) {
      const ScanRow& row = scan.row(i);
      std::string line = {" !+"[static_cast<int>(row.mark)], row.checked ? 'x' : '-'};
      for (size_t c = 0; c < scan.traits().columns.size(); ++c) line += "|" + row.texts[c];
      rows.push_back(line);
    }
    return rows;
  }
  // The order of a list: orphaned ones on top, the last found first, then the valid ones.
  static Names Ordered(const Names& found) {
    Names rows;
    for (const std::string& line : found) {
      if (line.starts_with("!")) rows.insert(rows.begin(), line);
    }
    for (const std::string& line : found) {
      if (line.starts_with("+")) rows.push_back(line);
    }
    return rows;
  }
  std::unique_ptr<RegistryScan> Scan(ScanTool tool, bool thorough = false) {
    auto scan = MakeScan(tool, ports, scan_view);
    scan->SetThorough(thorough);
    EXPECT_TRUE(scan->timer_enabled());
    scan->StartScan();
    EXPECT_FALSE(scan->timer_enabled() || scan->is_scanning());
    return scan;
  }
  Names NamesInOrder(const std::string& key) {
    Names names;
    const auto open = ports.registry.Open(kMachine, key, RegistryAccess::kRead);
    for (uint32_t i = 0; const auto value = open->ValueAt(i); ++i) names.push_back(value->name);
    return names;
  }
  std::string File(const std::string& name, bool there) {
    const std::string path = scratch + "files\\" + name;
    if (there) machine->MakeFile(path, "x");
    return path;
  }
  // What was deleted is in one file, and comes back from it as it was.
  void ExpectRestored(const RegistryPicture& before) {
    ASSERT_EQ(UndoFiles().size(), 1u);
    EXPECT_TRUE(UndoFiles()[0].starts_with("R_") && UndoFiles()[0].ends_with(".reg"));
    const RestoreResult result = RestoreFile(UndoFiles()[0]);
    EXPECT_TRUE(result.problems.empty()) << result.problems[0];
    EXPECT_EQ(PictureOfAll(), before);
    ports.files.RemoveFile(own + "Backup\\" + UndoFiles()[0]);
  }
};

template <class Scan>
void CheckFirst(Scan& scan, RowMark mark) {
  size_t row = 0;
  while (scan.row(row).mark != mark) ++row;
  scan.SetChecked(row, true);
}

TEST_F(RegistryScanTest, SharedDlls) {
  std::map<std::string, std::pair<uint32_t, bool>> dlls;  // count, and whether the file is there
  for (uint32_t i = 0; i < 300; ++i)
    dlls[File("lib" + std::to_string(i) + ".dll", i % 3 == 0)] = {i, i % 3 == 0};
  for (const auto& [path, dll] : dlls) Set(kMachine, kDlls, path, Number(dll.first));
  const std::string text_count = File("a text.dll", false), long_text = File("text.dll", false);
  Set(kMachine, kDlls, text_count, Text("7"));
  Set(kMachine, kDlls, long_text, Text("77"));
  const RegistryPicture before = PictureOfAll();

  Names found;
  size_t missing = 0;
  for (const std::string& name : NamesInOrder(kDlls)) {
    const bool text = name == text_count;
    const auto [count, there] = text ? std::pair<uint32_t, bool>{'7', false} : dlls[name];
    if (count == 0 || count > 255 || name == long_text) continue;
    found.push_back((there ? "+-|" : "!x|") + std::to_string(count) + "|" + name);
    missing += !there;
  }
  const std::string counted = " with missing files, 1 with zero usage count";
  const auto scan = Scan(ScanTool::kSharedDlls);
  EXPECT_EQ(Rows(*scan), Ordered(found));
  EXPECT_EQ(scan->status(), "301 entries, " + std::to_string(missing) + counted);

  scan->SetChecked(0, false);
  const std::string kept = scan->row(0).name;
  CheckFirst(*scan, RowMark::kValid);  // its file is deleted with it
  const size_t rows = scan->RowCount();
  scan->DeleteChecked(true);
  EXPECT_EQ(scan->failure(), "");
  EXPECT_FALSE(scan->timer_enabled());
  EXPECT_EQ(scan->RowCount(), rows - missing) << "one kept, one more deleted";
  EXPECT_EQ(scan->row(0).name, kept);
  EXPECT_EQ(scan->status(), std::to_string(scan->RowCount()) +
                                " entries, 1 with missing files, 0 with zero usage count");
  EXPECT_EQ(machine->ValueNames(kMachine, kDlls).size(), 302 - missing);
  EXPECT_EQ(machine->Tree(scratch + "files").size(), 99u);
  ExpectRestored(before);
}

TEST_F(RegistryScanTest, AKeyWithOneSharedDllCountsAsEmpty) {
  EXPECT_EQ(Scan(ScanTool::kSharedDlls)->RowCount(), 0u) << "no key at all";
  Set(kMachine, kDlls, File("a.dll", false), Number(1));
  const auto one = Scan(ScanTool::kSharedDlls);
  EXPECT_EQ(one->RowCount(), 0u);
  EXPECT_EQ(one->status(), "0 entries, 0 with missing files, 0 with zero usage count");
  one->DeleteChecked(false);
  EXPECT_TRUE(UndoFiles().empty());
  Set(kMachine, kDlls, " " + File("b.dll", false) + " ", Number(48));
  Set(kMachine, kDlls, File("c.dll", false), Number(48));
  const auto three = Scan(ScanTool::kSharedDlls);
  EXPECT_EQ(three->RowCount(), 2u) << "the name with blanks around it is not found again";
  EXPECT_EQ(three->status(), "2 entries, 2 with missing files, 1 with zero usage count");
}

TEST_F(RegistryScanTest, ChosenRowsGoWhetherCheckedOrNotAndTheQuestionCountsThem) {
  for (const char* name : {"1.dll", "2.dll", "3.dll"})
    Set(kMachine, kDlls, File(name, false), Number(1));
  const auto scan = Scan(ScanTool::kSharedDlls);
  ASSERT_EQ(scan->CheckedRows(), (std::vector<size_t>{0, 1, 2}));
  scan->SetChecked(1, false);
  EXPECT_EQ(scan->QuestionFor(3, false), "") << "without the setting";
  WriteOwn("Settings.ini", "[General]\r\nAsk=1\r\n");
  EXPECT_EQ(scan->QuestionFor(0, true), "");
  EXPECT_EQ(scan->QuestionFor(1, true),
            "Delete 1 reference from the registry, and the file that it names?");
  EXPECT_EQ(scan->QuestionFor(2, false), "Delete 2 references from the registry?");
  const std::string checked = scan->row(2).texts[1];
  scan->DeleteRows({0, 1}, false);
  EXPECT_EQ(NamesInOrder(kDlls), Names{checked});
  ASSERT_EQ(scan->RowCount(), 1u);
  EXPECT_TRUE(scan->row(0).checked);
}

TEST_F(RegistryScanTest, StopLeavesTheRowsFoundSoFar) {
  for (int i = 0; i < 20; ++i) {
    Set(kMachine, kDlls, File(std::to_string(i), false), Number(1));
    Set(kMachine, std::string(kApps) + "\\" + std::to_string(i), "", Text(File("app", false)));
    Set(kMachine, kHelp, std::to_string(i), Text("C:\\None"));
    Set(kMachine, std::string(kComponents) + "\\" + std::to_string(i), "", Text("name"));
  }
  for (const ScanTool tool :
       {ScanTool::kSharedDlls, ScanTool::kAppPaths, ScanTool::kHelpFiles, ScanTool::kComponents}) {
    SCOPED_TRACE(TraitsOf(tool).name);
    const auto scan = MakeScan(tool, ports, scan_view);
    scan->StartScan([&](const Progress& progress) {
      EXPECT_TRUE(scan->is_scanning() && scan->is_frozen());
      EXPECT_EQ(progress.total, scan->RowCount() == 0 ? progress.total : 20);
      return scan->RowCount() == 5;
    });
    EXPECT_EQ(scan->RowCount(), 5u);
    EXPECT_EQ(scan->status(), "");
    EXPECT_FALSE(scan->is_frozen());
    scan->StartScan([](const Progress&) { return true; });
    scan->DeleteChecked(false);
    EXPECT_EQ(scan->timer_enabled(), scan->traits().rescans) << "also of an empty list";
    EXPECT_EQ(scan->status().starts_with("0 entries"), !scan->traits().rescans);
    scan->StartScan();
    EXPECT_EQ(scan->RowCount(), 20u) << "a new scan is not stopped";
  }
}

TEST_F(RegistryScanTest, ApplicationPaths) {
  const std::string there = File("there.exe", true), gone = File("gone.exe", false);
  const std::tuple<std::string, std::string, std::string> kRows[] = {
      {"a gone.exe", gone, "!x|a gone.exe|" + gone},
      {"b quoted.exe", "\"" + there + "\"", "+-|b quoted.exe|" + there},
      {"c variable.exe", "%ProgramFiles%\\gone.exe", ""},
      {"d there.exe", there, "+-|d there.exe|" + there},
      {"e empty", "", ""},
      {"f nested.exe", gone, "!x|f nested.exe|" + gone},
      {"g folder", scratch, "+-|g folder|" + scratch},
      {"h half quoted", "\"" + gone, "!x|h half quoted|" + gone}};
  Names found;
  for (const auto& [name, value, shown] : kRows) {
    Set(kMachine, std::string(kApps) + "\\" + name, "", Text(value));
    if (!shown.empty()) found.push_back(shown);
  }
  Set(kMachine, std::string(kApps) + "\\a gone.exe", "Path", Text("C:\\x"));
  Set(kMachine, std::string(kApps) + "\\f nested.exe\\sub", "v", Number(1));
  Set(kMachine, kApps, "a value", Text(gone));
  const RegistryPicture before = PictureOfAll();
  const auto scan = Scan(ScanTool::kAppPaths);
  EXPECT_EQ(Rows(*scan), Ordered(found));
  EXPECT_EQ(scan->status(), "6 entries, 3 orphaned");

  for (size_t i = 0; i < scan->RowCount(); ++i) {
    if (scan->row(i).texts[0] == "d there.exe") scan->SetChecked(i, true);
  }
  scan->DeleteChecked(false);
  EXPECT_TRUE(machine->Exists(there) && scan->timer_enabled());
  scan->StartScan();
  EXPECT_EQ(scan->status(), "3 entries, 1 orphaned") << "a key with sub-keys stays";
  EXPECT_EQ(scan->row(0).texts[0], "f nested.exe");
  ExpectRestored(before);
}

TEST_F(RegistryScanTest, AnApplicationPathIsEdited) {
  const std::string there = File("there.exe", true), gone = File("gone.exe", false);
  for (const char* name : {"a gone.exe", "b there.exe", "c gone"})
    Set(kMachine, std::string(kApps) + "\\" + name, "", Text(name[0] == 'b' ? there : gone));
  const auto scan = Scan(ScanTool::kAppPaths);
  ScriptedPrompts prompts;
  prompts.files = {there, std::nullopt};
  ASSERT_EQ(scan->row(0).texts[0], "c gone");
  ASSERT_EQ(scan->row(1).texts[0], "a gone.exe");
  EXPECT_EQ(scan->Browse(0, prompts), there);
  EXPECT_EQ(scan->Browse(1, prompts), std::nullopt);
  EXPECT_EQ(prompts.asked, (Names{"", "*.exe|*.exe"}));
  const std::string untouched = std::string(kApps) + "\\a gone.exe";
  Set(kMachine, untouched, "", Text(gone, kRegExpandSz));
  scan->SaveEdit(1, gone);
  EXPECT_EQ(ports.registry.Open(kMachine, untouched, RegistryAccess::kRead)->QueryValue("")->type,
            kRegExpandSz)
      << "what is not changed is not written";
  scan->SaveEdit(0, there);
  scan->EndEdit();
  EXPECT_TRUE(scan->timer_enabled());
  scan->StartScan();
  EXPECT_EQ(scan->status(), "3 entries, 1 orphaned");
}

TEST_F(RegistryScanTest, HelpFiles) {
  const std::string folder = scratch + "files";
  File("there.hlp", true);
  File("there.chm", true);
  const std::vector<std::pair<const char*, std::pair<std::string, std::string>>> kRows = {
      {kHelp, {"gone.hlp", folder}},
      {kHelp, {"there.hlp", folder}},
      {kHtmlHelp, {"gone.hlp", folder + "\\"}}};
  for (const auto& [key, entry] : kRows) Set(kMachine, key, entry.first, Text(entry.second));
  const RegistryPicture before = PictureOfAll();
  const auto scan = Scan(ScanTool::kHelpFiles);
  EXPECT_EQ(Rows(*scan), (Names{"!x|gone.hlp|" + folder + "\\", "!x|gone.hlp|" + folder + "\\",
                                "+-|there.hlp|" + folder + "\\"}));
  EXPECT_EQ(scan->status(), "3 entries, 2 orphaned");
  EXPECT_EQ(scan->row(0).key, std::string(kHtmlHelp) + "\\") << "a single value is examined";

  ScriptedPrompts prompts;
  prompts.files = {scratch + "moved\\gone.hlp"};
  EXPECT_EQ(scan->Browse(0, prompts), scratch + "moved\\");
  EXPECT_EQ(prompts.asked[0], "Help File (*.hlp)|*.hlp|Content File (*.cnt)|*.cnt");
  scan->SaveEdit(0, scratch + "moved");
  EXPECT_EQ(
      modRegistry::ReadRegString({ports.registry, ports.system}, kMachine, kHtmlHelp, "gone.hlp"),
      scratch + "moved");
  EXPECT_EQ(modRegistry::ReadRegString({ports.registry, ports.system}, kMachine, kHelp, "gone.hlp"),
            folder);
  Set(kMachine, kHtmlHelp, "gone.hlp", Text(folder + "\\"));
  scan->StartScan();
  scan->SetChecked(2, true);
  scan->DeleteChecked(true);
  EXPECT_FALSE(machine->Exists(folder + "\\there.hlp"));
  scan->StartScan();
  EXPECT_EQ(scan->status(), "0 entries, 0 orphaned");
  ExpectRestored(before);
}

TEST_F(RegistryScanTest, Components) {
  const std::string key = std::string(kComponents) + "\\";
  Set(kMachine, key + "{1}", "", Text("installed"));
  Set(kMachine, key + "{1}", "IsInstalled", Number(1));
  Set(kMachine, key + "{1}", "StubPath", Text("stub.exe"));
  Set(kMachine, key + "{2}", "", Text("not installed"));
  Set(kMachine, key + "{2}", "IsInstalled", Number(0));
  Set(kMachine, key + "{3}", "", Text("says nothing"));
  Set(kMachine, key + "{3}\\deep\\deeper", "v", {kRegBinary, std::string("\0\1", 2)});
  Set(kMachine, key + "{4}", "IsInstalled", Number(0));
  Set(kMachine, key + "{5}", "", Text("text"));
  Set(kMachine, key + "{5}", "IsInstalled", Text("1"));
  const RegistryPicture before = PictureOfAll();
  const auto scan = Scan(ScanTool::kComponents);
  EXPECT_EQ(Rows(*scan), (Names{"!x|text|False||{5}", "!x|says nothing|False||{3}",
                                "!x|not installed|False||{2}", "+-|installed|True|stub.exe|{1}"}));
  EXPECT_EQ(scan->status(), "4 entries, 3 orphaned");
  scan->DeleteChecked(true);
  EXPECT_TRUE(scan->timer_enabled());
  scan->StartScan();
  EXPECT_EQ(scan->status(), "1 entries, 0 orphaned");
  EXPECT_FALSE(machine->KeyExists(kMachine, key + "{3}"));
  EXPECT_TRUE(machine->KeyExists(kMachine, key + "{4}"));
  ExpectRestored(before);
}

TEST_F(RegistryScanTest, AToolPutsBackWhatItHasDeleted) {
  const std::string there = File("there.dll", true);
  for (const std::string& file : {there, scratch + "gone 1.dll", scratch + "gone 2.dll"})
    Set(kMachine, kDlls, file, Number(1));
  const RegistryPicture before = PictureOfAll();
  const auto scan = Scan(ScanTool::kSharedDlls);
  ScriptedPrompts prompts;
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(scan->undo_path(), "");
    for (size_t i = 0; i < scan->RowCount(); ++i) scan->SetChecked(i, true);
    scan->DeleteChecked(false);
    EXPECT_EQ(PictureOfAll().size(), 1u) << "the key alone";
    EXPECT_NE(scan->undo_path(), "");
    const RestoreResult result = scan->Undo(prompts);
    EXPECT_TRUE(result.problems.empty() && !result.cancelled);
    EXPECT_EQ(PictureOfAll(), before);
    EXPECT_TRUE(scan->timer_enabled()) << "what is back is listed again";
    scan->StartScan();
    EXPECT_EQ(scan->RowCount(), 3u);
  }
  scan->DeleteRows({0, 1, 2}, true);
  EXPECT_EQ(scan->files_gone(), 1u) << "the one that was there";
  EXPECT_FALSE(machine->Exists(there));
  ports.files.RemoveFile(scan->undo_path());
  EXPECT_THROW(scan->Undo(prompts), Error);
  EXPECT_NE(scan->undo_path(), "") << "it may come back to its place";
}

}  // namespace
}  // namespace quellix
