#include "ui/frm_plugin.h"

#include <array>

#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/control_text.h"

namespace quellix {
namespace {

constexpr Anchor kAnchors[] = {
    {txtDescription, 0, 0, 1, 0}, {sstPlugin, 0, 0, 1, 0}, {cmdSave, 0, 1, 0, 1},
    {cmdTry, 0, 1, 0, 1},         {IDCANCEL, 1, 1, 1, 1},
};

constexpr const char* kTabs[] = {Mark("Files"), Mark("Registry"), Mark("INI files"),
                                 Mark("Further")};
constexpr int kPages[] = {pagFiles, pagRegistry, pagINI, pagFurther, pagEnd};

}  // namespace

FrmPlugin::FrmPlugin(const Machine& machine, modPlugin::PluginManager& manager,
                     std::function<void()> on_saved)
    : machine_(machine),
      on_saved_(std::move(on_saved)),
      editor_(machine, prompts_, manager),
      files_(machine, editor_, prompts_),
      registry_(editor_),
      ini_(editor_),
      further_(editor_),
      try_(machine) {}

void FrmPlugin::Create(HWND owner) {
  editor_.Create();
  Open(frmPlugin, owner);
}

void FrmPlugin::Edit(HWND owner, const std::string& file) {
  prompts_.Attach(owner);
  if (editor_.Load(file)) Open(frmPlugin, owner);
}

void FrmPlugin::OnInit() {
  prompts_.Attach(window());
  layout().Add(kAnchors);
  layout().SetPages(kPages);
  Remember(machine_, "frmPlugin",
           {&files_.list(), &registry_.list(), &ini_.list(), &further_.list()});
  for (int i = 0; i < static_cast<int>(std::size(kTabs)); ++i) {
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    std::wstring title = Wide(Tr(kTabs[i]));
    item.pszText = title.data();
    TabCtrl_InsertItem(Control(sstPlugin), i, &item);
  }
  SetText(txtDescription, editor_.plugin().description);
  const Locale locale = machine_.system.UserLocale();
  for (PluginPage* const page : Pages()) layout().Add(page->Attach(window(), locale));
  ShowPage();
  ShowTitle();
}

void FrmPlugin::OnResolution() {
  files_.SetResolution(dpi());
  registry_.SetResolution(dpi());
  ini_.SetResolution(dpi());
  further_.SetResolution(dpi());
}

void FrmPlugin::OnSized() {
  files_.FillLastColumn(dpi());
  registry_.FillLastColumn(dpi());
  ini_.FillLastColumn(dpi());
  further_.FillLastColumn(dpi());
}

// Ctrl+Tab turns the pages, as in any window that has some.
bool FrmPlugin::OnKey(MSG& message) {
  const bool turns =
      message.message == WM_KEYDOWN && message.wParam == VK_TAB && GetKeyState(VK_CONTROL) < 0;
  if (!turns) return false;
  const HWND tab = Control(sstPlugin);
  const int pages = TabCtrl_GetItemCount(tab);
  const int step = GetKeyState(VK_SHIFT) < 0 ? pages - 1 : 1;
  TabCtrl_SetCurSel(tab, (TabCtrl_GetCurSel(tab) + step) % pages);
  ShowPage();
  return true;
}

void FrmPlugin::ShowPage() {
  const HWND focus = GetFocus();
  const int page = TabCtrl_GetCurSel(Control(sstPlugin));
  for (int id = pagFiles; id < pagEnd; ++id) {
    const bool shown = id >= kPages[page] && id < kPages[page + 1];
    if (const HWND control = Control(id)) ShowWindow(control, shown ? SW_SHOW : SW_HIDE);
  }
  // Another page may need more room.
  RECT place;
  GetWindowRect(window(), &place);
  SetWindowPos(window(), nullptr, 0, 0, place.right - place.left, place.bottom - place.top,
               SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
  // Or keys would go to a field that is not seen.
  if (IsChild(window(), focus) && !IsWindowVisible(focus)) SetFocus(Control(sstPlugin));
}

void FrmPlugin::ShowTitle() { SetWindowTextW(window(), Wide(editor_.Title()).c_str()); }

void FrmPlugin::OnCommand(int id, int code) {
  switch (id) {
    case txtDescription:
      if (code == EN_CHANGE) editor_.SetDescription(ControlText(Control(txtDescription)));
      return;
    case cmdSave:
      return Save();
    case cmdTry:
      return try_.Show(window(), editor_.plugin());
    case IDOK:
      return OnEnter();
    case IDCANCEL:
      return OnClose();
  }
  files_.OnCommand(id, code);
  registry_.OnCommand(id, code);
  ini_.OnCommand(id, code);
  further_.OnCommand(id, code);
}

// No button is the default one: Enter in a field adds what stands on its page.
void FrmPlugin::OnEnter() {
  HWND field = GetFocus();
  if (GetParent(field) != window()) field = GetParent(field);  // the text of a combo box
  const int id = GetDlgCtrlID(field);
  const int page = TabCtrl_GetCurSel(Control(sstPlugin));
  PluginPage* const pages[] = {&files_, &registry_, &ini_, &further_};
  if (id >= kPages[page] && id < kPages[page + 1]) pages[page]->OnEnter();
}

LRESULT FrmPlugin::OnNotify(NMHDR& header) {
  if (header.idFrom == sstPlugin && header.code == TCN_SELCHANGE) ShowPage();
  LRESULT result = 0;
  for (PluginPage* const page : Pages()) {
    if (page->OnNotify(header, result)) break;
  }
  return result;
}

void FrmPlugin::OnContextMenu(HWND control, POINT screen) {
  for (PluginPage* const page : Pages()) page->OnContextMenu(machine_.shell, control, screen);
}

void FrmPlugin::Save() {
  editor_.Save();
  ShowTitle();
  on_saved_();
}

void FrmPlugin::OnClose() {
  if (editor_.MayClose()) OwnedWindow::OnClose();
}

}  // namespace quellix
