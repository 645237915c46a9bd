#pragma once

#include <memory>
#include <string>
#include <vector>

#include "registry_tools/scan_tools.h"
#include "ui/frm_edit_reference.h"
#include "ui/list_view.h"
#include "ui/long_work.h"
#include "ui/owned_window.h"
#include "ui/window_prompts.h"

namespace quellix {

// The window of a registry tool: each has a template of its own, and all else in common.
class FrmRegistryScan : public OwnedWindow, private ScanView {
 public:
  explicit FrmRegistryScan(const Machine& machine) : machine_(machine) {}

  // Opens the window of a tool; its scan starts as soon as it is seen.
  void Show(ScanTool tool, HWND owner);

 protected:
  void OnInit() override;
  HWND FirstFocus() override { return list_window(); }
  const char* HelpTopic() const override { return scan_->traits().name; }
  void OnSized() override;
  void OnResolution() override;
  void OnCommand(int id, int code) override;
  LRESULT OnNotify(NMHDR& header) override;
  void OnContextMenu(HWND control, POINT screen) override;
  void OnTimer(UINT_PTR id) override;
  void OnClose() override;
  void OnDestroyed() override;

 private:
  // Of a tool's window.
  struct Parts {
    const char* name;
    int window, list;
    std::vector<int> widths;  // of the columns, 96-DPI units
    size_t widest;            // the column that takes the room the others leave
    int menu = 0;             // of its rows, beside what every list can do
  };
  static Parts PartsOf(ScanTool tool);

  void ShowState() override {}  // shown as long as the work goes on, and behind it
  void ShowProblem(std::string_view sentence) override;

  HWND list_window() const { return Control(parts_.list); }
  void ArmTimer();
  void StartScan();
  void Delete(const std::vector<size_t>& rows);
  void EditReference();
  bool IsOffered(ScanAction action) const;
  void Act(ScanAction action);
  void Choose(size_t row);
  void Undo();
  void TellUndone(const RestoreResult& result, size_t files_gone);
  void ShowRows();
  void ShowOrder();
  void ShowDetails();
  void ShowStatus();
  bool Work(const LongWork::Work& work);
  bool HasRow(int row) const { return row >= 0 && static_cast<size_t>(row) < scan_->RowCount(); }
  void SortBy(int column);

  Machine machine_;
  std::unique_ptr<RegistryScan> scan_;
  Parts parts_{};
  std::vector<Column> columns_;
  ListView list_;
  WindowPrompts prompts_;
  FrmEditReference edit_;
  LongWork work_{*this};
};

}  // namespace quellix
