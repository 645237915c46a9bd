#include "ui/frm_favorites.h"

#include "engine.h"
#include "platform/error.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/control_text.h"
#include "ui/dpi.h"
#include "ui/row_menu.h"

namespace quellix {
namespace {

constexpr UINT_PTR kTimer = 1;
constexpr UINT kUntilSeen = 50;                    // milliseconds
constexpr uint64_t kLargestBookmarks = 16u << 20;  // bytes

constexpr Column kColumns[kFavoriteColumns] = {{Mark("Name"), 130},
                                               {Mark("Folder"), 80},
                                               {Mark("Address"), 170},
                                               {Mark("What is wrong"), 220}};
constexpr int kIcons[] = {icoCross, icoTick};

constexpr Anchor kAnchors[] = {
    {lstvFavorites, 0, 0, 1, 1}, {lblStatus, 0, 1, 1, 1},     {pgFavorites, 0, 1, 1, 1},
    {cmdAskWeb, 0, 1, 0, 1},     {cmdTickMarked, 0, 1, 0, 1}, {cmdDelete, 0, 1, 0, 1},
    {cmdBookmarks, 0, 1, 0, 1},  {cmdStop, 0, 1, 0, 1},       {IDCANCEL, 1, 1, 1, 1},
};

constexpr int kIdle[] = {cmdAskWeb, cmdTickMarked, cmdDelete, cmdBookmarks};

constexpr FileFilter kFilters[] = {
    {Mark("Bookmarks as browsers export them ( *.html; *.htm )"), "*.html;*.htm"}};

}  // namespace

void FrmFavorites::Show(HWND owner) {
  if (work_.working()) return;
  Open(frmFavorites, owner);
  SetTimer(window(), kTimer, kUntilSeen, nullptr);
}

void FrmFavorites::OnInit() {
  prompts_.Attach(window());
  display_.Attach(window());
  layout().Add(kAnchors);
  Remember(machine_, "frmFavorites", {&list_});
  list_ = {};
  list_.Attach(Control(lstvFavorites), kColumns, [this](int row, int column) {
    if (!HasRow(row)) return Cell{};
    const size_t shown = static_cast<size_t>(row);
    return Cell{Wide(favorites_.Text(shown, static_cast<FavoriteColumn>(column))),
                favorites_.row(shown).IsMarked() ? 0 : 1};
  });
  list_.SetCheckBoxes(
      [this](int row) { return HasRow(row) && favorites_.row(static_cast<size_t>(row)).checked; },
      [this](int row) {
        if (!HasRow(row) || !favorites_.can_delete()) return;
        const size_t toggled = static_cast<size_t>(row);
        favorites_.SetChecked(toggled, !favorites_.row(toggled).checked);
      });
  list_.SetEraser([this] { Delete(list_.SelectedRows()); });
  list_.SetTotals(machine_.system.UserLocale(), {}, [this](int row) { return HasRow(row); });
  list_.SetEmpty([this]() -> std::string {
    if (work_.working()) return Tr("Looking through the favorites...");
    return Tr(
        "There are no Internet shortcuts in the favorites. Bookmarks shows those that a browser "
        "exported.");
  });
  list_.SetTickedButton(Control(cmdDelete), [this] { return !work_.working(); });
}

void FrmFavorites::OnResolution() { list_.SetResolution(dpi(), kColumns, kIcons); }

void FrmFavorites::OnSized() { list_.FillWith(3, Scale(160, dpi())); }

void FrmFavorites::OnTimer(UINT_PTR id) {
  if (id != kTimer) return;
  KillTimer(window(), kTimer);
  if (!work_.working()) Load();
}

// False when the window is gone or goes.
bool FrmFavorites::Work(const LongWork::Work& work) {
  std::string problem;
  const LongWork::End end = work_.Run(
      {.idle = kIdle,
       .stop = cmdStop,
       .rest = lstvFavorites,
       .bar = pgFavorites,
       .show = [this](const Progress&) { display_.Flush(); }},
      [&](const Pause& pause) {
        display_.BreatheBy(pause);
        work(pause);
      },
      problem);
  if (end == LongWork::End::kCloses) OwnedWindow::OnClose();
  if (end != LongWork::End::kDone) return false;
  ShowRows();
  if (!problem.empty()) prompts_.Inform(problem);
  return true;
}

void FrmFavorites::ShowRows() {
  list_.SetRows(static_cast<int>(favorites_.RowCount()));
  SetText(lblStatus, favorites_.Status());
  OnSized();
}

void FrmFavorites::Load() {
  list_.SetRows(0);
  if (Work([this](const Pause& pause) { favorites_.Load(pause); }) && !favorites_.problem().empty())
    prompts_.Inform(favorites_.problem());
}

void FrmFavorites::Ask() {
  Work([this](const Pause& pause) {
    const auto http = OpenHttp();
    favorites_.Ask(*http, pause);
  });
}

void FrmFavorites::ChooseBookmarks() {
  const auto file = prompts_.AskFile(kFilters, "");
  if (!file) return;
  Work([&](const Pause& pause) {
    const auto bytes = machine_.files.ReadWholeFile(*file, kLargestBookmarks);
    favorites_.LoadBookmarks(bytes.value_or(""), *file, pause);
  });
}

void FrmFavorites::Delete(const std::vector<size_t>& rows) {
  if (work_.working() || rows.empty()) return;
  if (!favorites_.can_delete())
    return prompts_.Inform(
        Tr("These stand in a file that a browser exported, which stays as it is."));
  if (!MayGo(window(), favorites_.QuestionFor(rows.size()))) return;
  const bool is_done = Work([&](const Pause&) {
    Engine engine(machine_, display_);
    const std::string problems = engine.Load();
    if (!engine.is_loaded()) throw Error(Error::Kind::kOther, problems);
    favorites_.Delete(engine.context(), rows);
    KeepRun(engine.context());
  });
  if (is_done && !favorites_.stayed().empty())
    prompts_.Inform(Tr("Some stay:\n\n%1", favorites_.stayed()));
}

void FrmFavorites::OnCommand(int id, int code) {
  if (id == IDCANCEL) return OnClose();
  if (id == cmdStop) return work_.Stop();
  if (work_.working() || code != BN_CLICKED) return;
  switch (id) {
    case cmdAskWeb:
      return Ask();
    case cmdTickMarked:
      favorites_.CheckMarked();
      list_.Refresh();
      return list_.Recount();
    case cmdDelete:
      return Delete(favorites_.CheckedRows());
    case cmdBookmarks:
      return ChooseBookmarks();
  }
}

LRESULT FrmFavorites::OnNotify(NMHDR& header) {
  LRESULT result = 0;
  list_.OnNotify(header, result);
  return result;
}

void FrmFavorites::OnContextMenu(HWND control, POINT screen) {
  if (control != Control(lstvFavorites) || work_.working()) return;
  const auto place_of = [this](size_t row) {
    return RowPlace{.path = row < favorites_.RowCount() ? favorites_.row(row).path : ""};
  };
  RowMenu{list_, machine_.shell, place_of}.Show(window(), screen);
}

// While it works, closing stops it first.
void FrmFavorites::OnClose() { work_.working() ? work_.StopAndClose() : OwnedWindow::OnClose(); }

}  // namespace quellix
