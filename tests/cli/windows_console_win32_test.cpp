// Windows' own cleaners on the console, by the one of the tests.
#include "cli/console_fixture.h"
#include "platform/win32/win32_text.h"
#include "support/registered_cleaner_win32.h"

namespace quellix {
namespace {

using WindowsConsoleTest = ConsoleTest;

TEST_F(WindowsConsoleTest, CleanersAreListedAskedAndLetWorkByName) {
  for (const char* name : {"a", "b"}) machine->MakeFile(scratch + name, "12345");
  {
    const RegisteredCleaner cleaner(L"Qx", Wide(scratch));
    Expect({"windows", "list"}, 0, {"Qx   "});
    Expect({"windows", "list", "--sizes"}, 0, {"10 Bytes", "Qx by itself (usual)", "It is new."});
    Expect({"windows", "list", "--sizes", "--json"}, 0,
           {"\"name\":\"Qx\"", "\"bytes\":10", "\"isUsual\":true", "\"problem\":null"});
    Expect({"windows", "process", "Qy"}, 2, {"Did you mean \"Qx\"?"});
    Expect({"windows", "preview", "qx"}, 0,
           {"Windows cleaner Qx", "Found: 10 Bytes", "1 other thing"});
    EXPECT_EQ(machine->Tree(scratch).size(), 2u);
    Expect({"windows", "process", "qx"}, 0, {"Qx (Windows)... Freed: 10 Bytes by its own count"});
    EXPECT_TRUE(machine->Tree(scratch).empty());
    Expect({"windows", "process", "qx"}, 0, {"Nothing to remove"});
  }
  machine->MakeFile(scratch + "a", "1");
  const RegisteredCleaner asking(L"Qx", Wide(scratch), L"asks");
  Expect({"windows", "process", "Qx"}, 1, {"Qx asked something, and nobody was there."});
  EXPECT_TRUE(machine->Exists(scratch + "a"));
}

}  // namespace
}  // namespace quellix
