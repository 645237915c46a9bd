#include "plugins/recipe_cost.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>
#include <unordered_map>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "plugins/recipe_folders.h"

namespace quellix::modPlugin {
namespace {

struct Row {
  std::string_view text;
  bool loses_data;
  std::vector<std::string_view> files;    // names, or masks for an extension
  std::vector<std::string_view> folders;  // on the way to what goes; "a\\b" is b directly in a
};

// A name in a profile of a browser goes by a mask for anything too.
const std::vector<Row> kRows = {
    {Mark("keys and certificates are lost, with what they protect"),
     true,
     {"key3.db", "key4.db", "cert8.db", "cert9.db", "*.kdbx", "*.vcrd", "*.pfx", "*.p12",
      "*.keystore", "Local State"},
     {"Protect", "Crypto", "SystemCertificates", ".ssh", ".gnupg"}},
    {Mark("saved passwords are lost"),
     true,
     {"logins.json", "logins-backup.json", "Login Data", "Login Data For Account", "signons.sqlite",
      "passwords.txt", "wand.dat"},
     {"Vault", "Credentials", "Passwords"}},
    {Mark("open tabs and sessions are lost"),
     true,
     {"sessionstore.js", "sessionstore.jsonlz4", "sessionstore.bak", "Current Session",
      "Last Session", "Current Tabs", "Last Tabs", "recovery.jsonlz4", "session.json",
      "autosave.win"},
     {"sessionstore-backups", "Sessions"}},
    {Mark("what sites and programs have stored here is lost"),
     true,
     {"webappsstore.sqlite", "storage.sqlite", "storage-sync-v2.sqlite", "Web Data"},
     {"IndexedDB", "Local Storage", "Session Storage", "WebStorage", "databases", "File System",
      "Extension State", "Local Extension Settings", "Sync Extension Settings",
      "Managed Extension Settings", "Extension Rules", "Extension Scripts", "Storage\\ext",
      "storage\\default", "storage\\permanent", "browser-extension-data", "DOMStore"}},
    {Mark("work that was not saved, or its backups, may be lost"),
     true,
     {"*.asd", "*.autosave", "*.wbk", "*.xar", "*.recovery"},
     {"TabState", "WindowState", "UnsavedFiles", "AutoRecover", "AutoRecovery", "AutoSave",
      "AutoSaves", "AutoBackup", "AutoBackups", "Backup", "Backups", "Recovery", "Drafts",
      "Crash Recovery", "OfficeFileCache", "LocalHistory"}},
    {Mark("bookmarks or their backups are lost"),
     true,
     {"places.sqlite", "Bookmarks", "Bookmarks.bak", "bookmarks.html"},
     {"bookmarkbackups", "Favorites"}},
    {Mark("files in your own folders go"),
     true,
     {},
     {"%Documents%", "%Music%", "%Pictures%", "%Videos%", "%Desktop%", "%Downloads%"}},
    {Mark("sites sign you out"),
     false,
     {"cookies.sqlite", "Cookies", "Extension Cookies", "*.cookie"},
     {"Cookies", "INetCookies"}}};
constexpr size_t kPasswordsRow = 1, kStoresRow = 3, kOwnFoldersRow = 6;

// What lies in a profile of a user, or in that of all.
constexpr std::string_view kOwnFolders[] = {
    "DOCUMENTS",   "MY DOCUMENTS", "MUSIC",     "MY MUSIC",    "PICTURES",
    "MY PICTURES", "VIDEOS",       "MY VIDEOS", "DESKTOP",     "PUBLIC DOCUMENTS",
    "ONEDRIVE",    "DOWNLOADS",    "CONTACTS",  "SAVED GAMES", "3D OBJECTS"};

// Folders that hold profiles of browsers, and those that hold such folders.
constexpr std::string_view kHoldsProfiles[] = {"USER DATA", "PROFILES", "OPERA SOFTWARE"};
// How the folders of their channels begin.
constexpr std::string_view kChannels[] = {"CHROME",        "CHROMIUM", "EDGE",
                                          "BRAVE-BROWSER", "OPERA",    "VIVALDI"};
constexpr std::string_view kHoldsBrowsers[] = {
    "USER DATA", "PROFILES",  "FIREFOX",      "MOZILLA",       "THUNDERBIRD",   "CHROME",
    "GOOGLE",    "EDGE",      "CHROMIUM",     "BRAVE-BROWSER", "VIVALDI",       "BRAVESOFTWARE",
    "WATERFOX",  "SEAMONKEY", "OPERA STABLE", "LIBREWOLF",     "OPERA SOFTWARE"};

using Bits = uint32_t;  // one a row

// Names in upper case with the rows they cost.
using Index = std::unordered_map<std::string, Bits>;

Index IndexOf(std::vector<std::string_view> Row::*names) {
  Index index;
  for (size_t row = 0; row < kRows.size(); ++row) {
    for (const std::string_view name : kRows[row].*names) index[UpCase(name)] |= 1u << row;
  }
  return index;
}

bool IsOneOf(std::span<const std::string_view> names, std::string_view upper) {
  return std::ranges::find(names, upper) != names.end();
}

// How much of a mask stands for itself.
size_t Literals(std::string_view mask) {
  const auto is_wild = [](char c) { return c == '*' || c == '?'; };
  return mask.size() - static_cast<size_t>(std::ranges::count_if(mask, is_wild));
}

// Whether a mask means just such a name, and not anything.
bool Means(const std::string& mask, const std::string& name) {
  const std::string_view stem = std::string_view(mask).substr(0, mask.rfind('.'));
  return Literals(stem) > 0 && 2 * Literals(mask) >= name.size() && MatchesMask(name, mask);
}

Bits Find(const Index& index, const std::string& upper) {
  const auto found = index.find(upper);
  Bits bits = found == index.end() ? 0 : found->second;
  if (!HasNameWildcards(upper)) return bits;
  for (const auto& [name, rows] : index) {
    if (Means(upper, name)) bits |= rows;
  }
  return bits;
}

bool IsOwn(const std::string& name) {
  return std::ranges::any_of(kOwnFolders,
                             [&](std::string_view own) { return MatchesMask(own, name); });
}

Bits BitsOfFolders(const std::vector<std::string>& folders) {
  static const Index index = IndexOf(&Row::folders);
  Bits bits = 0;
  for (size_t i = 0; i < folders.size(); ++i) {
    bits |= Find(index, folders[i]);
    if (i > 0) bits |= Find(index, folders[i - 1] + "\\" + folders[i]);
  }
  const bool in_home =
      !folders.empty() && (folders[0] == "%USERPROFILE%" || folders[0] == "%PUBLIC%");
  const bool in_users = folders.size() > 3 && folders[1] == "USERS";
  const size_t own = in_home ? 1 : 3;
  const bool is_own = (in_home || in_users) && folders.size() > own && IsOwn(folders[own]);
  if (is_own || (!folders.empty() && folders[0] == "%ONEDRIVE%")) bits |= 1u << kOwnFoldersRow;
  return bits;
}

// Whether files are taken from profiles of browsers, whatever those are called.
bool IsProfile(const std::vector<std::string>& folders, bool recurse) {
  if (folders.empty()) return false;
  const std::string& last = folders.back();
  const auto begins = [&last](std::string_view channel) {
    return last.starts_with(channel) || (HasNameWildcards(last) && MatchesMask(channel, last));
  };
  if (recurse && (IsOneOf(kHoldsBrowsers, last) || std::ranges::any_of(kChannels, begins))) {
    return true;
  }
  size_t at = folders.size() - 1;  // of the profile itself
  while (at > 1 && FitsAnything(folders[at]) && !IsOneOf(kHoldsProfiles, folders[at - 1])) --at;
  return at > 0 && IsOneOf(kHoldsProfiles, folders[at - 1]);
}

// What holds stores of sites or programs and is taken with all below.
Bits BitsOfWhole(const std::vector<std::string>& folders, const FileEntry& entry) {
  const bool is_all = entry.recurse && FitsAnything(NamePart(entry.location));
  const bool is_store =
      !folders.empty() && (folders.back() == "STORAGE" || folders.back() == "LOCALSTATE");
  return is_all && is_store ? 1u << kStoresRow : 0;
}

// The names of a path in upper case, as it is carried out; none where it never is.
std::vector<std::string> NamesOf(std::string_view folder) {
  std::string path = UpCase(folder);
  std::ranges::replace(path, '/', '\\');
  const auto full = ParsePattern(path);
  std::vector<std::string> names =
      full ? full->names : NamesOfPath(path).value_or(std::vector<std::string>());
  if (full) names.insert(names.begin(), full->start);
  return names;
}

Bits BitsOfMask(const std::string& mask, bool in_profile) {
  static const Index index = IndexOf(&Row::files);
  Bits bits = Find(index, mask);
  const size_t dot = mask.rfind('.');
  if (dot != mask.npos) bits |= Find(index, "*" + mask.substr(dot));
  if (!in_profile) return bits;
  for (const auto& [name, rows] : index) {
    if (!HasNameWildcards(name) && MatchesMask(name, mask)) bits |= rows;
  }
  return bits;
}

Bits BitsOf(const std::vector<FileEntry>& files) {
  Bits bits = 0;
  std::vector<std::string> folders;
  std::string folder;
  for (const FileEntry& entry : files) {
    if (FolderPart(entry.location) != folder) {
      folder = FolderPart(entry.location);
      folders = NamesOf(folder);
      bits |= BitsOfFolders(folders);
    }
    bits |= BitsOfMask(UpCase(NamePart(entry.location)), IsProfile(folders, entry.recurse));
    bits |= BitsOfWhole(folders, entry);
  }
  return bits;
}

// Passwords and keys of hosts, and the saved sessions of terminals.
std::string_view CostOfKey(const RegistryEntry& entry) {
  const std::string upper = UpCase(entry.key + "\\" + entry.value_name);
  for (const std::string_view word : {"PASSWORD", "CREDENTIAL", "SSHHOSTKEYS"}) {
    if (upper.find(word) != upper.npos) return kRows[kPasswordsRow].text;
  }
  return upper.find("\\SESSIONS\\") != upper.npos ? Mark("saved sessions are lost") : "";
}

}  // namespace

std::vector<Cost> CostsOf(const Plugin& plugin) {
  std::vector<Cost> costs;
  const Bits bits = BitsOf(plugin.files);
  for (size_t row = 0; row < kRows.size(); ++row) {
    if (bits >> row & 1) costs.push_back({kRows[row].loses_data, std::string(kRows[row].text)});
  }
  for (const RegistryEntry& entry : plugin.registry) {
    const std::string_view text = CostOfKey(entry);
    const auto is_same = [text](const Cost& cost) { return cost.text == text; };
    if (!text.empty() && std::ranges::none_of(costs, is_same)) {
      costs.push_back({true, std::string(text)});
    }
  }
  return costs;
}

}  // namespace quellix::modPlugin
