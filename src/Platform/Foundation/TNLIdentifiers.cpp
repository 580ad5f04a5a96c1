#include "Platform/Foundation/TNLIdentifiers.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <stdexcept>

#include <openssl/evp.h>
#include <openssl/rand.h>
#include <uuid/uuid.h>

namespace TNLIdentifiers {

std::string createUUIDString() {
  uuid_t uuid;
  uuid_generate_random(uuid);
  std::array<char, 37> text{};
  uuid_unparse_upper(uuid, text.data());
  return std::string(text.data());
}

std::string md5Hex(std::string_view bytes) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int length = 0;
  if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, EVP_md5(), nullptr) != 1) {
    throw std::runtime_error("MD5 digest failed");
  }
  std::string hex;
  hex.reserve(length * 2);
  for (unsigned int i = 0; i < length; ++i) {
    std::array<char, 3> pair{};
    std::snprintf(pair.data(), pair.size(), "%02x", digest[i]);
    hex += pair.data();
  }
  return hex;
}

uint32_t secureRandomUniform(uint32_t upperBound) {
  if (upperBound < 2) {
    return 0;
  }
  // Rejection sampling removes the modulo bias.
  const uint32_t minimum = static_cast<uint32_t>(-upperBound) % upperBound;
  while (true) {
    uint32_t value = 0;
    if (RAND_bytes(reinterpret_cast<unsigned char*>(&value), sizeof(value)) != 1) {
      throw std::runtime_error("secure random generator failed");
    }
    if (value >= minimum) {
      return value % upperBound;
    }
  }
}

}  // namespace TNLIdentifiers
