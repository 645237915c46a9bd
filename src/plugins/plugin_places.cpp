#include "plugins/plugin_places.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "run/precious_names.h"

namespace quellix::modPlugin {
namespace {

constexpr const char* kNoFullPath = Mark("it is not the full path of a folder.");
constexpr const char* kEverything = Mark("it is all that such a folder holds.");
constexpr const char* kNoVariable = Mark("a variable in it has no value on this machine.");

// A drive's hidden share ("\\server\C$") as that drive, and "ADMIN$" as the Windows folder: what is
// precious there is so here. The server may be this machine by any of its names.
std::string WithoutServer(System& system, const std::string& folder) {
  if (!folder.starts_with("\\\\")) return folder;
  const size_t share = folder.find('\\', 2) + 1;
  const size_t end = std::min(folder.find('\\', share), folder.size());
  const std::string name = folder.substr(share, end - share), rest = folder.substr(end);
  if (EqualsNoCase(name, "ADMIN$")) return system.WindowsFolder() + rest;
  const bool is_drive = name.size() == 2 && name[1] == '$';
  const auto letter = static_cast<char>(name.empty() ? 0 : name[0] & ~0x20);
  return is_drive && letter >= 'A' && letter <= 'Z' ? name.substr(0, 1) + ":" + rest : folder;
}

// Why not by the name a folder has on this machine.
Sentence WhyNotOpened(const Machine& machine, ProtectedPlaces& places, const std::string& folder,
                      const FileEntry& entry) {
  try {
    const auto opened = machine.files.OpenFolder(folder.size() == 2 ? folder + "\\" : folder);
    if (!opened) return {};
    return places.WhyNot(*opened, NamePart(entry.location), entry.recurse, Claim::kRecipe);
  } catch (const Error& error) {
    return SentenceOf(error);
  }
}

Sentence WhyNotEdited(const Machine& machine, ProtectedPlaces& places, const std::string& path) {
  try {
    return places.WhyNotEdit(*OpenFolderOf(machine.files, path), path);
  } catch (const Error& error) {
    return error.kind() == Error::Kind::kMissing ? Sentence() : SentenceOf(error);
  }
}

// What a share of this machine is here.
Sentence WhyNotByServer(const Machine& machine, ProtectedPlaces& places, const std::string& folder,
                        const FileEntry& entry) {
  const std::string local = WithoutServer(machine.system, folder);
  return local == folder ? Sentence() : WhyNotOpened(machine, places, local, entry);
}

// Each folder of a folder with all that is in it would be that folder by another name, and so would
// each folder of those.
Sentence WhyNotAll(const Machine& machine, ProtectedPlaces& places, const FileEntry& entry,
                   const PathPattern& path, std::string_view folder) {
  Sentence why;
  if (!entry.recurse || !FitsAnything(NamePart(entry.location))) return why;
  for (size_t i = path.names.size(); i-- > 0 && FitsAnything(path.names[i]) && why.empty();) {
    folder = WithoutBackslash(FolderPart(folder));
    if (!WhyNotFolder(machine, places, std::string(folder), entry).empty()) why = Say(kEverything);
  }
  return why;
}

void AddFolders(const Machine& machine, ProtectedPlaces& places, const FileEntry& entry,
                const PathPattern& path, const Pause& pause, Judging judging, FilesPlace& place) {
  for (std::string& folder : FindMatches(machine.files, path, pause)) {
    Sentence why = judging == Judging::kHere ? WhyNotFolder(machine, places, folder, entry)
                                             : WhyNotByServer(machine, places, folder, entry);
    if (why.empty()) why = WhyNotAll(machine, places, entry, path, folder);
    if (why.empty()) {
      place.folders.push_back(std::move(folder));
    } else {
      place.refusals.push_back(Refusal(folder + "\\" + place.mask, why));
    }
  }
}

}  // namespace

Sentence Refusal(std::string_view what, const Sentence& why) {
  return Say("%1 is not cleaned: %2", what, why);
}

FilesPlace FindFolders(const Machine& machine, ProtectedPlaces& places, const FileEntry& entry,
                       const Pause& pause, Judging judging) {
  FilesPlace place;
  place.mask = NamePart(entry.location);
  const auto refuse = [&](std::string_view what, const Sentence& why) {
    place.refusals.push_back(Refusal(what, why));
  };
  if (!MayBeFileName(place.mask)) {
    refuse(entry.location, Say("no file can have such a name."));
    return place;
  }
  const auto sides = ExpandFolder(machine, FolderPart(entry.location), entry.both_sides);
  if (sides.empty()) refuse(entry.location, Say(kNoVariable));
  for (const std::string& side : sides) {
    const std::optional<PathPattern> path = ParsePattern(side);
    if (!path) {
      refuse(entry.location, Say(kNoFullPath));
    } else if (path->names.empty() && (entry.recurse || !HasHarmlessExtension(place.mask))) {
      refuse(entry.location,
             Say("it is a whole drive."));  // known without a look, which may be denied
    } else {
      AddFolders(machine, places, entry, *path, pause, judging, place);
    }
  }
  return place;
}

Sentence WhyNotFolder(const Machine& machine, ProtectedPlaces& places, const std::string& folder,
                      const FileEntry& entry) {
  Sentence why = WhyNotOpened(machine, places, folder, entry);
  return why.empty() ? WhyNotByServer(machine, places, folder, entry) : why;
}

IniPlace FindIni(const Machine& machine, ProtectedPlaces& places, const IniEntry& entry) {
  std::string path = entry.folder + entry.file_name;
  if (path.find('%') != std::string::npos) {
    path = ExpandPluginPath(machine, path);
    if (path.empty()) return {"", Refusal(entry.folder + entry.file_name, Say(kNoVariable))};
  }
  const std::optional<PathPattern> full = ParsePattern(path);
  if (!full || full->names.empty() || full->HasWildcards()) {
    return {"", Refusal(path, Say("it is not the full path of a file."))};
  }
  path = full->start;
  for (const std::string& name : full->names) path += "\\" + name;
  const Sentence why = WhyNotEdited(machine, places, path);
  return why.empty() ? IniPlace{path, {}} : IniPlace{"", Refusal(path, why)};
}

}  // namespace quellix::modPlugin
