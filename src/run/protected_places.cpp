#include "run/protected_places.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/precious_finder.h"
#include "run/precious_names.h"

namespace quellix {
namespace {

constexpr const char* kUnknownPlace = Mark("this system cannot tell which folder it is.");
constexpr const char* kOwnPlace = Mark("it belongs to this program or to its backups.");
constexpr const char* kTreePlace = Mark("it is a part of Windows that is not made to be emptied.");
constexpr const char* kRootPlace =
    Mark("it is a whole drive, Windows, its system folder, Program Files or a user's profile.");
constexpr const char* kHoldsPlace =
    Mark("it holds Windows, programs, a user's profile or folders of his.");
constexpr const char* kPersonalPlace = Mark("it is one of the user's own folders.");
constexpr const char* kPreciousFile = Mark("it is a file that Windows or this program needs.");

Sentence Kept(std::string_view line) { return Say("it is kept by your line %1.", line); }

}  // namespace

ProtectedPlaces::ProtectedPlaces(const Machine& machine, std::string_view backup_folder,
                                 KeepList keep)
    : keep_(std::move(keep)) {
  PreciousFinder(machine, *this).Find(backup_folder);
}

void ProtectedPlaces::Note(Folder& folder, Kind kind, const std::vector<FileId>* above) {
  const FileId id = folder.Id();
  if (!id.is_known()) return;
  Kind& noted = folders_.try_emplace(id, kind).first->second;
  noted = std::max(noted, kind);
  // A walk goes around what is the program's own, so that its holders may be cleaned.
  if (kind == Kind::kOwn || kind == Kind::kFree) return;
  for (const FileId& holder : above ? *above : folder.Above()) {
    Kind& held = holders_.try_emplace(holder, kind).first->second;
    held = std::max(held, kind);
  }
}

void ProtectedPlaces::NoteFile(Folder& folder, std::string_view name) {
  if (const auto id = folder.IdOf(name)) files_[folder.Id()].insert(*id);
}

void ProtectedPlaces::NoteFileToSpare(Folder& folder, std::string_view name) {
  if (const auto id = folder.IdOf(name)) to_spare_.insert(*id);
}

bool ProtectedPlaces::LiesInWhatToSpare(const FileId& self,
                                        const std::vector<FileId>& above) const {
  return to_spare_.contains(self) ||
         std::ranges::any_of(above, [this](const FileId& id) { return to_spare_.contains(id); });
}

ProtectedPlaces::Kind ProtectedPlaces::RuleFor(const FileId& self,
                                               const std::vector<FileId>& above) const {
  const auto noted = folders_.find(self);
  Kind rule = noted == folders_.end() ? Kind::kFree : noted->second;
  if (noted == folders_.end() && above.empty()) rule = Kind::kHome;  // any drive or share
  bool is_free = noted != folders_.end() && rule == Kind::kFree;
  for (const FileId& id : above) {
    const auto upper = folders_.find(id);
    if (upper == folders_.end()) continue;
    if (upper->second == Kind::kOwn) return Kind::kOwn;
    is_free = is_free || upper->second == Kind::kFree;
    if (!is_free && upper->second >= Kind::kSystem) rule = std::max(rule, upper->second);
  }
  return rule;
}

Sentence ProtectedPlaces::WhyNotOpened(const FileId& self, const std::vector<FileId>& above,
                                       std::string_view mask, bool below, Claim claim,
                                       bool is_to_spare) const {
  const Kind rule = RuleFor(self, above);
  if (rule == Kind::kOwn) return Say(kOwnPlace);
  if (rule == Kind::kTree && !is_to_spare) return Say(kTreePlace);
  if (const auto line = keep_.ForFolder(self, above); !line.empty()) return Kept(line);
  const bool names_one = !HasWildcards(mask), is_harmless = HasHarmlessExtension(mask);
  const bool is_home = rule == Kind::kHome && !(claim == Claim::kRecipe && IsProgram(mask));
  const bool may_go = is_harmless || (rule == Kind::kRoot && IsText(mask)) ||
                      (names_one && (is_home || !MayBelongToWindows(mask)));
  // The program's own items go where Windows keeps what they are made for.
  const bool is_made_for =
      claim == Claim::kItem && rule == Kind::kSystem && mask != "*.*" && !folders_.contains(self);
  // A drive or a home that lies in what can be spared is none.
  const bool can_be_spared =
      is_to_spare && (!below || rule == Kind::kTree || !folders_.contains(self));
  if (rule >= Kind::kHome && !is_made_for && !can_be_spared && (below || !may_go))
    return Say(kRootPlace);
  const bool is_own = claim == Claim::kOwnList;
  if (rule == Kind::kPersonal && !is_own && (below || !is_harmless)) {
    return Say(kPersonalPlace);
  }
  const auto held = holders_.find(self);
  if (!below || held == holders_.end()) return {};
  if (is_own && held->second == Kind::kPersonal) return {};
  return Say(kHoldsPlace);
}

Sentence ProtectedPlaces::WhyNotOpened(Folder& folder, std::string_view mask, bool below,
                                       Claim claim, bool is_file_to_spare) const {
  try {
    const FileId self = folder.Id();
    if (!self.is_known()) return Say(kUnknownPlace);
    const std::vector<FileId> above = folder.Above();
    const bool is_to_spare =
        is_file_to_spare || (claim == Claim::kVolumeItem && LiesInWhatToSpare(self, above));
    return WhyNotOpened(self, above, mask, below, claim, is_to_spare);
  } catch (const Error&) {
    return Say(kUnknownPlace);
  }
}

Sentence ProtectedPlaces::WhyNot(Folder& folder, std::string_view mask, bool below, Claim claim) {
  return WhyNotOpened(folder, mask, below, claim, false);
}

Sentence ProtectedPlaces::WhyNotFile(Folder& folder, std::string_view path, Claim claim) {
  const std::string_view name = NamePart(path);
  const FileId id = folder.Id();
  const bool is_to_spare = (claim == Claim::kVolumeItem && IsFileToSpare(folder, name)) ||
                           (claim == Claim::kPackage && IsPackage(id, name));
  Sentence why = WhyNotOpened(folder, name, false, claim, is_to_spare);
  if (!why.empty()) return why;
  if (const auto line = keep_.ForFile(folder, id, path); !line.empty()) return Kept(line);
  return IsSparedFile(folder, id, name, claim) ? Say(kPreciousFile) : Sentence();
}

Sentence ProtectedPlaces::WhyNotEdit(Folder& folder, std::string_view path) {
  try {
    const FileId self = folder.Id();
    const std::vector<FileId> above = folder.Above();
    const Kind rule = RuleFor(self, above);
    if (rule == Kind::kOwn) return Say(kOwnPlace);
    if (rule == Kind::kTree) return Say(kTreePlace);
    std::string_view line = keep_.ForFolder(self, above);
    if (line.empty()) line = keep_.ForFile(folder, self, path);
    if (!line.empty()) return Kept(line);
    return IsSparedFile(folder, self, NamePart(path)) ? Say(kPreciousFile) : Sentence();
  } catch (const Error&) {
    return Say(kUnknownPlace);
  }
}

bool ProtectedPlaces::IsPackage(const FileId& folder, std::string_view name) const {
  return packages_.is_known() && folder == packages_ &&
         (MatchesMask(name, "*.msi") || MatchesMask(name, "*.msp"));
}

bool ProtectedPlaces::IsFileToSpare(Folder& folder, std::string_view name) const {
  const auto id = folder.IdOf(name);
  return id && to_spare_.contains(*id);
}

bool ProtectedPlaces::IsSparedFile(Folder& folder, const FileId& folder_id, std::string_view name,
                                   Claim claim) const {
  if (const auto files = files_.find(folder_id); files != files_.end()) {
    const auto id = folder.IdOf(name);
    if (id && files->second.contains(*id)) {
      return claim != Claim::kVolumeItem || !to_spare_.contains(*id);
    }
  }
  if (!IsHiveOrItsLog(folder, name)) return false;
  return claim != Claim::kVolumeItem || !LiesInWhatToSpare(folder_id, folder.Above());
}

bool ProtectedPlaces::IsSpared(const FileId& folder) const {
  const auto noted = folders_.find(folder);
  return (noted != folders_.end() && noted->second > Kind::kPersonal) ||
         !keep_.ForFolder(folder).empty();
}

bool ProtectedPlaces::IsNoted(Folder& folder) const { return folders_.contains(folder.Id()); }

bool ProtectedPlaces::IsPersonal(Folder& folder) const {
  const auto noted = folders_.find(folder.Id());
  return noted != folders_.end() && noted->second == Kind::kPersonal;
}

}  // namespace quellix
