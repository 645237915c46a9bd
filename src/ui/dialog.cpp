#include "ui/dialog.h"

#include <algorithm>

#include "platform/win32/win32_text.h"
#include "settings/window_memory.h"
#include "ui/control_text.h"
#include "ui/dialog_template.h"
#include "ui/dpi.h"
#include "ui/help.h"
#include "ui/looks.h"
#include "ui/resource.h"
#include "ui/window_words.h"

namespace quellix {
namespace {

HFONT ScaledFont(HFONT font, int from, int to) {
  LOGFONTW description;
  GetObjectW(font, sizeof(description), &description);
  description.lfHeight = MulDiv(description.lfHeight, to, from);
  return CreateFontIndirectW(&description);
}

BOOL CALLBACK SetChildFont(HWND child, LPARAM font) {
  SendMessageW(child, WM_SETFONT, static_cast<WPARAM>(font), FALSE);
  return TRUE;
}

void FitToScreen(HWND window) {
  RECT place;
  GetWindowRect(window, &place);
  MONITORINFO screen{};
  screen.cbSize = sizeof(screen);
  GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &screen);
  const RECT& work = screen.rcWork;
  const LONG width = std::min(place.right - place.left, work.right - work.left);
  const LONG height = std::min(place.bottom - place.top, work.bottom - work.top);
  const ScreenPoint at = MendedPlace({place.left, place.top}, width, height,
                                     {work.left, work.top, work.right, work.bottom});
  SetWindowPos(window, nullptr, at.left, at.top, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

UniqueIcon SetWindowIcon(HWND window, WPARAM kind, int width_metric, int height_metric) {
  UniqueIcon icon =
      LoadProgramIcon(icoQuellix, GetSystemMetrics(width_metric), GetSystemMetrics(height_metric));
  SendMessageW(window, WM_SETICON, kind, reinterpret_cast<LPARAM>(icon.Get()));
  return icon;
}

}  // namespace

Dialog::~Dialog() { Close(); }

void Dialog::Create(int template_id, HWND owner) {
  Close();
  const DialogTemplate made(template_id);
  template_size_ = made.Size();
  CreateDialogIndirectParamW(GetModuleHandleW(nullptr), made.Get(), owner, Procedure,
                             reinterpret_cast<LPARAM>(this));
}

void Dialog::Close() {
  if (window_) DestroyWindow(window_);
}

void Dialog::Dispatch(MSG& message) {
  const HWND root = message.hwnd ? GetAncestor(message.hwnd, GA_ROOT) : nullptr;
  const bool is_key = message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST;
  Dialog* const dialog = is_key ? Of(root) : nullptr;
  if (dialog && dialog->OnKey(message)) return;
  if (root && IsDialogMessageW(root, &message)) return;
  TranslateMessage(&message);
  DispatchMessageW(&message);
}

bool Dialog::IsLetterForButton(const MSG& message) {
  if (message.message != WM_CHAR || message.wParam <= L' ') return false;
  return (SendMessageW(message.hwnd, WM_GETDLGCODE, 0, 0) & (DLGC_WANTCHARS | DLGC_HASSETSEL)) == 0;
}

// Null for a window that is none of ours.
Dialog* Dialog::Of(HWND window) {
  if (!window || GetWindowLongPtrW(window, DWLP_DLGPROC) != reinterpret_cast<LONG_PTR>(Procedure)) {
    return nullptr;
  }
  return reinterpret_cast<Dialog*>(GetWindowLongPtrW(window, DWLP_USER));
}

HBRUSH Dialog::Paper(HDC target) { return PaintOn(target, Paint::kPaper); }

void Dialog::SetText(int id, std::string_view utf8) const {
  SetWindowTextW(Control(id), Wide(utf8).c_str());
}

HWND Dialog::Control(int id) const {
  const HWND known = window_ ? layout_.Control(id) : nullptr;
  return known ? known : GetDlgItem(window_, id);
}

void Dialog::FocusOn(HWND control) const {
  SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
}

void Dialog::EnableControl(int id, bool enabled, int other) const {
  EnableWithFocus(Control(id), enabled, Control(other));
}

INT_PTR CALLBACK Dialog::Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(window, DWLP_USER, lparam);
    return reinterpret_cast<Dialog*>(lparam)->Init(window);
  }
  const auto dialog = reinterpret_cast<Dialog*>(GetWindowLongPtrW(window, DWLP_USER));
  return dialog ? dialog->Handle(message, wparam, lparam) : FALSE;
}

