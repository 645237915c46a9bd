// What is in use and is left to the next start of Windows.
#include "app/preview_run.h"
#include "app/run_question.h"
#include "run/stayed.h"
#include "support/forwarding_files.h"
#include "support/recording_session.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

// Somebody has the files called "used"; those of "safe" can be left to the next start.
struct HeldFolder : ForwardingFolder {
  HeldFolder(std::unique_ptr<Folder> folder, std::string path, Names& left, const bool& is_held)
      : ForwardingFolder(std::move(folder)),
        path_(std::move(path)),
        left_(left),
        is_held_(is_held) {}
  void RequireFree(std::string_view name) const {
    if (is_held_ && name.starts_with("used")) throw Error(Error::Kind::kInUse, "It is in use.");
  }
  void RemoveFile(std::string_view name) override {
    RequireFree(name);
    ForwardingFolder::RemoveFile(name);
  }
  void RequireRemovable(std::string_view name) override {
    RequireFree(name);
    ForwardingFolder::RequireRemovable(name);
  }
  void Recycle(std::string_view name) override {
    RequireFree(name);
    ForwardingFolder::Recycle(name);
  }
  void RemoveAtStart(std::string_view name) override {
    if (!path_.ends_with("safe\\")) throw Error(Error::Kind::kDenied, "It is not safe.");
    left_.push_back(std::string(name));
  }

  std::string path_;
  Names& left_;
  const bool& is_held_;
};

struct StartRemovalTest : RunFixture {
  StartRemovalTest() {
    for (const char* name :
         {"safe\\used.log", "safe\\used.keep", "safe\\free.log", "own\\used.log"})
      machine->MakeFile(scratch + name, "12345");
    WriteOwn("UDFO.txt", scratch + "\r\n");
    WriteOwn("keep.txt", "*.keep\r\n");
    held.selection().SetChecked(*FindItem("CleanUserFolders"), true);
  }

  Names left;
  bool is_held = true;
  ForwardingFiles files{ports.files, [this](const std::string& path, auto folder) {
                          return std::make_unique<HeldFolder>(std::move(folder), path, left,
                                                              is_held);
                        }};
  RecordingSession session;
  Machine with_held{files,           ports.registry, ports.shell,
                    ports.url_cache, ports.profile,  ports.system,
                    session,         ports.cleaners, ports.program_folder};
  Engine held{with_held, view};
};

TEST_F(StartRemovalTest, OnlyWhatIsSafeAndWouldBeDeletedIsLeftToIt) {
  const std::tuple<const char*, const char*, bool, Names> kRows[] = {
      {"not chosen", "DelMethod=D", false, {}},
      {"chosen", "DelMethod=D", true, {"used.log"}},
      {"wiped", "DelMethod=W", true, {}},
      {"recycled", "DelMethod=R", true, {}}};
  for (const auto& [what, written, leaves, is_left] : kRows) {
    SCOPED_TRACE(what);
    WriteSettings(std::string("[General]\r\n") + written + "\r\n");
    left.clear();
    held.state().LeavesToStart = leaves;
    held.RunCleaning();
    EXPECT_EQ(left, is_left);
    const std::string log = held.state().RunLog + StayedNames(held.state(), kNamesShown);
    EXPECT_EQ(Holds(log, "Left to the next start of Windows: 1 file(s)"), !is_left.empty());
    EXPECT_EQ(Holds(log, "It is in use. Windows removes it at its next start."), !is_left.empty());
    EXPECT_EQ(Holds(log, "It is in use. It is not safe."), !is_left.empty());
    EXPECT_EQ(held.state().StayedCount, 2u) << "nothing is claimed to be removed";
    EXPECT_FALSE(held.state().LeavesToStart) << "it is chosen for one run";
    EXPECT_EQ(Joined(machine->Tree(scratch + "safe")), "used.keep used.log");
  }
}

TEST_F(StartRemovalTest, ItIsOfferedWhereItCanBe) {
  const std::tuple<const char*, const char*, bool, bool, bool> kRows[] = {
      {"an administrator", "DelMethod=D", true, true, true},
      {"without rights", "DelMethod=D", false, true, false},
      {"on a volume", "DelMethod=D", true, false, false},
      {"to the recycle bin", "DelMethod=R", true, true, false}};
  for (const auto& [name, written, administrator, running, is_offered] : kRows) {
    SCOPED_TRACE(name);
    WriteSettings(std::string("[General]\r\n") + written + "\r\n");
    session.is_administrator = administrator;
    session.runs_programs = running;
    PreviewRun preview(with_held, view);
    preview.Run(held.selection());
    EXPECT_EQ(OfferOfStart(preview.state(), with_held).text.empty(), !is_offered);
    EXPECT_TRUE(left.empty());
  }
  PreviewRun nothing(with_held, view);
  nothing.RunOneItem(*FindItem("CleanRunMRU"));
  EXPECT_EQ(OfferOfStart(nothing.state(), with_held).text, "");
}

TEST_F(StartRemovalTest, OfAPreviewItIsLeftOnlyWhereThatWasChosen) {
  WriteSettings("[General]\r\nDelMethod=D\r\n");
  const std::tuple<const char*, bool, bool, bool, Names, Names> kRows[] = {
      {"not chosen", false, true, false, {}, {"used.keep", "used.log"}},
      {"chosen", true, true, false, {"used.log"}, {"used.keep", "used.log"}},
      {"free by then", true, true, true, {}, {"used.keep", "used.log"}},
      {"all else unticked", true, false, false, {}, {"free.log", "used.keep", "used.log"}}};
  for (const auto& [name, is_chosen, is_ticked, is_freed, is_left, stay] : kRows) {
    SCOPED_TRACE(name);
    machine->MakeFile(scratch + "safe\\free.log", "12345");
    left.clear();
    is_held = true;
    PreviewRun preview(with_held, view);
    preview.Run(held.selection());
    const StartOffer offer = OfferOfStart(preview.state(), with_held);
    EXPECT_EQ(offer.entries.size(), 2u);
    EntryList list(ports.system, preview.entries(), true);
    list.TickAll(is_ticked);
    held.state().LeavesToStart = is_chosen;
    is_held = !is_freed;
    held.RunCleaning(is_chosen ? list.Choice(offer.entries) : list.Choice());
    EXPECT_EQ(left, is_left);
    EXPECT_EQ(machine->Tree(scratch + "safe"), stay);
  }
}

}  // namespace
}  // namespace quellix
