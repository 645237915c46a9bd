// Fills the Internet cache of the sandbox's user with a few entries, for pictures of the viewer.
#include "../tests/support/cache_entry_win32.h"

int main() {
  using quellix::MakeCacheEntry;
  // 14 March 2010, in the morning, and a month later.
  const FILETIME modified = {0x3F68AD80, 0x01CAC343}, expires = {0x7F68AD80, 0x01CADBD6};
  const std::string page =
      "<html>\n<head><title>Garden news</title></head>\n<body>\n<h1>Sow in March</h1>\n"
      "<p>Tomatoes want a warm window sill now.</p>\n</body>\n</html>\n";
  const struct {
    const wchar_t* source;
    DWORD type;
    const wchar_t* extension;
  } kEntries[] = {
      {L"http://garden.example/news/march.html", 0x40, L"htm"},
      {L"http://garden.example/style.css", 0x40, L"css"},
      {L"http://news.example/", 0, L"htm"},
      {L"http://shop.example/cart?item=12", 0x40, L"htm"},
      {L"Cookie:anna@garden.example/", COOKIE_CACHE_ENTRY, L"txt"},
      {L"Cookie:anna@shop.example/", COOKIE_CACHE_ENTRY, L"txt"},
      {L"Visited: anna@http://garden.example/news/march.html", URLHISTORY_CACHE_ENTRY, L"txt"},
      {L"Visited: anna@http://bank.example/login", URLHISTORY_CACHE_ENTRY, L"txt"},
  };
  for (const auto& entry : kEntries) {
    MakeCacheEntry({.source = entry.source,
                    .type = entry.type,
                    .bytes = page,
                    .extension = entry.extension,
                    .expires = expires,
                    .modified = modified});
  }
}
