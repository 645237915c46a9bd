#include "plugins/plugin_check.h"

#include <algorithm>

#include "platform/path.h"
#include "platform/profile_strings.h"
#include "platform/text.h"
#include "platform/words.h"
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
      Fault(
          Tr("\"%1\" is no kind of record; a line begins with D, F, R, I, X, T, G, W or P.", kind));
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
      Fault(Tr("This line and those behind it are not checked."), line);
  }
  std::vector<Remark> Take() { return std::move(remarks_); }

 private:
  void Fault(std::string text) { Fault(std::move(text), line_); }
  void Tell(std::string text) { remarks_.push_back({line_, false, std::move(text)}); }

  void CheckLength(const Record& record) {
    const size_t needed = FieldsOf(record.fields[0]);
    if (record.fields.size() >= needed) {
      Fault(Tr("It holds a NUL character, so it is skipped."));
    } else {
      const std::string count = std::to_string(record.fields.size());
      Fault(Tr("It has %1 fields of %2, so it is skipped.", count, std::to_string(needed)));
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
      Fault(Tr("\"%1\" is neither Yes nor No; it counts as No.", flag));
    }
  }

  void Explain(const Record& record) {
    const std::string& kind = record.fields[0];
    if (kind == "D") Tell(Tr("Description: %1", record.fields[1]));
    if (kind == "F") ExplainFiles(ToFileEntry(record));
    if (kind == "R") ExplainKey(ToRegistryEntry(record));
    if (kind == "I") ExplainIni(ToIniEntry(record));
    if (kind == "X") ExplainExclusion(record);
    if (kind == "T") ExplainDetection(record);
    if (kind == "G") Tell(Tr("Stands in the group %1.", record.fields[1]));
    if (kind == "P") ExplainProgram(record.fields[1]);
    if (kind == "W") {
      Tell(record.fields[1] == "Yes" ? Tr("Costs what cannot be had again: %1.", record.fields[2])
                                     : Tr("Costs: %1.", record.fields[2]));
    }
  }

  void ExplainExclusion(const Record& record) {
    const std::optional<Exclusion> exclusion = ToExclusion(record);
    if (!exclusion) {
      return Fault(
          Tr("\"%1\" is none of File, Path or Key, so nothing is cleaned.", record.fields[1]));
    }
    const Exclusions exclusions(machine_, {*exclusion});
    for (const Sentence& refusal : exclusions.refusals()) Fault(refusal.shown);
    if (!exclusions.refusals().empty()) return;
    if (exclusion->kind == Exclusion::Kind::kKey) {
      return Tell(Tr("Leaves the registry key %1 with everything below it.", exclusion->place));
    }
    const std::string_view files = NamePart(exclusion->place),
                           folder = WithoutBackslash(FolderPart(exclusion->place));
    const bool is_path = exclusion->kind == Exclusion::Kind::kPath;
    Tell(is_path ? Tr("Leaves the files %1 in %2 and in all folders below it.", files, folder)
                 : Tr("Leaves the files %1 in %2.", files, folder));
  }

  void ExplainDetection(const Record& record) {
    const std::optional<Detection> detection = ToDetection(record);
    if (!detection) {
      return Fault(
          Tr("\"%1\" is none of File, Key or Version, so it is ignored.", record.fields[1]));
    }
    if (std::string why = FaultOf(machine_, *detection); !why.empty()) return Fault(std::move(why));
    const std::string what = TextOf(*detection);
    Tell(Holds(machine_, *detection)
             ? Tr("Is carried out where this is found: %1. It is found here.", what)
             : Tr("Is carried out where this is found: %1. It is not found here.", what));
  }

  static std::string TextOf(const Detection& detection) {
    const auto& [kind, place, last] = detection;
    if (kind != Detection::Kind::kVersion)
      return last.empty() ? place : Tr("%1 with the value \"%2\"", place, last);
    // TRANSLATORS: Versions such as 6.1 and 10.0.
    if (!place.empty() && !last.empty()) return Tr("Windows %1 to %2", place, last);
    if (!place.empty()) return Tr("Windows %1 to any later one", place);
    return last.empty() ? Tr("Windows up to any later one") : Tr("Windows up to %1", last);
  }

  void ExplainProgram(const std::string& name) {
    if (name.empty() || HasNameWildcards(name) || !MayBeFileName(name) ||
        name.find('\\') != std::string::npos) {
      Fault(Tr("\"%1\" is not the name of a program's file.", name));
    } else {
      Tell(Tr("Is not carried out while %1 runs.", name));
    }
  }

  void ExplainFiles(const FileEntry& entry) {
    const FilesPlace place = FindFolders(machine_, places_, entry);
    if (place.mask.empty())
      Fault(Tr("It names no files: no name or mask follows the last backslash."));
    for (const Sentence& refusal : place.refusals) Fault(refusal.shown);
    if (place.mask.empty() || (!place.refusals.empty() && place.folders.empty())) return;
    std::string text = RemovalText(entry, place.mask);
    // TRANSLATORS: %1 is a sentence such as "Removes all files in C:\\Temp".
    if (entry.remove_self) text = Tr("%1, and the folder itself once it is empty", text);
    TellSides(text, entry.both_sides);
  }

  static std::string RemovalText(const FileEntry& entry, const std::string& mask) {
    const std::string_view folder = WithoutBackslash(FolderPart(entry.location));
    const bool is_all = mask == "*.*";
    if (!entry.recurse) {
      return is_all ? Tr("Removes all files in %1", folder)
                    : Tr("Removes the files %1 in %2", mask, folder);
    }
    const std::string text =
        is_all ? Tr("Removes all files in %1 and in all folders below it", folder)
               : Tr("Removes the files %1 in %2 and in all folders below it", mask, folder);
    // TRANSLATORS: %1 is "Removes all files in C:\\Temp and in all folders below it".
    return entry.delete_subfolders ? Tr("%1, and those folders once they are empty", text) : text;
  }

  void TellSides(const std::string& text, bool both) {
    // TRANSLATORS: %1 is a sentence such as "Removes all files in C:\\Temp".
    Tell(both ? Tr("%1, for programs of 32 and of 64 bits.", text) : Tr("%1.", text));
  }

  void ExplainKey(const RegistryEntry& entry) {
    if (HasStarInName(entry.key)) Fault(Tr("A \"*\" in a key stands for a whole name only."));
    const std::vector<KeyPlace> places = FindKeys(machine_.registry, entry);
    bool is_refused = !places.empty();
    for (const KeyPlace& place : places) {
      is_refused = is_refused && !place.root;
      if (!place.root) Fault(place.refusal.shown);
    }
    if (is_refused) return;
    const std::string text =
        entry.delete_subkey
            ? Tr("Removes the registry key %1 with everything below it", entry.key)
            : Tr("Removes the value \"%1\" of the registry key %2", entry.value_name, entry.key);
    TellSides(text, entry.both_views);
  }

  static bool HasStarInName(const std::string& key) {
    return std::ranges::any_of(Split(key, '\\'), [](const std::string& name) {
      return name.size() > 1 && name.find('*') != std::string::npos;
    });
  }

  void ExplainIni(const IniEntry& entry) {
    const IniPlace place = FindIni(machine_, places_, entry);
    const std::string file = entry.folder + entry.file_name;
    if (!place.refusal.empty()) {
      Fault(place.refusal.shown);
    } else if (entry.section.empty() || (!entry.delete_section && entry.key.empty())) {
      Fault(Tr("It names no section or no key, so it erases nothing."));
    } else if (entry.delete_section) {
      Tell(Tr("Erases the section [%1] of %2.", entry.section, file));
    } else {
      Tell(Tr("Erases the key %1 in the section [%2] of %3.", entry.key, entry.section, file));
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
  if (bytes.empty()) checker.Fault(Tr("The file is empty."), 0);
  if (IsUtf16(bytes)) {
    checker.Fault(Tr("The file is UTF-16, which is not read; store it as UTF-8 or ANSI text."), 0);
    return checker.Take();
  }
  ReadLines(DecodeText(bytes, machine.system), [&checker](const Record& record) {
    if (checker.IsFull()) return checker.StopAt(record.line);
    if (record.fields.size() > 1) {
      checker.Check(record);
    } else if (!TrimBlanks(record.fields[0]).empty()) {
      checker.Fault(Tr("It has no separator (the character with code 1), so it is ignored."),
                    record.line);
    }
  });
  return checker.Take();
}

}  // namespace quellix::modPlugin
