#include "run/list_totals.h"

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
  if (totals.rows == 0) return "No rows";
  std::string text = FormatCount(totals.rows, locale) + (totals.rows == 1 ? " row" : " rows") +
                     SizeBehind(totals, totals.bytes, locale);
  if (!totals.has_ticks) return text;
  text += "; " + (totals.ticked == 0 ? std::string("none") : FormatCount(totals.ticked, locale)) +
          " ticked";
  return totals.ticked == 0 ? text : text + SizeBehind(totals, totals.ticked_bytes, locale);
}

std::string TickedCaption(const std::string& caption, const ListTotals& totals,
                          const Locale& locale) {
  if (totals.ticked == 0) return caption;
  return caption + " ticked (" + FormatCount(totals.ticked, locale) +
         SizeBehind(totals, totals.ticked_bytes, locale) + ")";
}

}  // namespace quellix
