#include "ui/tool_tips.h"

#include <algorithm>

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

void ToolTips::Set(HWND control, std::wstring text) {
  if (!tips_) return;
  const auto known = std::ranges::find(controls_, control);
  TOOLINFOW tool = Tool(window_, static_cast<size_t>(known - controls_.begin()), control);
  tool.lpszText = text.data();
  const bool is_new = known == controls_.end();
  SendMessageW(tips_, is_new ? TTM_ADDTOOLW : TTM_UPDATETIPTEXTW, 0,
               reinterpret_cast<LPARAM>(&tool));
  if (is_new) controls_.push_back(control);
}

void ToolTips::Move() const {
  for (size_t i = 0; i < controls_.size(); ++i) {
    TOOLINFOW tool = Tool(window_, i, controls_[i]);
    SendMessageW(tips_, TTM_NEWTOOLRECTW, 0, reinterpret_cast<LPARAM>(&tool));
  }
}

}  // namespace quellix
