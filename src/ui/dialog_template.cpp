#include "ui/dialog_template.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "ui/dpi.h"
#include "ui/language.h"

namespace quellix {
namespace {

constexpr WORD kOrdinal = 0xFFFF;
constexpr size_t kExtendedStyle = 8, kStyle = 12, kWidth = 22, kHeight = 24,
                 kMenu = 26;  // in bytes, of DLGTEMPLATEEX

struct MessageFont {
  std::wstring face;
  WORD points = 0;
};

// Of Windows' older versions the structure is shorter by its last member.
MessageFont SystemMessageFont() {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof(metrics);
  if (!SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0)) return {};
  const HDC screen = GetDC(nullptr);
  const int points =
      MulDiv(std::abs(metrics.lfMessageFont.lfHeight), 72, GetDeviceCaps(screen, LOGPIXELSY));
  ReleaseDC(nullptr, screen);
  return {metrics.lfMessageFont.lfFaceName, static_cast<WORD>(points)};
}

WORD WordAt(const BYTE* bytes, size_t at) {
  WORD word;
  std::memcpy(&word, bytes + at, sizeof word);
  return word;
}

// Behind a name, a number in its place, or nothing.
size_t Behind(const BYTE* bytes, size_t at) {
  if (WordAt(bytes, at) == kOrdinal) return at + 4;
  while (WordAt(bytes, at) != 0) at += 2;
  return at + 2;
}

void Append(std::vector<BYTE>& to, const void* bytes, size_t size) {
  const auto* const first = static_cast<const BYTE*>(bytes);
  to.insert(to.end(), first, first + size);
}

void Align(std::vector<BYTE>& bytes) { bytes.resize((bytes.size() + 3) / 4 * 4); }

// What stands before the controls, with another font; `at` comes to stand where they begin.
std::vector<BYTE> HeadWith(const MessageFont& font, const BYTE* bytes, size_t& at) {
  at = kMenu;
  for (int i = 0; i < 3; ++i) at = Behind(bytes, at);  // menu, class, title
  std::vector<BYTE> head(bytes, bytes + at);
  Append(head, &font.points, sizeof font.points);
  Append(head, bytes + at + 2, 4);  // weight, italic, character set
  Append(head, font.face.c_str(), (font.face.size() + 1) * sizeof(wchar_t));
  at = (Behind(bytes, at + 6) + 3) / 4 * 4;
  Align(head);
  return head;
}

}  // namespace

DialogTemplate::DialogTemplate(int id) {
  const HRSRC resource = FindResourceW(nullptr, MAKEINTRESOURCEW(id), RT_DIALOG);
  if (!resource) return;
  const auto* const bytes = static_cast<const BYTE*>(LockResource(LoadResource(nullptr, resource)));
  const size_t size = SizeofResource(nullptr, resource);
  const MessageFont font = SystemMessageFont();
  DWORD style;
  std::memcpy(&style, bytes + kStyle, sizeof style);
  const bool has_font = (style & DS_SETFONT) != 0 && WordAt(bytes, 2) == kOrdinal;
  size_t controls = 0;
  std::vector<BYTE> whole;
  if (has_font && font.points > 0) whole = HeadWith(font, bytes, controls);
  Append(whole, bytes + controls, size - controls);
  Align(whole);
  bytes_.resize(whole.size() / sizeof(DWORD));
  std::memcpy(bytes_.data(), whole.data(), whole.size());
  if (IsRightToLeft()) bytes_[kExtendedStyle / sizeof(DWORD)] |= WS_EX_LAYOUTRTL;
}

SIZE DialogTemplate::Size() const {
  const auto* const bytes = reinterpret_cast<const BYTE*>(bytes_.data());
  if (bytes_.empty()) return {};
  return {static_cast<short>(WordAt(bytes, kWidth)), static_cast<short>(WordAt(bytes, kHeight))};
}

}  // namespace quellix
