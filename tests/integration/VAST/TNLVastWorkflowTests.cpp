#include <gtest/gtest.h>

#include <thread>

#include "Ads/VAST/TNLVastWorkflow.h"
#include "TarnelAd/TNLConstants.h"
#include "support/TNLTestServer.h"
#include "support/TNLVastRun.h"

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;
using Response = TNLTestServer::Response;

namespace {

const std::string kNamespace = " xmlns=\"http://www.iab.com/VAST\"";

std::string mediaFile(const std::string& type, const std::string& url) {
  return "<MediaFile delivery=\"progressive\" type=\"" + type + "\">" + url + "</MediaFile>";
}

// An inline ad; `creative` goes inside Linear, `ad` at the end of InLine.
std::string inlineAd(const std::string& mediaFiles, const std::string& creative = "",
                     const std::string& ad = "", const std::string& vastAttributes = "") {
  return "<VAST version=\"4.0\"" + vastAttributes + ">\n  <Ad id=\"inline\">\r\n    <InLine>" +
         "<AdSystem>test</AdSystem><Impression>inline-impression</Impression>" +
         "<Creatives><Creative><Linear>" + creative + "<MediaFiles>" + mediaFiles +
         "</MediaFiles></Linear></Creative></Creatives>" + ad + "</InLine>\n  </Ad>\n</VAST>\n";
}

std::string mp4Ad() {
  return inlineAd(mediaFile("video/mp4", "https://cdn/a.mp4"));
}

std::string wrapperAd(const std::string& url, const std::string& creative = "",
                      const std::string& ad = "", const std::string& vastAttributes = "") {
  return "<VAST version=\"4.0\"" + vastAttributes + "><Ad><Wrapper><AdSystem>test</AdSystem>" +
         "<Impression>wrapper-impression</Impression><VASTAdTagURI><![CDATA[" + url +
         "]]></VASTAdTagURI><Creatives><Creative><Linear>" + creative +
         "</Linear></Creative></Creatives>" + ad + "</Wrapper></Ad></VAST>";
}

Texts values(const std::string& xml, const std::string& xpath) {
  Texts texts;
  const auto doc = TNL_XMLDocument::createWithXMLString(xml, 0, nullptr);
  for (const auto& node :
       doc ? doc->nodesForXPath(xpath).value_or(TNL_XMLNode::Nodes{}) : TNL_XMLNode::Nodes{}) {
    texts.push_back(node->stringValue().value_or("(none)"));
  }
  return texts;
}

// Runs `xml` to its one outcome; a missing or second outcome fails the test.
TNLVastRun::Outcome runOnce(TNLVastRun& run, const std::string& xml) {
  run.start(xml);
  EXPECT_TRUE(run.wait(1));
  run.settle();
  EXPECT_EQ(run.outcomes().size(), 1u);
  return run.outcomes().empty() ? TNLVastRun::Outcome{} : run.outcomes()[0];
}

TEST(TNLVastWorkflow, InlineResponsesAreCheckedOnTheCallingThread) {
  // The MP4 makes it playable; the name is the last file with an attribute, MP4 or not, taken
  // whole; a file without attributes never names the ad; every ad's files count.
  struct Case {
    std::string xml;
    std::string name;
    long errorCode = 0;  // 0: succeeds
    std::string errorDomain = TNLURLErrorDomain;
  };
  const std::string padded = mediaFile("video/mp4", "\n  https://cdn/a.mp4\r\n  ");
  const Case cases[] = {
      {inlineAd(padded + mediaFile("video/webm", "https://cdn/b.webm") +
                "<MediaFile>https://cdn/c.mp4</MediaFile>"),
       "https://cdn/b.webm"},
      {inlineAd(padded), "\n  https://cdn/a.mp4\n  "},
      {"<VAST><Ad><InLine><MediaFiles>" + mediaFile("video/mp4", "first") +
           "</MediaFiles></InLine></Ad><Ad><InLine><MediaFiles>" +
           mediaFile("video/ogg", "second") + "</MediaFiles></InLine></Ad></VAST>",
       "second"},
      {inlineAd(mediaFile("video/webm", "https://cdn/b.webm")), "https://cdn/b.webm", 11},
      {"<VAST>", "", -1, TNL_XMLErrorDomain},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.xml);
    TNLVastRun run;
    run.start(c.xml);
    ASSERT_EQ(run.outcomes().size(), 1u);  // answered before processXMLData returns
    const auto outcome = run.outcomes()[0];
    EXPECT_TRUE(outcome.onCallingThread);
    if (c.errorCode == 0) {
      ASSERT_TRUE(outcome.succeeded());
      EXPECT_EQ(outcome.mediaFileName, c.name);
    } else {
      EXPECT_TRUE(outcome.failedWith(c.errorDomain, c.errorCode));
      EXPECT_TRUE(outcome.error->userInfo().empty());
    }
    if (c.errorCode == 11) {
      EXPECT_EQ(run.workflow()->mediaFileName(), c.name);
    }
  }

