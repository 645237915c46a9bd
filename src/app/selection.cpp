#include "app/selection.h"

#include <algorithm>

#include "app/item_catalogue.h"
#include "platform/text.h"
#include "platform/words.h"
#include "settings/list_files.h"
#include "settings/numbers.h"

namespace quellix {
namespace {

constexpr std::string_view kCheckStates = "chkItems.txt";

// The items in the order of chkItems.txt.
std::array<const Item*, kItemCount> ByCheckStatePlace() {
  std::array<const Item*, kItemCount> result{};
  for (const Item& item : AllItems()) result[item.check_state_place - 1] = &item;
  return result;
}

bool BelongsToToggle(const Item& item, Group group) {
  return item.group == group && item.protection == Protection::kNone;
}

}  // namespace

bool Selection::IsChecked(const Item& item) const { return checked_[item.run_order - 1]; }

void Selection::SetChecked(const Item& item, bool checked) {
  checked_[item.run_order - 1] = checked;
}

std::string_view Selection::WhyDisabled(const Item& item) const {
  if (item.cleaner == nullptr) return Mark("Not available in this version yet.");
  const bool lifted = item.protection == Protection::kNone ||
                      (item.protection == Protection::kProtect1 ? protect1_ : protect2_);
  return lifted ? "" : Mark("Switched off for safety. Enable it in the Options.");
}

void Selection::ApplyProtection(const Preferences& preferences) {
  protect1_ = preferences.protect1;
  protect2_ = preferences.protect2;
  select_risky_ = preferences.select_risky;
  for (const Item& item : AllItems()) {
    if (item.protection != Protection::kNone && !IsEnabled(item)) SetChecked(item, false);
  }
}

void Selection::ToggleGroup(Group group) {
  const auto all_checked = std::ranges::all_of(AllItems(), [&](const Item& item) {
    return !BelongsToToggle(item, group) || !GoesAlong(item) || IsChecked(item);
  });
  if (!all_checked) return CheckGroup(group);
  for (const Item& item : AllItems()) {
    if (BelongsToToggle(item, group)) SetChecked(item, false);
  }
}

void Selection::CheckGroup(Group group) {
  for (const Item& item : AllItems()) {
    if (BelongsToToggle(item, group) && GoesAlong(item)) SetChecked(item, true);
  }
}

void Selection::SelectAll(bool checked) {
  for (const Item& item : AllItems()) {
    if (IsEnabled(item) && (!checked || GoesAlong(item))) SetChecked(item, checked);
  }
}

int Selection::CountChecked() const { return static_cast<int>(std::ranges::count(checked_, true)); }

Selection::Count Selection::CountIn(Group group) const {
  Count count;
  for (const Item& item : AllItems()) {
    if (item.group != group || !(IsEnabled(item) || IsChecked(item))) continue;
    ++count.all;
    if (IsChecked(item)) ++count.checked;
  }
  return count;
}

void Selection::LoadCheckStates(const Machine& machine) {
  unread_ = checked_;
  const std::vector<std::string> lines = ReadListFile(machine, kCheckStates);
  unread_.reset();
  if (lines.empty()) return;
  const std::vector<std::string> fields = Split(lines.front(), ',');
  const std::array<const Item*, kItemCount> items = ByCheckStatePlace();
  for (size_t i = 0; i < std::min(fields.size(), items.size()); ++i) {
    const std::optional<int16_t> value = ToInt16(fields[i]);
    if (value && *value >= 0 && *value <= 2) SetChecked(*items[i], *value == 1);
  }
}

void Selection::SaveCheckStates(const Machine& machine) const {
  if (unread_ == checked_) return;
  std::string line;
  for (const Item* item : ByCheckStatePlace()) {
    if (!line.empty()) line += ',';
    line += IsChecked(*item) ? '1' : '0';
  }
  WriteListFile(machine, kCheckStates, {line});
}

}  // namespace quellix
