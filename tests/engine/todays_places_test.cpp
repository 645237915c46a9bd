// Where Windows and Office keep what the items clean, beside what must stay there.
#include "app/preview_run.h"
#include "cleaners/cookie_lists.h"
#include "cleaners/jump_list.h"
#include "support/jump_list_bytes.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

constexpr bool kGoes = true, kStays = false;
constexpr const char* kCrash = "System\\CurrentControlSet\\Control\\CrashControl";

// What a run came by, without what only a preview or only a run can know.
Names Told(const RunEntries& entries) {
  Names told;
  for (const RunEntry& entry : entries.all)
    told.push_back(std::to_string(static_cast<int>(entry.fate)) + " " + PlaceText(entry));
  std::ranges::sort(told);
  return told;
}

class TodaysPlacesTest : public RunFixture {
 protected:
  // A file, or a value of the user's registry as "KEY|NAME".
  struct Place {
    std::string place;
    bool goes;
    std::string bytes = "12";
    uint32_t type = kRegSz;  // of a value
  };

  TodaysPlacesTest()
      : windows(ports.system.WindowsFolder() + "\\"),
        local(ports.system.Environment("LOCALAPPDATA").value() + "\\") {}

  static bool IsValue(const Place& place) { return place.place.find('|') != std::string::npos; }
  static std::string KeyOf(const Place& place) {
    return place.place.substr(0, place.place.find('|'));
  }
  static std::string NameOf(const Place& place) {
    return place.place.substr(place.place.find('|') + 1);
  }

  bool IsSinceWindows8() {
    const WindowsVersion version = ports.system.Version();
    return std::pair(version.major, version.minor) >= std::pair(6, 2);
  }

  bool IsThere(const Place& place) {
    if (!IsValue(place)) return machine->Exists(place.place);
    const auto key = ports.registry.Open(kUser, KeyOf(place), RegistryAccess::kRead);
    return key && key->QueryValue(NameOf(place));
  }

  void RemoveKeys(const std::vector<Place>& places) {
    for (const Place& place : places) {
      if (IsValue(place)) machine->RemoveRegistryTree(kUser, KeyOf(place));
    }
  }

  void Seed(const std::vector<Place>& places) {
    RemoveKeys(places);
    for (const Place& place : places) {
      if (IsValue(place)) {
        const bool is_text = place.type == kRegSz;
        machine->SetRegistryValue(
            kUser, KeyOf(place), NameOf(place),
            {place.type, is_text ? ToUtf16Bytes(place.bytes + '\0') : place.bytes});
      } else {
        machine->MakeFile(place.place, place.bytes);
      }
    }
  }

  // Seeds, previews, runs and runs again.
  void Check(const char* item, const std::vector<Place>& places) {
    SCOPED_TRACE(item);
    Seed(places);
    PreviewRun preview(ports, view);
    preview.RunOneItem(*FindItem(item));
    for (const Place& place : places) EXPECT_TRUE(IsThere(place)) << place.place;
    Clean(item);
    EXPECT_EQ(Told(*preview.entries()), Told(*engine.state().Entries));
    log = view.report->log;
    for (const Place& place : places) EXPECT_EQ(IsThere(place), !place.goes) << place.place;
    Clean(item);
    for (const std::string& told : Told(*engine.state().Entries))
      EXPECT_FALSE(told.starts_with('0')) << "goes in a second run: " << told;
    for (const Place& place : places) {
      EXPECT_EQ(IsThere(place), !place.goes) << place.place;
      if (!IsValue(place) && !place.goes) ports.files.RemoveFile(place.place);
    }
    RemoveKeys(places);  // other tests count what is in them
  }

  std::string windows, local;
  std::string log;  // of the first run
};

