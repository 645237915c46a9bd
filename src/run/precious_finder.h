#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "platform/pause.h"
#include "run/folder_branch.h"
#include "run/protected_places.h"

namespace quellix {

// Finds what is precious on a machine and notes it. Where Windows and programs keep it is known
// from the environment, the registry's list of profiles and folders, and documented names.
class PreciousFinder {
 public:
  // The pause is for the surface alone: what is precious is found whole, whatever it answers.
  PreciousFinder(const Machine& machine, ProtectedPlaces& places, const Pause& pause)
      : machine_(machine), places_(places), pause_(pause) {}

  void Find(std::string_view backup_folder);

 private:
  using Kind = ProtectedPlaces::Kind;

  std::unique_ptr<Folder> Open(std::string_view path);
  void NoteOtherCopy();
  void Note(std::string_view path, Kind kind);
  void NoteIn(FolderBranch& branch, std::initializer_list<const char*> names, Kind kind);
  void FindDrives();
  void FindWhatToSpare(Folder& root, FolderBranch& below);
  void FindOldEventLogs(FolderBranch& in_system);
  void NoteFileToSpare(Folder& folder, std::string_view name);
  void FindWindows();
  void FindPrograms();
  void FindProfiles();
  void FindListedProfiles();
  void FindProfile(Folder& profile);
  void FindKnownFolders();
  void FindOthersFolders();
  void NoteMoved(RegistryKey& folders, const std::string& profile);
  std::string ProfileOf(const std::string& user);
  void NoteFolderValues(RegistryRoot root, const char* key,
                        std::initializer_list<const char*> names, Kind kind);

  const Machine& machine_;
  ProtectedPlaces& places_;
  const Pause& pause_;
};

}  // namespace quellix
