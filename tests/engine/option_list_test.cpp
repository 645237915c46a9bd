#include "app/option_list.h"

#include <algorithm>
#include <optional>

#include "cleaners/cookie_lists.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

constexpr const char* kShellFolders =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

class OptionListTest : public RunFixture {
 protected:
  static const ListPage& PageNamed(OptionsPage page) {
    return *std::ranges::find(ListPages(), page, &ListPage::page);
  }
  OptionList Open(OptionsPage page) { return {ports, PageNamed(page)}; }
  void WriteProgramFile(const std::string& name, const std::string& bytes) {
    ports.files.WriteWholeFile(ports.program_folder + "\\" + name, bytes);
  }
};

TEST_F(OptionListTest, EachListTakesItsKindOfEntryOnly) {
  using enum OptionsPage;
  struct Row {
    OptionsPage page;
    std::string text, stored, refusal;  // part of the refusal; "" when taken as `stored`
  };
  const std::string form = "Please enter the file type in format";
  const std::string everything = "would match every file";
  const Row rows[] = {
      {kIgnoredFiles, " Desktop.ini ", "Desktop.ini", ""},
      {kIgnoredFiles, "dEsktop.INI", "", "is in the list already."},
      {kIgnoredFiles, "noext", "noext", ""},
      {kIgnoredFiles, "", "", "enter a name"},
      {kIgnoredFiles, " .. ", "", "enter a name"},
      {kIgnoredFiles, "C:\\a.txt", "", "cannot hold"},
      {kIgnoredFiles, "*.ini", "", "cannot hold"},
      {kIgnoredFiles, "a\tb", "", "cannot hold"},
      {kIgnoredExtensions, ".DOC", "DOC", ""},
      {kIgnoredExtensions, "*.doc", "", "doc is in the list already."},
      {kIgnoredExtensions, "x1", "x1", ""},
      {kIgnoredExtensions, "*", "", "cannot hold"},
      {kIgnoredExtensions, ".", "", "enter a name"},
      {kIgnoredExtensions, "tar.gz", "", "behind the last dot"},
      {kIgnoredFolders, "temp", "temp", ""},
      {kIgnoredFolders, "C:\\Keep\\", "C:\\Keep\\", ""},
      {kIgnoredFolders, "c:\\keep", "", "already"},
      {kIgnoredFolders, "", "", "enter a folder"},
      {kIgnoredFolders, "a*b", "", "cannot hold"},
      {kFileTypes, "*.bak", "*.bak", ""},
      {kFileTypes, "*.BAK", "", "File Type already exists in the list."},
      {kFileTypes, "~$*.[dx]oc", "~$*.[dx]oc", ""},
      {kFileTypes, "thumbs.db", "thumbs.db", ""},
      {kFileTypes, "", "", form},
      {kFileTypes, "bak", "", form},
      {kFileTypes, "C:\\*.bak", "", form},
      {kFileTypes, "*.b|k", "", form},
      {kFileTypes, "*.[a", "", form},
      {kFileTypes, "*.[z-a]", "", form},
      {kFileTypes, std::string("*.a\x01", 4), "", form},
      {kFileTypes, "*.*", "", everything},
      {kFileTypes, "?*", "", everything},
      {kUserFiles, "C:\\Temp\\a.txt", "C:\\Temp\\a.txt", ""},
      {kUserFiles, "\\\\server\\share\\b.txt", "\\\\server\\share\\b.txt", ""},
      {kUserFiles, "a.txt", "", "full path"},
      {kUserFiles, "%TEMP%\\a.txt", "", "full path"},
      {kUserFiles, "C:\\Temp\\*.txt", "", "cannot hold"},
      {kUserFiles, "C:\\a.txt:stream", "", "cannot hold"},
      {kUserFiles, "C:\\Temp\\", "", "is a folder"},
      {kUserFiles, "C:\\Temp\\..\\a.txt", "", "no name"},
      {kUserFiles, "c:\\temp\\A.TXT", "", "already"},
      {kUserFiles, ports.system.WindowsFolder(), "", "is a folder"},
      {kUserFolders, "C:\\Junk\\", "C:\\Junk\\", ""},
      {kUserFolders, "C:\\junk", "", "already"},
      {kUserFolders, "C:\\", "", "whole drive"},
      {kUserFolders, "\\\\server\\share", "", "whole drive"},
      {kUserFolders, ports.system.WindowsFolder(), "", "whole drive"},
      {kUserFolders, ports.system.SystemFolder() + "\\", "", "whole drive"},
      {kUserFolders, ports.system.Environment("USERPROFILE").value(), "", "profile"},
      {kUserFolders, "Junk", "", "full path"},
  };
  std::optional<OptionList> list(Open(kIgnoredFiles));
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(PageNamed(row.page).title) + ": " + row.text);
    if (row.page != list->page().page) list.emplace(ports, PageNamed(row.page));
    const std::vector<ListRow> before = list->rows();
    const std::string why = list->Add(row.text, " why ");
    if (row.refusal.empty()) {
      EXPECT_EQ(why, "");
      EXPECT_EQ(list->rows().back(), (ListRow{row.page == kFileTypes, row.stored, "why"}));
    } else {
      EXPECT_NE(why.find(row.refusal), std::string::npos) << why;
      EXPECT_EQ(list->rows(), before);
    }
  }
}