TEST_F(TodaysPlacesTest, DumpsOfWindowsItsDriversAndPrograms) {
  for (const char* name : {"DumpFile", "MinidumpDir"}) {
    const std::string text = std::string("%SystemRoot%\\") + (*name == 'D' ? "QX.DMP" : "qxmini");
    machine->SetRegistryValue(kMachine, kCrash, name, {kRegExpandSz, ToUtf16Bytes(text + '\0')});
  }
  Check("CleanMemDump", {{windows + "QX.DMP", kGoes},
                         {ports.system.SystemFolder() + "\\QX.DMP", kGoes},
                         {windows + "qxmini\\a.dmp", kGoes},
                         {ports.system.SystemFolder() + "\\qxmini\\a.dmp", kGoes},
                         {windows + "LiveKernelReports\\WATCHDOG\\w.dmp", kGoes},
                         {windows + "LiveKernelReports\\w.txt", kStays},
                         {local + "CrashDumps\\app.exe.1.dmp", kGoes},
                         {local + "CrashDumps\\notes.txt", kStays},
                         {windows + "qx2.dmp", kStays}});
  EXPECT_TRUE(log.starts_with("Memory dump files... Files Deleted: 4 Space Gained: 8 Bytes\r\n"))
      << log;
}

TEST_F(TodaysPlacesTest, ListsOfOfficeOfEveryVersionAndAccount) {
  const std::string office = "Software\\Microsoft\\Office\\";
  const std::string long_path(2000, 'p');
  std::vector<Place> places;
  for (const std::string version : {"11.0\\", "12.0\\", "14.0\\", "15.0\\", "16.0\\"}) {
    const std::string now = office + version;
    places.insert(
        places.end(),
        {{now + "Word\\File MRU|Item 1", kGoes, long_path},
         {now + "Word\\File MRU|Item 2", kGoes},
         {now + "Word\\File MRU|Max Display", kStays, std::string(4, '\1'), kRegDword},
         {now + "Publisher\\Place MRU|Item 1", kGoes},
         {now + "Excel\\User MRU\\ADAL_1\\File MRU|Item 1", kGoes},
         {now + "Excel\\User MRU\\LiveId_2\\Place MRU|Item 1", kGoes},
         {now + "Excel\\User MRU\\LiveId_2\\Settings|Item 1", kStays},
         {now + "Word\\Reading Locations\\Document 0|File Path", kGoes},
         {now + "Word\\Reading Locations|Version", kStays},
         {now + "Word\\Options|Item 1", kStays},
         {now + "Word\\Recent Files|File1", kStays},
         {now + "Common\\Open Find\\Microsoft Word\\Settings\\Open\\File Name MRU|Value", kStays}});
  }
  for (const std::string version : {"8.0\\", "10.0\\"}) {
    const std::string then = office + version, find = then + "Common\\Open Find\\Microsoft ";
    places.push_back({find + "Word\\Settings\\Save As\\File Name MRU|Value", kGoes});
    places.push_back({find + "FrontPage\\Settings\\New Publish Location & strtemp1|Value", kGoes});
    places.push_back({then + "Word\\Recent Files|File1", kStays});
  }
  places.push_back({office + "17.0\\Word\\File MRU|Item 1", kStays});
  Check("CleanOfficeHistory", places);
  EXPECT_TRUE(log.starts_with("MS Office history...\r\n\r\n")) << log;
}

