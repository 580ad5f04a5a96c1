#include "Platform/Device/TNLLinuxSystem.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "Platform/Foundation/TNLStrings.h"

namespace TNLLinuxSystem {

namespace {

std::optional<std::string> environment(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr || *value == '\0') {
    return std::nullopt;
  }
  return std::string(value);
}

// os-release values follow shell quoting: "..." with backslash escapes, '...' literal, or bare.
std::string unquote(std::string_view value) {
  if (value.size() >= 2 && value.front() == '\'' && value.back() == '\'') {
    return std::string(value.substr(1, value.size() - 2));
  }
  if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
    value = value.substr(1, value.size() - 2);
  }
  std::string out;
  for (size_t i = 0; i < value.size(); ++i) {
    if (value[i] == '\\' && i + 1 < value.size()) {
      ++i;
    }
    out.push_back(value[i]);
  }
  return out;
}

}  // namespace

std::optional<std::string> readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    return std::nullopt;
  }
  std::ostringstream content;
  content << file.rdbuf();
  if (file.bad()) {
    return std::nullopt;
  }
  return content.str();
}

std::map<std::string, std::string> parseOSRelease(std::string_view text) {
  std::map<std::string, std::string> values;
  for (const auto& rawLine : TNLStrings::splitLines(text)) {
    const std::string line = TNLStrings::trimWhitespace(rawLine);
    if (line.empty() || line.front() == '#') {
      continue;
    }
    const auto equals = line.find('=');
    if (equals == std::string::npos || equals == 0) {
      continue;
    }
    values[line.substr(0, equals)] = unquote(std::string_view(line).substr(equals + 1));
  }
  return values;
}

std::map<std::string, std::string> osRelease() {
  for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
    if (const auto text = readFile(path)) {
      return parseOSRelease(*text);
    }
  }
  return {};
}

std::string languageTag(std::string_view localeName) {
  const auto end = localeName.find_first_of(".@");
  std::string tag(localeName.substr(0, end));
  if (tag == "C" || tag == "POSIX") {
    return "";
  }
  std::replace(tag.begin(), tag.end(), '_', '-');
  return tag;
}

std::vector<std::string> preferredLanguages(const std::optional<std::string>& language,
                                            const std::optional<std::string>& lcAll,
                                            const std::optional<std::string>& lcMessages,
                                            const std::optional<std::string>& lang) {
  const std::optional<std::string> locale = lcAll ? lcAll : (lcMessages ? lcMessages : lang);
  std::vector<std::string> names;
  if (language && !language->empty() && locale && !languageTag(*locale).empty()) {
    names = TNLStrings::split(*language, ":");
  } else if (locale) {
    names.push_back(*locale);
  }
  std::vector<std::string> tags;
  for (const auto& name : names) {
    std::string tag = languageTag(name);
    if (!tag.empty() && std::find(tags.begin(), tags.end(), tag) == tags.end()) {
      tags.push_back(std::move(tag));
    }
  }
  if (tags.empty()) {
    tags.push_back("en");  // the C locale's messages are English
  }
  return tags;
}

std::vector<std::string> preferredLanguages() {
  return preferredLanguages(environment("LANGUAGE"), environment("LC_ALL"),
                            environment("LC_MESSAGES"), environment("LANG"));
}

}  // namespace TNLLinuxSystem
