// A preview and the run that follows it, over trees, registries, keep lists and locks that a number
// makes: what the one lists the other does, entry by entry, and nothing else.
#include <random>

#include "app/entry_list.h"
#include "app/item_list.h"
#include "app/run_logs.h"
#include "run/exit_code.h"
#include "support/registry_fixture.h"

namespace quellix {
namespace {

using Lines = std::multiset<std::string>;

constexpr const char* kPluginKey = "Qx1";
constexpr const char* kPlugin = "qx.cdp";

struct PreviewRunTest : RegistryFixture {
  // What the items below work on, and all of the program's folder but what runs write there.
  RegistryPicture PictureOfFiles() {
    RegistryPicture picture;
    for (const std::string& folder : {temp, scratch, own + ""}) {
      for (const std::string& name : machine->Tree(folder)) {
        if (name == "Settings.ini" || name.starts_with("Backup")) continue;
        const bool is_folder = name.ends_with('\\');
        picture[folder + std::string(WithoutBackslash(name))] =
            is_folder ? "" : Bytes(folder + name);
      }
    }
    return picture;
  }
  // What someone holds open need not be readable.
  std::string Bytes(const std::string& path) try {
    return ports.files.ReadWholeFile(path).value_or("?");
  } catch (const Error&) {
    return "held";
  }
  RegistryPicture PictureOfRegistry() {
    RegistryPicture picture;
    for (const char* key : {kRunMruKey, kTypedUrlsKey, kPluginKey}) Picture(kUser, key, picture);
    return picture;
  }
  RegistryPicture PictureOfBoth() {
    RegistryPicture picture = PictureOfFiles();
    picture.merge(PictureOfRegistry());
    return picture;
  }

  static Lines LinesOf(const RunState& state, bool with_notes) {
    Lines lines;
    for (const RunEntry& entry : state.Entries->all) {
      lines.insert(std::string(KindText(entry.kind)) + " " + PlaceText(entry) + " " +
                   std::to_string(static_cast<int>(entry.fate)) + " " +
                   std::to_string(static_cast<int>(entry.way)) + std::to_string(entry.item) + " " +
                   state.Entries->rules[entry.rule] + " " + std::to_string(entry.bytes) +
                   (with_notes ? " " + entry.note : ""));
    }
    return lines;
  }

