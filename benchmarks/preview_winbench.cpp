#include "preview_winbench.h"

#include <filesystem>
#include <stdexcept>

#include "many_files.h"
#include "ui/resource.h"
#include "windows/quellix_window.h"

namespace quellix {
namespace {

using Clock = std::chrono::steady_clock;

// In seconds.
constexpr double kFirstRow = 0.3, kAnswer = 0.1, kOrder = 0.25;
constexpr int kColumns = 7;
constexpr std::wstring_view kLastByPlace = L"\\9\\99927.tmp";

double Since(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// A window of that title, without asking it anything.
HWND PreviewWindow() {
  const HWND window = FindWindowW(L"#32770", L"Preview");
  return window && IsWindowVisible(window) ? window : nullptr;
}

// Each question is also one whether the window answers.
struct Waits {
  double first_row = 0, longest = 0, longest_at = 0;
  int questions = 0;
};

Waits PressAndAsk(const test::QuellixWindow& program) {
  const HWND list = program.Control(lstvRun);
  Waits waits;
  const Clock::time_point pressed = Clock::now();
  PostMessageW(program.Control(cmdPreview), BM_CLICK, 0, 0);
  while (!PreviewWindow()) {
    LRESULT rows = 0;
    const double answer =
        SideBySide::Seconds([&] { rows = SendMessageW(list, LVM_GETITEMCOUNT, 0, 0); });
    if (answer > waits.longest) {
      waits.longest = answer;
      waits.longest_at = Since(pressed) - answer;
    }
    ++waits.questions;
    if (rows > 0 && waits.first_row == 0) waits.first_row = Since(pressed);
    if (Since(pressed) > 300) throw std::runtime_error("no preview appeared");
    Sleep(1);
  }
  std::printf("  the whole preview took %.2fs; asked %d times, the longest wait after %.2fs\n",
              Since(pressed), waits.questions, waits.longest_at);
  return waits;
}

// A click on the heading of a column, and the rows painted.
double SecondsToSort(HWND list, int column) {
  const HWND head = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
  LRESULT x = 0;
  for (int i = 0; i <= column; ++i) {
    const LRESULT width = SendMessageW(list, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(i), 0);
    x += i < column ? width : width / 2;
  }
  const LPARAM at = MAKELPARAM(x, 8);
  return SideBySide::Seconds([&] {
    SendMessageW(head, WM_LBUTTONDOWN, MK_LBUTTON, at);
    SendMessageW(head, WM_LBUTTONUP, 0, at);
    RedrawWindow(list, nullptr, nullptr, RDW_UPDATENOW);
    SendMessageW(list, WM_NULL, 0, 0);
  });
}

double SecondsToFilter(HWND preview, const wchar_t* text) {
  return SideBySide::Seconds([&] {
    test::Type(preview, txtFilter, text);
    SendMessageW(preview, WM_NULL, 0, 0);
  });
}

void MeasureOrder(SideBySide& table, const test::QuellixWindow& program, HWND preview) {
  const HWND list = GetDlgItem(preview, lstvRun);
  SetWindowPos(preview, nullptr, 0, 0, 1300, 700, SWP_NOZORDER | SWP_NOACTIVATE);
  double longest = 0;
  for (int column = 0; column < kColumns; ++column) {
    for (int turn = 0; turn < 2; ++turn) longest = std::max(longest, SecondsToSort(list, column));
    if (column == 0 && !program.RowText(list, 0, 0).ends_with(kLastByPlace))
      throw std::runtime_error("the click did not sort");
  }
  table.Report("sort 200,000 entries, slowest column", longest, kOrder, "s", 1.0);
  longest = 0;
  for (const wchar_t* text : {L"9", L"99", L"99.TMP", L""}) {
    longest = std::max(longest, SecondsToFilter(preview, text));
  }
  table.Report("filter 200,000 entries", longest, kOrder, "s", 1.0);
}

}  // namespace

void MeasurePreviewWindow(SideBySide& table) {
  test::ResetSandbox();
  MakeManyFiles(test::TempFolder(), L".tmp");
  {
    const test::QuellixWindow program;
    program.Click(chkTemp);
    const Waits waits = PressAndAsk(program);
    table.Report("first row after Preview / what may be waited for", waits.first_row, kFirstRow,
                 "s", 1.0);
    table.Report("longest wait for an answer meanwhile", waits.longest, kAnswer, "s", 1.0);
    const HWND preview = PreviewWindow();
    if (test::CountRows(GetDlgItem(preview, lstvRun)) < kManyFiles)
      throw std::runtime_error("files were not found");
    MeasureOrder(table, program, preview);
  }
  test::ResetSandbox();
}

}  // namespace quellix
