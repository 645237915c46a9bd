#include "ui/options_list_page.h"

#include "platform/text.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/dpi.h"
#include "ui/row_menu.h"

namespace quellix {
namespace {

constexpr Column kTypes[] = {{Mark("File type"), 140}, {Mark("Description"), 200}};
constexpr Anchor kAnchors[] = {
    {lblListHint, 0, 0, 1, 0}, {lstvList, 0, 0, 1, 1},  {lblEntry, 0, 1, 0, 1},
    {txtEntry, 0, 1, 1, 1},    {cmdAdd, 0, 1, 0, 1},    {cmdEdit, 0, 1, 0, 1},
    {cmdRemove, 0, 1, 0, 1},   {cmdBrowse, 0, 1, 0, 1}, {cmdDefaults, 1, 1, 1, 1}};
constexpr Anchor kTypeAnchors[] = {
    {txtEntry, 0, 1, 0.4, 1}, {lblDescription, 0.4, 1, 0.4, 1}, {txtDescription, 0.4, 1, 1, 1}};

}  // namespace

void OptionsListPage::Fill() {
  const bool types = list_.page().has_ticks;
  if (!types) WidenEntry();
  layout().Add(kAnchors);
  if (types) layout().Add(kTypeAnchors);
  FillLabels();
  FillColumns();
  ShowRows();
}

// Without a description the entry has the whole line.
void OptionsListPage::WidenEntry() {
  RECT entry = PlaceInParent(Control(txtEntry));
  entry.right = PlaceInParent(Control(txtDescription)).right;
  SetWindowPos(Control(txtEntry), nullptr, 0, 0, entry.right - entry.left, entry.bottom - entry.top,
               SWP_NOMOVE | SWP_NOZORDER);
  for (const int id : {lblDescription, txtDescription}) DestroyWindow(Control(id));
  RECT client;
  GetClientRect(window(), &client);
  layout().Start(window(), dpi(), {client.right, client.bottom});
}

void OptionsListPage::FillLabels() {
  SetText(lblListHint, Tr(list_.page().hint));
  SetText(lblEntry, Tr(list_.page().label));
  ShowWindow(Control(cmdBrowse), list_.page().browse == ListPage::kNone ? SW_HIDE : SW_SHOW);
  ShowWindow(Control(cmdDefaults), list_.HasDefaults() ? SW_SHOW : SW_HIDE);
}

void OptionsListPage::FillColumns() {
  const auto& rows = list_.rows();
  const std::string title(list_.page().title);
  const Column plain[] = {{title.c_str(), 200}};
  rows_.Attach(Control(lstvList), list_.page().has_ticks ? std::span<const Column>(kTypes) : plain,
               [&rows](int row, int column) {
                 const ListRow& shown = rows[static_cast<size_t>(row)];
                 return Cell{Wide(column == 0 ? shown.text : shown.description)};
               });
  rows_.SetEraser([this] { Remove(); });
  rows_.SetTotals(context().machine.system.UserLocale());
  rows_.SetEmpty(
      [] { return Tr("Nothing is listed here yet. Type an entry below and press Add."); });
  if (!list_.page().has_ticks) return;
  rows_.SetCheckBoxes([&rows](int row) { return rows[static_cast<size_t>(row)].ticked; },
                      [this](int row) {
                        list_.Toggle(static_cast<size_t>(row));
                        Changed();
                      });
}

void OptionsListPage::OnResolution() {
  if (list_.page().has_ticks) rows_.SetResolution(dpi(), kTypes, {});
}

void OptionsListPage::OnSized() { rows_.FillWith(list_.page().has_ticks ? 1 : 0, 0); }

void OptionsListPage::ShowRows() {
  filling_ = true;
  rows_.SetRows(static_cast<int>(list_.rows().size()));
  filling_ = false;
  EnableCommands();
}

std::optional<size_t> OptionsListPage::OnlyRow() const {
  const std::vector<size_t> rows = rows_.SelectedRows();
  return rows.size() == 1 ? std::optional(rows[0]) : std::nullopt;
}

// Whether the fields hold an entry that the list does not.
bool OptionsListPage::IsNew() const {
  const std::string text = TextOf(txtEntry);
  const std::optional<size_t> row = OnlyRow();
  const ListRow shown = row ? list_.rows()[*row] : ListRow{};
  if (TrimBlanks(text).empty()) return false;
  return text != shown.text || (Has(txtDescription) && TextOf(txtDescription) != shown.description);
}

void OptionsListPage::ShowEntry(const ListRow& row) {
  SetText(txtEntry, row.text);
  if (Has(txtDescription)) SetText(txtDescription, row.description);
}

void OptionsListPage::EnableCommands() {
  Enable(cmdEdit, OnlyRow().has_value());
  Enable(cmdRemove, rows_.CountSelected() > 0);
}

void OptionsListPage::OnControl(int id, int /*code*/) {
  switch (id) {
    case cmdAdd:
      return Put(true);
    case cmdEdit:
      return Put(false);
    case cmdRemove:
      return Remove();
    case cmdBrowse:
      return Browse();
    case cmdDefaults:
      return RestoreDefaults();
  }
}

LRESULT OptionsListPage::OnNotify(NMHDR& header) {
  LRESULT result = 0;
  if (rows_.OnNotify(header, result)) return result;
  if (header.idFrom == lstvList && !filling_) OnListNotify(header);
  return 0;
}

void OptionsListPage::OnListNotify(const NMHDR& header) {
  if (header.code != LVN_ITEMCHANGED && header.code != LVN_ODSTATECHANGED) return;
  if (const std::optional<size_t> row = OnlyRow()) ShowEntry(list_.rows()[*row]);
  EnableCommands();
}

void OptionsListPage::OnContextMenu(HWND control, POINT screen) {
  if (control != Control(lstvList)) return;
  const auto place_of = [this](size_t row) { return PlaceNamedBy(list_.rows()[row].text); };
  RowMenu{rows_, context().machine.shell, place_of}.Show(window(), screen);
}

// Adds the entry of the fields, or changes the selected row to it.
void OptionsListPage::Put(bool add) {
  const std::optional<size_t> selected = OnlyRow();
  if (!add && !selected) return;
  const std::string question = list_.Question(TextOf(txtEntry));
  if (!question.empty() && !context().prompts.AskYesNo(question)) return FocusOn(txtEntry);
  const std::string description = Has(txtDescription) ? TextOf(txtDescription) : "";
  const std::string why = add ? list_.Add(TextOf(txtEntry), description)
                              : list_.Change(*selected, TextOf(txtEntry), description);
  if (!why.empty()) {
    context().prompts.Inform(why);
    return FocusOn(txtEntry);
  }
  ShowRows();
  rows_.Select(add ? list_.rows().size() - 1 : *selected);
  FocusOn(txtEntry);
  Changed();
}

void OptionsListPage::Remove() {
  const std::vector<size_t> rows = rows_.SelectedRows();
  if (rows.empty()) return;
  list_.Remove(rows);
  ShowRows();
  ShowEntry({});
  SetFocus(Control(lstvList));  // the button is of no use any more
  Changed();
}

void OptionsListPage::Browse() {
  constexpr FileFilter kAllFiles[] = {{Mark("All files"), "*.*"}};
  const std::optional<std::string> path =
      list_.page().browse == ListPage::kFile
          ? context().prompts.AskFile(kAllFiles, "")
          : context().prompts.AskFolder(Tr("%1:", Tr(list_.page().title)));
  if (!path) return;
  SetText(txtEntry, list_.FromPath(*path));
  SetFocus(Control(cmdAdd));
}

void OptionsListPage::RestoreDefaults() {
  const std::string why = list_.RestoreDefaults();
  if (!why.empty()) return context().prompts.Inform(why);
  ShowRows();
  ShowEntry({});
  Changed();
}

std::string OptionsListPage::Unfinished() const {
  if (!IsNew()) return {};
  return Tr("%1 is not in the list yet. Please add it, or empty the field.", TextOf(txtEntry));
}

bool OptionsListPage::TakeEnter() {
  const int focus = GetDlgCtrlID(GetFocus());
  if ((focus != txtEntry && focus != txtDescription) || !IsNew()) return false;
  Put(true);
  return true;
}

}  // namespace quellix
