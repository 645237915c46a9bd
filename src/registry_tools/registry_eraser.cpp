#include "registry_tools/registry_eraser.h"

#include <algorithm>
#include <map>
#include <memory>
#include <utility>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/protected_keys.h"
#include "run/stayed.h"
#include "run/working_folder.h"

namespace quellix {
namespace {

using Kind = RegistryTarget::Kind;
using ProtectedKeys::Part;

constexpr const char* kIsProtected =
    Mark("Windows, or all of a user's settings, depends on this key.");
constexpr const char* kLeadsAway = Mark("%1 leads to another key.");
constexpr const char* kStopped = Mark("The deletion was stopped.");

// A target in one place where it is.
struct Found {
  size_t target = 0;
  Kind kind = Kind::kValue;
  KeyHome place = {};                             // the key that goes or holds the value
  std::string name = {};                          // of the value, or the last one of the key
  std::shared_ptr<RegistryKey> holder = nullptr;  // open for writing: holds what goes
  Sentence problem = {};                          // why it stays
};

class Erasing {
 public:
  Erasing(Registry& registry, const Pause& pause) : registry_(registry), pause_(pause) {}

  // What the keep list names is left: noted, and then as if it were not there, or as what stays.
  // Returns the number of those noted.
  size_t LeaveKept(const KeepList& keep, const RegistryEraser::Note& note) {
    return std::erase_if(found_, [&](Found& found) {
      const std::string line = found.problem.empty() ? KeptBy(found, keep) : "";
      if (line.empty()) return false;
      if (note) {
        note(EntryOf(found, Fate::kKept), {line, line});
        return true;
      }
      found.problem = KeptSentence(line);
      return false;
    });
  }

  void PassOver(const std::function<bool(const RunEntry& entry)>& is_chosen) {
    std::erase_if(found_,
                  [&](const Found& found) { return !is_chosen(EntryOf(found, Fate::kRemoved)); });
  }

  // All of them stay.
  void Refuse(const Sentence& why) {
    for (Found& found : found_) {
      if (found.problem.empty()) found.problem = why;
    }
  }

  void NoteEach(const RegistryEraser::Note& note) const {
    for (const Found& found : found_) {
      note(EntryOf(found, found.problem.empty() ? Fate::kRemoved : Fate::kStayed), found.problem);
    }
  }

  // Looking for each target, deleting it and looking once more take about the same.
  void Expect(size_t targets) { progress_.total = 3 * targets; }

  void Find(size_t index, const RegistryTarget& target, bool guarded) {
    progress_.done = index;
    if (target.key.starts_with('\\')) return;
    for (KeyHome& home : KeyHomes(target.root, target.key)) {
      Found found{index, target.kind, std::move(home), target.name};
      if (found.kind != Kind::kValue) found.name = NamePart(found.place.key);
      try {
        if (Stops()) throw Error(Error::Kind::kOther, Say(kStopped));
        if (!Open(found, guarded)) continue;
      } catch (const Error& error) {
        found.problem = SentenceOf(error);
      }
      found_.push_back(std::move(found));
    }
  }

  void AddTo(RegistryUndo& undo) {
    for (const Found& found : found_) {
      const auto& [root, key] = found.place;
      if (!found.problem.empty() || Stops()) continue;
      if (found.kind == Kind::kValue) undo.AddValue(registry_, root, key, found.name);
      if (found.kind == Kind::kKey) undo.AddKey(registry_, root, key, own_pause_);
      if (found.kind == Kind::kTree) undo.AddTree(registry_, root, key, own_pause_);
    }
  }

  void Delete() {
    progress_.done = progress_.total / 3;
    for (Found& found : found_) {
      Step();
      if (found.problem.empty() && Stops()) found.problem = Say(kStopped);
      if (found.problem.empty()) Try(found, [&] { DeleteOne(found); });
    }
    Store();
    progress_.done = progress_.total / 3 * 2;
    for (Found& found : found_) {
      Step();
      Stops();  // too late to keep anything, but it may breathe
      if (found.problem.empty()) Try(found, [&] { RequireGone(found); });
    }
  }

  bool is_stopped() const { return stopped_; }

  Erasure Sum(size_t targets) const {
    Erasure sum;
    sum.stays.resize(targets);
    std::vector<bool> is_found(targets);
    for (const Found& found : found_) {
      is_found[found.target] = true;
      if (found.problem.empty()) continue;
      sum.stays[found.target] = true;
      sum.stopped = sum.stopped || found.problem.english == kStopped;
      if (sum.problem.empty()) sum.problem = found.problem;
    }
    sum.stayed = static_cast<size_t>(std::ranges::count(sum.stays, true));
    sum.gone = static_cast<size_t>(std::ranges::count(is_found, true)) - sum.stayed;
    return sum;
  }

