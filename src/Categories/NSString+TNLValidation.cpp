#include "Categories/NSString+TNLValidation.h"

#include "Platform/Foundation/TNLStrings.h"

bool isNotEmpty(std::string_view text) {
  return !TNLStrings::trimWhitespaceAndNewlines(text).empty();
}

bool isNotEmpty(const std::optional<std::string>& text) {
  return text && isNotEmpty(std::string_view(*text));
}
