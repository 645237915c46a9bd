// Kinds of files whose programs are gone: what is listed, deleted, repaired and left.

#include "support/forwarding_files.h"
#include "support/registry_fixture.h"

namespace quellix {
namespace {

constexpr const char* kClasses = "Software\\Classes\\";
constexpr const char* kExplorer =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts\\";

// Extensions and classes of the test's own, whose names begin with "Qx".
struct FileAssociationsTest : RegistryFixture {
  FileAssociationsTest() { machine->MakeFile(there, "x"); }
  ~FileAssociationsTest() override {
    for (const auto& [root, key] : keys) machine->RemoveRegistryTree(root, key);
  }
  // Sets a text, and notes the class or extension that it is in.
  void Put(RegistryRoot root, const std::string& below, const std::string& key,
           const std::string& name, const RegistryValue& value) {
    keys.emplace_back(root, below + key.substr(0, key.find('\\')));
    Set(root, below + key, name, value);
  }
  void Put(RegistryRoot root, const std::string& key, const std::string& text) {
    Put(root, kClasses, key, "", Text(text));
  }
  std::unique_ptr<RegistryScan> Scan() { return ScanOf(ScanTool::kAssociations, ports); }
  static Names Rows(const RegistryScan& scan) {
    return RowsOf(
        scan, [](const std::string& name) { return ContainsNoCase(name, "qx"); },
        [](const ScanRow& row) {
          return row.texts[0] + "|" + row.texts[1] + "|" + row.texts[2] + "|" + row.texts[3];
        });
  }
  static size_t RowsNamed(const RegistryScan& scan, const std::string& leads_to) {
    size_t rows = 0;
    for (size_t i = 0; i < scan.RowCount(); ++i) rows += scan.row(i).texts[2] == leads_to ? 1 : 0;
    return rows;
  }
  // The test's own rows.
  static std::vector<size_t> OwnRows(const RegistryScan& scan) {
    std::vector<size_t> own;
    for (size_t i = 0; i < scan.RowCount(); ++i) {
      if (ContainsNoCase(scan.row(i).texts[0], "qx")) own.push_back(i);
    }
    return own;
  }
  static size_t RowOfUsersClass(const RegistryScan& scan) {
    size_t row = 0;
    while (scan.row(row).texts[0] != ".qxuser" || scan.row(row).texts[1] != "class") ++row;
    return row;
  }
  RegistryPicture PictureOfKeys() {
    RegistryPicture picture;
    for (const auto& [root, key] : keys) Picture(root, key, picture);
    return picture;
  }
  void Seed();

