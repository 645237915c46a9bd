#pragma once

#include "platform/machine.h"
#include "search/search_results.h"
#include "ui/list_view.h"
#include "ui/long_work.h"
#include "ui/owned_window.h"

namespace quellix {

// The results of a run's junk searches. It opens when the first search starts and shows the finds
// as they come.
class FrmDeletetion : public OwnedWindow {
 public:
  explicit FrmDeletetion(const Machine& machine) : machine_(machine) {}

  // The results must live as long as the window is open.
  void Show(HWND owner, SearchResults& results);
  // Brings everything up to date, such as when the search has ended.
  void Refresh();

 protected:
  void OnInit() override;
  HWND FirstFocus() override;
  void OnResolution() override;
  void OnCommand(int id, int code) override;
  const char* HelpTopic() const override { return "results"; }
  LRESULT OnNotify(NMHDR& header) override;
  void OnContextMenu(HWND control, POINT screen) override;
  HBRUSH OnControlColor(HDC target, HWND control) override;
  void OnTimer(UINT_PTR id) override;
  void OnClose() override;

 private:
  void ShowRows();
  void ShowTexts();
  void ShowBar() const;
  void ShowText(int id, const std::string& text);
  void EnableCommands();
  void Enable(int button, int entry, bool enabled);
  void Sort(int column);
  void Filter();
  enum class Which { kTicked, kSelected, kAll };
  void Delete(Which which);
  void PressKey(WORD key);
  // What the shell shows of the row with the focus.
  void AskShell(void (Shell::*show)(std::string_view)) const;
  // Whether there is such a row: a list may still ask for one that has just gone.
  bool Shows(int row) const { return row >= 0 && Index(row) < results_->RowCount(); }
  bool IsWorking() const { return results_->searching() || results_->deleting(); }
  static size_t Index(int row) { return static_cast<size_t>(row); }
  std::string ReasonOf(int row) const;
  // The path of the row with the focus, "" for none.
  std::string FocusedPath() const;
  std::string StateText() const;
  Cell CellText(int row, int column) const;

  Machine machine_;
  SearchResults* results_ = nullptr;
  ListView list_;
  ULONGLONG deleting_since_ = 0;  // milliseconds, of the tick count
  LongWork work_{*this};          // a deletion; searches are the work of the run
};

}  // namespace quellix
