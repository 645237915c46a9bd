#include "app/option_list.h"

#include "cleaners/cookie_lists.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

using enum OptionsPage;

constexpr const char* kShellFolders =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

struct OptionListTest : RunFixture {
  static const ListPage& PageNamed(OptionsPage page) {
    return *std::ranges::find(ListPages(), page, &ListPage::page);
  }
  OptionList Open(OptionsPage page) { return {ports, PageNamed(page)}; }
  // What is taken, and as what; what is refused then, with part of the sentence.
  void ExpectTakes(OptionsPage page, const std::vector<std::pair<std::string, std::string>>& taken,
                   const std::vector<std::pair<std::string, Names>>& refused) {
    OptionList list = Open(page);
    for (const auto& [text, stored] : taken) {
      EXPECT_EQ(list.Add(text, " why "), "") << text;
      EXPECT_EQ(list.rows().back(), (ListRow{page == kFileTypes, stored, "why"}));
    }
    for (const auto& [why, texts] : refused) {
      for (const std::string& text : texts) EXPECT_TRUE(Holds(list.Add(text, ""), why)) << text;
    }
    EXPECT_EQ(list.rows().size(), taken.size());
  }
};

TEST_F(OptionListTest, ListsOfNamesTakeTheirKindOfEntryOnly) {
  ExpectTakes(kIgnoredFiles, {{" Desktop.ini ", "Desktop.ini"}, {"noext", "noext"}},
              {{"is in the list already.", {"dEsktop.INI"}},
               {"enter a name", {"", " .. "}},
               {"cannot hold", {"C:\\a.txt", "*.ini", "a\tb"}}});
  ExpectTakes(kIgnoredExtensions, {{".DOC", "DOC"}, {"x1", "x1"}},
              {{"doc is in the list already.", {"*.doc"}},
               {"cannot hold", {"*"}},
               {"enter a name", {"."}},
               {"behind the last dot", {"tar.gz"}}});
  ExpectTakes(kFileTypes,
              {{"*.bak", "*.bak"}, {"~$*.[dx]oc", "~$*.[dx]oc"}, {"thumbs.db", "thumbs.db"}},
              {{"File Type already exists in the list.", {"*.BAK"}},
               {"would match every file", {"*.*", "?*"}},
               {"Please enter the file type in format",
                {"", "bak", "C:\\*.bak", "*.b|k", "*.[a", "*.[z-a]", "*.a\x01"}}});
}

TEST_F(OptionListTest, ListsOfPathsTakeTheirKindOfEntryOnly) {
  const std::string windows = ports.system.WindowsFolder(), far = "\\\\server\\share\\b.txt";
  ExpectTakes(kIgnoredFolders, {{"temp", "temp"}, {"C:\\Keep\\", "C:\\Keep\\"}},
              {{"already", {"c:\\keep"}}, {"enter a folder", {""}}, {"cannot hold", {"a*b"}}});
  ExpectTakes(kUserFiles, {{"C:\\Temp\\a.txt", "C:\\Temp\\a.txt"}, {far, far}},
              {{"full path", {"a.txt", "%TEMP%\\a.txt"}},
               {"cannot hold", {"C:\\Temp\\*.txt", "C:\\a.txt:stream"}},
               {"is a folder", {"C:\\Temp\\", windows}},
               {"no name", {"C:\\Temp\\..\\a.txt"}},
               {"already", {"c:\\temp\\A.TXT"}}});
  ExpectTakes(
      kUserFolders, {{"C:\\Junk\\", "C:\\Junk\\"}},
      {{"already", {"C:\\junk"}},
       {"full path", {"Junk"}},
       {"whole drive", {"C:\\", "\\\\server\\share", windows, ports.system.SystemFolder() + "\\"}},
       {"profile", {ports.system.Environment("USERPROFILE").value()}}});
}

TEST_F(OptionListTest, AFolderThatItsUserKnowsIsAskedFor) {
  const std::string downloads = ports.system.Environment("USERPROFILE").value() + "\\Downloads";
  machine->MakeFolder(downloads + "\\Old");
  const OptionList folders(ports, PageNamed(OptionsPage::kUserFolders));
  for (const std::string& path : {downloads, " " + UpCase(downloads) + "\\ "})
    EXPECT_TRUE(Holds(folders.Question(path), "one of your own folders")) << path;
  for (const std::string& path : {downloads + "\\Old", downloads + "\\none", std::string("x")})
    EXPECT_EQ(folders.Question(path), "") << path;
  EXPECT_EQ(OptionList(ports, PageNamed(OptionsPage::kUserFiles)).Question(downloads), "");
}