  const std::string there = scratch + "program\\show me.exe", gone = scratch + "program\\gone.exe";
  std::vector<std::pair<RegistryRoot, std::string>> keys;
};

void FileAssociationsTest::Seed() {
  const auto list = [](const std::string& extension) { return extension + "\\OpenWithProgids"; };
  Put(kMachine, ".qxok", "QxOk");
  Put(kMachine, "QxOk\\shell\\open\\command", "\"" + there + "\" \"%1\"");
  Put(kMachine, "QxOk\\shell", "none");
  Put(kMachine, "QxOk\\DefaultIcon", "\"" + there + "\",0");
  Put(kMachine, ".qxnone", "QxNowhere");
  Put(kUser, ".qxuser", "QxNowhere");
  Put(kUser, kClasses, list(".qxuser"), "QxOk", {kRegNone, ""});
  Put(kUser, kClasses, list(".qxuser"), "QxOther", {kRegNone, ""});
  Put(kUser, ".qxdead", "QxDead");
  Put(kUser, "QxDead\\shell", "show");
  Put(kUser, "QxDead\\shell\\open\\command", "\"" + gone + "\" \"%1\"");
  Put(kUser, "QxDead\\shell\\print\\command", there + " /p %1");
  Put(kUser, "QxDead\\shell\\handled\\command", gone);
  Put(kUser, kClasses, "QxDead\\shell\\handled\\command", "DelegateExecute", Text("{1}"));
  for (const char* verb : {"dropped", "asked", "talked"})
    Put(kUser, std::string("QxDead\\shell\\") + verb + "\\command", gone);
  Put(kUser, kClasses, "QxDead\\shell\\dropped\\DropTarget", "CLSID", Text("{1}"));
  Put(kUser, kClasses, "QxDead\\shell\\asked", "ExplorerCommandHandler", Text("{1}"));
  Put(kUser, "QxDead\\shell\\talked\\ddeexec", "[open(\"%1\")]");
  Put(kUser, "QxDead\\DefaultIcon", gone + ",-3");
  Put(kMachine, ".qxown\\shell\\open\\command", gone);
  Put(kMachine, ".qxlist\\OpenWithList\\qxgone.exe", "");
  Put(kMachine, ".qxlist\\OpenWithList\\qxregistered.exe", "");
  Put(kMachine, "Applications\\qxregistered.exe", "");
  keys.back().second = std::string(kClasses) + "Applications\\qxregistered.exe";
  Put(kUser, kExplorer, ".qxchosen\\UserChoice", "ProgId", Text("QxNowhere"));
  Put(kUser, kExplorer, ".qxchosen\\OpenWithList", "a", Text("qxgone.exe"));
  Put(kUser, kExplorer, ".qxchosen\\OpenWithList", "MRUList", Text("a"));
  Put(kUser, kExplorer, ".qxfine\\UserChoice", "ProgId", Text("QxOk"));
}

TEST_F(FileAssociationsTest, WhatLeadsNowhereIsListed) {
  Seed();
  const auto scan = Scan();
  EXPECT_EQ(Rows(*scan),
            (Names{"!.qxchosen|chosen class|QxNowhere|User, protected",
                   "!.qxchosen|open with|qxgone.exe|User", "!.qxlist|open with|qxgone.exe|Machine",
                   "!.qxnone|class|QxNowhere|Machine", "!.qxown|command open|" + gone + "|Machine",
                   "!.qxuser|class|QxNowhere|User", "!.qxuser|open with class|QxOther|User",
                   "!QxDead|command open|\"" + gone + "\" \"%1\"|User",
                   "!QxDead|icon|" + gone + ",-3|User", "!QxDead|verb|show|User"}));
  EXPECT_TRUE(Holds(scan->status(), " references that lead nowhere"));
}

TEST_F(FileAssociationsTest, WhatIsDeletedComesBackAndWhatIsProtectedStays) {
  Seed();
  const RegistryPicture before = PictureOfKeys();
  const auto scan = Scan();
  scan->DeleteRows(OwnRows(*scan), false);
  EXPECT_EQ(scan->stayed(), 1u);
  EXPECT_TRUE(Holds(scan->failure(), "Windows protects what its user has chosen"));
  EXPECT_EQ(Rows(*Scan()), (Names{"!.qxchosen|chosen class|QxNowhere|User, protected"}));
  EXPECT_TRUE(machine->KeyExists(kUser, std::string(kClasses) + "QxDead\\shell\\print\\command"));
  RestoreAll();
  EXPECT_EQ(PictureOfKeys(), before);
}

TEST_F(FileAssociationsTest, AnotherProgramOfThoseOfferedTakesThePlace) {
  Seed();
  const RegistryPicture before = PictureOfKeys();
  const auto scan = Scan();
  EXPECT_FALSE(scan->Offers(ScanAction::kChoose, RowOf(*scan, ".qxnone"))) << "none is offered";
  const size_t row = RowOfUsersClass(*scan);
  EXPECT_EQ(scan->ChoicesFor(row), Names{"QxOk"});
  scan->Choose(row, "QxOk");
  const auto key =
      ports.registry.Open(kUser, std::string(kClasses) + ".qxuser", RegistryAccess::kRead);
  EXPECT_EQ(modRegistry::ReadText(*key, ""), "QxOk");
  for (const std::string& line : Rows(*Scan())) EXPECT_FALSE(line.starts_with("!.qxuser|class"));
  RestoreAll();
  EXPECT_EQ(PictureOfKeys(), before);
}

TEST_F(FileAssociationsTest, WhatHasChangedOrLeadsSomewhereAgainStays) {
  Seed();
  const auto scan = Scan();
  const std::vector<size_t> chosen = OwnRows(*scan);
  const size_t user_class = RowOfUsersClass(*scan);
  ports.files.RemoveFile(there);
  EXPECT_THROW(scan->Choose(user_class, "QxOk"), Error) << "that opens nothing any more";
  machine->MakeFile(there, "x");
  Put(kUser, "QxDead\\shell\\open\\command", gone + " /new");
  Put(kMachine, "QxNowhere", "");
  Put(kMachine, "QxOther", "");
  Put(kMachine, "Applications\\qxgone.exe", "");
  keys.back().second = std::string(kClasses) + "Applications\\qxgone.exe";
  const RegistryPicture before = PictureOfKeys();
  EXPECT_THROW(scan->Choose(user_class, "QxOk"), Error) << "its class is there again";
  machine->MakeFile(gone, "x");
  scan->DeleteRows(chosen, false);
  EXPECT_EQ(scan->stayed(), chosen.size() - 1) << "but for a verb that is still nowhere";
  EXPECT_EQ(Rows(*Scan()), Names()) << "and none of them is dead by now";
  Set(kUser, std::string(kClasses) + "QxDead\\shell", "", Text("show"));
  EXPECT_EQ(PictureOfKeys(), before);
}

// However many rows there are, the drives are asked once: one of another computer may be dead.
TEST_F(FileAssociationsTest, ADeletionLooksAtTheMachineOnceAndStopsBetweenRows) {
  struct Counting : ForwardingFileSystem {
    using ForwardingFileSystem::ForwardingFileSystem;
    std::optional<FileInfo> Look(std::string_view path, Detail detail) override {
      drives += path == "C:\\" ? 1 : 0;
      return ForwardingFileSystem::Look(path, detail);
    }
    int drives = 0;
  };
  for (int i = 0; i < 40; ++i) Put(kUser, ".qx" + std::to_string(i), "QxNowhere");
  const RegistryPicture before = PictureOfKeys();
  Counting files(ports.files);
  const auto scan = ScanOf(ScanTool::kAssociations, WithFiles(ports, files));
  std::vector<size_t> chosen;
  for (const size_t row : OwnRows(*scan)) {
    if (scan->row(row).texts[2] == "QxNowhere") chosen.push_back(row);
  }
  ASSERT_EQ(chosen.size(), 40u);
  for (const size_t stop_at : {1u, 20u, 41u}) {
    size_t pauses = 0;
    scan->DeleteRows(chosen, false, [&](const Progress&) { return ++pauses >= stop_at; });
    EXPECT_EQ(PictureOfKeys(), before) << stop_at;
    EXPECT_TRUE(Holds(scan->status(), "the deletion was stopped")) << stop_at;
    EXPECT_EQ(RowsNamed(*scan, "QxNowhere"), 40u) << stop_at;
  }
  files.drives = 0;
  scan->DeleteRows(chosen, false);
  EXPECT_EQ(files.drives, 1);
  EXPECT_EQ(scan->stayed(), 0u) << scan->failure();
  EXPECT_EQ(RowsNamed(*Scan(), "QxNowhere"), 0u);
}

}  // namespace
}  // namespace quellix
