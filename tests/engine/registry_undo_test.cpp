// Registry entries in .reg files: what is kept, when, and how it comes back.

#include "contract/error_kind.h"
#include "plugins/mod_plugin.h"
#include "support/branch_registry.h"
#include "support/forwarding_files.h"
#include "support/registry_fixture.h"
#include "support/scripted_prompts.h"

namespace quellix {
namespace {

struct RegistryUndoTest : RegistryFixture {
  std::string BackupFolder() { return own + "Backup\\"; }
  std::string Restore(OverwriteMode mode, Prompts& prompts) {
    const RestoreResult result = backups.Restore(
        UndoFiles().at(0), {.entry_paths = {}, .to = "", .mode = mode}, prompts, {});
    return std::to_string(result.restored) + " " + std::to_string(result.skipped) +
           (result.cancelled ? " cancelled" : "");
  }
  void KeepTree(const std::string& key) {
    RegistryUndo undo;
    undo.AddTree(ports.registry, kUser, key);
    undo.Store(ports, BackupFolder());
    machine->RemoveRegistryTree(kUser, key);
  }
};

const std::string kNul(1, '\0');
const std::pair<const char*, RegistryValue> kEntryRows[] = {
    {"", Text("the default value")},
    {"a \"quoted\" \\ name", Text("a \"quoted\" \\ text")},
    {"ends in \\", Text("ends in \\")},
    {"@", Text("an at")},
    {"lines", Text("one\r\ntwo\tthree")},
    {"no end", {kRegSz, ToUtf16Bytes("abc")}},
    {"two ends", {kRegSz, ToUtf16Bytes("abc" + kNul + kNul)}},
    {"nul inside", {kRegSz, ToUtf16Bytes("a" + kNul + "b" + kNul)}},
    {"odd bytes", {kRegSz, ToUtf16Bytes("abc" + kNul) + "x"}},
    {"one byte", {kRegSz, "x"}},
    {"no bytes", {kRegSz, ""}},
    {"surrogate alone", {kRegSz, std::string("\x00\xD8\x00\x00", 4)}},
    {"expand", Text("%PATH%", kRegExpandSz)},
    {"texts", {kRegMultiSz, ToUtf16Bytes("a" + kNul + "b" + kNul + kNul)}},
    {"number", Number(0xFEDCBA98)},
    {"short number", {kRegDword, "xyz"}},
    {"long", {kRegBinary, std::string(3000, '\xAB')}},
    {"empty", {kRegBinary, ""}},
    {"none", {kRegNone, "x"}},
    {"big number", {11, std::string("12345678")}},
    {"odd type", {0x12345, "abc"}},
    {"\xC3\xA4\xE6\xBC\xA2\xF0\x9F\x98\x80", Text("\xC3\xA4\xE6\xBC\xA2\xF0\x9F\x98\x80")},
    {"=", Text("]")},
    {"; no remark", Text("; none either")}};

TEST_F(RegistryUndoTest, EveryKindOfEntryComesBackAsItWas) {
  for (const auto& [name, value] : kEntryRows) Set(kUser, "Qx1\\a]b\\[c", name, value);
  for (const auto& [name, value] : kEntryRows) Set(kUser, "Qx1\\\xC3\xA4", name, value);
  const RegistryPicture before = UserPicture();
  KeepTree("Qx1");
  EXPECT_TRUE(UserPicture().empty());
  NoPrompts prompts;
  EXPECT_EQ(Restore(OverwriteMode::kAsk, prompts), "4 0");
  EXPECT_EQ(UserPicture(), before);
  EXPECT_EQ(Restore(OverwriteMode::kAsk, prompts), "4 0") << "the same again asks nothing";
  const auto entries = backups.ListEntries(UndoFiles()[0]);
  ASSERT_EQ(entries.size(), 4u);
  EXPECT_EQ(entries[0].path, "HKEY_CURRENT_USER\\Qx1");
  const std::string copy = backups.ExtractTemporary(UndoFiles()[0], entries.back().path);
  EXPECT_TRUE(copy.ends_with(".txt")) << copy;
  EXPECT_TRUE(machine->Exists(copy));
}

// Changed, deleted, and deleted again when a program had written it anew.
TEST_F(RegistryUndoTest, WhateverWasDoneToAValueItsFirstStateComesBack) {
  RegistryUndo undo;
  for (const char* text : {"first", "second", "last"}) {
    Set(kUser, "Qx1", "v", Text(text));
    text[0] == 'f' ? undo.AddState(ports.registry, kUser, "Qx1", "V")
                   : undo.AddTree(ports.registry, kUser, "Qx1");
    undo.AddState(ports.registry, kUser, "Qx1", "new");
    undo.Store(ports, BackupFolder());
    machine->RemoveRegistryTree(kUser, "Qx1");
    Set(kUser, "Qx1", "new", Text(text));
  }
  const RestoreResult result = RestoreFile(UndoFiles().at(0));
  EXPECT_EQ(result.restored, 1u);
  EXPECT_EQ(modRegistry::ReadRegString({ports.registry, ports.system}, kUser, "Qx1", "v"), "first");
  EXPECT_EQ(machine->ValueNames(kUser, "Qx1"), Names{"V"}) << "and what was not there goes";
  RegistryUndo other;
  other.AddValue(ports.registry, kUser, "Qx1", "v");
  other.Store(ports, BackupFolder());
  EXPECT_EQ(UndoFiles().size(), 2u) << "each has a file of its own";
}

TEST_F(RegistryUndoTest, AnEmptyFileIsListedWithoutAProblem) {
  machine->MakeFile(own + "Backup\\R_010120200000.reg", "");
  const std::vector<BackupInfo> files = backups.List();
  ASSERT_EQ(files.size(), 1u);
  EXPECT_EQ(files[0].problem, "");
  EXPECT_EQ(files[0].entries, 0u);
  const RestoreResult result = RestoreFile(files[0].name);
  EXPECT_EQ(result.restored, 0u);
  EXPECT_EQ(result.problems, Names());
}

TEST_F(RegistryUndoTest, OneValueThatCannotBeWrittenKeepsNoneOfTheOthersBack) {
  RegFileText text;
  text.AddKey(kUser, "Qx1");
  text.AddValue("a", Number(1));
  text.AddValue(std::string(20000, 'n'), Number(2));  // too long for Windows
  text.AddValue("large",
                RegistryValue{kRegBinary, std::string(1'100'000, '\xAB')});  // and for a volume
  text.AddValue("z", Number(3));
  machine->MakeFile(BackupFolder() + "R_0101202610000.reg", RegFileHeader() + text.Bytes());
  const RestoreResult result = RestoreFile(UndoFiles().at(0));
  const auto names = machine->ValueNames(kUser, "Qx1");
  EXPECT_TRUE(std::ranges::count(names, "a") && std::ranges::count(names, "z"));
  EXPECT_EQ(result.problems.size(), 4 - names.size());
  EXPECT_EQ(names.size(), 3u);
  EXPECT_TRUE(result.restored == 0 && result.skipped == 1);
}

// A medium that takes so many writes and is full then.
struct FullFile : ForwardingFile {
  FullFile(std::unique_ptr<RandomFile> file, int& writes)
      : ForwardingFile(std::move(file)), writes_(writes) {}
  void Write(uint64_t offset, std::string_view bytes) override {
    const bool fits = writes_-- > 0;
    ForwardingFile::Write(offset, fits ? bytes : bytes.substr(0, bytes.size() / 2));
    if (!fits) throw Error(Error::Kind::kFull, "The disk is full.");
  }