TEST_F(TodaysPlacesTest, WhatWasTypedAndSearchedForInExplorer) {
  const std::string explorer = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\";
  const std::string internet = "Software\\Microsoft\\Internet Explorer\\";
  const std::string bars = internet + "Explorer Bars\\{C4EE31F3-4768-11D2-BE5C-00A0C9A83DA1}\\";
  const std::string order(300, '\1');
  Check("CleanRunMRU", {{explorer + "RunMRU|a", kGoes},
                        {explorer + "RunMRU\\of others|a", kStays},
                        {explorer + "TypedPaths|url1", kGoes},
                        {explorer + "TypedPaths|url2", kGoes, std::string(500, 'p')},
                        {explorer + "WordWheelQuery|0", kStays}});
  EXPECT_TRUE(log.starts_with("Windows run history... Files Deleted: 3\r\n")) << log;
  Check("CleanTypedURL", {{internet + "TypedURLs|url1", kGoes},
                          {internet + "TypedURLsTime|url1", kGoes, "8 bytes.", kRegBinary},
                          {internet + "Main|Start Page", kStays},
                          {explorer + "TypedPaths|url1", kStays}});
  EXPECT_TRUE(log.starts_with("Typed URLs... Files Deleted: 2\r\n")) << log;
  Check("CleanFindHistory",
        {{explorer + "Doc Find Spec MRU|a", kGoes},
         {explorer + "Doc Find Spec MRU\\of others|a", kStays},
         {explorer + "FindComputerMRU|a", kGoes},
         {explorer + "PrnPortsMRU|MRUList", kGoes},
         {explorer + "MenuOrder\\Start Menu\\Find\\Menu\\deeper|a", kGoes},
         {explorer + "MenuOrder\\Start Menu|a", kStays},
         {bars + "ContainingTextMRU|000", kGoes},
         {bars + "FilesNamedMRU|000", kGoes},
         {"Software\\Microsoft\\Search Assistant\\ACMru\\5603|000", kGoes},
         {"Software\\Microsoft\\Search Assistant|a", kStays},
         {explorer + "WordWheelQuery|MRUListEx", kGoes, order, kRegBinary},
         {explorer + "WordWheelQuery|0", kGoes, "w\0o\0r\0d\0", kRegBinary},
         {explorer + "WordWheelQuery\\{1}|0", kGoes},
         {explorer + "SearchHistory\\Microsoft.Windows.FileSearchApp|item", kGoes},
         {explorer + "TypedPaths|url1", kStays}});
  EXPECT_TRUE(log.starts_with("\r\n--")) << log;
  Check("CleanInstallMRU", {{"InstallLocationsMRU|a", kGoes}});
  EXPECT_TRUE(log.starts_with("Install from history...\r\n\r\n")) << log;
}

TEST_F(TodaysPlacesTest, PrintJobsGoWithWhatWasNotedOfThemAlone) {
  machine->SetText(kMachine, "System\\CurrentControlSet\\Control\\Print\\Printers",
                   "DefaultspoolDirectory", scratch + "spool");
  const std::vector<Place> places = {
      {scratch + "spool\\00001.SPL", kGoes},  {scratch + "spool\\00001.SHD", kGoes},
      {scratch + "spool\\sub\\2.spl", kGoes}, {scratch + "spool\\sub\\2.shd", kGoes},
      {scratch + "spool\\2.shd", kStays},     {scratch + "spool\\00003.SHD", kStays},
      {scratch + "spool\\00001.SHDX", kStays}};
  Check("CleanPrinter", places);
  EXPECT_TRUE(Holds(log, "printer files... Files Deleted: 4 Space Gained: 8 Bytes"));
  Seed(places);
  const auto lock = machine->LockFile(scratch + "spool\\00001.SPL");
  Clean("CleanPrinter");
  EXPECT_TRUE(machine->Exists(scratch + "spool\\00001.SHD")) << "its job waits";
  EXPECT_FALSE(machine->Exists(scratch + "spool\\sub\\2.shd"));
}

TEST_F(TodaysPlacesTest, CookiesButThoseThatAreKept) {
  machine->SetText(kUser, "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
                   "Cookies", scratch + "cookies");
  WriteOwn("ck.txt", UpCase(scratch) + "COOKIES\\kept.cookie\x01\r\n");
  Check("CleanCookies", {{scratch + "cookies\\old.txt", kGoes},
                         {scratch + "cookies\\ABC.cookie", kGoes},
                         {scratch + "cookies\\Low\\DEF.cookie", kGoes},
                         {scratch + "cookies\\kept.cookie", kStays},
                         {scratch + "cookies\\ABC.cookie2", kStays},
                         {scratch + "cookies\\deprecated.cookie.dat", kStays}});
  EXPECT_TRUE(Holds(log, "Cookies... Files Deleted: 3 Space Gained: 6 Bytes"));
  EXPECT_EQ(CookieLists(ports).kept().size(), 1u);
  machine->MakeFile(scratch + "cookies\\ABC.cookie", "");
  EXPECT_EQ(CookieLists(ports).on_machine(), Names{scratch + "cookies\\ABC.cookie"});
}

constexpr uint32_t kFree = 0xFFFFFFFF;
constexpr const char* kAutomatic = "a.automaticDestinations-ms";
constexpr const char* kCustom = "c.customDestinations-ms";

std::string AutomaticList(uint32_t version, std::vector<uint32_t> pins, uint32_t pinned = 0) {
  return CompoundBytes("DestList", DestinationList(version, pins, pinned));
}

