#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "backup/registry_undo.h"
#include "platform/error.h"
#include "platform/registry.h"
#include "run/context.h"
#include "run/keep_list.h"

namespace quellix {

// One thing that is to go from the registry.
struct RegistryTarget {
  enum class Kind {
    kValue,
    kKey,   // one that has no sub-keys; another stays
    kTree,  // a key with all below it; a link stays, with the keys above it
  };

  Kind kind = Kind::kValue;
  RegistryRoot root = RegistryRoot::kCurrentUser;
  std::string key = {};   // may end in "\"; one that begins with it names no key
  std::string name = {};  // of a value
};

// What became of the targets that were there.
struct Erasure {
  size_t gone = 0;
  size_t stayed = 0;
  size_t kept = 0;               // by the keep list; neither gone nor stayed
  Sentence problem = {};         // why the first one stayed
  std::vector<bool> stays = {};  // by target
  bool stopped = false;          // by a pause: what had no turn yet stays, and is told by no Error
};

// Thrown when what is to go could not be kept first; then nothing goes.
class NotKept : public Error {
 public:
  explicit NotKept(const Error& why)
      : Error(why.kind(), Say("Nothing is deleted, because it could not be backed up first. %1",
                              SentenceOf(why))) {}
};

// The one way to delete from the registry: what is there is kept first where that is wanted, then
// deleted, stored, and looked for. Gone is only what is not found any more and is stored so.
class RegistryEraser {
 public:
  enum class OnError {
    kSilent,  // the Erasure alone tells
    kTold,    // Erase throws Error when something stayed, after all that could go went
  };

  RegistryEraser(Registry& registry, OnError on_error) : registry_(registry), on_error_(on_error) {}
  // For what a run deletes: kept in its mode that backs up, while the settings want it. In the
  // other modes the traces are to vanish. Its pauses are the run's. `context` must outlive it.
  static RegistryEraser OfRun(CleaningContext& context);

  // Keeps what goes in `undo`'s file in `folder`; all of it must outlive the eraser.
  void KeepIn(RegistryUndo& undo, const Machine& machine, std::string_view folder) {
    keeping_ = {&undo, &machine, folder};
  }
  // Leaves what `keep` names: it counts as kept where each target is noted, else as stayed. `keep`
  // must outlive the eraser.
  void Leave(const KeepList& keep) { keep_ = &keep; }
  // Tells what became of each target that was there, and why it stays or which line keeps it.
  using Note = std::function<void(RunEntry entry, const Sentence& why)>;
  void NoteEach(Note note) { note_ = std::move(note); }
  // Passes over targets that `is_chosen` does not take, as if they were not there.
  void Only(std::function<bool(const RunEntry& entry)> is_chosen) {
    is_chosen_ = std::move(is_chosen);
  }
  // Refuses what ProtectedKeys names: it counts as stayed.
  void Guard() { guarded_ = true; }
  // Called for each key and value that is looked for, kept and deleted. A stop before the first is
  // deleted leaves them all; one within a tree leaves the rest of it.
  void OnPause(Pause pause) { pause_ = std::move(pause); }

  // Throws NotKept, and Error as OnError says.
  Erasure Erase(std::span<const RegistryTarget> targets);
  Erasure Erase(const RegistryTarget& target) { return Erase(std::span(&target, 1)); }
  // All values of a list as ListRegValues gives it.
  Erasure EraseValues(RegistryRoot root, std::string_view key, std::string_view names);

 private:
  struct Keeping {
    RegistryUndo* undo = nullptr;
    const Machine* machine = nullptr;
    std::string_view folder;
  };

  Registry& registry_;
  OnError on_error_;
  Keeping keeping_;
  Pause pause_;
  bool guarded_ = false;
  const KeepList* keep_ = nullptr;
  Note note_;
  std::function<bool(const RunEntry& entry)> is_chosen_;
};

}  // namespace quellix
