#include "browser_tools/favorites.h"

#include <algorithm>
#include <map>

#include "browser_tools/favorite_files.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/url.h"
#include "platform/words.h"
#include "run/keep_list.h"
#include "run/known_folders.h"
#include "run/protected_places.h"
#include "run/removal.h"
#include "run/run_steps.h"
#include "run/stayed.h"

namespace quellix {
namespace {

constexpr uint64_t kLargestShortcut = 64u << 10;  // bytes
constexpr const char* kMachineFolders =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
constexpr std::string_view kExtensions[] = {".url", ".website"};

std::string_view ExtensionOf(std::string_view name) {
  const size_t dot = name.rfind('.');
  return dot == name.npos ? std::string_view() : name.substr(dot);
}

bool IsShortcut(std::string_view name) {
  return std::ranges::any_of(
      kExtensions, [name](std::string_view each) { return EqualsNoCase(ExtensionOf(name), each); });
}

// Those of the user and of all users that are there.
std::vector<std::string> FavoriteFolders(const Machine& machine) {
  std::vector<std::string> folders;
  if (const auto own = KnownFolder(machine, "Favorites")) folders.push_back(*own);
  const auto key =
      machine.registry.Open(RegistryRoot::kLocalMachine, kMachineFolders, RegistryAccess::kRead);
  const std::string common = key ? ReadFolderValue(machine, *key, "Common Favorites") : "";
  if (!common.empty()) folders.push_back(common);
  return folders;
}

// As browsers read it: blanks are escaped, "\\" is "/", and "//" may be missing.
std::string AsBrowsersRead(std::string_view address, size_t scheme) {
  std::string text(TrimBlanks(address));
  std::ranges::replace(text, '\\', '/');
  if (text.compare(scheme, 3, "://") != 0) text.insert(scheme + 1, "//");
  for (size_t blank = 0; (blank = text.find(' ', blank)) != text.npos;)
    text.replace(blank, 1, "%20");
  return text;
}

// Why an address leads nowhere; "" for one that may, whatever opens it.
std::string WhyMalformed(std::string_view address) {
  if (address.empty()) return Tr("it holds no address");
  const std::string scheme = SchemeOf(address);
  if (scheme.empty()) return Tr("http: or the like is missing before it");
  const bool is_web = scheme == "http" || scheme == "https";
  if (is_web && !ParseUrl(AsBrowsersRead(address, scheme.size())))
    return Tr("its address is none of the web");
  if (address.size() == scheme.size() + 1) return Tr("its address ends behind its beginning");
  return {};
}

// What an address holds that a server tells apart, but the way it is written.
std::string UpperEscapes(std::string_view text) {
  std::string same(text);
  for (size_t i = 0; i + 2 < same.size(); ++i) {
    if (same[i] != '%') continue;
    for (const size_t digit : {i + 1, i + 2}) {
      if (same[digit] >= 'a' && same[digit] <= 'f')
        same[digit] = static_cast<char>(same[digit] - 32);
    }
  }
  return same;
}

std::vector<std::string> FoldersIn(FileSystem& files, const std::string& folder) {
  std::vector<std::string> below;
  const bool is_listed = files.Enumerate(folder, Detail::kKind, [&](const Entry& entry) {
    if (!entry.info.is_folder || entry.info.is_link)
      throw Error(Error::Kind::kNotEmpty, Say("It is no longer empty."));
    below.push_back(folder + "\\" + std::string(entry.name));
    return true;
  });
  if (!is_listed) throw Error(Error::Kind::kMissing, Say("It is no longer there."));
  return below;
}

void RequireMayGo(CleaningContext& context, const std::string& path) {
  const std::unique_ptr<Folder> folder = context.machine.files.OpenFolder(path);
  if (!folder) throw Error(Error::Kind::kMissing, Say("It is no longer there."));
  const std::string_view line = KeepOf(context).ForFolder(folder->Id(), folder->Above());
  if (!line.empty()) throw Error(Error::Kind::kKept, std::string(line));
  const Sentence why = PlacesOf(context).WhyNot(*folder, "*.*", true, Claim::kOwnList);
  if (!why.empty()) throw Error(Error::Kind::kDenied, why);
}

// An empty folder with those in it. Throws Error.
void RemoveEmptyFolder(CleaningContext& context, const std::string& path) {
  RequireMayGo(context, path);
  FileList list;
  std::vector<std::string> folders{path};
  for (size_t i = 0; i < folders.size(); ++i) {
    list.PendingFolders.Append(folders[i] + "\\");
    for (std::string& below : FoldersIn(context.machine.files, folders[i]))
      folders.push_back(std::move(below));
  }
  RemovePendingFolders(context, list);
  if (context.machine.files.Look(path, Detail::kKind))
    throw Error(Error::Kind::kDenied, Say("It could not be removed."));
}

std::string AddressIn(const Machine& machine, const std::string& path) {
  const auto bytes = machine.files.ReadWholeFile(path, kLargestShortcut);
  if (!bytes) throw Error(Error::Kind::kMissing, Say("It is no longer there."));
  return ReadUrlFile(*bytes, machine.system);
}

// What no longer is what is listed stays. Throws Error.
void RequireSame(const Machine& machine, const FavoriteRow& row) {
  const auto info = machine.files.Look(row.path, Detail::kSize);
  if (!info) throw Error(Error::Kind::kMissing, Say("It is no longer there."));
  if (info->size > kLargestShortcut && row.address.empty()) return;
  if (AddressIn(machine, row.path) != row.address)
    throw Error(Error::Kind::kOther, Say("It holds another address by now."));
}

// Why a row stays, for the window; "" when it is gone, or the user has stopped.
std::string RemoveRow(CleaningContext& context, const FavoriteRow& row) {
  context.state.Entries->BeginRule(Mark("Favorites"));
  try {
    if (row.is_folder) {
      RemoveEmptyFolder(context, row.path);
      return {};
    }
    RequireSame(context.machine, row);
    Sentence reason;
    if (RemoveFile(context, row.path, Claim::kOwnList, &reason)) return {};
    return reason.empty() ? Tr("It stays.") : reason.shown;
  } catch (const Error& error) {
    return error.kind() == Error::Kind::kKept ? KeptSentence(error.what()).shown : Shown(error);
  }
}

}  // namespace

std::string_view FaultName(FavoriteFault fault) {
  constexpr std::string_view kNames[] = {"", "malformed", "duplicate", "emptyFolder", "unreadable"};
  return kNames[static_cast<size_t>(fault)];
}

std::string_view AnswerName(AddressAnswer::State state) {
  constexpr std::string_view kNames[] = {"", "answers", "moved", "gone", "unreachable"};
  return kNames[static_cast<size_t>(state)];
}

std::string ComparedAddress(std::string_view address) {
  const auto url = ParseUrl(address);
  if (!url || !url->IsWeb()) return std::string(TrimBlanks(address));
  Url same = *url;
  if (same.port == (same.scheme == "https" ? 443 : 80)) same.port = 0;
  const std::string user = same.user_info.empty() ? "" : same.user_info + "@";
  return user + UpperEscapes(RequestText(same)) + same.fragment;
}

void Favorites::TellProblem(const std::string& problem) { problem_ += problem + "\n"; }

void Favorites::Load(const Pause& pause) {
  rows_.clear();
  bookmarks_.clear();
  problem_.clear();
  seen_.clear();
  root_ = 0;
  try {
    // A setting that names a drive or Windows itself names no favorites.
    const std::string windows = machine_.system.WindowsFolder();
    for (const std::string& none : {windows, windows.substr(0, 3)}) {
      if (const auto folder = machine_.files.OpenFolder(none)) seen_.insert(folder->Id());
    }
    for (const std::string& folder : FavoriteFolders(machine_)) {
      if (machine_.files.Look(folder, Detail::kKind))
        LoadFolder(std::string(WithoutBackslash(folder)), "", pause);
      ++root_;
    }
  } catch (const Error& error) {
    TellProblem(Shown(error));
  }
  Judge();
}

// The folder of all users may lie in that of one, and a path be spelled in two ways.
bool Favorites::IsToBeRead(const std::string& folder, const std::string& place) {
  constexpr ptrdiff_t kDeepest = 64;
  if (std::ranges::count(place, '\\') > kDeepest) {
    TellProblem(Tr("%1 lies too deep to be listed.", folder));
    return false;
  }
  const std::unique_ptr<Folder> open = machine_.files.OpenFolder(folder);
  return open && (!open->Id().is_known() || seen_.insert(open->Id()).second);
}

// Depth by depth, its own files before those of its folders.
bool Favorites::LoadFolder(const std::string& folder, const std::string& place,
                           const Pause& pause) {
  if (!IsToBeRead(folder, place)) return true;
  std::vector<std::string> files, folders;
  bool has_files = false;
  const bool is_listed = machine_.files.Enumerate(folder, Detail::kKind, [&](const Entry& entry) {
    const bool is_folder = entry.info.is_folder && !entry.info.is_link;
    has_files = has_files || !is_folder;
    if (is_folder) folders.emplace_back(entry.name);
    if (!entry.info.is_folder && !entry.info.is_link && IsShortcut(entry.name))
      files.emplace_back(entry.name);
    return true;
  });
  if (!is_listed) TellProblem(Tr("%1 cannot be listed.", folder));
  has_files = has_files || !is_listed;
  const auto by_name = [](const std::string& a, const std::string& b) {
    return CompareNoCase(a, b) < 0;
  };
  std::ranges::sort(files, by_name);
  std::ranges::sort(folders, by_name);
  for (const std::string& name : files) {
    if (pause({.path = folder})) return true;
    AddFile(folder + "\\" + name, place);
  }
  for (const std::string& name : folders) {
    if (pause({.path = folder})) return true;
    const size_t at = rows_.size();
    const std::string path = folder + "\\" + name;
    const std::string below = place.empty() ? name : place + "\\" + name;
    if (LoadFolder(path, below, pause)) {
      has_files = true;
      continue;
    }
    rows_.resize(at);  // those in it go with it
    rows_.push_back({.path = path,
                     .name = name,
                     .place = place,
                     .fault = FavoriteFault::kEmptyFolder,
                     .note = Tr("no file is in it"),
                     .is_folder = true});
  }
  return has_files;
}

void Favorites::AddFile(const std::string& path, const std::string& place) {
  FavoriteRow row{.path = path, .place = place, .root = root_};
  row.name = NamePart(path);
  row.name.resize(row.name.size() - ExtensionOf(row.name).size());
  try {
    const auto info = machine_.files.Look(path, Detail::kSize);
    if (!info) return;
    if (info->size > kLargestShortcut) {
      row.fault = FavoriteFault::kUnreadable;
      row.note = Tr("its file is larger than any Internet shortcut");
    } else {
      row.address = AddressIn(machine_, path);
    }
  } catch (const Error& error) {
    row.fault = FavoriteFault::kUnreadable;
    row.note = Shown(error);
  }
  rows_.push_back(std::move(row));
}

void Favorites::LoadBookmarks(std::string_view bytes, std::string_view file, const Pause& pause) {
  std::vector<Bookmark> bookmarks = ReadBookmarks(bytes, machine_.system, pause);
  if (bookmarks.empty()) {
    throw Error(Error::Kind::kOther, Say("%1 holds no bookmarks in the form that browsers export "
                                         "(an HTML file).",
                                         file));
  }
  rows_.clear();
  problem_.clear();
  bookmarks_ = file;
  for (Bookmark& bookmark : bookmarks) {
    if (bookmark.is_folder && !bookmark.is_empty) continue;
    FavoriteRow row{.name = std::move(bookmark.name),
                    .place = std::move(bookmark.place),
                    .address = std::move(bookmark.address),
                    .is_folder = bookmark.is_folder};
    if (row.is_folder) {
      row.fault = FavoriteFault::kEmptyFolder;
      row.note = Tr("no address is in it");
    }
    rows_.push_back(std::move(row));
  }
  Judge();
}

// The first of those with the same address is the one that stays. What all users have is no
// duplicate of what one of them has.
void Favorites::Judge() {
  std::map<std::pair<size_t, std::string>, size_t> first;
  for (size_t i = 0; i < rows_.size(); ++i) {
    FavoriteRow& row = rows_[i];
    if (row.is_folder || row.fault != FavoriteFault::kNone) continue;
    row.note = WhyMalformed(row.address);
    if (!row.note.empty()) {
      row.fault = FavoriteFault::kMalformed;
      continue;
    }
    const auto [found, is_first] = first.try_emplace({row.root, ComparedAddress(row.address)}, i);
    if (is_first) continue;
    const FavoriteRow& twin = rows_[found->second];
    row.fault = FavoriteFault::kDuplicate;
    row.note =
        Tr("the same address as %1", (twin.place.empty() ? "" : twin.place + "\\") + twin.name);
  }
}

std::string Favorites::Text(size_t row, FavoriteColumn column) const {
  const FavoriteRow& shown = rows_[row];
  switch (column) {
    case FavoriteColumn::kName:
      return shown.name;
    case FavoriteColumn::kPlace:
      return shown.place;
    case FavoriteColumn::kAddress:
      return shown.address;
    case FavoriteColumn::kState:
      break;
  }
  std::string text = shown.note.empty() ? shown.answer.text : shown.note;
  if (!shown.note.empty() && !shown.answer.text.empty())
    // TRANSLATORS: What is the matter with an address, and what came of asking for it.
    text = Tr("%1; %2", shown.note, shown.answer.text);
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 32);
  return text;
}

