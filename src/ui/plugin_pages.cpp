#include "ui/plugin_pages.h"

#include <algorithm>

#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/control_text.h"
#include "ui/dpi.h"
#include "ui/resource.h"
#include "ui/row_menu.h"

namespace quellix {
namespace {

std::string YesNo(bool flag) { return flag ? Tr("Yes") : Tr("No"); }

constexpr Column kRegistryColumns[] = {{Mark("Del subkey"), 80},
                                       {Mark("Recurse delete"), 100},
                                       {Mark("32 bit too"), 70},
                                       {Mark("key"), 220},
                                       {Mark("value"), 100}};
constexpr Anchor kRegistryAnchors[] = {
    {lstvRegistry, 0, 0, 1, 1},
    {optClassesRoot, 0, 1, 0, 1},
    {optCurrentUser, 0, 1, 0, 1},
    {optLocalMachine, 0, 1, 0, 1},
    {optUsers, 0, 1, 0, 1},
    {optPerformanceData, 0, 1, 0, 1},
    {optCurrentConfig, 0, 1, 0, 1},
    {optDynData, 0, 1, 0, 1},
    {lblRegistrySubkey, 0, 1, 0, 1},
    {txtRegistrySubkey, 0, 1, 1, 1},
    {lblRegistryValue, 0, 1, 0, 1},
    {txtRegistryValue, 0, 1, 1, 1},
    {optEntireSubkey, 0, 1, 0, 1},
    {optDeleteValue, 0, 1, 0, 1},
    {chkDeleteAllSubkeys, 0, 1, 0, 1},
    {chkBothViews, 0, 1, 0, 1},
    {cmdGeneratesubkeys, 0, 1, 0, 1},
    {cmdGenerateValues, 0, 1, 0, 1},
    {cmdRegistryAdd, 1, 1, 1, 1},
    {cmdRegistryChange, 1, 1, 1, 1},
    {cmdRegistryRemove, 1, 1, 1, 1},
};

constexpr Column kIniColumns[] = {{Mark("FileName"), 110},
                                  {Mark("Section"), 100},
                                  {Mark("Delete Section"), 100},
                                  {Mark("Value"), 100},
                                  {Mark("Path"), 160}};
constexpr Anchor kIniAnchors[] = {
    {lstvINI, 0, 0, 1, 1},      {lblINIFileName, 0, 1, 0, 1}, {txtINIFileName, 0, 1, 1, 1},
    {cmdINIBrowse, 1, 1, 1, 1}, {lblINISections, 0, 1, 0, 1}, {cmbINISections, 0, 1, 1, 1},
    {lblINIValues, 0, 1, 0, 1}, {cmbINIValues, 0, 1, 1, 1},   {chkINIEraseSection, 0, 1, 0, 1},
    {cmdINIAdd, 1, 1, 1, 1},    {cmdINIChange, 1, 1, 1, 1},   {cmdINIRemove, 1, 1, 1, 1},
};

constexpr Column kFurtherColumns[] = {
    {Mark("What"), 190}, {Mark("Where or which"), 250}, {Mark("And"), 130}};
constexpr Anchor kFurtherAnchors[] = {
    {lstvFurther, 0, 0, 1, 1},      {lblFurtherKind, 0, 1, 0, 1},  {cmbFurtherKind, 0, 1, 0, 1},
    {lblFurtherPlace, 0, 1, 0, 1},  {txtFurtherPlace, 0, 1, 1, 1}, {lblFurtherLast, 0, 1, 0, 1},
    {txtFurtherLast, 0, 1, 0, 1},   {cmdFurtherAdd, 1, 1, 1, 1},   {cmdFurtherChange, 1, 1, 1, 1},
    {cmdFurtherRemove, 1, 1, 1, 1},
};

}  // namespace

std::span<const Anchor> PluginPage::Attach(HWND window, const Locale& locale) {
  window_ = window;
  list_.Attach(Control(controls_.list), columns_, [this](int row, int column) {
    return Cell{Wide(TextOf(static_cast<size_t>(row), column))};
  });
  list_.SetEraser([this] { Remove(); });
  list_.SetTotals(locale);
  list_.SetEmpty(
      [] { return Tr("Nothing is listed here yet. Fill in the fields below and press Add."); });
  list_.SetRows(Count());
  return Init();
}

void PluginPage::OnContextMenu(Shell& shell, HWND control, POINT screen) {
  if (control != Control(controls_.list)) return;
  const auto place_of = [this](size_t row) { return PlaceNamedBy(PlaceOf(row)); };
  RowMenu{list_, shell, place_of}.Show(window_, screen);
}

void PluginPage::FillLastColumn(int dpi) {
  const int last = static_cast<int>(columns_.size()) - 1;
  list_.FillWith(last, Scale(columns_[static_cast<size_t>(last)].width, dpi));
}

std::optional<size_t> PluginPage::OnlyRow() const {
  const std::vector<size_t> rows = list_.SelectedRows();
  return rows.size() == 1 && rows[0] < static_cast<size_t>(Count()) ? std::optional(rows[0])
                                                                    : std::nullopt;
}

// What is selected can be seen in the fields, to be changed there.
void PluginPage::FollowSelection() {
  const std::optional<size_t> row = OnlyRow();
  const HWND list = Control(controls_.list);
  EnableWithFocus(Control(controls_.change), row.has_value(), list);
  EnableWithFocus(Control(controls_.remove), list_.CountSelected() > 0, list);
  if (row) ShowForm(*row);
}

bool PluginPage::OnNotify(NMHDR& header, LRESULT& result) {
  if (header.idFrom != static_cast<UINT_PTR>(controls_.list)) return false;
  if (list_.OnNotify(header, result)) return true;
  if (header.code == LVN_ITEMCHANGED || header.code == LVN_ODSTATECHANGED) FollowSelection();
  return true;
}

void PluginPage::OnCommand(int id, int code) {
  if (id == controls_.remove) return Remove();
  if (id != controls_.change) return OnOwnCommand(id, code);
  const std::optional<size_t> row = OnlyRow();
  if (!row || !Change(*row)) return;
  list_.SetRows(Count());
  list_.Select(std::min(*row, static_cast<size_t>(Count()) - 1));
}

void PluginPage::SetText(int id, const std::string& text) const {
  SetDlgItemTextW(window_, id, Wide(text).c_str());
}

std::string PluginPage::Text(int id) const { return ControlText(Control(id)); }

void PluginPage::Empty(std::initializer_list<int> fields) const {
  for (const int id : fields) SetDlgItemTextW(window_, id, L"");
  SetFocus(Control(*fields.begin()));
}

void PluginPage::ShowRows() {
  list_.SetRows(Count());
  if (Count() > 0) list_.Select(static_cast<size_t>(Count()) - 1);
}

void PluginPage::RemoveSelected(void (modPlugin::PluginEditor::*remove)(size_t row)) {
  const std::vector<size_t> rows = list_.SelectedRows();
  if (rows.empty()) return;
  for (size_t i = rows.size(); i-- > 0;) (editor_.*remove)(rows[i]);
  ShowRows();
}

PluginRegistryPage::PluginRegistryPage(modPlugin::PluginEditor& editor)
    : PluginPage(editor, {lstvRegistry, cmdRegistryChange, cmdRegistryRemove}, kRegistryColumns) {}

std::span<const Anchor> PluginRegistryPage::Init() {
  CheckDlgButton(window(), optCurrentUser, BST_CHECKED);
  CheckDlgButton(window(), optDeleteValue, BST_CHECKED);
  return kRegistryAnchors;
}

std::string PluginRegistryPage::TextOf(size_t row, int column) const {
  const modPlugin::RegistryEntry& entry = editor().plugin().registry[row];
  if (column == 0) return YesNo(entry.delete_subkey);
  if (column == 1) return YesNo(entry.recurse_delete);
  if (column == 2) return YesNo(entry.both_views);
  return column == 3 ? entry.key : entry.value_name;
}

modPlugin::RegistryForm PluginRegistryPage::Form() const {
  modPlugin::RegistryForm form;
  for (int id = optClassesRoot; id <= optDynData; ++id) {
    if (IsTicked(window(), id)) form.root = static_cast<size_t>(id - optClassesRoot);
  }
  form.subkey = Text(txtRegistrySubkey);
  form.value = Text(txtRegistryValue);
  form.entire_subkey = IsTicked(window(), optEntireSubkey);
  form.all_subkeys = IsTicked(window(), chkDeleteAllSubkeys);
  form.both_views = IsTicked(window(), chkBothViews);
  return form;
}

void PluginRegistryPage::ShowForm(size_t row) {
  const modPlugin::RegistryForm form = editor().KeyFormOf(row);
  CheckRadioButton(window(), optClassesRoot, optDynData,
                   optClassesRoot + static_cast<int>(form.root));
  SetText(txtRegistrySubkey, form.subkey);
  SetText(txtRegistryValue, form.value);
  CheckRadioButton(window(), optEntireSubkey, optDeleteValue,
                   form.entire_subkey ? optEntireSubkey : optDeleteValue);
  Tick(chkDeleteAllSubkeys, form.all_subkeys);
  Tick(chkBothViews, form.both_views);
}

bool PluginRegistryPage::Change(size_t row) { return editor().ChangeKey(row, Form()); }

void PluginRegistryPage::OnOwnCommand(int id, int /*code*/) {
  if (id == cmdRegistryAdd) Add();
  if (id == cmdGeneratesubkeys) Generate(modPlugin::Generated::kSubkeys);
  if (id == cmdGenerateValues) Generate(modPlugin::Generated::kValues);
}

void PluginRegistryPage::Add() {
  if (!editor().AddKey(Form())) return;
  ShowRows();
  SetFocus(Control(txtRegistrySubkey));
}

void PluginRegistryPage::Generate(modPlugin::Generated what) {
  const modPlugin::RegistryForm form = Form();
  if (!editor().CanGenerate(form, what)) return;
  generator_.Show(window(), [this, form, what](const modPlugin::NumberRange& range) {
    const bool added = editor().AddGenerated(form, what, range);
    if (added) ShowRows();
    return added;
  });
}

PluginIniPage::PluginIniPage(modPlugin::PluginEditor& editor)
    : PluginPage(editor, {lstvINI, cmdINIChange, cmdINIRemove}, kIniColumns) {}

std::span<const Anchor> PluginIniPage::Init() {
  sections_.clear();
  return kIniAnchors;
}

std::string PluginIniPage::TextOf(size_t row, int column) const {
  const modPlugin::IniEntry& entry = editor().plugin().ini[row];
  switch (column) {
    case 0:
      return entry.file_name;
    case 1:
      return entry.section;
    case 2:
      return YesNo(entry.delete_section);
    case 3:
      return entry.key;
    default:
      return entry.folder;
  }
}

modPlugin::IniForm PluginIniPage::Form() const {
  return {Text(txtINIFileName), Text(cmbINISections), Text(cmbINIValues),
          IsTicked(window(), chkINIEraseSection)};
}

void PluginIniPage::ShowForm(size_t row) {
  const modPlugin::IniForm form = editor().IniFormOf(row);
  SetText(txtINIFileName, form.file);
  SetText(cmbINISections, form.section);
  SetText(cmbINIValues, form.value);
  Tick(chkINIEraseSection, form.erase_section);
}

bool PluginIniPage::Change(size_t row) { return editor().ChangeIni(row, Form()); }

void PluginIniPage::OnOwnCommand(int id, int code) {
  if (id == cmdINIBrowse) Browse();
  if (id == cmbINISections && code == CBN_SELCHANGE) ChooseSection();
  if (id == cmdINIAdd) Add();
}

void PluginIniPage::Browse() {
  const std::string file = editor().AskIniFile();
  if (file.empty()) return;
  SetDlgItemTextW(window(), txtINIFileName, Wide(file).c_str());
  sections_ = editor().ReadIni(file);
  std::vector<std::string> names;
  for (const modPlugin::IniSection& section : sections_) names.push_back(section.name);
  FillCombo(Control(cmbINISections), names);
  FillCombo(Control(cmbINIValues), {});
}

void PluginIniPage::ChooseSection() {
  const LRESULT row = SendMessageW(Control(cmbINISections), CB_GETCURSEL, 0, 0);
  if (row < 0 || row >= static_cast<LRESULT>(sections_.size())) return;
  FillCombo(Control(cmbINIValues), sections_[static_cast<size_t>(row)].keys);
}

void PluginIniPage::Add() {
  if (editor().AddIni(Form())) ShowRows();
}

PluginFurtherPage::PluginFurtherPage(modPlugin::PluginEditor& editor)
    : PluginPage(editor, {lstvFurther, cmdFurtherChange, cmdFurtherRemove}, kFurtherColumns) {}

std::span<const Anchor> PluginFurtherPage::Init() {
  std::vector<std::string> kinds;
  for (const modPlugin::FurtherKind& kind : modPlugin::FurtherKinds()) {
    kinds.push_back(Tr(kind.caption));
  }
  FillCombo(Control(cmbFurtherKind), kinds);
  SendMessageW(Control(cmbFurtherKind), CB_SETCURSEL, 0, 0);
  ShowKind();
  return kFurtherAnchors;
}

std::string PluginFurtherPage::TextOf(size_t row, int column) const {
  const auto [what, place, last] = editor().Further(row);
  return column == 0 ? Tr(what) : column == 1 ? place : last;
}

size_t PluginFurtherPage::Kind() const {
  const LRESULT kind = SendMessageW(Control(cmbFurtherKind), CB_GETCURSEL, 0, 0);
  return kind < 0 ? 0 : static_cast<size_t>(kind);
}

modPlugin::FurtherForm PluginFurtherPage::Form() const {
  return {Kind(), Text(txtFurtherPlace), Text(txtFurtherLast)};
}

// One of a kind that nobody knows cannot be told in the fields.
void PluginFurtherPage::ShowForm(size_t row) {
  const auto form = editor().FurtherFormOf(row);
  if (!form) return EnableWithFocus(Control(cmdFurtherChange), false, Control(lstvFurther));
  SendMessageW(Control(cmbFurtherKind), CB_SETCURSEL, form->kind, 0);
  ShowKind();
  SetText(txtFurtherPlace, form->place);
  SetText(txtFurtherLast, form->last);
}

bool PluginFurtherPage::Change(size_t row) { return editor().ChangeFurther(row, Form()); }

void PluginFurtherPage::ShowKind() {
  const modPlugin::FurtherKind& kind = modPlugin::FurtherKinds()[Kind()];
  SetText(lblFurtherPlace, Tr(kind.place));
  SetText(lblFurtherLast, kind.last == nullptr ? "" : Tr(kind.last));
  if (kind.last == nullptr) SetDlgItemTextW(window(), txtFurtherLast, L"");
  EnableWindow(Control(txtFurtherLast), kind.last != nullptr);
}

void PluginFurtherPage::OnOwnCommand(int id, int code) {
  if (id == cmbFurtherKind && code == CBN_SELCHANGE) ShowKind();
  if (id == cmdFurtherAdd) Add();
}

void PluginFurtherPage::Add() {
  if (!editor().AddFurther(Form())) return;
  ShowRows();
  Empty({txtFurtherPlace, txtFurtherLast});
}

}  // namespace quellix
