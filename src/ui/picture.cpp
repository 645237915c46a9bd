#include "ui/picture.h"

#include "ui/looks.h"

#include <algorithm>

// The headers below expect these in the global namespace.
using std::max;
using std::min;

// After windows.h, whose types they use.
#include <objidl.h>

#include <gdiplus.h>

#include "platform/win32/lazy_library.h"

namespace quellix {
namespace {

namespace Flat = Gdiplus::DllExports;

LazyLibrary gdiplus(L"gdiplus.dll");

struct Functions {
  decltype(&Flat::GdipCreateBitmapFromFile) load =
      gdiplus.Find<decltype(load)>("GdipCreateBitmapFromFile");
  decltype(&Flat::GdipCreateHBITMAPFromBitmap) convert =
      gdiplus.Find<decltype(convert)>("GdipCreateHBITMAPFromBitmap");
  decltype(&Flat::GdipDisposeImage) dispose = gdiplus.Find<decltype(dispose)>("GdipDisposeImage");
};

// Started once, for as long as the program runs.
const Functions& Start() {
  static const Functions functions;
  static const bool started = [] {
    const auto start = gdiplus.Find<decltype(&Gdiplus::GdiplusStartup)>("GdiplusStartup");
    const Gdiplus::GdiplusStartupInput input;
    ULONG_PTR token;
    return start(&token, &input, nullptr) == Gdiplus::Ok;
  }();
  static_cast<void>(started);
  return functions;
}

constexpr Gdiplus::ARGB kWhite = 0xFFFFFFFF;  // behind what is transparent

}  // namespace

bool Picture::Load(const std::wstring& path) {
  Clear();
  const Functions& functions = Start();
  Gdiplus::GpBitmap* image = nullptr;
  if (functions.load(path.c_str(), &image) != Gdiplus::Ok) return false;
  functions.convert(image, bitmap_.Put(), kWhite);
  functions.dispose(image);
  return static_cast<bool>(bitmap_);
}

void Picture::Draw(HDC target, const RECT& place) const {
  FillRect(target, &place, BrushOf(Paint::kPaper));
  BITMAP size{};
  if (!bitmap_ || !GetObjectW(bitmap_.Get(), sizeof size, &size)) return;
  const int room_x = static_cast<int>(place.right - place.left);
  const int room_y = static_cast<int>(place.bottom - place.top);
  const double scale = std::min({1.0, 1.0 * room_x / size.bmWidth, 1.0 * room_y / size.bmHeight});
  const int width = std::max(1, static_cast<int>(size.bmWidth * scale));
  const int height = std::max(1, static_cast<int>(size.bmHeight * scale));
  const HDC source = CreateCompatibleDC(target);
  const HGDIOBJ old = SelectObject(source, bitmap_.Get());
  SetStretchBltMode(target, HALFTONE);
  StretchBlt(target, place.left + (room_x - width) / 2, place.top + (room_y - height) / 2, width,
             height, source, 0, 0, size.bmWidth, size.bmHeight, SRCCOPY);
  SelectObject(source, old);
  DeleteDC(source);
}

}  // namespace quellix
