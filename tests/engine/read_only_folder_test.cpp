#include <algorithm>

#include "app/options.h"
#include "app/tips.h"
#include "platform/error.h"
#include "support/forwarding_files.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

// Below one folder nothing can be changed, as below Program Files without an administrator's
// rights.
class ReadOnlyFolder : public ForwardingFiles {
 public:
  ReadOnlyFolder(FileSystem& files, std::string_view folder)
      : ForwardingFiles(files,
                        [](std::string_view, std::unique_ptr<RandomFile> file) { return file; }),
        folder_(UpCase(folder) + "\\") {}

  void SetAttributes(std::string_view path, uint32_t attributes) override {
    Demand(path);
    ForwardingFiles::SetAttributes(path, attributes);
  }
  void RemoveFile(std::string_view path) override {
    Demand(path);
    ForwardingFiles::RemoveFile(path);
  }
  void Rename(std::string_view from, std::string_view to) override {
    Demand(from);
    Demand(to);
    ForwardingFiles::Rename(from, to);
  }
  std::unique_ptr<RandomFile> Open(std::string_view path, OpenMode mode) override {
    if (mode != OpenMode::kRead) Demand(path);
    return ForwardingFiles::Open(path, mode);
  }
  void CreateFolder(std::string_view path) override {
    Demand(path);
    ForwardingFiles::CreateFolder(path);
  }
  void WriteWholeFile(std::string_view path, std::string_view bytes) override {
    Demand(path);
    ForwardingFiles::WriteWholeFile(path, bytes);
  }

 private:
  void Demand(std::string_view path) const {
    if (!UpCase(path).starts_with(folder_)) return;
    throw Error(Error::Kind::kDenied, "Access is denied: " + std::string(path));
  }

  std::string folder_;
};

class ReadOnlyFolderTest : public RunFixture {
 protected:
  ReadOnlyFolderTest() {
    WriteSettings("[General]\r\nTipBox=1\r\nRename=1\r\n");
    machine->MakeFile(ports.program_folder + "\\UDFI.txt", "C:\\a.txt\r\n");
    machine->MakeFile(ports.program_folder + "\\tips.txt", "one\r\n");
    machine->MakeFile(ports.program_folder + "\\chkItems.txt", "1\r\n");
  }
  std::vector<std::string> FolderWithBytes() {
    std::vector<std::string> all;
    for (const std::string& name : machine->Tree(ports.program_folder)) {
      all.push_back(name + ": " + ReadProgramFile(name));
    }
    return all;
  }

  ReadOnlyFolder files_{ports.files, ports.program_folder};
  IniFiles profile_{files_, ports.system};
  Machine denied_{files_,   ports.registry, ports.shell,   ports.url_cache,
                  profile_, ports.system,   ports.session, ports.program_folder};
  Engine own_{denied_, view};
};

TEST_F(ReadOnlyFolderTest, ARunCleansAndTellsThatItsTimeIsNotStored) {
  const std::vector<std::string> before = FolderWithBytes();
  Tips tips(denied_);
  EXPECT_EQ(own_.Load(&tips), "");
  machine->MakeFile(temp + "junk.tmp", "12345");
  own_.selection().SetChecked(*FindItem("CleanTempFiles"), true);
  own_.selection().SetChecked(*FindItem("CleanRecycleBin"), false);
  own_.RunCleaning();
  EXPECT_FALSE(machine->Exists(temp + "junk.tmp"));
  ASSERT_TRUE(view.report);
  EXPECT_NE(view.report->log.find("The time of this run could not be saved. Access is denied"),
            std::string::npos)
      << view.report->log;
  EXPECT_TRUE(view.criticals.empty());
  EXPECT_THROW(own_.Save(), Error);
  EXPECT_EQ(FolderWithBytes(), before);
}

TEST_F(ReadOnlyFolderTest, TheOptionsTellEachFileTheyCannotWrite) {
  const std::vector<std::string> before = FolderWithBytes();
  Options options(denied_);
  EXPECT_EQ(options.Problems(), "");
  options.general.tip_box = false;
  EXPECT_EQ(options.lists[4].Add("C:\\b.txt", ""), "");
  for (int attempt = 0; attempt < 2; ++attempt) {
    const std::string problems = options.Save();
    for (const char* part : {"The settings could not be saved. Access is denied",
                             "The search options could not be saved. Access is denied",
                             "User-defined files could not be saved. Access is denied"}) {
      EXPECT_NE(problems.find(part), std::string::npos) << problems;
    }
    EXPECT_EQ(std::ranges::count(problems, '\n'), 3) << problems;
    EXPECT_EQ(FolderWithBytes(), before);
  }
  EXPECT_TRUE(options.lists[4].changed());
}

}  // namespace
}  // namespace quellix
