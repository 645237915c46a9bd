// What a kill, or a disk that takes no more, leaves of a browser's database.
#include "browsers/firefox_cleaner.h"
#include "browsers/firefox_profiles.h"
#include "support/browser_fixture.h"
#include "support/forwarding_files.h"

namespace quellix {
namespace {

using BrowserKillTest = BrowserFixture;

// A disk that takes no more after some changes, the last of them half done: as a kill leaves it.
struct Dying {
  int changes_left = 0;
  bool is_dead = false;
  // Whether a change is still made, whole.
  bool Lives() {
    if (is_dead) Die();
    return --changes_left > 0;
  }
  [[noreturn]] void Die() {
    is_dead = true;
    throw Error(Error::Kind::kOther, "killed");
  }
};

class DyingFile : public ForwardingFile {
 public:
  DyingFile(std::unique_ptr<RandomFile> file, Dying& disk)
      : ForwardingFile(std::move(file)), disk_(disk) {}
  void Write(uint64_t offset, std::string_view bytes) override {
    const bool is_whole = disk_.Lives();
    ForwardingFile::Write(offset, is_whole ? bytes : bytes.substr(0, bytes.size() / 2));
    if (!is_whole) disk_.Die();
  }
  void Resize(uint64_t size) override {
    if (!disk_.Lives()) disk_.Die();
    ForwardingFile::Resize(size);
  }

 private:
  Dying& disk_;
};

class DyingFolder : public ForwardingFolder {
 public:
  DyingFolder(std::unique_ptr<Folder> folder, Dying& disk)
      : ForwardingFolder(std::move(folder)), disk_(disk) {}
  std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) override {
    if (mode != OpenMode::kRead && disk_.is_dead) disk_.Die();
    return std::make_unique<DyingFile>(ForwardingFolder::Open(name, mode), disk_);
  }
  void RemoveFile(std::string_view name) override {
    if (!disk_.Lives()) disk_.Die();
    ForwardingFolder::RemoveFile(name);
  }

 private:
  Dying& disk_;
};

TEST_F(BrowserKillTest, AKillAtAnyChangeLeavesTheOldOrTheNewContent) {
  const std::string profile = firefox + "\\Profiles\\p", cookies = profile + "\\cookies.sqlite";
  machine->MakeFile(profile + "\\prefs.js", "");
  for (const Left left : {Left::kWhole, Left::kLog, Left::kJournal}) {
    bool is_done = false;
    int kept_old = 0, became_new = 0;
    for (int changes = 1; !is_done; ++changes) {
      SCOPED_TRACE(std::to_string(static_cast<int>(left)) + " " + std::to_string(changes));
      for (const char* ending : {"", "-wal", "-journal"}) {
        if (machine->Exists(cookies + ending)) ports.files.RemoveFile(cookies + ending);
      }
      MakeDatabase(cookies, kFirefoxCookies, left);
      Dying disk{.changes_left = changes};
      ForwardingFiles files(ports.files, [&](const std::string&, std::unique_ptr<Folder> folder) {
        return std::unique_ptr<Folder>(std::make_unique<DyingFolder>(std::move(folder), disk));
      });
      const Machine dying = WithFiles(ports, files);
      CleaningContext killed{dying, settings, engine.state(), view, mod_zip};
      CleanFirefoxProfile(killed, FindFirefoxProfiles(dying).at(0), BrowserKind::kCookies);
      is_done = !disk.is_dead;
      // As the browser opens it next.
      const auto folder = ports.files.OpenFolder(profile);
      Database database(*folder, "cookies.sqlite", cookies, Database::Use::kChange);
      const int64_t rows = database.Number("SELECT count(*) FROM moz_cookies");
      EXPECT_EQ(database.Number("SELECT count(*) FROM pragma_integrity_check WHERE "
                                "integrity_check <> 'ok'"),
                0);
      ASSERT_TRUE(rows == 4 || rows == 0) << rows;
      ++(rows == 4 ? kept_old : became_new);
    }
    EXPECT_GT(kept_old, 0);
    EXPECT_GT(became_new, 1) << "compacting was killed too";
  }
}

}  // namespace
}  // namespace quellix
