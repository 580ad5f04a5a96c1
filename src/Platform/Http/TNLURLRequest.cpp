#include "Platform/Http/TNLURLRequest.h"

#include <cctype>
#include <string_view>

std::optional<std::string> TNLURLRequest::parseURL(const std::string& text) {
  if (text.empty()) {
    return std::nullopt;
  }
  static constexpr std::string_view kAllowed = "-._~:/?#[]@!$&'()*+,;=";
  for (size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c == '%') {
      if (i + 2 >= text.size() || !std::isxdigit(static_cast<unsigned char>(text[i + 1])) ||
          !std::isxdigit(static_cast<unsigned char>(text[i + 2]))) {
        return std::nullopt;
      }
      i += 2;
      continue;
    }
    if (c >= 0x80 ||
        !(std::isalnum(c) || kAllowed.find(static_cast<char>(c)) != std::string_view::npos)) {
      return std::nullopt;
    }
  }
  return text;
}
