#include "list_windows.h"

#include <algorithm>

#include "options_window.h"
#include "support/cache_entry_win32.h"
#include "ui/resource.h"

namespace quellix::test {

namespace {

constexpr wchar_t kKeys[] = L"Software\\Microsoft\\Windows\\";
constexpr wchar_t kOwn[] = L"Qx lists";
constexpr wchar_t kExtension[] = L"Software\\Classes\\.";
constexpr wchar_t kPrograms[] = L"CurrentVersion\\Uninstall\\";
constexpr wchar_t kRun[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr wchar_t kComponents[] = L"Software\\Microsoft\\Active Setup\\Installed Components\\";
constexpr wchar_t kOfReference[] = L"Delete 1 reference from the registry?";
constexpr wchar_t kShellFolders[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
const std::wstring kProfiles =
    L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\S-1-5-21-7-7-7-";
const fs::path kJunk = L"C:\\quellix-tests\\lists", kCookies = L"C:\\quellix-tests\\cookies",
               kUsers = L"C:\\users", kFavorites = fs::path(_wgetenv(L"USERPROFILE")) / "Favorites";

// The whole registry takes its time.
HWND AwaitScan(HWND tool) {
  for (int patience = 0; patience < 10; ++patience) {
    if (Await([&] { return Shown(tool, lblStatus) != L"" && !IsEnabled(tool, cmdStop); })) break;
  }
  return tool;
}

constexpr std::pair<int, const wchar_t*> kTools[] = {
    {mnuOrphanedDLL, L"Orphaned Shared DLLs"},
    {mnuOrphanedFilePath, L"Orphaned File/Path Reference"},
    {mnuOrphanedApplicationPath, L"Orphaned application path references"},
    {mnuOrphanedHelpFile, L"Orphaned help file references"},
    {mnuOrphanedActivex, L"Orphaned ActiveX control references"},
    {mnuStartupPrograms, L"Start-up programs"},
    {mnuInstalledPrograms, L"Installed programs"},
    {mnuAssociationTool, L"File associations"}};

template <int kEntry>
HWND Tool(const QuellixWindow& window) {
  const auto tool = std::ranges::find(kTools, kEntry, &std::pair<int, const wchar_t*>::first);
  return AwaitScan(window.Open(kEntry, tool->second));
}

HWND Thorough(const QuellixWindow& window) {
  const HWND tool = Tool<mnuOrphanedFilePath>(window);
  Click(tool, chkThorough);
  EXPECT_TRUE(AwaitEnabled(tool, cmdStop));
  return AwaitScan(tool);
}

HWND Search(const QuellixWindow& window) {
  window.Click(chkUnNecessaryFiles);
  window.Press(cmdClean);
  const HWND results = window.AwaitWindow(L"Search results");
  EXPECT_TRUE(Await([&] { return !IsEnabled(results, cmdAbort); }));
  return results;
}

HWND Clean(const QuellixWindow& window) {
  window.Click(chkTemp);
  window.Press(cmdClean);
  return window.AwaitWindow(L"Cleaning log");
}

HWND Preview(const QuellixWindow& window) {
  window.Click(chkTemp);
  window.Press(cmdPreview);
  return window.AwaitWindow(L"Preview");
}

HWND Backups(const QuellixWindow& window) {
  EXPECT_TRUE(CloseAndAwait(Clean(window)));
  return window.Open(mnuBackups, L"Backups");
}

HWND Plugins(const QuellixWindow& window) {
  return window.Open(mnuManagePlugin, L"Plugins Manager");
}

HWND Records(const QuellixWindow& window) {
  const HWND manager = Plugins(window);
  PressIn(manager, mnuEdit);
  const HWND editor = window.AwaitWindow(L"Plugin: qx1.cdp");
  SetFocus(editor);
  return editor;
}

HWND KeepList(const QuellixWindow& window) {
  const OptionsWindow options(window);
  options.GoTo(OptionsPage::kKeep);
  return GetParent(options.Control(lstvList));
}

HWND Cookies(const QuellixWindow& window) {
  const OptionsWindow options(window);
  options.GoTo(OptionsPage::kCookies);
  return GetParent(options.Control(lstvCookies));
}

HWND Trial(const QuellixWindow& window) {
  PressIn(Records(window), cmdTry);
  const HWND trial = window.AwaitWindow(L"Try it");
  EXPECT_TRUE(AwaitRows(GetDlgItem(trial, lstvTry), 2));
  return trial;
}

HWND Favorites(const QuellixWindow& window) {
  const HWND favorites = window.Open(mnuFavorites, L"Favorites");
  EXPECT_TRUE(AwaitPart(favorites, lblStatus, L" marked"));
  return favorites;
}

const ListCase kRows[] = {
    {"Results", Search, lstvDeletion, L"C:\\quellix-tests\\lists\\", L"Remove 1 file (1 Byte", kYes,
     IDCANCEL, false, cmdDeleteSelected},
    {"Preview", Preview, lstvRun, L"C:\\"},
    {"Log", Clean, lstvRun, L"C:\\"},
    {"LogCategories", Clean, lstvCategories, nullptr},
    {"Archives", Backups, lstvArchives, L"\\Backup\\", L"Delete the archive", IDYES, IDNO, true},
    {"Contents", Backups, lstvEntries, L"C:\\"},
    {"Plugins", Plugins, lstvPlugin, L"\\Plugins\\qx", L"Are you sure you want to delete", IDYES,
     IDNO},
    {"Records", Records, lstvFiles, L"C:\\quellix-tests\\lists\\"},
    {"SharedDlls", Tool<mnuOrphanedDLL>, lstvOrphanedDLL, L"C:\\qx none\\qx", kOfReference, kYes,
     IDCANCEL, false, cmdDelete},
    {"FileReferences", Thorough, lstvInvalid, L"HKEY_", kOfReference, kYes, IDCANCEL, false,
     cmdDelete},
    {"AppPaths", Tool<mnuOrphanedApplicationPath>, lstvInvalid, L"C:\\qx none\\qx", kOfReference,
     kYes, IDCANCEL, false, cmdDelete},
    {"HelpFiles", Tool<mnuOrphanedHelpFile>, lstvInvalid, L"C:\\qx none\\qx", kOfReference, kYes,
     IDCANCEL, false, cmdDelete},
    {"Components", Tool<mnuOrphanedActivex>, lstvInvalid, L"HKEY_LOCAL_MACHINE\\", kOfReference,
     kYes, IDCANCEL, false, cmdDelete},
    {"Startup", Tool<mnuStartupPrograms>, lstvInvalid, L"C:\\", L"Delete 1 start-up entry?", kYes,
     IDCANCEL, false, 0, L"qx"},
    {"Uninstall", Tool<mnuInstalledPrograms>, lstvInvalid, L"C:\\", L"Delete 1 uninstall entry?"},
    {"Associations", Tool<mnuAssociationTool>, lstvInvalid, L"HKEY_", kOfReference},
    {"Cache",
     [](const QuellixWindow& window) {
       return window.Open(mnuIECache, L"Temporary Internet Files (Cache)");
     },
     lstvCache, nullptr, L"Delete 1 entry of the Internet cache for good?", kYes, IDCANCEL, false,
     cmdDelete},
    {"KeepList", KeepList, lstvList, L"C:\\"},
    {"Cookies", Cookies, lstvCookies, L"C:\\quellix-tests\\cookies\\qx"},
    {"KeptCookies", Cookies, lstvKept, L"C:\\quellix-tests\\cookies\\qx"},
    {"Trial", Trial, lstvTry, L"C:\\quellix-tests\\lists\\"},
    {"Users", [](const QuellixWindow& window) { return window.Open(mnuUsers, L"Other users"); },
     lstvUsers, L"C:\\users\\qx"},
    {"Favorites", Favorites, lstvFavorites, L"\\Favorites\\qx",
     L"Move 1 favorite into the recycle bin?", kYes, IDCANCEL, false, cmdDelete}};

}  // namespace

std::span<const ListCase> ListCases() { return kRows; }

const ListCase& ListNamed(std::string_view name) {
  const auto found = std::ranges::find(
      kRows, name, [](const ListCase& row) { return std::string_view(row.name); });
  if (found == std::end(kRows)) throw std::runtime_error("no list " + std::string(name));
  return *found;
}

SeededLists::SeededLists() {
  ResetSandbox();
  CleanUp();
  WriteSettings("DelMethod=B\r\n");
  WriteBytes(ProgramFolder() / "UNFI.txt", Fields("1|*.qxj|Ours\r\n"));
  WriteBytes(ProgramFolder() / "keep.txt", "C:\\Kept\r\na*.doc\r\n");
  WriteBytes(ProgramFolder() / "plg.txt", Fields("0|qx1.cdp|1\r\n0|qx2.cdp|2\r\n"));
  for (const char* name : {"qx1.cdp", "qx2.cdp"}) {
    WriteBytes(ProgramFolder() / "Plugins" / name,
               Fields("F|No|No|C:\\quellix-tests\\lists\\1.qxj\r\n"
                      "F|Yes|No|C:\\quellix-tests\\lists\\2.qxj\r\n"));
  }
  for (const char* name : {"1.qxj", "2.qxj", "3.qxj"}) WriteBytes(kJunk / name, "1");
  for (const char* name : {"a.tmp", "b.tmp", "c.doc"}) WriteBytes(TempFolder() / name, "12345");
  SeedRegistry();
  SeedCookies();
  for (const char* name : {"qx1", "qx2", "qx3"}) {
    const std::string address = std::string("http://") + name + ".example/";
    WriteBytes(kFavorites / (std::string(name) + ".url"),
               "[InternetShortcut]\r\nURL=" + address + "\r\n");
    SetRegistryText(HKEY_LOCAL_MACHINE, kProfiles + fs::path(name).wstring(), L"ProfileImagePath",
                    (kUsers / name).wstring());
    fs::create_directories(kUsers / name);
  }
  for (const wchar_t* source : {L"http://a.example/", L"http://b.example/"})
    MakeCacheEntry({.source = source});
}

// Two of them are kept.
void SeededLists::SeedCookies() {
  std::string kept;
  for (const char* name : {"qx1@x.txt", "qx2@x.txt", "qx3@x.txt", "qx4@x.txt"}) {
    WriteBytes(kCookies / name, "cookie");
    if (name[2] > '2') kept += (kCookies / name).string() + "|\r\n";
  }
  WriteBytes(ProgramFolder() / "ck.txt", Fields(kept));
  cookies_before_ = RegistryText(HKEY_CURRENT_USER, kShellFolders, L"Cookies");
  SetRegistryText(HKEY_CURRENT_USER, kShellFolders, L"Cookies", kCookies.wstring());
}

void SeededLists::SeedRegistry() {
  const std::wstring windows(kKeys);
  for (const wchar_t* name : {L"qx1", L"qx2", L"qx3"}) {
    const std::wstring file = std::wstring(L"C:\\qx none\\") + name;
    SetRegistryText(HKEY_LOCAL_MACHINE, windows + L"CurrentVersion\\SharedDLLs",
                    (file + L".dll").c_str(), L"1");
    SetRegistryText(HKEY_LOCAL_MACHINE, windows + L"CurrentVersion\\App Paths\\" + name + L".exe",
                    nullptr, file);
    SetRegistryText(HKEY_LOCAL_MACHINE, windows + L"Help", (name + std::wstring(L".hlp")).c_str(),
                    L"C:\\qx none");
    SetRegistryText(HKEY_CURRENT_USER, kOwn, name, file);
    SetRegistryText(HKEY_CURRENT_USER, kRun, name, file);
    SetRegistryText(HKEY_CURRENT_USER, std::wstring(kExtension) + name, nullptr, L"Qx none");
    SetRegistryText(HKEY_CURRENT_USER, windows + kPrograms + name, L"DisplayName", name);
    SetRegistryText(HKEY_CURRENT_USER, windows + kPrograms + name, L"UninstallString", file);
    SetRegistryText(HKEY_LOCAL_MACHINE, std::wstring(kComponents) + name, nullptr, name);
  }
}

void SeededLists::CleanUp() {
  const std::wstring windows(kKeys);
  for (const wchar_t* key : {L"CurrentVersion\\SharedDLLs", L"CurrentVersion\\App Paths", L"Help"})
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, (windows + key).c_str());
  RegDeleteTreeW(HKEY_CURRENT_USER, kOwn);
  for (const wchar_t* name : {L"qx1", L"qx2", L"qx3"}) {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, (std::wstring(kComponents) + name).c_str());
    RegDeleteKeyValueW(HKEY_CURRENT_USER, kRun, name);
    RegDeleteTreeW(HKEY_CURRENT_USER, (windows + kPrograms + name).c_str());
    RegDeleteTreeW(HKEY_CURRENT_USER, (std::wstring(kExtension) + name).c_str());
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, (kProfiles + name).c_str());
    fs::remove_all(kUsers / name);
  }
  if (cookies_before_ == L"<missing>") {
    RegDeleteKeyValueW(HKEY_CURRENT_USER, kShellFolders, L"Cookies");
  } else if (!cookies_before_.empty()) {
    SetRegistryText(HKEY_CURRENT_USER, kShellFolders, L"Cookies", cookies_before_);
  }
  cookies_before_.clear();
  fs::remove_all(kFavorites);
  for (const wchar_t* source : {L"http://a.example/", L"http://b.example/"})
    DeleteUrlCacheEntryW(source);
}

}  // namespace quellix::test
