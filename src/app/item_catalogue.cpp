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
#include "plugins/mod_plugin.h"

namespace quellix {
namespace {

using enum Group;
using enum Protection;

constexpr bool kRisky = true, kHarmless = false;
constexpr Rights kNeedsRights = Rights::kAll, kNeedsSome = Rights::kSome, kAnyone = Rights::kNone;
constexpr int kUntilXp = 5;

constexpr const char* kHistoryError = "There was an error in cleaning the History. ";
constexpr const char* kFirefoxError = "There was an error in cleaning the Firefox files. ";

// The odd spellings of captions and messages are what users and their scripts know.
// clang-format off
constexpr std::array<Item, kItemCount> kItems = {{
    {1, 1, "chkRecycleBin", "Clean Recycle Bin", "CleanRecycleBin", kFolderFiles, kNone,
     "Recycle Bin... ", "There was an error in cleaning the Recycle Bin. ", false,
     CleanRecycleBin,
     {"All files and folders in the recycle bins of all drives.",
      "what was deleted cannot be restored any more", kRisky}},
    {2, 3, "chkActiveSetup", "Clean Active setup temporary folders", "ActiveSetupClean",
     kFolderFiles, kNone, "Active setup temporary folders... ",
     "There was an error in cleaning Active Setup Temporary Folders. . ", false, CleanActiveSetup,
     {"The download folders (msdownld.tmp) that installers leave on the drive of Windows.",
      "", kHarmless, kNeedsRights}},
    {3, 4, "chkIndexer", "Clean Content indexer folder", "CleanIndexer", kFolderFiles, kNone,
     "Content indexer folder... ", "There was an error in cleaning Indexer Files. ", false,
     CleanIndexer,
     {"Catalogues (catalog.wci) of the old indexing service, while that service is not "
      "running.", "", kHarmless, kNeedsRights, kUntilXp}},
    {4, 2, "chkUserDefinedFolders", "Clean User-defined folders", "CleanUserFolders",
     kFolderFiles, kNone, "User-defined folders... ",
     "There was an error in cleaning the User defined folders", false, CleanUserFolders,
     {"The files in the folders that are listed in the Options, in the temporary folders "
      "of Windows and in the list of recent Office documents."}},
    {5, 6, "chkUserDefinedFiles", "Clean User-defined files", "CleanUserFiles", kFolderFiles,
     kNone, "User-defined files... ", "There was an error in cleaning User Defined Files", false,
     CleanUserFiles,
     {"The files that are listed in the Options."}},
    {6, 7, "chkUnNecessaryFiles", "Clean Unnecessary files", "CleanUnnecessaryFiles",
     kFolderFiles, kNone, "Unnecessary files... ",
     "There was an error in cleaning Unnecessary Files. ", false,
     CleanUnnecessaryFiles,
     {"Searches the drives that are chosen in the Options for the file types that are "
      "ticked there. What is found is shown, and nothing goes before you say so."}},
    {7, 10, "chkRecentDocument", "Clean Recent documents", "CleanRecentDocs", kFolderFiles, kNone,
     "Recent documents... ", "There was an error in cleaning Recent Documents. ", false,
     CleanRecentDocuments,
     {"The shortcuts in the folder of recent documents, jump lists, and the lists of recent "
      "documents and of the dialogs that open and save files in the registry. The documents stay, "
      "and so do jump lists with pinned entries where the Options say so."}},
    {8, 11, "chkPrinter", "Clean Residual printer files", "CleanPrinter", kFolderFiles, kNone,
     "Residual printer files... ", "There was an error in cleaning Residual Printer Files. ",
     false, CleanPrinterFiles,
     {"Print jobs that were left over (*.spl) in the folder of the print spooler, with what was "
      "noted of each (*.shd).",
      "", kHarmless, kNeedsRights}},
    {9, 12, "chkDump", "Clean Memory dump files", "CleanMemDump", kFolderFiles, kNone,
     "Memory dump files... ", "There was an error in cleaning Memory Dump Files. ", false,
     CleanMemoryDumps,
     {"The memory dump that Windows writes after a crash, the small dumps, reports of drivers "
      "that hung (LiveKernelReports) and the dumps of your programs (CrashDumps).",
      "", kHarmless, kNeedsSome}},
    {10, 22, "chkTemp", "Clean Temporary files", "CleanTempFiles", kFolderFiles, kNone,
     "Temporary files... ", "There was an error in cleaning Temporary Files. ", false,
     CleanTempFiles,
     {"Everything in your temporary folder, with the folders in it."}},
    {11, 8, "chkEmptyFiles", "Clean Empty (zero-byte) files", "CleanEmptyFiles", kFolderFiles,
     kProtect1, "Empty (zero-byte) files... ", "There was an error in cleaning Empty Files. ",
     false, CleanEmptyFiles,
     {"Searches the drives that are chosen in the Options for files without content. "
      "What is found is shown, and nothing goes before you say so. Some programs need "
      "such files."}},
    {12, 9, "chkDeadShortcut", "Clean Dead (shortcut) links", "CleanShortcuts", kFolderFiles,
     kProtect2, "Dead (shortcut) links... ", "There was an error in cleaning Dead Shortcuts. ",
     false, CleanDeadShortcuts,
     {"Searches the drives that are chosen in the Options for shortcuts whose target is "
      "gone. What is found is shown, and nothing goes before you say so."}},
    {13, 21, "chkPlugins", "Clean Plugins", "CleanPlugins", kMiscellaneous, kNone, "Plugins... ",
     "There was an error in cleaning the plugins. . ", false, CleanPlugins,
     {"What the ticked plug-ins name: files, registry entries and parts of INI files."}},
    {14, 20, "chkOffice", "Clean MS Office history", "CleanOfficeHistory", kMiscellaneous, kNone,
     "MS Office history...", "There was an error in cleaning the MS OfficeRegistry History Lists. ",
     true, CleanOfficeHistory,
     {"The lists of recent files and folders of Microsoft Office in the registry, pinned ones "
      "included, and where Word was left off reading."}},
    {15, 19, "chkClipBoard", "Clean Windows clipboard", "CleanClipboard", kMiscellaneous, kNone,
     "Windows Clipboard...", "There was an error in cleaning the Clipboard", false,
     CleanClipboard,
     {"What was copied last, and the clipboard's history but for what is pinned there."}},
    {16, 5, "chkRunMRU", "Clean Windows run history", "CleanRunMRU", kMiscellaneous, kNone,
     "Windows run history... ", "There was an error in cleaning the Run MRU. ", true,
     CleanRunHistory,
     {"What was typed into Start, Run and into the address bar of Explorer."}},
    {17, 24, "chkInstallFrom", "Clean Install from history", "CleanInstallMRU", kMiscellaneous,
     kNone, "Install from history...", "There was an error in cleaning Install MRU. ", true,
     CleanInstallFromHistory,
     {"The places that programs were installed from, a list in the registry.",
      "", kHarmless, kAnyone, kUntilXp}},
    {18, 23, "chkFindHistory", "Clean Windows find history", "CleanFindHistory", kMiscellaneous,
     kNone, "", "There was an error in cleaning the Find History. ", true, CleanFindHistory,
     {"What was searched for in Windows and in Explorer, lists in the registry."}},
    {19, 14, "chkCache", "Clean Temporary Internet Files (Cache)", "CleanCache", kInternet, kNone,
     "Temporary Internet Files (Cache)...",
     "There was an error cleaning the Temporary Internet Files (Cache). ", false,
     CleanInternetCache,
     {"Pages and pictures that Internet Explorer, Explorer and programs built on them "
      "have stored."}},
    {20, 15, "chkCookies", "Clean Cookies", "CleanCookies", kInternet, kNone, "Cookies... ",
     "There was an error in cleaning Cookies. ", false, CleanCookies,
     {"Cookies of Internet Explorer and of programs built on it, but for those of the sites that "
      "you keep.",
      "signs you out of web sites", kHarmless}},
    // Typed URLs share the history's message.
    {21, 16, "chkURLHistory", "Clean Typed URLs", "CleanTypedURL", kInternet, kNone,
     "Typed URLs... ", kHistoryError, true, CleanTypedURLs,
     {"The list of addresses under the address bar of Internet Explorer, with their times."}},
    {22, 18, "chkOffline", "Clean Offline web pages", "CleanOffline", kInternet, kNone,
     "Offline web pages... ", "There was an error in cleaning Offline Web Pages. ", false,
     CleanOfflinePages,
     {"Pages that Internet Explorer keeps for reading offline.", "", kHarmless, kAnyone, kUntilXp}},
    {23, 13, "chkHistory", "Clean History", "CleanHistory", kInternet, kNone, "History...",
     kHistoryError, false, CleanAddressHistory,
     {"The addresses that were visited with Internet Explorer."}},
    {24, 17, "chkActiveX", "Clean Downloaded ActiveX && OCX", "CleanActiveX", kInternet, kNone,
     "Downloaded ActiveX & OCX...", "There was an error in cleaning Downloaded ActiveX & OCX. ",
     false, CleanActiveX,
     {"Controls that web pages have installed (Downloaded Program Files). A page that "
      "needs one asks for it again.", "", kHarmless, kNeedsRights}},
    {25, 26, "chkCleanMozillaCache", "Clean Cache", "CleanMozillaCache", kFirefox, kNone, "",
     kFirefoxError, false, CleanFirefox,
     {"Pages and pictures that Firefox has stored, in every profile."}},
    {26, 29, "chkCleanMozillaCookies", "Clean Cookies", "CleanMozillaCookies", kFirefox, kNone,
     "", kFirefoxError, false, CleanFirefox,
     {"The cookies of Firefox, in every profile.",
      "signs you out of web sites", kHarmless}},
    {27, 28, "chkCleanMozillaForms", "Clean Saved form information", "CleanMozillaForms",
     kFirefox, kNone, "", kFirefoxError, false, CleanFirefox,
     {"What was typed into forms and the search bar of Firefox, in every profile.",
      "what you typed into forms is lost", kRisky}},
    {28, 27, "chkCleanMozillaPasswords", "Clean Saved passwords", "CleanMozillaPasswords",
     kFirefox, kNone, "", kFirefoxError, false, CleanFirefox,
     {"The passwords that Firefox has saved, in every profile.",
      "saved passwords are lost", kRisky}},
    {29, 30, "chkCleanMozillaHistory", "Clean History", "CleanMozillaHistory", kFirefox, kNone,
     "", kFirefoxError, false, CleanFirefox,
     {"The pages that were visited with Firefox, in every profile."}},
    {30, 25, "chkCleanMozillaDownloads", "Clean Download manager history",
     "CleanMozillaDownloads", kFirefox, kNone, "", kFirefoxError, false, CleanFirefox,
     {"Firefox's list of downloads, in every profile. The downloaded files stay."}},
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
      return "Folders and Files";
    case kMiscellaneous:
      return "Miscellaneous";
    case kInternet:
      return "Internet Explorer";
    case kFirefox:
      return "Firefox";
  }
  return {};
}

}  // namespace quellix
