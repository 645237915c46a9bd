#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "browsers/database.h"
#include "run/context.h"

namespace quellix {

// A statement for a database. `needs` is a table, or a table and a column ("moz_places.url"), that
// other versions of the browser do not have: without it the statement is passed over.
struct DatabaseStep {
  const char* sql;
  const char* needs = "";
};

// What goes from a database. What a table or a column is missing for, that no step names as
// needed, is a database of another form, and is left as it is.
struct DatabaseJob {
  // Statements that tell what would go: in each row what it is called, how many rows it is, and
  // their bytes. Those of one name go together; SQLite would hold all of them to group them.
  std::span<const DatabaseStep> list;
  bool is_by_site = false;  // the names are sites, which the keep list may name
  // What then deletes, in one transaction; goes(NAME) tells what was not kept, nor left out.
  std::span<const DatabaseStep> steps;
  // Further functions for the statements.
  std::function<void(Database&)> add_functions = {};
};

// Deletes rows of the database `name` in an open folder, whose path is `path` (ends in "\"). Asks
// the guard, the keep list and what was chosen in a preview; notes each name as an entry, and what
// stays with its reason: a database that is in use, read-only, damaged or of another form stays as
// it is, to the byte. Where files are backed up it is, before it is changed. Returns the rows that
// went. Never throws Error.
uint64_t CleanDatabase(CleaningContext& context, Folder& folder, const std::string& path,
                       std::string_view name, const DatabaseJob& job);

}  // namespace quellix
