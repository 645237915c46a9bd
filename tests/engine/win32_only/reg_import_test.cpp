// The system's own registry command reads what we keep.
#include <cstdlib>

#include "support/registry_fixture.h"

namespace quellix {
namespace {

class RegImportTest : public RegistryFixture {};

TEST_F(RegImportTest, TheSystemImportsOurFiles) {
  const std::string nul(1, '\0');
  const std::pair<const char*, RegistryValue> kRows[] = {
      {"", Text("default")},
      {"a \"quoted\" \\ name", Text("a \"quoted\" \\ text")},
      {"expand", Text("%PATH%", kRegExpandSz)},
      {"texts", {kRegMultiSz, ToUtf16Bytes("a" + nul + "b" + nul + nul)}},
      {"number", Number(0xFEDCBA98)},
      {"long", {kRegBinary, std::string(3000, '\xAB')}},
      {"none", {kRegNone, "x"}},
      {"big number", {11, std::string("12345678")}},
      {"\xC3\xA4\xE6\xBC\xA2", Text("\xC3\xA4\xE6\xBC\xA2")}};
  for (const auto& [name, value] : kRows) Set(kUser, "Qx1\\a]b", name, value);
  Set(kUser, "Qx1\\\xC3\xA4", "v", Text("x"));
  RegistryPicture before, after;
  Picture(kUser, "Qx1", before);
  RegistryUndo undo;
  undo.AddTree(ports.registry, kUser, "Qx1");
  undo.Store(ports, own + "Backup\\");
  machine->RemoveRegistryTree(kUser, "Qx1");
  ASSERT_EQ(std::system(("reg import " + undo.path()).c_str()), 0);
  Picture(kUser, "Qx1", after);
  EXPECT_EQ(after, before);
}

}  // namespace
}  // namespace quellix
