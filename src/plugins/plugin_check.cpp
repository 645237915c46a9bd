#include "plugins/plugin_check.h"

#include <algorithm>

#include "platform/path.h"
#include "platform/profile_strings.h"
#include "platform/text.h"
#include "plugins/plugin_places.h"
#include "plugins/recipe_detection.h"
#include "plugins/recipe_exclusions.h"
#include "plugins/recipe_keys.h"
#include "run/working_folder.h"

namespace quellix::modPlugin {
namespace {

constexpr size_t kMostRemarks = 10000;

class Checker {
 public:
  explicit Checker(const Machine& machine) : machine_(machine), places_(LoadPlaces(machine)) {}

  void Check(const Record& record) {
    line_ = record.line;
    const std::string& kind = record.fields[0];
    if (FieldsOf(kind) == 0) {
      Fault("\"" + kind +
            "\" is no kind of record; a line begins with D, F, R, I, X, T, G, W or P.");
    } else if (!IsComplete(record)) {
      CheckLength(record);
    } else {
      CheckFlags(record);
      Explain(record);
    }
  }

  void Fault(std::string text, size_t line) { remarks_.push_back({line, true, std::move(text)}); }
  bool IsFull() const { return remarks_.size() >= kMostRemarks; }
  // What follows is not looked at: nobody reads more.
  void StopAt(size_t line) {
    if (remarks_.size() == kMostRemarks)
      Fault("This line and those behind it are not checked.", line);
  }
  std::vector<Remark> Take() { return std::move(remarks_); }

 private:
  void Fault(std::string text) { Fault(std::move(text), line_); }
  void Say(std::string text) { remarks_.push_back({line_, false, std::move(text)}); }

  void CheckLength(const Record& record) {
    const size_t needed = FieldsOf(record.fields[0]);
    if (record.fields.size() >= needed) {
      Fault("It holds a NUL character, so it is skipped.");
    } else {
      Fault("It has " + std::to_string(record.fields.size()) + " fields of " +
            std::to_string(needed) + ", so it is skipped.");
    }
  }

  void CheckFlags(const Record& record) {
    for (size_t field = 1; field < record.fields.size(); ++field) {
      if (IsFlag(record.fields[0], field)) CheckFlag(record.fields[field]);
    }
  }

  static bool IsFlag(const std::string& kind, size_t field) {
    if (kind == "F") return field != 3 && field <= 5;
    if (kind == "R") return field <= 2 || field == 5;
    return (kind == "I" && field == 3) || (kind == "W" && field == 1);
  }

  void CheckFlag(const std::string& flag) {
    if (flag != "Yes" && flag != "No") {
      Fault("\"" + flag + "\" is neither Yes nor No; it counts as No.");
    }
  }

  void Explain(const Record& record) {
    const std::string& kind = record.fields[0];
    if (kind == "D") Say("Description: " + record.fields[1]);
    if (kind == "F") ExplainFiles(ToFileEntry(record));
    if (kind == "R") ExplainKey(ToRegistryEntry(record));
    if (kind == "I") ExplainIni(ToIniEntry(record));
    if (kind == "X") ExplainExclusion(record);
    if (kind == "T") ExplainDetection(record);
    if (kind == "G") Say("Stands in the group " + record.fields[1] + ".");
    if (kind == "P") ExplainProgram(record.fields[1]);
    if (kind == "W") {
      Say((record.fields[1] == "Yes" ? "Costs what cannot be had again: " : "Costs: ") +
          record.fields[2] + ".");
    }
  }

  void ExplainExclusion(const Record& record) {
    const std::optional<Exclusion> exclusion = ToExclusion(record);
    if (!exclusion) return FaultOfKind(record, "File, Path or Key, so nothing is cleaned");
    const Exclusions exclusions(machine_, {*exclusion});
    for (const std::string& refusal : exclusions.refusals()) Fault(refusal);
    if (!exclusions.refusals().empty()) return;
    if (exclusion->kind == Exclusion::Kind::kKey) {
      return Say("Leaves the registry key " + exclusion->place + " with everything below it.");
    }
    const bool is_path = exclusion->kind == Exclusion::Kind::kPath;
    Say("Leaves the files " + std::string(NamePart(exclusion->place)) + " in " +
        std::string(WithoutBackslash(FolderPart(exclusion->place))) +
        (is_path ? " and in all folders below it." : "."));
  }

