#include "app/run_question.h"

#include <algorithm>
#include <set>

#include "app/preview_run.h"
#include "app/short_text.h"
#include "platform/words.h"
#include "run/in_use.h"

namespace quellix {
namespace {

constexpr size_t kMostNames = 8, kLongestName = 80;

// One below the other, the first few.
class Names {
 public:
  void Add(std::string_view line) {
    if (++count_ <= kMostNames) text_.append("\n").append(line);
  }
  std::string Below(std::string_view heading) const {
    if (count_ == 0) return {};
    const size_t more = count_ > kMostNames ? count_ - kMostNames : 0;
    return std::string(heading) + text_ +
           (more > 0 ? "\n" + Tr("and %1 more", std::to_string(more)) : "");
  }

 private:
  std::string text_;
  size_t count_ = 0;
};

using Rules = std::set<std::string_view>;

// The rules of what would go, and is such.
Rules RulesThatTake(const EntryList& found, bool (*is_such)(const RunEntry&)) {
  std::set<uint32_t> numbers;
  const RunEntries& entries = found.entries();
  for (size_t i = 0; i < entries.all.size(); ++i) {
    const RunEntry& entry = entries.all[i];
    if (is_such(entry) && found.IsTaken(i)) numbers.insert(entry.rule);
  }
  Rules rules;
  for (const uint32_t number : numbers) rules.insert(entries.rules[number]);
  return rules;
}

bool Goes(const RunEntry& entry) { return entry.fate == Fate::kRemoved; }

}  // namespace

VerbOf VerbAndQuestion(std::string_view question) {
  const std::string_view first = question.substr(0, question.find(' '));
  const size_t bar = first.find('|');
  if (bar == first.npos) return {first, question};
  return {first.substr(0, bar), question.substr(bar + 1)};
}

RunQuestion QuestionOf(const EntryList& found, const modPlugin::ShownRecipes* shown,
                       const modPlugin::RecipeTicks& ticks, const Locale& locale, bool asks) {
  const RunEntries& entries = found.entries();
  Names costs, unseen;
  std::vector<bool> is_left(entries.rules.size());
  const Rules takes = shown ? RulesThatTake(found, Goes) : Rules(),
              loses = shown ? RulesThatTake(found, GoesForGood) : Rules();
  const auto all = shown ? shown->all : decltype(shown->all)();
  const auto is_seen = [&ticks](const modPlugin::ShownRecipe& recipe) {
    return recipe.fingerprints.Has(ticks.ChoiceOf(recipe.name).seen);
  };
  // What one that is left took in the look, the run may find by another.
  const bool may_lose_more =
      entries.left_out > 0 || std::ranges::any_of(all, [&](const auto& recipe) {
        return !is_seen(recipe) && loses.contains(modPlugin::RuleOf(recipe.name));
      });
  for (const modPlugin::ShownRecipe& recipe : all) {
    const std::string rule = modPlugin::RuleOf(recipe.name);
    if (!is_seen(recipe)) {
      if (!takes.contains(rule)) continue;
      unseen.Add(Shortened(recipe.name, kLongestName));
      is_left[static_cast<size_t>(std::ranges::find(entries.rules, rule) - entries.rules.begin())] =
          true;
    } else if (!recipe.loses.empty() && (loses.contains(rule) || may_lose_more)) {
      costs.Add(Shortened(recipe.name, kLongestName) + ": " + recipe.loses);
    }
  }
  const std::string lost = costs.Below(Tr("This cannot be had again:")),
                    left = asks ? unseen.Below(Tr("New or changed, so left until you have looked "
                                                  "at what goes:"))
                                : "";
  RunQuestion question{
      asks ? QuestionBefore(
                 entries, locale,
                 [&](size_t i) { return found.IsTaken(i) && !is_left[entries.all[i].rule]; })
           : "",
      lost + (lost.empty() || left.empty() ? "" : "\n\n") + left,
      {}};
  if (question.heading.empty() && !question.text.empty())
    question.heading = lost.empty() ? Tr("Clean the rest?") : Tr("Clean all the same?");
  return question;
}

StartOffer OfferOfStart(const RunState& look, const Machine& machine) {
  const bool may = look.StayedLocked > 0 && look.RemovalMode == kDelete &&
                   machine.session.RunsPrograms() && machine.session.HasAdministratorRights();
  if (!may) return {};
  const std::shared_ptr<const InUse> in_use = look.Parts.Find<InUse>();
  return {Tr("Have Windows remove at its next start what is in use in its own folder (%1 in use in "
             "all)",
             FormatCount(look.StayedLocked, machine.system.UserLocale())),
          in_use ? in_use->entries : std::vector<size_t>()};
}

}  // namespace quellix
