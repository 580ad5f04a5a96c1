#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What Linux tells about the system and the user's languages.
namespace TNLLinuxSystem {

// The whole content of a (small) file; null when it cannot be read.
std::optional<std::string> readFile(const std::string& path);

// The KEY=value lines of an os-release file, values unquoted and unescaped.
std::map<std::string, std::string> parseOSRelease(std::string_view text);
// This machine's os-release (/etc/os-release, else /usr/lib/os-release); empty when neither exists.
std::map<std::string, std::string> osRelease();

// A locale name as a language tag: "en_US.UTF-8@euro" gives "en-US"; "C" and "POSIX" give "".
std::string languageTag(std::string_view localeName);

// The user's languages, most preferred first, from the locale settings as gettext reads them:
// LC_ALL, else LC_MESSAGES, else LANG names the locale; LANGUAGE, a colon-separated list,
// takes precedence unless that locale is "C". Never empty: "en" when nothing names a language.
std::vector<std::string> preferredLanguages(const std::optional<std::string>& language,
                                            const std::optional<std::string>& lcAll,
                                            const std::optional<std::string>& lcMessages,
                                            const std::optional<std::string>& lang);
// The same for this process's environment.
std::vector<std::string> preferredLanguages();

}  // namespace TNLLinuxSystem
