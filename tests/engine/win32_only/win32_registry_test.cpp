#include <cstdlib>
#include <cstring>
#include <functional>

#include "backup/registry_undo.h"
#include "platform/win32/win32_registry.h"
#include "platform/win32/win32_text.h"
#include "plugins/mod_plugin.h"
#include "registry_tools/mod_registry.h"
#include "support/branch_registry.h"
#include "support/key_link_win32.h"
#include "support/registry_fixture.h"
#include "ui/windows_api.h"

namespace quellix {
namespace {

using Win32RegistryTest = RunFixture;

TEST_F(Win32RegistryTest, KeysThatStandForPerformanceDataAreNoError) {
  constexpr const char* kPerflib = "Software\\Microsoft\\Windows NT\\CurrentVersion\\Perflib";
  const auto perflib = ports.registry.Open(kMachine, kPerflib, RegistryAccess::kRead);
  ASSERT_TRUE(perflib);
  for (uint32_t i = 0; const auto name = perflib->SubKeyAt(i); ++i) {
    const auto language = perflib->Open(*name, RegistryAccess::kRead);
    if (language) {
      EXPECT_NO_THROW(language->SubKeyAt(0)) << *name;
    }
  }
}

const std::string kMachineName = "\\Registry\\Machine\\";

// Sets a value whose name has a NUL in it, which only the system's own call can.
void SetNulValue(const std::wstring& path, std::wstring name, const std::wstring& text) {
  struct {
    USHORT length, size;
    wchar_t* buffer;
  } counted{static_cast<USHORT>(name.size() * sizeof(wchar_t)),
            static_cast<USHORT>(name.size() * sizeof(wchar_t)), name.data()};
  HKEY key = nullptr;
  RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                  nullptr);
  const auto set = reinterpret_cast<LONG(NTAPI*)(HANDLE, void*, ULONG, ULONG, const void*, ULONG)>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtSetValueKey")));
  set(key, &counted, 0, REG_SZ, text.c_str(),
      static_cast<ULONG>((text.size() + 1) * sizeof(wchar_t)));
  RegCloseKey(key);
}

class NulNameTest : public RegistryFixture {};

TEST_F(NulNameTest, AValueWithANulInItsNameTakesNoOtherWithIt) {
  for (const char* name : {"a", "b"}) Set(kUser, "Qx1", name, Text("kept"));
  SetNulValue(L"Qx1", std::wstring(L"a\0b", 3), L"C:\\qx none");
  WriteSettings("[Backup]\r\nRegistry=0\r\n");
  BranchRegistry user(ports.registry);
  const auto scan = MakeScan(ScanTool::kFileReferences, user.On(ports), scan_view);
  scan->SetThorough(true);
  scan->StartScan();
  size_t ticked = 0;
  for (size_t i = 0; i < scan->RowCount(); ++i) {
    if (scan->row(i).key != "Qx1\\") continue;
    scan->SetChecked(i, true);
    ++ticked;
  }
  EXPECT_EQ(ticked, 1u);
  scan->DeleteChecked(false);
  EXPECT_EQ(machine->ValueNames(kUser, "Qx1").size(), 3u);
}

TEST_F(Win32RegistryTest, WhatALinkLeadsToIsNeitherDeletedNorKept) {
  const std::string tree = "Software\\QxLinks", target = "Software\\QxLinked";
  machine->SetText(kUser, tree + "\\plain\\deep", "v", "x");
  machine->SetText(kMachine, target + "\\below", "v", "x");
  const modRegistry::Access access{ports.registry, ports.system};
  const auto target_stands = [&] {
    return machine->ValueNames(kMachine, target + "\\below").size() == 1;
  };
  for (const char* place : {"\\link", ""}) {
    SCOPED_TRACE(place);
    const std::string top = tree + (*place ? "" : "\\itself");
    {
      const KeyLink link(Wide(top + place), Wide(kMachineName + target));
      ASSERT_TRUE(link.made() && machine->KeyExists(kUser, top + place + "\\below"));
      RegistryUndo undo;
      undo.AddTree(ports.registry, kUser, tree);
      undo.Store(ports, scratch);
      const auto kept = ports.files.ReadWholeFile(undo.path(), 1 << 20);
      EXPECT_EQ(kept->find(ToUtf16Bytes("below")), std::string::npos);
      modRegistry::DeleteRegKeyTree(access, kUser, top);
      EXPECT_TRUE(target_stands());
      EXPECT_THROW(modPlugin::DeleteRegistryKeyTree(ports.registry, kUser, top), Error);
      EXPECT_TRUE(target_stands() && !machine->KeyExists(kUser, tree + "\\plain"));
    }
    modRegistry::DeleteRegKeyTree(access, kUser, top);
    EXPECT_FALSE(machine->KeyExists(kUser, top));
  }
  machine->RemoveRegistryTree(kMachine, target);
}

TEST_F(Win32RegistryTest, NoLinkLeadsPastTheGuard) {
  const std::string services = "SYSTEM\\ControlSet001\\Services";
  machine->SetText(kMachine, services + "\\QxProbe", "v", "x");
  machine->SetText(kUser, "Software\\QxLinks", "v", "x");
  const KeyLink link(L"Software\\QxLinks\\link", Wide(kMachineName + services));
  ASSERT_TRUE(link.made() && machine->KeyExists(kUser, "Software\\QxLinks\\link\\QxProbe"));
  for (const bool whole : {false, true}) {
    modPlugin::Plugin plugin;
    plugin.registry = {{.delete_subkey = whole,
                        .key = "HKEY_CURRENT_USER\\Software\\QxLinks\\link\\QxProbe",
                        .value_name = "v"}};
    engine.state().RunLog.clear();
    modPlugin::RunRecords(context, plugin);
    EXPECT_TRUE(Holds(engine.state().RunLog, "is not cleaned"));
    EXPECT_EQ(machine->ValueNames(kMachine, services + "\\QxProbe").size(), 1u);
  }
  machine->RemoveRegistryTree(kMachine, services + "\\QxProbe");
}

// Keys of another user, some of which he has made links, and of one whose name begins with his.
struct OtherUserLinkTest : RegistryFixture {
  OtherUserLinkTest() {
    for (const std::string& key : {users + "-1002", users + "-100\\plain", users + "-100"})
      machine->SetText(kUser, key + "\\RunMRU", "v", "x");
    machine->SetText(kMachine, "Software\\QxOthers\\RunMRU", "v", "x");
    const auto key = ports.registry.Open(kUser, users + "-100", RegistryAccess::kRead);
    name = key->TrueName();
  }
  ~OtherUserLinkTest() override {
    machine->RemoveRegistryTree(kUser, "Software\\QxUsers");
    machine->RemoveRegistryTree(kMachine, "Software\\QxOthers");
  }
  Win32Registry His() { return {name.substr(std::strlen("\\REGISTRY\\USER\\")), "", ""}; }
  std::unique_ptr<KeyLink> Link(const std::string& key, const std::string& target) {
    return std::make_unique<KeyLink>(Wide(users + "-100\\" + key), Wide(target));
  }
  RegistryPicture OfOthers() {
    RegistryPicture picture;
    Picture(kUser, users + "-1002", picture);
    Picture(kMachine, "Software\\QxOthers", picture);
    return picture;
  }

