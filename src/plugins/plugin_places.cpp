#include "plugins/plugin_places.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "run/precious_names.h"
#include "run/protected_keys.h"

namespace quellix::modPlugin {
namespace {

constexpr const char* kNoFullPath = "it is not the full path of a folder.";
constexpr const char* kNoVariable = "a variable in it has no value on this machine.";
constexpr const char* kCurrentConfig = "SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current\\";

std::string Refusal(std::string_view what, std::string_view why) {
  return std::string(what).append(" is not cleaned: ").append(why);
}

std::string ProgramFiles(System& system) {
  std::string folder = system.Environment("ProgramFiles").value_or("");
  if (!folder.empty()) return folder;
  const std::string system_folder = system.SystemFolder();
  if (system_folder.substr(1, 1) != ":") return {};
  return system_folder.substr(0, 2) + "\\Program Files";
}

// The parts of a folder behind "C:" or "\\server\share", as Windows reads them: without empty
// parts, and without blanks and dots at their ends. Nothing when a part is a step ("..") or has a
// character no name can have.
std::optional<std::vector<std::string>> PartsOf(std::string_view folder) {
  std::vector<std::string> parts;
  for (const std::string& part : Split(folder, '\\')) {
    if (part.empty()) continue;
    const size_t last = part.find_last_not_of(" .");
    if (last == std::string::npos) return std::nullopt;
    if (part != "*" && part.find_first_of("*?\"<>|:") != std::string::npos) return std::nullopt;
    parts.push_back(part.substr(0, last + 1));
  }
  return parts;
}

bool IsDriveLetter(std::string_view text) {
  const char upper = text.empty() ? '\0' : static_cast<char>(text[0] & ~0x20);
  return text.size() == 2 && upper >= 'A' && upper <= 'Z' && text[1] == ':';
}

struct FullPath {
  std::string start;  // "C:" or "\\server\share"
  std::vector<std::string> parts;
};

std::optional<FullPath> ToFullPath(std::string folder) {
  for (char& character : folder) {
    if (character == '/') character = '\\';
  }
  const bool is_share = folder.starts_with("\\\\");
  FullPath path{folder.substr(0, 2), {}};
  const bool has_drive =
      IsDriveLetter(path.start) && folder.substr(2, 1).find_first_not_of('\\') == std::string::npos;
  if (!is_share && !has_drive) return std::nullopt;
  auto parts = PartsOf(folder.substr(2));
  if (!parts || (is_share && parts->size() < 2)) return std::nullopt;
  if (is_share) {
    path.start += (*parts)[0] + "\\" + (*parts)[1];
    parts->erase(parts->begin(), parts->begin() + 2);
  }
  path.parts = std::move(*parts);
  return path;
}

// A drive's hidden share ("\\server\C$") as that drive, and "ADMIN$" as the Windows folder: what is
// precious there is so here. The server may be this machine by any of its names.
std::string WithoutServer(System& system, const std::string& folder) {
  if (!folder.starts_with("\\\\")) return folder;
  const size_t share = folder.find('\\', 2) + 1;
  const size_t end = std::min(folder.find('\\', share), folder.size());
  const std::string name = folder.substr(share, end - share), rest = folder.substr(end);
  if (EqualsNoCase(name, "ADMIN$")) return system.WindowsFolder() + rest;
  const bool is_drive = name.size() == 2 && name[1] == '$';
  return is_drive && IsDriveLetter(name.substr(0, 1) + ":") ? name.substr(0, 1) + ":" + rest
                                                            : folder;
}

// Why not by the name a folder has on this machine.
std::string WhyNotOpened(const Machine& machine, ProtectedPlaces& places, const std::string& folder,
                         const FileEntry& entry) {
  try {
    const auto opened = machine.files.OpenFolder(folder.size() == 2 ? folder + "\\" : folder);
    if (!opened) return {};
    return places.WhyNot(*opened, NamePart(entry.location), entry.recurse, Claim::kRecipe);
  } catch (const Error& error) {
    return error.what();
  }
}

std::string WhyNotEdited(const Machine& machine, ProtectedPlaces& places, const std::string& path) {
  try {
    return places.WhyNotEdit(*OpenFolderOf(machine.files, path), path);
  } catch (const Error& error) {
    return error.kind() == Error::Kind::kMissing ? "" : error.what();
  }
}

// Finds the folders a path with "*" parts stands for.
class FolderSearch {
 public:
  FolderSearch(FileSystem& files, const FullPath& path, const Pause& pause)
      : files_(files), path_(path), pause_(pause) {}

  std::vector<std::string> Find() {
    Descend(path_.start, 0);
    return std::move(found_);
  }

 private:
  // Folders behind a "*" have to be there, and so no deeper than the disk is.
  void Descend(std::string folder, size_t depth, bool behind_star = false) {
    for (; depth < path_.parts.size() && path_.parts[depth] != "*"; ++depth) {
      folder += "\\" + path_.parts[depth];
      if (behind_star && !IsRealFolder(folder)) return;
    }
    if (depth == path_.parts.size()) {
      found_.push_back(std::move(folder));
      return;
    }
    if (pause_()) return;
    for (const std::string& name : SubFolders(folder)) {
      Descend(folder + "\\" + name, depth + 1, true);
    }
  }

  bool IsRealFolder(const std::string& folder) {
    const std::optional<FileInfo> info = files_.Look(folder, Detail::kKind);
    return info && info->is_folder && !info->is_link;
  }

