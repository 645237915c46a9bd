#include "ui/column_widths.h"

#include <string>
#include <vector>

#include "platform/error.h"
#include "platform/text.h"
#include "settings/numbers.h"

namespace quellix {
namespace {

constexpr std::string_view kSection = "Columns";
constexpr int kWidest = 4000;

}  // namespace

void RestoreColumnWidths(const Settings& settings, std::string_view window, ListView& list,
                         int dpi) {
  std::vector<int> widths;
  for (const std::string& text : Split(settings.ReadIniValue(kSection, window, ""), ',')) {
    const auto width = ToInt16(text);
    if (!width || *width < 0 || *width > kWidest) return;
    widths.push_back(*width);
  }
  if (widths.size() == list.Widths(dpi).size()) list.SetWidths(widths, dpi);
}

void KeepColumnWidths(Settings& settings, std::string_view window, const ListView& list, int dpi) {
  std::string text;
  for (const int width : list.Widths(dpi)) {
    text += (text.empty() ? "" : ",") + std::to_string(width);
  }
  try {
    if (settings.ReadIniValue(kSection, window, "") != text) {
      settings.WriteIniValue(kSection, window, text);
    }
  } catch (const Error&) {
    // Not worth a message.
  }
}

}  // namespace quellix
