#include "app/updates.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/private_folder.h"
#include "platform/sha256.h"
#include "platform/signature.h"
#include "platform/text.h"
#include "platform/url.h"
#include "platform/words.h"
#include "settings/settings.h"

namespace quellix {
namespace {

constexpr std::string_view kFolder = "/updates/kvmo/";
constexpr uint64_t kLargestText = 64u << 10;          // bytes
constexpr uint64_t kLargestInstaller = 256ull << 20;  // bytes
constexpr int kSecondsForText = 10, kSecondsForInstaller = 1800;
constexpr std::string_view kSection = "Updates", kServer = "Server", kLastCheck = "LastCheck";
constexpr int64_t kWeek = 7ll * 24 * 3600 * 10'000'000;  // FILETIME steps
constexpr std::string_view kOwnFolder = "quellix-update-";

// Lines without their ends, and without what a terminal or a field would obey.
std::vector<std::string> LinesOf(std::string_view text) {
  std::vector<std::string> lines = Split(text, '\n');
  for (std::string& line : lines) {
    std::erase_if(line, [](char each) { return static_cast<unsigned char>(each) < ' '; });
  }
  while (!lines.empty() && lines.back().empty()) lines.pop_back();
  return lines;
}

using Version = std::array<uint32_t, 4>;

std::optional<Version> ParseVersion(std::string_view text) {
  Version version{};
  const std::vector<std::string> parts = Split(text, '.');
  if (text.empty() || parts.size() > version.size()) return std::nullopt;
  for (size_t i = 0; i < parts.size(); ++i) {
    const std::string& part = parts[i];
    const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), version[i]);
    if (error != std::errc() || end != part.data() + part.size()) return std::nullopt;
  }
  return version;
}

// Where only whoever sits at this machine could listen, or nobody can.
Sentence WhyNotServer(std::string_view server) {
  const std::optional<Url> url = ParseUrl(server);
  if (!url || !url->IsWeb() || !url->query.empty() || !url->fragment.empty())
    return Say("[Updates] Server in Settings.ini is no address of a server.");
  if (url->scheme == "https" || IsThisMachine(*url)) return {};
  return Say("[Updates] Server in Settings.ini must begin with https://.");
}

std::string AddressOf(const UpdateSource& source, std::string_view name) {
  std::string_view server = source.server;
  while (server.ends_with('/')) server.remove_suffix(1);
  return std::string(server).append(kFolder).append(name);
}

Sentence WhyNotAnswered(const HttpAnswer& answer) {
  if (answer.end != HttpEnd::kAnswered) return Say(HttpEndText(answer.end));
  if (answer.status == 200) return {};
  const std::string status = std::to_string(answer.status);
  const bool leads_on = answer.status >= 300 && answer.status < 400;
  return leads_on ? Say("it leads elsewhere (%1)", status)
                  : Say("it answers with an error (%1)", status);
}

UpdateCheck AskedBut(const Sentence& why) {
  UpdateCheck check;
  check.result = UpdateResult::kUnreachable;
  check.problem = why.english;
  // TRANSLATORS: %1 begins with a small letter: "it leads elsewhere (301)".
  check.told = Tr("The server was asked, but %1.", why.shown);
  return check;
}

std::string InstallerName(std::string_view version) {
  return "quellix-" + std::string(version) + "-setup.exe";
}

// What the signed text says of an installer.
struct SignedFacts {
  uint64_t size = 0;
  std::string sha256;
};

[[noreturn]] void Refuse(const Sentence& why) {
  // TRANSLATORS: %1 begins with a small letter: "it is no newer one".
  throw Error(Error::Kind::kDenied, Say("The new version was not installed: %1.", why));
}

// Five lines, the last of which signs those before it.
SignedFacts ReadSigned(std::string_view text, const UpdateSource& source,
                       std::string_view version) {
  constexpr std::string_view kSignature = "signature ";
  const size_t place = text.find(std::string("\n").append(kSignature));
  if (place == text.npos) Refuse(Say("what tells its checksum is not signed"));
  const std::string_view facts = text.substr(0, place + 1);
  std::string_view signature = text.substr(place + 1 + kSignature.size());
  while (signature.ends_with('\n')) signature.remove_suffix(1);
  if (!IsSignedBy(source.key, facts, signature))
    Refuse(Say("the signature of its checksum is not that of its makers"));
  const std::vector<std::string> lines = Split(facts.substr(0, facts.size() - 1), '\n');
  const std::string name(version);
  if (lines.size() != 4 || lines[0] != "quellix " + name ||
      lines[1] != "file " + InstallerName(version) || !lines[2].starts_with("size ") ||
      !lines[3].starts_with("sha256 "))
    Refuse(Say("its checksum is that of something else"));
  SignedFacts read;
  const std::string_view size = std::string_view(lines[2]).substr(5);
  std::from_chars(size.data(), size.data() + size.size(), read.size);
  if (read.size == 0 || read.size > kLargestInstaller) Refuse(Say("its size makes no sense"));
  read.sha256 = lines[3].substr(7);
  return read;
}

