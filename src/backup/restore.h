#pragma once

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "backup/backup_reader.h"
#include "backup/leftovers.h"
#include "backup/new_file.h"
#include "backup/zip_reader.h"
#include "platform/machine.h"
#include "platform/words.h"
#include "run/protected_places.h"

namespace quellix {

// When an entry was last written: its exact time, else that of DOS in the machine's zone.
int64_t LastWriteOf(const ZipEntry& entry, System& system);

// What an entry counts for in a restore's progress: its bytes, and what making a file costs.
uint64_t StepsOf(const ZipEntry& entry);

// Opens a folder below `base`, "a\b", making what is missing of it; never led through a link.
// Throws Error.
std::unique_ptr<Folder> OpenOrMake(Folder& base, std::string_view names);

// Puts entries of one open archive back below a folder. It works in folders that it holds open, and
// goes through no link below the one that was named. A file is made under a random name; some
// hundred of a folder are brought onto the disk together before they take their names, each in one
// step.
class Restorer {
 public:
  struct Target {
    std::string root;  // ends in "\"; "\\" for servers
    OverwriteMode mode;
    ProtectedPlaces& places;  // what is in them is not replaced
    RestoreNotes* notes;      // null for none
  };
  // All must outlive the object.
  Restorer(const Machine& machine, ZipReader& archive, Target target, Prompts& prompts);
  Restorer(const Restorer&) = delete;
  Restorer& operator=(const Restorer&) = delete;

  // `total` is the sum of StepsOf over the entries to come. Must outlive the object.
  void OnPause(const Pause& pause, uint64_t total);

  // Of the entry being visited. False when the user wants no more.
  bool Restore(const ZipEntry& entry);
  // The same of one that is not asked for.
  bool PassOver() { return !Stops(0); }
  // Finishes what is begun.
  RestoreResult Take();

 private:
  // A file that is written but does not have its name yet.
  struct Written {
    NewFile made;
    std::string name;
    IfThere if_there;
    uint32_t attributes;
  };

  void Put(ZipEntry entry);
  void Enter(const std::string& folder);
  std::string GiveName(const ZipEntry& entry, std::string name);
  bool MayWrite(const ZipEntry& entry, const std::string& name, const FileInfo& there);
  void Write(ZipEntry& entry, const std::string& name, IfThere if_there);
  void Fill(const ZipEntry& entry, RandomFile& file);
  void PlaceAll();
  bool Stops(uint64_t done);

  Machine machine_;
  ZipReader& archive_;
  Target target_;
  Prompts& prompts_;
  Pause pause_;
  Progress progress_{.work = Mark("Restoring")};
  std::string path_;  // of the entry in hand
  RestoreResult result_;

  std::string base_path_;         // of the folder above all, as it is open
  std::unique_ptr<Folder> base_;  // null before the first entry
  std::string folder_path_;       // full, ends in "\"; the folder in work
  std::unique_ptr<Folder> folder_;
  std::vector<Written> written_;  // in it
  uint64_t written_bytes_ = 0;
  std::unordered_map<std::string, std::string> given_;  // names by paths in upper case
};

}  // namespace quellix
