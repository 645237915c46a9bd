#include "run/folder_branch.h"

#include "platform/error.h"
#include "platform/path.h"

namespace quellix {

FolderBranch::FolderBranch(Folder& top) : top_(top) {
  try {
    above_ = top.Above();
  } catch (const Error&) {  // the top itself is known all the same
  }
  if (top.Id().is_known()) above_.insert(above_.begin(), top.Id());
}

const FolderBranch::Place& FolderBranch::Find(std::string_view names) {
  const auto found = places_.find(names);
  if (found != places_.end()) return found->second;
  return places_.emplace(names, Open(names)).first->second;
}

FolderBranch::Place FolderBranch::Open(std::string_view names) {
  Place place{nullptr, above_};
  Folder* upper = &top_;
  if (const size_t end = names.rfind('\\'); end != names.npos) {
    const Place& found = Find(names.substr(0, end));
    upper = found.folder.get();
    place.above = found.above;
    if (upper && upper->Id().is_known()) place.above.insert(place.above.begin(), upper->Id());
  }
  try {
    if (upper) place.folder = upper->OpenFolder(NamePart(names));
  } catch (const Error&) {  // a link, or a file of this name
  }
  return place;
}

}  // namespace quellix
