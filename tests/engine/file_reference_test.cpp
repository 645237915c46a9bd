// Values that name files which are gone: what the plain walk sees, and the thorough one.

#include "registry_tools/file_reference.h"
#include "support/branch_registry.h"
#include "support/registry_fixture.h"

namespace quellix {
namespace {

struct FileReferenceTest : RegistryFixture {
  std::unique_ptr<RegistryScan> Scan(bool thorough) {
    auto scan = MakeScan(ScanTool::kFileReferences, user_alone, scan_view);
    scan->SetThorough(thorough);
    scan->StartScan();
    EXPECT_EQ(scan->status(), std::to_string(scan->RowCount()) + " invalid references");
    return scan;
  }
  // The rows of the test's own values: key and value; a Windows has some of its own.
  static Names OwnRows(const RegistryScan& scan) {
    Names rows;
    for (size_t i = 0; i < scan.RowCount(); ++i) {
      const ScanRow& row = scan.row(i);
      EXPECT_FALSE(row.checked) << "nothing is ticked for the user";
      if (row.texts[1].starts_with("Qx")) rows.push_back(row.texts[0] + row.texts[1]);
    }
    return rows;
  }
  static void TickOwn(RegistryScan& scan) {
    for (size_t i = 0; i < scan.RowCount(); ++i) {
      if (scan.row(i).texts[1].starts_with("Qx")) scan.SetChecked(i, true);
    }
  }
  // Of the values of Qx1\Qx1 those called QxGone and a number are listed, go and come back.
  void ExpectDeletedAndRestored(size_t gone, size_t stay) {
    Names expected;
    for (size_t i = 0; i < gone; ++i)
      expected.push_back("HKEY_CURRENT_USER:Qx1\\Qx1\\QxGone" + std::to_string(100 + i));
    const auto scan = Scan(true);
    EXPECT_EQ(OwnRows(*scan), expected);
    const RegistryPicture before = PictureOfAll();
    TickOwn(*scan);
    scan->DeleteChecked(false);
    EXPECT_EQ(machine->ValueNames(kUser, "Qx1\\Qx1").size(), stay);
    EXPECT_TRUE(OwnRows(*Scan(true)).empty() && RestoreFile(UndoFiles()[0]).problems.empty());
    EXPECT_EQ(PictureOfAll(), before);
  }
  BranchRegistry user_registry{ports.registry};
  const Machine user_alone = user_registry.On(ports);
  const std::string gone_ = scratch + "gone.txt";
};

TEST_F(FileReferenceTest, ThePlainWalkReadsBelowTheKeyWhatItsPathNames) {
  Set(kUser, "", "QxRoot", Text(gone_));
  Set(kUser, "Qx1", "QxOwn", Text(gone_));
  Set(kUser, "Qx1\\Qx1", "QxC", Text(gone_));
  Set(kUser, "Qx1\\Qx1", "QxA", Text(gone_));
  Set(kUser, "Qx1\\Qx1", "QxLower", Text("c" + gone_.substr(1)));
  Set(kUser, "Qx1\\Qx1", "QxThere", Text(scratch));
  Set(kUser, "Qx2\\Qx2", "QxFirst", Text("1"));
  Set(kUser, "Qx2\\Qx2", "QxSecond", Text(gone_));
  const auto scan = Scan(false);
  EXPECT_EQ(OwnRows(*scan), (Names{"HKEY_CURRENT_USER:Qx1\\QxA", "HKEY_CURRENT_USER:Qx1\\QxC",
                                   "HKEY_CURRENT_USER:QxRoot"}))
      << "by value; a short value ends its key";

  // What is shown under a key was read below it, but is deleted in it.
  Set(kUser, "Qx1", "QxA", Text("other"));
  const RegistryPicture before = PictureOfAll();
  TickOwn(*scan);
  scan->DeleteChecked(false);
  EXPECT_TRUE(OwnRows(*scan).empty());
  EXPECT_EQ(machine->ValueNames(kUser, "Qx1"), Names{"QxOwn"});
  EXPECT_EQ(machine->ValueNames(kUser, "Qx1\\Qx1").size(), 4u);
  RestoreAll();
  EXPECT_EQ(PictureOfAll(), before);
  const auto names = machine->ValueNames(kUser, "");
  EXPECT_TRUE(std::ranges::count(names, "QxRoot")) << "that of the root came back as well";
}

TEST_F(FileReferenceTest, AKeyWithANameOfOneCharacterStaysInThePath) {
  // In the registry's order the short one comes first.
  const std::pair<std::string, std::string> kRows[] = {{"Q", "Qx1"},
                                                       {"\xC3\x84", "\xC3\x96 later"}};
  for (const auto& [one, later] : kRows) {
    SCOPED_TRACE(one);
    Set(kUser, one, "", Text("x"));
    Set(kUser, later + "\\" + one + "\\" + later, "QxOdd", Text(gone_));
    EXPECT_EQ(OwnRows(*Scan(false)), Names{"HKEY_CURRENT_USER:" + one + "\\" + later + "\\QxOdd"});
    machine->RemoveRegistryTree(kUser, one);
    machine->RemoveRegistryTree(kUser, later);
  }
}

TEST_F(FileReferenceTest, ColumnsSortInTurnsAndStopKeepsTheRows) {
  for (const char* name : {"QxB", "QxA", "QxC"}) Set(kUser, "Qx1", name, Text(gone_ + name));
  const auto scan = Scan(true);
  const auto ours = [&] { return OwnRows(*scan); };
  const std::string key = "HKEY_CURRENT_USER:Qx1\\";
  const Names up = {key + "QxA", key + "QxB", key + "QxC"};
  const Names down(up.rbegin(), up.rend());
  EXPECT_EQ(ours(), up);
  EXPECT_TRUE(scan->sorted_by() == 1u && !scan->descending());
  scan->SortBy(2);
  EXPECT_EQ(ours(), down) << "another column, but the other order than before";
  scan->SortBy(2);
  EXPECT_EQ(ours(), up);
  EXPECT_TRUE(scan->sorted_by() == 2u && !scan->descending());

  scan->StartScan([&](const Progress& progress) {
    EXPECT_FALSE(scan->is_frozen() || progress.total != 0);
    return ours().size() == up.size();
  });
  EXPECT_EQ(ours(), up);
  EXPECT_EQ(scan->status(), std::to_string(scan->RowCount()) + " invalid references");
}

TEST_F(FileReferenceTest, TheThoroughWalkReadsAllValuesProperly) {
  machine->MakeFile(scratch + "has blank\\app.exe", "x");
  machine->MakeFolder(scratch + "has");
  const std::string app = scratch + "has blank\\app.exe", part = std::string(150, 'n') + "\\";
  const std::string nul(1, '\0'), slashes = ReplaceNoCase(gone_, "\\", "/");
  const std::vector<std::pair<uint32_t, Names>> kGone = {
      {kRegSz,
       {gone_, "c" + gone_.substr(1), gone_ + " /x \"%1\"", gone_ + " %1", "\"" + gone_ + "\" /x",
        "\"" + gone_, gone_ + "\\2", gone_ + ",3", scratch + "has gone.txt", "  " + gone_ + "  ",
        slashes, "\\\\?\\" + gone_, "\\??\\" + gone_,
        "C:\\" + ReplaceNoCase(std::string(20, 'a'), "a", part) + "x.txt"}},
      {kRegExpandSz, {"%SystemRoot%\\qx gone.txt"}},
      {kRegMultiSz, {app + nul + gone_ + nul}}};
  const std::vector<std::pair<uint32_t, Names>> kStays = {
      {kRegSz,
       {app, scratch, app + " /x \"%1\"", "\"" + app + "\" /x",
        "\"" + scratch + "has blank\\app\" /x", scratch + "has blank\\app /x", app + "\\2",
        app + ",-3", scratch + ";" + gone_, "%SystemRoot%\\qx gone.txt",
        "\\\\server\\share\\gone.txt", "Q:\\gone.txt", "C:\\", scratch + "*.none", "C: is a drive",
        "a text about " + gone_, "x" + nul + gone_, "C:\\" + std::string(40000, ' '),
        "C:\\qx none" + ReplaceNoCase(std::string(9000, 'a'), "a", " a")}},
      {kRegExpandSz,
       {"%SystemRoot%", "%QxNone%\\gone.txt", scratch + "qx gone\\%QxNone%\\gone.txt",
        scratch + "qx 100% gone\\gone"}},
      {kRegMultiSz, {app + nul + nul + gone_}},
      {kRegBinary, {gone_}}};
  std::vector<RegistryValue> gone = {{kRegSz, ToUtf16Bytes(gone_)},
                                     {kRegSz, ToUtf16Bytes(gone_) + "x"}};
  std::vector<RegistryValue> stays = {{kRegSz, ""}, Number(7)};
  for (const auto& [type, texts] : kGone) {
    for (const std::string& text : texts) gone.push_back(Text(text, type));
  }
  for (const auto& [type, texts] : kStays) {
    for (const std::string& text : texts) stays.push_back(Text(text, type));
  }
  for (size_t i = 0; i < gone.size(); ++i)
    Set(kUser, "Qx1\\Qx1", "QxGone" + std::to_string(100 + i), gone[i]);
  for (size_t i = 0; i < stays.size(); ++i)
    Set(kUser, "Qx1\\Qx1", "QxThere" + std::to_string(100 + i), stays[i]);
  ExpectDeletedAndRestored(gone.size(), stays.size());
}

TEST_F(FileReferenceTest, OddKeysAndValuesDoNoHarm) {
  std::string deep = "Qx1";
  for (int i = 0; i < 200; ++i) deep += "\\k";
  Set(kUser, deep, "QxDeep", Text(gone_));
  Set(kUser, "Qx2", std::string("Qx") + std::string(16000, 'n'), Text(gone_));
  Set(kUser, "Qx2", "", Text(gone_));
  Set(kUser, "Qx2", "Qx\xC3\xA4\xF0\x9F\x98\x80", Text(gone_));
  Set(kUser, "Qx2", "QxMegabyte", {kRegSz, std::string(999'000, 'C')});
  for (uint32_t type = 0; type < 14; ++type)
    Set(kUser, "Qx2", "Type" + std::to_string(type), {type, std::string(type, 'x')});
  const RegistryPicture before = PictureOfAll();
  const auto scan = Scan(true);
  EXPECT_EQ(OwnRows(*scan).size(), 3u);
  for (size_t i = 0; i < scan->RowCount(); ++i) {
    if (scan->row(i).key.starts_with("Qx")) scan->SetChecked(i, true);
  }
  scan->DeleteChecked(false);
  EXPECT_TRUE(scan_view.problems.empty()) << scan_view.problems[0];
  EXPECT_EQ(machine->ValueNames(kUser, "Qx2").size(), 15u) << "the default value went as well";
  EXPECT_TRUE(RestoreFile(UndoFiles()[0]).problems.empty());
  EXPECT_EQ(PictureOfAll(), before);
}

TEST_F(FileReferenceTest, AKeyDeletedMeanwhileEndsThere) {
  for (int i = 0; i < 50; ++i) Set(kUser, "Qx1\\k" + std::to_string(i), "QxGone", Text(gone_));
  const auto scan = MakeScan(ScanTool::kFileReferences, user_alone, scan_view);
  scan->SetThorough(true);
  bool removed = false;
  scan->StartScan([&](const Progress&) {
    if (OwnRows(*scan).size() < 10 || removed) return false;
    machine->RemoveRegistryTree(kUser, "Qx1");
    removed = true;
    return false;
  });
  EXPECT_TRUE(removed);
  EXPECT_LT(OwnRows(*scan).size(), 50u);
  EXPECT_TRUE(scan_view.problems.empty());
}

}  // namespace
}  // namespace quellix
