// What is listed as installed: each entry with what it still has, removed and restored, and the
// packages of the Windows Installer that belong to nothing.

#include "platform/filetime.h"
#include "registry_tools/installer_packages.h"
#include "support/registry_fixture.h"
#include "support/unstored_registry.h"

namespace quellix {
namespace {

constexpr const char* kPrograms = "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
constexpr const char* kPrograms32 =
    "Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
// Of a user of the test's own.
std::string UserData(const char* user = "1") {
  return std::string("Software\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\Qx-") +
         user;
}
constexpr const char* kCode = "{01234567-89AB-CDEF-0123-456789ABCDEF}";
constexpr const char* kOther = "{11234567-89AB-CDEF-0123-456789ABCDEF}";

// Entries and packages of the test's own, whose names begin with "Qx".
struct UninstallEntriesTest : RegistryFixture {
  UninstallEntriesTest() {
    machine->MakeFile(there, "x");
    if (machine->Exists(msiexec)) return;
    machine->MakeFile(msiexec, "x");
    made.push_back(msiexec);
  }
  ~UninstallEntriesTest() override {
    for (const auto& [root, key] : keys) machine->RemoveRegistryTree(root, key);
    for (const char* const user : {"1", "2"}) machine->RemoveRegistryTree(kMachine, UserData(user));
    for (const std::string& path : made) {
      if (machine->Exists(path)) ports.files.RemoveFile(path);
    }
  }
  struct Entry {
    std::string command;
    std::string folder = "";
    bool of_installer = false;
    std::string name = "";  // as it is shown, else that of the key
  };
  void Add(RegistryRoot root, const std::string& key, const Entry& entry) {
    keys.emplace_back(root, key);
    const std::string name = key.substr(key.rfind('\\') + 1);
    Set(root, key, "DisplayName", Text(entry.name.empty() ? name : entry.name));
    Set(root, key, "UninstallString", Text(entry.command, kRegExpandSz));
    if (!entry.folder.empty()) Set(root, key, "InstallLocation", Text(entry.folder));
    if (entry.of_installer) Set(root, key, "WindowsInstaller", Number(1));
  }
  // A product of the Windows Installer with that package.
  void AddProduct(const std::string& code, const std::string& package, const char* user = "1") {
    Set(kMachine, UserData(user) + ("\\Products\\" + PackedCode(code)) + "\\InstallProperties",
        "LocalPackage", Text(package));
  }
  std::string MakePackage(const std::string& name, bool is_new = false) {
    const std::string path = ports.system.WindowsFolder() + "\\Installer\\" + name;
    machine->MakeFile(path, std::string(3000, 'p'));
    const int64_t now = ports.system.UtcNow(), then = now - 10 * kFiletimesADay;
    const auto file = ports.files.Open(path, OpenMode::kReadAndCreate);
    file->SetTimes({.created = is_new ? now : then, .last_write = then});
    const bool keeps_creation = file->Times().created > then;
    if (is_new && !keeps_creation) file->SetTimes({.last_write = now});
    made.push_back(path);
    return path;
  }
  std::unique_ptr<RegistryScan> Scan() { return ScanOf(ScanTool::kUninstall, ports); }
  // Mark, name, and what is missing.
  static Names Rows(const RegistryScan& scan) {
    return RowsOf(
        scan, [](const std::string& name) { return name.starts_with("Qx"); },
        [](const ScanRow& row) { return row.texts[0] + "|" + row.texts[5]; });
  }

