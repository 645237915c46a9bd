#pragma once

#include "ui/options_page.h"

namespace quellix {

// The page of one of the user's lists: its rows, a field for an entry, and what can be done.
class OptionsListPage : public OptionsPageWindow {
 public:
  OptionsListPage(const OptionsContext& context, OptionList& list)
      : OptionsPageWindow(context), list_(list) {}

  void Make(HWND owner) override { Create(frmOptionsList, owner); }
  std::string Unfinished() const override;
  int UnfinishedField() const override { return txtEntry; }
  bool TakeEnter() override;

 protected:
  void Fill() override;
  void OnSized() override;
  void OnResolution() override;
  void OnControl(int id, int code) override;
  const char* HelpTopic() const override { return "options-lists"; }
  LRESULT OnNotify(NMHDR& header) override;
  void OnContextMenu(HWND control, POINT screen) override;

 private:
  void FillLabels();
  void FillColumns();
  void WidenEntry();
  void OnListNotify(const NMHDR& header);
  void ShowRows();
  void ShowEntry(const ListRow& row);
  void EnableCommands();
  void Put(bool add);
  void Remove();
  void Browse();
  void RestoreDefaults();
  std::optional<size_t> OnlyRow() const;
  bool IsNew() const;

  OptionList& list_;
  ListView rows_;
  bool filling_ = false;  // the list changes by itself, not by the user
};

}  // namespace quellix
