#pragma once

#include <optional>

#include "backup/backup_browser.h"
#include "ui/dialog.h"
#include "ui/list_view.h"
#include "ui/resource.h"

namespace quellix {

// The Backups window: the archives, what is in the chosen one, and what can be done with it. Its
// owner is disabled while it is open, so that no run fills an archive meanwhile.
class FrmBackups : public Dialog, private Prompts {
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
  HBRUSH OnControlColor(HDC target, HWND control) override;

 private:
  OverwriteAnswer AskOverwrite(std::string_view path) override;
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
  void DeleteArchive();

  Machine machine_;
  std::optional<BackupBrowser> browser_;
  ListView archives_, entries_;
  HWND owner_ = nullptr;
  bool filling_ = false;  // the lists change by themselves, not by the user
  bool working_ = false;
};

}  // namespace quellix
