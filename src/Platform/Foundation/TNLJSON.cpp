#include "Platform/Foundation/TNLJSON.h"

#include <algorithm>
#include <cctype>

namespace TNLJSON {

namespace {

// How deep the text nests arrays and objects, read without building anything: strings are
// skipped with their escapes, so brackets inside them do not count. Stops counting past `limit`.
size_t nestingDepth(std::string_view bytes, size_t limit) {
  size_t depth = 0;
  size_t deepest = 0;
  bool inString = false;
  for (size_t i = 0; i < bytes.size(); ++i) {
    const char c = bytes[i];
    if (inString) {
      if (c == '\\') {
        ++i;
      } else if (c == '"') {
        inString = false;
      }
    } else if (c == '"') {
      inString = true;
    } else if (c == '[' || c == '{') {
      deepest = std::max(deepest, ++depth);
      if (deepest > limit) {
        return deepest;
      }
    } else if ((c == ']' || c == '}') && depth > 0) {
      --depth;
    }
  }
  return deepest;
}

}  // namespace

TNLJson parse(std::string_view bytes, TNLErrorPtr* error) {
  const auto fail = [&](const std::string& reason) {
    if (error != nullptr) {
      *error = TNLError::make(TNLCocoaErrorDomain, TNLPropertyListReadCorruptError,
                              {{kTNLDebugDescriptionKey, reason}});
    }
    return TNLJson();
  };
  // Copying, converting and printing a value recurse once per level: deeper text is refused
  // before any of that happens.
  if (nestingDepth(bytes, kMaxDepth) > kMaxDepth) {
    return fail("JSON text nests deeper than " + std::to_string(kMaxDepth) + " levels.");
  }
  TNLJson value = TNLJson::parse(bytes.begin(), bytes.end(), nullptr, false);
  if (value.is_discarded()) {
    return fail(
        bytes.empty()
            ? "Unable to parse empty data."
            : "The data couldn\u2019t be read because it isn\u2019t in the correct format.");
  }
  if (!value.is_object() && !value.is_array()) {
    return fail(
        "JSON text did not start with array or object and option to allow fragments not set.");
  }
  if (error != nullptr) {
    *error = nullptr;
  }
  return value;
}

std::string serialize(const TNLJson& value, bool pretty) {
  return value.dump(pretty ? 2 : -1, ' ', false, TNLJson::error_handler_t::replace);
}

bool truthValueOfString(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t' || text[i] == '\n' ||
                             text[i] == '\r' || text[i] == '\f' || text[i] == '\v')) {
    ++i;
  }
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
    ++i;
  }
  while (i < text.size() && text[i] == '0') {
    ++i;  // leading zeros do not decide: "007" is true, "0" is false
  }
  if (i >= text.size()) {
    return false;
  }
  const char c = text[i];
  return c == 'Y' || c == 'y' || c == 'T' || c == 't' || (c >= '1' && c <= '9');
}

bool truthValue(const TNLJson& value) {
  if (value.is_boolean()) {
    return value.get<bool>();
  }
  if (value.is_number_integer()) {
    return value.get<long long>() != 0;
  }
  if (value.is_number_unsigned()) {
    return value.get<unsigned long long>() != 0;
  }
  if (value.is_number_float()) {
    return value.get<double>() != 0.0;
  }
  if (value.is_string()) {
    return truthValueOfString(value.get_ref<const std::string&>());
  }
  return false;
}

const TNLJson* member(const TNLJson& object, std::string_view key) {
  if (!object.is_object()) {
    return nullptr;
  }
  const auto it = object.find(std::string(key));
  return it == object.end() ? nullptr : &*it;
}

}  // namespace TNLJSON
