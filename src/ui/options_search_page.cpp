#include "ui/options_search_page.h"

#include <algorithm>

#include "platform/win32/win32_text.h"
#include "search/drive_list.h"

namespace quellix {
namespace {

constexpr Column kColumns[] = {{Mark("Drive"), 200}};
constexpr Anchor kAnchors[] = {{lstSearch, 0, 0, 1, 1},
                               {fraSearchFilter, 0, 1, 1, 1},
                               {chkSearchDateReference, 0, 1, 0, 1},
                               {lblSearchDates, 0, 1, 0, 1},
                               {dtpSearchFirst, 0, 1, 0, 1},
                               {lblSearchTo, 0, 1, 0, 1},
                               {dtpSearchSecond, 0, 1, 0, 1},
                               {chkSearchSize, 0, 1, 0, 1},
                               {optSearcSizeIs, 0, 1, 0, 1},
                               {optSearchSizeAtleast, 0, 1, 0, 1},
                               {optSearchSizeAtMost, 0, 1, 0, 1},
                               {txtSearchSize, 0, 1, 0, 1},
                               {lblSearchUnit, 0, 1, 0, 1},
                               {lblSearchSize, 0, 1, 1, 1},
                               {lblSearchIgnore, 0, 1, 0, 1},
                               {chkSearchReadOnly, 0, 1, 0, 1},
                               {chkSearchHidden, 0, 1, 0, 1},
                               {chkSearchSystem, 0, 1, 0, 1},
                               {lblSearchHidden, 0, 1, 1, 1},
                               {fraSearchDead, 0, 1, 1, 1},
                               {chkSearchFileReference, 0, 1, 1, 1},
                               {chkSearchPathReference, 0, 1, 1, 1}};

// The check boxes; only a 1 counts for the first two, anything but 0 for the others. A box that is
// not clicked keeps its value.
struct SearchCheck {
  int control;
  int SearchOptions::*value;
  bool only_one = false;
};
constexpr SearchCheck kChecks[] = {{chkSearchFileReference, &SearchOptions::file_reference, true},
                                   {chkSearchPathReference, &SearchOptions::path_reference, true},
                                   {chkSearchDateReference, &SearchOptions::date},
                                   {chkSearchSize, &SearchOptions::size},
                                   {chkSearchReadOnly, &SearchOptions::read_only},
                                   {chkSearchHidden, &SearchOptions::hidden},
                                   {chkSearchSystem, &SearchOptions::system}};

struct SizeMode {
  int control;
  bool SearchOptions::*value;
};
constexpr SizeMode kSizeModes[] = {{optSearcSizeIs, &SearchOptions::size_equals},
                                   {optSearchSizeAtleast, &SearchOptions::size_minimum},
                                   {optSearchSizeAtMost, &SearchOptions::size_maximum}};

}  // namespace

void OptionsSearchPage::Fill() {
  layout().Add(kAnchors);
  SearchDraft& search = options().search;
  drives_.Attach(Control(lstSearch), kColumns, [&search](int row, int) {
    return Cell{Wide(ShownDrive(search.drives[static_cast<size_t>(row)].entry))};
  });
  drives_.SetCheckBoxes(
      [&search](int row) { return search.drives[static_cast<size_t>(row)].ticked; },
      [this, &search](int row) {
        bool& ticked = search.drives[static_cast<size_t>(row)].ticked;
        ticked = !ticked;
        Changed();
      });
  drives_.SetRows(static_cast<int>(search.drives.size()));
  for (const auto& [id, value, only_one] : kChecks) {
    Check(id, only_one ? search.options.*value == 1 : search.options.*value != 0);
  }
  for (const SizeMode& mode : kSizeModes) Check(mode.control, search.options.*mode.value);
  ShowDate(dtpSearchFirst, search.options.first_date);
  ShowDate(dtpSearchSecond, search.options.second_date);
  SetText(txtSearchSize, search.size_kb);
  EnableFields();
}

void OptionsSearchPage::ShowDate(int id, const std::optional<LocalTime>& date) const {
  SYSTEMTIME time{};
  time.wYear = static_cast<WORD>(date->year);
  time.wMonth = static_cast<WORD>(date->month);
  time.wDay = static_cast<WORD>(date->day);
  SendDlgItemMessageW(window(), id, DTM_SETSYSTEMTIME, GDT_VALID, reinterpret_cast<LPARAM>(&time));
}

void OptionsSearchPage::OnSized() { drives_.FillWith(0, 0); }

void OptionsSearchPage::EnableFields() const {
  const SearchOptions& search = options().search.options;
  for (const int id : {dtpSearchFirst, dtpSearchSecond}) Enable(id, search.date != 0);
  for (const int id : {optSearcSizeIs, optSearchSizeAtleast, optSearchSizeAtMost, txtSearchSize}) {
    Enable(id, search.size != 0);
  }
}

void OptionsSearchPage::OnControl(int id, int code) {
  if (!Take(id, code)) return;
  EnableFields();
  Changed();
}

bool OptionsSearchPage::Take(int id, int code) {
  SearchDraft& search = options().search;
  if (id == txtSearchSize) {
    search.size_kb = TextOf(txtSearchSize);
    return code == EN_CHANGE;
  }
  if (const auto box = std::ranges::find(kChecks, id, &SearchCheck::control);
      box != std::end(kChecks)) {
    search.options.*box->value = IsChecked(id) ? 1 : 0;
    return true;
  }
  if (!std::ranges::count(kSizeModes, id, &SizeMode::control)) return false;
  for (const SizeMode& mode : kSizeModes) search.options.*mode.value = IsChecked(mode.control);
  return true;
}

LRESULT OptionsSearchPage::OnNotify(NMHDR& header) {
  LRESULT result = 0;
  if (drives_.OnNotify(header, result)) return result;
  if (header.code != DTN_DATETIMECHANGE) return 0;
  const SYSTEMTIME& time = reinterpret_cast<const NMDATETIMECHANGE&>(header).st;
  SearchOptions& search = options().search.options;
  LocalTime day;
  day.year = time.wYear;
  day.month = time.wMonth;
  day.day = time.wDay;
  (header.idFrom == dtpSearchFirst ? search.first_date : search.second_date) = day;
  Changed();
  return 0;
}

}  // namespace quellix