  int& writes_;
};

TEST_F(RegistryUndoTest, AFullDiskLeavesTheFileAsItWas) {
  int writes = 0;
  ForwardingFiles full(ports.files, [&](std::string_view, std::unique_ptr<RandomFile> file) {
    return std::make_unique<FullFile>(std::move(file), writes);
  });
  const Machine narrow = WithFiles(ports, full);
  RegistryUndo undo;
  for (const bool is_first : {true, false}) {
    Set(kUser, "Qx1", is_first ? "first" : "second", Text("x"));
    undo.AddTree(ports.registry, kUser, "Qx1");
    const std::string stored = is_first ? "" : Read(undo.path());
    EXPECT_THROW(undo.Store(narrow, BackupFolder()), Error);
    EXPECT_TRUE(is_first || Read(undo.path()) == stored);
    EXPECT_EQ(UndoFiles().empty(), is_first) << "no empty file is left";
    if (!is_first) break;
    writes = 1;
    undo.AddTree(ports.registry, kUser, "Qx1");
    undo.Store(narrow, BackupFolder());
  }
  machine->RemoveRegistryTree(kUser, "Qx1");
  EXPECT_TRUE(RestoreFile(UndoFiles().at(0)).problems.empty());
  EXPECT_EQ(machine->ValueNames(kUser, "Qx1"), Names{"first"});
}

TEST_F(RegistryUndoTest, WhatIsThereMeanwhileIsReplacedAsTheModeSays) {
  Set(kUser, "Qx1", "v", Text("old"));
  Set(kUser, "Qx2", "v", Text("old"));
  {
    RegistryUndo undo;
    undo.AddTree(ports.registry, kUser, "Qx1");
    undo.Store(ports, BackupFolder());
    undo.AddTree(ports.registry, kUser, "Qx2");
    undo.Store(ports, BackupFolder());
    ASSERT_EQ(UndoFiles().size(), 1u) << "one for a window";
  }
  const auto is = [this](const char* key, const char* text) {
    return modRegistry::ReadRegString({ports.registry, ports.system}, kUser, key, "v") == text;
  };
  const auto change = [this] {
    for (const char* key : {"Qx1", "Qx2"}) Set(kUser, key, "v", Text("new"));
  };
  change();
  ScriptedPrompts prompts;
  EXPECT_EQ(Restore(OverwriteMode::kNever, prompts), "0 2");
  EXPECT_EQ(Restore(OverwriteMode::kNewer, prompts), "0 2");
  EXPECT_TRUE(is("Qx1", "new") && is("Qx2", "new") && prompts.asked.empty());
  EXPECT_EQ(Restore(OverwriteMode::kAlways, prompts), "2 0");
  EXPECT_TRUE(is("Qx1", "old") && is("Qx2", "old"));
  change();
  prompts.overwrites = {OverwriteAnswer::kNo, OverwriteAnswer::kYes};
  EXPECT_EQ(Restore(OverwriteMode::kAsk, prompts), "1 1");
  EXPECT_EQ(prompts.asked[0], "HKEY_CURRENT_USER\\Qx1\\v");
  EXPECT_TRUE(is("Qx1", "new") && is("Qx2", "old"));
  change();
  EXPECT_EQ(Restore(OverwriteMode::kAsk, prompts), "0 0 cancelled");
  EXPECT_TRUE(is("Qx1", "new") && is("Qx2", "new"));
}

TEST_F(RegistryUndoTest, WhatCannotBeKeptIsNotDeleted) {
  const std::string line_break = "line\r\nbreak";
  Set(kUser, "Qx1", line_break, Text(scratch + "gone"));
  Set(kUser, "Qx1", "plain", Text(scratch + "gone"));
  const RegistryPicture before = UserPicture();
  BranchRegistry user(ports.registry);
  const auto scan = MakeScan(ScanTool::kFileReferences, user.On(ports), scan_view);
  scan->SetThorough(true);
  const auto tick = [&](const std::string& name) {
    scan->StartScan();
    size_t ticked = 0;
    for (size_t i = 0; i < scan->RowCount(); ++i) {
      const bool wanted = scan->row(i).key == "Qx1\\" && scan->row(i).name == name;
      scan->SetChecked(i, wanted);
      ticked += wanted;
    }
    EXPECT_EQ(ticked, 1u);
    return scan->RowCount();
  };
  const size_t rows = tick(line_break);
  scan->DeleteChecked(false);
  ASSERT_EQ(scan_view.problems.size(), 1u);
  EXPECT_TRUE(Holds(scan_view.problems[0], "Nothing is deleted"));
  EXPECT_EQ(scan->RowCount(), rows);
  EXPECT_EQ(UserPicture(), before);
  EXPECT_TRUE(UndoFiles().empty());

  WriteOwn("Backup", "no folder");
  tick("plain");
  scan->DeleteChecked(false);
  ASSERT_EQ(scan_view.problems.size(), 2u);
  EXPECT_EQ(UserPicture(), before);

  WriteSettings("[Backup]\r\nRegistry=0\r\n");
  scan->DeleteChecked(false);
  EXPECT_EQ(scan_view.problems.size(), 2u);
  EXPECT_EQ(machine->ValueNames(kUser, "Qx1"), Names{line_break});
  tick(line_break);
  scan->DeleteChecked(false);
  EXPECT_TRUE(machine->ValueNames(kUser, "Qx1").empty());
}

TEST_F(RegistryUndoTest, CleanersKeepOnlyInTheModeThatBacksUp) {
  const std::pair<const char*, bool> kRows[] = {
      {"[General]\r\nDelMethod=D\r\n", false},
      {"[General]\r\nDelMethod=B\r\n[Backup]\r\nRegistry=0\r\n", false},
      {"[General]\r\nDelMethod=B\r\n", true}};
  for (const auto& [ini, kept] : kRows) {
    SCOPED_TRACE(ini);
    WriteSettings(ini);
    for (const char* name : {"a", "b", "MRUList"}) machine->SetText(kUser, kRunMruKey, name, name);
    machine->SetText(kUser, kTypedUrlsKey, "url1", "x");
    Tick({"CleanRunMRU", "CleanTypedURL"});
    engine.RunCleaning();
    EXPECT_TRUE(machine->ValueNames(kUser, kRunMruKey).empty());
    ASSERT_EQ(UndoFiles().size(), kept ? 1u : 0u);
  }
  EXPECT_TRUE(RestoreFile(UndoFiles()[0]).problems.empty());
  EXPECT_EQ(machine->ValueNames(kUser, kRunMruKey), (Names{"MRUList", "a", "b"}));
  EXPECT_EQ(machine->ValueNames(kUser, kTypedUrlsKey), Names{"url1"}) << "one file for the run";

  // Where it cannot be kept it stays, with a message.
  ports.files.RemoveFile(BackupFolder() + UndoFiles()[0]);
  ports.files.RemoveFolder(own + "Backup");
  WriteOwn("Backup", "no folder");
  Tick({"CleanRunMRU"});
  engine.RunCleaning();
  ASSERT_EQ(view.criticals.size(), 1u);
  EXPECT_TRUE(Holds(view.criticals[0], "could not be backed up"));
  EXPECT_EQ(machine->ValueNames(kUser, kRunMruKey).size(), 3u);
}

TEST_F(RegistryUndoTest, PluginsKeepKeysAndValuesAlsoOfTheClasses) {
  const std::string type = "Software\\Classes\\Qx\\Type";
  Set(kUser, "Qx1\\tree\\deep", "v", Text("x"));
  Set(kUser, "Qx2\\key", "goes", Text("x"));
  Set(kUser, "Qx2\\key", "stays", Text("x"));
  for (const RegistryRoot root : {kUser, kMachine}) Set(root, type, "v", Text("x"));
  const RegistryPicture before = UserPicture();
  modPlugin::Plugin plugin;
  plugin.registry = {
      {.delete_subkey = true, .key = "HKEY_CURRENT_USER\\Qx1\\tree", .value_name = ""},
      {.key = "HKEY_CURRENT_USER\\Qx2\\key", .value_name = "goes"},
      {.delete_subkey = true, .key = "HKEY_CLASSES_ROOT\\Qx\\Type", .value_name = ""}};
  engine.state().BackupFolder = BackupFolder();
  engine.state().RemovalMode = kBackUp;
  modPlugin::RunRecords(context, plugin);
  EXPECT_EQ(engine.state().RunLog, "");
  EXPECT_FALSE(machine->KeyExists(kUser, "Qx1\\tree"));
  EXPECT_FALSE(machine->KeyExists(kUser, type) || machine->KeyExists(kMachine, type));
  EXPECT_EQ(machine->ValueNames(kUser, "Qx2\\key"), Names{"stays"});
  RestoreAll();
  EXPECT_EQ(UserPicture(), before);
  for (const RegistryRoot root : {kUser, kMachine}) {
    EXPECT_EQ(machine->ValueNames(root, type), Names{"v"});
    machine->RemoveRegistryTree(root, "Software\\Classes\\Qx");
  }
}

// Its keys, each with its values behind it.
Names Told(const RegFile& file) {
  Names told;
  for (const RegFileKey& key : file.keys) {
    told.push_back(key.path);
    for (const auto& [name, value] : key.values)
      told.push_back(name + (value ? "=" + value->bytes : " is not there"));
  }
  return told;
}

// Wherever it ends, what is whole comes back, and nothing that is not.
TEST(RegFile, ACutOffFileKeepsWhatIsWhole) {
  RegFileText text;
  text.AddKey(kUser, "a]b\\[c");
  text.AddValue("plain", Text("ends in \\ \"quoted\""));
  text.AddKey(kUser, "Qx");
  text.AddValue("number", Number(0x12345678));
  text.AddValue("none", std::nullopt);
  text.AddValue("long", RegistryValue{kRegBinary, std::string(60, '\xAB')});
  text.AddValue("", Text("%PATH%", kRegExpandSz));
  const std::string bytes = RegFileHeader() + text.Bytes();
  const Names whole = Told(ParseRegFile(bytes));
  ASSERT_EQ(whole.size(), 7u);
  size_t most = 0;
  for (size_t size = 0; size <= bytes.size(); ++size) {
    const Names cut = Told(ParseRegFile(std::string_view(bytes).substr(0, size)));
    ASSERT_TRUE(std::ranges::mismatch(cut, whole).in1 == cut.end()) << size;
    ASSERT_GE(cut.size(), most) << size;
    most = cut.size();
  }
  EXPECT_EQ(most, whole.size());
  EXPECT_TRUE(ParseRegFile(bytes.substr(0, bytes.size() - 7)).is_cut_off);
  EXPECT_TRUE(ParseRegFile(bytes.substr(0, bytes.size() - 20) + std::string(20, '\0')).is_cut_off);
  EXPECT_FALSE(ParseRegFile(bytes).is_cut_off || ParseRegFile("").is_cut_off);
}

TEST(RegFile, OnlyWhatTheRegistryEditorTakesIsRead) {
  const std::string start = "Windows Registry Editor Version 5.00\r\n\r\n";
  const std::string key = start + "[HKEY_CURRENT_USER\\a]\r\n";
  // problem: null: it is read.
  const std::tuple<const char*, std::string, const char*> kRows[] = {
      {"nothing in it", start, nullptr},
      {"remarks and blanks", key + "; remark\r\n \"a\" = \"b\" ; remark\r\n", nullptr},
      {"continued", key + "\"a\"=hex(2):61,\\\r\n  00\r\n", nullptr},
      {"another format", "REGEDIT4\r\n", "version 5"},
      {"unknown root", start + "[HKEY_NONE\\a]\r\n", "line 3"},
      {"no bracket", start + "[HKEY_CURRENT_USER\\a\r\n", "line 3"},
      {"deletes a key", start + "[-HKEY_CURRENT_USER\\a]\r\n", "to be deleted"},
      {"tells of no value", key + "\"a\"=- ; remark\r\n", nullptr},
      {"tells of no value, and more", key + "\"a\"=-1\r\n", "follows"},
      {"value first", start + "\"a\"=\"b\"\r\n", "before the first key"},
      {"no data", key + "\"a\"\r\n", "line 4"},
      {"open text", key + "\"a\"=\"b\r\n", "no end"},
      {"no number", key + "\"a\"=dword:x\r\n", "number"},
      {"large number", key + "\"a\"=dword:123456789\r\n", "number"},
      {"large byte", key + "\"a\"=hex:123\r\n", "byte"},
      {"more behind", key + "\"a\"=\"b\" c\r\n", "follows"},
      {"no type", key + "\"a\"=hex(:00\r\n", "number"}};
  for (const auto& [what, text, problem] : kRows) {
    SCOPED_TRACE(what);
    const std::string bytes = "\xFF\xFE" + ToUtf16Bytes(text);
    const std::string said = SaidBy([&] { ParseRegFile(bytes); });
    EXPECT_EQ(said.empty(), problem == nullptr) << said;
    EXPECT_TRUE(Holds(said, problem == nullptr ? "" : problem));
  }
  EXPECT_THROW(ParseRegFile(key), Error) << "not UTF-16";
}

}  // namespace
}  // namespace quellix
