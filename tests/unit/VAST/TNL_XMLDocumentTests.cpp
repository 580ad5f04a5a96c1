#include <gtest/gtest.h>

#include <libxml/tree.h>

#include "Ads/VAST/XMLSupport/TNL_XMLDocument.h"
#include "Ads/VAST/XMLSupport/TNL_XMLElement.h"
#include "TarnelAd/TNLConstants.h"

namespace {

std::shared_ptr<TNL_XMLDocument> parse(const std::string& xml) {
  TNLErrorPtr error;
  auto doc = TNL_XMLDocument::createWithXMLString(xml, 0, &error);
  EXPECT_TRUE(doc) << (error ? error->description() : "no error");
  return doc;
}

// From a document or a node.
template <class Context>
TNL_XMLNode::Nodes find(const Context& node, const std::string& xpath,
                        const std::optional<TNL_XMLNode::Namespaces>& ns = std::nullopt) {
  TNLErrorPtr error;
  auto nodes = node->nodesForXPath(xpath, ns, &error);
  EXPECT_TRUE(nodes.has_value()) << xpath << ": " << (error ? error->description() : "");
  return nodes.value_or(TNL_XMLNode::Nodes{});
}

void expectXMLError(const TNLErrorPtr& error, long code) {
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->domain(), TNL_XMLErrorDomain);
  EXPECT_EQ(error->code(), code);
}

TEST(TNL_XMLDocument, ParsesWithItsOwnOptionsWhateverTheCallerAsks) {
  const std::string xml =
      "<?xml version=\"1.0\"?>\n<VAST version=\"4.0\">\n  <Ad>\n"
      "    <MediaFile type=\"video/mp4\"><![CDATA[https://cdn/a.mp4]]> </MediaFile>\n"
      "  </Ad>\n</VAST>\n";
  // Keeping CDATA or blanks would change the tree; neither is applied, whatever is asked.
  for (const unsigned options : {0u, 0xffffffffu}) {
    TNLErrorPtr error = TNLError::make("stale", 1);
    const auto doc = TNL_XMLDocument::createWithData(xml, options, &error);
    ASSERT_TRUE(doc);
    EXPECT_EQ(error, nullptr);
    const auto media = find(doc, "//MediaFile");
    ASSERT_EQ(media.size(), 1u);
    ASSERT_EQ(media[0]->childCount(), 1u);
    EXPECT_EQ(media[0]->childAtIndex(0)->XMLNode()->type, XML_TEXT_NODE);
    EXPECT_EQ(doc->rootElement()->XMLString(),
              "<VAST version=\"4.0\"><Ad><MediaFile type=\"video/mp4\">https://cdn/a.mp4 "
              "</MediaFile></Ad></VAST>");
  }
  for (const std::string bad : {"not xml", "<a><b></a>"}) {
    TNLErrorPtr error;
    EXPECT_EQ(TNL_XMLDocument::createWithData(bad, 1, &error), nullptr) << bad;
    expectXMLError(error, -1);
    EXPECT_TRUE(error->userInfo().empty());
  }
}

TEST(TNL_XMLDocument, RefusesDeclarationsAndDeepNestingLikeAnyDocumentThatDoesNotParse) {
  const auto nested = [](int depth) {
    std::string open, close;
    for (int i = 0; i < depth; ++i) {
      open += "<a>";
      close += "</a>";
    }
    return open + close;
  };
  const std::pair<std::string, bool> cases[] = {
      {"<!DOCTYPE r [<!ENTITY e \"" + std::string(1000, 'A') + "\">]><r>&e;&e;&e;</r>", false},
      {"<!DOCTYPE r [<!ENTITY % p \"<!ENTITY e 'x'>\"> %p;]><r/>", false},
      {"<!DOCTYPE r [<!ELEMENT r ANY>]><r/>", false},
      {"<!DOCTYPE r [<!ENTITY e SYSTEM \"http://127.0.0.1:1/e\">]><r>&e;</r>", false},
      {nested(300), false},
      {"<!DOCTYPE r []><r>&amp;&#65;</r>", true},
      {"<!DOCTYPE r SYSTEM \"http://127.0.0.1:1/r.dtd\"><r/>", true},
      {nested(200), true},
  };
  for (const auto& [xml, parses] : cases) {
    TNLErrorPtr error;
    EXPECT_EQ(TNL_XMLDocument::createWithData(xml, 0, &error) != nullptr, parses)
        << xml.substr(0, 80);
    if (!parses) {
      expectXMLError(error, -1);
    }
  }
}

