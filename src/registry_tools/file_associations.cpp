// Kinds of files whose programs are gone: what extensions, and the classes that they name, lead to.
#include <algorithm>
#include <functional>
#include <map>
#include <set>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "registry_tools/file_reference.h"
#include "registry_tools/tool_parts.h"

namespace quellix {
namespace {

using modRegistry::ReadText;
using State = CommandTarget::State;
using Kind = RegistryTarget::Kind;

constexpr RegistryRoot kUser = RegistryRoot::kCurrentUser;
constexpr RegistryRoot kMachine = RegistryRoot::kLocalMachine;
constexpr const char* kClasses = "Software\\Classes\\";
constexpr const char* kExplorer =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts\\";
constexpr ScanColumn kColumns[] = {
    {Mark("Extension or class")}, {Mark("Reference")}, {Mark("Leads to")}, {Mark("Place")}};
constexpr ScanAction kActions[] = {ScanAction::kChoose};

constexpr const char* kProtected = Mark(
    "Windows protects what its user has chosen: choose a program for it in Windows' settings.");

// A key of extensions or classes.
struct Place {
  RegistryRoot root;
  std::string key;  // ends in "\"
  const char* shown;
};

// What goes with a row.
struct Target {
  Kind kind = Kind::kValue;
  std::vector<std::string> choices = {};  // other classes that could stand there
  std::function<bool()> is_gone = {};     // whether it still leads nowhere
};

// Whether something else than its command carries a verb out.
bool IsHandled(RegistryKey& verb, RegistryKey& command) {
  return command.QueryValue("DelegateExecute") || verb.QueryValue("ExplorerCommandHandler") ||
         verb.Open("DropTarget", RegistryAccess::kRead) ||
         verb.Open("ddeexec", RegistryAccess::kRead);
}

constexpr std::pair<RegistryRoot, const char*> kRoots[] = {{kUser, Mark("User")},
                                                           {kMachine, Mark("Machine")}};

class FileAssociations : public RegistryScan {
 public:
  FileAssociations(const Machine& machine, ScanView& view)
      : RegistryScan(machine, view, kAssociationTraits) {}

  bool Offers(ScanAction, size_t index) const override { return !ChoicesFor(index).empty(); }
  std::vector<std::string> ChoicesFor(size_t index) const override {
    return targets_[row(index).entry].choices;
  }
  void Choose(size_t index, const std::string& choice) override;

 protected:
  void ScanRegistry() override;
  RegistryTarget TargetOf(const ScanRow& row) const override {
    return {targets_[row.entry].kind, row.root, row.key, row.name};
  }
  void ForgetWhatWasSeen() override;
  std::string WhyChanged(const ScanRow& row, const Pause& pause) override;
  std::string Recounted() const override;

 private:
  void ReadExtension(const Place& place, const std::string& extension);
  void ReadChoice(const Place& place, const std::string& extension);
  void ReadOffers(const Place& place, const std::string& extension, RegistryKey& key);
  void ReadPrograms(const Place& place, const std::string& extension);
  void ReadClass(const Place& place, const std::string& name);
  void ReadVerbs(const Place& place, const std::string& name, RegistryKey& verbs);
  void ReadVerb(const Place& place, const std::string& name, const std::string& verb,
                RegistryKey& verbs);
  std::vector<std::string> ChoicesOf(const std::string& extension);
  void AddChoices(RegistryRoot root, const std::string& key, std::vector<std::string>& choices);
  bool Opens(const std::string& name);
  bool HasClass(const std::string& name);
  Target OfClass(const std::string& name, Target target = {});
  Target OfProgram(const std::string& name, Target target = {});
  bool IsProgramGone(const std::string& name);
  void AddGone(const Place& place, const std::string& name, const std::string& reference,
               const std::string& leads_to, const std::string& key, const std::string& value,
               Target target, const char* why_stays = "");
  template <typename Use>
  void ForEach(const std::vector<std::pair<Place, std::string>>& each, const Use& use);

