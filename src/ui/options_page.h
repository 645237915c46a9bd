#pragma once

#include <functional>
#include <span>
#include <string>

#include "app/options.h"
#include "app/schedule.h"
#include "run/views.h"
#include "ui/control_text.h"
#include "ui/dialog.h"
#include "ui/list_view.h"
#include "ui/resource.h"

namespace quellix {

// What the pages of the Options window work with.
struct OptionsContext {
  const Machine& machine;
  Options& options;
  Prompts& prompts;
  std::function<void()> on_change;               // something differs from what is saved
  std::function<void(HWND owner)> show_backups;  // opens the Backups window
  ScheduledCleaning& schedule;
};

// A check box and the setting it shows.
struct SettingBox {
  int control;
  bool GeneralOptions::*value;
};

// One page of the Options window: a window inside it that shows a part of the draft and takes every
// change into it at once.
class OptionsPageWindow : public Dialog {
 public:
  explicit OptionsPageWindow(const OptionsContext& context) : context_(context) {}

  // Makes the page, not yet visible.
  virtual void Make(HWND owner) = 0;
  void MoveTo(const RECT& place);
  virtual void Reveal(bool visible) { ShowWindow(window(), visible ? SW_SHOW : SW_HIDE); }
  bool Has(int control) const { return Control(control) != nullptr; }
  // A command of a control of this page.
  void Command(int id, int code) { OnCommand(id, code); }
  // Puts the focus on a control and selects its text.
  void FocusOn(int control);
  // A sentence when something typed would be lost, "" when nothing would; and its field.
  virtual std::string Unfinished() const { return {}; }
  virtual int UnfinishedField() const { return 0; }
  // Enter in a field of this page; false when it is for the whole window.
  virtual bool TakeEnter() { return false; }
  // Stores what the draft does not hold; sentences when that failed.
  virtual std::string Store() { return {}; }
  // Shows anew what comes from the disk and not from the draft.
  virtual void ShowSaved() {}
  void FollowResolution(int dpi) { SetDpi(dpi); }
  // As its texts need it, in 96-DPI units.
  double NaturalWidth() { return layout().width(); }
  double NaturalHeight() { return layout().height(); }
  // Pixels.
  SIZE LeastSize() { return layout().MinimumSize(dpi()); }

 protected:
  virtual void Fill() = 0;
  // A control changed or was clicked; never while the page fills itself.
  virtual void OnControl(int id, int code) = 0;

  void OnInit() final;
  void OnCommand(int id, int code) final;
  void Changed() const;

  void ShowBoxes(std::span<const SettingBox> boxes) const;
  // True when `id` is one of the boxes; its setting is then taken.
  bool TakeBox(std::span<const SettingBox> boxes, int id);
  bool IsChecked(int id) const { return IsTicked(window(), id); }
  void Check(int id, bool checked) const {
    CheckDlgButton(window(), id, checked ? BST_CHECKED : BST_UNCHECKED);
  }
  void Enable(int id, bool enabled) const { EnableWindow(Control(id), enabled); }
  std::string TextOf(int id) const;

  Options& options() const { return context_.options; }
  const OptionsContext& context() const { return context_; }

 private:
  const OptionsContext& context_;
  bool ready_ = false;
};

}  // namespace quellix
