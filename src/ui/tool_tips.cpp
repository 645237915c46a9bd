#include "ui/tool_tips.h"

#include "ui/layout.h"

namespace quellix {
namespace {

TOOLINFOW Tool(HWND window, size_t index, HWND control) {
  TOOLINFOW tool{};
  tool.cbSize = TTTOOLINFOW_V2_SIZE;
  tool.uFlags = TTF_SUBCLASS;
  tool.hwnd = window;
  tool.uId = index;
  tool.rect = PlaceInParent(control);
  return tool;
}

}  // namespace

void ToolTips::Attach(HWND window) {
  window_ = window;
  controls_.clear();
  tips_ = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX, 0, 0, 0,
                          0, window, nullptr, GetModuleHandleW(nullptr), nullptr);
}

void ToolTips::Add(HWND control, const wchar_t* text) {
  TOOLINFOW tool = Tool(window_, controls_.size(), control);
  tool.lpszText = const_cast<wchar_t*>(text);
  SendMessageW(tips_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
  controls_.push_back(control);
}

void ToolTips::Move() const {
  for (size_t i = 0; i < controls_.size(); ++i) {
    TOOLINFOW tool = Tool(window_, i, controls_[i]);
    SendMessageW(tips_, TTM_NEWTOOLRECTW, 0, reinterpret_cast<LPARAM>(&tool));
  }
}

}  // namespace quellix
