#include "run/list_totals.h"

#include "platform/words.h"
#include "run/removal.h"

namespace quellix {
namespace {

std::string SizeBehind(const ListTotals& totals, double bytes, const Locale& locale) {
  return totals.has_sizes ? ", " + FormatSize(bytes, 1, true, locale) : "";
}

}  // namespace

void ListTotals::Add(bool is_ticked, std::optional<double> size) {
  ++rows;
  ticked += is_ticked ? 1 : 0;
  has_sizes = has_sizes || size.has_value();
  bytes += size.value_or(0);
  ticked_bytes += is_ticked ? size.value_or(0) : 0;
}

std::string TotalsText(const ListTotals& totals, const Locale& locale) {
  if (totals.rows == 0) return Tr("No rows");
  std::string text = TrN("%1 row", "%1 rows", totals.rows, FormatCount(totals.rows, locale)) +
                     SizeBehind(totals, totals.bytes, locale);
  if (!totals.has_ticks) return text;
  if (totals.ticked == 0) return Tr("%1; none ticked", text);
  const std::string ticked =
      TrN("%1 ticked", "%1 ticked", totals.ticked, FormatCount(totals.ticked, locale));
  return text + "; " + ticked + SizeBehind(totals, totals.ticked_bytes, locale);
}

std::string TickedCaption(const std::string& caption, const ListTotals& totals,
                          const Locale& locale) {
  if (totals.ticked == 0) return caption;
  const std::string what =
      FormatCount(totals.ticked, locale) + SizeBehind(totals, totals.ticked_bytes, locale);
  // TRANSLATORS: A button: "Delete ticked (12, 1.4 MB)".
  return Tr("%1 ticked (%2)", caption, what);
}

}  // namespace quellix
