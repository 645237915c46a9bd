// Where Windows and Office of today keep what the items clean, beside what must stay there.
#include "app/preview_run.h"
#include "cleaners/cookie_lists.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

constexpr bool kGoes = true, kStays = false;
constexpr const char* kCrash = "System\\CurrentControlSet\\Control\\CrashControl";

// What a run came by, without what only a preview or only a run can know.
std::vector<std::string> Told(const RunEntries& entries) {
  std::vector<std::string> told;
  for (const RunEntry& entry : entries.all) {
    told.push_back(std::to_string(static_cast<int>(entry.fate)) + " " + PlaceText(entry));
  }
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

  bool IsThere(const Place& place) {
    if (!IsValue(place)) return machine->Exists(place.place);
    const auto key = ports.registry.Open(kUser, KeyOf(place), RegistryAccess::kRead);
    return key && key->QueryValue(NameOf(place));
  }

  void Seed(const std::vector<Place>& places) {
    for (const Place& place : places) {
      if (IsValue(place)) machine->RemoveRegistryTree(kUser, KeyOf(place));
    }
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
    for (const std::string& told : Told(*engine.state().Entries)) {
      EXPECT_FALSE(told.starts_with('0')) << "goes in a second run: " << told;
    }
    for (const Place& place : places) {
      EXPECT_EQ(IsThere(place), !place.goes) << place.place;
      if (!IsValue(place) && !place.goes) ports.files.RemoveFile(place.place);
    }
  }

  std::string windows, local;
  std::string log;  // of the first run
};

TEST_F(TodaysPlacesTest, DumpsOfWindowsItsDriversAndPrograms) {
  for (const char* name : {"DumpFile", "MinidumpDir"}) {
    const std::string text = std::string("%SystemRoot%\\") + (*name == 'D' ? "QX.DMP" : "qxmini");
    machine->SetRegistryValue(RegistryRoot::kLocalMachine, kCrash, name,
                              {kRegExpandSz, ToUtf16Bytes(text + '\0')});
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
  places.push_back({office + "17.0\\Word\\File MRU|Item 1", kStays});
  Check("CleanOfficeHistory", places);
  EXPECT_TRUE(log.starts_with("MS Office history...\r\n\r\n")) << log;
}

TEST_F(TodaysPlacesTest, WhatWasTypedAndSearchedForInExplorer) {
  const std::string explorer = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\";
  const std::string internet = "Software\\Microsoft\\Internet Explorer\\";
  const std::string order(300, '\1');
  Check("CleanRunMRU", {{explorer + "RunMRU|a", kGoes},
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
         {explorer + "WordWheelQuery|MRUListEx", kGoes, order, kRegBinary},
         {explorer + "WordWheelQuery|0", kGoes, "w\0o\0r\0d\0", kRegBinary},
         {explorer + "WordWheelQuery\\{1}|0", kGoes},
         {explorer + "SearchHistory\\Microsoft.Windows.FileSearchApp|item", kGoes},
         {explorer + "TypedPaths|url1", kStays}});
}

TEST_F(TodaysPlacesTest, PrintJobsGoWithWhatWasNotedOfThemAlone) {
  machine->SetText(RegistryRoot::kLocalMachine,
                   "System\\CurrentControlSet\\Control\\Print\\Printers", "DefaultspoolDirectory",
                   scratch + "spool");
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

}  // namespace
}  // namespace quellix