void Favorites::CheckMarked() {
  for (FavoriteRow& row : rows_) row.checked = row.IsMarked() && !row.path.empty();
}

std::vector<size_t> Favorites::CheckedRows() const {
  std::vector<size_t> rows;
  for (size_t i = 0; i < rows_.size(); ++i) {
    if (rows_[i].checked) rows.push_back(i);
  }
  return rows;
}

// Each address once, whoever else has it.
void Favorites::Ask(Http& http, const Pause& pause) {
  std::map<std::string, std::vector<size_t>> rows_of;
  std::vector<std::string> addresses;
  for (size_t i = 0; i < rows_.size(); ++i) {
    FavoriteRow& row = rows_[i];
    row.answer = {};
    const auto url = ParseUrl(row.address);
    if (row.fault == FavoriteFault::kMalformed || !url || !url->IsWeb()) continue;
    std::vector<size_t>& rows = rows_of[RequestText(*url)];
    if (rows.empty()) addresses.push_back(RequestText(*url));
    rows.push_back(i);
  }
  AskAddresses(
      http, machine_.system, addresses,
      [&](size_t index, const AddressAnswer& answer) {
        for (const size_t row : rows_of[addresses[index]]) rows_[row].answer = answer;
      },
      pause);
}

std::string Favorites::QuestionFor(size_t count) const {
  if (count == 0) return {};
  const bool backs_up = Settings(machine_).Load().RemovalMode == kBackUp;
  const bool has_folders = std::ranges::any_of(
      rows_, [](const FavoriteRow& row) { return row.checked && row.is_folder; });
  const std::string number = std::to_string(count);
  const std::string question = backs_up
                                   ? TrN("Move %1 favorite into a backup?",
                                         "Move %1 favorites into a backup?", count, number)
                                   : TrN("Move %1 favorite into the recycle bin?",
                                         "Move %1 favorites into the recycle bin?", count, number);
  return has_folders ? question + " " + Tr("Empty folders are removed for good.") : question;
}