  int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  std::string Name() {
    static constexpr const char* kNames[] = {"a.tmp", "B.TMP",      "c.log", "sub",  "Sub 2",
                                             "d",     "\xC3\xA9.x", "e.bak", "deep", "f .tmp"};
    return kNames[Below(10)];
  }
  void MakeTree(const std::string& folder) {
    for (int i = 0, count = 2 + Below(8); i < count; ++i) {
      std::string path = folder;
      for (int depth = Below(3); depth > 0; --depth) path += "f" + std::to_string(Below(3)) + "\\";
      path += Name();
      if (machine->Exists(path)) continue;
      machine->MakeFile(path, std::string(static_cast<size_t>(Below(300)), 'x'));
      if (Below(4) == 0) ports.files.SetAttributes(path, kReadOnly | kHidden);
      if (Below(8) == 0) locks_.push_back(machine->LockFile(path));
      if (Below(6) == 0) kept_ += path + "\r\n";
    }
    if (Below(2) == 0) machine->MakeFolder(folder + "empty\\below");
  }
  void Seed(unsigned number) {
    random_.seed(number);
    kept_ = Below(2) == 0 ? "*.bak\r\n" : "";
    for (const char* folder : {"mine\\", "recipe\\"}) MakeTree(scratch + folder);
    MakeTree(temp);
    machine->MakeFile(scratch + "listed.txt", "1");
    machine->MakeFile(scratch + "app.ini", "[Recent]\r\nA=1\r\nB=2\r\n[Other]\r\nC=3\r\n");
    for (const char* key : {kRunMruKey, kTypedUrlsKey, kPluginKey}) {
      machine->RemoveRegistryTree(kUser, key);
      for (int i = Below(4); i > 0; --i) {
        machine->SetText(kUser, std::string(key) + (Below(4) == 0 ? "\\deep" : ""),
                         "v" + std::to_string(i), "text");
      }
    }
    if (Below(3) == 0) kept_ += std::string("HKEY_CURRENT_USER\\") + kTypedUrlsKey + "|v1\r\n";
    WriteOwn("keep.txt", kept_);
    WriteOwn("UDFI.txt", scratch + "listed.txt\r\n" + scratch + "none.txt\r\n");
    WriteOwn("UDFO.txt", scratch + "mine\r\n");
    machine->MakeFile(own + "Plugins\\" + kPlugin,
                      std::string("F\x01Yes\x01Yes\x01") + scratch + "recipe\\*.tmp\r\n" + "I\x01" +
                          "app.ini\x01Recent\x01No\x01" + "B\x01" + scratch + "\r\n" +
                          "R\x01Yes\x01No\x01HKEY_CURRENT_USER\\" + kPluginKey + "\x01\r\n");
    WriteOwn("plg.txt", std::string("1\x01") + kPlugin + "\x01Qx\r\n");
    WriteSettings("[General]\r\nDelMethod=" + std::string(1, "DRWB"[Below(4)]) +
                  "\r\nWipeStep=4096\r\n[Backup]\r\nStrict=" + std::to_string(Below(2)) + "\r\n");
    Tick({"CleanTempFiles", "CleanRunMRU", "CleanTypedURL", "CleanUserFiles", "CleanUserFolders",
          "CleanPlugins"});
  }
  void Clear() {
    locks_.clear();
    Clear({temp, scratch});
  }
  void Clear(std::initializer_list<std::string> folders) {
    for (const std::string& folder : folders) {
      for (const std::string& name : machine->Tree(folder)) {
        if (!name.ends_with('\\')) ports.files.RemoveFile(folder + name);
      }
    }
  }
  void TearDown() override { Clear(); }

  std::vector<std::shared_ptr<void>> locks_;