  const std::string users = "Software\\QxUsers\\S-1-5-21-7-7-7";
  std::string name;  // of his key
};

constexpr RegistryAccess kRead = RegistryAccess::kRead, kWrite = RegistryAccess::kWrite;

TEST_F(OtherUserLinkTest, WhatHisLinksLeadToIsReadAndNotChanged) {
  const std::pair<const char*, std::function<void(Registry&)>> kRows[] = {
      {"a value below a link",
       [](Registry& his) { his.Open(kUser, "above\\RunMRU", kWrite)->DeleteValue("v"); }},
      {"a value of a link",
       [](Registry& his) { his.Open(kUser, "list", kWrite)->DeleteValue("v"); }},
      {"from a key of his",
       [](Registry& his) { his.Open(kUser, "", kWrite)->Open("list", kWrite)->DeleteValue("v"); }},
      {"from a link that was read",
       [](Registry& his) {
         his.Open(kUser, "above", kRead)->Open("RunMRU", kWrite)->SetValue("v", Text("y"));
       }},
      {"a key below a link",
       [](Registry& his) { his.Open(kUser, "", kWrite)->DeleteSubKey("above\\RunMRU"); }},
      {"a key of a link that was read",
       [](Registry& his) { his.Open(kUser, "above", kRead)->DeleteSubKey("RunMRU"); }},
      {"made below a link", [](Registry& his) { his.Create(kUser, "above\\new\\deep"); }},
      {"made in a link",
       [](Registry& his) { his.Create(kUser, "list")->SetValue("w", Text("y")); }},
      {"made by a link to nothing", [](Registry& his) { his.Create(kUser, "none"); }},
      {"made below a link to nothing", [](Registry& his) { his.Create(kUser, "none\\new"); }}};
  Win32Registry his = His();
  for (const std::string& target : {name + "2", kMachineName + "Software\\QxOthers"}) {
    const auto above = Link("above", target), list = Link("list", target + "\\RunMRU"),
               none = Link("none", target + "\\made");
    const RegistryPicture before = OfOthers();
    for (const char* key : {"above\\RunMRU", "list"})
      ASSERT_TRUE(his.Open(kUser, key, kRead)->QueryValue("v")) << key;
    for (const auto& [what, change] : kRows) {
      EXPECT_THROW(change(his), Error) << what << " " << target;
      EXPECT_EQ(OfOthers(), before) << what << " " << target;
    }
  }
}

TEST_F(OtherUserLinkTest, HisOwnKeysAreChangedAlsoByLinksAmongThem) {
  Win32Registry his = His();
  const auto inner = Link("inner", name + "\\plain");
  for (const char* key : {"RunMRU", "inner\\RunMRU"}) {
    EXPECT_TRUE(his.Open(kUser, key, kWrite)->DeleteValue("v")) << key;
    EXPECT_FALSE(his.Open(kUser, key, kRead)->QueryValue("v")) << key;
    his.Create(kUser, std::string(key) + "\\new\\deep")->SetValue("w", Text("y"));
  }
  const auto list = his.Open(kUser, "RunMRU\\new", kWrite);
  EXPECT_TRUE(list->DeleteSubKey("deep"));
  EXPECT_FALSE(list->DeleteSubKey("deep"));
  EXPECT_TRUE(machine->KeyExists(kUser, users + "-100\\plain\\RunMRU\\new\\deep"));
  EXPECT_THROW(His().Create(kMachine, "Software\\QxOthers\\new"), Error);
}

// The links of who runs the program are his own affair.
TEST_F(OtherUserLinkTest, WhoRunsTheProgramChangesWhatHisLinksLeadTo) {
  const auto above = Link("above", name + "2");
  const std::string key = users + "-100\\above\\";
  ports.registry.Create(kUser, key + "new");
  EXPECT_TRUE(ports.registry.Open(kUser, key + "RunMRU", kWrite)->DeleteValue("v"));
  EXPECT_TRUE(machine->KeyExists(kUser, users + "-1002\\new"));
  EXPECT_TRUE(machine->ValueNames(kUser, users + "-1002\\RunMRU").empty());
}

class RegImportTest : public RegistryFixture {};

TEST_F(RegImportTest, TheSystemImportsOurFiles) {
  const std::string nul(1, '\0');
  const std::pair<const char*, RegistryValue> kRows[] = {
      {"", Text("default")},
      {"a \"quoted\" \\ name", Text("a \"quoted\" \\ text")},
      {"expand", Text("%PATH%", kRegExpandSz)},
      {"texts", {kRegMultiSz, ToUtf16Bytes("a" + nul + "b" + nul + nul)}},
      {"number", Number(0xFEDCBA98)},
      {"long", {kRegBinary, std::string(3000, '\xAB')}},
      {"none", {kRegNone, "x"}},
      {"big number", {11, std::string("12345678")}},
      {"\xC3\xA4\xE6\xBC\xA2", Text("\xC3\xA4\xE6\xBC\xA2")}};
  for (const auto& [name, value] : kRows) Set(kUser, "Qx1\\a]b", name, value);
  Set(kUser, "Qx1\\\xC3\xA4", "v", Text("x"));
  RegistryPicture before, after;
  Picture(kUser, "Qx1", before);
  RegistryUndo undo;
  undo.AddTree(ports.registry, kUser, "Qx1");
  undo.Store(ports, own + "Backup\\");
  machine->RemoveRegistryTree(kUser, "Qx1");
  ASSERT_EQ(std::system(("reg import " + undo.path()).c_str()), 0);
  Picture(kUser, "Qx1", after);
  EXPECT_EQ(after, before);
}

}  // namespace
}  // namespace quellix
