#pragma once

#include <optional>
#include <string>

#include "Ads/Macros/TNLMacros.h"

// Turns a URL template with macro tokens into the URL that is called. Stateless: make one per use.
class TNLUrlParser {
 public:
  // Replaces every token of the macro table, merged with `individualMacros` (which win), then
  // percent-encodes the whole text for a URL query. "%RAND%", "%TIME_STAMP%", "%DEVICE_ORI%" and
  // "%CONN_TYPE%" are computed afresh, once per call. Unknown tokens stay (their '%' encoded).
  std::string fillMacrosForUrl(const std::string& url,
                               const std::optional<TNLMacroDict>& individualMacros) const;
  // Replaces the table's tokens by their stored values; nothing computed, nothing encoded.
  std::optional<std::string> fillMacrosForString(const std::optional<std::string>& text) const;

  // A uniformly random integer from 0 to 4294967294.
  std::string createRandString() const;
  // Seconds since 1970 as a signed 32-bit number.
  std::string createTimeStampString() const;
  // "portrait" for portrait and upside down, "landscape" for every other orientation.
  std::string createOrientationString() const;

  // Every byte outside the characters a URL query allows (RFC 3986 unreserved and sub-delimiters,
  // ":", "@", "/", "?") as %XX with upper-case digits.
  static std::string percentEncodeForQuery(const std::string& text);
};
