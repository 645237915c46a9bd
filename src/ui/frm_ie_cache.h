#pragma once

#include <optional>

#include "browser_tools/cache_list.h"
#include "ui/cache_display.h"
#include "ui/list_view.h"
#include "ui/long_work.h"
#include "ui/owned_window.h"
#include "ui/resource.h"

namespace quellix {

// The viewer of the Internet cache. It lives only while it is open.
class FrmIECache : public OwnedWindow {
 public:
  explicit FrmIECache(const Machine& machine) : machine_(machine) {}

  void Show(HWND owner);

 protected:
  void OnInit() override;
  HWND FirstFocus() override { return Control(lstvCache); }
  void OnSized() override;
  void OnResolution() override;
  void OnCommand(int id, int code) override;
  LRESULT OnNotify(NMHDR& header) override;
  void OnContextMenu(HWND control, POINT screen) override;
  void OnDrawItem(const DRAWITEMSTRUCT& item) override;
  HBRUSH OnControlColor(HDC target, HWND control) override {
    return control == Control(txtCache) ? Paper(target) : nullptr;
  }
  bool OnKey(MSG& message) override { return display_ && display_->TakeKey(message); }
  void OnClose() override;
  void OnDestroyed() override;
  const char* HelpTopic() const override { return "cache"; }

 private:
  CacheKind Kind() const;
  bool IsListed(int row) const;
  Cell CellAt(int row, int column) const;
  void Load();
  void ShowRows();
  void EnableCommands() const;
  void ShowNothing();
  void ShowCacheEntry(size_t row);
  void CheckAll(bool checked);
  void Toggle(int row);
  void View();
  void Sort(int column);
  enum class Which { kTicked, kSelected, kAll };
  void Delete(Which which);
  bool Work(const LongWork::Work& work);

  Machine machine_;
  std::optional<CacheList> cache_;
  std::optional<CacheDisplay> display_;
  ListView list_;
  LongWork work_{*this};
};

}  // namespace quellix
