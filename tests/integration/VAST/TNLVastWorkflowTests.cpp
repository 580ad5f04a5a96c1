#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "Ads/VAST/TNLVastWorkflow.h"
#include "Platform/Http/TNLHttpSession.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"
#include "support/TNLLogCapture.h"
#include "support/TNLTestServer.h"
#include "support/TNLVastRun.h"

using namespace std::chrono_literals;

namespace {

constexpr char kVASTNamespace[] = "http://www.iab.com/VAST";

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

std::string wrapperAd(const std::string& url, const std::string& creative = "",
                      const std::string& vastAttributes = "") {
  return "<VAST version=\"4.0\"" + vastAttributes + "><Ad><Wrapper><AdSystem>test</AdSystem>" +
         "<Impression>wrapper-impression</Impression><VASTAdTagURI><![CDATA[" + url +
         "]]></VASTAdTagURI><Creatives><Creative><Linear>" + creative +
         "</Linear></Creative></Creatives></Wrapper></Ad></VAST>";
}

std::shared_ptr<TNL_XMLDocument> parse(const std::string& xml) {
  return TNL_XMLDocument::createWithXMLString(xml, 0, nullptr);
}

std::vector<std::string> values(const std::shared_ptr<TNL_XMLDocument>& doc,
                                const std::string& xpath) {
  std::vector<std::string> texts;
  for (const auto& node : doc->nodesForXPath(xpath).value_or(TNL_XMLNode::Nodes{})) {
    texts.push_back(node->stringValue().value_or("(none)"));
  }
  return texts;
}

TEST(TNLVastWorkflow, InlineResponsesAreCheckedWithoutAFetch) {
  TNLTestServer server;
  // The MP4 makes it playable; the name is the last file with an attribute, MP4 or not, and a
  // file without attributes never names the ad.
  const std::string twoFiles = inlineAd(mediaFile("video/mp4", "\n  https://cdn/a.mp4\r\n  ") +
                                        mediaFile("video/webm", "https://cdn/b.webm") +
                                        "<MediaFile>https://cdn/c.mp4</MediaFile>");
  TNLVastRun run;
  run.start(twoFiles);
  ASSERT_EQ(run.outcomes().size(), 1u);  // inline: answered before processXMLData returns
  const auto result = run.outcomes()[0];
  ASSERT_TRUE(result.succeeded());
  EXPECT_EQ(result.mediaFileName, "https://cdn/b.webm");
  EXPECT_TRUE(result.onCallingThread);
  // One line: line breaks inside text are dropped, other blanks kept.
  EXPECT_EQ(result.document.find_first_of("\r\n"), std::string::npos);
  EXPECT_NE(result.document.find("type=\"video/mp4\">  https://cdn/a.mp4  </MediaFile>"),
            std::string::npos);
  EXPECT_EQ(result.document.rfind("<VAST version=\"4.0\"><Ad id=\"inline\"><InLine>", 0), 0u);
  EXPECT_EQ(run.workflow()->redirects(), 0u);
  EXPECT_TRUE(run.workflow()->vastAds().empty());

  // The name is the file's whole text, blanks and line breaks included.
  TNLVastRun blanks;
  blanks.start(inlineAd(mediaFile("video/mp4", "\n  https://cdn/a.mp4\r\n  ")));
  EXPECT_EQ(blanks.outcomes().at(0).mediaFileName, "\n  https://cdn/a.mp4\n  ");

  // Several ads: the media files of all of them count.
  TNLVastRun twoAds;
  twoAds.start("<VAST><Ad><InLine><MediaFiles>" + mediaFile("video/mp4", "first") +
               "</MediaFiles></InLine></Ad><Ad><InLine><MediaFiles>" +
               mediaFile("video/ogg", "second") + "</MediaFiles></InLine></Ad></VAST>");
  ASSERT_TRUE(twoAds.outcomes().at(0).succeeded());
  EXPECT_EQ(twoAds.outcomes()[0].mediaFileName, "second");

  TNLVastRun webm;
  webm.start(inlineAd(mediaFile("video/webm", "https://cdn/b.webm")));
  ASSERT_EQ(webm.outcomes().size(), 1u);
  EXPECT_TRUE(webm.outcomes()[0].failedWith(TNLURLErrorDomain, 11));
  EXPECT_TRUE(webm.outcomes()[0].error->userInfo().empty());
  EXPECT_EQ(webm.workflow()->mediaFileName(), "https://cdn/b.webm");

  for (const std::string notXML : {"[1, 2]", "<VAST>"}) {
    TNLVastRun broken;
    broken.start(notXML);
    broken.settle();
    ASSERT_EQ(broken.outcomes().size(), 1u) << notXML;
    EXPECT_TRUE(broken.outcomes()[0].failedWith(TNL_XMLErrorDomain, -1));
  }
  EXPECT_EQ(server.requestCount(), 0u);
}

TEST(TNLVastWorkflow, FiveWrappersAreFollowedTheSixthFailsBeforeItsFetch) {
  TNLTestServer server;
  const std::string mp4 = inlineAd(mediaFile("video/mp4", "https://cdn/a.mp4"));
  // Wrapper n points at /w<n+1>; the response itself is wrapper 1.
  for (int n = 2; n <= 5; ++n) {
    server.on("GET", "/w" + std::to_string(n),
              TNLTestServer::Response::xml(wrapperAd(server.url("/w" + std::to_string(n + 1)))));
  }
  server.on("GET", "/inline", TNLTestServer::Response::xml(mp4));

  // Five wrappers, then the inline ad.
  server.on("GET", "/w6", TNLTestServer::Response::xml(mp4));
  {
    TNLVastRun run;
    const std::weak_ptr<TNLVastWorkflow> workflow =
        run.startAndForget(wrapperAd(server.url("/w2")));
    ASSERT_TRUE(run.wait(1));
    run.settle();
    ASSERT_EQ(run.outcomes().size(), 1u);
    EXPECT_TRUE(run.outcomes()[0].succeeded());
    EXPECT_EQ(run.outcomes()[0].mediaFileName, "https://cdn/a.mp4");
    EXPECT_TRUE(run.outcomes()[0].onSessionThread);
    EXPECT_EQ(server.requestCount(), 5u);
    // Nothing but the pending fetches held the workflow.
    EXPECT_TRUE(TNLVastRun::released(workflow));
  }

  // Six wrappers: the sixth is counted, recorded and refused before its target is asked for.
  server.on("GET", "/w6", TNLTestServer::Response::xml(wrapperAd(server.url("/inline"))));
  TNLVastRun run;
  run.start(wrapperAd(server.url("/w2")));
  ASSERT_TRUE(run.wait(1));
  run.settle();
  ASSERT_EQ(run.outcomes().size(), 1u);
  EXPECT_TRUE(run.outcomes()[0].failedWith(TNLURLErrorDomain, 3));
  EXPECT_TRUE(run.outcomes()[0].error->userInfo().empty());
  EXPECT_EQ(server.requestCount(), 10u);
  EXPECT_TRUE(server.requestsTo("/inline").empty());
  EXPECT_EQ(run.workflow()->redirects(), 6u);
  EXPECT_EQ(run.workflow()->vastAds().size(), 6u);
  EXPECT_EQ(static_cast<int>(maxVASTRedirects), 5);
}

TEST(TNLVastWorkflow, WrapperNodesAreMergedIntoTheInlineAdInOrder) {
  TNLTestServer server;
  const std::string inlineXML = inlineAd(
      mediaFile("video/mp4", "https://cdn/a.mp4"),
      "<TrackingEvents><Tracking event=\"start\">inline-start</Tracking></TrackingEvents>"
      "<VideoClicks><ClickThrough>inline-click</ClickThrough></VideoClicks>",
      "<Extensions><TrackingEvents><Tracking event=\"x\">second-list</Tracking></TrackingEvents>"
      "</Extensions>");
  server.on("GET", "/inline", TNLTestServer::Response::xml(inlineXML));
  const std::string innerXML =
      wrapperAd(server.url("/inline"),
                "<TrackingEvents><Tracking event=\"start\">inner-start</Tracking></TrackingEvents>"
                "<VideoClicks><ClickTracking>inner-click</ClickTracking></VideoClicks>");
  server.on("GET", "/inner", TNLTestServer::Response::xml(innerXML));
  const std::string outerXML = wrapperAd(
      server.url("/inner"),
      "<TrackingEvents><Tracking event=\"start\">outer-start</Tracking>"
      "<Tracking event=\"complete\">outer-complete</Tracking></TrackingEvents>"
      "<CompanionAds><Companion><StaticResource>outer-companion</StaticResource></Companion>"
      "</CompanionAds>");

  TNLVastRun run;
  run.start(outerXML);
  ASSERT_TRUE(run.wait(1));
  run.settle();
  ASSERT_EQ(run.outcomes().size(), 1u);
  ASSERT_TRUE(run.outcomes()[0].succeeded());
  const auto result = parse(run.outcomes()[0].document);
  ASSERT_TRUE(result);
  // Under the inline ad's first TrackingEvents: its own, then the outer, then the inner wrapper's.
  EXPECT_EQ(
      values(result, "(//TrackingEvents)[1]/Tracking"),
      (std::vector<std::string>{"inline-start", "outer-start", "outer-complete", "inner-start"}));
  EXPECT_EQ(values(result, "(//TrackingEvents)[2]/Tracking"),
            (std::vector<std::string>{"second-list"}));
  EXPECT_EQ(values(result, "//VideoClicks/*"),
            (std::vector<std::string>{"inline-click", "inner-click"}));
  // A wrapper's impressions never reach the result; with no Companion in the inline ad, the
  // wrappers' companion content is dropped.
  EXPECT_EQ(values(result, "//Impression"), (std::vector<std::string>{"inline-impression"}));
  EXPECT_EQ(run.outcomes()[0].document.find("outer-companion"), std::string::npos);
  // The wrapper documents themselves are left as they were.
  ASSERT_EQ(run.workflow()->vastAds().size(), 2u);
  EXPECT_EQ(*run.workflow()->vastAds()[0]->rootElement()->XMLString(),
            *parse(outerXML)->rootElement()->XMLString());

  // With a Companion in the inline ad, the wrappers' companion children are appended to it.
  server.on("GET", "/inline",
            TNLTestServer::Response::xml(inlineAd(
                mediaFile("video/mp4", "https://cdn/a.mp4"), "",
                "<CompanionAds><Companion><StaticResource>inline-companion</StaticResource>"
                "</Companion></CompanionAds>")));
  TNLVastRun withCompanion;
  withCompanion.start(outerXML);
  ASSERT_TRUE(withCompanion.wait(1));
  ASSERT_TRUE(withCompanion.outcomes()[0].succeeded());
  EXPECT_EQ(values(parse(withCompanion.outcomes()[0].document), "//Companion/StaticResource"),
            (std::vector<std::string>{"inline-companion", "outer-companion"}));
}

TEST(TNLVastWorkflow, DocumentsInTheVASTNamespaceAreFoundThroughTheDefaultPrefix) {
  TNLTestServer server;
  const std::string ns = std::string(" xmlns=\"") + kVASTNamespace + "\"";
  server.on(
      "GET", "/inline",
      TNLTestServer::Response::xml(inlineAd(
          mediaFile("video/mp4", "https://cdn/a.mp4"),
          "<TrackingEvents><Tracking event=\"start\">inline-start</Tracking></TrackingEvents>", "",
          ns)));
  TNLVastRun run;
  run.start(wrapperAd(server.url("/inline"),
                      "<TrackingEvents><Tracking event=\"start\">wrapper-start</Tracking>"
                      "</TrackingEvents>",
                      ns));
  ASSERT_TRUE(run.wait(1));
  run.settle();
  ASSERT_EQ(run.outcomes().size(), 1u);
  ASSERT_TRUE(run.outcomes()[0].succeeded());
  EXPECT_EQ(run.outcomes()[0].mediaFileName, "https://cdn/a.mp4");
  const std::string document = run.outcomes()[0].document;
  // Merged nodes are bound to the namespace in scope rather than declaring it again.
  EXPECT_EQ(document.find("xmlns="), document.rfind("xmlns="));
  EXPECT_EQ(values(parse(document), "//_def_ns:TrackingEvents/_def_ns:Tracking"),
            (std::vector<std::string>{"inline-start", "wrapper-start"}));
}

TEST(TNLVastWorkflow, FailuresOfFetchedDocuments) {
  TNLTestServer server;
  server.on("GET", "/webm",
            TNLTestServer::Response::xml(inlineAd(mediaFile("video/webm", "https://cdn/b.webm"))));
  server.on("GET", "/html", TNLTestServer::Response(200, "<html><body>oops", "text/html"));

  // No MP4 behind a wrapper: code 2.
  TNLVastRun webm;
  webm.start(wrapperAd(server.url("/webm")));
  ASSERT_TRUE(webm.wait(1));
  webm.settle();
  ASSERT_EQ(webm.outcomes().size(), 1u);
  EXPECT_TRUE(webm.outcomes()[0].failedWith(TNLURLErrorDomain, 2));

  // A target that does not parse reports the parse error, then code 2.
  TNLVastRun twice;
  const std::weak_ptr<TNLVastWorkflow> workflow =
      twice.startAndForget(wrapperAd(server.url("/html")));
  ASSERT_TRUE(twice.wait(2));
  twice.settle();
  ASSERT_EQ(twice.outcomes().size(), 2u);
  EXPECT_TRUE(twice.outcomes()[0].failedWith(TNL_XMLErrorDomain, -1));
  EXPECT_TRUE(twice.outcomes()[1].failedWith(TNLURLErrorDomain, 2));
  EXPECT_TRUE(twice.outcomes()[1].onSessionThread);
  EXPECT_TRUE(TNLVastRun::released(workflow));

  // Transport errors arrive unchanged.
  TNLVastRun refused;
  refused.start(
      wrapperAd("http://127.0.0.1:" + std::to_string(TNLTestServer::closedPort()) + "/x"));
  ASSERT_TRUE(refused.wait(1));
  refused.settle();
  ASSERT_EQ(refused.outcomes().size(), 1u);
  EXPECT_TRUE(
      refused.outcomes()[0].failedWith(TNLURLErrorDomain, TNLURLError::CannotConnectToHost));
  EXPECT_TRUE(refused.outcomes()[0].error->userInfo().contains(kTNLErrorFailingURLStringKey));
}

TEST(TNLVastWorkflow, TheAdTagURIIsUsedAsItStands) {
  TNLTestServer server;
  server.on("GET", "/inline",
            TNLTestServer::Response::xml(inlineAd(mediaFile("video/mp4", "https://cdn/a.mp4"))));

  // Line breaks around a CDATA section stay in the URL text; the fetch still happens, because
  // the platform reads addresses as a browser does.
  TNLVastRun padded;
  padded.start("<VAST><Ad><Wrapper><VASTAdTagURI>\n  <![CDATA[" + server.url("/inline") +
               "]]>\n</VASTAdTagURI></Wrapper></Ad></VAST>");
  ASSERT_TRUE(padded.wait(1));
  padded.settle();
  ASSERT_EQ(padded.outcomes().size(), 1u);
  EXPECT_TRUE(padded.outcomes()[0].succeeded());
  EXPECT_EQ(server.requestsTo("/inline").size(), 1u);

  // CDATA markers that arrive as text are stripped.
  TNLVastRun literal;
  literal.start("<VAST><Ad><Wrapper><VASTAdTagURI>&lt;![CDATA[" + server.url("/inline") +
                "]]&gt;</VASTAdTagURI></Wrapper></Ad></VAST>");
  ASSERT_TRUE(literal.wait(1));
  literal.settle();
  ASSERT_EQ(literal.outcomes().size(), 1u);
  EXPECT_TRUE(literal.outcomes()[0].succeeded());
  EXPECT_EQ(server.requestsTo("/inline").size(), 2u);

  // Only the first ad tag in document order is followed.
  server.on("GET", "/second", TNLTestServer::Response::xml("<VAST/>"));
  TNLVastRun two;
  two.start("<VAST><Ad><Wrapper><VASTAdTagURI>" + server.url("/inline") +
            "</VASTAdTagURI></Wrapper></Ad><Ad><Wrapper><VASTAdTagURI>" + server.url("/second") +
            "</VASTAdTagURI></Wrapper></Ad></VAST>");
  ASSERT_TRUE(two.wait(1));
  two.settle();
  EXPECT_TRUE(two.outcomes().at(0).succeeded());
  EXPECT_EQ(server.requestsTo("/inline").size(), 3u);
  EXPECT_TRUE(server.requestsTo("/second").empty());
}

TEST(TNLVastWorkflow, APrefixedAdTagEndsTheRunWithoutACallback) {
  TNLTestServer server;
  const std::string prefixed = std::string("<VAST xmlns=\"") + kVASTNamespace + "\" xmlns:v=\"" +
                               kVASTNamespace + "\"><Ad><Wrapper><v:VASTAdTagURI>" +
                               server.url("/inline") + "</v:VASTAdTagURI></Wrapper></Ad></VAST>";
  server.on("GET", "/prefixed", TNLTestServer::Response::xml(prefixed));
  server.on("GET", "/inline",
            TNLTestServer::Response::xml(inlineAd(mediaFile("video/mp4", "https://cdn/a.mp4"))));

  TNLVastRun direct;
  direct.start(prefixed);
  TNLVastRun fetched;
  const std::weak_ptr<TNLVastWorkflow> workflow =
      fetched.startAndForget(wrapperAd(server.url("/prefixed")));
  ASSERT_TRUE(server.waitForRequests(1));
  // The abandoned run lets go of the workflow once its last fetch has completed.
  EXPECT_TRUE(TNLVastRun::released(workflow));
  std::this_thread::sleep_for(100ms);
  EXPECT_TRUE(direct.outcomes().empty());
  EXPECT_TRUE(fetched.outcomes().empty());
  EXPECT_TRUE(server.requestsTo("/inline").empty());
}

TEST(TNLVastWorkflow, AnExceptionWhileStartingIsLoggedAndEndsTheRun) {
  TNLLogCapture capture;
  TNLLog::sharedLogger()->setShowLogs(true);
  const auto workflow = TNLVastWorkflow::create();
  int failures = 0;
  workflow->processXMLData(
      inlineAd(mediaFile("video/mp4", "https://cdn/a.mp4")),
      [](const std::string&, const std::string&) { throw std::runtime_error("host callback"); },
      [&](const TNLErrorPtr&) { ++failures; });
  EXPECT_EQ(failures, 0);
  EXPECT_EQ(capture.lines(),
            std::vector<std::string>{"XML Processing failed due to exception: host callback"});
}

}  // namespace