  std::vector<std::string> SubFolders(const std::string& folder) {
    std::vector<std::string> names;
    files_.Enumerate(folder + "\\", Detail::kKind, [&names](const Entry& entry) {
      if (entry.info.is_folder && !entry.info.is_link) names.emplace_back(entry.name);
      return true;
    });
    return names;
  }

  FileSystem& files_;
  const FullPath& path_;
  const Pause& pause_;
  std::vector<std::string> found_;
};

std::string WithoutEmptyParts(std::string_view subkey) {
  std::string result;
  for (const std::string& part : Split(subkey, '\\')) {
    if (!part.empty()) result += (result.empty() ? "" : "\\") + part;
  }
  return result;
}

// By what the key is, or by its name where it is not there or cannot be opened.
bool IsProtected(Registry& registry, RegistryRoot root, const std::string& subkey,
                 ProtectedKeys::Part part) {
  if (ProtectedKeys::KeepsPath(root, subkey, part)) return true;
  try {
    const auto key = registry.Open(root, subkey, RegistryAccess::kRead);
    return key && ProtectedKeys::Keeps(*key, part);
  } catch (const Error&) {
    return false;  // what cannot be opened cannot be deleted either, and that is told
  }
}

}  // namespace

std::string ExpandPluginPath(System& system, std::string_view text) {
  const struct {
    const char* name;
    std::string (*folder)(System&);
  } kVariables[] = {{"%PROGDIR%", ProgramFiles},
                    {"%SYSDIR%", [](System& of) { return of.SystemFolder(); }},
                    {"%WINDIR%", [](System& of) { return of.WindowsFolder(); }}};
  std::string result(text);
  for (const auto& variable : kVariables) {
    if (!ContainsNoCase(result, variable.name)) continue;
    const std::string folder = variable.folder(system);
    if (folder.empty()) return {};
    result = ReplaceNoCase(result, variable.name, folder);
  }
  return ExpandEnvironment(system, result);
}

FilesPlace FindFolders(const Machine& machine, ProtectedPlaces& places, const FileEntry& entry,
                       const Pause& pause) {
  FilesPlace place;
  place.mask = NamePart(entry.location);
  std::string folder(FolderPart(entry.location));
  if (folder.find('%') != std::string::npos) {
    folder = ExpandPluginPath(machine.system, folder);
    if (folder.empty()) {
      place.refusals.push_back(Refusal(entry.location, kNoVariable));
      return place;
    }
  }
  const std::optional<FullPath> path = ToFullPath(folder);
  if (!path) {
    place.refusals.push_back(Refusal(entry.location, kNoFullPath));
    return place;
  }
  // Known without a look at it, which a server may not grant.
  if (path->parts.empty() && (entry.recurse || !HasHarmlessExtension(place.mask))) {
    place.refusals.push_back(Refusal(entry.location, "it is a whole drive."));
    return place;
  }
  for (std::string& found : FolderSearch(machine.files, *path, pause).Find()) {
    const std::string why = WhyNotFolder(machine, places, found, entry);
    if (why.empty()) {
      place.folders.push_back(std::move(found));
    } else {
      place.refusals.push_back(Refusal(found + "\\" + place.mask, why));
    }
  }
  return place;
}

std::string WhyNotFolder(const Machine& machine, ProtectedPlaces& places, const std::string& folder,
                         const FileEntry& entry) {
  std::string why = WhyNotOpened(machine, places, folder, entry);
  const std::string local = WithoutServer(machine.system, folder);
  return why.empty() && local != folder ? WhyNotOpened(machine, places, local, entry) : why;
}

KeyPlace FindKey(Registry& registry, const RegistryEntry& entry) {
  const size_t end = std::min(entry.key.find('\\'), entry.key.size());
  const uint32_t handle = RootKeyFromName(std::string_view(entry.key).substr(0, end));
  if (handle == 0) return {{}, "", Refusal(entry.key, "it begins with no known root key.")};
  KeyPlace place;
  place.subkey = WithoutEmptyParts(std::string_view(entry.key).substr(end));
  if (handle <= RootKeyFromName("HKEY_USERS")) {
    place.root = static_cast<RegistryRoot>(handle - RootKeyFromName("HKEY_CLASSES_ROOT"));
  } else if (handle == RootKeyFromName("HKEY_CURRENT_CONFIG")) {
    place.root = RegistryRoot::kLocalMachine;
    place.subkey.insert(0, kCurrentConfig);
  } else {
    place.refusal = Refusal(entry.key, "nothing can be removed below that root key.");
    return place;
  }
  using ProtectedKeys::Part;
  const Part part = entry.delete_subkey ? Part::kTree : Part::kValue;
  if (IsProtected(registry, *place.root, place.subkey, part)) {
    place.root.reset();
    place.refusal = Refusal(entry.key,
                            "it is, or holds, a root key, one of its main branches or what Windows "
                            "depends on.");
  }
  return place;
}

IniPlace FindIni(const Machine& machine, ProtectedPlaces& places, const IniEntry& entry) {
  std::string path = entry.folder + entry.file_name;
  if (path.find('%') != std::string::npos) {
    path = ExpandPluginPath(machine.system, path);
    if (path.empty()) return {"", Refusal(entry.folder + entry.file_name, kNoVariable)};
  }
  const std::optional<FullPath> full = ToFullPath(path);
  if (!full || full->parts.empty() || path.find('*') != std::string::npos) {
    return {"", Refusal(path, "it is not the full path of a file.")};
  }
  path = full->start;
  for (const std::string& part : full->parts) path += "\\" + part;
  const std::string why = WhyNotEdited(machine, places, path);
  return why.empty() ? IniPlace{path, ""} : IniPlace{"", Refusal(path, why)};
}

}  // namespace quellix::modPlugin
