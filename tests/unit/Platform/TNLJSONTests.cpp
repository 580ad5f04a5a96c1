#include <gtest/gtest.h>

#include "Platform/Foundation/TNLJSON.h"

namespace {

TEST(TNLJSON, ParsesOnlyObjectsAndArrays) {
  TNLErrorPtr error;
  EXPECT_TRUE(TNLJSON::parse(R"({"a":[1,2]})", &error).is_object());
  EXPECT_EQ(error, nullptr);
  EXPECT_TRUE(TNLJSON::parse("[]", &error).is_array());

  for (const char* fragment : {"\"text\"", "12", "true", "null", "", "<VAST/>", "{broken"}) {
    SCOPED_TRACE(fragment);
    error = nullptr;
    EXPECT_TRUE(TNLJSON::parse(fragment, &error).is_null());
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), TNLCocoaErrorDomain);
    EXPECT_EQ(error->code(), TNLPropertyListReadCorruptError);
  }
}

TEST(TNLJSON, RefusesNestingDeeperThanTheLimitBeforeBuildingAnything) {
  const auto nested = [](size_t depth, const std::string& inside = "") {
    return std::string(depth, '[') + inside + std::string(depth, ']');
  };
  const size_t limit = TNLJSON::kMaxDepth;
  TNLErrorPtr error;
  EXPECT_TRUE(TNLJSON::parse(nested(limit), &error).is_array());
  // Brackets and escaped quotes inside strings are not nesting.
  EXPECT_TRUE(TNLJSON::parse(nested(limit, R"("\"[[[[{{{{")"), &error).is_array());
  EXPECT_EQ(error, nullptr);
  for (const std::string& deep :
       {nested(limit + 1), R"({"ad":)" + nested(1'000'000) + "}", std::string(1'000'000, '{')}) {
    EXPECT_TRUE(TNLJSON::parse(deep, &error).is_null());
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->code(), TNLPropertyListReadCorruptError);
  }
}

TEST(TNLJSON, KeepsDocumentOrderAndSerialisesCompactOrPretty) {
  const TNLJson value = TNLJSON::parse(R"({"z":1,"a":{"b":true}})");
  EXPECT_EQ(TNLJSON::serialize(value), R"({"z":1,"a":{"b":true}})");
  EXPECT_EQ(TNLJSON::serialize(value, true), "{\n  \"z\": 1,\n  \"a\": {\n    \"b\": true\n  }\n}");
}

TEST(TNLJSON, TruthValueReadsLikeThePlatform) {
  for (const TNLJson& yes : std::vector<TNLJson>{true, 2, -0.5, "true", "YES", "y", "T", "  t", "1",
                                                 "9x", "007", "+3"}) {
    EXPECT_TRUE(TNLJSON::truthValue(yes)) << yes;
  }
  for (const TNLJson& no : std::vector<TNLJson>{false, 0, TNLJson(), TNLJson::object(), "false",
                                                "no", "0", "", "  ", "x1", "-0"}) {
    EXPECT_FALSE(TNLJSON::truthValue(no)) << no;
  }
}

}  // namespace
