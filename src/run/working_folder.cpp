#include "run/working_folder.h"

#include <algorithm>
#include <vector>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"

namespace quellix {
namespace {

[[noreturn]] void Refuse(std::string_view path, const Sentence& why) {
  // TRANSLATORS: %2 begins with a small letter: "it is precious."
  throw Error(Error::Kind::kDenied, Say("%1 is not removed: %2", path, why));
}

}  // namespace

const KeepList& KeepOf(CleaningContext& context) {
  std::shared_ptr<const KeepList>& keep = context.state.Keep;
  if (!keep) keep = std::make_shared<const KeepList>(context.machine);
  return *keep;
}

ProtectedPlaces& PlacesOf(CleaningContext& context) {
  std::shared_ptr<ProtectedPlaces>& places = context.state.Places;
  if (!places) {
    places = std::make_shared<ProtectedPlaces>(context.machine, context.state.BackupFolder,
                                               KeepOf(context), PauseOf(context));
  }
  return *places;
}

ProtectedPlaces LoadPlaces(const Machine& machine) {
  return {machine, Settings(machine).Load().BackupFolder};
}

std::string TrueName(Folder& folder, std::string_view name) {
  std::vector<std::string> others;
  std::string found;
  folder.Enumerate(Detail::kKind, [&](const Entry& entry) {
    if (EqualsNoCase(entry.name, name)) found = entry.name;
    others.emplace_back(entry.name);
    return found.empty();
  });
  if (!found.empty()) return found;
  const auto id = folder.IdOf(name);
  const auto is_it = [&](const std::string& other) { return folder.IdOf(other) == id; };
  const auto other = id ? std::ranges::find_if(others, is_it) : others.end();
  return other == others.end() ? std::string(name) : *other;
}

std::unique_ptr<Folder> WorkingFolder::OpenBelow(std::string_view parent) const {
  if (!list_.folder) return context_.machine.files.OpenFolder(parent);
  return list_.folder->OpenFolder(WithoutBackslash(parent.substr(list_.folder_path.size())));
}

Folder& WorkingFolder::Open(std::string_view parent) {
  if (list_.folder && parent == list_.folder_path) {
    if (path_ != parent) id_ = list_.folder->Id();
    path_ = parent;
    opened_.reset();  // it may be what goes next
    return *list_.folder;
  }
  if (opened_ && path_ == parent) return *opened_;
  path_.clear();
  opened_.reset();
  opened_ = OpenBelow(parent);
  if (!opened_) throw Error(Error::Kind::kMissing, Say("%1 is no longer there.", parent));
  id_ = opened_->Id();
  if (list_.folder && PlacesOf(context_).IsSpared(id_)) Refuse(parent, Say("it is precious."));
  path_ = parent;
  return *opened_;
}

std::string_view WorkingFolder::TruePath(Folder& folder, std::string_view path) {
  const std::string_view name = NamePart(path);
  const bool may_be_short = claim_ == Claim::kOwnList || name.find('~') != name.npos;
  if (list_.folder || !may_be_short) return path;
  return true_path_ = std::string(FolderPart(path)) + TrueName(folder, name);
}

Folder& WorkingFolder::Of(std::string_view typed) {
  Folder& folder = Open(FolderPart(typed));
  ProtectedPlaces& places = PlacesOf(context_);
  const std::string_view path = TruePath(folder, typed);
  const std::string_view name = NamePart(path);
  const std::string_view line = places.keep().ForFile(folder, id_, path);
  if (!line.empty()) throw Error(Error::Kind::kKept, std::string(line));
  if (list_.folder) {
    if (places.IsSparedFile(folder, id_, name, claim_)) {
      Refuse(path, Say("it is a file that Windows or this program needs."));
    }
  } else if (const Sentence why = places.WhyNotFile(folder, path, claim_); !why.empty()) {
    Refuse(path, why);
  }
  return folder;
}

Folder& WorkingFolder::OfFolder(std::string_view path) {
  const std::string_view plain = WithoutBackslash(path);
  Folder& folder = Open(FolderPart(plain));
  const auto id = folder.IdOf(NamePart(plain));
  if (id && PlacesOf(context_).IsSpared(*id)) Refuse(path, Say("it is precious."));
  return folder;
}

}  // namespace quellix