  const std::string there = scratch + "program\\uninstall me.exe";
  const std::string gone = scratch + "program\\gone.exe";
  const std::string msiexec = ports.system.SystemFolder() + "\\msiexec.exe";
  std::vector<std::pair<RegistryRoot, std::string>> keys;
  Names made;
};

TEST_F(UninstallEntriesTest, EachEntryIsListedWithWhatIsMissing) {
  const std::string package = MakePackage("qx1.msi");
  AddProduct(kCode, package);
  AddProduct(kOther, package + ".gone.msi");
  const std::string machines(kPrograms), machines32(kPrograms32);
  Add(kMachine, machines + "Qx there", {"\"" + there + "\" /u", scratch + "program\\"});
  Add(kMachine, machines + "Qx unquoted", {there + " /u"});
  Add(kMachine, machines32 + "Qx gone", {"\"" + gone + "\""});
  Add(kUser, machines + "Qx folder gone", {"\"" + there + "\"", "\"" + scratch + "none\""});
  Add(kUser, machines + "Qx nothing", {""});
  Add(kMachine, machines + "Qx a name for a folder", {there, "My program"});
  Add(kMachine, machines + "Qx a variable", {scratch + "no program\\%QX_NONE%\\a.exe /x"});
  Add(kUser, machines + "Qx nothing, folder gone", {"", scratch + "none"});
  Add(kUser, machines + "Qx on a server", {"\\\\server\\share\\setup.exe /x"});
  Add(kMachine, machines + "Qx a product", {"MsiExec.exe /X" + std::string(kCode)});
  Add(kMachine, machines + kOther,
      {"MsiExec.exe /I" + std::string(kOther), "", true, "Qx a product without its package"});
  Add(kMachine, machines + "Qx no product",
      {"msiexec /x {21234567-89AB-CDEF-0123-456789ABCDEF} /qn"});
  Add(kMachine, machines + "Qx part of Windows", {gone});
  Set(kMachine, machines + "Qx part of Windows", "SystemComponent", Number(1));
  const auto scan = Scan();
  EXPECT_EQ(
      Rows(*scan),
      (Names{"!Qx a product without its package|installer package missing",
             "!Qx folder gone|folder missing", "!Qx gone|uninstaller missing",
             "!Qx no product|installer package missing", "!Qx nothing, folder gone|folder missing",
             "+Qx a name for a folder|", "+Qx a product|", "+Qx there|", "+Qx unquoted|",
             "?Qx a variable|", "?Qx nothing|", "?Qx on a server|"}));
  EXPECT_TRUE(Holds(scan->status(), " that cannot be removed any more"));
  const size_t row = RowOf(*scan, "Qx there");
  EXPECT_EQ(scan->Offers(ScanAction::kStart, row), ports.session.RunsPrograms());
  EXPECT_FALSE(scan->Offers(ScanAction::kStart, RowOf(*scan, "Qx gone")));
  EXPECT_TRUE(Holds(scan->QuestionForAction(ScanAction::kStart, row), "uninstall me.exe\" /u"));
}

// The texts are those of whoever wrote the entry.
TEST_F(UninstallEntriesTest, TheQuestionShowsWhatIsStartedAndItsRights) {
  const std::string key = kPrograms + std::string("Qx");
  Add(kMachine, key, {there + " /u\r\n\r\nIt is harmless.", "", false, "Qx\r\nProgram: C:\\x.exe"});
  const auto scan = Scan();
  const std::string asked =
      scan->QuestionForAction(ScanAction::kStart, RowOf(*scan, "Qx\r\nProgram: C:\\x.exe"));
  const bool has_rights = ports.session.HasAdministratorRights();
  EXPECT_EQ(asked, "Start the uninstaller of Qx  Program: C:\\x.exe?\n\nProgram: " + there +
                       "\nCommand line: \"" + there + "\" /u    It is harmless.\n\nIt runs with " +
                       (has_rights ? "administrator rights, as this program does now."
                                   : "your rights; Windows asks you where it wants more."));
  Set(kMachine, key, "UninstallString", Text(there + " " + std::string(5000, 'x')));
  Set(kMachine, key, "DisplayName", Text("Qx"));
  const auto again = Scan();
  EXPECT_LT(again->QuestionForAction(ScanAction::kStart, RowOf(*again, "Qx")).size(), 1500u);
}

TEST_F(UninstallEntriesTest, EachUsersPackageOfAProductIsInUse) {
  const std::string package = MakePackage("qx1.msi"), other = MakePackage("qx2.msi");
  MakePackage("qx3.msi");
  AddProduct(kCode, package);
  AddProduct(kCode, other, "2");
  AddProduct(kOther, MakePackage("qx4.msi"));
  AddProduct(kOther, package + ".gone.msi", "2");
  for (const char* code : {kCode, kOther})
    Add(kMachine, kPrograms + std::string(code),
        {"MsiExec.exe /X" + std::string(code), "", true, "Qx" + std::string(code)});
  EXPECT_EQ(Rows(*Scan()),
            (Names{"+Qx" + std::string(kCode) + "|", "+Qx" + std::string(kOther) + "|"}));
  const InstallerPackages read = ReadInstallerPackages(ports, {});
  for (const std::string& name : {package, other})
    EXPECT_TRUE(Holds(WhyNeeded(ports, read, name), "A product that is installed needs it"));
}

TEST_F(UninstallEntriesTest, APackageIsJudgedAgainBeforeItGoes) {
  AddProduct(kCode, MakePackage("qx1.msi"));
  const std::string old = MakePackage("Qx3.msi"), touched = MakePackage("Qx4.msi");
  const auto scan = Scan();
  AddProduct(kOther, old, "2");
  MakePackage("Qx4.msi", true);
  scan->DeleteRows({RowOf(*scan, "Qx3.msi"), RowOf(*scan, "Qx4.msi")}, false);
  EXPECT_EQ(scan->stayed(), 2u);
  EXPECT_TRUE(machine->Exists(old) && machine->Exists(touched));
  EXPECT_EQ(Rows(*Scan()), Names());
  const InstallerPackages read = ReadInstallerPackages(ports, {});
  EXPECT_TRUE(Holds(WhyNeeded(ports, read, touched), "It is of today"));
  EXPECT_TRUE(Holds(WhyNeeded(ports, read, touched + "x"), "How old it is cannot be told"));
}

// However many rows there are; and a stop leaves all that had no turn.
TEST_F(UninstallEntriesTest, ADeletionAsksTheInstallerOnceAndStopsBetweenPackages) {
  struct Counting : Registry {
    explicit Counting(Registry& registry) : registry_(registry) {}
    std::unique_ptr<RegistryKey> Open(RegistryRoot root, std::string_view path,
                                      RegistryAccess access) override {
      asked += path.ends_with("Installer\\UserData") ? 1 : 0;
      return registry_.Open(root, path, access);
    }
    std::unique_ptr<RegistryKey> Create(RegistryRoot root, std::string_view path) override {
      return registry_.Create(root, path);
    }
    int asked = 0;
    Registry& registry_;
  };
  AddProduct(kCode, MakePackage("qx1.msi"));
  for (int i = 0; i < 20; ++i) MakePackage("Qx9" + std::to_string(i) + ".msi");
  Counting registry(ports.registry);
  const auto scan = ScanOf(ScanTool::kUninstall, WithRegistry(ports, registry));
  const auto packages = [](const RegistryScan& of) {
    std::vector<size_t> rows;
    for (size_t i = 0; i < of.RowCount(); ++i) {
      if (of.row(i).texts[0].starts_with("Qx9")) rows.push_back(i);
    }
    return rows;
  };
  scan->DeleteRows(packages(*scan), false, [](const Progress&) { return true; });
  EXPECT_EQ(packages(*scan).size(), 20u);
  registry.asked = 0;
  size_t pauses = 0;
  scan->DeleteRows(packages(*scan), false, [&](const Progress&) { return ++pauses == 0; });
  EXPECT_EQ(registry.asked, 1);
  EXPECT_GE(pauses, 40u);
  EXPECT_EQ(scan->stayed(), 0u) << scan->failure();
  EXPECT_EQ(packages(*Scan()).size(), 0u);
}

TEST_F(UninstallEntriesTest, TheTextsAreThoseOfTheEntry) {
  const std::string key = kPrograms + std::string("Qx");
  Add(kMachine, key, {"\"" + there + "\""});
  Set(kMachine, key, "DisplayVersion", Text("1.2"));
  Set(kMachine, key, "Publisher", Text("Größe & Söhne"));
  Set(kMachine, key, "InstallDate", Text("20240131"));
  Set(kMachine, key, "EstimatedSize", Number(204800));
  const auto scan = Scan();
  const auto& texts = scan->row(RowOf(*scan, "Qx")).texts;
  EXPECT_EQ((Names{texts.begin() + 1, texts.end()}),
            (Names{"1.2", "Größe & Söhne", "2024-01-31", "204,800", "", "\"" + there + "\""}));
  Set(kMachine, key, "InstallDate", Text("yesterday"));
  const auto again = Scan();
  EXPECT_EQ(again->row(RowOf(*again, "Qx")).texts[3].size(), 10u) << "when its key was written";
}

TEST_F(UninstallEntriesTest, AnEntryGoesAsAWholeAndComesBack) {
  const std::string key = kPrograms + std::string("Qx");
  Add(kUser, key, {gone});
  Set(kUser, key + "\\below\\deep", "a", Number(7));
  Add(kUser, key + "2", {gone});
  RegistryPicture before, after;
  Picture(kUser, kPrograms + std::string("Qx"), before);
  const auto scan = Scan();
  scan->DeleteRows({RowOf(*scan, "Qx")}, false);
  EXPECT_EQ(scan->failure(), "");
  EXPECT_FALSE(machine->KeyExists(kUser, key));
  EXPECT_EQ(Rows(*Scan()), Names{"!Qx2|uninstaller missing"});
  RestoreAll();
  Picture(kUser, kPrograms + std::string("Qx"), after);
  EXPECT_EQ(after, before);
}

TEST_F(UninstallEntriesTest, PackagesOfNoProductGoToTheRecycleBin) {
  AddProduct(kCode, MakePackage("qx1.msi"));
  Set(kMachine, UserData() + std::string("\\Patches\\") + PackedCode(kOther), "LocalPackage",
      Text("C:\\WINDOWS\\Installer\\QX2.MSP"));
  const std::string patch = MakePackage("qx2.msp"), old = MakePackage("Qx3.msi");
  const std::string of_today = MakePackage("Qx4.msi", true), kept = MakePackage("Qx5.msp");
  MakePackage("Qx6.txt");
  WriteOwn("keep.txt", kept + "\r\n");
  const auto scan = Scan();
  EXPECT_EQ(Rows(*scan),
            (Names{"!Qx3.msi|package of no product", "!Qx5.msp|package of no product"}));
  const size_t row = RowOf(*scan, "Qx3.msi");
  EXPECT_EQ(scan->row(row).texts[4], "3");
  scan->DeleteRows({row, RowOf(*scan, "Qx5.msp")}, false);
  EXPECT_EQ(scan->stayed(), 1u);
  EXPECT_TRUE(!machine->Exists(old) && machine->Exists(kept) && machine->Exists(patch));
  EXPECT_TRUE(machine->Exists(of_today));
  EXPECT_EQ(Rows(*Scan()), Names{"!Qx5.msp|package of no product"});
}

TEST_F(UninstallEntriesTest, OnlyPackagesInTheirFolderMayGo) {
  MakePackage("Qx3.msi");
  const std::string windows = ports.system.WindowsFolder() + "\\";
  const std::tuple<const char*, std::string, Claim, bool> kRows[] = {
      {"a package", windows + "Installer\\Qx3.msi", Claim::kPackage, true},
      {"a patch, in any case", windows + "Installer\\Qx3.MSP", Claim::kPackage, true},
      {"anything else there", windows + "Installer\\Qx3.dll", Claim::kPackage, false},
      {"for anybody else", windows + "Installer\\Qx3.msi", Claim::kItem, false},
      {"for a user's list", windows + "Installer\\Qx3.msi", Claim::kOwnList, false},
      {"elsewhere in Windows", windows + "inf\\Qx3.msi", Claim::kPackage, false}};
  ports.files.CreateFolder(windows + "inf");
  ProtectedPlaces places(ports, own + "Backup\\");
  for (const auto& [row, path, claim, may_go] : kRows) {
    const auto folder = ports.files.OpenFolder(FolderPart(path));
    EXPECT_EQ(places.WhyNotFile(*folder, path, claim).empty(), may_go) << row;
  }
}

TEST_F(UninstallEntriesTest, WithoutAWordOfTheInstallerNoPackageIsCalledOrphaned) {
  MakePackage("Qx3.msi");
  Add(kMachine, kPrograms + std::string("Qx"), {"MsiExec.exe /X" + std::string(kCode)});
  if (ReadInstallerPackages(ports, {}).is_whole) GTEST_SKIP() << "products of its own";
  EXPECT_EQ(Rows(*Scan()), Names{"+Qx|"});
}

TEST(PackedCodeTest, ItIsTheCodeInTheInstallersOrder) {
  EXPECT_EQ(PackedCode(kCode), "76543210BA98FEDC1032547698BADCFE");
  EXPECT_EQ(PackedCode("{abcdef01-89AB-CDEF-0123-456789ABCDEF}"),
            "10FEDCBABA98FEDC1032547698BADCFE");
  for (const char* code :
       {"", "{}", "{01234567-89AB-CDEF-0123-456789ABCDE}",
        "{0123456789ABCDEF0123-456789ABCDEF----}", "[01234567-89AB-CDEF-0123-456789ABCDEF]"})
    EXPECT_EQ(PackedCode(code), "") << code;
}

}  // namespace
}  // namespace quellix
