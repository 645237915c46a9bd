#pragma once

#include <string>
#include <string_view>

#include "platform/error.h"
#include "platform/file_system.h"
#include "run/protected_places.h"

namespace quellix {

// Takes what a walk through folders comes by. Paths of folders end in "\".
class FolderVisitor {
 public:
  virtual ~FolderVisitor() = default;

  virtual Detail Needs() const { return Detail::kKind; }  // of each file
  virtual void File(Folder& folder, const std::string& path, const Entry& entry) = 0;
  // Whether a file has a turn at all; asked while its folder is listed, before it is held for that.
  virtual bool HasTurn(const std::string& /*path*/, const Entry& /*entry*/) { return true; }
  // Whether a sub-folder is to be gone through; asked before it is opened.
  virtual bool Wants(const std::string& path) = 0;
  // A sub-folder's turn has come, or that of a link to one, which is never entered.
  virtual void Begin(const std::string& /*path*/) {}
  // All that is below it has been visited; of a link, nothing.
  virtual void End(const std::string& /*path*/) {}
  // A precious folder, left alone with all that is in it; `line` is that of the keep list, if any.
  virtual void Spared(const std::string& /*path*/, std::string_view /*line*/) {}
  // A folder that cannot be opened or listed.
  virtual void Failed(const std::string& /*path*/, const Error& /*error*/) {}
  // A pause has ended the walk, before a folder was listed or before one of its entries.
  virtual void Stopped(bool /*before_folder*/) {}
};

// When a folder's files are handed out: while it is listed; or behind the listing, before its
// sub-folders, with the folder open; or in their turn between them, as listed.
enum class WalkOrder { kWhileListing, kFilesFirst, kAsListed };

// Goes through an open folder and those below it, each opened below the first one and through no
// link. No stack grows with the depth of the tree. `path` is the folder's. The folders that a
// visitor is given are valid during the call; with kAsListed the one given is the first one.
// Folders that `spared` names are left alone; null spares none. There is a pause before each
// folder, for each entry that is listed, and before each that has its turn.
void WalkFolder(Folder& folder, std::string_view path, WalkOrder order,
                const ProtectedPlaces* spared, FolderVisitor& visitor, const Pause& pause);

}  // namespace quellix