INT_PTR Dialog::Init(HWND window) {
  window_ = window;
  dpi_ = DpiOf(window);
  LayOutByOurselves(window);
  // A window that is larger than the screen is cut by Windows; its controls are not.
  RECT whole{0, 0, template_size_.cx, template_size_.cy};
  MapDialogRect(window, &whole);
  layout_.Start(window, dpi_, {whole.right, whole.bottom});
  keeper_.reset();
  TranslateWindow(window);
  OnInit();
  ApplyLooks(window);
  OnResolution();
  MakeRoom();
  RestorePlace();
  OnSized();
  BeginRemembering();
  const HWND focus = FirstFocus();
  if (focus) SetFocus(focus);
  // The keyboard is called for when a window is shown; that then chooses the first control.
  return focus == nullptr && (GetWindowLongW(window, GWL_STYLE) & WS_CHILD) != 0;
}

// For the texts that it has now; about the same middle.
void Dialog::MakeRoom() {
  const std::optional<SIZE> growth = layout_.MakeRoom(dpi_);
  if (!growth) return;
  RECT place;
  GetWindowRect(window_, &place);
  const bool is_child = (GetWindowLongW(window_, GWL_STYLE) & WS_CHILD) != 0;
  SetWindowPos(window_, nullptr, place.left - growth->cx / 2, place.top - growth->cy / 2,
               place.right - place.left + growth->cx, place.bottom - place.top + growth->cy,
               SWP_NOZORDER | SWP_NOACTIVATE | (is_child ? SWP_NOMOVE : 0));
  layout_.Apply(dpi_);
}

// Where its user left it, else as its template says, as far as the screen has room for that.
void Dialog::RestorePlace() {
  is_remembered_ = keeper_ && keeper_->Restore(window_, dpi_);
  const bool is_child = (GetWindowLongW(window_, GWL_STYLE) & WS_CHILD) != 0;
  if (!is_remembered_ && !is_child) FitToScreen(window_);
}

void Dialog::SetIcons() {
  icon_ = SetWindowIcon(window_, ICON_BIG, SM_CXICON, SM_CYICON);
  small_icon_ = SetWindowIcon(window_, ICON_SMALL, SM_CXSMICON, SM_CYSMICON);
}

INT_PTR Dialog::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_SIZE:
      if (wparam == SIZE_MINIMIZED) return FALSE;
      layout_.Apply(dpi_);
      OnSized();
      return TRUE;
    case WM_WINDOWPOSCHANGED: {
      if ((reinterpret_cast<WINDOWPOS*>(lparam)->flags & SWP_SHOWWINDOW) != 0) SetIcons();
      return FALSE;
    }
    case WM_GETMINMAXINFO: {
      const SIZE size = layout_.MinimumSize(dpi_);
      reinterpret_cast<MINMAXINFO*>(lparam)->ptMinTrackSize = {size.cx, size.cy};
      return TRUE;
    }
    case WM_DPICHANGED:
      ChangeResolution(HIWORD(wparam), *reinterpret_cast<const RECT*>(lparam));
      return TRUE;
    default:
      return HandleInput(message, wparam, lparam);
  }
}