void Favorites::Delete(CleaningContext& context, const std::vector<size_t>& rows) {
  RunState& state = context.state;
  stayed_.clear();
  state.AbortRequested = false;
  LoadRemovalOptions(context);
  state.RemovalMode = state.RemovalMode == kBackUp ? kBackUp : kRecycle;
  state.Strict = true;  // without its backup nothing goes
  std::vector<bool> gone(rows_.size());
  state.Files = {.total = rows.size()};
  for (const size_t row : rows) {
    context.view.ShowFiles(state.Files);
    if (StopsRun(context)) break;
    const FavoriteRow& favorite = rows_[row];
    if (favorite.path.empty()) continue;
    const std::string why = RemoveRow(context, favorite);
    ++state.Files.done;
    gone[row] = why.empty() && !state.AbortRequested;
    if (!why.empty()) stayed_ += favorite.path + ": " + why + "\n";
  }
  state.Files = {};
  context.view.ShowFiles({});
  CloseBackup(context);
  size_t row = 0;
  std::erase_if(rows_, [&](const FavoriteRow&) { return gone[row++]; });
  // What was the second of two is the only one by now.
  for (FavoriteRow& each : rows_) {
    each.checked = false;
    if (each.fault != FavoriteFault::kDuplicate) continue;
    each.fault = FavoriteFault::kNone;
    each.note.clear();
  }
  Judge();
}

std::string Favorites::Status() const {
  const auto count = [this](auto fits) {
    return static_cast<size_t>(std::ranges::count_if(rows_, fits));
  };
  const size_t addresses = count([](const FavoriteRow& row) { return !row.is_folder; });
  const size_t marked = count([](const FavoriteRow& row) { return row.IsMarked(); });
  return TrN("%1 address, %2 marked", "%1 addresses, %2 marked", addresses,
             std::to_string(addresses), std::to_string(marked));
}

}  // namespace quellix
