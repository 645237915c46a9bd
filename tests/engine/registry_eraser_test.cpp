// The one way to delete from the registry: what goes, what stays and is told, what is refused.
#include "registry_tools/registry_eraser.h"

#include "plugins/mod_plugin.h"
#include "run/protected_keys.h"
#include "support/registry_fixture.h"
#include "support/unstored_registry.h"

namespace quellix {
namespace {

using Kind = RegistryTarget::Kind;

struct RegistryEraserTest : RegistryFixture {
  Erasure Erase(const std::vector<RegistryTarget>& targets) {
    return RegistryEraser(ports.registry, RegistryEraser::OnError::kSilent).Erase(targets);
  }
  const std::string backup_folder_ = own + "Backup\\";
};

TEST_F(RegistryEraserTest, OnlyWhatIsNamedGoesAndWhatStaysIsTold) {
  // left: of the 8 keys and values.
  const std::tuple<const char*, RegistryTarget, size_t, size_t, size_t> kRows[] = {
      {"a value in any case", {Kind::kValue, kUser, "QX1\\a", "V"}, 1, 0, 7},
      {"the default value", {Kind::kValue, kUser, "Qx1\\a\\", ""}, 1, 0, 7},
      {"no such value", {Kind::kValue, kUser, "Qx1\\a", "none"}, 0, 0, 8},
      {"a NUL in its name", {Kind::kValue, kUser, "Qx1\\a", std::string("v\0x", 3)}, 0, 1, 8},
      {"a key without sub-keys", {Kind::kKey, kUser, "Qx1\\a\\b\\c", ""}, 1, 0, 6},
      {"a key with sub-keys", {Kind::kKey, kUser, "Qx1\\a\\b", ""}, 0, 1, 8},
      {"no such key", {Kind::kKey, kUser, "Qx1\\none", ""}, 0, 0, 8},
      {"a tree", {Kind::kTree, kUser, "Qx1\\a\\", ""}, 1, 0, 1},
      {"a tree of values alone", {Kind::kTree, kUser, "Qx1\\a\\b\\c", ""}, 1, 0, 6},
      {"no such tree", {Kind::kTree, kUser, "Qx1\\none\\deeper", ""}, 0, 0, 8},
      {"a backslash in front names nothing", {Kind::kTree, kUser, "\\Qx1", ""}, 0, 0, 8}};
  for (const auto& [what, target, gone, stayed, left] : kRows) {
    SCOPED_TRACE(what);
    Set(kUser, "Qx1\\a", "v", Text("1"));
    Set(kUser, "Qx1\\a", "", Text("2"));
    Set(kUser, "Qx1\\a\\b", "deep", Text("3"));
    Set(kUser, "Qx1\\a\\b\\c", "deeper", Text("4"));
    ASSERT_EQ(UserPicture().size(), 8u);
    const Erasure first = Erase({target});
    EXPECT_EQ(first.gone, gone);
    EXPECT_EQ(first.stayed, stayed);
    EXPECT_EQ(first.problem.empty(), stayed == 0) << first.problem;
    EXPECT_EQ(UserPicture().size(), left);
    const Erasure again = Erase({target});
    EXPECT_EQ(again.gone, 0u);
    EXPECT_EQ(again.stayed, stayed);
    EXPECT_EQ(UserPicture().size(), left);
  }
}

TEST_F(RegistryEraserTest, OneThatIsDeniedKeepsNoOtherAndIsKnown) {
  for (const char* key : {"Qx1", "Qx2"}) Set(kUser, key, "v", Text("1"));
  Set(kMachine, std::string(kApps) + "\\qx", "v", Text("1"));
  const std::vector<RegistryTarget> targets = {{Kind::kValue, kUser, "Qx1", "v"},
                                               {Kind::kValue, kUser, "Qx1", "none"},
                                               {Kind::kTree, kMachine, std::string(kApps), ""}};
  const auto denied = machine->DenyRegistryWrites(kUser, "Qx1");
  const Erasure erasure = Erase(targets);
  EXPECT_EQ(erasure.gone, 1u);
  EXPECT_EQ(erasure.stays, (std::vector<bool>{true, false, false}));
  EXPECT_FALSE(machine->KeyExists(kMachine, kApps));
  RegistryEraser told(ports.registry, RegistryEraser::OnError::kTold);
  EXPECT_THROW(told.Erase(targets), Error);
  EXPECT_EQ(machine->ValueNames(kUser, "Qx1"), Names{"v"});
}

TEST_F(RegistryEraserTest, ATreeAsDeepAsTheyComeIsKeptAndGoes) {
  std::string deep = "Qx1";
  for (int level = 1; level < 480; ++level) deep += "\\k";
  Set(kUser, deep, "v", Text("1"));
  const RegistryPicture before = UserPicture();
  ASSERT_EQ(before.size(), 481u);
  RegistryUndo undo;
  RegistryEraser eraser(ports.registry, RegistryEraser::OnError::kTold);
  eraser.KeepIn(undo, ports, backup_folder_);
  EXPECT_EQ(eraser.Erase({Kind::kTree, kUser, "Qx1", ""}).gone, 1u);
  EXPECT_TRUE(UserPicture().empty() && RestoreFile(UndoFiles().at(0)).problems.empty());
  EXPECT_EQ(UserPicture(), before);
}

TEST_F(RegistryEraserTest, WhatIsNotStoredCountsAsNotDeleted) {
  UnstoredRegistry unstored(ports.registry);
  const Machine full{ports.files,     unstored,       ports.shell,
                     ports.url_cache, ports.profile,  ports.system,
                     ports.session,   ports.cleaners, ports.program_folder};
  Engine run(full, view);
  machine->RemoveRegistryTree(kUser, kRunMruKey);
  for (const char* name : {"a", "b"}) machine->SetText(kUser, kRunMruKey, name, "x");
  run.RunOneItem(*FindItem("CleanRunMRU"));
  ASSERT_EQ(view.criticals.size(), 1u);
  EXPECT_EQ(view.criticals[0],
            "There was an error in cleaning the Run MRU. 2 of 2 registry entries stay. "
            "The disk is full.");
  EXPECT_TRUE(run.state().SomeErrors);
  EXPECT_FALSE(Holds(run.state().RunLog, "run history"));

  const CleaningContext on_full{full, settings, run.state(), view, mod_zip};
  CleaningContext plugin_context = on_full;
  Set(kUser, "Qx1\\key", "v", Text("x"));
  run.state().RunLog.clear();
  modPlugin::Plugin plugin;
  plugin.registry = {{.key = "HKEY_CURRENT_USER\\Qx1\\key", .value_name = "v"}};
  modPlugin::RunRecords(plugin_context, plugin);
  EXPECT_EQ(run.state().RunLog, "HKEY_CURRENT_USER\\Qx1\\key: The disk is full.\r\n");

  for (const char* name : {"C:\\qx none\\1", "C:\\qx none\\2"})
    Set(kMachine, kDlls, name, Number(1));
  const auto scan = MakeScan(ScanTool::kSharedDlls, full, scan_view);
  scan->StartScan();
  scan->DeleteChecked(false);
  EXPECT_EQ(scan->stayed(), 2u);
  EXPECT_EQ(scan->failure(), "The disk is full.");
  EXPECT_EQ(scan->RowCount(), 0u) << "rows go all the same";
  EXPECT_EQ(scan->status(),
            "0 entries, 0 with missing files, 0 with zero usage count, 2 could not be deleted");
}

TEST_F(RegistryEraserTest, WhatIsThereAgainIsToldAsStayed) {
  UnstoredRegistry undone(ports.registry, Fault::kUndone);
  Set(kUser, "Qx1\\key", "v", Text("x"));
  for (const Kind kind : {Kind::kValue, Kind::kKey, Kind::kTree}) {
    const Erasure erasure = RegistryEraser(undone, RegistryEraser::OnError::kSilent)
                                .Erase({kind, kUser, "Qx1\\key", "v"});
    EXPECT_EQ(erasure.gone, 0u);
    EXPECT_EQ(erasure.problem.find("It was deleted and is there again"), 0u) << erasure.problem;
  }
}

TEST_F(RegistryEraserTest, ASubKeyThatStaysKeepsItsHolderAndNoNeighbour) {
  UnstoredRegistry denying(ports.registry, Fault::kDenied);
  for (const char* key : {"Qx1\\denied", "Qx1\\other"}) Set(kUser, key, "v", Text("x"));
  const Erasure erasure = RegistryEraser(denying, RegistryEraser::OnError::kSilent)
                              .Erase({Kind::kTree, kUser, "Qx1", ""});
  EXPECT_EQ(erasure.stayed, 1u);
  EXPECT_EQ(erasure.problem, "It is denied.");
  EXPECT_TRUE(machine->KeyExists(kUser, "Qx1\\denied") && !machine->KeyExists(kUser, "Qx1\\other"));
}

// Behind "\REGISTRY\".
TEST(ProtectedKeys, PreciousKeysAreKeptWithWhatHoldsThem) {
  const std::tuple<bool, bool, Names> kRows[] = {
      // values, trees
      {true,
       true,
       {"MACHINE", "MACHINE\\SOFTWARE", "USER", "USER\\S-1-5-21-1", "USER\\S-1-5-21-1\\Software",
        "USER\\S-1-5-21-1\\Software\\Classes\\.txt", "USER\\S-1-5-21-1_Classes\\CLSID",
        "machine\\system\\Select", "MACHINE\\SYSTEM\\ControlSet002",
        "MACHINE\\SYSTEM\\ControlSet002\\Services",
        "Machine\\System\\CurrentControlSet\\services\\Tcpip\\Parameters",
        "MACHINE\\SYSTEM\\ControlSet001\\Control\\Lsa", "MACHINE\\SAM\\SAM\\Domains\\Account",
        "MACHINE\\SECURITY\\Policy", "MACHINE\\SOFTWARE\\Microsoft\\Windows NT",
        "MACHINE\\SOFTWARE\\Microsoft\\WINDOWS nt\\CurrentVersion\\Winlogon",
        "MACHINE\\SOFTWARE\\Classes\\CLSID",
        "MACHINE\\SYSTEM\\ControlSet001\\Hardware Profiles\\0001\\Software"}},
      {false, true, {"MACHINE\\SOFTWARE\\Microsoft", "MACHINE\\SOFTWARE\\Wow6432Node"}},
      {false,
       false,
       {"MACHINE\\SOFTWARE\\Microsoft\\Windows NTx",
        "MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run",
        "MACHINE\\SYSTEM\\ControlSet001\\Qx", "USER\\S-1-5-21-1\\Software\\Qx",
        "USER\\S-1-5-21-1\\Software\\Microsoft\\Windows NT\\CurrentVersion",
        "MACHINE\\SOFTWARE\\Classes\\CLSID\\{1}"}}};
  for (const auto& [keeps_value, keeps_tree, keys] : kRows) {
    for (const std::string& key : keys) {
      const std::string name = "\\REGISTRY\\" + key;
      EXPECT_EQ(ProtectedKeys::KeepsName(name, ProtectedKeys::Part::kValue), keeps_value) << name;
      EXPECT_EQ(ProtectedKeys::KeepsName(name, ProtectedKeys::Part::kTree), keeps_tree) << name;
    }
  }
}

// The text of a link's name says nothing; the eraser asks the opened key.
TEST_F(RegistryEraserTest, TheGuardKnowsAKeyByWhatItIs) {
  const std::string probe = "\\Services\\QxProbe";
  Set(kMachine, "SYSTEM\\ControlSet001" + probe, "v", Text("1"));
  RegistryEraser guarded(ports.registry, RegistryEraser::OnError::kSilent);
  guarded.Guard();
  for (const char* set : {"SYSTEM\\ControlSet001", "system\\currentControlSet"}) {
    Set(kMachine, set + probe, "v", Text("1"));  // Wine keeps two sets where Windows has a link
    for (const Kind kind : {Kind::kValue, Kind::kKey, Kind::kTree}) {
      EXPECT_EQ(guarded.Erase({kind, kMachine, set + probe, "v"}).stayed, 1u) << set;
    }
    EXPECT_EQ(machine->ValueNames(kMachine, set + probe), Names{"v"});
  }
  const auto system = ports.registry.Open(kMachine, "SYSTEM", RegistryAccess::kRead);
  if (system->IsLink("CurrentControlSet")) {
    const Erasure erasure = Erase({{Kind::kTree, kMachine, "SYSTEM\\CurrentControlSet", ""}});
    EXPECT_EQ(erasure.stayed, 1u);
    EXPECT_TRUE(Holds(erasure.problem, " leads to another key."));
    EXPECT_TRUE(machine->KeyExists(kMachine, "SYSTEM\\ControlSet001" + probe)) << "unguarded";
  }
  for (const char* set : {"SYSTEM\\ControlSet001", "SYSTEM\\CurrentControlSet"}) {
    machine->RemoveRegistryTree(kMachine, set + probe);
  }
}

}  // namespace
}  // namespace quellix