TEST(TNL_XMLDocument, XPathRegistersTheContextElementsNamespaces) {
  const auto doc = parse(
      "<VAST xmlns=\"http://www.iab.com/VAST\" xmlns:xs=\"urn:xs\"><Ad id=\"1\">"
      "<MediaFile>a</MediaFile><MediaFile>b</MediaFile>"
      "<Extensions xmlns:x=\"urn:x\"><x:Ext>e</x:Ext></Extensions></Ad></VAST>");
  ASSERT_TRUE(doc);
  EXPECT_EQ(find(doc, "//_def_ns:MediaFile").size(), 2u);
  EXPECT_TRUE(find(doc, "//MediaFile").empty());
  // A map replaces the automatic registration of "_def_ns".
  EXPECT_EQ(
      find(doc, "//v:MediaFile", TNL_XMLNode::Namespaces{{"v", "http://www.iab.com/VAST"}}).size(),
      2u);
  // Only the context element's declarations count: x is declared deeper.
  TNLErrorPtr error;
  EXPECT_FALSE(doc->nodesForXPath("//x:Ext", &error).has_value());
  expectXMLError(error, XML_XPATH_UNDEF_PREFIX_ERROR);
  const auto ext = find(find(doc, "//_def_ns:Extensions").at(0), "x:Ext");
  ASSERT_EQ(ext.size(), 1u);
  EXPECT_EQ(ext[0]->name(), "x:Ext");
}

TEST(TNL_XMLDocument, BorrowedNodesBelongToTheDocumentCopiesToThemselves) {
  auto doc = parse("<r><a><b>1</b></a></r>");
  ASSERT_TRUE(doc);
  const auto copy = std::dynamic_pointer_cast<TNL_XMLElement>(find(doc, "//a")[0]->copy());
  ASSERT_TRUE(copy);
  EXPECT_TRUE(copy->shouldFreeXMLNode());
  EXPECT_EQ(copy->XMLNode()->doc, nullptr);
  copy->addChild(*TNL_XMLNode::elementWithName("c"));
  // Dropping borrowed wrappers freed nothing, and the copy changed alone.
  EXPECT_EQ(doc->rootElement()->XMLString(), "<r><a><b>1</b></a></r>");
  doc.reset();  // the copy outlives the document it came from
  EXPECT_EQ(copy->XMLString(), "<a><b>1</b><c/></a>");
}

TEST(TNL_XMLElement, AddChildCopiesAndFitsNamespaces) {
  const auto target = parse(
      "<VAST xmlns=\"urn:vast\" xmlns:v=\"urn:vast\" xmlns:o=\"urn:other\"><Ad><Tracking>"
      "<T>inline</T></Tracking></Ad></VAST>");
  const auto source = parse(
      "<VAST xmlns=\"urn:vast\"><Wrapper><Tracking><T e=\"start\">wrapper</T></Tracking>"
      "</Wrapper></VAST>");
  ASSERT_TRUE(target && source);
  const std::string sourceBefore = *source->rootElement()->XMLString();

  const auto tracking =
      std::dynamic_pointer_cast<TNL_XMLElement>(find(target, "//_def_ns:Tracking")[0]);
  EXPECT_EQ(tracking->childCount(), 1u);
  tracking->addChild(*find(source, "//_def_ns:T")[0]);
  EXPECT_EQ(tracking->childCount(), 2u);  // the cached children were dropped
  // Same namespace as in scope: no declaration of its own, bound to the one in scope.
  EXPECT_EQ(tracking->XMLString(), "<Tracking><T>inline</T><T e=\"start\">wrapper</T></Tracking>");
  EXPECT_EQ(find(target, "//_def_ns:T").size(), 2u);
  EXPECT_EQ(*source->rootElement()->XMLString(), sourceBefore);
}

}  // namespace
