#include "cli/console_fixture.h"
#include "support/browser_fixture.h"

namespace quellix {
namespace {

using BrowserConsoleTest = Console<BrowserFixture>;

TEST_F(BrowserConsoleTest, BrowsersAreListedWithTheirCostsAndCleanedByName) {
  Expect({"browsers", "list"}, 0);
  const std::string profile = chrome + "\\Default", data = profile + "\\Web Data";
  machine->MakeFile(profile + "\\Preferences", "{}");
  machine->MakeFile(profile + "\\Cache\\f_1", "x");
  MakeDatabase(data,
               "CREATE TABLE autofill(name, value); INSERT INTO autofill VALUES('a', 'typed')");
  Expect({"browsers", "list"}, 0, {"chrome:cache", "Google Chrome", "saved passwords are lost"});
  Expect({"browsers", "clean", "chrome:fo"}, 2, {"Did you mean \"chrome:forms\"?"});
  Expect({"browsers", "clean", "opera"}, 2, {"there is no browser \"opera\" here."});
  const Picture before = PictureOf(chrome);
  Expect(
      {"browsers", "clean", "chrome", "chrome:forms", "--preview"}, 0,
      {"Database rows   " + data + ", form entries", "f_1", "1 file (1 Bytes)", "1 other thing"});
  EXPECT_EQ(PictureOf(chrome), before);
  Expect({"browsers", "clean", "chrome"}, 0,
         {"Google Chrome, Cache... Rows Deleted: 0 Files Deleted: 1"});
  EXPECT_FALSE(machine->Exists(profile + "\\Cache\\f_1"));
  EXPECT_TRUE(IsIn(AllBytes(profile), "typed"));
  {
    machine->MakeFile(chrome + "\\lockfile", "");
    const auto lock = machine->LockFile(chrome + "\\lockfile");
    Expect({"browsers", "clean", "chrome:forms"}, 3, {"lockfile"});
  }
  Expect({"browsers", "clean", "Chrome:Forms"}, 0, {"Saved form information... Rows Deleted: 1"});
  EXPECT_FALSE(IsIn(AllBytes(profile), "typed"));
}

}  // namespace
}  // namespace quellix
