#include <gtest/gtest.h>

#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Foundation/TNLJSON.h"

namespace {

struct Described : TNLDescribable {
  std::string description() const override { return "<Described>"; }
};

TEST(TNLFormat, ObjectDirectiveDescribesEveryKind) {
  const auto error = TNLError::make("Domain", 7, {{kTNLLocalizedDescriptionKey, "went wrong"}});
  const auto object = std::make_shared<Described>();
  EXPECT_EQ(TNLFormat("%@|%@|%@|%@", std::string("text"), 42, 2.5, true), "text|42|2.5|1");
  EXPECT_EQ(
      TNLFormat("%@", error),
      "Error Domain=Domain Code=7 \"went wrong\" UserInfo={NSLocalizedDescription=went wrong}");
  EXPECT_EQ(TNLFormat("%@ %@", object, std::shared_ptr<Described>()), "<Described> (null)");
  EXPECT_EQ(TNLFormat("%@", std::optional<std::string>()), "(null)");
  EXPECT_EQ(TNLFormat("%@", TNLJson{{"a", 1}}), "{\n  \"a\": 1\n}");
  EXPECT_EQ(TNLFormat("%@", std::runtime_error("boom")), "boom");
}

TEST(TNLFormat, PrintfDirectivesFollowC) {
  EXPECT_EQ(TNLFormat("%d %i %u %ld %li %lu %lld %llu", -1, 2, 3u, -4L, 5L, 6UL, -7LL, 8ULL),
            "-1 2 3 -4 5 6 -7 8");
  EXPECT_EQ(TNLFormat("%f %.2f %.0f", 0.5, 3.14159, 2.5), "0.500000 3.14 2");
  EXPECT_EQ(TNLFormat("%s-%c-%x-%02x-%%", "abc", 'z', 255, 7), "abc-z-ff-07-%");
  EXPECT_EQ(TNLFormat("%f", 250.0f), "250.000000");
  EXPECT_EQ(TNLFormat("%p", TNLPointer(reinterpret_cast<const void*>(0x1234))), "0x1234");
  EXPECT_EQ(TNLFormat("no directives"), "no directives");
}

TEST(TNLFormat, MissingOrMismatchedArgumentsRaise) {
  EXPECT_THROW(TNLFormat("%@ %@", 1), TNLFormatError);
  EXPECT_THROW(TNLFormat("%d", std::string("text")), TNLFormatError);
  EXPECT_THROW(TNLFormat("%s", 12), TNLFormatError);
  EXPECT_THROW(TNLFormat("trailing %"), TNLFormatError);
  EXPECT_THROW(TNLFormat("%k", 1), TNLFormatError);
  // Widths and precisions are capped, however many digits a text brings.
  EXPECT_EQ(TNLFormat("%4096d", 1).size(), 4096u);
  EXPECT_THROW(TNLFormat("%4097d", 1), TNLFormatError);
  EXPECT_THROW(TNLFormat("%.99999999999999999999f", 1.0), TNLFormatError);
  EXPECT_THROW(TNLFormat("%2147483648s", "x"), TNLFormatError);
  // Extra arguments are ignored, as in C.
  EXPECT_EQ(TNLFormat("%@", 1, 2), "1");
}

}  // namespace
