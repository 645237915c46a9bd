// Every window of the program, for tests that look at all of them in whatever language.
#pragma once

#include <functional>
#include <span>

#include "quellix_window.h"

namespace quellix::test {

struct WindowCase {
  const char* name;
  HWND (*open)(const QuellixWindow& window);
  bool is_alone = false;  // it cleans, and so needs a program of its own
};
// Those that have lists are opened as their lists are, in the sandbox of SeededLists.
std::span<const WindowCase> WindowCases();

// All controls lie within the window, and none upon another; pages are windows within it.
void ExpectRoom(HWND window);

// The text of no control is cut, likewise.
void ExpectWholeTexts(HWND window);

// Goes through the pages of Options, if that is the window.
void ForEachPage(HWND window, const std::function<void()>& look);

}  // namespace quellix::test
