#include "search/empty_folders.h"

#include <algorithm>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/user_profiles.h"
#include "platform/words.h"
#include "run/stayed.h"
#include "run/working_folder.h"

namespace quellix {
namespace {

constexpr std::string_view kOfVersionControl[] = {"\\.git\\", "\\.hg\\", "\\.svn\\", "\\.bzr\\"};
constexpr const char* kPrograms[] = {"ProgramFiles", "ProgramFiles(x86)", "ProgramFiles(Arm)",
                                     "ProgramW6432"};

bool Has(const std::vector<FileId>& ids, const FileId& id) {
  return std::ranges::find(ids, id) != ids.end();
}

void AddId(FileSystem& files, const std::string& path, std::vector<FileId>& ids) {
  try {
    if (const auto folder = files.OpenLinked(path)) ids.push_back(folder->Id());
  } catch (const Error&) {  // nothing is found in it either
  }
}

constexpr const char* kShellFolders[] = {"\\AppData\\Roaming\\Microsoft\\Windows",
                                         "\\AppData\\Local\\Microsoft\\Windows"};

// By its path, of profiles that no list knows: on another disk, in a copy, the template for new
// users.
bool IsExpectedInProfiles(std::string_view upper) {
  constexpr std::string_view kTemp = "\\APPDATA\\LOCAL\\TEMP\\";
  constexpr std::string_view kOfShell[] = {"\\APPDATA\\ROAMING\\MICROSOFT\\WINDOWS\\",
                                           "\\APPDATA\\LOCAL\\MICROSOFT\\WINDOWS\\"};
  return upper.ends_with(kTemp) ||
         upper.substr(std::min<size_t>(2, upper.size())) == "\\PERFLOGS\\" ||
         std::ranges::any_of(kOfShell, [upper](std::string_view place) {
           return upper.find(place) != std::string_view::npos;
         });
}

}  // namespace

EmptyFolderGuard::EmptyFolderGuard(CleaningContext& context) : context_(context) {
  System& system = context.machine.system;
  const std::string drive = system.WindowsFolder().substr(0, 3);
  installed_ = {system.WindowsFolder(), drive + "Program Files", drive + "Program Files (x86)"};
  for (const char* const name : kPrograms) {
    if (const auto path = system.Environment(name)) installed_.push_back(*path);
  }
  for (std::string& path : installed_) {
    AddId(context.machine.files, path, installed_ids_);
    path = WithBackslash(path);
  }
  AddId(context.machine.files, system.TempFolder(), temporary_);
  AddProfiles();
}

void EmptyFolderGuard::AddProfiles() {
  FileSystem& files = context_.machine.files;
  const std::string windows = context_.machine.system.WindowsFolder();
  try {
    for (const UserProfile& user : ListedProfiles(context_.machine.registry, windows)) {
      AddId(files, user.profile + "\\AppData\\Local\\Temp", temporary_);
      for (const char* const name : kShellFolders) AddId(files, user.profile + name, of_shell_);
    }
  } catch (const Error&) {  // a registry that cannot be read names no profile
  }
}

bool EmptyFolderGuard::Enters(const std::string& path) const {
  const auto is_it = [&path](const std::string& other) { return EqualsNoCase(path, other); };
  return std::ranges::none_of(installed_, is_it) &&
         std::ranges::none_of(kOfVersionControl, [&path](std::string_view name) {
           return path.size() >= name.size() &&
                  EqualsNoCase(std::string_view(path).substr(path.size() - name.size()), name);
         });
}

Sentence EmptyFolderGuard::WhyNot(const std::string& path) {
  const auto folder = context_.machine.files.OpenFolder(path);
  if (!folder) throw Error(Error::Kind::kMissing, Say("It is no longer there."));
  ProtectedPlaces& places = PlacesOf(context_);
  const Sentence why = places.WhyNot(*folder, "*.*", true, Claim::kRecipe);
  if (!why.empty()) return Say("%1 is not removed: %2", path, why);
  const std::vector<FileId> above = folder->Above();
  const auto is_in = [this](const FileId& id) { return Has(installed_ids_, id); };
  if (is_in(folder->Id()) || std::ranges::any_of(above, is_in))
    return Say("It lies where Windows or programs are installed: %1", path);
  const std::string upper = UpCase(WithBackslash(path));
  const auto is_shells = [this](const FileId& id) { return Has(of_shell_, id); };
  const bool is_of_shell = is_shells(folder->Id()) || std::ranges::any_of(above, is_shells);
  if (places.IsNoted(*folder) || Has(temporary_, folder->Id()) || is_of_shell ||
      IsExpectedInProfiles(upper))
    return Say("Windows or its programs expect this folder: %1", path);
  const bool is_versions = std::ranges::any_of(kOfVersionControl, [&](std::string_view name) {
    return upper.find(UpCase(name)) != std::string::npos;
  });
  return is_versions ? Say("Version control needs this folder: %1", path) : Sentence();
}

Removal RemoveEmptyFolder(CleaningContext& context, const std::string& path) {
  Removal removal{Removal::kStays};
  const std::string plain(WithoutBackslash(path));
  try {
    const Sentence why = EmptyFolderGuard(context).WhyNot(plain);
    if (!why.empty()) throw Error(Error::Kind::kDenied, why);
    const FileList alone;
    WorkingFolder working(context, alone, Claim::kItem);
    working.OfFolder(plain).RemoveFolder(NamePart(plain));
    NoteEntry(context.state, {.kind = EntryKind::kFolder, .place = plain});
    removal.outcome = Removal::kRemoved;
  } catch (const Error& error) {
    if (error.kind() == Error::Kind::kMissing) return {Removal::kVanished};
    const bool is_full = error.kind() == Error::Kind::kNotEmpty;
    removal.reason = is_full ? Say("It is no longer empty.") : SentenceOf(error);
    NoteStayed(context.state, plain, removal.reason, error.kind());
  }
  return removal;
}

}  // namespace quellix
