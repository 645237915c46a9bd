#include "platform/url.h"
#include "support/holds.h"

namespace quellix {
namespace {

std::string Parts(std::string_view address) {
  const auto url = ParseUrl(address);
  if (!url) return "none";
  return url->scheme + "|" + url->user_info + "|" + url->host + "|" + std::to_string(url->port) +
         "|" + url->path + "|" + url->query + "|" + url->fragment;
}

TEST(UrlTest, AnAddressIsTakenApart) {
  const std::pair<std::string, const char*> kRows[] = {
      {"http://a.example", "http||a.example|0|||"},
      {"  HTTPS://A.Example:8443/P?q#f ", "https||a.example|8443|/P|?q|#f"},
      {"http://me:pw@a.example/", "http|me:pw|a.example|0|/||"},
      {"http://a@b@c.example/", "http|a@b|c.example|0|/||"},
      {"http://a.example?q=/x#/y", "http||a.example|0||?q=/x|#/y"},
      {"http://[::1]:80/", "http||::1|80|/||"},
      {"http://a.example:/", "http||a.example|0|/||"},
      {"ftp://a.example/x", "ftp||a.example|0|/x||"},
      {"http://\xC3\xBC.example/\xC3\xBC", "http||\xC3\xBC.example|0|/\xC3\xBC||"},
      {"", "none"},
      {"http:", "none"},
      {"http://", "none"},
      {"http:///path", "none"},
      {"http://example b/", "none"},
      {"http://a.example/\x01", "none"},
      {"http://a.example/\n", "none"},
      {"http://a.example:0/", "none"},
      {"http://a.example:65536/", "none"},
      {"http://a.example:8x/", "none"},
      {"http://[::1/", "none"},
      {"http://[xyz]/", "none"},
      {"http://example..b/", "none"},
      {"http://example\\b/", "none"},
      {"www.a.example", "none"},
      {"javascript:alert(1)", "none"},
      {"1http://a.example", "none"},
  };
  for (const auto& [address, parts] : kRows) EXPECT_EQ(Parts(address), parts) << address;
}

TEST(UrlTest, OnlyWhatTheServerNeedsIsAskedFor) {
  EXPECT_EQ(RequestText(*ParseUrl("http://me:pw@A.example:81?q#f")), "http://a.example:81/?q");
  EXPECT_EQ(RequestText(*ParseUrl("http://[::1]/\xC3\xBC%20")), "http://[::1]/%C3%BC%20");
}

TEST(UrlTest, AReferenceLeadsOnFromItsPage) {
  const Url base = *ParseUrl("https://a.example:81/x/y?q#f");
  const std::pair<const char*, const char*> kRows[] = {
      {"http://c.example/e", "http://c.example/e"}, {"//c.example/e", "https://c.example/e"},
      {"/e?f", "https://a.example:81/e?f"},         {"e", "https://a.example:81/x/e"},
      {"?z", "https://a.example:81/x/y?z"},         {"", "https://a.example:81/x/y?q"},
      {"#z", "https://a.example:81/x/y?q"},
  };
  for (const auto& [reference, leads_to] : kRows)
    EXPECT_EQ(RequestText(Resolve(base, reference).value_or(Url{})), leads_to) << reference;
  EXPECT_FALSE(Resolve(base, "javascript:alert(1)"));
  EXPECT_FALSE(Resolve(base, "http://"));
  EXPECT_EQ(RequestText(*Resolve(*ParseUrl("http://a.example"), "e")), "http://a.example/e");
}

TEST(UrlTest, WhatMayBeNearIsKnownByAnySpelling) {
  for (const char* const host :
       {"127.0.0.1",   "127.1",      "2130706433", "0x7f000001",   "0.0.0.0",
        "010.0.0.1",   "10.1.2.3",   "172.16.0.1", "172.31.255.1", "192.168.1.1",
        "169.254.1.1", "100.64.0.1", "224.0.0.1",  "[::1]",        "[::ffff:127.0.0.1]",
        "[fe80::1]",   "[fd00::1]",  "localhost",  "localhost.",   "a.localhost",
        "printer",     "nas.local",  "router.lan", "1.2.3",        "1.2.3.256"})
    EXPECT_TRUE(MayBeNear(*ParseUrl("http://" + std::string(host) + "/"))) << host;
  for (const char* const host : {"a.example", "8.8.8.8", "172.15.0.1", "172.32.0.1", "192.167.1.1",
                                 "100.63.0.1", "[2001:db8::1]", "1a.example", "10.example"})
    EXPECT_FALSE(MayBeNear(*ParseUrl("http://" + std::string(host) + "/"))) << host;
}

TEST(UrlTest, ThisMachineIsKnownByItsNumbers) {
  for (const char* const host : {"127.0.0.1", "127.9.8.7", "[::1]", "localhost", "LOCALHOST"})
    EXPECT_TRUE(IsThisMachine(*ParseUrl("http://" + std::string(host) + "/"))) << host;
  for (const char* const host :
       {"127.0.0.1.evil.example", "localhost.evil.example", "128.0.0.1", "127.0.0", "127.0.0.256",
        "127.0.0.1x", "[::2]", "a.localhost", "0.0.0.0"})
    EXPECT_FALSE(IsThisMachine(*ParseUrl("http://" + std::string(host) + "/"))) << host;
}

}  // namespace
}  // namespace quellix
