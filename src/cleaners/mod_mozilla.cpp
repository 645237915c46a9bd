#include "cleaners/mod_mozilla.h"

#include <cmath>
#include <memory>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/run_limits.h"
#include "run/run_steps.h"
#include "run/working_folder.h"
#include "search/folder_walk.h"

namespace quellix {
namespace {

constexpr std::string_view kCacheItem = "CleanMozillaCache";

constexpr std::string_view kCookieFile = "cookies.txt";

struct Masks {
  std::string_view key;
  std::vector<std::string_view> masks;  // in the order they are searched for
};

const std::vector<Masks>& AllMasks() {
  static const std::vector<Masks> kMasks = {
      {kCacheItem, {"*.*"}},
      {"CleanMozillaHistory", {"history.dat"}},
      {"CleanMozillaDownloads", {"downloads.rdf"}},
      {"CleanMozillaPasswords", {"*.s", "signons.txt", "ac-weights.txt"}},
      {"CleanMozillaForms", {"*.w", "formhistory.dat"}},
      {"CleanMozillaCookies", {kCookieFile, "cookperm.txt"}}};
  return kMasks;
}

// Deletes what fits a mask, folder by folder, or only counts it.
class MozillaVisitor : public FolderVisitor {
 public:
  // Only folders whose path ends in `end` are deleted in.
  MozillaVisitor(CleaningContext& context, std::string_view mask, std::string_view end)
      : context_(context), limits_(context), mask_(mask), end_(end) {}

  Detail Needs() const override { return Detail::kFull; }
  bool Wants(const std::string&) override { return true; }
  void File(Folder& folder, const std::string& path, const Entry& entry) override {
    if (!MatchesMask(entry.name, mask_) || limits_.Leaves(&folder, path, entry)) return;
    if (HoldsKeptCookies(path, entry)) return;
    bytes_ += static_cast<double>(entry.info.size);
    if (path.ends_with(end_)) Delete(folder, path, entry);
  }
  double bytes() const { return bytes_; }

 private:
  // These files hold the cookies of all sites: while some site is kept, they stay whole.
  bool HoldsKeptCookies(const std::string& path, const Entry& entry) {
    if (!MatchesMask(entry.name, kCookieFile) || !KeepOf(context_).has_sites()) return false;
    NoteKept(context_.state, path + std::string(entry.name), "site:");
    return true;
  }

  // A failure is noted, and the file counted all the same, as it always was.
  void Delete(Folder& folder, const std::string& path, const Entry& entry) {
    try {
      if (PlacesOf(context_).IsSparedFile(folder, folder.Id(), entry.name)) return;
      RunEntry file = FileEntry(path + std::string(entry.name), entry.info);
      if (!IsChosen(context_.state, file)) return;
      folder.RemoveFile(entry.name);
      NoteEntry(context_.state, std::move(file));
    } catch (const Error& error) {
      NoteStayed(context_.state, path + std::string(entry.name), error);
    }
    context_.state.MozillaFilesDeleted += 1;
    context_.state.MozillaSpaceGained += static_cast<double>(entry.info.size);
  }

  CleaningContext& context_;
  RunLimits limits_;
  std::string mask_;
  std::string end_;
  double bytes_ = 0;
};

// The bytes of what fits.
double Find(CleaningContext& context, std::string_view path, std::string_view mask,
            std::string_view end) {
  std::unique_ptr<Folder> folder;
  try {
    folder = context.machine.files.OpenFolder(path);
  } catch (const Error&) {  // finds nothing
  }
  if (!folder) return 0;
  NotePlace(context.state);
  if (!PlacesOf(context).WhyNot(*folder, mask, true, Claim::kItem).empty()) return 0;
  MozillaVisitor visitor(context, mask, end);
  WalkFolder(*folder, path, WalkOrder::kFilesFirst, &PlacesOf(context), visitor, PauseOf(context));
  context.state.MozillaSpaceFound += visitor.bytes();
  return visitor.bytes();
}

// Each item adds again what the Firefox items before it have counted: the counters start only once
// a run, and the totals of earlier versions are compared with ours.
void AddToTotals(RunState& state) {
  state.RunSpaceGained += state.MozillaSpaceGained;
  state.RunFilesDeleted =
      static_cast<int32_t>(std::nearbyint(state.RunFilesDeleted + state.MozillaFilesDeleted));
}

}  // namespace

namespace modMozilla {

std::string GetWindowsVersionName(const WindowsVersion& version) {
  switch (version.major) {
    case 4:
      if (version.platform == 2) return "NT";
      return version.minor == 0 ? "95" : "98";
    case 5:
      return version.minor == 0 ? "2K" : version.minor == 1 ? "XP" : "";
    case 6:
      return version.minor == 0 ? "Vista" : version.minor == 1 ? "Win7" : "";
    default:
      return "";
  }
}

std::string GetFirefoxProfilesFolder(System& system) {
  const std::string name = GetWindowsVersionName(system.Version());
  if (name.empty()) return {};
  const bool in_windows = name == "98" || name == "95";
  return system.Environment(in_windows ? "WINDIR" : "USERPROFILE").value_or("") +
         "\\Application Data\\Mozilla\\Firefox\\Profiles\\";
}

double FindMozillaFiles(CleaningContext& context, std::string_view folder, std::string_view mask) {
  return Find(context, WithBackslash(folder), mask, "");
}

double FindMozillaCacheFiles(CleaningContext& context, std::string_view folder,
                             std::string_view mask) {
  return Find(context, WithBackslash(folder), mask, "\\Cache\\");
}

}  // namespace modMozilla

void CleanMozilla(CleaningContext& context, const Item& item) {
  BeginItem(context, item);
  const std::string folder = modMozilla::GetFirefoxProfilesFolder(context.machine.system);
  const auto search =
      item.key == kCacheItem ? modMozilla::FindMozillaCacheFiles : modMozilla::FindMozillaFiles;
  context.state.WhyNothing = folder.empty() ? Log("There is no profile of Firefox.")
                                            : Log("There is no folder %1.", folder);
  for (const Masks& row : AllMasks()) {
    if (folder.empty() || row.key != item.key) continue;
    for (const std::string_view mask : row.masks) search(context, folder, mask);
  }
  EndRun(context, "");
  AddToTotals(context.state);
}

}  // namespace quellix