 private:
  bool Stops() {
    stopped_ = stopped_ || pause_(progress_);
    return stopped_;
  }

  void Step() { progress_.done = std::min(progress_.done + 1, progress_.total); }

  // What went together with the key that held it is gone.
  template <typename Action>
  static void Try(Found& found, const Action& action) {
    try {
      action();
    } catch (const Error& error) {
      if (error.kind() != Error::Kind::kMissing) found.problem = SentenceOf(error);
    }
  }

  // Opens what holds it; false when it is not there. Only what is there needs a key that may be
  // written.
  bool Open(Found& found, bool guarded) {
    const auto& [root, key] = found.place;
    const bool is_value = found.kind == Kind::kValue;
    const auto itself = Opened(found.place, RegistryAccess::kRead);
    if (itself == nullptr) return false;
    if (is_value && found.name.find('\0') != std::string::npos) {
      found.problem = Say("A value with a NUL in its name cannot be named: %1", key);
    } else if (is_value && !itself->QueryValue(found.name)) {
      return false;
    } else if (guarded && ProtectedKeys::Keeps(*itself, is_value ? Part::kValue : Part::kTree)) {
      found.problem = Say(kIsProtected);
    } else {
      const std::string parent(WithoutBackslash(FolderPart(key)));
      found.holder = Opened({root, is_value ? key : parent}, RegistryAccess::kWrite);
      if (found.holder == nullptr) return false;
      if (!is_value && found.holder->IsLink(found.name)) found.problem = Say(kLeadsAway, key);
    }
    return true;
  }

  // Many targets in turn are in one key.
  std::shared_ptr<RegistryKey> Opened(const KeyHome& place, RegistryAccess access) {
    std::shared_ptr<RegistryKey>* known = &last_read_;
    if (access == RegistryAccess::kWrite) {
      known = &writable_[{place.root, UpCase(std::string_view(place.key))}];
      if (*known) return *known;
    } else if (last_read_ && last_place_.root == place.root && last_place_.key == place.key) {
      return last_read_;
    }
    if (access == RegistryAccess::kRead) last_place_ = place;
    *known = nullptr;
    return *known = registry_.Open(place.root, place.key, access);
  }

  static std::string KeptBy(Found& found, const KeepList& keep) {
    try {
      const std::string name = found.holder->TrueName();
      return std::string(found.kind == Kind::kValue ? keep.ForValue(name, found.name)
                                                    : keep.ForTree(name + "\\" + found.name));
    } catch (const Error& error) {  // what it is nobody can tell
      found.problem = SentenceOf(error);
      return {};
    }
  }

  static RunEntry EntryOf(const Found& found, Fate fate) {
    const bool is_value = found.kind == Kind::kValue;
    const std::string_view key = WithoutBackslash(found.place.key);
    return {.kind = is_value ? EntryKind::kRegistryValue : EntryKind::kRegistryKey,
            .fate = fate,
            .place = std::string(RootName(found.place.root)).append("\\").append(key),
            .part = is_value ? found.name : ""};
  }

  void DeleteOne(Found& found) {
    if (found.kind == Kind::kValue) {
      found.holder->DeleteValue(found.name);
      return;
    }
    if (found.kind == Kind::kTree) DeleteBelow(found);
    if (found.problem.empty()) found.holder->DeleteSubKey(found.name);
  }

  // One that stays does not keep its neighbours.
  void DeleteBelow(Found& found) {
    const auto top = found.holder->Open(found.name, RegistryAccess::kWrite);
    if (top == nullptr) return;
    const auto stays = [&found](const Sentence& why) {
      if (found.problem.empty()) found.problem = why;
    };
    const auto leave = [&](RegistryKey& parent, const std::string& name) {
      try {
        parent.DeleteSubKey(name);
      } catch (const Error& error) {
        stays(SentenceOf(error));
      }
    };
    const auto skip = [&](const std::string& path, const Error* error) {
      stays(error ? SentenceOf(*error) : Say(kLeadsAway, found.place.key + path));
    };
    const KeyWalkSteps steps{.leave = leave, .skip = skip};
    if (!WalkKeys(*top, RegistryAccess::kWrite, steps, own_pause_)) stays(Say(kStopped));
  }

