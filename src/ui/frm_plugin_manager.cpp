#include "ui/frm_plugin_manager.h"

#include <algorithm>

#include "app/cleaning_run.h"
#include "app/entry_list.h"
#include "app/preview_run.h"
#include "engine.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/dpi.h"
#include "ui/row_menu.h"

namespace quellix {
namespace {

constexpr Column kColumns[] = {
    {Mark("Plug-in"), 190}, {Mark("Description"), 330}, {Mark("Group"), 110}, {Mark("Costs"), 160}};

constexpr Anchor kAnchors[] = {
    {lstvPlugin, 0, 0, 1, 1}, {lblStatus, 0, 1, 1, 1},  {mnuCreate, 0, 1, 0, 1},
    {mnuEdit, 0, 1, 0, 1},    {mnuProcess, 0, 1, 0, 1}, {cmdStop, 0, 1, 0, 1},
    {IDCANCEL, 1, 1, 1, 1},
};

// Commands that work on the selected rows.
constexpr int kOfSelection[] = {mnuEdit, mnuDelete, mnuProcess};
constexpr int kIdle[] = {mnuEdit, mnuCreate, mnuProcess};

}  // namespace

FrmPluginManager::FrmPluginManager(Engine& engine, const Machine& machine)
    : engine_(engine),
      machine_(machine),
      manager_(machine, prompts_),
      editor_(machine, manager_, [this] { ShowAdded(); }) {}

void FrmPluginManager::Show(HWND owner) { Open(frmPluginManager, owner); }

void FrmPluginManager::OnInit() {
  prompts_.Attach(window());
  display_.Attach(window());
  layout().Add(kAnchors);
  Remember(machine_, "frmPluginManager", {&list_});
  list_.Attach(Control(lstvPlugin), kColumns, [this](int row, int column) {
    return Cell{Wide(TextOf(static_cast<size_t>(row), column))};
  });
  list_.SetLooks([this](int row) {
    const bool is_found = manager_.GuideOf(static_cast<size_t>(row)).is_found;
    return is_found ? RowLook::kPlain : RowLook::kDimmed;
  });
  list_.SetCheckBoxes([this](int row) { return manager_.rows()[static_cast<size_t>(row)].ticked; },
                      [this](int row) {
                        manager_.Toggle(static_cast<size_t>(row));
                        display_.SetStatus(manager_.status());
                        display_.Flush();
                      });
  list_.SetEraser([this] { OnCommand(mnuDelete, 0); });
  list_.SetTotals(machine_.system.UserLocale());
  list_.SetEmpty([]() -> std::string {
    return Tr(
        "There are no plug-ins. Create one, or copy a .cdp file into the folder Plugins and add it "
        "with File, Add.");
  });
  manager_.Load();
  ShowRows();
  if (!manager_.rows().empty()) list_.Select(0);
}

void FrmPluginManager::OnResolution() { list_.SetResolution(dpi(), kColumns, {}); }

void FrmPluginManager::OnSized() { list_.FillWith(1, Scale(120, dpi())); }

std::string FrmPluginManager::TextOf(size_t row, int column) {
  const modPlugin::InstalledPlugin& plugin = manager_.rows()[row];
  if (column == 0) return modPlugin::ShownName(plugin.file);
  if (column == 1) return Tr(plugin.description);
  const modPlugin::PluginGuide& guide = manager_.GuideOf(row);
  return Tr(column == 2 ? guide.group : guide.cost);
}

void FrmPluginManager::ShowRows() {
  list_.SetRows(static_cast<int>(manager_.rows().size()));
  display_.SetStatus(manager_.status());
  display_.Flush();
  EnableCommands();
}

// What was added is selected, else the row that had the focus stays so.
void FrmPluginManager::ShowAdded() {
  const auto before = static_cast<size_t>(ListView_GetItemCount(Control(lstvPlugin)));
  const size_t count = manager_.rows().size();
  const int focused = std::max(list_.FocusedRow(), 0);
  ShowRows();
  if (count > 0) list_.Select(count > before ? count - 1 : static_cast<size_t>(focused));
}

void FrmPluginManager::EnableCommands() {
  const bool can = !work_.working() && list_.CountSelected() > 0;
  for (const int id : kOfSelection) {
    EnableControl(id, can, lstvPlugin);
    EnableMenuItem(GetMenu(window()), static_cast<UINT>(id), can ? MF_ENABLED : MF_GRAYED);
  }
}

void FrmPluginManager::OnCommand(int id, int /*code*/) {
  if (id == cmdStop) return work_.Stop();
  if (id == IDCANCEL || id == mnuExit) return OnClose();
  if (work_.working()) return;
  switch (id) {
    case mnuCreate:
      return editor_.Create(window());
    case mnuEdit:
      return Edit();
    case mnuAdd:
      manager_.Add();
      return ShowAdded();
    case mnuDelete:
      return manager_.Delete(list_.SelectedRows()) ? ShowRows() : void();
    case mnuProcess:
      return Process();
    case mnuCheckAll:
    case mnuUncheckAll:
      return TickAll(id == mnuCheckAll);
    case mnuSelectAll:
      return list_.SelectAll();
    case mnuDeselectAll:
      return list_.SelectNone();
  }
}

LRESULT FrmPluginManager::OnNotify(NMHDR& header) {
  LRESULT result = 0;
  if (list_.OnNotify(header, result)) return result;
  if (work_.working()) return 0;
  if (header.idFrom == lstvPlugin) OnListNotify(header);
  return 0;
}

void FrmPluginManager::OnListNotify(const NMHDR& header) {
  switch (header.code) {
    case LVN_KEYDOWN: {
      const WORD key = reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey;
      if (key == 'N' && GetKeyState(VK_CONTROL) < 0) OnCommand(mnuCreate, 0);
      return;
    }
    case NM_DBLCLK:
      if (reinterpret_cast<const NMITEMACTIVATE&>(header).iItem >= 0) Edit();
      return;
    case LVN_ITEMCHANGED:
    case LVN_ODSTATECHANGED:
      return EnableCommands();
  }
}

void FrmPluginManager::OnContextMenu(HWND control, POINT screen) {
  if (control != Control(lstvPlugin) || work_.working()) return;
  const RowMenu menu{
      list_, machine_.shell, [this](size_t row) { return RowPlace{.path = manager_.PathOf(row)}; },
      mnuPluginRows,
      [this](int id) {
        return list_.CountSelected() > 0 || std::ranges::count(kOfSelection, id) == 0;
      }};
  const int chosen = menu.Show(window(), screen);
  if (chosen != 0) OnCommand(chosen, 0);
}

void FrmPluginManager::TickAll(bool ticked) {
  manager_.TickAll(ticked);
  list_.Refresh();
}

void FrmPluginManager::Edit() {
  const std::vector<size_t> rows = list_.SelectedRows();
  if (!rows.empty()) editor_.Edit(window(), manager_.rows()[rows[0]].file);
}

LongWork::End FrmPluginManager::Work(const std::function<void()>& work) {
  const auto run = [&](const Pause& pause) {
    EnableCommands();
    display_.BreatheBy(pause);
    work();
  };
  return work_.Run({.idle = kIdle,
                    .stop = cmdStop,
                    .rest = lstvPlugin,
                    .show = [this](const Progress&) { display_.Flush(); }},
                   run);
}

void FrmPluginManager::Process() {
  const std::vector<size_t> rows = list_.SelectedRows();
  const auto process = [&](CleaningContext& context) {
    manager_.Process(context, rows, [this] {
      display_.SetStatus(manager_.status());
      display_.Flush();
    });
  };
  LongWork::End end = LongWork::End::kDone;
  bool may_go = true;
  if (engine_.preferences().ask) {
    PreviewRun preview(machine_, display_);
    end = Work([&] { preview.RunByHand(process); });
    may_go = end == LongWork::End::kDone && !preview.state().AbortRequested &&
             MayGo(window(), EntryList(machine_.system, preview.entries(), true).Question());
  }
  if (!may_go && window()) display_.SetStatus(Tr("Nothing was removed"));
  if (may_go) {
    CleaningContext context{machine_, engine_.settings(), engine_.state(), display_,
                            engine_.context().backup};
    end = Work([&] {
      process(context);
      KeepRun(context);
    });
  }
  if (end == LongWork::End::kGone || !window()) return;
  if (end == LongWork::End::kCloses) return OnClose();
  display_.Flush();
  EnableCommands();
  SetFocus(Control(lstvPlugin));
}

void FrmPluginManager::OnClose() {
  if (work_.working()) return work_.StopAndClose();
  manager_.Save();
  OwnedWindow::OnClose();
}

}  // namespace quellix
