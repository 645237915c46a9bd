// Addresses of favorites, asked for on the web: what came of each.

#include "browser_tools/favorites.h"
#include "support/test_machine.h"
#include "support/web_server.h"

namespace quellix {
namespace {

struct FavoritesAskedTest : WebServerTest {
  // What came of each address, in their order.
  Names Ask(const std::vector<std::string>& addresses) {
    Names answers(addresses.size());
    AskAddresses(*http, machine->machine().system, addresses,
                 [&](size_t index, const AddressAnswer& answer) {
                   answers[index] = std::string(AnswerName(answer.state)) + ": " + answer.text;
                 },
                 {});
    return answers;
  }
  std::unique_ptr<TestMachine> machine = TestMachine::Create();
};

TEST_F(FavoritesAskedTest, EachAnswerIsToldFromTheOthers) {
  const std::pair<std::string, std::string> kRows[] = {
      {At("/ok"), "answers: it answers"},
      {At("/get"), "answers: it answers"},
      {At("/huge"), "answers: it answers"},
      {At("/claim"), "answers: it answers"},
      {At("/hops/5"), "answers: it answers"},
      {At("/hops/6"), "unreachable: it leads on and on"},
      {At("/moved/ok"), "moved: it has moved to " + At("/ok")},
      {At("/moved/hops/1"), "answers: it answers"},
      {At("/moved/status/404"), "gone: the page is gone (404)"},
      {At("/moved/status/500"), "unreachable: the server has an error (500)"},
      {At("/status/404"), "gone: the page is gone (404)"},
      {At("/status/410"), "gone: the page is gone (410)"},
      {At("/status/403"), "answers: it lets nobody in unknown (403)"},
      {At("/status/500"), "unreachable: the server has an error (500)"},
      {At("/loop"), "unreachable: it leads on and on"},
      {At("/to//status/404"), "unreachable: it leads to a page that is not there (404)"},
      {At("/to/file:///etc/passwd"), "unreachable: it leads to what is not opened from here"},
      {At("/to/javascript:alert(1)"), "unreachable: it leads to what is not opened from here"},
      {Address("QUELLIX_CLOSED_PORT", "/"), "unreachable: the server cannot be reached"},
      {"http://nobody.invalid/", "unreachable: the server's name is not known"},
      {"file:///etc/hostname", ""},
      {"javascript:alert(1)", ""},
      {"", ""},
  };
  std::vector<std::string> addresses;
  for (const auto& row : kRows) addresses.push_back(row.first);
  const Names answers = Ask(addresses);
  for (size_t i = 0; i < answers.size(); ++i)
    EXPECT_EQ(answers[i], kRows[i].second) << addresses[i];
}

// What another server leads to on this machine is not asked for.
TEST_F(FavoritesAskedTest, NoServerHasWhatIsNearAskedFor) {
  http = OpenHttp({.proxy = Address("QUELLIX_OPEN_PROXY_PORT", "")});
  const char* const kNear = "unreachable: it leads to this machine or its network";
  const std::pair<std::string, std::string> kRows[] = {
      {"http://far.example/ok", "answers: it answers"},
      {"http://far.example/to/http://other.example/ok", "answers: it answers"},
      {"http://far.example/moved/ok", "moved: it has moved to http://far.example/ok"},
      {"http://far.example/to/" + At("/ok"), kNear},
      {"http://far.example/to/http:" + std::string("//192.168.0.1/"), kNear},
      {"http://far.example/to/http:" + std::string("//router/"), kNear},
      {"http://far.example/moved/to/" + At("/ok"), kNear},
  };
  std::vector<std::string> addresses;
  for (const auto& row : kRows) addresses.push_back(row.first);
  const Names answers = Ask(addresses);
  for (size_t i = 0; i < answers.size(); ++i)
    EXPECT_EQ(answers[i], kRows[i].second) << addresses[i];
}

TEST_F(FavoritesAskedTest, AStopAsksForNoMore) {
  std::vector<std::string> addresses(100, At("/hang"));
  int found = 0;
  AskAddresses(
      *http, machine->machine().system, addresses, [&](size_t, const AddressAnswer&) { ++found; },
      [](const Progress&) { return true; });
  EXPECT_EQ(found, 0);
}

}  // namespace
}  // namespace quellix
