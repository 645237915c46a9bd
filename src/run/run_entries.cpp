#include "run/run_entries.h"

#include <algorithm>
#include <utility>

#include "platform/words.h"

namespace quellix {

void RunEntries::BeginRule(std::string_view name) {
  if (rules[rule_] == name) return;
  rule_ = 0;
  if (name.empty()) return;
  rule_ = static_cast<uint32_t>(rules.size());
  rules.emplace_back(name);
}

void RunEntries::Add(RunEntry entry) {
  if (all.size() == kMost) {
    ++left_out;
    return;
  }
  entry.rule = rule_;
  all.push_back(std::move(entry));
}

uint16_t RunEntries::ArchiveNumber(std::string_view path) {
  const auto known = std::ranges::find(archives, path);
  const auto number = known - archives.begin();
  if (number > UINT16_MAX) return 0;  // a run never has so many
  if (known == archives.end()) archives.emplace_back(path);
  return static_cast<uint16_t>(number);
}

void RunEntries::Note(RunEntry& entry, const Sentence& why) {
  entry.note = why.english;
  if (why.shown != why.english) shown_[why.english] = why.shown;
}

Sentence RunEntries::NoteOf(const RunEntry& entry) const {
  const auto known = shown_.find(entry.note);
  return {entry.note, known == shown_.end() ? Tr(entry.note) : known->second};
}

bool CountsAsFiles(const RunEntry& entry) {
  return entry.kind == EntryKind::kFile || entry.kind == EntryKind::kRecycleBin;
}

std::string_view KindText(EntryKind kind) {
  static constexpr const char* kTexts[] = {
      Mark("File"),         Mark("Folder"),        Mark("Registry value"),
      Mark("Registry key"), Mark("INI key"),       Mark("INI section"),
      Mark("Cache entry"),  Mark("Recycle bin"),   Mark("Address history"),
      Mark("Clipboard"),    Mark("Database rows"), Mark("Windows cleaner")};
  return kTexts[static_cast<size_t>(kind)];
}

std::string PlaceText(const RunEntry& entry) {
  if (entry.kind == EntryKind::kRegistryValue)
    return entry.place + ", " + (entry.part.empty() ? "(Default)" : entry.part);
  if (entry.place.empty()) return entry.part;
  return entry.part.empty() ? entry.place : entry.place + ", " + entry.part;
}

}  // namespace quellix
