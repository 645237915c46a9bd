#include "run/working_folder.h"

#include "platform/error.h"
#include "platform/path.h"

namespace quellix {
namespace {

[[noreturn]] void Refuse(std::string_view path, std::string_view why) {
  throw Error(Error::Kind::kDenied, std::string(path).append(" is not removed: ").append(why));
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
                                               KeepOf(context));
  }
  return *places;
}

ProtectedPlaces LoadPlaces(const Machine& machine) {
  return {machine, Settings(machine).Load().BackupFolder};
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
  if (!opened_) throw Error(Error::Kind::kMissing, std::string(parent) + " is no longer there.");
  id_ = opened_->Id();
  if (list_.folder && PlacesOf(context_).IsSpared(id_)) Refuse(parent, "it is precious.");
  path_ = parent;
  return *opened_;
}

Folder& WorkingFolder::Of(std::string_view path) {
  Folder& folder = Open(FolderPart(path));
  ProtectedPlaces& places = PlacesOf(context_);
  const std::string_view name = NamePart(path);
  const std::string_view line = places.keep().ForFile(folder, id_, path);
  if (!line.empty()) throw Error(Error::Kind::kKept, std::string(line));
  if (list_.folder) {
    if (places.IsSparedFile(folder, id_, name, claim_)) {
      Refuse(path, "it is a file that Windows or this program needs.");
    }
  } else if (const std::string why = places.WhyNotFile(folder, path, claim_); !why.empty()) {
    Refuse(path, why);
  }
  return folder;
}

Folder& WorkingFolder::OfFolder(std::string_view path) {
  const std::string_view plain = WithoutBackslash(path);
  Folder& folder = Open(FolderPart(plain));
  const auto id = folder.IdOf(NamePart(plain));
  if (id && PlacesOf(context_).IsSpared(*id)) Refuse(path, "it is precious.");
  return folder;
}

}  // namespace quellix
