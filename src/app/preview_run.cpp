#include "app/preview_run.h"

#include "run/removal.h"

namespace quellix {

bool GoesForGood(const RunEntry& entry) {
  const bool for_good = entry.way == Way::kDeleted || entry.way == Way::kWiped;
  return entry.fate == Fate::kRemoved && for_good && entry.kind != EntryKind::kFolder;
}

PreviewRun::PreviewRun(const Machine& machine, RunView& view)
    : preview_(machine),
      view_(view),
      settings_(preview_.machine()),
      archive_(preview_.machine().files),
      context_{preview_.machine(), settings_, state_, view_, archive_} {
  state_.IsPreview = true;
}

void PreviewRun::Run(const Selection& selection) {
  RunCleaning(context_, selection);
  state_.RunLog += view_.told;
}

void PreviewRun::RunOneItem(const Item& item) {
  quellix::RunOneItem(context_, item);
  state_.RunLog += view_.told;
}

void PreviewRun::RunOthers(const OtherChoices& choices) {
  quellix::RunOthers(context_, choices);
  state_.RunLog += view_.told;
}

void PreviewRun::RunByHand(const std::function<void(CleaningContext&)>& work) {
  work(context_);
  state_.RunLog += view_.told;
}

std::string QuestionBefore(const RunEntries& preview, const Locale& locale,
                           const std::function<bool(size_t index)>& is_ticked) {
  uint64_t files = 0, others = 0;
  double bytes = 0;
  bool wipes = false;
  for (size_t i = 0; i < preview.all.size(); ++i) {
    const RunEntry& entry = preview.all[i];
    if (!GoesForGood(entry) || !is_ticked(i)) continue;
    (CountsAsFiles(entry) ? files : others) += entry.count;
    bytes += static_cast<double>(entry.bytes);
    wipes = wipes || entry.way == Way::kWiped;
  }
  if (files + others == 0) return {};
  const auto count = [&](uint64_t number, const char* one, const char* more) {
    return FormatCount(number, locale) + (number == 1 ? one : more);
  };
  std::string text = wipes ? "Wipe " : "Delete ";
  if (files > 0) {
    text += count(files, " file", " files") + " (" + FormatSize(bytes, 2, true, locale) + ")";
    if (others > 0) text += " and " + count(others, " other thing", " other things");
  } else {
    text += count(others, " thing", " things");
  }
  return text + " for good?";
}

}  // namespace quellix