  // The document comes on one line: line breaks inside text are dropped, other blanks kept.
  TNLVastRun run;
  run.start(inlineAd(padded));
  const std::string document = run.outcomes().at(0).document;
  EXPECT_EQ(document.find_first_of("\r\n"), std::string::npos);
  EXPECT_NE(document.find("type=\"video/mp4\">  https://cdn/a.mp4  </MediaFile>"),
            std::string::npos);
  EXPECT_EQ(document.rfind("<VAST version=\"4.0\"><Ad id=\"inline\"><InLine>", 0), 0u);
}

TEST(TNLVastWorkflow, FiveWrappersAreFollowedTheSixthFailsBeforeItsFetch) {
  TNLTestServer server;
  // Wrapper n points at /w<n+1>; the response itself is wrapper 1.
  for (int n = 2; n <= 5; ++n) {
    server.on("GET", "/w" + std::to_string(n),
              Response::xml(wrapperAd(server.url("/w" + std::to_string(n + 1)))));
  }
  server.on("GET", "/w6", Response::xml(mp4Ad()));
  {
    TNLVastRun run;
    const std::weak_ptr<TNLVastWorkflow> workflow =
        run.startAndForget(wrapperAd(server.url("/w2")));
    ASSERT_TRUE(run.wait(1));
    EXPECT_EQ(run.outcomes()[0].mediaFileName, "https://cdn/a.mp4");
    EXPECT_TRUE(run.outcomes()[0].onSessionThread);
    // Nothing but the pending fetches held the workflow.
    EXPECT_TRUE(TNLVastRun::released(workflow));
  }

  // Six wrappers: the sixth is counted, recorded and refused before its target is asked for.
  server.on("GET", "/w6", Response::xml(wrapperAd(server.url("/inline"))));
  TNLVastRun run;
  EXPECT_TRUE(runOnce(run, wrapperAd(server.url("/w2"))).failedWith(TNLURLErrorDomain, 3));
  EXPECT_EQ(server.requestCount(), 10u);
  EXPECT_TRUE(server.requestsTo("/inline").empty());
  EXPECT_EQ(run.workflow()->redirects(), 6u);
  EXPECT_EQ(run.workflow()->vastAds().size(), 6u);
}

TEST(TNLVastWorkflow, WrapperNodesAreMergedIntoTheInlineAdInOrder) {
  TNLTestServer server;
  const auto icon = [](const std::string& click) {
    return "<Icons><Icon><IconClicks>" + click + "</IconClicks></Icon></Icons>";
  };
  const auto companion = [](const std::string& text) {
    return "<CompanionAds><Companion><StaticResource>" + text +
           "</StaticResource></Companion></CompanionAds>";
  };
  server.on("GET", "/inline",
            Response::xml(inlineAd(
                mediaFile("video/mp4", "https://cdn/a.mp4"),
                "<TrackingEvents><Tracking event=\"start\">inline-start</Tracking></TrackingEvents>"
                "<VideoClicks><ClickThrough>inline-click</ClickThrough></VideoClicks>" +
                    icon("<IconClickThrough>inline-icon</IconClickThrough>"),
                "<ViewableImpression><Viewable>inline-viewable</Viewable></ViewableImpression>"
                "<AdVerifications><Verification><JavaScriptResource>inline-js</JavaScriptResource>"
                "</Verification></AdVerifications>"
                "<Extensions><TrackingEvents><Tracking event=\"x\">second-list</Tracking>"
                "</TrackingEvents></Extensions>")));
  server.on("GET", "/inner",
            Response::xml(wrapperAd(
                server.url("/inline"),
                "<TrackingEvents><Tracking event=\"start\">inner-start</Tracking></TrackingEvents>"
                "<VideoClicks><ClickTracking>inner-click</ClickTracking></VideoClicks>",
                "<ViewableImpression><NotViewable>inner-not-viewable</NotViewable>"
                "</ViewableImpression>")));
  const std::string outerXML = wrapperAd(
      server.url("/inner"),
      "<TrackingEvents><Tracking event=\"start\">outer-start</Tracking>"
      "<Tracking event=\"complete\">outer-complete</Tracking></TrackingEvents>" +
          icon("<IconClickTracking>outer-icon</IconClickTracking>") + companion("outer-companion"),
      "<AdVerifications><Verification><VerificationParameters>outer-params"
      "</VerificationParameters></Verification></AdVerifications>");

  TNLVastRun run;
  const auto outcome = runOnce(run, outerXML);
  ASSERT_TRUE(outcome.succeeded());
  const std::string& result = outcome.document;
  // Under the inline ad's first match: its own, then the outer, then the inner wrapper's.
  EXPECT_EQ(values(result, "(//TrackingEvents)[1]/Tracking"),
            (Texts{"inline-start", "outer-start", "outer-complete", "inner-start"}));
  EXPECT_EQ(values(result, "(//TrackingEvents)[2]/Tracking"), Texts{"second-list"});
  EXPECT_EQ(values(result, "//VideoClicks/*"), (Texts{"inline-click", "inner-click"}));
  EXPECT_EQ(values(result, "//IconClicks/*"), (Texts{"inline-icon", "outer-icon"}));
  EXPECT_EQ(values(result, "//ViewableImpression/*"),
            (Texts{"inline-viewable", "inner-not-viewable"}));
  EXPECT_EQ(values(result, "//Verification/*"), (Texts{"inline-js", "outer-params"}));
  // A wrapper's impressions never reach the result; with no Companion in the inline ad, the
  // wrappers' companion content is dropped.
  EXPECT_EQ(values(result, "//Impression"), Texts{"inline-impression"});
  EXPECT_EQ(result.find("outer-companion"), std::string::npos);

  // With a Companion in the inline ad, the wrappers' companion children are appended to it.
  server.on("GET", "/inline",
            Response::xml(inlineAd(mediaFile("video/mp4", "https://cdn/a.mp4"), "",
                                   companion("inline-companion"))));
  TNLVastRun withCompanion;
  EXPECT_EQ(values(runOnce(withCompanion, outerXML).document, "//Companion/StaticResource"),
            (Texts{"inline-companion", "outer-companion"}));
}

