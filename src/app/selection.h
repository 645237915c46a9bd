#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/name_ticks.h"
#include "platform/machine.h"
#include "plugins/recipe_ticks.h"
#include "run/item.h"
#include "settings/preferences.h"

namespace quellix {

// The rules of the main window's 30 check boxes; the window and the console only show them.
// Items are named by their place in the catalogue (AllItems()).
class Selection {
 public:
  bool IsChecked(const Item& item) const;
  void SetChecked(const Item& item, bool checked);
  // Whether the box can be clicked: its cleaner exists and its protection is lifted.
  bool IsEnabled(const Item& item) const { return WhyDisabled(item).empty(); }
  // A sentence why it cannot, in English; "" when it can. Lives as long as the program.
  std::string_view WhyDisabled(const Item& item) const;
  // Applies Protect1, Protect2 and SelectRisky. A box that is then protected loses its tick: a run
  // takes every ticked item.
  void ApplyProtection(const Preferences& preferences);

  // A click on a group's heading: checks all boxes of the group, or clears them when all are
  // checked. Boxes under protection are not part of it; what is risky is only cleared, unless
  // SelectRisky is set.
  void ToggleGroup(Group group);
  // Checks all that ToggleGroup would.
  void CheckGroup(Group group);
  // A click on Check3: every box that can be clicked takes its state; of risky ones likewise.
  void SelectAll(bool checked);
  int CountChecked() const;
  bool selects_risky() const { return select_risky_; }
  // Of a group's boxes, how many can be clicked or are checked, and how many are checked.
  struct Count {
    int all = 0, checked = 0;
  };
  Count CountIn(Group group) const;

  // What of the browsers found here is cleaned with the items.
  NameTicks& browsers() { return browsers_; }
  const NameTicks& browsers() const { return browsers_; }
  // Which of Windows' own cleaners work then as well.
  NameTicks& cleaners() { return cleaners_; }
  const NameTicks& cleaners() const { return cleaners_; }
  // What of a Windows that does not run is cleaned besides (see VolumeItems); nothing by itself.
  std::vector<const Item*>& volume_items() { return volume_items_; }
  const std::vector<const Item*>& volume_items() const { return volume_items_; }
  // Which recipes of the user's own lists are carried out then, and as what they were seen.
  modPlugin::RecipeTicks& recipes() { return recipes_; }
  const modPlugin::RecipeTicks& recipes() const { return recipes_; }

  // chkItems.txt, one line of 30 values. Loading: a missing file changes nothing, a field that is
  // no number leaves its box, missing fields leave theirs, further ones are ignored. Both throw
  // Error when the file cannot be read or written; a failed save keeps the old file. A file that
  // could not be read is kept as well, unless a box was changed since.
  void LoadCheckStates(const Machine& machine);
  void SaveCheckStates(const Machine& machine) const;

 private:
  // Whether it is checked together with others.
  bool GoesAlong(const Item& item) const { return select_risky_ || !item.guide.is_risky; }

  using Checks = std::array<bool, kItemCount>;  // by run order, from 0
  Checks checked_{};
  NameTicks browsers_{"Browsers.txt"}, cleaners_{"Cleaners.txt"};
  modPlugin::RecipeTicks recipes_;
  std::vector<const Item*> volume_items_;
  std::optional<Checks> unread_;  // as they were when the file could not be read
  bool protect1_ = false;
  bool protect2_ = false;
  bool select_risky_ = true;
};

}  // namespace quellix
