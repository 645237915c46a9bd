// Internet shortcuts, exported bookmarks and the addresses in them.
#include "browser_tools/favorite_files.h"
#include "browser_tools/favorites.h"
#include "fuzz/check.h"
#include "fuzz/volume_file.h"
#include "platform/url.h"

using namespace quellix;

namespace {

void CheckAddress(std::string_view address) {
  const auto url = ParseUrl(address);
  if (!url) return;
  Check(!url->scheme.empty() && !url->host.empty());
  const std::string asked = RequestText(*url);
  const auto again = ParseUrl(asked);
  Check(again && RequestText(*again) == asked && again->user_info.empty());
  Check(ComparedAddress(ComparedAddress(address)) == ComparedAddress(address));
  if (const auto next = Resolve(*url, address.substr(address.size() / 2)))
    Check(ParseUrl(RequestText(*next)).has_value());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const VolumeFile file("a.url");
  System& system = file.machine().system;
  const std::string_view bytes = BytesOf(data, size);
  CheckAddress(bytes);
  CheckAddress(ReadUrlFile(bytes, system));
  for (const Bookmark& bookmark : ReadBookmarks(bytes, system)) {
    Check(bookmark.name.size() <= 1000 && bookmark.place.size() <= 2100);
    CheckAddress(bookmark.address);
  }
  return 0;
}
