#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"
#include "platform/pause.h"
#include "platform/words.h"
#include "run/keep_list.h"

namespace quellix {

// Who asks for something to go: an item of the program, a list that the user wrote, a recipe that
// somebody wrote; or an item for a Windows that does not run; or the user, of a package of the
// Windows Installer that no product names. The user's own list may name his own folders, such as
// Downloads.
enum class Claim { kItem, kOwnList, kRecipe, kVolumeItem, kPackage };

// What must never go, known by what it is and not by how it is spelled: folders are compared by
// identity, so that doubled separators, short names, variables, links and shares lead nowhere else.
//
// Whole trees: the program's own folder and the backup folder; the parts of Windows that are not
// made to be emptied; boot and recovery folders; other recycle bins. Folders that may not be
// emptied, while their sub-folders may: drives, Windows, Program Files, profiles and the folders
// that users know. From those a file named by itself, or logs and dumps by a mask that does not
// recurse, may go, and from Windows texts likewise. Files: registry hives and their logs, page and
// boot files.
//
// What a Windows that does not run can spare may go by the claim of an item that is made for it:
// its page and hibernation files, event logs, the recycle bins of all users, and what an upgrade
// has kept of the Windows before, hives included.
class ProtectedPlaces {
 public:
  // Opens and notes what is precious on the machine. What is missing or cannot be opened is passed
  // over: nothing else can open it either. Changes nothing.
  // What `keep` names is precious as well.
  // `pause` is called before each folder; what it answers is not heeded, as a guard must be whole.
  ProtectedPlaces(const Machine& machine, std::string_view backup_folder, KeepList keep = {},
                  const Pause& pause = {});

  const KeepList& keep() const { return keep_; }

  // Why files that fit `mask` may not go from `folder` and, with `below`, from the folders below
  // it: a clause that ends a sentence, empty when they may.
  Sentence WhyNot(Folder& folder, std::string_view mask, bool below, Claim claim);

  // The same for one file that was named by itself, by the path that the keep list's masks are for.
  Sentence WhyNotFile(Folder& folder, std::string_view path, Claim claim);

  // The same for a file that is to lose some of its lines.
  Sentence WhyNotEdit(Folder& folder, std::string_view path);

  // For a walk that may go: whether it leaves alone a folder that it meets, with all that is in it,
  // or a file.
  bool IsSpared(const FileId& folder) const;
  bool IsSparedFile(Folder& folder, const FileId& folder_id, std::string_view name,
                    Claim claim = Claim::kItem) const;

  // Whether it is one of the folders that users know, as Downloads, which their own list may name.
  bool IsPersonal(Folder& folder) const;
  // Whether it is one of the places that are known here, also one that may be emptied.
  bool IsNoted(Folder& folder) const;

 private:
  friend class PreciousFinder;

  // What a folder is. Higher ones are stronger.
  enum class Kind {
    kFree,      // within a tree, made to be emptied
    kPersonal,  // the user's own: documents, downloads
    kHome,      // a drive, Program Files, a profile: what is named by itself may go
    kRoot,      // Windows: likewise, but for what it may need
    kSystem,    // likewise with all folders below it
    kTree,      // nothing in it goes, or below it
    kOwn        // the program's, likewise; a walk passes it by
  };

  // `above`: what it lies in, where that is known already.
  void Note(Folder& folder, Kind kind, const std::vector<FileId>* above = nullptr);
  void NoteFile(Folder& folder, std::string_view name);
  // What Claim::kVolumeItem may take, whatever else is noted of it.
  void NoteToSpare(Folder& folder) { to_spare_.insert(folder.Id()); }
  void NoteFileToSpare(Folder& folder, std::string_view name);
  // Where Claim::kPackage may take packages one by one.
  void NotePackages(Folder& folder) { packages_ = folder.Id(); }
  bool IsPackage(const FileId& folder, std::string_view name) const;
  bool IsFileToSpare(Folder& folder, std::string_view name) const;
  bool LiesInWhatToSpare(const FileId& self, const std::vector<FileId>& above) const;
  // The strongest rule for a folder, by those that it lies in.
  Kind RuleFor(const FileId& self, const std::vector<FileId>& above) const;
  Sentence WhyNotOpened(const FileId& self, const std::vector<FileId>& above, std::string_view mask,
                        bool below, Claim claim, bool is_to_spare) const;
  Sentence WhyNotOpened(Folder& folder, std::string_view mask, bool below, Claim claim,
                        bool is_file_to_spare) const;

  KeepList keep_;
  std::map<FileId, Kind> folders_;
  std::map<FileId, Kind> holders_;  // what lies above them, with the strongest that they hold
  std::map<FileId, std::set<FileId>> files_;  // by folder
  std::set<FileId> to_spare_;                 // folders and files
  FileId packages_;
};

}  // namespace quellix
