
#include "contract/error_kind.h"
#include "platform/text.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

constexpr auto kUser = RegistryRoot::kCurrentUser;
constexpr auto kMachine = RegistryRoot::kLocalMachine;
constexpr auto kClasses = RegistryRoot::kClassesRoot;
constexpr auto kRead = RegistryAccess::kRead;
constexpr auto kWrite = RegistryAccess::kWrite;

struct VolumeHives : testing::Test {
  std::string Text(RegistryRoot root, std::string_view key, std::string_view name) {
    return ReadText(registry_, root, key, name).value_or("(missing)");
  }
  Names SubKeys(RegistryRoot root, std::string_view key) {
    Names names;
    const auto open = registry_.Open(root, key, kRead);
    if (!open) return names;
    for (uint32_t i = 0; const auto name = open->SubKeyAt(i); ++i) names.push_back(*name);
    return names;
  }

  std::unique_ptr<VolumeTestMachine> test_ = VolumeTestMachine::CreateVolume();
  Registry& registry_ = test_->machine().registry;
  const std::string profile_ = std::string("C:\\Users\\") + kTesterName + "\\";
  const std::string user_hive_ = test_->Native(profile_ + "NTUSER.DAT");
};

TEST_F(VolumeHives, ChangesAreInTheFileAfterFlush) {
  test_->SetText(kUser, "Software\\A", "v", "1");
  test_->SetText(kUser, "Software\\A", "Größe", "2");
  test_->CloseHives();
  const auto key = registry_.Open(kUser, "Software\\A", kWrite);
  EXPECT_TRUE(key->DeleteValue("V"));
  EXPECT_TRUE(KindOf([&] { key->SetValue(std::string("a\0b", 3), {kRegNone, ""}); }));
  const std::string before = ReadNative(user_hive_);
  key->Flush();
  const std::string after = ReadNative(user_hive_);
  EXPECT_NE(before, after);
  key->Flush();
  EXPECT_EQ(ReadNative(user_hive_), after) << "nothing changed, nothing is written";
  VolumeMachine other(test_->options());
  const auto stored = other.machine().registry.Open(kUser, "Software\\A", kRead);
  EXPECT_TRUE(!stored->QueryValue("v") && stored->QueryValue("größe"));
}

TEST_F(VolumeHives, ADamagedHiveIsSaidToBe) {
  const std::string whole = ReadNative(user_hive_);
  std::string no_bins = whole, bad_root = whole;
  no_bins.replace(4096, 4096, 4096, '\0');
  bad_root.replace(4096 + 0x24, 2, "xx");
  const std::pair<const char*, std::string> kRows[] = {{"empty", ""},
                                                       {"text", "This is no hive."},
                                                       {"zeroes", std::string(8192, '\0')},
                                                       {"header alone", whole.substr(0, 4096)},
                                                       {"no pages", no_bins},
                                                       {"no top key", bad_root}};
  for (const auto& [row, bytes] : kRows) {
    SCOPED_TRACE(row);
    test_->CloseHives();
    WriteNative(user_hive_, bytes);
    EXPECT_TRUE(Holds(SaidBy([this] { registry_.Open(kUser, "Software", kRead); }), "damaged"));
    EXPECT_EQ(Text(kMachine, "SOFTWARE\\Classes\\.txt", ""), "txtfile") << "others are read";
  }
  test_->CloseHives();
  WriteNative(user_hive_, whole);
  EXPECT_TRUE(registry_.Open(kUser, "Software", kRead));
}

// What hivex would not notice before it has changed the hive, or ends the program for.
TEST_F(VolumeHives, AHiveWhoseCellsDoNotFitTogetherIsOnlyRead) {
  for (const char* key : {"A", "B"}) test_->SetText(kUser, key, "v", "some text");
  test_->CloseHives();
  const std::string whole = ReadNative(user_hive_);
  // The fields of a value: size and place of its data; of a security descriptor: its neighbors.
  const size_t last_value = whole.rfind("vk"), descriptor = whole.find("sk");
  const size_t other_value = whole.rfind("vk", last_value - 1);
  const std::string nowhere = "\xF0\xFF\xFF\x0F";
  const auto with = [&whole](size_t at, const std::string& bytes) {
    return std::string(whole).replace(at, bytes.size(), bytes);
  };
  const std::pair<const char*, std::string> kRows[] = {
      {"data of two values", with(last_value + 8, whole.substr(other_value + 8, 4))},
      {"data at no place", with(last_value + 8, nowhere)},
      {"a security descriptor beside nothing", with(descriptor + 4, nowhere)}};
  for (const auto& [row, bytes] : kRows) {
    SCOPED_TRACE(row);
    ASSERT_FALSE(bytes == whole);
    WriteNative(user_hive_, bytes);
    EXPECT_EQ(SubKeys(kUser, "A").size(), 0u);
    EXPECT_EQ(KindOf([this] { registry_.Open(kUser, "A", kWrite)->DeleteValue("v"); }),
              Error::Kind::kDenied);
    test_->CloseHives();
    EXPECT_TRUE(ReadNative(user_hive_) == bytes);
  }
  WriteNative(user_hive_, whole);
  EXPECT_TRUE(registry_.Open(kUser, "A", kWrite)->DeleteValue("v"));
}

