#include "cleaners/mod_mozilla.h"

#include <cmath>
#include <functional>

#include "app/run_steps.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr std::string_view kCacheItem = "CleanMozillaCache";

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
      {"CleanMozillaCookies", {"cookies.txt", "cookperm.txt"}}};
  return kMasks;
}

using FolderTest = std::function<bool(std::string_view folder)>;

void DeleteFound(CleaningContext& context, const std::string& path, uint64_t size) {
  try {
    context.machine.files.RemoveFile(path);
  } catch (const Error&) {  // counted all the same, as it always was
  }
  context.state.MozillaFilesDeleted += 1;
  context.state.MozillaSpaceGained += static_cast<double>(size);
}

double Find(CleaningContext& context, const std::string& folder, std::string_view mask,
            const FolderTest& deletes_in) {
  struct Found {
    std::string name;
    uint64_t size;
  };
  std::vector<std::string> folders;
  std::vector<Found> files;
  context.machine.files.Enumerate(folder, Detail::kFull, [&](const Entry& entry) {
    if (entry.info.is_folder && !entry.info.is_link) folders.emplace_back(entry.name);
    if (!entry.info.is_folder && MatchesMask(entry.name, mask)) {
      files.push_back({std::string(entry.name), entry.info.size});
    }
    context.view.Yield();
    return !context.state.AbortRequested;
  });
  double bytes = 0;
  for (const Found& file : files) {
    if (context.state.AbortRequested) break;
    bytes += static_cast<double>(file.size);
    if (deletes_in(folder)) DeleteFound(context, folder + file.name, file.size);
    context.view.Yield();
  }
  context.state.MozillaSpaceFound += bytes;
  for (const std::string& name : folders) {
    bytes += Find(context, folder + name + "\\", mask, deletes_in);
  }
  return bytes;
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
  return Find(context, WithBackslash(folder), mask, [](std::string_view) { return true; });
}

double FindMozillaCacheFiles(CleaningContext& context, std::string_view folder,
                             std::string_view mask) {
  return Find(context, WithBackslash(folder), mask,
              [](std::string_view found_in) { return found_in.ends_with("\\Cache\\"); });
}

}  // namespace modMozilla

void CleanMozilla(CleaningContext& context, const Item& item) {
  BeginItem(context, item);
  const std::string folder = modMozilla::GetFirefoxProfilesFolder(context.machine.system);
  const auto search =
      item.key == kCacheItem ? modMozilla::FindMozillaCacheFiles : modMozilla::FindMozillaFiles;
  if (!folder.empty()) NotePlaceIfFolder(context, folder);
  context.state.WhyNothing = folder.empty() ? "Firefox is looked for on Windows 95 to 7 only."
                                            : "There is no folder " + folder + ".";
  context.machine.files.Anchor(folder);
  for (const Masks& row : AllMasks()) {
    if (folder.empty() || row.key != item.key) continue;
    for (const std::string_view mask : row.masks) search(context, folder, mask);
  }
  EndRun(context, "");
  AddToTotals(context.state);
}

}  // namespace quellix
