#include <gtest/gtest.h>

#include "Manifest/TNLManifestFactory.h"
#include "TNLLog.h"
#include "support/TNLLogCapture.h"

namespace {

constexpr char kFailureLine[] = "Failed to create Manifest due to exception: ";

std::shared_ptr<TNLManifest> parse(const std::string& json) {
  return TNLManifestFactory::createManifestFromDictionary(TNLJson::parse(json));
}

TEST(TNLManifestFactory, ReadsEverySection) {
  const auto manifest = parse(R"({
    "ttl": 3600,
    "developer": {"publisherid": "P1", "applicationid": "A1", "applicationname": "My App", "active": "true"},
    "privacy": {"coppa": 0, "gdpr": "Yes"},
    "viewability": {"vendorA": {"active": true, "included": true},
                    "vendorB": {"active": false, "included": true},
                    "vendorC": {"active": 1, "included": "no"}},
    "monitoring": {"loglevel": "debug", "method": "POST", "baseuri": "https://t.example/e?",
                   "uri_content": "n=%EVENT_NAME%"},
    "performance": {"loglevel": "info", "method": "GET", "baseuri": "https://p.example", "uri_content": ""},
    "demandsources": {"workflow": "waterfall", "demandsource": [
      {"source": "second", "rank": 2, "timeout": 5000, "autofetch": true, "url": "https://b.example?z=%ZONE%"},
      {"source": "first", "rank": 1.9, "timeout": 0, "url": "https://a.example"}]},
    "vast_template_uri": "https://cdn.example/vast.html",
    "trackers": {"ignored": true}
  })");
  ASSERT_NE(manifest, nullptr);
  EXPECT_EQ(manifest->ttl(), 3600u);
  const auto& developer = *manifest->developer();
  EXPECT_EQ(std::vector(
                {developer.publisherId(), developer.applicationId(), developer.applicationName()}),
            (std::vector<std::optional<std::string>>{"P1", "A1", "My App"}));
  EXPECT_TRUE(developer.active());
  EXPECT_FALSE(manifest->privacy()->coppa());
  EXPECT_TRUE(manifest->privacy()->gdpr());
  // The last active vendor in document order wins.
  EXPECT_EQ(manifest->viewability()->name(), "vendorC");
  EXPECT_TRUE(manifest->viewability()->active());
  EXPECT_FALSE(manifest->viewability()->included());
  EXPECT_EQ(manifest->monitoring()->url(), "https://t.example/e?n=%EVENT_NAME%");
  EXPECT_EQ(manifest->monitoring()->method(), "POST");
  ASSERT_NE(manifest->demandSources(), nullptr);
  EXPECT_EQ(manifest->demandSources()->workflow(), "waterfall");
  const auto& sources = manifest->demandSources()->demandSources();
  ASSERT_EQ(sources.size(), 2u);
  EXPECT_EQ(sources[0]->source(), "second");  // document order; sorting is the ad client's job
  EXPECT_EQ(sources[0]->rank(), 2u);
  EXPECT_EQ(sources[0]->timeout(), 5000u);
  EXPECT_EQ(sources[0]->url(), "https://b.example?z=%ZONE%");
  EXPECT_EQ(sources[1]->rank(), 1u);
  EXPECT_EQ(manifest->vastTemplateURI(), "https://cdn.example/vast.html");
}

TEST(TNLManifestFactory, AbsentSectionsGiveNullsNotEmptyStrings) {
  const auto empty = parse("{}");
  ASSERT_NE(empty, nullptr);
  EXPECT_EQ(empty->ttl(), 0u);
  EXPECT_EQ(empty->developer()->applicationName(), std::nullopt);
  EXPECT_FALSE(empty->developer()->active() || empty->privacy()->coppa() ||
               empty->privacy()->gdpr() || empty->viewability()->active());
  EXPECT_EQ(empty->monitoring()->url(), std::nullopt);
  EXPECT_EQ(empty->demandSources(), nullptr);
  EXPECT_EQ(parse(R"({"demandsources": {"workflow": "w", "demandsource": []}})")->demandSources(),
            nullptr);
  EXPECT_EQ(parse(R"({"demandsources": {"workflow": "w"}})")->demandSources(), nullptr);
  // Without a base the content alone makes no URL.
  EXPECT_EQ(parse(R"({"monitoring": {"uri_content": "x"}})")->monitoring()->url(), std::nullopt);
  // Strings of another JSON type are kept as their text.
  EXPECT_EQ(parse(R"({"developer": {"applicationname": 42}})")->developer()->applicationName(),
            "42");
}

TEST(TNLManifestFactory, AnyMalformedValueFailsTheWholeManifest) {
  TNLLogCapture capture;
  TNLLog::sharedLogger()->setShowLogs(true);
  const char* malformed[] = {
      R"({"monitoring": {"baseuri": "B"}})",
      R"({"performance": {"baseuri": null, "uri_content": "x"}})",
      R"({"ttl": "3600"})",
      R"({"demandsources": {"demandsource": [{"rank": "1"}]}})",
      R"({"demandsources": {"demandsource": ["not an object"]}})",
      R"({"demandsources": {"demandsource": {"rank": 1}}})",
      R"({"developer": "someone"})",
      R"({"viewability": {"vendor": true}})",
  };
  for (const char* json : malformed) {
    EXPECT_EQ(parse(json), nullptr) << json;
  }
  EXPECT_EQ(capture.count(kFailureLine), std::size(malformed));
  EXPECT_TRUE(capture.contains(std::string(kFailureLine) + "\"ttl\" is a string, not a number"));
}

}  // namespace
