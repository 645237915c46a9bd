#include <cstdlib>

#include "backup/registry_undo.h"
#include "platform/win32/win32_text.h"
#include "plugins/mod_plugin.h"
#include "registry_tools/mod_registry.h"
#include "support/branch_registry.h"
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

// Makes a key of the user a link to one of the machine; its removal needs the system's own call.
class KeyLink {
 public:
  KeyLink(const std::wstring& path, const std::wstring& target) {
    RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, REG_OPTION_CREATE_LINK,
                    KEY_ALL_ACCESS, nullptr, &key_, nullptr);
    const std::wstring full = L"\\Registry\\Machine\\" + target;
    status_ = RegSetValueExW(key_, L"SymbolicLinkValue", 0, REG_LINK,
                             reinterpret_cast<const BYTE*>(full.data()),
                             static_cast<DWORD>(full.size() * sizeof(wchar_t)));
  }
  ~KeyLink() {
    const auto remove = reinterpret_cast<LONG(NTAPI*)(HANDLE)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtDeleteKey")));
    remove(key_);
    RegCloseKey(key_);
  }
  KeyLink(const KeyLink&) = delete;
  KeyLink& operator=(const KeyLink&) = delete;
  bool made() const { return status_ == ERROR_SUCCESS; }

 private:
  HKEY key_ = nullptr;
  LSTATUS status_ = ERROR_GEN_FAILURE;
};

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
      const KeyLink link(Wide(top + place), Wide(target));
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
  const KeyLink link(L"Software\\QxLinks\\link", Wide(services));
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
