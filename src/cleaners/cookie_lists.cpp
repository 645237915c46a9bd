#include "cleaners/cookie_lists.h"

#include <algorithm>
#include <set>
#include <utility>

#include "cleaners/skeleton.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "settings/own_files.h"

namespace quellix {
namespace {

constexpr char kSeparator = '\x01';

constexpr std::string_view kFile = "ck.txt";

bool IsCookieFile(std::string_view name) {
  return std::ranges::any_of(Split(kCookieFiles, ';'),
                             [name](const std::string& mask) { return MatchesMask(name, mask); });
}

// The cookie files below a folder, which ends in "\"; no link lists any.
void Collect(FileSystem& files, const std::string& folder, std::vector<std::string>& paths) {
  std::vector<std::string> folders;
  files.Enumerate(folder, Detail::kKind, [&](const Entry& entry) {
    const std::string path = folder + std::string(entry.name);
    if (entry.info.is_folder) {
      folders.push_back(path + "\\");
    } else if (IsCookieFile(entry.name)) {
      paths.push_back(path);
    }
    return true;
  });
  for (const std::string& each : folders) Collect(files, each, paths);
}

void Sort(std::vector<std::string>& paths) {
  std::ranges::sort(paths, {}, [](const std::string& path) {
    return std::pair(UpCase(NamePart(path)), UpCase(path));
  });
}

std::vector<std::string> ReadKeepList(const Machine& machine) {
  std::vector<std::string> paths;
  for (const std::string& entry : Split(ReadKeptCookies(machine), kSeparator)) {
    const size_t start = entry.find_first_not_of("\r\n");
    const size_t end = entry.find_last_not_of("\r\n");
    if (start != entry.npos) paths.push_back(entry.substr(start, end - start + 1));
  }
  return paths;
}

// Takes the rows out of a list.
std::vector<std::string> TakeOut(std::vector<std::string>& list, std::span<const size_t> rows) {
  std::vector<std::string> taken;
  for (const size_t row : rows) taken.push_back(std::exchange(list[row], ""));
  std::erase(list, "");
  return taken;
}

}  // namespace

std::string ReadKeptCookies(const Machine& machine) {
  return DecodeText(machine.files.ReadWholeFile(FoundPath(machine, kFile)).value_or(""),
                    machine.system);
}

CookieLists::CookieLists(const Machine& machine) : machine_(machine) {
  const std::string folder =
      FolderFromRegistry(machine, RegistryRoot::kCurrentUser, kShellFolders, "Cookies");
  if (!folder.empty()) Collect(machine.files, WithBackslash(folder), all_);
  Sort(all_);
  try {
    kept_ = ReadKeepList(machine);
    Sort(kept_);
    saved_ = kept_;
  } catch (const Error& error) {
    problem_ = Tr("ck.txt could not be read, so it stays as it is. %1", Shown(error));
  }
  ListRest();
}

void CookieLists::ListRest() {
  std::set<std::string> kept;
  for (const std::string& path : kept_) kept.insert(UpCase(path));
  on_machine_.clear();
  std::ranges::copy_if(all_, std::back_inserter(on_machine_),
                       [&kept](const std::string& path) { return !kept.contains(UpCase(path)); });
}

void CookieLists::Keep(std::span<const size_t> rows) {
  if (!problem_.empty()) return;
  std::ranges::move(TakeOut(on_machine_, rows), std::back_inserter(kept_));
  Sort(kept_);
}

void CookieLists::Release(std::span<const size_t> rows) {
  TakeOut(kept_, rows);
  ListRest();
}

// One line for all, each path followed by the separator: the form that other versions read.
void CookieLists::Save() {
  if (!changed()) return;
  std::string text;
  for (const std::string& path : kept_) text += path + kSeparator;
  MakeProgramFolder(machine_);
  machine_.files.WriteWholeFile(OwnPath(machine_, kFile), text + "\r\n");
  saved_ = kept_;
}

}  // namespace quellix
