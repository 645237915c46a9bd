#include "app/run_checks.h"

#include "platform/error.h"
#include "platform/words.h"
#include "run/removal.h"

namespace quellix {
namespace {

std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

}  // namespace

// Others may be asleep, or have nothing in them.
std::map<char, uint64_t> FreeSpace(const Machine& machine) {
  std::map<char, uint64_t> free;
  for (const Drive& drive : machine.system.Drives()) {
    if (drive.type != DriveType::kFixed) continue;
    try {
      const auto root = machine.files.OpenFolder(std::string(1, drive.letter) + ":\\");
      if (root) free[drive.letter] = root->Room().free;
    } catch (const Error&) {  // it does not tell
    }
  }
  return free;
}

FreeSpaceCheck::FreeSpaceCheck(CleaningContext& context) : context_(context), before_(Ask()) {}

std::map<char, uint64_t> FreeSpaceCheck::Ask() const {
  return context_.state.IsPreview ? std::map<char, uint64_t>() : FreeSpace(context_.machine);
}

void FreeSpaceCheck::Tell() {
  if (context_.state.RunFilesDeleted == 0) return;
  const Locale locale = context_.machine.system.UserLocale();
  const auto size = [&](uint64_t bytes) {
    return FormatSize(static_cast<double>(bytes), 2, true, locale);
  };
  for (const auto& [letter, now] : Ask()) {
    const auto before = before_.find(letter);
    if (before == before_.end() || size(before->second) == size(now)) continue;
    context_.state.RunLog += "\r\n" + Log("Free on %1:  %2 before, %3 now", std::string(1, letter),
                                          size(before->second), size(now));
  }
}

void NamePrograms(CleaningContext& context) {
  if (context.state.AbortRequested) return;
  RunEntries& entries = *context.state.Entries;
  // Each takes a while. Beyond the most that are noted there is no entry.
  for (const size_t index : context.state.MaybeHeld) {
    if (index >= entries.all.size()) break;
    RunEntry& entry = entries.all[index];
    if (entry.kind != EntryKind::kFile) continue;
    if (context.view.Breathe()) break;
    const std::string programs = Joined(context.machine.session.ProgramsUsing(entry.place));
    if (programs.empty()) continue;
    // TRANSLATORS: %1 is a sentence: why a file stays.
    entries.Note(entry, Say("%1 In use by: %2.", entries.NoteOf(entry), programs));
  }
  context.state.MaybeHeld.clear();
}

}  // namespace quellix
