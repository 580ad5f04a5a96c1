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

  // Reads `text` as a URL the way a browser reads an address: blanks and controls around it are
  // dropped, tabs and line breaks inside it removed, and characters a URL cannot carry are
  // percent-encoded. nullopt for an empty text or an authority that is not a host name.
  static std::optional<std::string> parseURL(const std::string& text);
};
