#pragma once

#include <functional>

#include "app/preview_run.h"
#include "app/run_question.h"
#include "app/startup.h"
#include "app/tips.h"
#include "engine.h"
#include "plugins/recipe_run.h"
#include "run/exit_code.h"
#include "ui/dialog.h"
#include "ui/frm_countdown.h"
#include "ui/frm_log.h"
#include "ui/frm_preview.h"
#include "ui/frm_welcome.h"
#include "ui/item_pane.h"
#include "ui/item_view.h"
#include "ui/long_work.h"
#include "ui/menu_windows.h"
#include "ui/run_display.h"
#include "ui/tray_icon.h"

namespace quellix {

// The main window. While a run is in progress, Stop is all that acts.
class FrmMain : public Dialog {
 public:
  FrmMain(Engine& engine, RunDisplay& display, const Machine& machine, OtherUsers users,
          Scheduler& scheduler)
      : engine_(engine),
        display_(display),
        machine_(machine),
        log_(machine),
        preview_(machine),
        welcome_(machine),
        windows_(engine, machine, std::move(users), scheduler),
        tips_(machine),
        items_(machine, engine.selection()),
        pane_(machine, *this, tips_) {}

  // Loads the engine and starts as `mode` says: shows the window, with a message when something
  // could not be loaded, or runs hidden. The end of the window ends the thread's message loop, with
  // the program's exit code.
  // `ending`: of a run that it starts with.
  void Open(HWND owner, StartMode mode, modShutDown::Ending ending);
  // The exit code of a window whose user has chosen another language: it is to be made anew.
  static constexpr int kOtherLanguage = -1;
  // What it hands on to the window that follows it then.
  struct Legacy {
    modShutDown::Ending ending = modShutDown::Ending::kNone;  // of the next run
    bool is_ticked = false;                                   // the box that turns off
    std::optional<RunReport> last_report;
  };
  const Legacy& legacy() const { return legacy_; }
  // As it was, after such an end; nothing begins by itself.
  void OpenAgain(HWND owner, StartMode mode, const Legacy& legacy);
  // Shows what would go of a file or folder, as when it is dropped on the window, together with
  // those that are named in the next moment; when what is in work, or asked, is over. Beyond 10,000
  // it is told how many are left out.
  void RemoveNamed(const std::string& path);

 protected:
  void OnInit() override;
  void OnSized() override;
  void OnResolution() override;
  void OnCommand(int id, int code) override;
  HWND FirstFocus() override { return Control(lstvItems); }
  LRESULT OnNotify(NMHDR& header) override;
  void OnContextMenu(HWND control, POINT screen) override;
  void OnTimer(UINT_PTR id) override;
  bool OnMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  void OnDrawItem(const DRAWITEMSTRUCT& item) override;
  void OnClose() override;
  void OnEndSession() override;
  const char* HelpTopic() const override { return "main"; }
  void OnDestroyed() override { PostQuitMessage(exit_code_); }
  HBRUSH OnControlColor(HDC target, HWND control) override;
  bool OnEraseBackground(HDC target) override;

 private:
  void Make(HWND owner, StartMode mode);
  void Enlarge() const;
  void RunHidden();
  bool BeginsRuns() const;
  void BindItems();
  void ShowSelected();
  void ShowSummary();
  void ShowRights();
  bool TurnOff(int id);
  void EndAsChosen();
  bool CanClean() const;
  void FollowSettings();
  void SpeakAnew();
  void FindPrograms();
  void ShowSections();
  void LookForRecipes();
  void FindRecipes();
  void CleanByItself();
  void CleanAsAsked();
  void AskForUpdates();
  void GoToTray();
  void ComeForward() const;
  void ShowTrayMenu(POINT screen);
  // What a command cleans: one item, some of what stands beside the items, or all that is ticked.
  struct Target {
    const Item* item = nullptr;
    std::optional<OtherChoices> others = {};
  };
  void Clean(const Target& target);
  void Preview(const Target& target);
  void RunTarget(Target target, std::shared_ptr<RunChoice> choice = nullptr);
  RunQuestion Question(const EntryList& list, const StartOffer& offer) const;
  void CleanWithRights();
  void CleanForOthers();
  void RemoveByHand(std::vector<std::string> paths);
  bool TakeNamed(const std::wstring& path);
  void ShowNamed();
  void TellLeftOut(uint64_t count);
  using Look = std::function<void(PreviewRun&)>;
  std::shared_ptr<const RunEntries> LookAhead(const Look& look);
  Look LookAt(const Target& target);
  void FollowLook();
  void ForgetLook();
  void ShowPreview(std::shared_ptr<const RunEntries> found, const Target& target);
  bool OnKey(MSG& message) override;
  void Run(const std::function<void()>& work);
  // A run that the user started, with what was chosen for its end.
  void RunAndEnd(const std::function<void()>& clean);
  void Work(const std::function<void()>& work);
  void AfterRun(LongWork::End end);
  bool KeepReport();
  void ShowLastLog();
  void ProcessPlugins();
  void ShowRowMenu(size_t row, POINT screen);
  void ShowCurrentItem(const Item* item);
  void PlaceCurrentItem();
  void ShowPicture();
  int FooterTop() const;
  void Warn(const std::string& text) const;
  void Exit();
  std::string Save() const;

  Engine& engine_;
  RunDisplay& display_;
  Machine machine_;
  FrmLog log_;
  FrmPreview preview_;
  FrmCountdown countdown_;
  FrmWelcome welcome_;
  MenuWindows windows_;
  WindowPrompts prompts_;
  Tips tips_;
  ItemView items_;
  ItemPane pane_;
  TrayIcon tray_;
  UniqueIcon picture_;  // beside the current item
  const Item* current_item_ = nullptr;
  std::string language_;                            // as it was chosen when the window was made
  std::string summary_;                             // as shown
  const PreviewRun* look_ = nullptr;                // that is in work
  std::shared_ptr<modPlugin::ShownRecipes> shown_;  // of the last look
  StartOffer start_offer_;                          // likewise
  std::optional<RunReport> last_report_;
  std::vector<std::string> named_;                             // by Explorer's menu
  uint64_t named_too_many_ = 0;                                // beyond those
  bool is_asked_ = false;                                      // to clean, by another start
  bool takes_requests_ = true;                                 // of other starts, to clean
  Target previewed_;                                           // in the preview's window
  StartOffer previewed_offer_;                                 // likewise
  std::vector<ListSection> sections_, recipes_;                // as found beside the items
  bool knows_recipes_ = false;                                 // they were looked for to the end
  modShutDown::Ending with_end_ = modShutDown::Ending::kNone;  // of the next run
  bool with_rights_ = false;  // started for what needs them, that once
  LongWork work_{*this}, search_{*this};
  Legacy legacy_;
  int exit_code_ = kDone;
};

}  // namespace quellix
