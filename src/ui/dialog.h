#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ui/handles.h"
#include "ui/layout.h"
#include "ui/window_keeper.h"
#include "ui/windows_api.h"

namespace quellix {

// One window made from a dialog template. A window derives from it and answers the messages it
// cares about; sizes, fonts and changes of resolution are seen to here.
class Dialog {
 public:
  Dialog() = default;
  Dialog(const Dialog&) = delete;
  Dialog& operator=(const Dialog&) = delete;
  virtual ~Dialog();

  HWND window() const { return window_; }
  void Close();

  HWND Control(int id) const;
  // Moves the keyboard as Tab does, with the look of the default button.
  void FocusOn(HWND control) const;
  // Where the keyboard is on a control that is disabled it moves to another one: a disabled control
  // would swallow it.
  void EnableControl(int id, bool enabled, int other) const;
  void SetText(int id, std::string_view utf8) const;

  // Hands a message of the thread's queue to its dialog (Tab, Enter, mnemonics) or window.
  static void Dispatch(MSG& message);

 protected:
  // Makes the window, not yet visible. A window that is open already is closed first.
  void Create(int template_id, HWND owner);

  virtual void OnInit() {}
  // For OnInit: what the window is remembered by, and its lists.
  void Remember(const Machine& machine, std::string name, std::vector<ListView*> lists = {}) {
    keeper_.emplace(machine, std::move(name), std::move(lists));
  }
  // For a window that is brought into form after it was made: what differs from then on is its
  // user's doing.
  void BeginRemembering() {
    if (keeper_) keeper_->Begin(window_, dpi_);
  }
  // Whether the window was given the place where its user left it.
  bool is_remembered() const { return is_remembered_; }
  // The control that has the focus at first; null for the first one that can.
  virtual HWND FirstFocus() { return nullptr; }
  virtual void OnSized() {}
  // Images and whatever else depends on the resolution; called at the start and at each change.
  virtual void OnResolution() {}
  virtual void OnCommand(int /*id*/, int /*code*/) {}
  virtual LRESULT OnNotify(NMHDR& /*header*/) { return 0; }
  virtual void OnContextMenu(HWND /*control*/, POINT /*screen*/) {}
  virtual void OnTimer(UINT_PTR /*id*/) {}
  // Any other message; false leaves it to Windows.
  virtual bool OnMessage(UINT /*message*/, WPARAM /*wparam*/, LPARAM /*lparam*/) { return false; }
  virtual void OnDrawItem(const DRAWITEMSTRUCT& /*item*/) {}
  virtual void OnClose() { Close(); }
  virtual void OnEndSession() {}
  // Whether it is a letter typed without Alt while the keyboard is on no field for text: it would
  // press the button that it stands for. For windows in which that would remove something.
  static bool IsLetterForButton(const MSG& message);
  // A key before the dialog sees it; true when it is used up.
  virtual bool OnKey(MSG& /*message*/) { return false; }
  virtual void OnDestroyed() {}
  // The anchor of the manual that F1 opens.
  virtual const char* HelpTopic() const { return "contents"; }
  // The background: of one control, and of the window. Null and false leave it to Windows.
  virtual HBRUSH OnControlColor(HDC /*target*/, HWND /*control*/) { return nullptr; }
  virtual bool OnEraseBackground(HDC /*target*/) { return false; }

  // For OnControlColor: a text that cannot be changed would be grey; on paper it is there to be
  // read.
  static HBRUSH Paper(HDC target);

  int dpi() const { return dpi_; }
  // For a window inside another, whose fonts and place come from that one.
  void SetDpi(int dpi) {
    dpi_ = dpi;
    OnResolution();
    OnSized();
  }
  Layout& layout() { return layout_; }

 private:
  static Dialog* Of(HWND window);
  static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  INT_PTR Handle(UINT message, WPARAM wparam, LPARAM lparam);
  INT_PTR HandleInput(UINT message, WPARAM wparam, LPARAM lparam);
  INT_PTR HandleDrawing(UINT message, WPARAM wparam, LPARAM lparam);
  HBRUSH ColorControl(UINT message, HDC target, HWND control);
  bool EraseBackground(HDC target);
  void FollowLooks();
  INT_PTR Init(HWND window);
  void SetIcons();
  void MakeRoom();
  void RestorePlace();
  void ChangeResolution(int dpi, const RECT& place);
  INT_PTR Result(LRESULT result) const;

  HWND window_ = nullptr;
  int dpi_ = 96;
  SIZE template_size_{};  // in units of its font
  Layout layout_;
  std::optional<WindowKeeper> keeper_;
  bool is_remembered_ = false;
  UniqueIcon icon_, small_icon_;
  UniqueFont font_;  // none while the template's font fits
};

}  // namespace quellix