std::string FetchOrRefuse(Http& http, const HttpRequest& request, const Pause& pause,
                          uint64_t total) {
  HttpAnswer answer = Fetch(http, request, pause, total);
  if (answer.end == HttpEnd::kStopped)
    throw Error(Error::Kind::kKept, Say("The new version was not fetched: it was stopped."));
  const Sentence why = WhyNotAnswered(answer);
  if (!why.empty()) Refuse(why);
  return std::move(answer.body);
}

// The folder is let go of before it goes itself.
void RemoveFilesIn(const Machine& machine, const std::string& path) {
  const std::unique_ptr<Folder> folder = machine.files.OpenFolder(path);
  std::vector<std::string> files;
  if (!folder) return;
  folder->Enumerate(Detail::kKind, [&files](const Entry& entry) {
    if (!entry.info.is_folder) files.emplace_back(entry.name);
    return true;
  });
  for (const std::string& file : files) folder->RemoveFile(file);
}

void RemoveOld(const Machine& machine, const std::string& temp) {
  std::vector<std::string> old;
  machine.files.Enumerate(temp, Detail::kKind, [&](const Entry& entry) {
    const bool is_own = entry.info.is_folder && !entry.info.is_link &&
                        entry.name.starts_with(kOwnFolder) &&
                        IsTemporaryName(entry.name.substr(kOwnFolder.size()));
    if (is_own) old.emplace_back(entry.name);
    return true;
  });
  for (const std::string& name : old) {
    try {
      RemoveFilesIn(machine, temp + name);
      machine.files.RemoveFolder(temp + name);
    } catch (const Error&) {
      continue;  // one that still runs goes the next time
    }
  }
}

// Other programs of this user may write wherever he may.
void RequireSame(RandomFile& file, std::string_view bytes) {
  std::string piece(1u << 20, '\0');
  uint64_t at = 0;
  while (const size_t read = file.Read(at, piece)) {
    if (bytes.substr(at, read) != std::string_view(piece).substr(0, read)) break;
    at += read;
  }
  if (at != bytes.size() || file.Size() != at) Refuse(Say("another program has changed it"));
}

// Beside a program its libraries are looked for first.
void RequireAlone(Folder& folder, std::string_view name) {
  bool is_alone = true;
  folder.Enumerate(Detail::kKind,
                   [&](const Entry& entry) { return is_alone = EqualsNoCase(entry.name, name); });
  if (!is_alone) Refuse(Say("another program has changed it"));
}

// Nobody can write or remove it from before it is compared until it has started.
bool StoreAndStart(const Machine& machine, const std::string& folder_path, const std::string& name,
                   std::string_view bytes) {
  const std::unique_ptr<Folder> folder = machine.files.OpenFolder(folder_path);
  if (!folder)
    throw Error(Error::Kind::kMissing,
                Say("The new version could not be stored in %1, which is not "
                    "there any more.",
                    folder_path));
  {
    const std::unique_ptr<RandomFile> file = folder->Open(name, OpenMode::kCreateNew);
    file->Write(0, bytes);
    file->Flush();
  }
  const std::unique_ptr<RandomFile> kept = folder->Open(name, OpenMode::kReadKept);
  // While it is open nobody gives its folder another name; before, somebody may have.
  const std::unique_ptr<Folder> there = machine.files.OpenFolder(folder_path);
  if (!there || there->Id() != folder->Id()) Refuse(Say("another program has changed it"));
  RequireSame(*kept, bytes);
  RequireAlone(*folder, name);
  return machine.shell.StartProgram(folder_path + "\\" + name, "");
}

}  // namespace

std::optional<int> CompareVersions(std::string_view a, std::string_view b) {
  const auto first = ParseVersion(a), second = ParseVersion(b);
  if (!first || !second) return std::nullopt;
  return *first < *second ? -1 : *first > *second ? 1 : 0;
}

UpdateSource UpdateSourceOf(const Machine& machine) {
  return {.server = Settings(machine).ReadIniValue(kSection, kServer, ""),
          .key = std::string(UpdateKey()),
          .version = std::string(CurrentVersion())};
}

std::string_view CurrentVersion() { return QUELLIX_VERSION; }

std::string_view UpdateKey() { return QUELLIX_UPDATE_KEY; }

