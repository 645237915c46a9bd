#include "plugins/recipe_judgement.h"

#include <algorithm>
#include <optional>
#include <unordered_set>

#include "platform/path.h"
#include "platform/words.h"
#include "plugins/plugin_places.h"
#include "plugins/recipe_detection.h"
#include "plugins/recipe_exclusions.h"
#include "plugins/recipe_folders.h"
#include "plugins/recipe_keys.h"

namespace quellix::modPlugin {
namespace {

class RecipeJudge {
 public:
  RecipeJudge(const Machine& machine, ProtectedPlaces& places, const ListedRecipe& recipe)
      : machine_(machine), places_(places), recipe_(recipe) {}

  Judgement Run() {
    for (const Remark& remark : recipe_.remarks) Note(remark.text, remark.is_fault);
    LookAtExclusions();
    LookAtDetections();
    for (const FileEntry& entry : recipe_.plugin.files) LookAtFiles(entry);
    for (const RegistryEntry& entry : recipe_.plugin.registry) LookAtKey(entry);
    return {Standing(), std::move(remarks_)};
  }

 private:
  modPlugin::Standing Standing() {
    using enum modPlugin::Standing;
    if (is_unclear_) return kNotUnderstood;
    if (carried_ + refused_ + not_understood_ == 0) Note(Tr("It names nothing that goes."), true);
    if (carried_ == 0) return refused_ > 0 ? kRefused : kNotUnderstood;
    return refused_ + not_understood_ > 0 ? kPart : kWhole;
  }

  void Note(std::string text, bool is_fault) {
    if (is_fault) ++not_understood_;
    Tell(std::move(text));
  }
  // Masks of one key that are refused together are told once.
  void Tell(std::string text) {
    if (said_.insert(text).second) remarks_.push_back(std::move(text));
  }

  void LookAtExclusions() {
    is_unclear_ = recipe_.plugin.has_unknown_exclusion;
    if (recipe_.plugin.exclusions.empty()) return;
    const Exclusions exclusions(machine_, recipe_.plugin.exclusions);
    for (const Sentence& refusal : exclusions.refusals()) Tell(refusal.shown);
    is_unclear_ = is_unclear_ || !exclusions.refusals().empty();
  }

  // It never runs where none of its places can be looked for, or its versions mean nothing.
  void LookAtDetections() {
    size_t places = 0, faulty = 0;
    for (const Detection& detection : recipe_.plugin.detections) {
      const std::string fault = FaultOf(machine_, detection);
      const bool is_version = detection.kind == Detection::Kind::kVersion;
      if (!fault.empty()) Note(fault, true);
      is_unclear_ = is_unclear_ || (is_version && !fault.empty());
      places += !is_version;
      faulty += !is_version && !fault.empty();
    }
    is_unclear_ = is_unclear_ || (places > 0 && places == faulty);
  }

  bool MeansFolders(const FileEntry& entry) const {
    const auto sides = ExpandFolder(machine_, FolderPart(entry.location), entry.both_sides);
    return !sides.empty() && std::ranges::all_of(sides, [](const std::string& side) {
      return ParsePattern(side).has_value();
    });
  }

  void LookAtFiles(const FileEntry& entry) {
    const FilesPlace place = FindFolders(machine_, places_, entry);
    for (const Sentence& refusal : place.refusals) Tell(refusal.shown);
    if (!place.folders.empty() || place.refusals.empty()) ++carried_;
    if (!place.refusals.empty()) ++(MeansFolders(entry) ? refused_ : not_understood_);
  }

  void LookAtKey(const RegistryEntry& entry) {
    bool is_refused = false;
    for (const KeyPlace& place : FindKeys(machine_.registry, entry)) {
      if (place.root) continue;
      is_refused = true;
      Tell(place.refusal.shown);
    }
    ++(is_refused ? refused_ : carried_);
  }

  const Machine& machine_;
  ProtectedPlaces& places_;
  const ListedRecipe& recipe_;
  std::vector<std::string> remarks_;
  std::unordered_set<std::string> said_;
  size_t carried_ = 0, refused_ = 0, not_understood_ = 0;
  bool is_unclear_ = false;  // what is to be left is not known
};

}  // namespace

Judgement Judge(const Machine& machine, ProtectedPlaces& places, const ListedRecipe& recipe) {
  return RecipeJudge(machine, places, recipe).Run();
}

}  // namespace quellix::modPlugin
