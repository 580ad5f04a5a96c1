#pragma once

#include <optional>
#include <string>
#include <string_view>

// A string is not empty when something other than white space and line breaks is left after
// trimming both ends. A missing string is empty.
bool isNotEmpty(std::string_view text);
inline bool isNotEmpty(const std::string& text) {
  return isNotEmpty(std::string_view(text));
}
inline bool isNotEmpty(const char* text) {
  return text != nullptr && isNotEmpty(std::string_view(text));
}
bool isNotEmpty(const std::optional<std::string>& text);
