#include <gtest/gtest.h>

#include <vector>

#include "app/nearest_language.h"

namespace quellix {
namespace {

TEST(NearestLanguage, IsTheDearestThatIsKnown) {
  const std::vector<std::string> known{"DE", "ES", "JA", "PT_BR", "ZH_CN"};
  const std::tuple<const char*, std::vector<std::string>, const char*> kRows[] = {
      {"as it is", {"ja"}, "JA"},
      {"with its country", {"ja-JP", "de"}, "JA"},
      {"of another country", {"de-AT"}, "DE"},
      {"known of one country only", {"pt-PT"}, "PT_BR"},
      {"that country's own", {"pt-BR"}, "PT_BR"},
      {"without its country", {"pt"}, "PT_BR"},
      {"Chinese of China", {"zh-Hans-CN"}, "ZH_CN"},
      {"Chinese of Singapore", {"zh-SG"}, "ZH_CN"},
      {"Chinese in the other script", {"zh-TW"}, ""},
      {"the script named", {"zh-Hant", "es"}, "ES"},
      {"the second is known", {"nl-NL", "es-MX"}, "ES"},
      {"English is known", {"en-GB", "de"}, ""},
      {"none is known", {"nl", "fi"}, ""},
      {"a name that begins alike", {"dewa"}, ""},
      {"nothing is wanted", {}, ""}};
  for (const auto& [name, wanted, nearest] : kRows)
    EXPECT_EQ(NearestLanguage(wanted, known), nearest) << name;
  EXPECT_TRUE(IsSameLanguage("pt_BR", "PT-br"));
  EXPECT_FALSE(IsSameLanguage("pt_BR", "pt"));
}

}  // namespace
}  // namespace quellix
