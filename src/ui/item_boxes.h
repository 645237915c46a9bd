#pragma once

#include <vector>

#include "app/selection.h"
#include "ui/layout.h"
#include "ui/tool_tips.h"

namespace quellix {

// The boxes of the items and the headings of their groups in the main window. They only show the
// engine's selection: a click changes that, and they follow.
class ItemBoxes {
 public:
  // Both live as long as the boxes; the layout knows the window's controls when they are used.
  ItemBoxes(const Layout& layout, Selection& selection) : layout_(layout), selection_(selection) {}

  static int BoxOf(const Item& item);
  static const Item* ItemOf(int box);  // null for another control

  static std::vector<Anchor> Anchors();
  void Fill() const;
  void ShowTicks() const;
  // A box that cannot be clicked tells why in its tip.
  void ShowEnabled(ToolTips& tips) const;
  // What a click on a box, a heading or the box for all does; false for another control.
  bool Toggle(int control);

 private:
  const Layout& layout_;
  Selection& selection_;
};

}  // namespace quellix
