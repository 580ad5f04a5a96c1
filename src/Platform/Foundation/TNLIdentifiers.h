#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace TNLIdentifiers {

// A new random UUID in canonical upper-case text form (8-4-4-4-12).
std::string createUUIDString();

// MD5 digest of the bytes as 32 lower-case hexadecimal digits.
std::string md5Hex(std::string_view bytes);

// A uniformly distributed number in [0, upperBound) from the system's secure generator;
// 0 for a bound of 0 or 1.
uint32_t secureRandomUniform(uint32_t upperBound);

}  // namespace TNLIdentifiers