TEST_F(OptionListTest, AFolderThatItsUserKnowsIsAskedFor) {
  const std::string downloads = ports.system.Environment("USERPROFILE").value() + "\\Downloads";
  machine->MakeFolder(downloads + "\\Old");
  const OptionList folders(ports, PageNamed(OptionsPage::kUserFolders));
  for (const std::string& path : {downloads, " " + UpCase(downloads) + "\\ "}) {
    EXPECT_NE(folders.Question(path).find("one of your own folders"), std::string::npos) << path;
  }
  for (const std::string& path : {downloads + "\\Old", downloads + "\\none", std::string("x")}) {
    EXPECT_EQ(folders.Question(path), "") << path;
  }
  EXPECT_EQ(OptionList(ports, PageNamed(OptionsPage::kUserFiles)).Question(downloads), "");
}

TEST_F(OptionListTest, FileTypesAreWrittenToTheByte) {
  WriteProgramFile("UNFI.txt",
                   "1\x01*.tmp\x01Temporary\r\n\r\n0\x01*.old\r\n2\x01*.a\x01"
                   "b\x01"
                   "c\r\n*.hand\r\n");
  OptionList types = Open(OptionsPage::kFileTypes);
  ASSERT_EQ(types.rows().size(), 4u);
  types.Save();  // nothing was changed
  EXPECT_EQ(ReadProgramFile("UNFI.txt").substr(0, 7), "1\x01*.tmp");
  types.Toggle(0);
  types.Toggle(1);
  EXPECT_EQ(types.Change(2, "*.A", "letter"), "");  // its own name is no double
  EXPECT_EQ(types.Change(2, "*.tmp", ""), "File Type already exists in the list.");
  EXPECT_EQ(types.Add("*.log", "Logs"), "");
  types.Save();
  EXPECT_FALSE(types.changed());
  EXPECT_EQ(ReadProgramFile("UNFI.txt"),
            "0\x01*.tmp\x01Temporary\r\n1\x01*.old\x01\r\n0\x01*.A\x01letter\r\n0\x01*.hand\x01\r\n"
            "1\x01*.log\x01Logs\r\n");
  types.Remove(std::vector<size_t>{0, 2, 3, 4});
  types.Save();
  EXPECT_EQ(ReadProgramFile("UNFI.txt"), "1\x01*.old\x01\r\n");
}

