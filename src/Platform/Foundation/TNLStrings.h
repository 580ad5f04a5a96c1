#pragma once

#include <string>
#include <string_view>
#include <vector>

// Small string operations with the platform's semantics (substring search, replacement of every
// occurrence, trimming of white space and line breaks including the Unicode ones).
namespace TNLStrings {

// Removes white space and line breaks (ASCII and Unicode separators) from both ends.
std::string trimWhitespaceAndNewlines(std::string_view text);
// Removes only blanks (spaces, tabs and Unicode space separators) from both ends.
std::string trimWhitespace(std::string_view text);

// Replaces every non-overlapping occurrence of `target`, left to right. An empty target changes
// nothing.
std::string replaceAll(std::string_view text, std::string_view target,
                       std::string_view replacement);

// Splits at every occurrence of `separator`; "a&&b" gives {"a", "", "b"}, "" gives {""}.
std::vector<std::string> split(std::string_view text, std::string_view separator);

// Splits at every line-break character (LF, CR, VT, FF, NEL, LS, PS); CR LF counts as two.
std::vector<std::string> splitLines(std::string_view text);
// The text with every line break that splitLines splits at taken out.
std::string removeLineBreaks(std::string_view text);

bool contains(std::string_view text, std::string_view part);
bool hasPrefix(std::string_view text, std::string_view prefix);
bool hasSuffix(std::string_view text, std::string_view suffix);

std::string toLower(std::string_view text);

// Percent-encodes every byte except ASCII letters, digits and the characters of `keep`, as "%"
// and two upper-case hexadecimal digits.
std::string percentEncode(std::string_view text, std::string_view keep);

// Percent-decodes; returns false when an escape is malformed or the result is not UTF-8.
bool percentDecode(std::string_view text, std::string& decoded);

// True when the bytes form valid UTF-8.
bool isValidUTF8(std::string_view bytes);

}  // namespace TNLStrings
