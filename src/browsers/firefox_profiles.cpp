#include "browsers/firefox_profiles.h"

#include <algorithm>
#include <set>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/profile_strings.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr const char* kFirefox = "\\Mozilla\\Firefox\\";
// In any profile that was ever used.
constexpr const char* kMarks[] = {"prefs.js", "times.json", "places.sqlite", "cookies.sqlite"};

// Where Firefox keeps profiles, and their caches by the same names.
struct Root {
  std::string profiles, caches;
};

std::vector<std::string> FoldersBelow(FileSystem& files, const std::string& path,
                                      std::string_view mask) {
  try {
    const auto folder = files.OpenFolder(path);
    return folder ? FoldersIn(*folder, mask) : std::vector<std::string>();
  } catch (const Error&) {
    return {};
  }
}

std::vector<Root> FindRoots(const Machine& machine) {
  const std::string roaming = machine.system.Environment("APPDATA").value_or("");
  const std::string local = machine.system.Environment("LOCALAPPDATA").value_or("");
  std::vector<Root> roots;
  if (!roaming.empty()) roots.push_back({roaming + kFirefox, local + kFirefox});
  if (local.empty()) return roots;
  const std::string packages = local + "\\Packages\\";
  for (const std::string& name : FoldersBelow(machine.files, packages, "Mozilla.*")) {
    const std::string cache = packages + name + "\\LocalCache\\";
    roots.push_back({cache + "Roaming" + kFirefox, cache + "Local" + kFirefox});
  }
  return roots;
}

// A profile as profiles.ini names it.
struct Named {
  std::string path;
  bool is_relative = false;
};

std::vector<Named> ReadProfilesIni(const Machine& machine, const std::string& file) {
  std::vector<Named> profiles;
  try {
    const auto bytes = machine.files.ReadWholeFile(file);
    const std::string decoded = DecodeIni(bytes.value_or(""), machine.system);
    std::string_view text = decoded;
    bool in_profile = false;
    while (!text.empty()) {
      const IniLine line = ParseIniLine(TakeLine(text));
      if (line.kind == IniLine::kSection) {
        in_profile = EqualsNoCase(line.name.substr(0, 7), "Profile");
        if (in_profile) profiles.emplace_back();
      } else if (in_profile && line.kind == IniLine::kKey) {
        if (EqualsNoCase(line.name, "Path")) profiles.back().path = line.value;
        if (EqualsNoCase(line.name, "IsRelative")) profiles.back().is_relative = line.value == "1";
      }
    }
  } catch (const Error&) {  // the usual folder is looked through all the same
  }
  for (Named& profile : profiles) std::ranges::replace(profile.path, '/', '\\');
  std::erase_if(profiles, [](const Named& profile) { return profile.path.empty(); });
  return profiles;
}

class Finder {
 public:
  explicit Finder(const Machine& machine) : files_(machine.files) {}

  void Add(const std::string& path, const std::string& cache_path) {
    try {
      std::shared_ptr<Folder> folder = files_.OpenFolder(path);
      if (!folder || !IsProfile(*folder) || !seen_.insert(folder->Id()).second) return;
      found_.push_back({std::string(NamePart(WithoutBackslash(path))), WithBackslash(path),
                        WithBackslash(cache_path), std::move(folder)});
    } catch (const Error&) {  // a link, or one that may not be opened
    }
  }
  std::vector<BrowserProfile> Take() { return std::move(found_); }

 private:
  static bool IsProfile(Folder& folder) {
    return std::ranges::any_of(
        kMarks, [&](const char* name) { return folder.Look(name, Detail::kKind).has_value(); });
  }

  FileSystem& files_;
  std::set<FileId> seen_;
  std::vector<BrowserProfile> found_;
};

}  // namespace

std::vector<BrowserProfile> FindFirefoxProfiles(const Machine& machine) {
  Finder finder(machine);
  for (const Root& root : FindRoots(machine)) {
    for (const Named& named : ReadProfilesIni(machine, root.profiles + "profiles.ini")) {
      // What is elsewhere has its cache with it.
      named.is_relative ? finder.Add(root.profiles + named.path, root.caches + named.path)
                        : finder.Add(named.path, named.path);
    }
    for (const std::string& name : FoldersBelow(machine.files, root.profiles + "Profiles\\", "*")) {
      finder.Add(root.profiles + "Profiles\\" + name, root.caches + "Profiles\\" + name);
    }
  }
  return finder.Take();
}

}  // namespace quellix