TEST_F(VolumeHives, CurrentControlSetIsTheSelectedOne) {
  test_->SetText(kMachine, "SYSTEM\\ControlSet001\\Services\\X", "v", "one");
  test_->SetText(kMachine, "SYSTEM\\ControlSet002\\Services\\X", "v", "two");
  EXPECT_EQ(Text(kMachine, "System\\CurrentControlSet\\Services\\X", "v"), "one");
  test_->SetRegistryValue(kMachine, "SYSTEM\\Select", "Current",
                          {kRegDword, std::string("\2\0\0\0", 4)});
  EXPECT_EQ(Text(kMachine, "SYSTEM\\currentcontrolset\\Services\\X", "v"), "two");
  const auto services = registry_.Open(kMachine, "SYSTEM\\CurrentControlSet\\Services", kWrite);
  EXPECT_TRUE(services->DeleteSubKey("X"));
  EXPECT_EQ(Text(kMachine, "SYSTEM\\ControlSet002\\Services\\X", "v"), "(missing)");
  EXPECT_EQ(Text(kMachine, "SYSTEM\\ControlSet001\\Services\\X", "v"), "one");
}

TEST_F(VolumeHives, HivesShowWhereWindowsShowsThem) {
  const std::string sid = kTesterSid;
  test_->SetText(kUser, "Software\\Classes\\.own", "", "of the user");
  EXPECT_EQ(Text(RegistryRoot::kUsers, sid + "\\Software\\Classes\\.own", ""), "of the user");
  EXPECT_EQ(Text(RegistryRoot::kUsers, sid + "_Classes\\.OWN", ""), "of the user");
  EXPECT_EQ(SubKeys(kMachine, ""), (Names{"SOFTWARE", "SYSTEM"}));
  EXPECT_EQ(SubKeys(kUser, "Software"), (Names{"Microsoft", "Classes"}));
  EXPECT_TRUE(KindOf([&] { registry_.Open(kUser, "Software", kWrite)->DeleteSubKey("Classes"); }));
}

TEST_F(VolumeHives, ClassesRootIsTheUsersOverTheMachines) {
  const std::string user = "Software\\Classes\\", machine = "SOFTWARE\\Classes\\";
  test_->SetText(kMachine, machine + ".both", "", "machine");
  test_->SetText(kMachine, machine + ".both", "only", "machine");
  test_->SetText(kMachine, machine + ".both\\shell", "", "machine");
  test_->SetText(kUser, user + ".BOTH", "", "user");
  test_->SetText(kUser, user + ".user", "", "user");
  EXPECT_EQ(Text(kClasses, ".both", ""), "user");
  EXPECT_EQ(Text(kClasses, ".both", "ONLY"), "machine");
  EXPECT_EQ(Text(kClasses, ".both\\shell", ""), "machine");
  EXPECT_EQ(SubKeys(kClasses, ""), (Names{".BOTH", ".user", ".txt"}));
  EXPECT_EQ(test_->ValueNames(kClasses, ".both"), (Names{"", "only"}));

  registry_.Open(kClasses, ".both", kWrite)->SetValue("new", {kRegNone, ""});
  EXPECT_EQ(test_->ValueNames(kUser, user + ".both"), (Names{"", "new"}));
  EXPECT_TRUE(registry_.Open(kClasses, ".both", kWrite)->DeleteValue("only"));
  EXPECT_EQ(Text(kMachine, machine + ".both", "only"), "(missing)");
  EXPECT_TRUE(registry_.Open(kClasses, "", kWrite)->DeleteSubKey(".both"));
  EXPECT_EQ(Text(kClasses, ".both", ""), "machine") << "the machine's shows again";
}

TEST_F(VolumeHives, AHiveBehindALinkIsNotOpened) {
  TemporaryFolder outside;
  test_->CloseHives();
  std::filesystem::rename(user_hive_, outside.path() + "/HIVE");
  std::filesystem::create_symlink(outside.path() + "/HIVE", user_hive_);
  EXPECT_EQ(KindOf([this] { registry_.Open(kUser, "Software", kRead); }), Error::Kind::kDenied);
}

}  // namespace
}  // namespace quellix
