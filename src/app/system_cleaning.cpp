#include "app/system_cleaning.h"

#include <algorithm>
#include <utility>

#include "app/run_checks.h"
#include "cleaners/skeleton.h"
#include "platform/error.h"
#include "platform/words.h"
#include "run/removal.h"
#include "run/run_log.h"
#include "run/run_steps.h"

namespace quellix {
namespace {

// By their keys, which are the same in every language.
constexpr std::pair<std::string_view, std::string_view> kCosts[] = {
    {"Device Driver Packages", Mark("drivers cannot be set back to older ones")},
    {"DownloadsFolder", Mark("everything in your folder Downloads is deleted")},
    {"Language Pack", Mark("languages that are not in use have to be installed anew")},
    {"Previous Installations", Mark("you cannot go back to the Windows that was here before")},
    {"Recycle Bin", Mark("what is in the recycle bin cannot be had back")},
    {"Service Pack Cleanup", Mark("the service pack cannot be removed any more")},
    {"Update Cleanup", Mark("older updates cannot be gone back to")},
    {"User file versions", Mark("earlier versions of your files are lost")},
    {"Windows ESD installation files", Mark("resetting Windows then needs a medium or a download")},
};

// What a cleaner that works is to be told by, and tells.
class Cleaning {
 public:
  Cleaning(CleaningContext& context, const SystemCleaner& cleaner)
      : context_(context), cleaner_(cleaner) {}

  // Throws Error. The machine of a preview only lets it look.
  void Run() {
    if (!IsChosen(context_.state, Entry(0))) return;
    context_.view.SetStatus(cleaner_.name + "...");
    const std::map<char, uint64_t> before = FreeSpace(context_.machine);
    const CleanerFind find =
        context_.machine.cleaners.Use(cleaner_.key, CleanerUse::kClean, IsAttended(context_.state),
                                      [this](const Progress& progress) {
                                        if (!progress.path.empty())
                                          context_.view.SetStatus(progress.path);
                                        return StopsRun(context_);
                                      });
    Note(find);
    Tell(context_.state.IsPreview ? Log("Found: %1", Size(find.bytes)) : Outcome(find, before));
  }

  void Tell(const std::string& what) {
    LogLine(context_.state, Log("%1 (Windows)... %2", cleaner_.name, what));
  }

 private:
  RunEntry Entry(uint64_t bytes) const {
    return {.kind = EntryKind::kSystemCleaner, .bytes = bytes, .place = cleaner_.name};
  }

  std::string Size(uint64_t bytes) const {
    return FormatSize(static_cast<double>(bytes), 2, true, context_.machine.system.UserLocale());
  }

  void Note(const CleanerFind& find) {
    RunState& state = context_.state;
    const uint64_t bytes = find.freed.value_or(find.bytes);
    if (bytes == 0) return;
    NotePlace(state);
    NoteEntry(state, Entry(bytes));
    state.RunSpaceGained += static_cast<double>(bytes);
  }

  std::string Outcome(const CleanerFind& find, const std::map<char, uint64_t>& before) const {
    // TRANSLATORS: %1 is "Freed: 5.00 MB by its own count".
    std::string text = Log("%1, %2 more free on the drives", Freed(find), MoreFree(before));
    if (find.is_stopped) text = Log("Stopped. %1", text);
    if (!find.is_off_the_list) return text;
    return Log("%1. It was for this one time and is off Windows' list now", text);
  }

  std::string Freed(const CleanerFind& find) const {
    if (find.bytes == 0) return Log("Nothing to remove");
    if (!find.freed) return Log("Freed: it does not say how much");
    return Log("Freed: %1 by its own count", Size(*find.freed));
  }

  std::string MoreFree(const std::map<char, uint64_t>& before) const {
    uint64_t more = 0;
    for (const auto& [letter, now] : FreeSpace(context_.machine)) {
      const auto then = before.find(letter);
      if (then != before.end() && now > then->second) more += now - then->second;
    }
    return Size(more);
  }

  CleaningContext& context_;
  const SystemCleaner& cleaner_;
};

}  // namespace

std::string_view CostOf(const SystemCleaner& cleaner) {
  const auto cost = std::ranges::find(kCosts, std::string_view(cleaner.key),
                                      [](const auto& row) { return row.first; });
  return cost == std::end(kCosts) ? std::string_view() : cost->second;
}

std::string RuleOf(const SystemCleaner& cleaner) { return "windows:" + cleaner.key; }

std::vector<SystemCleaner> TickedCleaners(const Machine& machine,
                                          const std::function<bool(std::string_view)>& is_ticked) {
  try {
    std::vector<SystemCleaner> cleaners = machine.cleaners.List();
    std::erase_if(cleaners, [&](const SystemCleaner& each) { return !is_ticked(each.key); });
    return cleaners;
  } catch (const Error&) {  // nothing of Windows runs here
    return {};
  }
}

void CleanBySystem(CleaningContext& context, const SystemCleaner& cleaner) {
  RunState& state = context.state;
  ResetItemCounters(state);
  state.Entries->BeginRule(RuleOf(cleaner));
  Cleaning cleaning(context, cleaner);
  try {
    cleaning.Run();
  } catch (const Error& error) {
    state.SomeErrors = true;
    RunEntry entry{.kind = EntryKind::kSystemCleaner, .fate = Fate::kStayed, .place = cleaner.name};
    state.Entries->Note(entry, SentenceOf(error));
    NoteEntry(state, std::move(entry));
    cleaning.Tell(Log("It failed. %1", SentenceOf(error)));
  }
  state.Entries->BeginRule("");
}

}  // namespace quellix
