#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/http.h"
#include "platform/machine.h"
#include "platform/words.h"

namespace quellix {

// Where new versions are told, and who vouches for them. docs/updates.md has the form of the files.
struct UpdateSource {
  std::string server;   // "https://updates.example" or with a path behind it; "" for none
  std::string key;      // whose signature an installer needs, see IsSignedBy; "" for nobody's
  std::string version;  // of this program
};

// What Settings.ini names, with the key and the version that this program was built with.
UpdateSource UpdateSourceOf(const Machine& machine);

std::string_view CurrentVersion();

// The key that this program was built with; "" for one that was built without.
std::string_view UpdateKey();

enum class UpdateResult { kNew, kNone, kUnreachable, kNoServer };

struct UpdateCheck {
  UpdateResult result = UpdateResult::kNoServer;
  std::string version;  // the newest one, where it is known
  std::string news;     // what is new in it, lines of text; may be ""
  std::string problem;  // of kUnreachable, a part of a sentence, in English
  std::string told;     // the sentence that a window shows of it

  std::string Heading() const;  // one sentence
  std::string Text() const;     // all of it, line by line
};

// Asks the server; nothing is changed or kept. Never throws.
UpdateCheck CheckForUpdate(Http& http, const UpdateSource& source, const Pause& pause = {});

// Below 0 where the version `a` comes before `b`, 0 where they are the same. Versions are up to
// four numbers with dots between; nothing where one is none.
std::optional<int> CompareVersions(std::string_view a, std::string_view b);

// Why a new version cannot be fetched from there: a sentence, "" where it can.
Sentence WhyNotFetched(const UpdateSource& source);

// Fetches the installer of a version into memory. Throws Error unless it is what was signed, byte
// for byte; kKept after a stop.
std::string FetchInstaller(Http& http, const UpdateSource& source, std::string_view version,
                           const Pause& pause = {});

// Writes the installer into a private folder among the temporary files and starts it, from a file
// that nobody can have exchanged meanwhile, and beside which nothing else lies. False when the user
// refuses it the rights that it wants. Throws Error. In both cases nothing is left but what others
// put there. What an earlier call left behind goes first.
bool StartInstaller(const Machine& machine, std::string_view version, std::string_view bytes);

// Removes what StartInstaller left behind, but for an installer that still runs. Never throws.
void ClearInstallers(const Machine& machine);

// The weekly question to the server.
bool IsUpdateCheckDue(const Machine& machine);
void NoteUpdateCheck(const Machine& machine);  // never throws

}  // namespace quellix
