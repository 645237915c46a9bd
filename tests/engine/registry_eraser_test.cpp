// The one way to delete from the registry: what goes, what stays and is told, what is refused.
#include "registry_tools/registry_eraser.h"

#include "cleaners/skeleton.h"
#include "plugins/mod_plugin.h"
#include "registry_tools/mod_registry.h"
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
    EXPECT_EQ(first.problem.empty(), stayed == 0) << first.problem.english;
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
  const Machine full = WithRegistry(ports, unstored);
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

constexpr const char* kAgain = "It was deleted and is there again";

TEST_F(RegistryEraserTest, WhatCannotGoStaysWithWhatHoldsItAndIsToldAndNoNeighbourStays) {
  const std::tuple<const char*, Fault, RegistryTarget, const char*> kRows[] = {
      {"a link",
       Fault::kLinked,
       {Kind::kTree, kUser, "Qx1\\link", ""},
       "Qx1\\link leads to another key."},
      {"a value that is there again",
       Fault::kUndone,
       {Kind::kValue, kUser, "Qx1\\link", "v"},
       kAgain},
      {"a key that is", Fault::kUndone, {Kind::kKey, kUser, "Qx1\\link", ""}, kAgain},
      {"a tree that is", Fault::kUndone, {Kind::kTree, kUser, "Qx1\\link", ""}, kAgain},
      {"a sub-key that is denied",
       Fault::kDenied,
       {Kind::kTree, kUser, "Qx1", ""},
       "It is denied."}};
  for (const auto& [row, fault, target, told] : kRows) {
    SCOPED_TRACE(row);
    UnstoredRegistry faulty(ports.registry, fault);
    for (const char* key : {"Qx1\\link", "Qx1\\denied", "Qx1\\other"})
      Set(kUser, key, "v", Text("x"));
    const Erasure erasure = RegistryEraser(faulty, RegistryEraser::OnError::kSilent).Erase(target);
    EXPECT_EQ(erasure.gone, 0u);
    EXPECT_EQ(erasure.stayed, 1u);
    EXPECT_TRUE(erasure.problem.english.starts_with(told)) << erasure.problem.english;
    EXPECT_EQ(machine->ValueNames(kUser, "Qx1\\denied"), Names{"v"});
    EXPECT_EQ(machine->ValueNames(kUser, "Qx1\\link").empty(), fault == Fault::kDenied);
    EXPECT_EQ(machine->KeyExists(kUser, "Qx1\\other"), fault != Fault::kDenied);
  }
}

// "~\" is "\REGISTRY\MACHINE\", "^\" a user's key; behind each a "/".
TEST(ProtectedKeys, PreciousKeysAreKeptWithWhatHoldsThem) {
  const std::tuple<bool, bool, const char*> kRows[] = {
      // values, trees
      {true, true,
       "\\REGISTRY\\MACHINE/~\\SOFTWARE/\\REGISTRY\\USER/\\REGISTRY\\USER\\S-1-5-21-1/^\\Software/"
       "^\\Software\\Classes\\.txt/\\REGISTRY\\USER\\S-1-5-21-1_Classes\\CLSID/~\\system\\Select/"
       "~\\SYSTEM\\ControlSet002/~\\SYSTEM\\ControlSet002\\Services/"
       "\\Registry\\Machine\\System\\CurrentControlSet\\services\\Tcpip\\Parameters/"
       "~\\SYSTEM\\ControlSet001\\Control\\Lsa/~\\SAM\\SAM\\Domains\\Account/~\\SECURITY\\Policy/"
       "~\\SOFTWARE\\Microsoft\\Windows NT/~\\SOFTWARE\\Microsoft\\WINDOWS "
       "nt\\CurrentVersion\\Winlogon/"
       "~\\SOFTWARE\\Classes\\CLSID/~\\SYSTEM\\ControlSet001\\Hardware Profiles\\0001\\Software"},
      {false, true, "~\\SOFTWARE\\Microsoft/~\\SOFTWARE\\Wow6432Node"},
      {false, false,
       "~\\SOFTWARE\\Microsoft\\Windows NTx/~\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run/"
       "~\\SYSTEM\\ControlSet001\\Qx/^\\Software\\Qx/"
       "^\\Software\\Microsoft\\Windows NT\\CurrentVersion/~\\SOFTWARE\\Classes\\CLSID\\{1}"}};
  for (const auto& [keeps_value, keeps_tree, keys] : kRows) {
    for (std::string name : Split(keys, '/')) {
      name = ReplaceNoCase(name, "~\\", "\\REGISTRY\\MACHINE\\");
      name = ReplaceNoCase(name, "^\\", "\\REGISTRY\\USER\\S-1-5-21-1\\");
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
    for (const Kind kind : {Kind::kValue, Kind::kKey, Kind::kTree})
      EXPECT_EQ(guarded.Erase({kind, kMachine, set + probe, "v"}).stayed, 1u) << set;
    EXPECT_EQ(machine->ValueNames(kMachine, set + probe), Names{"v"});
  }
  const auto system = ports.registry.Open(kMachine, "SYSTEM", RegistryAccess::kRead);
  if (system->IsLink("CurrentControlSet")) {
    const Erasure erasure = Erase({{Kind::kTree, kMachine, "SYSTEM\\CurrentControlSet", ""}});
    EXPECT_EQ(erasure.stayed, 1u);
    EXPECT_TRUE(Holds(erasure.problem.english, " leads to another key."));
    EXPECT_TRUE(machine->KeyExists(kMachine, "SYSTEM\\ControlSet001" + probe)) << "unguarded";
  }
  for (const char* set : {"SYSTEM\\ControlSet001", "SYSTEM\\CurrentControlSet"})
    machine->RemoveRegistryTree(kMachine, set + probe);
}

using RegistryHelpersTest = RegistryFixture;

TEST_F(RegistryHelpersTest, AnyValueReadsAsText) {
  const std::string nul(1, '\0'), fits(259, 'f');
  const std::tuple<const char*, RegistryValue, std::string> kRows[] = {
      {"a text", {kRegSz, ToUtf16Bytes("\xC3\xA4 text" + nul + "rest" + nul)}, "\xC3\xA4 text"},
      {"without an end", {kRegSz, ToUtf16Bytes("no end")}, "no end"},
      {"a variable", Text("%X%", kRegExpandSz), "%X%"},
      {"zero", Number(0), ""},
      {"a number", Number(48), "0"},
      {"as long as may be", Text(fits), fits},
      {"too long", Text(fits + "f"), ""},
      {"", Text("unnamed"), "unnamed"}};
  const modRegistry::Access access{ports.registry, ports.system};
  const auto read = [&](const char* key, const char* name) {
    return modRegistry::ReadRegString(access, kUser, key, name);
  };
  for (const auto& [name, value, text] : kRows) {
    Set(kUser, "Qx1", name, value);
    EXPECT_EQ(read("Qx1\\", name), text) << name;
  }
  EXPECT_EQ(read("Qx1", "missing") + read("No\\Such", "x"), "");
}

}  // namespace
}  // namespace quellix
