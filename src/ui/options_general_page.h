#pragma once

#include "ui/language.h"
#include "ui/options_page.h"

namespace quellix {

class OptionsGeneralPage : public OptionsPageWindow {
 public:
  using OptionsPageWindow::OptionsPageWindow;
  void Make(HWND owner) override { Create(frmOptionsGeneral, owner); }
  void ShowSaved() override;

 protected:
  void Fill() override;
  void OnControl(int id, int code) override;
  const char* HelpTopic() const override { return "options-general"; }

 private:
  void EnableFields() const;
  void FillLanguages();

  std::vector<Language> languages_;  // as they are offered
};

class OptionsDeletionPage : public OptionsPageWindow {
 public:
  using OptionsPageWindow::OptionsPageWindow;
  void Make(HWND owner) override { Create(frmOptionsDeletion, owner); }

 protected:
  void Fill() override;
  void OnControl(int id, int code) override;
  const char* HelpTopic() const override { return "options-deletion"; }

 private:
  void FillWipeSteps() const;
  bool Take(int id, int code);
  void BrowseForBackup();
};

// What is asked before a run, and what is kept of it.
class OptionsRunsPage : public OptionsPageWindow {
 public:
  using OptionsPageWindow::OptionsPageWindow;
  void Make(HWND owner) override { Create(frmOptionsRuns, owner); }

 protected:
  void Fill() override;
  void OnControl(int id, int code) override;
  const char* HelpTopic() const override { return "options-runs"; }
};

// Where the backups are, and the way to their window.
class OptionsBackupsPage : public OptionsPageWindow {
 public:
  using OptionsPageWindow::OptionsPageWindow;
  void Make(HWND owner) override { Create(frmOptionsBackups, owner); }
  void ShowSaved() override;

 protected:
  void Fill() override;
  void OnControl(int id, int code) override;
  const char* HelpTopic() const override { return "options-backups"; }
};

}  // namespace quellix
