#pragma once

#include <string>

#include "browser_tools/cache_preview.h"
#include "ui/browser_control.h"
#include "ui/picture.h"

namespace quellix {

// The pane that shows one entry of the cache: a page in the browser control, made when it is first
// needed, or a text or a picture.
class CacheDisplay {
 public:
  CacheDisplay(HWND page, HWND text) : page_(page), text_(text) {}

  void Show(const Machine& machine, const UrlCacheEntry& entry);
  // Lets go of whatever is shown, so that it can be deleted.
  void Clear();
  void Draw(const DRAWITEMSTRUCT& item) const { picture_.Draw(item.hDC, item.rcItem); }
  void Resize() { browser_.Resize(); }
  void TakeFocus();
  bool TakeKey(MSG& message) { return browser_.TakeKey(message); }

 private:
  bool HasBrowser();
  void ShowPage(const std::string& address);
  void ShowText(const std::string& lines);
  void Reveal(HWND shown);

  HWND page_, text_;
  BrowserControl browser_;
  bool has_tried_browser_ = false;
  Picture picture_;
};

}  // namespace quellix
