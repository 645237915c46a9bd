#pragma once

#include "browser_tools/favorites.h"
#include "ui/list_view.h"
#include "ui/long_work.h"
#include "ui/owned_window.h"
#include "ui/resource.h"
#include "ui/status_view.h"
#include "ui/window_prompts.h"

namespace quellix {

// The favorites: what is wrong with each, whether it answers, and into the recycle bin with them.
class FrmFavorites : public OwnedWindow {
 public:
  explicit FrmFavorites(const Machine& machine) : machine_(machine), favorites_(machine) {}

  void Show(HWND owner);

 protected:
  void OnInit() override;
  HWND FirstFocus() override { return Control(lstvFavorites); }
  void OnSized() override;
  void OnResolution() override;
  void OnCommand(int id, int code) override;
  const char* HelpTopic() const override { return "favorites"; }
  LRESULT OnNotify(NMHDR& header) override;
  void OnContextMenu(HWND control, POINT screen) override;
  void OnTimer(UINT_PTR id) override;
  void OnClose() override;

 private:
  bool Work(const LongWork::Work& work);
  void Load();
  void Ask();
  void ChooseBookmarks();
  void Delete(const std::vector<size_t>& rows);
  void ShowRows();
  bool HasRow(int row) const {
    return row >= 0 && static_cast<size_t>(row) < favorites_.RowCount();
  }

  Machine machine_;
  Favorites favorites_;
  StatusView display_;
  ListView list_;
  WindowPrompts prompts_;
  LongWork work_{*this};
};

}  // namespace quellix
