#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "run/context.h"
#include "run/file_list.h"
#include "run/protected_places.h"

namespace quellix {

// What the user keeps, read once a run. Throws Error while keep.txt cannot be read.
const KeepList& KeepOf(CleaningContext& context);

// What a run must leave alone: looked for once a run, when it is first asked.
ProtectedPlaces& PlacesOf(CleaningContext& context);

// The same where nothing runs: by what the settings say now.
ProtectedPlaces LoadPlaces(const Machine& machine);

// The name that an entry is listed by: a short name leads to a long one. The name itself where
// there is no such entry. Throws Error when the folder may not be listed.
std::string TrueName(Folder& folder, std::string_view name);

// Opens the folders that the paths of a list lie in, one after the other: below the folder where
// its walk began and through no link. What is precious is refused.
class WorkingFolder {
 public:
  // `claim`: who asks. All must outlive the object.
  WorkingFolder(CleaningContext& context, const FileList& list, Claim claim)
      : context_(context), list_(list), claim_(claim) {}

  // The folder that a file lies in, to work on NamePart(path); valid until the next call. Throws
  // Error: kMissing, or kDenied when a link leads elsewhere or the file may not go.
  Folder& Of(std::string_view path);
  // That folder, to be worked in beyond the next call.
  std::shared_ptr<Folder> Shared() const { return opened_ ? opened_ : list_.folder; }
  // As Of, for a folder that is to go itself; `path` may end in "\".
  Folder& OfFolder(std::string_view path);

 private:
  // Judged is what a name stands for. Valid until the next call.
  std::string_view TruePath(Folder& folder, std::string_view path);
  Folder& Open(std::string_view parent);
  std::unique_ptr<Folder> OpenBelow(std::string_view parent) const;

  CleaningContext& context_;
  const FileList& list_;
  Claim claim_;
  std::string path_;       // of opened_
  std::string true_path_;  // of what stands for another name
  std::shared_ptr<Folder> opened_;
  FileId id_;
};

}  // namespace quellix
