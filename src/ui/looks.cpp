#include "ui/looks.h"

#include <iterator>

#include <uxtheme.h>

#include "platform/win32/lazy_library.h"
#include "platform/win32/unique.h"

namespace quellix {
namespace {

// By Paint: the system's, and in the dark; kHeading's light one is the program's own.
constexpr COLORREF kHeadingLight = RGB(0x0b, 0x6e, 0x75), kMarkedLight = RGB(255, 0, 0);
constexpr struct {
  int light;
  COLORREF dark;
} kColors[] = {{COLOR_WINDOW, RGB(0x1e, 0x1e, 0x1e)},    {COLOR_WINDOWTEXT, RGB(0xf0, 0xf0, 0xf0)},
               {COLOR_3DFACE, RGB(0x2b, 0x2b, 0x2b)},    {COLOR_3DSHADOW, RGB(0x55, 0x55, 0x55)},
               {COLOR_GRAYTEXT, RGB(0xa0, 0xa0, 0xa0)},  {COLOR_WINDOWTEXT, RGB(0xff, 0x8a, 0x80)},
               {COLOR_WINDOWTEXT, RGB(0x5f, 0xd0, 0xd8)}};

struct Looks {
  bool is_dark = false, has_contrast = false;
  bool operator==(const Looks&) const = default;
};

// Windows 10 and 11 keep it there; elsewhere all is light.
bool WantsDark() {
  DWORD light = 1, size = sizeof light;
  const LSTATUS result = RegGetValueW(
      HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
      L"AppsUseLightTheme", RRF_RT_REG_DWORD, nullptr, &light, &size);
  return result == ERROR_SUCCESS && light == 0;
}

// Also who has chosen dark colours for all windows himself.
bool HasHighContrast() {
  const COLORREF paper = GetSysColor(COLOR_WINDOW);
  if (GetRValue(paper) + GetGValue(paper) + GetBValue(paper) < 3 * 128) return true;
  HIGHCONTRASTW contrast{};
  contrast.cbSize = sizeof contrast;
  SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0);
  return (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

Looks ReadLooks() {
  const bool has_contrast = HasHighContrast();
  return {!has_contrast && WantsDark(), has_contrast};
}

Looks& Present() {
  static Looks looks = ReadLooks();
  return looks;
}

// Named only since Windows 11; documented for Windows 10 as well.
constexpr DWORD kUseDarkTitleBar = 20;

void DarkenTitleBar(HWND window, bool dark) {
  static LazyLibrary dwmapi(L"dwmapi.dll");
  using Set = HRESULT(WINAPI*)(HWND, DWORD, const void*, DWORD);
  const BOOL value = dark;
  try {
    dwmapi.Find<Set>("DwmSetWindowAttribute")(window, kUseDarkTitleBar, &value, sizeof value);
  } catch (const std::exception&) {
    // A title bar of the other kind does no harm.
  }
}

bool IsA(HWND control, const wchar_t* name) {
  wchar_t text[40] = {};
  GetClassNameW(control, text, static_cast<int>(std::size(text)));
  return lstrcmpiW(text, name) == 0;
}

// A theme paints the words of boxes in its own colour whatever their window says.
bool NeedsNoTheme(HWND control) {
  if (!IsA(control, L"Button")) return false;
  const auto kind = GetWindowLongW(control, GWL_STYLE) & BS_TYPEMASK;
  return kind != BS_PUSHBUTTON && kind != BS_DEFPUSHBUTTON && kind != BS_OWNERDRAW;
}

bool IsFrame(HWND control) {
  const auto kind = GetWindowLongW(control, GWL_STYLE) & BS_TYPEMASK;
  return IsA(control, L"Button") && kind == BS_GROUPBOX;
}

void DrawFrame(HWND frame, HDC target) {
  RECT place{};
  GetClientRect(frame, &place);
  wchar_t text[200] = {};
  const int length = GetWindowTextW(frame, text, static_cast<int>(std::size(text)));
  const HGDIOBJ old =
      SelectObject(target, reinterpret_cast<HFONT>(SendMessageW(frame, WM_GETFONT, 0, 0)));
  RECT words{place.left + 8, place.top, place.right - 8, place.bottom};
  DrawTextW(target, text, length, &words, DT_SINGLELINE | DT_CALCRECT);
  place.top += (words.bottom - words.top) / 2;
  FrameRect(target, &place, BrushOf(Paint::kLine));
  PaintOn(target, Paint::kFace);
  SetTextColor(target, ColorOf(Paint::kHeading));
  DrawTextW(target, text, length, &words, DT_SINGLELINE);
  SelectObject(target, old);
}

// Frames around controls are painted in the theme's colours or in none.
LRESULT CALLBACK PaintFrame(HWND frame, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR id,
                            DWORD_PTR) {
  if (message == WM_NCDESTROY) RemoveWindowSubclass(frame, PaintFrame, id);
  if (message != WM_PAINT || !IsDark()) return DefSubclassProc(frame, message, wparam, lparam);
  PAINTSTRUCT paint{};
  DrawFrame(frame, BeginPaint(frame, &paint));
  EndPaint(frame, &paint);
  return 0;
}

BOOL CALLBACK ApplyToControl(HWND control, LPARAM dark) {
  const bool bare = dark && NeedsNoTheme(control);
  if (IsFrame(control)) SetWindowSubclass(control, PaintFrame, 3, 0);
  SetWindowTheme(control, bare ? L"" : dark ? L"DarkMode_Explorer" : nullptr, bare ? L"" : nullptr);
  InvalidateRect(control, nullptr, TRUE);
  return TRUE;
}

}  // namespace

bool IsDark() { return Present().is_dark; }

bool RefreshLooks() {
  const Looks now = ReadLooks();
  if (now == Present()) return false;
  Present() = now;
  return true;
}

COLORREF ColorOf(Paint paint) {
  const auto& color = kColors[static_cast<size_t>(paint)];
  if (Present().is_dark) return color.dark;
  if (!Present().has_contrast && paint == Paint::kHeading) return kHeadingLight;
  if (!Present().has_contrast && paint == Paint::kMarked) return kMarkedLight;
  return GetSysColor(color.light);
}

HBRUSH BrushOf(Paint paint) {
  if (!Present().is_dark) return GetSysColorBrush(kColors[static_cast<size_t>(paint)].light);
  static HBRUSH brushes[std::size(kColors)] = {};
  HBRUSH& brush = brushes[static_cast<size_t>(paint)];
  if (!brush) brush = CreateSolidBrush(ColorOf(paint));
  return brush;
}

// Some controls delete the brush that they are given, which a stock object takes without harm.
HBRUSH PaintOn(HDC target, Paint background) {
  SetBkColor(target, ColorOf(background));
  SetTextColor(target, ColorOf(Paint::kText));
  if (!Present().is_dark) return BrushOf(background);
  SetDCBrushColor(target, ColorOf(background));
  return static_cast<HBRUSH>(GetStockObject(DC_BRUSH));
}

// What is as the system has it is left as it is.
void ApplyLooks(HWND window) {
  static bool has_been_dark = false;
  if (!IsDark() && !has_been_dark) return;
  has_been_dark = true;
  DarkenTitleBar(window, IsDark());
  EnumChildWindows(window, ApplyToControl, IsDark() ? TRUE : FALSE);
  InvalidateRect(window, nullptr, TRUE);
}

}  // namespace quellix
