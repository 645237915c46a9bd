#include "ui/language.h"

#include <zlib.h>

#include <cstring>
#include <optional>

#include "app/nearest_language.h"
#include "platform/error.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "settings/own_files.h"
#include "ui/windows_api.h"

namespace quellix {
namespace {

constexpr const wchar_t* kKind = L"WORDS";
constexpr uint64_t kLargestFile = 16'000'000;
constexpr const char* kEnglish = "en";

// What gzip made of it; the size of it all stands in the last four bytes.
std::optional<std::string> Unpacked(std::string_view bytes) {
  uint32_t size;
  if (bytes.size() < sizeof size) return std::nullopt;
  std::memcpy(&size, bytes.data() + bytes.size() - sizeof size, sizeof size);
  std::string text(size, '\0');
  z_stream stream{};
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(text.data());
  stream.avail_out = size;
  constexpr int kGzip = 16;
  if (inflateInit2(&stream, kGzip + MAX_WBITS) != Z_OK) return std::nullopt;
  const int result = inflate(&stream, Z_FINISH);
  inflateEnd(&stream);
  return result == Z_STREAM_END ? std::optional(std::move(text)) : std::nullopt;
}

std::optional<std::string> Carried(const std::string& tag) {
  const HRSRC found = FindResourceW(nullptr, Wide(tag).c_str(), kKind);
  const HGLOBAL loaded = found ? LoadResource(nullptr, found) : nullptr;
  if (!loaded) return std::nullopt;
  return Unpacked({static_cast<const char*>(LockResource(loaded)), SizeofResource(nullptr, found)});
}

BOOL CALLBACK AddTag(HMODULE, const wchar_t*, wchar_t* name, LONG_PTR tags) {
  reinterpret_cast<std::vector<std::string>*>(tags)->push_back(Narrow(name));
  return TRUE;
}

std::vector<std::string> Tags() {
  std::vector<std::string> tags;
  EnumResourceNamesW(nullptr, kKind, AddTag, reinterpret_cast<LONG_PTR>(&tags));
  return tags;
}

// In which Windows shows itself to its user, the dearest first.
std::vector<std::string> DisplayLanguages() {
  ULONG count = 0, size = 0;
  if (!GetUserPreferredUILanguages(MUI_LANGUAGE_NAME, &count, nullptr, &size)) return {};
  std::wstring names(size, L'\0');
  if (!GetUserPreferredUILanguages(MUI_LANGUAGE_NAME, &count, names.data(), &size)) return {};
  std::vector<std::string> languages;
  for (const wchar_t* name = names.c_str(); *name; name += std::wcslen(name) + 1) {
    languages.push_back(Narrow(name));
  }
  return languages;
}

Catalogue CatalogueOf(const std::string& wanted, const Machine& machine) {
  try {
    if (wanted.ends_with(".mo")) {
      auto mo = machine.files.ReadWholeFile(FoundPath(machine, wanted), kLargestFile);
      return mo ? Catalogue(std::move(*mo)) : Catalogue();
    }
    const std::vector<std::string> wishes =
        wanted.empty() ? DisplayLanguages() : std::vector{wanted};
    const std::string tag = NearestLanguage(wishes, Tags());
    auto mo = tag.empty() ? std::nullopt : Carried(tag);
    return mo ? Catalogue(std::move(*mo)) : Catalogue();
  } catch (const Error&) {
    return {};
  }
}

}  // namespace

std::vector<Language> Languages() {
  std::vector<Language> languages{{kEnglish, "English"}};
  for (const std::string& tag : Tags()) {
    auto mo = Carried(tag);
    if (!mo) continue;
    try {
      const Catalogue catalogue(std::move(*mo));
      languages.push_back({std::string(catalogue.Field("Language")),
                           std::string(catalogue.Field("X-Language-Name"))});
    } catch (const Error&) {
      // Not offered.
    }
  }
  return languages;
}

void SpeakAs(const std::string& wanted, const Machine& machine) {
  Speak(CatalogueOf(wanted, machine));
}

bool IsRightToLeft() { return Spoken().Field("X-Direction") == "rtl"; }

}  // namespace quellix
