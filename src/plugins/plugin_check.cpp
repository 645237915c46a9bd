#include "plugins/plugin_check.h"

#include "platform/path.h"
#include "platform/profile_strings.h"
#include "platform/text.h"
#include "plugins/plugin_places.h"
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
      Fault("\"" + kind + "\" is no kind of record; a line begins with D, F, R or I.");
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
    const std::string& kind = record.fields[0];
    if (kind == "I") CheckFlag(record.fields[3]);
    if (kind == "F" || kind == "R") {
      CheckFlag(record.fields[1]);
      CheckFlag(record.fields[2]);
    }
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
    Say(text + ".");
  }

  void ExplainKey(const RegistryEntry& entry) {
    const KeyPlace place = FindKey(machine_.registry, entry);
    if (!place.root) {
      Fault(place.refusal);
    } else if (entry.delete_subkey) {
      Say("Removes the registry key " + entry.key + " with everything below it.");
    } else {
      Say("Removes the value \"" + entry.value_name + "\" of the registry key " + entry.key + ".");
    }
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