TEST_F(OptionListTest, FileTypesAreWrittenToTheByte) {
  WriteOwn("UNFI.txt",
           "1\001*.tmp\001Temporary\r\n\r\n0\001*.old\r\n2\001*.a\001b\001c\r\n*.hand\r\n");
  OptionList types = Open(OptionsPage::kFileTypes);
  ASSERT_EQ(types.rows().size(), 4u);
  types.Save();  // nothing was changed
  EXPECT_EQ(ReadOwn("UNFI.txt").substr(0, 7), "1\x01*.tmp");
  types.Toggle(0);
  types.Toggle(1);
  EXPECT_EQ(types.Change(2, "*.A", "letter"), "");  // its own name is no double
  EXPECT_EQ(types.Change(2, "*.tmp", ""), "File Type already exists in the list.");
  EXPECT_EQ(types.Add("*.log", "Logs"), "");
  types.Save();
  EXPECT_FALSE(types.changed());
  EXPECT_EQ(ReadOwn("UNFI.txt"),
            "0\x01*.tmp\x01Temporary\r\n1\x01*.old\x01\r\n0\x01*.A\x01letter\r\n0\x01*.hand\x01\r\n"
            "1\x01*.log\x01Logs\r\n");
  types.Remove(std::vector<size_t>{0, 2, 3, 4});
  types.Save();
  EXPECT_EQ(ReadOwn("UNFI.txt"), "1\x01*.old\x01\r\n");
}

TEST_F(OptionListTest, ListsKeepTheirEntriesAndDefaultsComeBack) {
  WriteOwn("DefIFI.txt", "a.ini\r\nb.ini\r\n");
  WriteOwn("DefIE.txt", "exe\r\n");
  OptionList files = Open(OptionsPage::kIgnoredFiles);
  EXPECT_EQ(files.rows().size(), 2u);  // while the user has no list
  files.Remove(std::vector<size_t>{0, 1});
  EXPECT_TRUE(files.changed());
  files.Save();
  EXPECT_EQ(ReadOwn("IFI.txt"), "");
  EXPECT_TRUE(Open(OptionsPage::kIgnoredFiles).rows().empty() && files.HasDefaults());
  EXPECT_EQ(files.RestoreDefaults(), "");
  files.Save();
  EXPECT_EQ(ReadOwn("IFI.txt"), "a.ini\r\nb.ini\r\n");

  OptionList extensions = Open(OptionsPage::kIgnoredExtensions);
  EXPECT_TRUE(extensions.rows().empty());  // as the search has it
  EXPECT_EQ(extensions.RestoreDefaults(), "");
  extensions.Save();
  EXPECT_EQ(ReadOwn("IE.txt"), "exe\r\n");
  EXPECT_FALSE(Open(OptionsPage::kIgnoredFolders).HasDefaults());
  EXPECT_FALSE(Open(OptionsPage::kUserFiles).HasDefaults());

  WriteOwn("UDFI.txt", " C:\\odd \r\nrelative\r\n\r\nC:\\odd");
  OptionList odd = Open(OptionsPage::kUserFiles);
  EXPECT_EQ(odd.Add("C:\\new", ""), "");
  odd.Save();
  EXPECT_EQ(ReadOwn("UDFI.txt"), " C:\\odd \r\nrelative\r\nC:\\odd\r\nC:\\new\r\n");
  EXPECT_EQ(Open(OptionsPage::kIgnoredFolders).FromPath("C:\\Keep"), "C:\\Keep\\");
  EXPECT_EQ(odd.FromPath("C:\\a.txt"), "C:\\a.txt");
}

TEST_F(OptionListTest, CookiesMoveBetweenTheMachineAndTheKeepList) {
  const std::string folder = scratch + "Cookies\\";
  machine->SetText(kUser, kShellFolders, "Cookies", scratch + "Cookies");
  MakeFiles(folder, "b@x.txt A@x.txt Low\\c@x.TXT index.dat", "cookie");
  machine->MakeFile(scratch + "Outside\\d@x.txt", "cookie");
  machine->MakeFolderLink(folder + "Link", scratch + "Outside");
  WriteOwn("ck.txt", UpCase(folder) + "B@X.TXT\001C:\\gone\\old.txt\x01\r\n");
  CookieLists cookies(ports);
  EXPECT_EQ(cookies.on_machine(), (Names{folder + "A@x.txt", folder + "Low\\c@x.TXT"}));
  EXPECT_EQ(cookies.kept(), (Names{UpCase(folder) + "B@X.TXT", "C:\\gone\\old.txt"}));
  cookies.Save();
  EXPECT_EQ(ReadOwn("ck.txt").substr(0, 4), UpCase(folder).substr(0, 4));

  cookies.Keep(std::vector<size_t>{1});
  cookies.Release(std::vector<size_t>{0, 2});  // b, which is there, and old, which is gone
  EXPECT_EQ(cookies.on_machine(), (Names{folder + "A@x.txt", folder + "b@x.txt"}));
  cookies.Keep(std::vector<size_t>{0});
  cookies.Save();
  EXPECT_EQ(ReadOwn("ck.txt"), folder + "A@x.txt\x01" + folder + "Low\\c@x.TXT\x01\r\n");
  Tick({"CleanCookies"});
  engine.RunCleaning();
  EXPECT_EQ(machine->Tree(scratch + "Cookies"),
            (Names{"A@x.txt", "Link\\", "Low\\", "Low\\c@x.TXT", "index.dat"}));
  cookies.Release(std::vector<size_t>{0, 1});
  cookies.Save();
  EXPECT_EQ(ReadOwn("ck.txt"), "\r\n");

  // While the list cannot be read, nothing takes its place.
  MakeUnreadable(own + "ck.txt");
  CookieLists unread(ports);
  EXPECT_NE(unread.problem(), "");
  ASSERT_FALSE(unread.on_machine().empty());
  unread.Keep(std::vector<size_t>{0});
  EXPECT_FALSE(unread.changed());
}

}  // namespace
}  // namespace quellix
