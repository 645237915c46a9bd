// The users of a running Windows on the console, one after another.
#include "cli/console_fixture.h"
#include "support/other_user_fixture_win32.h"

namespace quellix {
namespace {

struct OtherUserConsoleTest : Console<OtherUserFixture> {
  OtherUserConsoleTest() { StoreHive(); }
  const Names clean{"clean", "--item", "CleanTempFiles"};
  const std::string his = his_temp + "a.tmp", mine = temp + "mine.tmp";
};

TEST_F(OtherUserConsoleTest, ANamedOneIsCleanedAloneAndAllOnesEachAsOnHisOwn) {
  Expect(With(clean, {"--user", "QX2", "--preview"}), 0, {his, "would remove 1 file"});
  EXPECT_TRUE(machine->Exists(his));
  for (const char* files : {"1", "0"}) {
    Expect(With(clean, {"--user", "qx2"}), 0, {std::string("Files Deleted:  ") + files});
    EXPECT_FALSE(machine->Exists(his));
    EXPECT_TRUE(machine->Exists(his_temp + "b.keep") && machine->Exists(mine));
    EXPECT_FALSE(Holds(ReadOwn("Settings.ini"), "LastCleaned")) << "it was not one's own";
  }
  machine->MakeFile(his, "12345");
  Expect(With(clean, {"--all-users"}), 0, {"== qx2\n", " runs\n", "qx2: done\n"});
  EXPECT_TRUE(Holds(ReadOwn("Settings.ini"), "LastCleaned") &&
              Holds(ReadOwn("Settings.ini"), "CleanTempFiles="));
  EXPECT_FALSE(machine->Exists(his) || machine->Exists(mine) || IsLoaded());
  machine->MakeFile(his, "12345");
  Expect(With(clean, {"--user", "qx2", "--user", "qx4", "--json"}), 1,
         {"\"user\":\"qx2\"", "\"files\":1", "There is no user \"qx4\" on this Windows."});
  EXPECT_FALSE(machine->Exists(his));
  Expect({"keep", "list", "--all-users"}, 2, {"one user at a time"});
}

TEST_F(OtherUserConsoleTest, ANameOfTwoIsNoneAndEachOfThemIsCleanedOnce) {
  const std::string twin = "C:\\users\\other\\qx2";
  machine->MakeFolder(twin);
  machine->SetText(kMachine, kProfiles + gone.sid, "ProfileImagePath", twin);
  Expect(With(clean, {"--user", "qx2"}), 1,
         {"More than one user is called \"qx2\"", twin, user.profile + " (" + user.sid + ")"});
  EXPECT_TRUE(machine->Exists(his));
  Expect(With(clean, {"--user", user.sid}), 0, {"Files Deleted:  1"});
  machine->MakeFile(his, "1");
  Expect(With(clean, {"--all-users"}), 1, {"== " + user.sid + "\n", "== " + gone.sid + "\n"});
  EXPECT_FALSE(machine->Exists(his));
  ports.files.RemoveFolder(twin);
  Expect({"search", "shortcuts", "--user", "qx2"}, 1, {"only for the user who runs"});
}

// The machine's keys are the administrator's to clean, under his own name.
TEST_F(OtherUserConsoleTest, OfTheRegistryOnlyHisOwnKeysAreChanged) {
  const std::string path = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\qx gone.exe";
  machine->SetText(kMachine, path, "", "C:\\qx gone\\gone.exe");
  const Names scan{"registry", "app-paths", "--delete"};
  Expect(With(scan, {"--user", "qx2", "--preview"}), 1, {"not this user's own"});
  Expect(With(scan, {"--user", "qx2"}), 1, {"qx gone.exe", "not this user's own"});
  EXPECT_TRUE(machine->KeyExists(kMachine, path));
  Expect(scan, 0, {"qx gone.exe"});
  EXPECT_FALSE(machine->KeyExists(kMachine, path));
}

TEST_F(OtherUserConsoleTest, AtTheNextStartNothingGoesThatOthersMayChange) {
  const auto lock = machine->LockFile(mine);
  Expect(With(clean, {"--at-next-start"}), 3,
         {mine, "is not left to the next start of Windows, as others"});
  EXPECT_TRUE(machine->Exists(mine));
  Expect(With(clean, {"--at-next-start", "--method", "wipe"}), 2, {"--method delete alone"});
}

}  // namespace
}  // namespace quellix
