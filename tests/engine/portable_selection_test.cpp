#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "app/item_catalogue.h"
#include "app/selection.h"

namespace quellix {
namespace {

int CountIn(const Selection& selection, Group group) {
  int count = 0;
  for (const Item& item : AllItems()) count += item.group == group && selection.IsChecked(item);
  return count;
}

TEST(Selection, EveryPlaceAndNameIsTakenOnce) {
  std::set<int> places;
  std::set<std::string> names;
  int order = 0;
  for (const Item& item : AllItems()) {
    EXPECT_EQ(item.run_order, ++order);
    places.insert(item.check_state_place);
    names.insert(item.key);
    names.insert(item.control);
    EXPECT_EQ(FindItem(item.key), &item);
  }
  EXPECT_EQ(order, 30);
  EXPECT_EQ(places.size(), 30u);
  EXPECT_EQ(*places.rbegin(), 30);
  EXPECT_EQ(names.size(), 60u);
  EXPECT_EQ(FindItem("cleantempfiles"), FindItem("CHKTEMP"));
  EXPECT_EQ(FindItem("nothing"), nullptr);
}

TEST(Selection, WhatLosesDataForGoodGoesAlongOnlyWhenTheSettingsSaySo) {
  const std::set<std::string> risky = {"CleanRecycleBin", "CleanMozillaForms",
                                       "CleanMozillaPasswords"};
  for (const bool select_risky : {true, false}) {
    Selection selection;
    Preferences preferences;
    preferences.select_risky = select_risky;
    selection.ApplyProtection(preferences);
    for (const bool by_group : {false, true}) {
      selection.SelectAll(false);
      if (by_group) {
        selection.ToggleGroup(Group::kFirefox);
        selection.CheckGroup(Group::kFolderFiles);
      } else {
        selection.SelectAll(true);
      }
      for (const Item& item : AllItems()) {
        EXPECT_EQ(item.guide.is_risky, risky.contains(item.key)) << item.key;
        if (item.guide.is_risky) {
          EXPECT_EQ(selection.IsChecked(item), select_risky) << item.key;
        }
      }
      EXPECT_TRUE(selection.IsChecked(*FindItem("CleanMozillaCache")));
    }
    // They are cleared with the others, whoever ticked them.
    selection.SetChecked(*FindItem("CleanMozillaPasswords"), true);
    selection.ToggleGroup(Group::kFirefox);
    EXPECT_EQ(CountIn(selection, Group::kFirefox), 0);
  }
}

TEST(Selection, BoxesThatCannotBeClickedKeepTheirState) {
  Selection selection;
  selection.SetChecked(*FindItem("CleanEmptyFiles"), true);
  selection.SelectAll(true);
  int usable = 0;
  for (const Item& item : AllItems()) {
    usable += selection.IsEnabled(item);
    EXPECT_TRUE(!selection.IsEnabled(item) || selection.IsChecked(item)) << item.key;
  }
  EXPECT_EQ(selection.CountChecked(), usable + 1);
  selection.SelectAll(false);
  EXPECT_EQ(selection.CountChecked(), 1);
  EXPECT_TRUE(selection.IsChecked(*FindItem("CleanEmptyFiles")));
}

TEST(Selection, ABoxThatIsProtectedLosesItsTick) {
  Selection selection;
  Preferences general;
  for (const char* key : {"CleanEmptyFiles", "CleanShortcuts", "CleanTempFiles"})
    selection.SetChecked(*FindItem(key), true);
  general.protect1 = general.protect2 = true;  // lifted
  selection.ApplyProtection(general);
  EXPECT_EQ(selection.CountChecked(), 3);
  general.protect1 = false;
  selection.ApplyProtection(general);
  EXPECT_FALSE(selection.IsChecked(*FindItem("CleanEmptyFiles")));
  EXPECT_EQ(selection.CountChecked(), 2);
}

}  // namespace
}  // namespace quellix
