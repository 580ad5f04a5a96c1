#include "Platform/Script/TNLJSString.h"

namespace {

// Decodes UTF-8, replacing every malformed sequence with U+FFFD, so that any bytes a server sends
// become a script the engine can at least try.
std::u16string utf16FromUTF8(const std::string& text) {
  std::u16string out;
  out.reserve(text.size());
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  const size_t size = text.size();
  size_t i = 0;
  while (i < size) {
    const unsigned char lead = bytes[i];
    char32_t code = 0xFFFD;
    size_t length = 1;
    if (lead < 0x80) {
      code = lead;
    } else if (lead >= 0xC2 && lead <= 0xF4) {
      const size_t needed = lead < 0xE0 ? 1 : (lead < 0xF0 ? 2 : 3);
      char32_t value = lead & (lead < 0xE0 ? 0x1F : (lead < 0xF0 ? 0x0F : 0x07));
      size_t taken = 0;
      while (taken < needed && i + 1 + taken < size && (bytes[i + 1 + taken] & 0xC0) == 0x80) {
        value = (value << 6) | (bytes[i + 1 + taken] & 0x3F);
        ++taken;
      }
      const bool overlong = (needed == 2 && value < 0x800) || (needed == 3 && value < 0x10000);
      const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
      if (taken == needed && !overlong && !surrogate && value <= 0x10FFFF) {
        code = value;
        length = 1 + needed;
      } else {
        length = 1 + taken;
      }
    }
    if (code >= 0x10000) {
      code -= 0x10000;
      out.push_back(static_cast<char16_t>(0xD800 + (code >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(code));
    }
    i += length;
  }
  return out;
}

void appendUTF8(std::string& out, char32_t code) {
  if (code < 0x80) {
    out.push_back(static_cast<char>(code));
  } else if (code < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (code >> 6)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else if (code < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (code >> 12)));
    out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (code >> 18)));
    out.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  }
}

}  // namespace

TNLJSString::TNLJSString(const std::string& text) {
  const std::u16string units = utf16FromUTF8(text);
  string_ =
      JSStringCreateWithCharacters(reinterpret_cast<const JSChar*>(units.data()), units.size());
}

TNLJSString::~TNLJSString() {
  if (string_ != nullptr) {
    JSStringRelease(string_);
  }
}

std::string TNLJSString::utf8() const {
  std::string out;
  if (string_ == nullptr) {
    return out;
  }
  const JSChar* units = JSStringGetCharactersPtr(string_);
  const size_t length = JSStringGetLength(string_);
  out.reserve(length);
  for (size_t i = 0; i < length; ++i) {
    const char16_t unit = units[i];
    const bool high = unit >= 0xD800 && unit <= 0xDBFF;
    if (high && i + 1 < length && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF) {
      appendUTF8(out, 0x10000 + ((char32_t(unit) - 0xD800) << 10) + (units[i + 1] - 0xDC00));
      ++i;
    } else if (unit >= 0xD800 && unit <= 0xDFFF) {
      appendUTF8(out, 0xFFFD);  // a lone surrogate
    } else {
      appendUTF8(out, unit);
    }
  }
  return out;
}
