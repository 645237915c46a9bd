// Recipes of the user's own lists in the main window: found, ticked, asked about, run.
#include "app/recipe_sections.h"

#include "app/item_list.h"
#include "app/preview_run.h"
#include "app/run_question.h"
#include "plugins/recipe_run.h"
#include "support/plugin_fixture.h"
#include "support/recording_session.h"

namespace quellix {
namespace {

using modPlugin::ShownRecipes;

struct RecipeSectionsTest : PluginFixture {
  // "~\" is the scratch folder; a list is written with "/" for its line ends.
  void Keep(std::string text) {
    text = ReplaceNoCase(text, "~\\", scratch);
    WriteOwn("Winapp2.ini", ReplaceNoCase(text, "/", "\r\n"));
  }
  void Find(const Machine& on) { list.SetSections(FindRecipeSections(on).sections); }
  void Find() { Find(ports); }
  // Rows from the first heading of recipes on: name, note.
  Names Rows() const {
    Names rows;
    for (size_t row = First(); row < list.RowCount(); ++row) {
      rows.push_back(list.Text(row, ItemColumn::kName) + "|" + list.Text(row, ItemColumn::kNote));
    }
    return rows;
  }
  size_t First() const {
    size_t row = 0;
    while (row < list.RowCount() && list.At(row).section < 0) ++row;
    return row;
  }
  size_t RowOf(const std::string& name) const {
    for (size_t row = First(); row < list.RowCount(); ++row) {
      if (list.Text(row, ItemColumn::kName) == name) return row;
    }
    throw std::runtime_error("there is no row " + name);
  }
  // A look at what is ticked, as the window does it.
  std::shared_ptr<const RunEntries> Look() {
    PreviewRun preview(ports, view);
    list.BeginLook(preview.state());
    preview.Run(engine.selection());
    list.EndLook();
    shown = preview.state().Parts.Find<ShownRecipes>();
    return preview.entries();
  }
  RunQuestion Ask(std::shared_ptr<const RunEntries> found, bool asks) {
    return QuestionOf(EntryList(ports.system, std::move(found), true), shown.get(),
                      engine.selection().recipes(), ports.system.UserLocale(), asks);
  }
  void See() {
    Look();
    NoteShown(engine.selection().recipes(), shown);
  }
  void MakeAll() {
    for (const char* name : {"a.log", "b.log", "key4.db", "c.log"})
      machine->MakeFile(scratch + name, "12345");
  }
  const char* const three =
      "[Zeta *]/LangSecRef=3023/FileKey1=~\\|c.log/[alpha *]/Section=multimedia/FileKey1=~\\|a.log/"
      "[Keys & more *]/FileKey1=~\\|key4.db/Warning=Careful/[None *]/DetectFile=~\\none/"
      "FileKey1=~\\|*.*";

