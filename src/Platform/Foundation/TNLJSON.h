#pragma once

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "Platform/Foundation/TNLError.h"

// JSON as the library uses it: objects keep their document order.
using TNLJson = nlohmann::ordered_json;

// Helpers that behave like the platform's JSON serialiser.
namespace TNLJSON {

// Arrays and objects nested deeper than this are a decoding error.
inline constexpr size_t kMaxDepth = 256;

// Decodes bytes whose top level is an object or an array. Anything else (a bare string, number,
// literal, text that is not JSON, or nesting deeper than kMaxDepth) is a decoding error of the
// general domain, code 3840; the result is then null and `error` (when given) receives the
// error.
TNLJson parse(std::string_view bytes, TNLErrorPtr* error = nullptr);

// Compact ("{"a":1}") or pretty-printed (indented, one member per line) text. Strings that are not
// UTF-8 are written with replacement characters rather than failing.
std::string serialize(const TNLJson& value, bool pretty = false);

// The truth value of a value read as a boolean: true/false; numbers, non-zero is true; strings
// whose first character after leading blanks is Y, y, T, t or a digit 1 to 9; anything else false.
bool truthValue(const TNLJson& value);
bool truthValueOfString(std::string_view text);

// A member of an object, or nullptr when the value is not an object or lacks the member.
const TNLJson* member(const TNLJson& object, std::string_view key);

}  // namespace TNLJSON
