#include "cleaners/history_cleaners.h"

#include <optional>
#include <span>
#include <vector>

#include "cleaners/skeleton.h"
#include "cleaners/user_lists.h"
#include "platform/text.h"
#include "registry_tools/registry_eraser.h"
#include "run/run_steps.h"

namespace quellix {
namespace {

constexpr RegistryRoot kUser = RegistryRoot::kCurrentUser;
constexpr const char* kRunHistory =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\RunMRU\\";
// What was typed into Explorer's address bar.
constexpr const char* kTypedPaths =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\TypedPaths";
constexpr const char* kTypedURLs = "Software\\Microsoft\\Internet Explorer\\TypedURLs\\";
constexpr const char* kTypedURLsTime = "Software\\Microsoft\\Internet Explorer\\TypedURLsTime";

constexpr const char* kFindLists[] = {
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Doc Find Spec MRU",
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FindComputerMRU",
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\PrnPortsMRU",
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\MenuOrder\\Start Menu\\Find\\Menu",
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\MenuOrder\\Start Menu\\Find",
    "Software\\Microsoft\\Internet Explorer\\Explorer Bars\\"
    "{C4EE31F3-4768-11D2-BE5C-00A0C9A83DA1}\\ContainingTextMRU",
    "Software\\Microsoft\\Internet Explorer\\Explorer Bars\\"
    "{C4EE31F3-4768-11D2-BE5C-00A0C9A83DA1}\\FilesNamedMRU",
    "Software\\Microsoft\\Search Assistant\\ACMru"};
constexpr size_t kFindListsThatStay = 3;  // emptied, but their keys are kept

// Since Windows 7 and 8: Explorer's search box, and the search beside Start.
constexpr const char* kTodaysFindLists[] = {
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\WordWheelQuery",
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\WordWheelQuery\\*",
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\SearchHistory",
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\SearchHistory\\*"};

// Clears a list with its like of today and counts their values, those that hold a list's order
// included: the count has always been told so.
void CleanCountedKeys(CleaningContext& context, const Item& item, const char* key,
                      const char* todays_key) {
  BeginItem(context, item);
  UserLists lists(context);
  lists.AddValues(key);
  lists.AddToday(todays_key);
  const size_t count = lists.Erase().gone;
  EndRun(context, "");
  AppendCountLine(context, item, count);
}

// The file lists of one Office application below "Software\Microsoft\Office\" and the version.
struct OfficeApplication {
  const char* name;     // in the key of its dialogs
  const char* dialogs;  // separated by ";"
  const char* recent;   // in the key of its recent files
};

constexpr OfficeApplication kOfficeApplications[] = {
    {"Microsoft Access",
     "Backup Database;Convert Database Into;Convert from database;File New Database;Import;"
     "New From Existing File;Open",
     "Access"},
    {"Microsoft Excel", "Open;Save As", "Excel"},
    {"Microsoft FrontPage",
     "File Open;New Publish Location & strtemp1;Open File;Picture;Save As;"
     "Select Background Picture",
     "FrontPage"},
    {"Microsoft PowerPoint", "Open;Save As", "PowerPoint"},
    {"Microsoft Word", "Insert Picture;Open;Save As", "Word"}};

// This one name is a key of its own, with nothing behind it; earlier versions cleared just that.
constexpr const char* kPublishLocation = "New Publish Location & strtemp1";

// Applications that a user signed in to keep his lists by his account.
constexpr int kFirstOfToday = 11, kLastOfToday = 16;
constexpr const char* kTodaysOfficeLists[] = {
    "*\\File MRU", "*\\Place MRU", "*\\User MRU\\*\\File MRU", "*\\User MRU\\*\\Place MRU",
    "Word\\Reading Locations\\*"};

}  // namespace

void CleanRunHistory(CleaningContext& context, const Item& item) {
  CleanCountedKeys(context, item, kRunHistory, kTypedPaths);
}

void CleanTypedURLs(CleaningContext& context, const Item& item) {
  CleanCountedKeys(context, item, kTypedURLs, kTypedURLsTime);
}

// Writes no line of its own.
void CleanFindHistory(CleaningContext& context, const Item& item) {
  BeginItem(context, item);
  UserLists lists(context);
  for (const char* key : kFindLists) lists.AddValues(key);
  for (const char* key : kTodaysFindLists) lists.AddToday(key);
  lists.Erase();
  std::vector<RegistryTarget> trees;
  for (const char* key : std::span(kFindLists).subspan(kFindListsThatStay)) {
    trees.push_back({RegistryTarget::Kind::kTree, kUser, key});
  }
  RegistryEraser::OfRun(context).Erase(trees);
  EndRun(context, "");
}

// The key stands directly below the user's root; users of this list know it there.
void CleanInstallFromHistory(CleaningContext& context, const Item& item) {
  CleanByAction(context, item, [&] { ClearUserKey(context, "InstallLocationsMRU\\"); });
}

void CleanClipboard(CleaningContext& context, const Item& item) {
  CleanByAction(context, item, [&] {
    const RunEntry entry{.kind = EntryKind::kClipboard};
    if (!IsChosen(context.state, entry)) return NotePlace(context.state);
    context.machine.shell.EmptyClipboard();
    NoteEntry(context.state, entry);
    NotePlace(context.state);
  });
}

std::vector<std::string> OfficeLists(std::string_view version) {
  std::vector<std::string> keys;
  const std::string office = "Software\\Microsoft\\Office\\" + std::string(version);
  for (const OfficeApplication& application : kOfficeApplications) {
    const std::string settings =
        office + "\\Common\\Open Find\\" + application.name + "\\Settings\\";
    for (const std::string& dialog : Split(application.dialogs, ';')) {
      const char* const list = dialog == kPublishLocation ? "" : "\\File Name MRU\\";
      keys.push_back(settings + dialog + list);
    }
    // The backslash in front names no key, so recent files stay; that is how it always was.
    keys.push_back("\\" + office + "\\" + application.recent + "\\Recent Files\\");
  }
  return keys;
}

void CleanOfficeVersionHistory(CleaningContext& context, std::string_view version) {
  UserLists lists(context);
  for (const std::string& key : OfficeLists(version)) lists.AddValues(key);
  lists.Erase();
}

// Of Office 2003 and later, whose applications share one form.
void CleanTodaysOfficeHistory(CleaningContext& context) {
  UserLists lists(context);
  for (int version = kFirstOfToday; version <= kLastOfToday; ++version) {
    const std::string office = "Software\\Microsoft\\Office\\" + std::to_string(version) + ".0\\";
    for (const char* list : kTodaysOfficeLists) lists.AddToday(office + list);
  }
  lists.Erase();
}

void CleanOfficeHistory(CleaningContext& context, const Item& item) {
  CleanByAction(context, item, [&] {
    std::optional<Error> problem;  // one version does not keep the others
    const auto attempt = [&problem](const auto& clean) {
      try {
        clean();
      } catch (const Error& error) {
        problem = error;
      }
    };
    for (const char* version : {"10.0", "9.0", "8.0"}) {
      attempt([&] { CleanOfficeVersionHistory(context, version); });
    }
    attempt([&] { CleanTodaysOfficeHistory(context); });
    if (problem) throw Error(*problem);
  });
}

}  // namespace quellix
