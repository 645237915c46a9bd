#include "browsers/firefox_databases.h"

#include <algorithm>

namespace quellix {
namespace {

constexpr DatabaseStep kCookieList[] = {
    {"SELECT ltrim(host, '.'), 1, length(name) + length(value) FROM moz_cookies"}};
constexpr DatabaseStep kCookieSteps[] = {{"DELETE FROM moz_cookies WHERE goes(ltrim(host, '.'))"}};

constexpr DatabaseStep kFormList[] = {
    {"SELECT 'form entries', count(*), sum(length(fieldname) + length(value)) "
     "FROM moz_formhistory"}};
constexpr DatabaseStep kFormSteps[] = {
    {"DELETE FROM moz_formhistory"},
    {"DELETE FROM moz_history_to_sources", "moz_history_to_sources"},
    {"DELETE FROM moz_sources", "moz_sources"}};

// Visits of the kind 7 are downloads, and belong to their list.
constexpr DatabaseStep kHistoryList[] = {
    {"SELECT 'history', count(*), 0 FROM moz_historyvisits WHERE visit_type IS NOT 7"},
    {"SELECT 'history', count(*), sum(length(url)) FROM moz_places WHERE foreign_count = 0 "
     "AND id NOT IN (SELECT fk FROM moz_bookmarks WHERE fk IS NOT NULL) "
     "AND id NOT IN (SELECT place_id FROM moz_historyvisits WHERE visit_type = 7) "
     "AND id NOT IN (SELECT place_id FROM moz_annos)"},
    {"SELECT 'history', count(*), sum(length(input)) FROM moz_inputhistory"},
    {"SELECT 'history', count(*), 0 FROM moz_places_metadata", "moz_places_metadata"},
    {"SELECT 'history', count(*), sum(length(terms)) FROM moz_places_metadata_search_queries",
     "moz_places_metadata_search_queries"}};
// What a bookmark or a keyword stands for stays, and forgets that it was visited.
constexpr DatabaseStep kHistorySteps[] = {
    {"DELETE FROM moz_historyvisits WHERE visit_type IS NOT 7"},
    {"DELETE FROM moz_inputhistory"},
    {"DELETE FROM moz_places_metadata", "moz_places_metadata"},
    {"DELETE FROM moz_places_metadata_search_queries", "moz_places_metadata_search_queries"},
    {"DELETE FROM moz_previews_tombstones", "moz_previews_tombstones"},
    {"DELETE FROM moz_places WHERE foreign_count = 0 "
     "AND id NOT IN (SELECT fk FROM moz_bookmarks WHERE fk IS NOT NULL) "
     "AND id NOT IN (SELECT place_id FROM moz_historyvisits) "
     "AND id NOT IN (SELECT place_id FROM moz_annos WHERE anno_attribute_id IN "
     "(SELECT id FROM moz_anno_attributes WHERE name LIKE 'downloads/%'))"},
    {"DELETE FROM moz_annos WHERE place_id NOT IN (SELECT id FROM moz_places)"},
    {"UPDATE moz_places SET visit_count = 0, typed = 0, frecency = -1, last_visit_date = "
     "(SELECT max(visit_date) FROM moz_historyvisits WHERE place_id = moz_places.id)"},
    {"UPDATE moz_places SET recalc_frecency = 1", "moz_places.recalc_frecency"},
    {"DELETE FROM moz_origins WHERE id NOT IN "
     "(SELECT origin_id FROM moz_places WHERE origin_id IS NOT NULL)",
     "moz_origins"}};

constexpr DatabaseStep kDownloadList[] = {
    {"SELECT 'list of downloads', count(*), sum(length(content)) FROM moz_annos "
     "WHERE anno_attribute_id IN "
     "(SELECT id FROM moz_anno_attributes WHERE name LIKE 'downloads/%')"},
    {"SELECT 'list of downloads', count(*), 0 FROM moz_historyvisits WHERE visit_type = 7"}};
// First the pages that only downloads have visited.
constexpr DatabaseStep kDownloadSteps[] = {
    {"DELETE FROM moz_places WHERE id IN (SELECT place_id FROM moz_historyvisits "
     "WHERE visit_type = 7 UNION SELECT place_id FROM moz_annos WHERE anno_attribute_id IN "
     "(SELECT id FROM moz_anno_attributes WHERE name LIKE 'downloads/%')) "
     "AND foreign_count = 0 "
     "AND id NOT IN (SELECT fk FROM moz_bookmarks WHERE fk IS NOT NULL) "
     "AND id NOT IN (SELECT place_id FROM moz_historyvisits WHERE visit_type IS NOT 7)"},
    {"DELETE FROM moz_annos WHERE anno_attribute_id IN "
     "(SELECT id FROM moz_anno_attributes WHERE name LIKE 'downloads/%')"},
    {"DELETE FROM moz_annos WHERE place_id NOT IN (SELECT id FROM moz_places)"},
    {"DELETE FROM moz_historyvisits WHERE visit_type = 7"},
    {"DELETE FROM moz_inputhistory WHERE place_id NOT IN (SELECT id FROM moz_places)"},
    {"UPDATE moz_places SET last_visit_date = "
     "(SELECT max(visit_date) FROM moz_historyvisits WHERE place_id = moz_places.id)"},
    {"DELETE FROM moz_origins WHERE id NOT IN "
     "(SELECT origin_id FROM moz_places WHERE origin_id IS NOT NULL)",
     "moz_origins"}};

// An icon of a whole host belongs to no page of its own.
constexpr DatabaseStep kIconList[] = {
    {"SELECT 'icons of visited pages', count(*), sum(length(page_url)) FROM moz_pages_w_icons "
     "WHERE NOT is_known_page(page_url)"},
    {"SELECT 'icons of visited pages', count(*), sum(length(data)) FROM moz_icons "
     "WHERE root = 1 AND NOT is_known_host(icon_url)"}};
constexpr DatabaseStep kIconSteps[] = {
    {"DELETE FROM moz_icons_to_pages WHERE page_id IN "
     "(SELECT id FROM moz_pages_w_icons WHERE NOT is_known_page(page_url))"},
    {"DELETE FROM moz_pages_w_icons WHERE NOT is_known_page(page_url)"},
    {"DELETE FROM moz_icons WHERE CASE WHEN root = 1 THEN NOT is_known_host(icon_url) "
     "ELSE id NOT IN (SELECT icon_id FROM moz_icons_to_pages) END"}};

// "moc.elpmaxe.:https:443"
constexpr DatabaseStep kStorageList[] = {
    {"SELECT site_of(originKey), 1, length(value) FROM webappsstore2 "
     "WHERE originKey LIKE '%:http%'"}};
constexpr DatabaseStep kStorageSteps[] = {
    {"DELETE FROM webappsstore2 WHERE originKey LIKE '%:http%' AND goes(site_of(originKey))"}};

std::string SiteOfKey(std::string_view key) {
  std::string site(key.substr(0, key.find(':')));
  if (site.ends_with('.')) site.pop_back();
  std::ranges::reverse(site);
  return site;
}

}  // namespace

DatabaseJob FirefoxCookies() {
  return {.list = kCookieList, .is_by_site = true, .steps = kCookieSteps};
}
DatabaseJob FirefoxForms() { return {.list = kFormList, .steps = kFormSteps}; }
DatabaseJob FirefoxHistory() { return {.list = kHistoryList, .steps = kHistorySteps}; }
DatabaseJob FirefoxDownloads() { return {.list = kDownloadList, .steps = kDownloadSteps}; }

DatabaseJob FirefoxOldStorage() {
  return {.list = kStorageList,
          .is_by_site = true,
          .steps = kStorageSteps,
          .add_functions = [](Database& database) { database.AddText("site_of", SiteOfKey); }};
}

std::string_view HostOf(std::string_view url) {
  const size_t start = url.find("://");
  if (start == url.npos) return {};
  std::string_view host = url.substr(start + 3);
  host = host.substr(0, host.find_first_of("/?#"));
  host.remove_prefix(std::min(host.find('@') + 1, host.size()));
  return host.substr(0, host.find(':'));
}

KnownPages ReadKnownPages(Folder& profile, std::string_view shown) {
  KnownPages known;
  Database places(profile, "places.sqlite", shown, Database::Use::kLook);
  places.ForEach("SELECT url FROM moz_places", [&known](const Database::Row& row) {
    known.pages.emplace(row.Text(0));
    known.hosts.emplace(HostOf(row.Text(0)));
  });
  return known;
}

DatabaseJob FirefoxIcons(const KnownPages& known) {
  const auto add = [&known](Database& database) {
    database.AddTest("is_known_page",
                     [&known](std::string_view url) { return known.pages.contains(url); });
    database.AddTest("is_known_host", [&known](std::string_view url) {
      const size_t start = url.find("://");
      return known.hosts.contains(start == url.npos ? url.substr(0, url.find('/')) : HostOf(url));
    });
  };
  return {.list = kIconList, .steps = kIconSteps, .add_functions = add};
}

}  // namespace quellix
