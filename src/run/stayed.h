#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/words.h"
#include "run/run_state.h"

namespace quellix {

inline constexpr size_t kNamesShown = 200;      // of what stayed, in a log as it is shown
inline constexpr size_t kNamesSaved = 100'000;  // likewise, in a log that is saved

inline constexpr size_t kMostHeld = 20;  // by programs that are asked for

// Notes what became of something, for the item in work.
void NoteEntry(RunState& state, RunEntry entry);

// What is noted of a file.
RunEntry FileEntry(std::string_view path, const FileInfo& file);

// Notes a file that was removed and adds it to the totals of the run and of the item. `archive` is
// where it was backed up, "" where that is not known, or where it was not.
void CountRemoved(RunState& state, std::string_view path, const FileInfo& file, Way way,
                  std::string_view archive = {});

// Notes what a run was to remove and could not: it is named in the log with the reason, and the run
// ends with kSomeFilesStayed. Only what failed with kInUse counts as locked or in use; what failed
// with kKept is noted as kept, its reason being the line.
void NoteStayed(RunState& state, std::string_view path, const Sentence& reason, Error::Kind kind,
                const FileInfo& seen = {});
void NoteStayed(RunState& state, std::string_view path, const Error& error,
                const FileInfo& seen = {});

// Notes what a run came by and left because a line of the keep list names it.
void NoteKept(RunState& state, RunEntry entry, std::string_view line);
void NoteKept(RunState& state, std::string_view path, std::string_view line);

// What is said of one thing that a line of the keep list keeps.
Sentence KeptSentence(std::string_view line);

// What is to be said when files stayed: one sentence or two, or none; named for the catalogues.
std::vector<std::string_view> StayedSentences(const RunState& state);
// What is to be said when files went without the backup they were to have: a line, behind a line
// break; "" when none did.
std::string NotBackedUpLine(const RunState& state);
// The same of what was kept.
std::string KeptLine(const RunState& state);
// The same of what the next start of Windows takes.
std::string LeftToStartLine(const RunState& state);
// Among a run's parts once it has written over a file, which may have stayed all the same.
struct HasOverwritten {};

// What stays readable of files that were wiped or written over: a line behind an empty one; ""
// where none were, or nothing has to be said.
std::string WipedLine(const RunState& state);
// Whether a text is for a log, or for a window in its language.
enum class Tongue { kLog, kShown };

// The names of what stayed, and of what was kept, with their reasons, a line each, `most` of them,
// behind an empty line and a heading; "" when nothing did.
std::string StayedNames(const RunTotals& totals, size_t most, Tongue tongue = Tongue::kLog);

}  // namespace quellix