INT_PTR Dialog::HandleInput(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_COMMAND:
      OnCommand(LOWORD(wparam), HIWORD(wparam));
      return TRUE;
    case WM_NOTIFY:
      return Result(OnNotify(*reinterpret_cast<NMHDR*>(lparam)));
    case WM_CONTEXTMENU:
      OnContextMenu(reinterpret_cast<HWND>(wparam),
                    {static_cast<short>(LOWORD(lparam)), static_cast<short>(HIWORD(lparam))});
      return TRUE;
    case WM_TIMER:
      OnTimer(wparam);
      return TRUE;
    case WM_CLOSE:
      OnClose();
      return TRUE;
    case WM_HELP:
      ShowHelp(window_, HelpTopic());
      return TRUE;
    case WM_ENDSESSION:
      if (wparam) OnEndSession();
      return TRUE;
    case WM_DESTROY:
      if (keeper_) keeper_->Keep(window_, dpi_);
      return FALSE;
    case WM_NCDESTROY:
      window_ = nullptr;
      icon_.Reset();  // the next window is given its own
      small_icon_.Reset();
      OnDestroyed();
      return FALSE;
    default:
      return HandleDrawing(message, wparam, lparam);
  }
}

INT_PTR Dialog::HandleDrawing(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_DRAWITEM:
      OnDrawItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(lparam));
      return TRUE;
    case WM_CTLCOLORSTATIC:
    case WM_CTLCOLORBTN:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
    case WM_CTLCOLORDLG:
      return reinterpret_cast<INT_PTR>(
          ColorControl(message, reinterpret_cast<HDC>(wparam), reinterpret_cast<HWND>(lparam)));
    case WM_SETTINGCHANGE:
    case WM_SYSCOLORCHANGE:
    case WM_THEMECHANGED:
      if (RefreshLooks() || message != WM_SETTINGCHANGE) FollowLooks();
      return OnMessage(message, wparam, lparam) ? TRUE : FALSE;
    case WM_ERASEBKGND:
      return EraseBackground(reinterpret_cast<HDC>(wparam)) ? Result(1) : FALSE;
    default:
      return OnMessage(message, wparam, lparam) ? TRUE : FALSE;
  }
}

// What a window does not choose itself is left to Windows, unless that would be light in the dark.
HBRUSH Dialog::ColorControl(UINT message, HDC target, HWND control) {
  const bool asks = message == WM_CTLCOLORSTATIC || message == WM_CTLCOLORBTN;
  const HBRUSH own = asks ? OnControlColor(target, control) : nullptr;
  if (own || !IsDark()) return own;
  const bool is_paper = message == WM_CTLCOLOREDIT || message == WM_CTLCOLORLISTBOX;
  return PaintOn(target, is_paper ? Paint::kPaper : Paint::kFace);
}

// A theme would make it light.
bool Dialog::EraseBackground(HDC target) {
  if (OnEraseBackground(target)) return true;
  if (!IsDark()) return false;
  RECT all;
  GetClientRect(window_, &all);
  FillRect(target, &all, BrushOf(Paint::kFace));
  return true;
}

// Lists take their colours with their images.
void Dialog::FollowLooks() {
  ApplyLooks(window_);
  OnResolution();
}

INT_PTR Dialog::Result(LRESULT result) const {
  SetWindowLongPtrW(window_, DWLP_MSGRESULT, result);
  return TRUE;
}

void Dialog::ChangeResolution(int dpi, const RECT& place) {
  const auto old_font = reinterpret_cast<HFONT>(SendMessageW(window_, WM_GETFONT, 0, 0));
  UniqueFont font(ScaledFont(old_font, dpi_, dpi));
  const int old_dpi = dpi_;
  dpi_ = dpi;
  SendMessageW(window_, WM_SETFONT, reinterpret_cast<WPARAM>(font.Get()), FALSE);
  EnumChildWindows(window_, SetChildFont, reinterpret_cast<LPARAM>(font.Get()));
  font_ = std::move(font);
  keeper_ ? keeper_->CarryWidths(old_dpi, dpi, [this] { OnResolution(); }) : OnResolution();
  SetWindowPos(window_, nullptr, place.left, place.top, place.right - place.left,
               place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace quellix