  void ExplainDetection(const Record& record) {
    const std::optional<Detection> detection = ToDetection(record);
    if (!detection) return FaultOfKind(record, "File, Key or Version, so it is ignored");
    if (std::string why = FaultOf(machine_, *detection); !why.empty()) return Fault(std::move(why));
    std::string what = detection->place;
    if (detection->kind == Detection::Kind::kVersion) {
      what = "Windows " + (what.empty() ? "up" : what) + " to " +
             (detection->last.empty() ? "any later one" : detection->last);
    } else if (!detection->last.empty()) {
      what += " with the value \"" + detection->last + "\"";
    }
    Say("Is carried out where this is found: " + what + ". It is " +
        (Holds(machine_, *detection) ? "found here." : "not found here."));
  }

  void ExplainProgram(const std::string& name) {
    if (name.empty() || HasNameWildcards(name) || !MayBeFileName(name) ||
        name.find('\\') != std::string::npos) {
      Fault("\"" + name + "\" is not the name of a program's file.");
    } else {
      Say("Is not carried out while " + name + " runs.");
    }
  }

  void FaultOfKind(const Record& record, const char* kinds) {
    Fault("\"" + record.fields[1] + "\" is none of " + kinds + ".");
  }

  void ExplainFiles(const FileEntry& entry) {
    const FilesPlace place = FindFolders(machine_, places_, entry);
    if (place.mask.empty()) Fault("It names no files: no name or mask follows the last backslash.");
    for (const std::string& refusal : place.refusals) Fault(refusal);
    if (place.mask.empty() || (!place.refusals.empty() && place.folders.empty())) return;
    std::string text =
        place.mask == "*.*" ? "Removes all files" : "Removes the files " + place.mask;
    text += " in " + std::string(WithoutBackslash(FolderPart(entry.location)));
    text += entry.recurse ? " and in all folders below it" : "";
    text +=
        entry.recurse && entry.delete_subfolders ? ", and those folders once they are empty" : "";
    text += entry.remove_self ? ", and the folder itself once it is empty" : "";
    Say(text + (entry.both_sides ? ", for programs of 32 and of 64 bits." : "."));
  }

  void ExplainKey(const RegistryEntry& entry) {
    if (HasStarInName(entry.key)) Fault("A \"*\" in a key stands for a whole name only.");
    const std::vector<KeyPlace> places = FindKeys(machine_.registry, entry);
    bool is_refused = !places.empty();
    for (const KeyPlace& place : places) {
      is_refused = is_refused && !place.root;
      if (!place.root) Fault(place.refusal);
    }
    if (is_refused) return;
    std::string text = entry.delete_subkey
                           ? "Removes the registry key "
                           : "Removes the value \"" + entry.value_name + "\" of the registry key ";
    text += entry.key + (entry.delete_subkey ? " with everything below it" : "");
    Say(text + (entry.both_views ? ", for programs of 32 and of 64 bits." : "."));
  }

  static bool HasStarInName(const std::string& key) {
    return std::ranges::any_of(Split(key, '\\'), [](const std::string& name) {
      return name.size() > 1 && name.find('*') != std::string::npos;
    });
  }

  void ExplainIni(const IniEntry& entry) {
    const IniPlace place = FindIni(machine_, places_, entry);
    const std::string where = "the section [" + entry.section + "]";
    if (!place.refusal.empty()) {
      Fault(place.refusal);
    } else if (entry.section.empty() || (!entry.delete_section && entry.key.empty())) {
      Fault("It names no section or no key, so it erases nothing.");
    } else if (entry.delete_section) {
      Say("Erases " + where + " of " + entry.folder + entry.file_name + ".");
    } else {
      Say("Erases the key " + entry.key + " in " + where + " of " + entry.folder + entry.file_name +
          ".");
    }
  }

  const Machine& machine_;
  ProtectedPlaces places_;
  size_t line_ = 0;
  std::vector<Remark> remarks_;
};

bool IsUtf16(std::string_view bytes) {
  return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
}

}  // namespace

std::vector<Remark> CheckPlugin(const Machine& machine, std::string_view bytes) {
  Checker checker(machine);
  if (bytes.empty()) checker.Fault("The file is empty.", 0);
  if (IsUtf16(bytes)) {
    checker.Fault("The file is UTF-16, which is not read; store it as UTF-8 or ANSI text.", 0);
    return checker.Take();
  }
  ReadLines(DecodeText(bytes, machine.system), [&checker](const Record& record) {
    if (checker.IsFull()) return checker.StopAt(record.line);
    if (record.fields.size() > 1) {
      checker.Check(record);
    } else if (!TrimBlanks(record.fields[0]).empty()) {
      checker.Fault("It has no separator (the character with code 1), so it is ignored.",
                    record.line);
    }
  });
  return checker.Take();
}

}  // namespace quellix::modPlugin