  ItemList list{ports, engine.selection()};
  std::shared_ptr<ShownRecipes> shown;
};

TEST_F(RecipeSectionsTest, WhatIsFoundStandsInItsGroupAndOthersDoNot) {
  Find();
  EXPECT_EQ(Rows(), Names{}) << "without a list there is no group";
  Keep(three);
  Find();
  EXPECT_EQ(Rows(), (Names{"Programs found here|3 of 4 in the list", "Multimedia|0 of 2 ticked",
                           "alpha|", "Zeta|", "Others|0 of 1 ticked",
                           "Keys & more|keys and certificates are lost, with what they protect"}));
  const std::string details = list.Details(RowOf("Keys & more"));
  for (const char* part : {"Removes:\r\n", "\\key4.db", "\r\n\r\nIts author warns: Careful",
                           "Note: keys and certificates are lost"}) {
    EXPECT_TRUE(Holds(details, part));
  }
  EXPECT_EQ(list.CommandAt(RowOf("Keys & more")), "Clean Keys && more");
  EXPECT_EQ(list.CommandAt(First()), "");
  int calls = 0;
  const auto stopped = FindRecipeSections(ports, [&](const Progress&) { return ++calls > 3; });
  EXPECT_FALSE(stopped.is_whole);
  EXPECT_TRUE(stopped.sections.empty());
}

TEST_F(RecipeSectionsTest, ListsThatHoldNothingOrCannotBeReadAreTold) {
  const std::tuple<const char*, const char*, const char*, const char*> kRows[] = {
      {"none named", "", "; nothing\r\n", "There is no entry in "},
      {"no list at all", "", "\x7f\x45\x4c\x46\x01\x02\xff\xfe]]][", "There is no entry in "},
      {"one", "", "[A]\r\nDetectFile=C:\\none\r\n", "None of 1 in the list finds anything here."},
      {"two", "", "[A]\r\nDetectFile=C:\\none\r\n[B]\r\nDetectFile=C:\\none\r\n",
       "None of 2 in the list finds anything here."},
      {"missing", "[Recipes]\r\nFile=other.ini\r\n", "[A]\r\n", "There is no list of recipes "}};
  for (const auto& [name, written, text, told] : kRows) {
    SCOPED_TRACE(name);
    WriteSettings(written);
    WriteOwn("Winapp2.ini", text);
    Find();
    ASSERT_EQ(list.RowCount(), First() + 1);
    EXPECT_TRUE(Holds(Rows()[0], std::string("Programs found here|") + told));
    EXPECT_TRUE(Holds(list.Details(First()), told));
    EXPECT_FALSE(list.TicksOf(First()));
    list.Toggle(First());
    list.TickAll(true);
    EXPECT_TRUE(engine.selection().recipes().empty());
  }
  WriteSettings("");
  MakeUnreadable(own + "Winapp2.ini");
  Find();
  EXPECT_TRUE(Holds(Rows().at(0), "Programs found here|" + own + "Winapp2.ini: "));
}

TEST_F(RecipeSectionsTest, NamesOfOthersAreShownAsTheyAreAndAreShort) {
  const std::string endless(1u << 20, 'x'), wide = "\u00e4";
  std::string umlauts;
  for (int i = 0; i < 200; ++i) umlauts += wide;
  std::string text;
  for (const std::string& name :
       {std::string("windows:Update Cleanup"), std::string("chrome:cookies"),
        std::string("a\x02\tb"), std::string("%s%n&&<b>\u202e"), endless, umlauts}) {
    const std::string file = std::to_string(text.size()) + ".log";
    machine->MakeFile(scratch + file, "1");
    text += "[" + name + " *]/FileKey1=~\\|" + file + "/";
    if (name == endless) text += "Section=" + endless + "/Warning=" + endless + "/";
  }
  Keep(text);
  Find();
  const Names rows = Rows();
  ASSERT_EQ(rows.size(), 9u);
  for (const std::string& row : rows) EXPECT_LT(row.size(), 300u);
  EXPECT_TRUE(Holds(rows[8], "xxx...|")) << "the last of the last group";
  for (size_t row = First(); row < list.RowCount(); ++row) {
    EXPECT_LT(list.Details(row).size(), 3000u);
    EXPECT_LT(list.CommandAt(row).size(), 300u);
  }
  list.TickAll(true);
  EXPECT_TRUE(engine.selection().browsers().empty() && engine.selection().cleaners().empty());
  engine.Save();
  EXPECT_TRUE(Holds(ReadOwn("recipes.txt"), Text("|a  b|")));
  Engine other(ports, view);
  EXPECT_EQ(other.Load(), "");
  EXPECT_EQ(other.selection().recipes().Ticked().size(), 6u);
  Look();
  for (size_t row = First(); row < list.RowCount(); ++row) {
    EXPECT_TRUE(list.At(row).IsHeading() || list.Text(row, ItemColumn::kCount) == "1");
  }
}

TEST_F(RecipeSectionsTest, WhatCostsSomethingIsTickedOnlyByItself) {
  Keep(std::string(three) + "/[Cookies *]/LangSecRef=3023/FileKey1=~\\|cookies.sqlite");
  MakeAll();
  Find();
  modPlugin::RecipeTicks& ticks = engine.selection().recipes();
  Preferences preferences;
  preferences.select_risky = true;
  engine.selection().ApplyProtection(preferences);
  list.TickAll(true);
  EXPECT_EQ(Joined(ticks.Ticked()), "alpha Zeta");
  list.TickAll(false);
  list.Toggle(RowOf("Multimedia"));
  EXPECT_EQ(Joined(ticks.Ticked()), "alpha Zeta");
  list.Toggle(RowOf("Keys & more"));
  list.Toggle(RowOf("Others"));
  EXPECT_EQ(Joined(ticks.Ticked()), "alpha Zeta") << "a group that can only be cleared";
  list.Toggle(RowOf("Keys & more"));
  list.Toggle(RowOf("Multimedia"));
  EXPECT_EQ(Joined(ticks.Ticked()), "Keys & more");
  list.TickAll(false);
  EXPECT_TRUE(ticks.empty());
}

TEST_F(RecipeSectionsTest, WhatTwoProgramsStoreIsJoined) {
  modPlugin::RecipeTicks first, second;
  first.SetTicked("Qx", true);
  first.Save(ports);
  first.SetSeen("Qx", "1");
  second.Load(ports);
  second.SetTicked("Qx", false);
  second.Save(ports);
  first.Save(ports);
  second.Load(ports);
  EXPECT_FALSE(second.IsTicked("Qx")) << "what was taken away stays away";
  EXPECT_EQ(second.ChoiceOf("Qx").seen, "1");
}

TEST_F(RecipeSectionsTest, RunsAndLooksTakeTheTickedOnesOnceTheyWereSeen) {
  Keep(three);
  MakeAll();
  Find();
  for (const char* name : {"alpha", "Keys & more"}) list.Toggle(RowOf(name));
  EXPECT_EQ(list.Text(RowOf("alpha"), ItemColumn::kNote),
            "new or changed: runs once you have seen its preview");
  const auto found = Look();
  EXPECT_EQ(list.Text(RowOf("alpha"), ItemColumn::kBytes), "5 Bytes");
  EXPECT_EQ(list.Text(RowOf("Multimedia"), ItemColumn::kCount), "1");
  EXPECT_EQ(list.Summary(), "2 items, 10 Bytes");
  const RunQuestion unseen = Ask(found, true);
  EXPECT_EQ(unseen.heading, "Clean the rest?");
  EXPECT_EQ(unseen.text,
            "New or changed, so left until you have looked at what goes:\nalpha\nKeys & more");
  EXPECT_EQ(Ask(found, false).heading, "");
  engine.RunCleaning();
  EXPECT_TRUE(Holds(engine.state().RunLog, "alpha is not cleaned: it is new or has changed"));
  EXPECT_EQ(Joined(machine->Tree(scratch)), "a.log b.log c.log key4.db");

  NoteShown(engine.selection().recipes(), shown);
  EXPECT_EQ(list.Text(RowOf("alpha"), ItemColumn::kNote), "");
  const RunQuestion seen = Ask(Look(), true);
  EXPECT_EQ(seen.heading, "Delete 2 files (10 Bytes) for good?");
  EXPECT_EQ(seen.text,
            "This cannot be had again:\nKeys & more: keys and certificates are lost, with what "
            "they protect");
  EXPECT_EQ(Ask(Look(), false).heading, "Clean all the same?");
  for (const char* files : {"1", "0"}) {
    engine.RunCleaning();
    EXPECT_TRUE(Holds(engine.state().RunLog, std::string("alpha: Files Deleted: ") + files));
    EXPECT_EQ(Joined(machine->Tree(scratch)), "b.log c.log");
    EXPECT_FALSE(engine.state().SomeErrors);
  }
}

TEST_F(RecipeSectionsTest, AListThatChangedMeanwhileNeedsItsRowsAnew) {
  Keep(three);
  MakeAll();
  Find();
  list.Toggle(RowOf("alpha"));
  See();
  ASSERT_TRUE(list.Knows(*shown));
  Keep("[alpha *]/FileKey1=~\\|*.*|RECURSE");
  Look();
  EXPECT_FALSE(list.Knows(*shown));
  Find();
  EXPECT_TRUE(list.Knows(*shown));
  EXPECT_TRUE(Holds(list.Text(RowOf("alpha"), ItemColumn::kNote), "new or changed"));
}

TEST_F(RecipeSectionsTest, OneIsLookedAtAndCleanedByItself) {
  Keep(three);
  MakeAll();
  Find();
  list.Toggle(RowOf("Zeta"));
  const auto choices = [&] { return *list.ChoiceAt(RowOf("alpha")); };
  EXPECT_FALSE(list.ChoiceAt(First()));
  PreviewRun preview(ports, view);
  preview.RunOthers(choices());
  EXPECT_EQ(preview.entries()->all.size(), 1u);
  EXPECT_EQ(preview.entries()->rules.at(1), "recipe:alpha");
  engine.RunOthers(choices());
  EXPECT_TRUE(machine->Exists(scratch + "a.log"));
  NoteShown(engine.selection().recipes(), preview.state().Parts.Find<ShownRecipes>());
  for (int i = 0; i < 2; ++i) {
    engine.RunOthers(choices());
    EXPECT_EQ(Joined(machine->Tree(scratch)), "b.log c.log key4.db");
  }
}

TEST_F(RecipeSectionsTest, WhatGoesToTheBinOrABackupCanBeHadAgain) {
  const std::string costly = "[Keys *]/FileKey1=~\\|key4.db";
  const std::tuple<const char*, const char*, const char*, bool, const char*, bool> kRows[] = {
      {"deleted", "DelMethod=D", "", true, "Clean all the same?", true},
      {"wiped", "DelMethod=W", "", true, "Clean all the same?", true},
      {"recycled", "DelMethod=R", "", true, "", false},
      {"backed up", "DelMethod=B", "", true, "", false},
      {"recycled, by another that nobody has seen", "DelMethod=R", "[All *]/FileKey1=~\\|*.*/",
       false, "", false},
      {"deleted, by another that nobody has seen", "DelMethod=D", "[All *]/FileKey1=~\\|*.*/",
       false, "Clean all the same?", true}};
  for (const auto& [name, written, lists, is_seen, heading, has_cost] : kRows) {
    SCOPED_TRACE(name);
    WriteSettings(std::string("[General]\r\n") + written + "\r\n");
    engine.selection().recipes().Clear();
    Keep(costly);
    MakeAll();
    Find();
    list.Toggle(RowOf("Keys"));
    See();
    Keep(lists + costly);
    Find();
    if (!is_seen) list.Toggle(RowOf("All"));
    const RunQuestion question = Ask(Look(), false);
    EXPECT_EQ(question.heading, heading);
    EXPECT_EQ(question.text.find("This cannot be had again:\nKeys: ") == 0, has_cost);
  }
}

TEST_F(RecipeSectionsTest, ARowIsKnownAgainInAnotherListThatIsFound) {
  Keep(three);
  Find();
  const Names names = {"Zeta", "Multimedia", "Keys & more", "Programs found here"};
  std::vector<ItemList::Identity> known;
  for (const std::string& name : names) known.push_back(list.IdentityOf(RowOf(name)));
  const size_t zeta = RowOf("Zeta");
  Keep(std::string(three) + "/[Beta *]/Section=multimedia/FileKey1=~\\|b.log/" +
       "[Earlier *]/Section=games/FileKey1=~\\|b.log");
  Find();
  EXPECT_NE(RowOf("Zeta"), zeta);
  for (size_t i = 0; i < names.size(); ++i) EXPECT_EQ(list.RowOf(known[i]), RowOf(names[i]));
  Keep("[alpha *]/LangSecRef=3023/FileKey1=~\\|a.log");
  Find();
  EXPECT_EQ(list.RowOf(known[0]), std::nullopt) << "no other takes its place";
  EXPECT_EQ(list.RowOf(known[1]), RowOf("Multimedia"));
  const Item& item = *FindItem("CleanTempFiles");
  EXPECT_EQ(list.RowOf(list.IdentityOf(*list.RowOf(item))), list.RowOf(item));
}

// Two programs with the same file: what one changes the other does not undo.
TEST_F(RecipeSectionsTest, TicksAndSeenOnesOfOthersStayInTheFile) {
  Keep(three);
  modPlugin::RecipeTicks& ticks = engine.selection().recipes();
  ticks.SetTicked("alpha", true);
  modPlugin::KeepShown(ports,
                       std::make_shared<ShownRecipes>(ShownRecipes{{{"Zeta", {"1", "2"}, ""}}}));
  engine.Save();
  EXPECT_EQ(ReadOwn("recipes.txt"), Text("1|alpha|\r\n0|Zeta|2\r\n"));
  EXPECT_EQ(ticks.ChoiceOf("ZETA").seen, "2");
  ticks.Clear();
  engine.Save();
  EXPECT_EQ(ReadOwn("recipes.txt"), Text("0|Zeta|2\r\n"));
  ticks.SetTicked("alpha", true);
  MakeUnreadable(own + "recipes.txt");
  EXPECT_ANY_THROW(engine.Save());
}

}  // namespace
}  // namespace quellix
