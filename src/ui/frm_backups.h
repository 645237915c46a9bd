#pragma once

#include <optional>

#include "backup/backup_browser.h"
#include "ui/list_view.h"
#include "ui/long_work.h"
#include "ui/owned_window.h"
#include "ui/resource.h"
#include "ui/window_prompts.h"

namespace quellix {

// The Backups window: the archives, what is in the chosen one, and what can be done with it. No run
// fills an archive meanwhile.
class FrmBackups : public OwnedWindow {
 public:
  explicit FrmBackups(const Machine& machine) : machine_(machine) {}

  void Show(HWND owner);

 protected:
  void OnInit() override;
  HWND FirstFocus() override { return Control(lstvArchives); }
  void OnSized() override;
  void OnResolution() override;
  void OnCommand(int id, int code) override;
  LRESULT OnNotify(NMHDR& header) override;
  void OnContextMenu(HWND control, POINT screen) override;
  void OnClose() override;
  void OnDestroyed() override;
  const char* HelpTopic() const override { return "backups"; }
  HBRUSH OnControlColor(HDC target, HWND control) override;

 private:
  static size_t At(int row) { return static_cast<size_t>(row); }
  void OnArchivesNotify(const NMHDR& header);
  void OnEntriesNotify(const NMHDR& header);
  void SortArchives(int column);
  void SortEntries(int column);
  void ShowArchives();
  void ShowEntries();
  void ShowOutcome();
  void EnableCommands();
  void ChangeMode();
  void View();
  void Restore(int command);
  bool Work(const LongWork::Work& work);
  void ShowProgress(const Progress& progress);
  void RepairArchive();
  void DeleteArchive();

  Machine machine_;
  std::optional<BackupBrowser> browser_;
  ListView archives_, entries_;
  WindowPrompts prompts_;
  bool filling_ = false;  // the lists change by themselves, not by the user
  LongWork work_{*this};
};

}  // namespace quellix
