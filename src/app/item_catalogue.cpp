#include "app/item_catalogue.h"

#include <algorithm>
#include <array>

#include "browsers/firefox_cleaner.h"
#include "cleaners/folder_cleaners.h"
#include "cleaners/history_cleaners.h"
#include "cleaners/internet_cleaners.h"
#include "cleaners/junk_cleaners.h"
#include "cleaners/user_defined.h"
#include "platform/text.h"
#include "platform/words.h"
#include "plugins/mod_plugin.h"

namespace quellix {
namespace {

using enum Group;
using enum Protection;

constexpr bool kRisky = true, kHarmless = false;
constexpr Rights kNeedsRights = Rights::kAll, kNeedsSome = Rights::kSome, kAnyone = Rights::kNone;
constexpr int kUntilXp = 5;

constexpr const char* kHistoryError = Mark("There was an error in cleaning the History. ");
constexpr const char* kFirefoxError = Mark("There was an error in cleaning the Firefox files. ");

// The odd spellings of captions and messages are what users and their scripts know.
// clang-format off
constexpr std::array<Item, kItemCount> kItems = {{
    {1, 1, "chkRecycleBin", Mark("Recycle Bin"), "CleanRecycleBin", kFolderFiles, kNone,
     Mark("Recycle Bin... "), Mark("There was an error in cleaning the Recycle Bin. "), false,
     CleanRecycleBin,
     {Mark("All files and folders in the recycle bins of all drives."),
      Mark("what was deleted cannot be restored any more"), kRisky}},
    {2, 3, "chkActiveSetup", Mark("Active setup temporary folders"), "ActiveSetupClean",
     kFolderFiles, kNone, Mark("Active setup temporary folders... "),
     Mark("There was an error in cleaning Active Setup Temporary Folders. . "), false,
     CleanActiveSetup,
     {Mark("The download folders (msdownld.tmp) that installers leave on the drive of Windows."),
      "", kHarmless, kNeedsRights}},
    {3, 4, "chkIndexer", Mark("Content indexer folder"), "CleanIndexer", kFolderFiles, kNone,
     Mark("Content indexer folder... "),
     Mark("There was an error in cleaning Indexer Files. "), false,
     CleanIndexer,
     {Mark("Catalogues (catalog.wci) of the old indexing service, while that service is not "
           "running."), "", kHarmless, kNeedsRights, kUntilXp}},
    {4, 2, "chkUserDefinedFolders", Mark("User-defined folders"), "CleanUserFolders", kFolderFiles,
     kNone, Mark("User-defined folders... "),
     Mark("There was an error in cleaning the User defined folders"), false, CleanUserFolders,
     {Mark("The files in the folders that are listed in the Options, in the temporary folders of "
           "Windows and in the list of recent Office documents.")}},
    {5, 6, "chkUserDefinedFiles", Mark("User-defined files"), "CleanUserFiles", kFolderFiles, kNone,
     Mark("User-defined files... "),
     Mark("There was an error in cleaning User Defined Files"), false,
     CleanUserFiles,
     {Mark("The files that are listed in the Options.")}},
    {6, 7, "chkUnNecessaryFiles", Mark("Unnecessary files"), "CleanUnnecessaryFiles", kFolderFiles,
     kNone, Mark("Unnecessary files... "),
     Mark("There was an error in cleaning Unnecessary Files. "),
     false, CleanUnnecessaryFiles,
     {Mark("Searches the drives that are chosen in the Options for the file types that are ticked "
           "there. What is found is shown, and nothing goes before you say so.")}},
    {7, 10, "chkRecentDocument", Mark("Recent documents"), "CleanRecentDocs", kFolderFiles, kNone,
     Mark("Recent documents... "), Mark("There was an error in cleaning Recent Documents. "), false,
     CleanRecentDocuments,
     {Mark("The shortcuts in the folder of recent documents, jump lists, and the lists of recent "
           "documents and of the dialogs that open and save files in the registry. The documents "
           "stay, and so do jump lists with pinned entries where the Options say so.")}},
    {8, 11, "chkPrinter", Mark("Residual printer files"), "CleanPrinter", kFolderFiles, kNone,
     Mark("Residual printer files... "),
     Mark("There was an error in cleaning Residual Printer Files. "),
     false, CleanPrinterFiles,
     {Mark("Print jobs that were left over (*.spl) in the folder of the print spooler, with what "
           "was noted of each (*.shd)."), "", kHarmless, kNeedsRights}},
    {9, 12, "chkDump", Mark("Memory dump files"), "CleanMemDump", kFolderFiles, kNone,
     Mark("Memory dump files... "),
     Mark("There was an error in cleaning Memory Dump Files. "), false,
     CleanMemoryDumps,
     {Mark("The memory dump that Windows writes after a crash, the small dumps, reports of drivers "
           "that hung (LiveKernelReports) and the dumps of your programs (CrashDumps)."),
      "", kHarmless, kNeedsSome}},
    {10, 22, "chkTemp", Mark("Temporary files"), "CleanTempFiles", kFolderFiles, kNone,
     Mark("Temporary files... "), Mark("There was an error in cleaning Temporary Files. "), false,
     CleanTempFiles,
     {Mark("Everything in your temporary folder, with the folders in it.")}},
    {11, 8, "chkEmptyFiles", Mark("Empty (zero-byte) files"), "CleanEmptyFiles", kFolderFiles,
     kProtect1, Mark("Empty (zero-byte) files... "),
     Mark("There was an error in cleaning Empty Files. "), false, CleanEmptyFiles,
     {Mark("Searches the drives that are chosen in the Options for files without content. What is "
           "found is shown, and nothing goes before you say so. Some programs need such files.")}},
    {12, 9, "chkDeadShortcut", Mark("Dead (shortcut) links"), "CleanShortcuts", kFolderFiles,
     kProtect2, Mark("Dead (shortcut) links... "),
     Mark("There was an error in cleaning Dead Shortcuts. "), false, CleanDeadShortcuts,
     {Mark("Searches the drives that are chosen in the Options for shortcuts whose target is gone. "
           "What is found is shown, and nothing goes before you say so.")}},
    {13, 21, "chkPlugins", Mark("Plugins"), "CleanPlugins", kMiscellaneous, kNone,
     Mark("Plugins... "), Mark("There was an error in cleaning the plugins. . "), false,
     CleanPlugins,
     {Mark("What the ticked plug-ins name: files, registry entries and parts of INI files.")}},
    {14, 20, "chkOffice", Mark("MS Office history"), "CleanOfficeHistory", kMiscellaneous, kNone,
     Mark("MS Office history..."),
     Mark("There was an error in cleaning the MS OfficeRegistry History Lists. "), true,
     CleanOfficeHistory,
     {Mark("The lists of recent files and folders of Microsoft Office in the registry, pinned ones "
           "included, and where Word was left off reading.")}},
    {15, 19, "chkClipBoard", Mark("Windows clipboard"), "CleanClipboard", kMiscellaneous, kNone,
     Mark("Windows Clipboard..."), Mark("There was an error in cleaning the Clipboard"), false,
     CleanClipboard,
     {Mark("What was copied last, and the clipboard's history but for what is pinned there.")}},
    {16, 5, "chkRunMRU", Mark("Windows run history"), "CleanRunMRU", kMiscellaneous, kNone,
     Mark("Windows run history... "), Mark("There was an error in cleaning the Run MRU. "), true,
     CleanRunHistory,
     {Mark("What was typed into Start, Run and into the address bar of Explorer.")}},
    {17, 24, "chkInstallFrom", Mark("Install from history"), "CleanInstallMRU", kMiscellaneous,
     kNone, Mark("Install from history..."),
     Mark("There was an error in cleaning Install MRU. "), true,
     CleanInstallFromHistory,
     {Mark("The places that programs were installed from, a list in the registry."),
      "", kHarmless, kAnyone, kUntilXp}},
    {18, 23, "chkFindHistory", Mark("Windows find history"), "CleanFindHistory", kMiscellaneous,
     kNone, "", Mark("There was an error in cleaning the Find History. "), true, CleanFindHistory,
     {Mark("What was searched for in Windows and in Explorer, lists in the registry.")}},
    {19, 14, "chkCache", Mark("Temporary Internet Files (Cache)"), "CleanCache", kInternet, kNone,
     Mark("Temporary Internet Files (Cache)..."),
     Mark("There was an error cleaning the Temporary Internet Files (Cache). "), false,
     CleanInternetCache,
     {Mark("Pages and pictures that Internet Explorer, Explorer and programs built on them have "
           "stored.")}},
    {20, 15, "chkCookies", Mark("Cookies"), "CleanCookies", kInternet, kNone, Mark("Cookies... "),
     Mark("There was an error in cleaning Cookies. "), false, CleanCookies,
     {Mark("Cookies of Internet Explorer and of programs built on it, but for those of the sites "
           "that you keep."), Mark("signs you out of web sites"), kHarmless}},
    // Typed URLs share the history's message.
    {21, 16, "chkURLHistory", Mark("Typed URLs"), "CleanTypedURL", kInternet, kNone,
     Mark("Typed URLs... "), kHistoryError, true, CleanTypedURLs,
     {Mark("The list of addresses under the address bar of Internet Explorer, with their times.")}},
    {22, 18, "chkOffline", Mark("Offline web pages"), "CleanOffline", kInternet, kNone,
     Mark("Offline web pages... "),
     Mark("There was an error in cleaning Offline Web Pages. "), false,
     CleanOfflinePages,
     {Mark("Pages that Internet Explorer keeps for reading offline."),
      "", kHarmless, kAnyone, kUntilXp}},
    {23, 13, "chkHistory", Mark("History"), "CleanHistory", kInternet, kNone, Mark("History..."),
     kHistoryError, false, CleanAddressHistory,
     {Mark("The addresses that were visited with Internet Explorer.")}},
    {24, 17, "chkActiveX", Mark("Downloaded ActiveX && OCX"), "CleanActiveX", kInternet, kNone,
     Mark("Downloaded ActiveX & OCX..."),
     Mark("There was an error in cleaning Downloaded ActiveX & OCX. "), false, CleanActiveX,
     {Mark("Controls that web pages have installed (Downloaded Program Files). A page that needs "
           "one asks for it again."), "", kHarmless, kNeedsRights}},
    {25, 26, "chkCleanMozillaCache", Mark("Cache"), "CleanMozillaCache", kFirefox, kNone, "",
     kFirefoxError, false, CleanFirefox,
     {Mark("Pages and pictures that Firefox has stored, in every profile.")}},
    {26, 29, "chkCleanMozillaCookies", Mark("Cookies"), "CleanMozillaCookies", kFirefox, kNone, "",
     kFirefoxError, false, CleanFirefox,
     {Mark("The cookies of Firefox, in every profile."),
      Mark("signs you out of web sites"), kHarmless}},
    {27, 28, "chkCleanMozillaForms", Mark("Saved form information"), "CleanMozillaForms", kFirefox,
     kNone, "", kFirefoxError, false, CleanFirefox,
     {Mark("What was typed into forms and the search bar of Firefox, in every profile."),
      Mark("what you typed into forms is lost"), kRisky}},
    {28, 27, "chkCleanMozillaPasswords", Mark("Saved passwords"), "CleanMozillaPasswords", kFirefox,
     kNone, "", kFirefoxError, false, CleanFirefox,
     {Mark("The passwords that Firefox has saved, in every profile."),
      Mark("saved passwords are lost"), kRisky}},
    {29, 30, "chkCleanMozillaHistory", Mark("History"), "CleanMozillaHistory", kFirefox, kNone, "",
     kFirefoxError, false, CleanFirefox,
     {Mark("The pages that were visited with Firefox, in every profile.")}},
    {30, 25, "chkCleanMozillaDownloads", Mark("Download manager history"), "CleanMozillaDownloads",
     kFirefox, kNone, "", kFirefoxError, false, CleanFirefox,
     {Mark("Firefox's list of downloads, in every profile. The downloaded files stay.")}},
}};
// clang-format on

}  // namespace

std::span<const Item> AllItems() { return kItems; }

const Item* FindItem(std::string_view name) {
  const auto found = std::ranges::find_if(kItems, [name](const Item& item) {
    return EqualsNoCase(item.key, name) || EqualsNoCase(item.control, name);
  });
  return found == kItems.end() ? nullptr : &*found;
}

std::string_view GroupTitle(Group group) {
  switch (group) {
    case kFolderFiles:
      return Mark("Folders and Files");
    case kMiscellaneous:
      return Mark("Miscellaneous");
    case kInternet:
      return Mark("Internet Explorer");
    case kFirefox:
      return Mark("Firefox");
  }
  return {};
}

}  // namespace quellix
