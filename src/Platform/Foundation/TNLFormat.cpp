#include "Platform/Foundation/TNLFormat.h"

#include <array>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <vector>

namespace {

std::string describeNumber(double number) {
  std::array<char, 64> buffer{};
  const auto [end, ec] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  if (ec != std::errc()) {
    return std::to_string(number);
  }
  return std::string(buffer.data(), end);
}

// Formats one value through the C library with the directive as written (flags, width, precision).
template <class T>
std::string cFormat(const std::string& spec, T value) {
  const int length = std::snprintf(nullptr, 0, spec.c_str(), value);
  if (length < 0) {
    throw TNLFormatError("cannot format directive " + spec);
  }
  std::vector<char> buffer(static_cast<size_t>(length) + 1);
  std::snprintf(buffer.data(), buffer.size(), spec.c_str(), value);
  return std::string(buffer.data(), static_cast<size_t>(length));
}

// Steps over the digits of a width or precision at `i`; more than kMaxFormatWidth is an error.
void skipNumber(std::string_view format, size_t& i, size_t directiveStart) {
  size_t value = 0;
  while (i < format.size() && std::isdigit(static_cast<unsigned char>(format[i]))) {
    value = value * 10 + static_cast<size_t>(format[i] - '0');
    if (value > kMaxFormatWidth) {
      throw TNLFormatError("Width or precision above " + std::to_string(kMaxFormatWidth) +
                           " in format directive " +
                           std::string(format.substr(directiveStart, i - directiveStart + 1)));
    }
    ++i;
  }
}

}  // namespace

std::string TNLFormatArg::describeJSON(const nlohmann::ordered_json& json) {
  if (json.is_null()) {
    return "(null)";
  }
  if (json.is_string()) {
    return json.get<std::string>();
  }
  return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

std::string TNLFormatArg::description() const {
  struct Visitor {
    std::string operator()(Null) const { return "(null)"; }
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(bool flag) const { return flag ? "1" : "0"; }
    std::string operator()(long long number) const { return std::to_string(number); }
    std::string operator()(unsigned long long number) const { return std::to_string(number); }
    std::string operator()(double number) const { return describeNumber(number); }
    std::string operator()(Pointer pointer) const { return cFormat("%p", pointer.address); }
  };
  return std::visit(Visitor{}, value_);
}

std::string TNLFormatArgs(std::string_view format, std::span<const TNLFormatArg> args) {
  std::string out;
  out.reserve(format.size() + 16);
  size_t next = 0;
  const auto take = [&](const std::string& directive) -> const TNLFormatArg& {
    if (next >= args.size()) {
      throw TNLFormatError("Not enough arguments for format directive " + directive);
    }
    return args[next++];
  };
  const auto mismatch = [](const std::string& directive) {
    return TNLFormatError("Argument does not fit format directive " + directive);
  };

  for (size_t i = 0; i < format.size(); ++i) {
    const char c = format[i];
    if (c != '%') {
      out.push_back(c);
      continue;
    }
    const size_t start = i++;
    // flags
    while (i < format.size() &&
           std::string_view("-+ #0'").find(format[i]) != std::string_view::npos) {
      ++i;
    }
    // width and precision (no '*'), each capped: a format may carry text from elsewhere
    skipNumber(format, i, start);
    if (i < format.size() && format[i] == '.') {
      ++i;
      skipNumber(format, i, start);
    }
    // length modifiers, dropped: every value is passed at full width
    const size_t lengthStart = i;
    while (i < format.size() &&
           std::string_view("hlqLzjt").find(format[i]) != std::string_view::npos) {
      ++i;
    }
    if (i >= format.size()) {
      throw TNLFormatError("Incomplete format directive at end of " + std::string(format));
    }
    const char conversion = format[i];
    const std::string directive(format.substr(start, i - start + 1));
    const std::string flagsAndWidth(format.substr(start, lengthStart - start));

    switch (conversion) {
      case '%':
        out.push_back('%');
        break;
      case '@':
        out += take(directive).description();
        break;
      case 'd':
      case 'i':
      case 'u':
      case 'x':
      case 'X':
      case 'o':
      case 'c': {
        const auto& value = take(directive).value_;
        const bool isSigned = conversion == 'd' || conversion == 'i';
        long long signedValue = 0;
        if (const auto* s = std::get_if<long long>(&value)) {
          signedValue = *s;
        } else if (const auto* u = std::get_if<unsigned long long>(&value)) {
          signedValue = static_cast<long long>(*u);
        } else if (const auto* b = std::get_if<bool>(&value)) {
          signedValue = *b ? 1 : 0;
        } else if (const auto* text = std::get_if<std::string>(&value);
                   text && conversion == 'c' && text->size() == 1) {
          signedValue = static_cast<unsigned char>((*text)[0]);
        } else {
          throw mismatch(directive);
        }
        if (conversion == 'c') {
          out += cFormat(flagsAndWidth + "c", static_cast<int>(signedValue));
        } else if (isSigned) {
          out += cFormat(flagsAndWidth + "lld", signedValue);
        } else {
          out += cFormat(flagsAndWidth + "ll" + conversion,
                         static_cast<unsigned long long>(signedValue));
        }
        break;
      }
      case 'f':
      case 'F':
      case 'e':
      case 'E':
      case 'g':
      case 'G':
      case 'a':
      case 'A': {
        const auto& value = take(directive).value_;
        double number = 0;
        if (const auto* d = std::get_if<double>(&value)) {
          number = *d;
        } else if (const auto* s = std::get_if<long long>(&value)) {
          number = static_cast<double>(*s);
        } else if (const auto* u = std::get_if<unsigned long long>(&value)) {
          number = static_cast<double>(*u);
        } else {
          throw mismatch(directive);
        }
        out += cFormat(flagsAndWidth + conversion, number);
        break;
      }
      case 's': {
        const auto& value = take(directive).value_;
        if (const auto* text = std::get_if<std::string>(&value)) {
          out += cFormat(flagsAndWidth + "s", text->c_str());
        } else if (std::holds_alternative<TNLFormatArg::Null>(value)) {
          out += cFormat(flagsAndWidth + "s", "(null)");
        } else {
          throw mismatch(directive);
        }
        break;
      }
      case 'p': {
        const auto& value = take(directive).value_;
        if (const auto* pointer = std::get_if<TNLFormatArg::Pointer>(&value)) {
          out += cFormat(flagsAndWidth + "p", pointer->address);
        } else if (std::holds_alternative<TNLFormatArg::Null>(value)) {
          out += cFormat(flagsAndWidth + "p", static_cast<const void*>(nullptr));
        } else {
          throw mismatch(directive);
        }
        break;
      }
      default:
        throw TNLFormatError("Unknown format directive " + directive);
    }
  }
  return out;
}
