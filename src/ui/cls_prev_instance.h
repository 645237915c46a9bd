#pragma once

#include <string>

#include "ui/handles.h"
#include "ui/windows_api.h"

namespace quellix {

// The hidden top-level window that carries the application's title and owns the main window, so
// that other copies of the program find the main window right above it.
class HiddenOwner {
 public:
  // Only one whose title is the application's is found.
  explicit HiddenOwner(std::string_view title);
  HWND window() const { return window_.Get(); }

 private:
  Unique<NullHandleTraits<HWND, DestroyWindow>> window_;
};

// The copy of the program that was started before this one.
class clsPrevInstance {
 public:
  // Brings its main window to the front: shown, restored when minimized. Nothing happens when there
  // is none. Ask before this copy has a window of its own to be found.
  static void ActivatePrevInstance();
  // Asks its main window to clean as soon as it can; it may be starting just now. False when it
  // does not take that on.
  static bool AskToClean();
  // The message that asks so, and the answer of a window that will.
  static UINT CleanMessage();
  static constexpr LRESULT kTakenOn = 0x5158;
  // Hands it the path of what is to be removed by hand; it may be starting just now.
  enum class Taken { kYes, kRefused, kNoAnswer };
  static Taken HandOver(const std::wstring& path);
  // The path in a WM_COPYDATA, "" where it is none of HandOver's.
  static std::wstring HandedOver(LPARAM message);
};

}  // namespace quellix
