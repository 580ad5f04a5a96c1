#include <gtest/gtest.h>

#include "Categories/NSString+TNLValidation.h"
#include "Platform/Foundation/TNLStrings.h"

namespace {

TEST(TNLStrings, TrimsAsciiAndUnicodeBlanksAndLineBreaks) {
  EXPECT_EQ(TNLStrings::trimWhitespaceAndNewlines(" \t\n a b \r\n"), "a b");
  EXPECT_EQ(TNLStrings::trimWhitespaceAndNewlines("\u00a0\u2028x\u3000"), "x");
  EXPECT_EQ(TNLStrings::trimWhitespace(" \n x \n "), "\n x \n");
}

TEST(TNLStrings, ReplaceSplitAndDecode) {
  EXPECT_EQ(TNLStrings::replaceAll("a%Xb%X", "%X", "1"), "a1b1");
  EXPECT_EQ(TNLStrings::replaceAll("abc", "", "1"), "abc");
  EXPECT_EQ(TNLStrings::split("a&&b", "&"), (std::vector<std::string>{"a", "", "b"}));
  EXPECT_EQ(TNLStrings::split("", "&"), (std::vector<std::string>{""}));
  EXPECT_EQ(TNLStrings::splitLines("a\nb\r\nc\u2028d"),
            (std::vector<std::string>{"a", "b", "", "c", "d"}));
  EXPECT_EQ(TNLStrings::removeLineBreaks("a\nb\r\nc\u2028d\u0085\u00e9 \xff\v\f"),
            "abcd\u00e9 \xff");
  std::string decoded;
  EXPECT_TRUE(TNLStrings::percentDecode("a%20b%2Fc", decoded));
  EXPECT_EQ(decoded, "a b/c");
  EXPECT_FALSE(TNLStrings::percentDecode("100%", decoded));
  EXPECT_FALSE(TNLStrings::percentDecode("%zz", decoded));
  EXPECT_FALSE(TNLStrings::percentDecode("%FF", decoded));  // not UTF-8
}

TEST(TNLValidation, IsNotEmptyNeedsSomethingBesidesBlanks) {
  EXPECT_FALSE(isNotEmpty(""));
  EXPECT_FALSE(isNotEmpty("    "));
  EXPECT_FALSE(isNotEmpty("\t\n"));
  EXPECT_FALSE(isNotEmpty(std::optional<std::string>()));
  EXPECT_TRUE(isNotEmpty("  a  "));
  EXPECT_TRUE(isNotEmpty(std::optional<std::string>("x")));
}

}  // namespace