// With categories behind the header, each with its end.
std::string CustomList(std::initializer_list<std::string> categories) {
  std::string bytes = Little(2, 4) + Little(categories.size(), 4) + Little(0, 4);
  for (const std::string& category : categories) bytes += category + Little(0xBABFFBAB, 4);
  return bytes;
}

const std::string kPlain = AutomaticList(4, {kFree, kFree});
const std::string kFrequent = Little(1, 4) + Little(1, 4), kTasks = Little(2, 4) + Little(0, 4),
                  kNamed = Little(0, 4) + Little(2, 2) + ToUtf16Bytes("ab");

std::string Changed(size_t at, const std::string& bytes) {
  return std::string(kPlain).replace(at, bytes.size(), bytes);
}

const std::tuple<const char*, const char*, std::string, Pins> kListRows[] = {
    {"an empty file", kAutomatic, "", Pins::kNone},
    {"an empty list", kAutomatic, CompoundBytes("DestList", ""), Pins::kNone},
    {"no entries", kAutomatic, AutomaticList(4, {}), Pins::kNone},
    {"of today", kAutomatic, kPlain, Pins::kNone},
    {"of Windows 7", kAutomatic, AutomaticList(1, {kFree, kFree, kFree}), Pins::kNone},
    {"a long one", kAutomatic, AutomaticList(3, std::vector(60, kFree)), Pins::kNone},
    {"the first is pinned", kAutomatic, AutomaticList(4, {0, kFree}, 1), Pins::kSome},
    {"the last of Windows 7", kAutomatic, AutomaticList(1, {kFree, 1}), Pins::kSome},
    {"the last of a long one", kAutomatic,
     [] {
       std::vector<uint32_t> pins(60, kFree);
       pins.back() = 7;
       return AutomaticList(4, pins);
     }(),
     Pins::kSome},
    {"only the header tells", kAutomatic, AutomaticList(4, {kFree}, 1), Pins::kSome},
    {"no list", kAutomatic, CompoundBytes("Dest", "x"), Pins::kUnknown},
    {"text", kAutomatic, std::string(2000, 'x'), Pins::kUnknown},
    {"cut off", kAutomatic, kPlain.substr(0, 2048), Pins::kUnknown},
    {"the table leads around", kAutomatic, Changed(512 + 4, Little(1, 4)), Pins::kUnknown},
    {"short pieces lead around", kAutomatic, Changed(1536 + 4, Little(0, 4)), Pins::kUnknown},
    {"tables lead around", kAutomatic, Changed(68, Little(3, 4)), Pins::kUnknown},
    {"a sector far behind", kAutomatic, Changed(48, Little(0xFFFFFF00, 4)), Pins::kUnknown},
    {"huge sectors", kAutomatic, Changed(30, Little(31, 2)), Pins::kUnknown},
    {"a longer stream", kAutomatic, Changed(1024 + 248, Little(4000, 4)), Pins::kUnknown},
    {"more entries than there are", kAutomatic,
     CompoundBytes("DestList", DestinationList(4, std::vector(1, kFree), 0).substr(0, 160)),
     Pins::kUnknown},
    {"something behind the entries", kAutomatic,
     CompoundBytes("DestList", DestinationList(4, std::vector(1, kFree), 0) + "x"), Pins::kUnknown},
    {"an empty custom file", kCustom, "", Pins::kNone},
    {"no categories", kCustom, CustomList({}), Pins::kNone},
    {"none with entries", kCustom, CustomList({kFrequent, kTasks, kNamed + Little(0, 4)}),
     Pins::kNone},
    {"with entries", kCustom, CustomList({kFrequent, kNamed + Little(1, 4) + "link"}),
     Pins::kUnknown},
    {"with kTasks", kCustom, CustomList({Little(2, 4) + Little(1, 4) + "link"}), Pins::kUnknown},
    {"fewer categories", kCustom, Little(2, 4) + Little(9, 4) + Little(0, 4), Pins::kUnknown},
    {"another form", kCustom, Little(3, 4) + Little(0, 8), Pins::kUnknown}};