  std::minstd_rand random_;
  std::string kept_;
};

// The places that an entry that is removed takes along.
bool Takes(const RunEntry& entry, const std::string& place) {
  switch (entry.kind) {
    case EntryKind::kRegistryValue:
      return EqualsNoCase(place, entry.place + ":" + entry.part);
    case EntryKind::kRegistryKey:
      return EqualsNoCase(place.substr(0, entry.place.size()), entry.place);
    default:
      return EqualsNoCase(place, entry.place);
  }
}

TEST_F(PreviewRunTest, WhatAPreviewListsIsWhatARunThenDoes) {
  size_t removed = 0, stayed = 0, kept = 0;
  for (unsigned number = 1; number <= 12; ++number) {
    SCOPED_TRACE(number);
    Seed(number);
    const RegistryPicture before = PictureOfBoth();
    const std::string stored = ReadOwn("Settings.ini");

    PreviewRun previewed(ports, view);
    previewed.Run(engine.selection());
    EXPECT_EQ(PictureOfBoth(), before);
    EXPECT_EQ(ReadOwn("Settings.ini"), stored);

    engine.RunCleaning();
    // What stays has its reason from another call of the system.
    EXPECT_EQ(LinesOf(previewed.state(), false), LinesOf(engine.state(), false));
    EXPECT_EQ(ExitCodeOf(previewed.state()), ExitCodeOf(engine.state()));
    RegistryPicture after = PictureOfBoth(), expected = before;
    for (const RunEntry& entry : engine.state().Entries->all) {
      const Fate fate = entry.fate;
      ++(fate == Fate::kRemoved ? removed : fate == Fate::kKept ? kept : stayed);
      if (fate == Fate::kRemoved)
        std::erase_if(expected, [&](const auto& row) { return Takes(entry, row.first); });
      EXPECT_EQ(entry.note.empty(), fate == Fate::kRemoved) << PlaceText(entry);
    }
    // An INI file stays without what went of it; its bytes are other tests' matter.
    for (RegistryPicture* const picture : {&expected, &after}) picture->erase(scratch + "app.ini");
    EXPECT_EQ(after, expected);
    Clear();
  }
  EXPECT_GT(removed, 100u);
  EXPECT_GT(stayed, 5u);
  EXPECT_GT(kept, 5u);
}

TEST_F(PreviewRunTest, OfAPreviewOnlyWhatIsTickedGoesAndNothingThatCameLater) {
  size_t removed = 0;
  for (unsigned number = 20; number <= 26; ++number) {
    SCOPED_TRACE(number);
    Seed(number);
    PreviewRun previewed(ports, view);
    previewed.Run(engine.selection());
    const std::shared_ptr<const RunEntries> seen = previewed.entries();
    EntryList list(ports.system, seen, true);
    for (size_t row = 0; row < list.RowCount(); row += 2) list.SetTicked(row, false);
    Lines ticked;
    for (size_t row = 0; row < list.RowCount(); ++row) {
      const RunEntry& entry = list.At(row);
      if (entry.fate != Fate::kRemoved) list.SetTicked(row, true);  // changes nothing
      // A folder that holds what was not ticked is not empty.
      if (list.IsTicked(row) && entry.fate == Fate::kRemoved && entry.kind != EntryKind::kFolder)
        ticked.insert(UpCase(PlaceText(entry)));
    }
    machine->MakeFile(temp + "came later", "1");
    machine->MakeFile(scratch + "mine\\came later", "1");
    engine.RunCleaning(list.Choice());
    Lines gone;
    for (const RunEntry& entry : engine.state().Entries->all) {
      if (entry.fate != Fate::kRemoved || entry.kind == EntryKind::kFolder) continue;
      gone.insert(UpCase(PlaceText(entry)));
    }
    EXPECT_EQ(gone, ticked);
    removed += gone.size();
    for (const std::string& entry : ticked) EXPECT_FALSE(machine->Exists(entry)) << entry;
    EXPECT_TRUE(machine->Exists(temp + "came later") &&
                machine->Exists(scratch + "mine\\came later"));
    EXPECT_TRUE(Holds(engine.state().RunLog, "not in the preview: "));
    EXPECT_EQ(engine.state().Choice, nullptr);
    Clear();
  }
  EXPECT_GT(removed, 30u);
}

TEST_F(PreviewRunTest, WhatWasUntickedIsNotTakenByWhatHoldsItNorByTheBin) {
  const std::string find = "Software\\Microsoft\\Search Assistant\\ACMru";
  machine->RemoveRegistryTree(kUser, find);
  for (const char* name : {"a", "b"}) machine->SetText(kUser, find, name, "text");
  machine->MakeFile(scratch + "binned.txt", "12");
  ports.files.Recycle(scratch + "binned.txt");
  WriteSettings("[General]\r\nDelMethod=D\r\n");
  Tick({"CleanFindHistory", "CleanRecycleBin"});
  PreviewRun previewed(ports, view);
  previewed.Run(engine.selection());
  EntryList list(ports.system, previewed.entries(), true);
  for (size_t row = 0; row < list.RowCount(); ++row) {
    if (list.At(row).part == "b") list.SetTicked(row, false);
  }
  machine->MakeFile(scratch + "binned since.txt", "123");
  ports.files.Recycle(scratch + "binned since.txt");
  engine.RunCleaning(list.Choice());
  EXPECT_EQ(machine->ValueNames(kUser, find), Names{"b"});
  EXPECT_GE(ports.shell.QueryRecycleBin().items, 2u);
  const std::string& log = engine.state().RunLog;
  EXPECT_TRUE(Holds(log, "Left, as they were not in the preview: 1"));
  ports.shell.EmptyRecycleBin();
  machine->RemoveRegistryTree(kUser, find);
}

// As many as are in the bin, wherever it is told how many files there are.
TEST_F(PreviewRunTest, TheBinCountsForTheFilesInIt) {
  ports.shell.EmptyRecycleBin();
  for (const char* name : {"a", "b", "c"}) {
    machine->MakeFile(scratch + name, "12");
    ports.files.Recycle(scratch + name);
  }
  WriteSettings("[General]\r\nKeepLogs=1\r\n");
  Tick({"CleanRecycleBin"});
  ItemList items(ports, engine.selection());
  PreviewRun previewed(ports, view);
  items.BeginLook(previewed.state());
  previewed.Run(engine.selection());
  items.EndLook();
  for (const size_t row : {size_t{0}, *items.RowOf(*FindItem("CleanRecycleBin"))})
    EXPECT_EQ(items.Text(row, ItemColumn::kCount), "3");
  EntryList list(ports.system, previewed.entries(), true);
  EXPECT_EQ(list.Question(), "Delete 3 files (6 Bytes) for good?");
  EXPECT_EQ(list.Summary(), "1 entry to be removed, 3 files, 6 Bytes.");
  list.SetTicked(0, false);
  EXPECT_EQ(list.Summary(), "0 entries to be removed, 0 Bytes.");
  list.SetTicked(0, true);

  // Another of the same size in the place of one.
  ports.shell.EmptyRecycleBin();
  machine->MakeFile(scratch + "d", "123456");
  ports.files.Recycle(scratch + "d");
  engine.RunCleaning(list.Choice());
  EXPECT_EQ(ports.shell.QueryRecycleBin().items, 1u);

  engine.RunCleaning();
  EXPECT_EQ(engine.state().Entries->all.at(0).count, 1u);
  RunLogs logs(ports);
  logs.Keep(previewed.state(), 1);
  EXPECT_EQ(logs.Read(logs.List().at(0)).Entries->all.at(0).count, 3u);
}

TEST_F(PreviewRunTest, ItsFirstRowsDoNotAwaitTheEndOfTheScan) {
  constexpr size_t kFiles = 300;
  for (const char* folder : {"a\\", "b\\", "c\\"}) {
    for (size_t i = 0; i < kFiles; ++i) machine->MakeFile(temp + folder + std::to_string(i), "1");
  }
  WriteSettings("[General]\r\nDelMethod=D\r\n");
  PreviewRun preview(ports, view);
  std::set<size_t> while_scanning;
  view.on_status = [&](const std::string& status) {
    if (status.starts_with("Scanning system")) while_scanning.insert(preview.entries()->all.size());
  };
  preview.RunOneItem(*FindItem("CleanTempFiles"));
  EXPECT_EQ(while_scanning, (std::set<size_t>{0, 200})) << "also of a folder that is being read";
  std::set<std::string> places;
  for (const RunEntry& entry : preview.entries()->all) places.insert(entry.place);
  EXPECT_EQ(places.size(), 3 * kFiles + 3) << "each once, and the folders";
  EXPECT_EQ(places.size(), preview.entries()->all.size());
  view.on_status = nullptr;
  engine.RunOneItem(*FindItem("CleanTempFiles"));
  EXPECT_EQ(engine.state().Entries->all.size(), places.size());
  EXPECT_TRUE(machine->Tree(temp).empty());
}

TEST_F(PreviewRunTest, TheQuestionCountsWhatCannotBeHadBack) {
  const std::pair<const char*, const char*> kRows[] = {
      {"[General]\r\nDelMethod=D\r\n", "Delete 2 files (7 Bytes) and 1 other thing for good?"},
      {"[General]\r\nDelMethod=W\r\n", "Wipe 2 files (7 Bytes) and 1 other thing for good?"},
      {"[General]\r\nDelMethod=R\r\n", "Delete 1 thing for good?"},
      {"[General]\r\nDelMethod=B\r\n", ""}};
  machine->MakeFile(scratch + "mine\\a", "1234");
  machine->MakeFile(scratch + "mine\\b", "123");
  WriteOwn("UDFO.txt", scratch + "mine\r\n");
  machine->RemoveRegistryTree(kUser, kRunMruKey);
  machine->SetText(kUser, kRunMruKey, "a", "x");
  for (const auto& [written, question] : kRows) {
    WriteSettings(written);
    Tick({"CleanUserFolders", "CleanRunMRU"});
    Clear({temp});
    PreviewRun previewed(ports, view);
    previewed.Run(engine.selection());
    EXPECT_EQ(EntryList(ports.system, previewed.entries(), true).Question(), question);
  }
}

}  // namespace
}  // namespace quellix
