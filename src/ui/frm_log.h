#pragma once

#include "platform/file_system.h"
#include "run/views.h"
#include "ui/dialog.h"
#include "ui/list_view.h"

namespace quellix {

// The log window: what the last run did.
class FrmLog : public Dialog {
 public:
  explicit FrmLog(FileSystem& files) : files_(files) {}

  // Opens the window, or shows another report in it.
  void Show(HWND owner, const RunReport& report);

 protected:
  void OnInit() override;
  HWND FirstFocus() override { return Control(IDCANCEL); }
  void OnResolution() override;
  void OnCommand(int id, int code) override;
  const char* HelpTopic() const override { return "log"; }
  LRESULT OnNotify(NMHDR& header) override;
  HBRUSH OnControlColor(HDC target, HWND control) override;

 private:
  Cell CategoryCell(int row, int column) const;
  void Save() const;

  FileSystem& files_;
  RunReport report_;
  ListView categories_;
};

}  // namespace quellix
