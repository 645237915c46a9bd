
#include "contract/error_kind.h"
#include "platform/preview/preview_machine.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

constexpr const char* kVersionKey = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";

std::string Refusal(const VolumeOptions& options) {
  return SaidBy([&] { VolumeMachine machine(options); });
}

TEST(VolumeMachineTest, SaysWhatItCannotOpen) {
  const auto test = VolumeTestMachine::CreateVolume();
  const VolumeOptions good = test->options();
  TemporaryFolder empty;
  SeedUser(good.volume, "Ärgerlich", "S-1-5-21-1-2-3-1002");
  VolumeOptions no_windows = good, no_folder = good, no_user = good, taken = good, named = good;
  no_windows.volume = empty.path();
  no_folder.volume = empty.path() + "/missing";
  no_user.user = "Nobody";
  named.user = "äRGERLICH";
  taken.drives['C'] = empty.path();
  const std::tuple<const char*, VolumeOptions, Names> kRows[] = {
      {"no Windows", no_windows, {"no Windows", empty.path()}},
      {"no folder", no_folder, {empty.path() + "/missing"}},
      {"no such user", no_user, {"Nobody", kTesterName, "Ärgerlich"}},
      {"several users", good, {"several users", kTesterName, "Ärgerlich"}},
      {"drive twice", taken, {"C:"}},
      {"named in any case", named, {}}};
  for (const auto& [what, options, parts] : kRows) {
    SCOPED_TRACE(what);
    const std::string said = Refusal(options);
    EXPECT_EQ(said.empty(), parts.empty()) << said;
    for (const std::string& part : parts) EXPECT_TRUE(Holds(said, part));
  }
  WriteNative(good.volume + "/Windows/System32/config/SOFTWARE", "broken");
  EXPECT_TRUE(Holds(Refusal(named), "damaged"));
}

TEST(VolumeMachineTest, UsersWithoutAListAreTakenFromTheFolders) {
  const auto test = VolumeTestMachine::CreateVolume();
  const std::string users = test->Native("C:\\Users\\");
  test->RemoveRegistryTree(RegistryRoot::kLocalMachine, std::string(kVersionKey) + "\\ProfileList");
  test->CloseHives();
  for (const char* name : {"Default", "Public", "No hive"}) fs::create_directories(users + name);
  WriteNative(users + "Default/NTUSER.DAT", EmptyHive());
  VolumeMachine machine(test->options());
  EXPECT_EQ(machine.machine().system.Environment("UserName"), kTesterName);
  test->MakeFile("C:\\a.txt", "x");
  EXPECT_EQ(KindOf([&] { machine.machine().files.Recycle("C:\\a.txt"); }),
            Error::Kind::kNotAvailable)
      << "nobody knows whose bin it is";
  EXPECT_TRUE(test->Exists("C:\\a.txt"));
}

TEST(VolumeMachineTest, TheDriveLetterIsTheOneWindowsKnows) {
  const auto test = VolumeTestMachine::CreateVolume();
  test->SetText(RegistryRoot::kLocalMachine, kVersionKey, "SystemRoot", "e:\\Windows");
  test->CloseHives();
  TemporaryFolder data;
  VolumeOptions options = test->options();
  options.drives['D'] = data.path();
  VolumeMachine machine(options);
  System& system = machine.machine().system;
  EXPECT_EQ(system.WindowsFolder(), "E:\\Windows");
  EXPECT_EQ(system.TempFolder(),
            std::string("E:\\Users\\") + kTesterName + "\\AppData\\Local\\Temp\\");
  ASSERT_EQ(system.Drives().size(), 2u);
  EXPECT_EQ(system.Drives()[0].letter, 'D');
  EXPECT_EQ(system.Drives()[1].letter, 'E');
  EXPECT_FALSE(machine.machine().files.Look("C:\\Windows"));
}

TEST(VolumeSystemTest, VariablesThatNameEachOtherEnd) {
  const auto test = VolumeTestMachine::CreateVolume();
  const auto set = [&test](const char* name, const char* text) {
    test->SetText(RegistryRoot::kCurrentUser, "Environment", name, text);
  };
  set("A", "%B%;%B%;%B%;%B%");
  set("B", "%A%;%A%;%A%;%A%");
  set("Known", "100% of %windir% and %unknown%");
  System& system = test->machine().system;
  EXPECT_TRUE(system.Environment("A"));
  EXPECT_EQ(system.Environment("known"), "100% of C:\\Windows and %unknown%");
}

TEST(VolumeSystemTest, LocaleVersionAndCodePageComeFromTheRegistry) {
  const auto test = VolumeTestMachine::CreateVolume();
  System& system = test->machine().system;
  const auto set = [&test](std::string_view name, std::string_view text) {
    test->SetText(RegistryRoot::kCurrentUser, "Control Panel\\International", name, text);
  };
  EXPECT_EQ(system.UserLocale().short_date, Locale().short_date);
  set("sShortDate", "dd.MM.yyyy");
  set("s1159", "");
  set("sDecimal", ",");
  set("iLZero", "0");
  EXPECT_EQ(system.UserLocale().short_date, "dd.MM.yyyy");
  EXPECT_EQ(system.UserLocale().am, "");
  EXPECT_EQ(system.UserLocale().decimal, ",");
  EXPECT_FALSE(system.UserLocale().leading_zero);

  EXPECT_EQ(system.Version().major, 10);
  test->machine()
      .registry.Open(RegistryRoot::kLocalMachine, kVersionKey, RegistryAccess::kWrite)
      ->DeleteValue("CurrentMajorVersionNumber");
  EXPECT_EQ(system.Version().major, 6);
  EXPECT_EQ(system.Version().minor, 3);

  test->SetText(RegistryRoot::kLocalMachine, "SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage",
                "ACP", "1251");
  EXPECT_EQ(system.FromAnsi("\xCC\xE8\xF0 \x98!"), "Мир \uFFFD!");
}

TEST(VolumePreviewTest, OfNamesThatDifferInCaseAloneOneGoes) {
  const auto test = VolumeTestMachine::CreateVolume();
  for (const char* name : {"a.txt", "A.TXT"}) WriteNative(test->Native("C:\\") + name, name);
  PreviewMachine preview(test->machine());
  FileSystem& files = preview.machine().files;
  files.RemoveFile("C:\\a.txt");
  EXPECT_TRUE(!files.Look("C:\\a.txt") && files.Look("C:\\A.TXT"));
  files.RemoveFile("C:\\A.TXT");
  EXPECT_FALSE(files.Look("C:\\A.TXT"));
}

TEST(VolumeMachineTest, NobodyIsLoggedOnToAVolume) {
  const auto test = VolumeTestMachine::CreateVolume();
  Session& session = test->machine().session;
  EXPECT_THROW(session.ClaimInstance("Quellix"), NotAvailable);
  EXPECT_THROW(session.EnablePrivilege("SeShutdownPrivilege"), NotAvailable);
  EXPECT_THROW(session.Exit(0, 0), NotAvailable);
}

}  // namespace
}  // namespace quellix