  std::optional<ReferenceJudge> judge_;
  std::map<std::string, bool> classes_;  // whether it is there, by name in upper case
  std::set<std::string> named_;          // classes that extensions name
  std::vector<Target> targets_;
  size_t unread_ = 0;
};

template <typename Use>
void FileAssociations::ForEach(const std::vector<std::pair<Place, std::string>>& each,
                               const Use& use) {
  BeginEntries(each.size());
  for (const auto& [place, name] : each) {
    if (is_stopped() || !NextEntry()) return;
    try {
      use(place, name);
    } catch (const Error&) {
      ++unread_;
    }
  }
}

void FileAssociations::ScanRegistry() {
  SetStatus(Tr("Scanning registry..."));
  ForgetWhatWasSeen();
  named_.clear();
  targets_.clear();
  unread_ = 0;
  std::vector<std::pair<Place, std::string>> extensions, chosen, classes;
  const auto list = [this](const Place& place, auto& found) {
    TellDamage(place.root, place.key);
    for (const std::string& name :
         modRegistry::ListSubKeys(access(), place.root, place.key, PauseForList())) {
      if (name.starts_with('.')) found.emplace_back(place, name);
    }
  };
  for (const auto& [root, shown] : kRoots) list({root, kClasses, shown}, extensions);
  list({kUser, kExplorer, kRoots[0].second}, chosen);
  ForEach(extensions,
          [this](const Place& place, const std::string& name) { ReadExtension(place, name); });
  ForEach(chosen, [this](const Place& place, const std::string& name) { ReadChoice(place, name); });
  for (const std::string& name : named_) {
    for (const auto& [root, shown] : kRoots)
      classes.emplace_back(Place{root, kClasses, shown}, name);
  }
  ForEach(classes, [this](const Place& place, const std::string& name) { ReadClass(place, name); });
  SetStatus(is_stopped() ? "" : Recounted());
}

void FileAssociations::ReadExtension(const Place& place, const std::string& extension) {
  const std::string path = place.key + extension;
  const auto key = machine().registry.Open(place.root, path, RegistryAccess::kRead);
  if (!key) return;
  const std::string name = ReadText(*key, "");
  if (!name.empty() && HasClass(name)) named_.insert(name);
  if (!name.empty() && !HasClass(name))
    AddGone(place, extension, Tr("class"), name, path, "",
            OfClass(name, {.choices = ChoicesOf(extension)}));
  ReadOffers(place, extension, *key);
  ReadPrograms(place, extension);
  ReadClass(place, extension);
}

// What the user has chosen, and what he has opened such files with.
void FileAssociations::ReadChoice(const Place& place, const std::string& extension) {
  const std::string path = place.key + extension;
  const auto key = machine().registry.Open(place.root, path, RegistryAccess::kRead);
  if (!key) return;
  if (const auto choice = key->Open("UserChoice", RegistryAccess::kRead)) {
    const std::string name = ReadText(*choice, "ProgId");
    if (!name.empty() && HasClass(name)) named_.insert(name);
    if (!name.empty() && !HasClass(name))
      AddGone(place, extension, Tr("chosen class"), name, path + "\\UserChoice", "ProgId",
              OfClass(name), kProtected);
  }
  ReadOffers(place, extension, *key);
  const auto list = key->Open("OpenWithList", RegistryAccess::kRead);
  std::string value;
  RegistryValue program;
  for (uint32_t i = 0; list && list->ReadValueAt(i, value, program); ++i) {
    // The list's order is a value as well.
    if (value.size() != 1 || program.type != kRegSz) continue;
    const std::string text = FromUtf16Bytes(program.bytes), name(TrimNull(text));
    if (IsProgramGone(name))
      AddGone(place, extension, Tr("open with"), name, path + "\\OpenWithList", value,
              OfProgram(name));
  }
}

void FileAssociations::ReadOffers(const Place& place, const std::string& extension,
                                  RegistryKey& key) {
  const auto offers = key.Open("OpenWithProgids", RegistryAccess::kRead);
  for (uint32_t i = 0; offers; ++i) {
    const auto offer = offers->ValueAt(i);
    if (!offer) return;
    if (offer->name.empty()) continue;
    if (HasClass(offer->name)) {
      named_.insert(offer->name);
    } else {
      AddGone(place, extension, Tr("open with class"), offer->name,
              place.key + extension + "\\OpenWithProgids", offer->name, OfClass(offer->name));
    }
  }
}

void FileAssociations::ReadPrograms(const Place& place, const std::string& extension) {
  const std::string path = place.key + extension + "\\OpenWithList";
  for (const std::string& name : modRegistry::ListSubKeys(access(), place.root, path)) {
    if (IsProgramGone(name))
      AddGone(place, extension, Tr("open with"), name, path + "\\" + name, "",
              OfProgram(name, {.kind = Kind::kTree}));
  }
}

// The icon and the commands of a class; an extension may have some of its own.
void FileAssociations::ReadClass(const Place& place, const std::string& name) {
  const std::string path = place.key + name;
  const auto key = machine().registry.Open(place.root, path, RegistryAccess::kRead);
  if (!key) return;
  if (const auto icon = key->Open("DefaultIcon", RegistryAccess::kRead)) {
    const auto value = icon->QueryValue("");
    if (const auto gone = value ? judge_->FindGone(*value) : std::nullopt)
      AddGone(place, name, Tr("icon"), *gone, path + "\\DefaultIcon", "",
              {.is_gone = [this, seen = *value] { return judge_->FindGone(seen).has_value(); }});
  }
  if (const auto verbs = key->Open("shell", RegistryAccess::kRead)) ReadVerbs(place, name, *verbs);
}

void FileAssociations::ReadVerbs(const Place& place, const std::string& name, RegistryKey& verbs) {
  const std::string path = place.key + name + "\\shell";
  for (const std::string& verb : SubKeyNames(verbs)) ReadVerb(place, name, verb, verbs);
  // Several of them stand between commas, and "none" says that there is none.
  const std::string first = ReadText(verbs, "");
  if (first.empty() || first.find(',') != first.npos || EqualsNoCase(first, "none")) return;
  const bool is_there = std::ranges::any_of(kRoots, [&](const auto& root) {
    return modRegistry::KeyExists(access(), root.first, path + "\\" + first);
  });
  if (is_there) return;
  AddGone(place, name, Tr("verb"), first, path, "", {.is_gone = [this, key = path + "\\" + first] {
            return std::ranges::none_of(kRoots, [&](const auto& root) {
              return modRegistry::KeyExists(access(), root.first, key);
            });
          }});
}

// What an object or a conversation carries out needs no command.
void FileAssociations::ReadVerb(const Place& place, const std::string& name,
                                const std::string& verb, RegistryKey& verbs) {
  const auto key = verbs.Open(verb, RegistryAccess::kRead);
  const auto command = key ? key->Open("command", RegistryAccess::kRead) : nullptr;
  if (!command || IsHandled(*key, *command)) return;
  const std::string text = ReadText(*command, "");
  if (judge_->Judge(text).state != State::kGone) return;
  const auto is_gone = [this, text] { return judge_->Judge(text).state == State::kGone; };
  AddGone(place, name, Tr("command %1", verb), text, place.key + name + "\\shell\\" + verb, "",
          {.kind = Kind::kTree, .is_gone = is_gone});
}

Target FileAssociations::OfClass(const std::string& name, Target target) {
  target.is_gone = [this, name] { return !HasClass(name); };
  return target;
}

Target FileAssociations::OfProgram(const std::string& name, Target target) {
  target.is_gone = [this, name] { return IsProgramGone(name); };
  return target;
}

void FileAssociations::ForgetWhatWasSeen() {
  judge_.emplace(machine());
  classes_.clear();
}

// The reference may be another one by now, or lead somewhere again.
std::string FileAssociations::WhyChanged(const ScanRow& row, const Pause& pause) {
  std::string why = RegistryScan::WhyChanged(row, pause);
  if (!why.empty()) return why;
  if (targets_[row.entry].is_gone()) return {};
  return Tr("What it leads to is there again: %1, %2", row.texts[0], row.texts[2]);
}

bool FileAssociations::HasClass(const std::string& name) {
  const auto [known, is_new] = classes_.try_emplace(UpCase(std::string_view(name)));
  if (is_new) {
    known->second = std::ranges::any_of(kRoots, [&](const auto& root) {
      return modRegistry::KeyExists(access(), root.first, kClasses + name);
    });
  }
  return known->second;
}

// What Windows offers to open such files with, as far as it can.
std::vector<std::string> FileAssociations::ChoicesOf(const std::string& extension) {
  std::vector<std::string> choices;
  for (const auto& [root, shown] : kRoots)
    AddChoices(root, kClasses + extension + "\\OpenWithProgids", choices);
  AddChoices(kUser, kExplorer + extension + "\\OpenWithProgids", choices);
  return choices;
}

void FileAssociations::AddChoices(RegistryRoot root, const std::string& key,
                                  std::vector<std::string>& choices) {
  const auto offers = machine().registry.Open(root, key, RegistryAccess::kRead);
  for (uint32_t i = 0; offers; ++i) {
    const auto offer = offers->ValueAt(i);
    if (!offer) return;
    const bool is_known = std::ranges::any_of(
        choices, [&](const std::string& each) { return EqualsNoCase(each, offer->name); });
    if (!is_known && !offer->name.empty() && Opens(offer->name)) choices.push_back(offer->name);
  }
}

bool FileAssociations::Opens(const std::string& name) {
  return std::ranges::any_of(kRoots, [&](const auto& root) {
    const auto command = machine().registry.Open(
        root.first, kClasses + name + "\\shell\\open\\command", RegistryAccess::kRead);
    if (!command) return false;
    return command->QueryValue("DelegateExecute") ||
           judge_->Judge(ReadText(*command, "")).state == State::kThere;
  });
}

// Where the class stood, as text; what is said to be chosen was read back.
void FileAssociations::Choose(size_t index, const std::string& choice) {
  const ScanRow& chosen = row(index);
  ForgetWhatWasSeen();
  const std::string why = WhyChanged(chosen, {});
  if (!why.empty()) throw Error(Error::Kind::kOther, why);
  if (!Opens(choice))
    throw Error(Error::Kind::kMissing, Say("It opens nothing any more: %1", choice));
  KeepValue(chosen.root, chosen.key, chosen.name);
  const auto key = machine().registry.Open(chosen.root, chosen.key, RegistryAccess::kWrite);
  if (!key) throw Error(Error::Kind::kMissing, Say("It is gone meanwhile: %1", chosen.key));
  key->SetValue(chosen.name, {kRegSz, ToUtf16Bytes(choice) + std::string(2, '\0')});
  key->Flush();
  if (ReadText(*key, chosen.name) != choice)
    throw Error(Error::Kind::kOther, Say("It was written and is as it was: %1", chosen.key));
}

// One that is registered is judged by its own commands.
bool FileAssociations::IsProgramGone(const std::string& name) {
  if (name.empty() || HasClass("Applications\\" + name)) return false;
  return judge_->Judge("\"" + name + "\"").state == State::kGone;
}

void FileAssociations::AddGone(const Place& place, const std::string& name,
                               const std::string& reference, const std::string& leads_to,
                               const std::string& key, const std::string& value, Target target,
                               const char* why_stays) {
  ScanRow row;
  row.texts = {name, reference, leads_to,
               *why_stays ? Tr("%1, protected", Tr(place.shown)) : Tr(place.shown)};
  row.root = place.root;
  row.key = key;
  row.name = value;
  row.why_stays = Tr(why_stays);
  row.entry = targets_.size();
  targets_.push_back(std::move(target));
  AddJudged(std::move(row), RowMark::kOrphaned);
}

std::string FileAssociations::Recounted() const {
  const size_t count = rows().size();
  return JoinParts({TrN("%1 references that lead nowhere", "%1 references that lead nowhere", count,
                        std::to_string(count)),
                    PartOf(unread_, Unread(unread_))});
}

}  // namespace

const ScanTraits kAssociationTraits = {.name = "associations",
                                       .title = Mark("File associations"),
                                       .columns = kColumns,
                                       .ticks = false,
                                       .keeps_stayed = true,
                                       .looks_again = true,
                                       .actions = kActions};

std::unique_ptr<RegistryScan> MakeFileAssociations(const Machine& machine, ScanView& view) {
  return std::make_unique<FileAssociations>(machine, view);
}

}  // namespace quellix
