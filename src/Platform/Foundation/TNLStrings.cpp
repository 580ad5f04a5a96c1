#include "Platform/Foundation/TNLStrings.h"

#include <algorithm>
#include <cctype>

namespace {

// Decodes one UTF-8 code point at `pos`; returns its length, or 0 when the bytes are not UTF-8.
size_t decodeCodePoint(std::string_view text, size_t pos, char32_t& codePoint) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(pos);
  size_t length = 0;
  if (lead < 0x80) {
    codePoint = lead;
    return 1;
  } else if ((lead & 0xE0) == 0xC0) {
    length = 2;
    codePoint = lead & 0x1F;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3;
    codePoint = lead & 0x0F;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4;
    codePoint = lead & 0x07;
  } else {
    return 0;
  }
  if (pos + length > text.size()) {
    return 0;
  }
  for (size_t i = 1; i < length; ++i) {
    if ((byte(pos + i) & 0xC0) != 0x80) {
      return 0;
    }
    codePoint = (codePoint << 6) | (byte(pos + i) & 0x3F);
  }
  static constexpr char32_t kMinimum[] = {0, 0, 0x80, 0x800, 0x10000};
  if (codePoint < kMinimum[length] || codePoint > 0x10FFFF ||
      (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
    return 0;
  }
  return length;
}

bool isLineBreak(char32_t c) {
  return c == 0x0A || c == 0x0B || c == 0x0C || c == 0x0D || c == 0x85 || c == 0x2028 ||
         c == 0x2029;
}

bool isBlank(char32_t c) {
  return c == 0x20 || c == 0x09 || c == 0xA0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) ||
         c == 0x202F || c == 0x205F || c == 0x3000;
}

template <class Predicate>
std::string trim(std::string_view text, Predicate shouldTrim) {
  size_t begin = 0;
  while (begin < text.size()) {
    char32_t c = 0;
    const size_t length = decodeCodePoint(text, begin, c);
    if (length == 0 || !shouldTrim(c)) {
      break;
    }
    begin += length;
  }
  size_t end = text.size();
  while (end > begin) {
    // Step back to the start of the last code point.
    size_t start = end - 1;
    while (start > begin && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80) {
      --start;
    }
    char32_t c = 0;
    const size_t length = decodeCodePoint(text, start, c);
    if (length == 0 || start + length != end || !shouldTrim(c)) {
      break;
    }
    end = start;
  }
  return std::string(text.substr(begin, end - begin));
}

}  // namespace

namespace TNLStrings {

std::string trimWhitespaceAndNewlines(std::string_view text) {
  return trim(text, [](char32_t c) { return isBlank(c) || isLineBreak(c); });
}

std::string trimWhitespace(std::string_view text) {
  return trim(text, isBlank);
}

std::string replaceAll(std::string_view text, std::string_view target,
                       std::string_view replacement) {
  if (target.empty()) {
    return std::string(text);
  }
  std::string result;
  result.reserve(text.size());
  size_t pos = 0;
  while (true) {
    const size_t found = text.find(target, pos);
    if (found == std::string_view::npos) {
      result.append(text.substr(pos));
      break;
    }
    result.append(text.substr(pos, found - pos));
    result.append(replacement);
    pos = found + target.size();
  }
  return result;
}

std::vector<std::string> split(std::string_view text, std::string_view separator) {
  std::vector<std::string> pieces;
  if (separator.empty()) {
    pieces.emplace_back(text);
    return pieces;
  }
  size_t pos = 0;
  while (true) {
    const size_t found = text.find(separator, pos);
    if (found == std::string_view::npos) {
      pieces.emplace_back(text.substr(pos));
      return pieces;
    }
    pieces.emplace_back(text.substr(pos, found - pos));
    pos = found + separator.size();
  }
}

std::vector<std::string> splitLines(std::string_view text) {
  std::vector<std::string> pieces;
  size_t pieceStart = 0;
  size_t pos = 0;
  while (pos < text.size()) {
    char32_t c = 0;
    size_t length = decodeCodePoint(text, pos, c);
    if (length == 0) {
      length = 1;  // not UTF-8: keep the byte in the piece
      c = 0;
    }
    if (isLineBreak(c)) {
      pieces.emplace_back(text.substr(pieceStart, pos - pieceStart));
      pieceStart = pos + length;
    }
    pos += length;
  }
  pieces.emplace_back(text.substr(pieceStart));
  return pieces;
}

std::string removeLineBreaks(std::string_view text) {
  std::string kept;
  kept.reserve(text.size());
  size_t pos = 0;
  while (pos < text.size()) {
    const auto byte = static_cast<unsigned char>(text[pos]);
    if (byte < 0x80) {  // most of any document: no decoding needed
      if (!isLineBreak(byte)) {
        kept.push_back(static_cast<char>(byte));
      }
      ++pos;
      continue;
    }
    char32_t c = 0;
    size_t length = decodeCodePoint(text, pos, c);
    if (length == 0) {
      length = 1;  // not UTF-8: the byte is kept
      c = 0;
    }
    if (!isLineBreak(c)) {
      kept.append(text.substr(pos, length));
    }
    pos += length;
  }
  return kept;
}

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

bool hasPrefix(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

bool hasSuffix(std::string_view text, std::string_view suffix) {
  return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

std::string toLower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

std::string percentEncode(std::string_view text, std::string_view keep) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string encoded;
  encoded.reserve(text.size());
  for (const char byte : text) {
    const auto c = static_cast<unsigned char>(byte);
    if (c < 0x80 && (std::isalnum(c) || keep.find(byte) != std::string_view::npos)) {
      encoded.push_back(byte);
    } else {
      encoded.push_back('%');
      encoded.push_back(kHex[c >> 4]);
      encoded.push_back(kHex[c & 0x0F]);
    }
  }
  return encoded;
}

bool percentDecode(std::string_view text, std::string& decoded) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      out.push_back(text[i]);
      continue;
    }
    if (i + 2 >= text.size() || !std::isxdigit(static_cast<unsigned char>(text[i + 1])) ||
        !std::isxdigit(static_cast<unsigned char>(text[i + 2]))) {
      return false;
    }
    out.push_back(static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16)));
    i += 2;
  }
  if (!isValidUTF8(out)) {
    return false;
  }
  decoded = std::move(out);
  return true;
}

bool isValidUTF8(std::string_view bytes) {
  size_t pos = 0;
  while (pos < bytes.size()) {
    char32_t c = 0;
    const size_t length = decodeCodePoint(bytes, pos, c);
    if (length == 0) {
      return false;
    }
    pos += length;
  }
  return true;
}

}  // namespace TNLStrings