TEST_F(OptionListTest, ListsKeepTheirEntriesAndDefaultsComeBack) {
  WriteProgramFile("DefIFI.txt", "a.ini\r\nb.ini\r\n");
  WriteProgramFile("DefIE.txt", "exe\r\n");
  OptionList files = Open(OptionsPage::kIgnoredFiles);
  EXPECT_EQ(files.rows().size(), 2u);  // while the user has no list
  files.Remove(std::vector<size_t>{0, 1});
  EXPECT_TRUE(files.changed());
  files.Save();
  EXPECT_EQ(ReadProgramFile("IFI.txt"), "");
  EXPECT_TRUE(Open(OptionsPage::kIgnoredFiles).rows().empty());
  EXPECT_TRUE(files.HasDefaults());
  EXPECT_EQ(files.RestoreDefaults(), "");
  files.Save();
  EXPECT_EQ(ReadProgramFile("IFI.txt"), "a.ini\r\nb.ini\r\n");

  OptionList extensions = Open(OptionsPage::kIgnoredExtensions);
  EXPECT_TRUE(extensions.rows().empty());  // as the search has it
  EXPECT_EQ(extensions.RestoreDefaults(), "");
  extensions.Save();
  EXPECT_EQ(ReadProgramFile("IE.txt"), "exe\r\n");
  EXPECT_FALSE(Open(OptionsPage::kIgnoredFolders).HasDefaults());
  EXPECT_FALSE(Open(OptionsPage::kUserFiles).HasDefaults());

  WriteProgramFile("UDFI.txt", " C:\\odd \r\nrelative\r\n\r\nC:\\odd");
  OptionList odd = Open(OptionsPage::kUserFiles);
  EXPECT_EQ(odd.Add("C:\\new", ""), "");
  odd.Save();
  EXPECT_EQ(ReadProgramFile("UDFI.txt"), " C:\\odd \r\nrelative\r\nC:\\odd\r\nC:\\new\r\n");
  EXPECT_EQ(Open(OptionsPage::kIgnoredFolders).FromPath("C:\\Keep"), "C:\\Keep\\");
  EXPECT_EQ(odd.FromPath("C:\\a.txt"), "C:\\a.txt");
}

TEST_F(OptionListTest, CookiesMoveBetweenTheMachineAndTheKeepList) {
  const std::string folder = scratch + "Cookies\\";
  machine->SetText(kUser, kShellFolders, "Cookies", scratch + "Cookies");
  for (const char* name : {"b@x.txt", "A@x.txt", "Low\\c@x.TXT", "index.dat"}) {
    machine->MakeFile(folder + name, "cookie");
  }
  machine->MakeFile(scratch + "Outside\\d@x.txt", "cookie");
  machine->MakeFolderLink(folder + "Link", scratch + "Outside");
  WriteProgramFile("ck.txt", UpCase(folder) +
                                 "B@X.TXT\x01"
                                 "C:\\gone\\old.txt\x01\r\n");
  CookieLists cookies(ports);
  EXPECT_EQ(cookies.on_machine(),
            (std::vector<std::string>{folder + "A@x.txt", folder + "Low\\c@x.TXT"}));
  EXPECT_EQ(cookies.kept(),
            (std::vector<std::string>{UpCase(folder) + "B@X.TXT", "C:\\gone\\old.txt"}));
  cookies.Save();
  EXPECT_EQ(ReadProgramFile("ck.txt").substr(0, 4), UpCase(folder).substr(0, 4));

  cookies.Keep(std::vector<size_t>{1});
  cookies.Release(std::vector<size_t>{0, 2});  // b, which is there, and old, which is gone
  EXPECT_EQ(cookies.on_machine(),
            (std::vector<std::string>{folder + "A@x.txt", folder + "b@x.txt"}));
  cookies.Keep(std::vector<size_t>{0});
  cookies.Save();
  EXPECT_EQ(ReadProgramFile("ck.txt"), folder + "A@x.txt\x01" + folder + "Low\\c@x.TXT\x01\r\n");
  Tick({"CleanCookies"});
  engine.RunCleaning();
  EXPECT_EQ(machine->Tree(scratch + "Cookies"),
            (std::vector<std::string>{"A@x.txt", "Link\\", "Low\\", "Low\\c@x.TXT", "index.dat"}));
  cookies.Release(std::vector<size_t>{0, 1});
  cookies.Save();
  EXPECT_EQ(ReadProgramFile("ck.txt"), "\r\n");

  // While the list cannot be read, nothing takes its place.
  ports.files.RemoveFile(ports.program_folder + "\\ck.txt");
  machine->MakeFolder(ports.program_folder + "\\ck.txt");
  CookieLists unread(ports);
  EXPECT_NE(unread.problem(), "");
  ASSERT_FALSE(unread.on_machine().empty());
  unread.Keep(std::vector<size_t>{0});
  EXPECT_FALSE(unread.changed());
}

}  // namespace
}  // namespace quellix
