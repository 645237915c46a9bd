#include "platform/words.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "app/entry_list.h"
#include "app/preview_run.h"
#include "app/run_question.h"
#include "platform/error.h"
#include "plugins/plugin_list.h"
#include "plugins/recipe_list.h"
#include "run/run_entries.h"
#include "search/drive_list.h"
#include "support/plugin_fixture.h"
#include "support/trial_words.h"

namespace quellix {
namespace {

constexpr const char* kPolish =
    "(n==1 ? 0 : n%10>=2 && n%10<=4 && (n%100<10 || n%100>=20) ? 1 : 2)";

TEST(Words, AreOfTheLanguageThatIsSpoken) {
  const InEnglishAgain after;
  Speak(
      Catalogue(MoOf({{"", Head(kPolish)},
                      {"%1 of %2", "%2, z tego %1"},
                      {"Stop", "Zatrzymaj"},
                      {std::string("file\0files", 10), std::string("plik\0pliki\0plików", 18)}})));
  EXPECT_EQ(Tr("Stop"), "Zatrzymaj");
  EXPECT_EQ(Tr("Nobody has translated 100 %"), "Nobody has translated 100 %");
  EXPECT_EQ(Tr(""), "");
  EXPECT_EQ(Tr("%1 of %2", "3", "%1"), "%1, z tego 3");
  const std::pair<uint64_t, const char*> counts[] = {{0, "plików"},  {1, "plik"},    {2, "pliki"},
                                                     {5, "plików"},  {12, "plików"}, {22, "pliki"},
                                                     {112, "plików"}};
  for (const auto& [count, text] : counts) EXPECT_EQ(TrN("file", "files", count), text) << count;

  const Error error(Error::Kind::kOther, Say("%1 of %2", "1", Say("Stop")));
  EXPECT_STREQ(error.what(), "1 of Stop");
  EXPECT_EQ(Shown(error), "Zatrzymaj, z tego 1");
  EXPECT_EQ(Shown(std::runtime_error("odd")), "odd");
}

TEST(Words, AreEnglishWithoutACatalogue) {
  EXPECT_EQ(TrN("%1 file", "%1 files", 1, "1"), "1 file");
  EXPECT_EQ(TrN("%1 file", "%1 files", 0, "0"), "0 files");
  EXPECT_EQ(Spoken().Field("Language"), "");
  EXPECT_EQ(Tr("50 % of %1 and %SystemRoot%, %2, %", "C:"), "50 % of C: and %SystemRoot%, %2, %");
}

TEST(Words, OfFilesStayEnglish) {
  const InEnglishAgain after;
  const std::string list = "[Qx *]\nFileKey1=C:\\Qx|Cookies\nNo=1\n", drive = "C: Hard drive";
  const auto english = modPlugin::ParseRecipeLists({list});
  Speak(Catalogue(
      MoOf({{"", Head("n != 1")},
            {"%1 is no key of such a list.", "%1 ist kein Schlüssel einer solchen Liste."},
            {"%1 is not removed: %2", "%1 bleibt: %2"},
            {"Hard drive", "Festplatte"},
            {"it is precious.", "es ist kostbar."},
            {"sites sign you out", "Seiten melden Sie ab"}})));
  RunEntries entries;
  RunEntry entry;
  entries.Note(entry, Say("%1 is not removed: %2", "C:\\a", Say("it is precious.")));
  EXPECT_EQ(entry.note, "C:\\a is not removed: it is precious.");
  EXPECT_EQ(entries.NoteOf(entry).english, entry.note);
  EXPECT_EQ(entries.NoteOf(entry).shown, "C:\\a bleibt: es ist kostbar.");
  EXPECT_EQ(RunEntries().NoteOf(entry).shown, entry.note) << "of a run that was kept";
  EXPECT_EQ(RunEntries().NoteOf({.note = "Hard drive"}).shown, "Festplatte");

  const auto german = modPlugin::ParseRecipeLists({list});
  EXPECT_EQ(german.at(0).plugin.cost, "Seiten melden Sie ab");
  EXPECT_EQ(german[0].remarks.at(0).text, "No ist kein Schlüssel einer solchen Liste.");
  EXPECT_EQ(modPlugin::FingerprintOf(german[0]), modPlugin::FingerprintOf(english.at(0)));

  EXPECT_EQ(ShownDrive(drive), "C: Festplatte");
  EXPECT_EQ(ParseDriveLine(drive), std::vector<std::string>{"C:\\"});
}

struct PluginWords : PluginFixture {};

// His ticks, the log and the tables name it as its file does.
TEST_F(PluginWords, AreOfTheWindowsAlone) {
  const InEnglishAgain after;
  MakeFiles(temp, "a.qx");
  const std::string line = "1|Qx cache.cdp|Pages of Qx\r\n";
  WriteList(line);
  WriteRecipe("Qx cache.cdp", "D|Pages of Qx\r\nF|No|No|" + temp + "*.qx\r\nG|Qx games\r\n");
  Speak(Catalogue(MoOf({{"", Head("n != 1")},
                        {"Pages of Qx", "Seiten von Qx"},
                        {"Qx cache", "Zwischenspeicher von Qx"}})));
  Clean("CleanPlugins");
  const auto& run = engine.state().Entries;
  ASSERT_EQ(run->all.size(), 1u) << engine.state().RunLog;
  EXPECT_EQ(run->rules.at(run->all[0].rule), "Qx cache.cdp");
  EXPECT_EQ(engine.state().RunLog.find("Zwischenspeicher"), std::string::npos);
  EXPECT_EQ(ReadOwn("plg.txt"), Text(line));
  EntryList list(ports.system, run, false);
  EXPECT_EQ(list.Text(list.RowCount() - 1, RunColumn::kNote), "Zwischenspeicher von Qx");
  for (const char* part : {"zwischenspeicher", "qx cache.cdp"}) {
    list.SetFilter(part);
    EXPECT_GT(list.RowCount(), 0u) << part;
  }
  const std::pair<const char*, const char*> names[] = {
      {"Qx cache.cdp", "Zwischenspeicher von Qx"}, {"Other.cdp", "Other.cdp"}, {"", ""}};
  for (const auto& [file, shown] : names) EXPECT_EQ(modPlugin::ShownName(file), shown);
}

TEST(Words, OfQuestionsNameTheirButton) {
  const InEnglishAgain after;
  RunEntries found;
  const auto asked = [&found](std::string_view verb, std::string_view question) {
    const std::string text = QuestionBefore(found, {}, [](size_t) { return true; });
    const VerbOf of = VerbAndQuestion(text);
    EXPECT_EQ(of.verb, verb);
    EXPECT_EQ(of.question, question);
  };
  found.Add({.bytes = 5, .place = "C:\\a"});
  asked("Delete", "Delete 1 file (5 Bytes) for good?");
  Speak(Catalogue(MoOf(
      {{"", Head("n != 1")},
       {std::string("Delete %1 file (%2) for good?\0Delete %1 files (%2) for good?", 60),
        std::string("Löschen|%1 Datei (%2) endgültig löschen?\0%1 Dateien (%2) löschen?", 69)}})));
  asked("Löschen", "1 Datei (5 Bytes) endgültig löschen?");
  found.Add({.bytes = 5, .place = "C:\\b"});
  asked("2", "2 Dateien (10 Bytes) löschen?");
}

TEST(Words, OfBrokenCataloguesAreRefused) {
  const std::string whole = MoOf({{"", Head("n != 1")}, {"Stop", "Halt"}});
  for (size_t size = 0; size + 1 < whole.size(); ++size) {
    EXPECT_THROW(Catalogue(whole.substr(0, size)), Error) << size;
  }
  const std::string too_long = std::string(300, '(') + "n" + std::string(300, ')');
  for (const char* rule :
       {"n ?", "n ? 1", too_long.c_str(), "(n", "n +", "m", "n n", "n == 1) + (2"}) {
    EXPECT_THROW(Catalogue(MoOf({{"", Head(rule)}})), Error) << rule;
  }
}

}  // namespace
}  // namespace quellix
