#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "Platform/Foundation/TNLError.h"
#include "Platform/Foundation/TNLIdentifiers.h"

namespace {

TEST(TNLIdentifiers, UUIDsAreCanonicalUpperCaseAndFreshAndMD5IsMD5) {
  const std::regex canonical(
      "^[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}$");
  const auto a = TNLIdentifiers::createUUIDString();
  EXPECT_TRUE(std::regex_match(a, canonical)) << a;
  EXPECT_NE(a, TNLIdentifiers::createUUIDString());
  EXPECT_EQ(TNLIdentifiers::md5Hex("The quick brown fox jumps over the lazy dog"),
            "9e107d9d372bb6826bd81d3542a419d6");
}

TEST(TNLIdentifiers, SecureRandomStaysBelowItsBound) {
  std::set<uint32_t> seen;
  for (int i = 0; i < 2000; ++i) {
    const uint32_t value = TNLIdentifiers::secureRandomUniform(6);
    ASSERT_LT(value, 6u);
    seen.insert(value);
  }
  EXPECT_EQ(seen.size(), 6u);  // every value turns up
  EXPECT_EQ(TNLIdentifiers::secureRandomUniform(1), 0u);
  EXPECT_LT(TNLIdentifiers::secureRandomUniform(4294967295u), 4294967295u);
}

TEST(TNLError, DescribesItselfInThePlatformManner) {
  const TNLError plain(TNLURLErrorDomain, 0);
  EXPECT_EQ(plain.description(),
            "Error Domain=NSURLErrorDomain Code=0 \"The operation couldn\u2019t be completed. "
            "(NSURLErrorDomain error 0.)\"");
  EXPECT_TRUE(plain.userInfo().empty());
}

}  // namespace
