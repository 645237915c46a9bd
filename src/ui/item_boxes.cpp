#include "ui/item_boxes.h"

#include <algorithm>

#include "app/item_catalogue.h"
#include "platform/win32/win32_text.h"
#include "ui/group_heading.h"
#include "ui/resource.h"

namespace quellix {
namespace {

// The groups in three columns, each of which takes a third of the window's growth.
struct GroupPlace {
  Group group;
  int heading;
  int column;
};
constexpr GroupPlace kGroups[] = {
    {Group::kFolderFiles, lblFolderFiles, 0},
    {Group::kMiscellaneous, lblMiscellaneous, 1},
    {Group::kInternet, lblInternet, 1},
    {Group::kFirefox, lblFirefox, 2},
};

const GroupPlace& PlaceOf(Group group) {
  return *std::ranges::find(kGroups, group, &GroupPlace::group);
}

}  // namespace

int ItemBoxes::BoxOf(const Item& item) { return chkRecycleBin - 1 + item.run_order; }

const Item* ItemBoxes::ItemOf(int box) {
  const auto item = std::ranges::find(AllItems(), box, BoxOf);
  return item == AllItems().end() ? nullptr : &*item;
}

std::vector<Anchor> ItemBoxes::Anchors() {
  std::vector<Anchor> anchors;
  const auto add = [&](int control, const GroupPlace& place) {
    anchors.push_back({control, place.column / 3.0, 0, (place.column + 1) / 3.0, 0});
  };
  for (const GroupPlace& place : kGroups) add(place.heading, place);
  for (const Item& item : AllItems()) add(BoxOf(item), PlaceOf(item.group));
  return anchors;
}

void ItemBoxes::Fill() const {
  for (const GroupPlace& place : kGroups) MakeGroupHeading(layout_.Control(place.heading));
  // A box would paint itself at each new text, shown or not.
  for (const Item& item : AllItems()) {
    DefWindowProcW(layout_.Control(BoxOf(item)), WM_SETTEXT, 0,
                   reinterpret_cast<LPARAM>(Wide(item.Label()).c_str()));
  }
}

void ItemBoxes::ShowTicks() const {
  for (const Item& item : AllItems()) {
    const WPARAM state = selection_.IsChecked(item) ? BST_CHECKED : BST_UNCHECKED;
    SendMessageW(layout_.Control(BoxOf(item)), BM_SETCHECK, state, 0);
  }
}

void ItemBoxes::ShowEnabled(ToolTips& tips) const {
  for (const Item& item : AllItems()) {
    const HWND box = layout_.Control(BoxOf(item));
    const std::string_view why = selection_.WhyDisabled(item);
    EnableWindow(box, why.empty());
    tips.Set(box, Wide(why));
  }
}

bool ItemBoxes::Toggle(int control) {
  if (const Item* item = ItemOf(control)) {
    selection_.SetChecked(*item, !selection_.IsChecked(*item));
    return true;
  }
  if (control == Check3) {
    const HWND box = layout_.Control(Check3);
    const bool checked = SendMessageW(box, BM_GETCHECK, 0, 0) != BST_CHECKED;
    SendMessageW(box, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
    selection_.SelectAll(checked);
    return true;
  }
  const auto place = std::ranges::find(kGroups, control, &GroupPlace::heading);
  if (place == std::end(kGroups)) return false;
  selection_.ToggleGroup(place->group);
  return true;
}

}  // namespace quellix
