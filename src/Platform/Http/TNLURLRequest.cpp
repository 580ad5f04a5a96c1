#include "Platform/Http/TNLURLRequest.h"

#include <cctype>
#include <string_view>

#include "Platform/Foundation/TNLStrings.h"

namespace {

bool isSchemeChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '+' || c == '-' || c == '.';
}

// Characters that may stand in a host name or address literal (with an optional port).
bool isHostChar(char c) {
  static constexpr std::string_view kAllowed = "-._~!$&'()*+,;=%:[]";
  return std::isalnum(static_cast<unsigned char>(c)) || kAllowed.find(c) != std::string_view::npos;
}

// Besides letters and digits, what stays as it is in a URL; everything else is percent-encoded.
constexpr std::string_view kURLPunctuation = "-._~:/?#[]@!$&'()*+,;=%";

}  // namespace

std::optional<std::string> TNLURLRequest::parseURL(const std::string& text) {
  // Read as a browser reads a typed or copied address: blanks and control characters around it
  // are dropped and tabs and line breaks inside it removed, so that a URL set off by line breaks
  // in a document (a VAST ad tag, say) still loads.
  size_t begin = 0;
  size_t end = text.size();
  while (begin < end && static_cast<unsigned char>(text[begin]) <= 0x20) {
    ++begin;
  }
  while (end > begin && static_cast<unsigned char>(text[end - 1]) <= 0x20) {
    --end;
  }
  std::string cleaned;
  cleaned.reserve(end - begin);
  for (size_t i = begin; i < end; ++i) {
    if (text[i] != '\t' && text[i] != '\n' && text[i] != '\r') {
      cleaned.push_back(text[i]);
    }
  }
  if (cleaned.empty()) {
    return std::nullopt;
  }

  // An authority must be a well-formed host: "http://exa mple.com/" is no URL.
  const size_t colon = cleaned.find(':');
  size_t scheme = 0;
  while (scheme < cleaned.size() && isSchemeChar(cleaned[scheme])) {
    ++scheme;
  }
  if (colon != std::string::npos && colon == scheme && colon > 0 &&
      std::isalpha(static_cast<unsigned char>(cleaned[0])) &&
      cleaned.compare(colon + 1, 2, "//") == 0) {
    const size_t hostStart = colon + 3;
    const size_t hostEnd = cleaned.find_first_of("/?#", hostStart);
    std::string_view authority(cleaned);
    authority = authority.substr(
        hostStart, hostEnd == std::string::npos ? std::string::npos : hostEnd - hostStart);
    const size_t at = authority.rfind('@');
    const std::string_view host =
        at == std::string_view::npos ? authority : authority.substr(at + 1);
    if (host.empty()) {
      return std::nullopt;
    }
    for (const char c : host) {
      if (!isHostChar(c)) {
        return std::nullopt;
      }
    }
  }

  // Characters a URL cannot carry (blanks, quotes, braces, non-ASCII bytes) are percent-encoded.
  return TNLStrings::percentEncode(cleaned, kURLPunctuation);
}
