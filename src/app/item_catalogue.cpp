#include "app/item_catalogue.h"

#include <algorithm>
#include <array>

#include "cleaners/folder_cleaners.h"
#include "cleaners/history_cleaners.h"
#include "cleaners/internet_cleaners.h"
#include "cleaners/junk_cleaners.h"
#include "cleaners/mod_mozilla.h"
#include "cleaners/user_defined.h"
#include "platform/text.h"
#include "plugins/mod_plugin.h"

namespace quellix {
namespace {

using enum Group;
using enum Protection;

constexpr const char* kHistoryError = "There was an error in cleaning the History. ";
constexpr const char* kFirefoxError = "There was an error in cleaning the Firefox files. ";

// The odd spellings of captions and messages are what users and their scripts know.
// clang-format off
constexpr std::array<Item, 30> kItems = {{
    {1, 1, "chkRecycleBin", "Clean Recycle Bin", "CleanRecycleBin", kFolderFiles, kNone,
     "Recycle Bin... ", "There was an error in cleaning the Recycle Bin. ", false,
     CleanRecycleBin, "what was deleted cannot be restored any more", true},
    {2, 3, "chkActiveSetup", "Clean Active setup temporary folders", "ActiveSetupClean",
     kFolderFiles, kNone, "Active setup temporary folders... ",
     "There was an error in cleaning Active Setup Temporary Folders. . ", false, CleanActiveSetup},
    {3, 4, "chkIndexer", "Clean Content indexer folder", "CleanIndexer", kFolderFiles, kNone,
     "Content indexer folder... ", "There was an error in cleaning Indexer Files. ", false,
     CleanIndexer},
    {4, 2, "chkUserDefinedFolders", "Clean User-defined folders", "CleanUserFolders",
     kFolderFiles, kNone, "User-defined folders... ",
     "There was an error in cleaning the User defined folders", false, CleanUserFolders},
    {5, 6, "chkUserDefinedFiles", "Clean User-defined files", "CleanUserFiles", kFolderFiles,
     kNone, "User-defined files... ", "There was an error in cleaning User Defined Files", false,
     CleanUserFiles},
    {6, 7, "chkUnNecessaryFiles", "Clean Unnecessary files", "CleanUnnecessaryFiles",
     kFolderFiles, kNone, "Unnecessary files... ",
     "There was an error in cleaning Unnecessary Files. ", false,
     CleanUnnecessaryFiles},
    {7, 10, "chkRecentDocument", "Clean Recent documents", "CleanRecentDocs", kFolderFiles, kNone,
     "Recent documents... ", "There was an error in cleaning Recent Documents. ", false, CleanRecentDocuments},
    {8, 11, "chkPrinter", "Clean Residual printer files", "CleanPrinter", kFolderFiles, kNone,
     "Residual printer files... ", "There was an error in cleaning Residual Printer Files. ",
     false, CleanPrinterFiles},
    {9, 12, "chkDump", "Clean Memory dump files", "CleanMemDump", kFolderFiles, kNone,
     "Memory dump files... ", "There was an error in cleaning Memory Dump Files. ", false,
     CleanMemoryDumps},
    {10, 22, "chkTemp", "Clean Temporary files", "CleanTempFiles", kFolderFiles, kNone,
     "Temporary files... ", "There was an error in cleaning Temporary Files. ", false,
     CleanTempFiles},
    {11, 8, "chkEmptyFiles", "Clean Empty (zero-byte) files", "CleanEmptyFiles", kFolderFiles,
     kProtect1, "Empty (zero-byte) files... ", "There was an error in cleaning Empty Files. ",
     false, CleanEmptyFiles},
    {12, 9, "chkDeadShortcut", "Clean Dead (shortcut) links", "CleanShortcuts", kFolderFiles,
     kProtect2, "Dead (shortcut) links... ", "There was an error in cleaning Dead Shortcuts. ",
     false, CleanDeadShortcuts},
    {13, 21, "chkPlugins", "Clean Plugins", "CleanPlugins", kMiscellaneous, kNone, "Plugins... ",
     "There was an error in cleaning the plugins. . ", false, CleanPlugins},
    {14, 20, "chkOffice", "Clean MS Office history", "CleanOfficeHistory", kMiscellaneous, kNone,
     "MS Office history...", "There was an error in cleaning the MS OfficeRegistry History Lists. ",
     true, CleanOfficeHistory},
    {15, 19, "chkClipBoard", "Clean Windows clipboard", "CleanClipboard", kMiscellaneous, kNone,
     "Windows Clipboard...", "There was an error in cleaning the Clipboard", false,
     CleanClipboard},
    {16, 5, "chkRunMRU", "Clean Windows run history", "CleanRunMRU", kMiscellaneous, kNone,
     "Windows run history... ", "There was an error in cleaning the Run MRU. ", true,
     CleanRunHistory},
    {17, 24, "chkInstallFrom", "Clean Install from history", "CleanInstallMRU", kMiscellaneous,
     kNone, "Install from history...", "There was an error in cleaning Install MRU. ", true,
     CleanInstallFromHistory},
    {18, 23, "chkFindHistory", "Clean Windows find history", "CleanFindHistory", kMiscellaneous,
     kNone, "", "There was an error in cleaning the Find History. ", true, CleanFindHistory},
    {19, 14, "chkCache", "Clean Temporary Internet Files (Cache)", "CleanCache", kInternet, kNone,
     "Temporary Internet Files (Cache)...",
     "There was an error cleaning the Temporary Internet Files (Cache). ", false, CleanInternetCache},
    {20, 15, "chkCookies", "Clean Cookies", "CleanCookies", kInternet, kNone, "Cookies... ",
     "There was an error in cleaning Cookies. ", false, CleanCookies, "signs you out of web sites", false},
    // Typed URLs share the history's message.
    {21, 16, "chkURLHistory", "Clean Typed URLs", "CleanTypedURL", kInternet, kNone,
     "Typed URLs... ", kHistoryError, true, CleanTypedURLs},
    {22, 18, "chkOffline", "Clean Offline web pages", "CleanOffline", kInternet, kNone,
     "Offline web pages... ", "There was an error in cleaning Offline Web Pages. ", false,
     CleanOfflinePages},
    {23, 13, "chkHistory", "Clean History", "CleanHistory", kInternet, kNone, "History...",
     kHistoryError, false, CleanAddressHistory},
    {24, 17, "chkActiveX", "Clean Downloaded ActiveX && OCX", "CleanActiveX", kInternet, kNone,
     "Downloaded ActiveX & OCX...", "There was an error in cleaning Downloaded ActiveX & OCX. ",
     false, CleanActiveX},
    {25, 26, "chkCleanMozillaCache", "Clean Cache", "CleanMozillaCache", kFirefox, kNone, "",
     kFirefoxError, false, CleanMozilla},
    {26, 29, "chkCleanMozillaCookies", "Clean Cookies", "CleanMozillaCookies", kFirefox, kNone,
     "", kFirefoxError, false, CleanMozilla, "signs you out of web sites", false},
    {27, 28, "chkCleanMozillaForms", "Clean Saved form information", "CleanMozillaForms",
     kFirefox, kNone, "", kFirefoxError, false, CleanMozilla, "what you typed into forms is lost", true},
    {28, 27, "chkCleanMozillaPasswords", "Clean Saved passwords", "CleanMozillaPasswords",
     kFirefox, kNone, "", kFirefoxError, false, CleanMozilla, "saved passwords are lost", true},
    {29, 30, "chkCleanMozillaHistory", "Clean History", "CleanMozillaHistory", kFirefox, kNone,
     "", kFirefoxError, false, CleanMozilla},
    {30, 25, "chkCleanMozillaDownloads", "Clean Download manager history",
     "CleanMozillaDownloads", kFirefox, kNone, "", kFirefoxError, false, CleanMozilla},
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
