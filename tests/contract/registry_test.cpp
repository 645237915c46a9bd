#include "contract/contract_fixture.h"
#include "platform/text.h"

namespace quellix {
namespace {

struct RegistryContract : ContractFixture {
  void SetUp() override { test_->RemoveRegistryTree(kUser, key_); }
  void TearDown() override { test_->RemoveRegistryTree(kUser, key_); }

  std::unique_ptr<RegistryKey> Open(std::string_view path, RegistryAccess access) {
    return machine_.registry.Open(kUser, path, access);
  }
  const std::string key_ = "Software\\Quellix Contract";
};

std::string Text(std::string_view text) { return ToUtf16Bytes(text) + std::string(2, '\0'); }

TEST_F(RegistryContract, ValuesOfEveryTypeAndNameComeBackAsStored) {
  const std::tuple<const char*, std::string, RegistryValue> kRows[] = {
      {"text", "Text", {kRegSz, Text("C:\\Temp")}},
      {"text without its NUL", "Open", {kRegSz, ToUtf16Bytes("abc")}},
      {"expandable", "Expand", {kRegExpandSz, Text("%TEMP%\\x")}},
      {"binary", "Binary", {kRegBinary, std::string("\0\1\xFF\0", 4)}},
      {"number", "Number", {kRegDword, std::string("\4\3\2\1", 4)}},
      {"texts", "Texts", {kRegMultiSz, Text("a") + Text("b") + std::string(2, '\0')}},
      {"no type", "None", {kRegNone, "x"}},
      {"no data", "Empty", {kRegBinary, ""}},
      {"large", "Large", {kRegBinary, std::string(40000, 'L')}},
      {"other type", "Qword", {11, std::string("12345678")}},
      {"default value", "", {kRegSz, Text("default")}},
      {"umlauts", "Größe", {kRegSz, Text("Grün")}},
      {"Cyrillic", "Привет", {kRegSz, Text("Мир")}},
      {"beyond the first plane", "😀", {kRegSz, Text("😀")}}};
  for (const auto& [row, name, value] : kRows) test_->SetRegistryValue(kUser, key_, name, value);
  const auto key = Open(key_, kRead);
  ASSERT_TRUE(key);
  for (const auto& [row, name, value] : kRows) {
    SCOPED_TRACE(row);
    const auto stored = key->QueryValue(name);
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->type, value.type);
    EXPECT_EQ(stored->bytes, value.bytes);
  }
  Names seen;
  for (uint32_t i = 0; const auto info = key->ValueAt(i); ++i) {
    seen.push_back(info->name);
    EXPECT_EQ(info->size, key->QueryValue(info->name)->bytes.size()) << info->name;
    EXPECT_EQ(info->type, key->QueryValue(info->name)->type) << info->name;
  }
  EXPECT_EQ(seen.size(), std::size(kRows));
}

TEST_F(RegistryContract, AKeyTellsWhenItWasMade) {
  const int64_t before = machine_.system.UtcNow() - 600'000'000;  // its clock may be another
  test_->SetText(kUser, key_ + "\\made", "a", "1");
  const auto key = Open(key_ + "\\made", kRead);
  ASSERT_TRUE(key);
  EXPECT_GT(key->LastWrite(), before);
  EXPECT_LT(key->LastWrite(), machine_.system.UtcNow() + 600'000'000);
}

TEST_F(RegistryContract, NamesCompareWithoutCaseInEveryScript) {
  test_->SetText(kUser, key_ + "\\Ärger\\Ключ", "Größe", "1");
  const auto key = Open("SOFTWARE\\QUELLIX CONTRACT\\ÄRGER\\КЛЮЧ\\", kWrite);
  ASSERT_TRUE(key);
  EXPECT_TRUE(key->QueryValue("GRÖßE"));
  key->SetValue("GRÖßE", {kRegSz, Text("2")});
  EXPECT_EQ(test_->ValueNames(kUser, key_ + "\\ärger\\ключ"), Names{"Größe"});
  EXPECT_TRUE(key->DeleteValue("gröSSe") == false && key->DeleteValue("größe"));
}

TEST_F(RegistryContract, MissingIsNoError) {
  EXPECT_FALSE(Open(key_, kRead));
  test_->SetText(kUser, key_, "a", "1");
  const auto key = Open(key_, kWrite);
  EXPECT_FALSE(key->Open("missing", kRead) || key->Open("missing\\deeper", kWrite));
  EXPECT_FALSE(key->QueryValue("missing") || key->QueryValue("") || key->DeleteValue("missing"));
  EXPECT_FALSE(key->DeleteSubKey("missing") || key->ValueAt(1) || key->SubKeyAt(0));
}

TEST_F(RegistryContract, AKeyTellsWhatItIsBySpellingsAndLinksAlike) {
  test_->SetText(kUser, key_ + "\\One", "v", "1");
  const std::string user = Open("", kRead)->TrueName(), one = user + "\\" + key_ + "\\One";
  EXPECT_TRUE(EqualsNoCase(user.substr(0, 19), "\\REGISTRY\\USER\\S-1-")) << user;
  EXPECT_TRUE(EqualsNoCase(Open("SOFTWARE\\quellix contract\\ONE\\", kWrite)->TrueName(), one));
  EXPECT_TRUE(EqualsNoCase(Open(key_, kRead)->Open("one", kRead)->TrueName(), one));
  EXPECT_TRUE(
      EqualsNoCase(Open(key_, kRead)->Open("", kRead)->Open("One\\", kRead)->TrueName(), one));
  EXPECT_EQ(Open(key_ + "\\", kRead)->SubKeyAt(0), "One");
  const auto system = [this](const char* path) {
    const auto key = machine_.registry.Open(RegistryRoot::kLocalMachine, path, kRead);
    return key ? UpCase(key->TrueName()) : "";
  };
  EXPECT_EQ(system(""), "\\REGISTRY\\MACHINE");
  // Wine keeps a key where Windows has a link.
  const std::string control = system("System\\CurrentControlSet\\Control");
  EXPECT_TRUE(control == "\\REGISTRY\\MACHINE\\SYSTEM\\CONTROLSET001\\CONTROL" ||
              (control == "\\REGISTRY\\MACHINE\\SYSTEM\\CURRENTCONTROLSET\\CONTROL" &&
               !test_->Can(Ability::kRemoveLinks)))
      << control;
}

TEST_F(RegistryContract, ValuesAreDeletedAndChangedWhileTheyAreListed) {
  for (const char* name : {"", "a", "b", "c", "ж"}) test_->SetText(kUser, key_, name, name);
  const auto key = Open(key_, kWrite);
  EXPECT_TRUE(key->DeleteValue("B") && !key->DeleteValue("b"));
  EXPECT_EQ(test_->ValueNames(kUser, key_), (Names{"", "a", "c", "ж"}));
  key->SetValue("a", {kRegDword, std::string("\1\0\0\0", 4)});
  EXPECT_EQ(key->QueryValue("a")->type, kRegDword);
  while (const auto value = key->ValueAt(0)) EXPECT_TRUE(key->DeleteValue(value->name));
  key->Flush();
  EXPECT_TRUE(test_->ValueNames(kUser, key_).empty() && test_->KeyExists(kUser, key_));
}

TEST_F(RegistryContract, OnlyAKeyWithoutSubKeysIsDeleted) {
  test_->SetText(kUser, key_ + "\\Parent\\Child", "v", "1");
  const auto key = Open(key_, kWrite);
  EXPECT_EQ(KindOf([&] { key->DeleteSubKey("Parent"); }), Error::Kind::kNotEmpty);
  EXPECT_TRUE(test_->KeyExists(kUser, key_ + "\\Parent\\Child"));
  EXPECT_TRUE(key->DeleteSubKey("PARENT\\child") && key->DeleteSubKey("Parent\\"));
  EXPECT_FALSE(key->DeleteSubKey("Parent") || key->SubKeyAt(0));
}

TEST_F(RegistryContract, ADeniedKeyIsReadButNotChanged) {
  test_->SetText(kUser, key_, "v", "1");
  {
    const auto denied = test_->DenyRegistryWrites(kUser, key_);
    EXPECT_EQ(KindOf([&] { Open(key_, kWrite); }), Error::Kind::kDenied);
    const auto key = Open(key_, kRead);
    ASSERT_TRUE(key);
    EXPECT_TRUE(key->QueryValue("v"));
    EXPECT_EQ(KindOf([&] { key->DeleteValue("v"); }), Error::Kind::kDenied);
    EXPECT_EQ(KindOf([&] { key->SetValue("v", {kRegNone, ""}); }), Error::Kind::kDenied);
  }
  EXPECT_TRUE(Open(key_, kWrite)->DeleteValue("v"));
}

TEST_F(RegistryContract, AKeyIsMadeWithThoseAboveItAndOneThatIsThereStays) {
  machine_.registry.Create(kUser, key_ + "\\a\\b\\");
  ASSERT_TRUE(Open(key_ + "\\a\\b", kWrite));
  Open(key_ + "\\a", kWrite)->SetValue("v", {kRegSz, Text("kept")});
  machine_.registry.Create(kUser, key_ + "\\A\\c");
  machine_.registry.Create(kUser, key_ + "\\a");
  EXPECT_EQ(Open(key_ + "\\a", kRead)->QueryValue("V")->bytes, Text("kept"));
  EXPECT_TRUE(test_->KeyExists(kUser, key_ + "\\a\\b"));
  const auto denial = test_->DenyRegistryWrites(kUser, key_ + "\\a");
  EXPECT_THROW(machine_.registry.Create(kUser, key_ + "\\a"), Error);
  if (!test_->Can(Ability::kDenyNewSubKeys)) return;
  EXPECT_THROW(machine_.registry.Create(kUser, key_ + "\\a\\d"), Error);
  EXPECT_FALSE(test_->KeyExists(kUser, key_ + "\\a\\d"));
}

}  // namespace
}  // namespace quellix