TEST(TNLVastWorkflow, AnInlineAdInTheVASTNamespaceIsMergedThroughTheDefaultPrefix) {
  TNLTestServer server;
  const auto track = [&](const std::string& text) {
    return "<TrackingEvents><Tracking event=\"start\">" + text + "</Tracking></TrackingEvents>";
  };
  server.on("GET", "/inline",
            Response::xml(inlineAd(mediaFile("video/mp4", "https://cdn/a.mp4"),
                                   track("inline-start"), "", kNamespace)));
  // The wrapper in the namespace too, or plain.
  for (const std::string& wrapperNamespace : {kNamespace, std::string()}) {
    SCOPED_TRACE(wrapperNamespace);
    TNLVastRun run;
    const auto outcome = runOnce(
        run, wrapperAd(server.url("/inline"), track("wrapper-start"), "", wrapperNamespace));
    ASSERT_TRUE(outcome.succeeded());
    EXPECT_EQ(outcome.mediaFileName, "https://cdn/a.mp4");
    EXPECT_EQ(values(outcome.document, "//_def_ns:TrackingEvents/*"),
              (Texts{"inline-start", "wrapper-start"}));
  }
}

TEST(TNLVastWorkflow, TheFirstAdTagIsFollowedAsItStands) {
  TNLTestServer server;
  server.on("GET", "/inline", Response::xml(mp4Ad()));
  server.on("GET", "/second", Response::xml("<VAST/>"));
  const std::string url = server.url("/inline");
  const auto wrapper = [](const std::string& tag) {
    return "<Ad><Wrapper><VASTAdTagURI>" + tag + "</VASTAdTagURI></Wrapper></Ad>";
  };
  // Line breaks around a CDATA section stay in the URL text, which the platform reads as a
  // browser does; CDATA markers that arrive as text are stripped; of two ad tags the first in
  // document order is followed.
  const std::string documents[] = {
      "<VAST>" + wrapper("\n  <![CDATA[" + url + "]]>\n") + "</VAST>",
      "<VAST>" + wrapper("&lt;![CDATA[" + url + "]]&gt;") + "</VAST>",
      "<VAST>" + wrapper(url) + wrapper(server.url("/second")) + "</VAST>",
  };
  for (const auto& document : documents) {
    SCOPED_TRACE(document);
    const size_t before = server.requestsTo("/inline").size();
    TNLVastRun run;
    EXPECT_TRUE(runOnce(run, document).succeeded());
    EXPECT_EQ(server.requestsTo("/inline").size(), before + 1);
  }
  EXPECT_TRUE(server.requestsTo("/second").empty());
}

}  // namespace