UpdateCheck CheckForUpdate(Http& http, const UpdateSource& source, const Pause& pause) {
  UpdateCheck check;
  if (source.server.empty()) return check;
  check.result = UpdateResult::kUnreachable;
  if (const Sentence why = WhyNotServer(source.server); !why.empty()) {
    check.problem = why.english;
    check.told = why.shown;
    return check;
  }
  const HttpAnswer answer = Fetch(
      http,
      {.url = AddressOf(source, "latest.txt"), .limit = kLargestText, .seconds = kSecondsForText},
      pause);
  if (const Sentence why = WhyNotAnswered(answer); !why.empty()) return AskedBut(why);
  const std::vector<std::string> lines = LinesOf(answer.body);
  const auto order = lines.empty() ? std::nullopt : CompareVersions(lines[0], source.version);
  if (!order || !IsUtf8(answer.body)) {
    return AskedBut(Say("what it tells is no version"));
  }
  check.version = lines[0];
  check.result = *order > 0 ? UpdateResult::kNew : UpdateResult::kNone;
  if (*order <= 0) return check;
  for (size_t i = 1; i < lines.size(); ++i) check.news += lines[i] + "\n";
  return check;
}

std::string UpdateCheck::Heading() const {
  switch (result) {
    case UpdateResult::kNew:
      return Tr("There is a new version: %1.", version);
    case UpdateResult::kNone:
      return Tr("There is no newer version.");
    case UpdateResult::kUnreachable:
      return Tr("Whether there is a new version could not be found out.");
    case UpdateResult::kNoServer:
      break;
  }
  return Tr("No server is set that could be asked for new versions.");
}

std::string UpdateCheck::Text() const {
  std::string text = Heading() + "\n";
  if (result == UpdateResult::kNew) text += Tr("This one is %1.", QUELLIX_VERSION) + "\n" + news;
  if (result == UpdateResult::kUnreachable) text += told + "\n";
  if (result == UpdateResult::kNoServer)
    text += Tr("Settings.ini names one in its section [Updates], as Server=https://...") + "\n";
  return text;
}

Sentence WhyNotFetched(const UpdateSource& source) {
  Sentence why = WhyNotServer(source.server);
  if (!why.empty()) return why;
  if (!source.key.empty()) return {};
  return Say(
      "This edition was built without the key that new versions are signed with, and fetches "
      "none.");
}

std::string FetchInstaller(Http& http, const UpdateSource& source, std::string_view version,
                           const Pause& pause) {
  const Sentence why = WhyNotFetched(source);
  if (!why.empty()) throw Error(Error::Kind::kDenied, why);
  const auto order = CompareVersions(version, source.version);
  if (!order || *order <= 0) Refuse(Say("it is no newer one"));
  const std::string address = AddressOf(source, InstallerName(version));
  const SignedFacts facts = ReadSigned(
      FetchOrRefuse(http,
                    {.url = address + ".signed", .limit = kLargestText, .seconds = kSecondsForText},
                    pause, 0),
      source, version);
  std::string bytes =
      FetchOrRefuse(http, {.url = address, .limit = facts.size, .seconds = kSecondsForInstaller},
                    pause, facts.size);
  if (bytes.size() != facts.size || Sha256(bytes) != facts.sha256)
    Refuse(Say("what came is not what its makers signed"));
  return bytes;
}

bool StartInstaller(const Machine& machine, std::string_view version, std::string_view bytes) {
  const std::string temp = WithBackslash(machine.system.TempFolder());
  RemoveOld(machine, temp);
  const std::string folder_path = temp + std::string(kOwnFolder) + TemporaryName();
  bool is_started = false;
  try {
    MakePrivateFolder(machine, folder_path);
    is_started = StoreAndStart(machine, folder_path, InstallerName(version), bytes);
  } catch (...) {
    RemoveOld(machine, temp);
    throw;
  }
  if (!is_started) RemoveOld(machine, temp);
  return is_started;
}

void ClearInstallers(const Machine& machine) {
  try {
    RemoveOld(machine, WithBackslash(machine.system.TempFolder()));
  } catch (const Error&) {
    return;  // they go the next time
  }
}

bool IsUpdateCheckDue(const Machine& machine) {
  const std::string text = Settings(machine).ReadIniValue(kSection, kLastCheck, "0");
  int64_t last = 0;
  std::from_chars(text.data(), text.data() + text.size(), last);
  const int64_t now = machine.system.UtcNow();
  return last <= 0 || last > now || now - last >= kWeek;
}

void NoteUpdateCheck(const Machine& machine) {
  try {
    Settings(machine).WriteIniValue(kSection, kLastCheck, std::to_string(machine.system.UtcNow()));
  } catch (const Error&) {
    // Then it is asked again the next time.
  }
}

}  // namespace quellix