  // What is deleted in memory alone stays.
  void Store() {
    std::map<RegistryKey*, Sentence> problems;
    for (Found& found : found_) {
      if (!found.holder) continue;
      const auto [stored, is_new] = problems.try_emplace(found.holder.get());
      if (is_new) {
        try {
          found.holder->Flush();
        } catch (const Error& error) {
          stored->second = SentenceOf(error);
        }
      }
      if (found.problem.empty()) found.problem = stored->second;
    }
  }

  void RequireGone(Found& found) {
    const bool is_there = found.kind == Kind::kValue
                              ? found.holder->QueryValue(found.name).has_value()
                              : found.holder->Open(found.name, RegistryAccess::kRead) != nullptr;
    if (is_there) found.problem = Say("It was deleted and is there again: %1", found.place.key);
  }

  Registry& registry_;
  const Pause& pause_;
  const Pause own_pause_ = [this](const Progress&) { return Stops(); };
  bool stopped_ = false;
  Progress progress_;
  std::vector<Found> found_;
  std::map<std::pair<RegistryRoot, std::string>, std::shared_ptr<RegistryKey>> writable_;
  KeyHome last_place_{RegistryRoot::kCurrentUser, ""};
  std::shared_ptr<RegistryKey> last_read_;
};

}  // namespace

RegistryEraser RegistryEraser::OfRun(CleaningContext& context) {
  RegistryEraser eraser(context.machine.registry, OnError::kTold);
  eraser.OnPause(PauseOf(context));
  RunState& state = context.state;
  const bool has_undo = state.RemovalMode == kBackUp && state.BackupRegistry;
  if (has_undo) {
    eraser.KeepIn(state.Parts.Get<RegistryUndo>(), context.machine, state.BackupFolder);
  }
  eraser.Leave(KeepOf(context));
  if (state.Choice) {
    eraser.Only([&state](const RunEntry& entry) { return IsChosen(state, entry); });
  }
  eraser.NoteEach([&state, has_undo](RunEntry entry, const Sentence& why) {
    if (entry.fate == Fate::kKept) ++state.KeptCount;
    if (entry.fate == Fate::kRemoved && has_undo) {
      entry.way = Way::kBackedUp;
      entry.archive = state.Entries->ArchiveNumber(state.Parts.Get<RegistryUndo>().path());
    }
    state.Entries->Note(entry, why);
    NoteEntry(state, std::move(entry));
  });
  return eraser;
}

Erasure RegistryEraser::Erase(std::span<const RegistryTarget> targets) {
  Erasing erasing(registry_, pause_);
  erasing.Expect(targets.size());
  for (size_t i = 0; i < targets.size(); ++i) erasing.Find(i, targets[i], guarded_);
  if (is_chosen_) erasing.PassOver(is_chosen_);
  const size_t kept = keep_ == nullptr || keep_->empty() ? 0 : erasing.LeaveKept(*keep_, note_);
  if (keeping_.undo != nullptr) {
    try {
      erasing.AddTo(*keeping_.undo);
      if (erasing.is_stopped()) keeping_.undo->Forget();
      keeping_.undo->Store(*keeping_.machine, keeping_.folder);
    } catch (const Error& error) {
      keeping_.undo->Forget();
      erasing.Refuse(SentenceOf(NotKept(error)));
      if (note_) erasing.NoteEach(note_);
      throw NotKept(error);
    }
  }
  erasing.Delete();
  if (note_) erasing.NoteEach(note_);
  Erasure sum = erasing.Sum(targets.size());
  sum.kept = kept;
  if (on_error_ == OnError::kSilent || sum.stayed == 0 || sum.stopped) return sum;
  if (sum.gone + sum.stayed == 1) throw Error(Error::Kind::kOther, sum.problem);
  const size_t all = sum.gone + sum.stayed;
  throw Error(Error::Kind::kOther,
              SayN("%1 of %2 registry entries stay. %3", "%1 of %2 registry entries stay. %3",
                   sum.stayed, std::to_string(sum.stayed), std::to_string(all), sum.problem));
}

Erasure RegistryEraser::EraseValues(RegistryRoot root, std::string_view key,
                                    std::string_view names) {
  std::vector<RegistryTarget> targets;
  for (std::string& name : Split(names, '\0')) {
    targets.push_back({Kind::kValue, root, std::string(key), std::move(name)});
  }
  return Erase(targets);
}

}  // namespace quellix