TEST(JumpListTest, APinIsSeenWhereverItStandsAndWhatDoesNotTellIsUnknown) {
  for (const auto& [what, name, file, pins] : kListRows)
    EXPECT_EQ(PinsOf(name, file), pins) << what;
  EXPECT_TRUE(IsJumpList("5F7B.AutomaticDestinations-ms"));
  EXPECT_FALSE(IsJumpList("automaticDestinations-ms.lnk"));
}

TEST_F(TodaysPlacesTest, RecentDocumentsWithTheirListsAndJumpListsButPinnedOnes) {
  const std::string explorer = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\";
  machine->SetText(kUser, explorer + "Shell Folders", "Recent", scratch + "recent");
  const std::string recent = scratch + "recent\\", lists = recent + "AutomaticDestinations\\",
                    custom = recent + "CustomDestinations\\", dialogs = explorer + "ComDlg32\\";
  const bool is_new = IsSinceWindows8();
  for (const bool keeps : {false, true}) {
    SCOPED_TRACE(keeps);
    WriteSettings(std::string("[General]\r\nKeepPins=") + (keeps ? "1" : "0") + "\r\n");
    Check("CleanRecentDocs",
          {{recent + "letter.lnk", kGoes},
           {recent + "Desktop.ini", kStays},
           {lists + "1.automaticDestinations-ms", kGoes, AutomaticList(4, {kFree})},
           {lists + "2.automaticDestinations-ms", !keeps, AutomaticList(4, {kFree, 0}, 1)},
           {lists + "3.automaticDestinations-ms", !keeps, "damaged"},
           {lists + "desktop.ini", kStays},
           {custom + "4.customDestinations-ms", kGoes, CustomList({})},
           {custom + "5.customDestinations-ms", !keeps, CustomList({Little(2, 4) + Little(1, 4)})},
           {explorer + "RecentDocs|0", kGoes},
           {explorer + "RecentDocs\\.txt|0", is_new, std::string(700, 'd'), kRegBinary},
           {explorer + "RecentDocs\\Folder|MRUListEx", is_new},
           {dialogs + "OpenSavePidlMRU|0", is_new, std::string(700, 'd'), kRegBinary},
           {dialogs + "OpenSavePidlMRU\\txt|0", is_new},
           {dialogs + "LastVisitedPidlMRU|0", is_new},
           {dialogs + "CIDSizeMRU|0", is_new},
           {dialogs + "Settings|0", kStays},
           {explorer + "StreamMRU|0", is_new},
           {explorer + "Streams|0", kStays}});
    const bool tells =
        log.find("Jump lists that stay with their pinned entries: 3\r\n") != log.npos;
    EXPECT_EQ(tells, keeps) << log;
    EXPECT_TRUE(
        Holds(log, std::string("Recent documents... Files Deleted: ") + (keeps ? "3" : "6")));
  }
}

TEST_F(TodaysPlacesTest, BeforeWindows8TheListsByKindOfFileStay) {
  // A volume takes its version from the registry; a running Windows has the one it has.
  constexpr const char* kVersion = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
  for (const auto& [name, number] : {std::pair("Major", '\6'), std::pair("Minor", '\1')}) {
    machine->SetRegistryValue(kMachine, kVersion, std::string("Current") + name + "VersionNumber",
                              {kRegDword, {number, 0, 0, 0}});
  }
  const std::string recent = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\RecentDocs";
  Check("CleanRecentDocs", {{recent + "|0", kGoes}, {recent + "\\.txt|0", IsSinceWindows8()}});
}

TEST_F(TodaysPlacesTest, HowAFolderLooksIsNoTrace) {
  machine->SetText(kMachine,
                   "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\ActiveX Cache",
                   "0", scratch + "ocx");
  Check("CleanActiveX", {{scratch + "ocx\\DESKTOP.INI", kStays}, {scratch + "ocx\\x.ocx", kGoes}});
  EXPECT_TRUE(log.starts_with("Downloaded ActiveX & OCX...Files Deleted: 1 ")) << log;
  const std::string pages = windows + "Offline Web Pages\\";
  Check("CleanOffline", {{pages + "desktop.ini", kStays}, {pages + "sub\\page.htm", kGoes}});
  EXPECT_TRUE(log.starts_with("Offline web pages... Files Deleted: 1 ")) << log;
  Check("CleanTempFiles", {{temp + "desktop.ini", kGoes}});
}

}  // namespace
}  // namespace quellix
