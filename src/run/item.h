#pragma once

#include <string>
#include <string_view>

namespace quellix {

struct CleaningContext;
struct Item;

enum class Group { kFolderFiles, kMiscellaneous, kInternet, kFirefox };

// What stands in the way of an item until the user lifts it in the options.
enum class Protection { kNone, kProtect1, kProtect2 };

// Cleans one item and appends its line to RunLog. Throws Error when the item fails; the run shows
// the item's message and goes on.
using Cleaner = void (*)(CleaningContext&, const Item&);

// What an item needs administrator rights for.
enum class Rights { kNone, kSome, kAll };

// What a user should know of an item before ticking it.
struct ItemGuide {
  const char* removes;            // what goes, and from where; one sentence or more
  const char* cost = "";          // what its user loses besides traces
  bool is_risky = false;          // that cannot be had again by any means
  Rights rights = Rights::kNone;  // without them one that needs them for all of it is skipped
  int last_windows = 0;           // the last major version that has something of it; 0: all have
};

// Of the cleaning items: as many as chkItems.txt has always had values.
inline constexpr size_t kItemCount = 30;

// One of the cleaning items. Texts are UTF-8 and live as long as the program.
struct Item {
  int run_order;          // 1 to 30; 0 for what is no box of the window
  int check_state_place;  // 1 to 30, place in chkItems.txt; likewise
  const char* control;    // its check box, and its identifier in resource scripts
  const char* label;      // the text beside its check box ("&&" shows one ampersand)
  const char* key;        // names it on the console and in the one-item menu
  Group group;
  Protection protection;
  const char* log_caption;    // begins its line in RunLog
  const char* error_message;  // stands before the description of its failure
  bool in_registry;           // what it cleans are registry entries
  Cleaner cleaner;            // null while the program cannot clean it yet
  ItemGuide guide;
};

}  // namespace quellix
