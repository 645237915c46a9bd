#include "registry_tools/mod_registry.h"

#include "cleaners/skeleton.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

constexpr const char* kKey = "Software\\QuellixTest";

struct RegistryHelpersTest : RunFixture {
  RegistryHelpersTest() : access{ports.registry, ports.system} {
    machine->RemoveRegistryTree(kUser, kKey);
  }
  void Set(const char* name, uint32_t type, const std::string& bytes) {
    machine->SetRegistryValue(kUser, kKey, name, {type, bytes});
  }
  std::string Read(const char* name) {
    return modRegistry::ReadRegString(access, kUser, std::string(kKey) + "\\", name);
  }
  std::string List() { return modRegistry::ListRegValues(access, kUser, kKey); }

  modRegistry::Access access;
};

TEST_F(RegistryHelpersTest, AnyValueReadsAsText) {
  const std::string nul(1, '\0');
  Set("text", kRegSz, ToUtf16Bytes("\xC3\xA4 text" + nul + "rest" + nul));
  Set("open", kRegSz, ToUtf16Bytes("no end"));
  Set("expand", kRegExpandSz, ToUtf16Bytes("%X%" + nul));
  Set("zero", kRegDword, std::string(4, '\0'));
  Set("48", kRegDword, std::string("0\0\0\0", 4));
  Set("fits", kRegSz, ToUtf16Bytes(std::string(259, 'f') + nul));
  Set("too long", kRegSz, ToUtf16Bytes(std::string(260, 'f') + nul));
  Set("", kRegSz, ToUtf16Bytes("unnamed" + nul));
  EXPECT_EQ(Read("text"), "\xC3\xA4 text");
  EXPECT_EQ(Read("open"), "no end");
  EXPECT_EQ(Read("expand"), "%X%");
  EXPECT_EQ(Read("zero"), "");
  EXPECT_EQ(Read("48"), "0");
  EXPECT_EQ(Read("fits"), std::string(259, 'f'));
  EXPECT_EQ(Read("too long"), "");
  EXPECT_EQ(Read(""), "unnamed");
  EXPECT_EQ(Read("missing"), "");
  EXPECT_EQ(modRegistry::ReadRegString(access, kUser, "No\\Such", "x"), "");
}

TEST_F(RegistryHelpersTest, ListsEndWhereTheyAlwaysEnded) {
  EXPECT_EQ(List(), "");
  Set(" blanks ", kRegBinary, std::string(255, 'b'));
  EXPECT_EQ(List(), "blanks");
  Set("one", kRegSz, ToUtf16Bytes("x"));
  EXPECT_EQ(List(), std::string("blanks\0one", 10));
  Set("too large", kRegBinary, std::string(256, 'b'));
  Set("under", kRegSz, "");
  EXPECT_EQ(List(), std::string("blanks\0one", 10));
  machine->RemoveRegistryTree(kUser, kKey);
  for (int i = 0; i < 300; ++i) Set(("v" + std::to_string(i)).c_str(), kRegSz, "");
  const std::string capped = List();
  EXPECT_EQ(std::count(capped.begin(), capped.end(), '\0'), 255);
}

TEST_F(RegistryHelpersTest, DeletingTakesOneNameOrAList) {
  for (const char* name : {"a", "b", "c", "", "\xC3\xA9"}) Set(name, kRegSz, "");
  modRegistry::DeleteRegValues(access, kUser, "A", kKey);
  EXPECT_EQ(machine->ValueNames(kUser, kKey), (Names{"", "b", "c", "\xC3\xA9"}));
  modRegistry::DeleteRegValues(access, kUser, std::string("b\0none\0\xC3\x89\0", 10), kKey);
  EXPECT_EQ(machine->ValueNames(kUser, kKey), Names{"c"});
  modRegistry::DeleteRegValues(access, kUser, "c", "No\\Such");
  modRegistry::RegSetString(access, kUser, kKey, "new", "\xC3\xA9t\xC3\xA9");
  EXPECT_EQ(Read("new"), "\xC3\xA9t\xC3\xA9");
  modRegistry::ClearRegKeyValues(access, std::string(kKey) + "\\");
  EXPECT_TRUE(machine->ValueNames(kUser, kKey).empty() && machine->KeyExists(kUser, kKey));
}

TEST_F(RegistryHelpersTest, OnlyTheTreeDeletionTakesKeysWithSubKeys) {
  machine->SetText(kUser, std::string(kKey) + "\\a\\b", "v", "x");
  machine->SetText(kUser, std::string(kKey) + "\\c", "v", "x");
  modRegistry::RegDeleteSubKey(access, kUser, kKey);
  EXPECT_TRUE(machine->KeyExists(kUser, std::string(kKey) + "\\a\\b"));
  modRegistry::RegDeleteSubKey(access, kUser, std::string(kKey) + "\\c\\");
  EXPECT_FALSE(machine->KeyExists(kUser, std::string(kKey) + "\\c"));
  modRegistry::DeleteRegKeyTree(access, kUser, kKey);
  EXPECT_TRUE(!machine->KeyExists(kUser, kKey) && machine->KeyExists(kUser, "Software"));
}

}  // namespace
}  // namespace quellix
