#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

#include <nlohmann/json.hpp>

#include "Platform/Foundation/TNLError.h"

// An object that can describe itself for "%@".
class TNLDescribable {
 public:
  virtual ~TNLDescribable() = default;
  virtual std::string description() const = 0;
};

// Raised when a format string cannot be filled: too few arguments, an argument of the wrong kind
// for its directive, or a malformed directive.
class TNLFormatError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One argument of a format string. "%@" accepts every kind and prints its description (null
// prints "(null)"); the printf directives accept the kinds that C would.
class TNLFormatArg {
 public:
  struct Null {};
  struct Pointer {
    const void* address;
  };

  TNLFormatArg() : value_(Null{}) {}
  TNLFormatArg(std::nullptr_t) : value_(Null{}) {}
  TNLFormatArg(const char* text) : value_(text ? Value(std::string(text)) : Value(Null{})) {}
  TNLFormatArg(std::string text) : value_(std::move(text)) {}
  TNLFormatArg(std::string_view text) : value_(std::string(text)) {}
  TNLFormatArg(const std::optional<std::string>& text)
      : value_(text ? Value(*text) : Value(Null{})) {}
  TNLFormatArg(bool flag) : value_(flag) {}
  TNLFormatArg(char c) : value_(static_cast<long long>(c)) {}
  template <class T, std::enable_if_t<std::is_integral_v<T> && std::is_signed_v<T> &&
                                          !std::is_same_v<T, bool> && !std::is_same_v<T, char>,
                                      int> = 0>
  TNLFormatArg(T number) : value_(static_cast<long long>(number)) {}
  template <class T, std::enable_if_t<std::is_integral_v<T> && std::is_unsigned_v<T> &&
                                          !std::is_same_v<T, bool>,
                                      int> = 0>
  TNLFormatArg(T number) : value_(static_cast<unsigned long long>(number)) {}
  TNLFormatArg(double number) : value_(number) {}
  TNLFormatArg(float number) : value_(static_cast<double>(number)) {}
  TNLFormatArg(Pointer pointer) : value_(pointer) {}
  TNLFormatArg(const nlohmann::ordered_json& json) : value_(describeJSON(json)) {}
  TNLFormatArg(const std::shared_ptr<const TNLError>& error)
      : value_(error ? Value(error->description()) : Value(Null{})) {}
  TNLFormatArg(const std::shared_ptr<TNLError>& error)
      : TNLFormatArg(std::shared_ptr<const TNLError>(error)) {}
  TNLFormatArg(const std::exception& exception) : value_(std::string(exception.what())) {}
  TNLFormatArg(const TNLDescribable& object) : value_(object.description()) {}
  template <class T, std::enable_if_t<std::is_base_of_v<TNLDescribable, T>, int> = 0>
  TNLFormatArg(const std::shared_ptr<T>& object)
      : value_(object ? Value(object->description()) : Value(Null{})) {}

  // The description that "%@" prints.
  std::string description() const;

 private:
  friend std::string TNLFormatArgs(std::string_view, std::span<const TNLFormatArg>);
  using Value =
      std::variant<Null, std::string, bool, long long, unsigned long long, double, Pointer>;
  static std::string describeJSON(const nlohmann::ordered_json& json);

  Value value_;
};

// The widest field, and the longest precision, that a directive may ask for.
inline constexpr size_t kMaxFormatWidth = 4096;

// Fills `format` with `args`. Throws TNLFormatError when the arguments do not fit the directives
// or a width or precision passes kMaxFormatWidth.
std::string TNLFormatArgs(std::string_view format, std::span<const TNLFormatArg> args);

template <class... Args>
std::string TNLFormat(std::string_view format, const Args&... args) {
  if constexpr (sizeof...(Args) == 0) {
    return TNLFormatArgs(format, {});
  } else {
    const TNLFormatArg array[] = {TNLFormatArg(args)...};
    return TNLFormatArgs(format, array);
  }
}

// "%p" argument for any object.
inline TNLFormatArg::Pointer TNLPointer(const void* address) {
  return {address};
}
