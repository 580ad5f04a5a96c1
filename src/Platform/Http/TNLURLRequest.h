#pragma once

#include <optional>
#include <string>

// A request as the library builds it: a URL, a method and an optional body, nothing else.
// `url` is empty (nullopt) when the caller's string could not be parsed as a URL; a task for such
// a request fails with the bad-URL code.
struct TNLURLRequest {
  std::optional<std::string> url;
  std::string method = "GET";
  std::optional<std::string> body;

  // Parses `text` as an absolute or relative URL reference (RFC 3986 characters, well-formed
  // percent escapes); nullopt when it is not one, as the platform's URL parser would refuse it.
  static std::optional<std::string> parseURL(const std::string& text);
};
