#include "ui/cache_display.h"

#include "platform/text.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"

namespace quellix {

void CacheDisplay::Show(const Machine& machine, const UrlCacheEntry& entry) {
  picture_.Clear();
  if (IsCacheRecord(entry.source)) return ShowText(DescribeCacheRecord(entry.source));
  if (HasBrowser()) return ShowPage(entry.source);
  const CacheContent content = ReadCacheContent(machine, entry);
  if (content.picture.empty()) return ShowText(content.text);
  if (!picture_.Load(Wide(content.picture))) return ShowText(Tr("The picture is damaged."));
  Reveal(page_);
}

void CacheDisplay::Clear() {
  picture_.Clear();
  if (browser_) browser_.Navigate(L"about:blank");
  SetWindowTextW(text_, L"");
  Reveal(page_);
}

void CacheDisplay::TakeFocus() {
  if (IsWindowVisible(text_)) {
    SetFocus(text_);
  } else if (browser_) {
    browser_.TakeFocus();
  }
}

bool CacheDisplay::HasBrowser() {
  if (!has_tried_browser_) browser_.Create(page_);
  has_tried_browser_ = true;
  return static_cast<bool>(browser_);
}

void CacheDisplay::ShowPage(const std::string& address) {
  Reveal(page_);
  browser_.Navigate(L"about:blank");
  browser_.Navigate(Wide(address));
}

// An edit control wants both characters at a line's end.
void CacheDisplay::ShowText(const std::string& lines) {
  SetWindowTextW(text_, Wide(ReplaceNoCase(lines, "\n", "\r\n")).c_str());
  Reveal(text_);
}

void CacheDisplay::Reveal(HWND shown) {
  ShowWindow(text_, shown == text_ ? SW_SHOW : SW_HIDE);
  ShowWindow(page_, shown == page_ ? SW_SHOW : SW_HIDE);
  InvalidateRect(page_, nullptr, FALSE);
}

}  // namespace quellix
