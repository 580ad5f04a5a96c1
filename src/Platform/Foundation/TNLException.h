#pragma once

#include <stdexcept>
#include <string>

// The platform's exception: a name and a reason. Library code raises it where the original design
// raises; catch-alls catch std::exception and log its description (the reason).
class TNLException : public std::runtime_error {
 public:
  TNLException(std::string name, const std::string& reason)
      : std::runtime_error(reason), name_(std::move(name)) {}

  const std::string& name() const { return name_; }
  std::string reason() const { return what(); }

 private:
  std::string name_;
};

inline constexpr char TNLInvalidArgumentException[] = "NSInvalidArgumentException";
inline constexpr char TNLRangeException[] = "NSRangeException";
inline constexpr char TNLUndefinedKeyException[] = "NSUnknownKeyException";
inline constexpr char TNLInternalInconsistencyException[] = "NSInternalInconsistencyException";
