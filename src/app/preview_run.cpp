#include "app/preview_run.h"

#include "platform/words.h"
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

namespace {

// What goes for good.
struct Loss {
  uint64_t files = 0, others = 0;
  double bytes = 0;
  bool wipes = false;
};

std::string QuestionOf(const Loss& loss, const Locale& locale) {
  const auto [files, others, bytes, wipes] = loss;
  const std::string file_count = FormatCount(files, locale),
                    other_count = FormatCount(others, locale),
                    size = FormatSize(bytes, 2, true, locale);
  if (files == 0) {
    return wipes ? TrN("Wipe %1 thing for good?", "Wipe %1 things for good?", others, other_count)
                 : TrN("Delete %1 thing for good?", "Delete %1 things for good?", others,
                       other_count);
  }
  if (others == 0) {
    return wipes ? TrN("Wipe %1 file (%2) for good?", "Wipe %1 files (%2) for good?", files,
                       file_count, size)
                 : TrN("Delete %1 file (%2) for good?", "Delete %1 files (%2) for good?", files,
                       file_count, size);
  }
  const std::string things = TrN("%1 other thing", "%1 other things", others, other_count);
  // TRANSLATORS: %3 is "2 other things".
  return wipes ? TrN("Wipe %1 file (%2) and %3 for good?", "Wipe %1 files (%2) and %3 for good?",
                     files, file_count, size, things)
               : TrN("Delete %1 file (%2) and %3 for good?",
                     "Delete %1 files (%2) and %3 for good?", files, file_count, size, things);
}

}  // namespace

std::string QuestionBefore(const RunEntries& preview, const Locale& locale,
                           const std::function<bool(size_t index)>& is_ticked) {
  Loss loss;
  for (size_t i = 0; i < preview.all.size(); ++i) {
    const RunEntry& entry = preview.all[i];
    if (!GoesForGood(entry) || !is_ticked(i)) continue;
    (CountsAsFiles(entry) ? loss.files : loss.others) += entry.count;
    loss.bytes += static_cast<double>(entry.bytes);
    loss.wipes = loss.wipes || entry.way == Way::kWiped;
  }
  return loss.files + loss.others == 0 ? "" : QuestionOf(loss, locale);
}

}  // namespace quellix
