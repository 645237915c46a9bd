#include "settings/keep_file.h"

#include <algorithm>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "settings/list_files.h"
#include "settings/path_check.h"

namespace quellix {
namespace {

constexpr std::string_view kSite = "site:";

bool IsHost(std::string_view text) {
  return !text.empty() && text.find_first_of(" /\\:*?@|") == text.npos &&
         !HasControlCharacters(text);
}

KeepLine Faulty(KeepLine line, std::string fault) {
  line.kind = KeepLine::kFault;
  line.fault = std::move(fault);
  return line;
}

KeepLine ParseSite(KeepLine line) {
  const std::string_view host = TrimBlanks(std::string_view(line.text).substr(kSite.size()));
  if (!IsHost(host)) return Faulty(std::move(line), Mark("No site is named: site:example.com."));
  line.kind = KeepLine::kSite;
  line.name = UpCase(host.starts_with('.') ? host.substr(1) : host);
  return line;
}

// Whether the line begins with a root key, and is then about the registry.
bool ParseKey(KeepLine& line) {
  const std::string_view text = line.text;
  const std::string_view first = text.substr(0, text.find_first_of("\\|"));
  const auto root = std::ranges::find_if(
      kRegistryRoots, [first](RegistryRoot each) { return EqualsNoCase(RootName(each), first); });
  if (root == std::end(kRegistryRoots)) return false;
  const size_t bar = text.find('|');
  const std::string_view key = WithoutBackslash(text.substr(0, bar));
  line.kind = bar == text.npos ? KeepLine::kKey : KeepLine::kValue;
  line.root = *root;
  line.name = key.substr(std::min(first.size() + 1, key.size()));
  if (bar != text.npos) line.value = text.substr(bar + 1);
  return true;
}

KeepLine ParsePath(KeepLine line, System& system) {
  line.name = ExpandEnvironment(system, line.text);
  if (line.name.empty())
    return Faulty(std::move(line), Mark("It names a variable that is not set."));
  const bool is_mask = line.name.find_first_of("*?") != line.name.npos;
  if (is_mask && !HasControlCharacters(line.name)) {
    const bool has_folder = line.name.find('\\') != line.name.npos;
    line.kind = has_folder ? KeepLine::kPathMask : KeepLine::kNameMask;
    return line;
  }
  std::string why = WhyNoPath(line.name);
  if (!why.empty()) return Faulty(std::move(line), std::move(why));
  line.kind = KeepLine::kPath;
  return line;
}

auto FindLine(std::vector<std::string>& lines, std::string_view line) {
  return std::ranges::find_if(lines, [line](const std::string& each) {
    return EqualsNoCase(TrimBlanks(each), TrimBlanks(line));
  });
}

}  // namespace

KeepLine ParseKeepLine(System& system, std::string_view text) {
  KeepLine line{.text = std::string(TrimBlanks(text))};
  if (line.text.empty() || line.text.starts_with(';')) return line;
  if (EqualsNoCase(std::string_view(line.text).substr(0, kSite.size()), kSite)) {
    return ParseSite(std::move(line));
  }
  return ParseKey(line) ? line : ParsePath(std::move(line), system);
}

std::vector<std::string> ReadKeepFile(const Machine& machine) {
  return ReadListFile(machine, kKeepFile);
}

std::string AddToKeepFile(const Machine& machine, std::string_view text) {
  KeepLine line = ParseKeepLine(machine.system, text);
  if (!line.fault.empty()) return Tr(line.fault);
  if (line.text.empty()) return Tr("Nothing is named.");
  std::vector<std::string> lines = ReadKeepFile(machine);
  if (FindLine(lines, text) != lines.end()) return {};
  lines.push_back(std::move(line.text));
  WriteListFile(machine, kKeepFile, lines);
  return {};
}

std::string RemoveFromKeepFile(const Machine& machine, std::string_view text) {
  std::vector<std::string> lines = ReadKeepFile(machine);
  const size_t before = lines.size();
  for (auto found = FindLine(lines, text); found != lines.end(); found = FindLine(lines, text)) {
    lines.erase(found);
  }
  if (lines.size() == before) return Tr("The keep list has no such line.");
  WriteListFile(machine, kKeepFile, lines);
  return {};
}

}  // namespace quellix
