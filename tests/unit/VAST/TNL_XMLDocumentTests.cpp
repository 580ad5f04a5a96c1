#include <gtest/gtest.h>

#include <libxml/tree.h>

#include "Ads/VAST/XMLSupport/TNL_XMLDocument.h"
#include "Ads/VAST/XMLSupport/TNL_XMLElement.h"
#include "Platform/Foundation/TNLJSON.h"
#include "TarnelAd/TNLConstants.h"

namespace {

std::shared_ptr<TNL_XMLDocument> parse(const std::string& xml) {
  TNLErrorPtr error;
  auto doc = TNL_XMLDocument::createWithXMLString(xml, 0, &error);
  EXPECT_TRUE(doc) << (error ? error->description() : "no error");
  return doc;
}

TNL_XMLNode::Nodes find(const std::shared_ptr<TNL_XMLDocument>& doc, const std::string& xpath) {
  TNLErrorPtr error;
  auto nodes = doc->nodesForXPath(xpath, &error);
  EXPECT_TRUE(nodes.has_value()) << xpath << ": " << (error ? error->description() : "");
  return nodes.value_or(TNL_XMLNode::Nodes{});
}

TEST(TNL_XMLDocument, ParsesWithItsOwnOptionsWhateverTheCallerAsks) {
  const std::string xml =
      "<?xml version=\"1.0\"?>\n"
      "<VAST version=\"4.0\">\n"
      "  <Ad>\n"
      "    <MediaFile type=\"video/mp4\"><![CDATA[https://cdn/a.mp4]]> </MediaFile>\n"
      "  </Ad>\n"
      "</VAST>\n";
  // Recovery and keeping blanks would change the tree; neither is applied, whatever is asked.
  for (const unsigned options : {0u, 0xffffffffu}) {
    TNLErrorPtr error = TNLError::make("stale", 1);
    const auto doc = TNL_XMLDocument::createWithData(xml, options, &error);
    ASSERT_TRUE(doc);
    EXPECT_EQ(error, nullptr);
    const auto media = find(doc, "//MediaFile");
    ASSERT_EQ(media.size(), 1u);
    ASSERT_EQ(media[0]->childCount(), 1u);  // the CDATA section is plain text now
    EXPECT_EQ(media[0]->childAtIndex(0)->XMLNode()->type, XML_TEXT_NODE);
    EXPECT_EQ(doc->rootElement()->XMLString(),
              "<VAST version=\"4.0\"><Ad><MediaFile type=\"video/mp4\">https://cdn/a.mp4 "
              "</MediaFile></Ad></VAST>");
  }

  for (const std::string bad : {"not xml", "<a><b></a>"}) {
    TNLErrorPtr error;
    EXPECT_EQ(TNL_XMLDocument::createWithData(bad, 1, &error), nullptr) << bad;
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), TNL_XMLErrorDomain);
    EXPECT_EQ(error->code(), -1);
    EXPECT_TRUE(error->userInfo().empty());
  }
}

TEST(TNL_XMLDocument, RefusesDeclarationsAndDeepNestingLikeAnyDocumentThatDoesNotParse) {
  const auto nested = [](int depth) {
    std::string xml;
    for (int i = 0; i < depth; ++i)
      xml += "<a>";
    for (int i = 0; i < depth; ++i)
      xml += "</a>";
    return xml;
  };
  struct Case {
    std::string xml;
    bool parses;
  };
  const Case cases[] = {
      {"<!DOCTYPE r [<!ENTITY e \"" + std::string(1000, 'A') + "\">]><r>&e;&e;&e;</r>", false},
      {"<!DOCTYPE r [<!ENTITY % p \"<!ENTITY e 'x'>\"> %p;]><r/>", false},
      {"<!DOCTYPE r [<!ELEMENT r ANY>]><r/>", false},
      {"<!DOCTYPE r [<!ENTITY e SYSTEM \"http://127.0.0.1:1/e\">]><r>&e;</r>", false},
      {nested(300), false},
      {"<!DOCTYPE r []><r>&amp;&#65;</r>", true},
      {"<!DOCTYPE r SYSTEM \"http://127.0.0.1:1/r.dtd\"><r/>", true},
      {nested(200), true},
  };
  for (const auto& c : cases) {
    TNLErrorPtr error;
    const auto doc = TNL_XMLDocument::createWithData(c.xml, 0, &error);
    EXPECT_EQ(doc != nullptr, c.parses) << c.xml.substr(0, 80);
    if (!c.parses) {
      ASSERT_NE(error, nullptr);
      EXPECT_EQ(error->code(), -1);
    }
  }
}

TEST(TNL_XMLDocument, KindsAndWrapperClasses) {
  const auto doc = parse(
      "<?xml version=\"1.0\"?><!DOCTYPE r SYSTEM \"r.dtd\">"
      "<r xmlns=\"urn:d\" xmlns:p=\"urn:p\" a=\"1\"><?pi data?><!--c-->text<p:e/>&e;</r>");
  ASSERT_TRUE(doc);
  const auto single = [&](const std::string& xpath,
                          const std::optional<TNL_XMLNode::Namespaces>& ns = std::nullopt) {
    TNLErrorPtr error;
    const auto nodes = doc->nodesForXPath(xpath, ns, &error);
    EXPECT_TRUE(nodes && nodes->size() == 1) << xpath;
    return nodes && !nodes->empty() ? nodes->front() : nullptr;
  };

  const auto document = single("/");
  EXPECT_EQ(document->kind(), TNL_XMLDocumentKind);
  EXPECT_EQ(document->childAtIndex(0)->kind(), TNL_XMLDTDKind);
  const auto root = doc->rootElement();
  EXPECT_EQ(single("/d:r", TNL_XMLNode::Namespaces{{"d", "urn:d"}})->XMLNode(), root->XMLNode());
  EXPECT_EQ(single("//@a")->kind(), TNL_XMLAttributeKind);
  EXPECT_EQ(single("//processing-instruction()")->kind(), TNL_XMLProcessingInstructionKind);
  // An entity of the unread external subset stays a reference.
  EXPECT_EQ(root->childAtIndex(4)->kind(), TNL_XMLEntityDeclarationKind);

  // Elements come wrapped as elements, everything else as plain nodes, from either factory.
  EXPECT_NE(std::dynamic_pointer_cast<TNL_XMLElement>(single("//p:e")), nullptr);
  EXPECT_EQ(std::dynamic_pointer_cast<TNL_XMLElement>(single("//@a")), nullptr);
  EXPECT_NE(std::dynamic_pointer_cast<TNL_XMLElement>(
                TNL_XMLElement::nodeBorrowingXMLNode(root->XMLNode())),
            nullptr);
  EXPECT_EQ(TNL_XMLNode::nodeBorrowingXMLNode(nullptr), nullptr);

  // Namespace nodes: the prefix is the name, "" for the default one; the URI is the value.
  const auto p = single("/*/namespace::p");
  EXPECT_EQ(p->kind(), TNL_XMLNamespaceKind);
  EXPECT_EQ(p->name(), "p");
  EXPECT_EQ(p->stringValue(), "urn:p");
  EXPECT_EQ(p->XMLString(), "xmlns:p=\"urn:p\"");
  const auto defaultNamespace = single("/*/namespace::*[.='urn:d']");
  EXPECT_EQ(defaultNamespace->name(), "");
  EXPECT_TRUE(p->children().empty());
}

TEST(TNL_XMLDocument, XPathRegistersTheContextElementsNamespaces) {
  const auto doc = parse(
      "<VAST xmlns=\"http://www.iab.com/VAST\" xmlns:xs=\"urn:xs\"><Ad id=\"1\">"
      "<MediaFile>a</MediaFile><MediaFile>b</MediaFile>"
      "<Extensions xmlns:x=\"urn:x\"><x:Ext>e</x:Ext></Extensions></Ad></VAST>");
  ASSERT_TRUE(doc);

  // A map replaces the automatic registration of "_def_ns", which the samples test uses.
  TNLErrorPtr error;
  const auto mapped = doc->nodesForXPath(
      "//v:MediaFile", TNL_XMLNode::Namespaces{{"v", "http://www.iab.com/VAST"}}, &error);
  ASSERT_TRUE(mapped.has_value());
  EXPECT_EQ(mapped->size(), 2u);
  EXPECT_FALSE(doc->nodesForXPath("//_def_ns:MediaFile", TNL_XMLNode::Namespaces{}, &error));

  // Only the context element's declarations count: x is declared deeper.
  error = nullptr;
  EXPECT_FALSE(doc->nodesForXPath("//x:Ext", &error).has_value());
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->domain(), TNL_XMLErrorDomain);
  EXPECT_EQ(error->code(), XML_XPATH_UNDEF_PREFIX_ERROR);
  EXPECT_FALSE(error->userInfo().value("error", "").empty());
  const auto extensions = find(doc, "//_def_ns:Extensions");
  ASSERT_EQ(extensions.size(), 1u);
  const auto ext = extensions[0]->nodesForXPath("x:Ext", &error);
  ASSERT_TRUE(ext.has_value());
  ASSERT_EQ(ext->size(), 1u);
  EXPECT_EQ((*ext)[0]->name(), "x:Ext");

  error = nullptr;
  EXPECT_FALSE(doc->nodesForXPath("//MediaFile[", &error).has_value());
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->code(), XML_XPATH_EXPR_ERROR);
  EXPECT_TRUE(error->userInfo().contains("error"));

  // Results that are not node sets give an empty list.
  const auto count = doc->nodesForXPath("count(//*)", &error);
  ASSERT_TRUE(count.has_value());
  EXPECT_TRUE(count->empty());
}

TEST(TNL_XMLDocument, NamesValuesAndSerialisation) {
  const auto doc = parse(
      "<r xmlns:p=\"urn:p\"><p:e b=\"2\" a=\"1\" p:c=\"3\">x<i>y</i>z</p:e><empty/>"
      "<text>  two\n lines  </text></r>");
  ASSERT_TRUE(doc);
  const auto root = doc->rootElement();
  EXPECT_EQ(root->name(), "r");
  ASSERT_EQ(root->childCount(), 3u);
  EXPECT_EQ(root->childAtIndex(3), nullptr);

  const auto e = std::dynamic_pointer_cast<TNL_XMLElement>(root->childAtIndex(0));
  ASSERT_TRUE(e);
  EXPECT_EQ(e->name(), "p:e");
  EXPECT_EQ(e->stringValue(), "xyz");
  EXPECT_EQ(e->XMLString(), "<p:e b=\"2\" a=\"1\" p:c=\"3\">x<i>y</i>z</p:e>");
  const auto& attributes = e->attributes();
  ASSERT_EQ(attributes.size(), 3u);
  EXPECT_EQ(attributes[0]->name(), "b");
  EXPECT_EQ(attributes[1]->stringValue(), "1");
  EXPECT_EQ(attributes[2]->name(), "p:c");
  EXPECT_EQ(attributes[2]->XMLString(), "p:c=\"3\"");

  const auto empty = std::dynamic_pointer_cast<TNL_XMLElement>(root->childAtIndex(1));
  EXPECT_TRUE(empty->attributes().empty());
  EXPECT_TRUE(empty->children().empty());
  EXPECT_EQ(empty->stringValue(), "");
  EXPECT_EQ(root->childAtIndex(2)->stringValue(), "  two\n lines  ");
  EXPECT_EQ(root->childAtIndex(2)->childAtIndex(0)->name(), "text");
}

TEST(TNL_XMLDocument, BorrowedNodesBelongToTheDocumentCopiesToThemselves) {
  auto doc = parse("<r><a><b>1</b></a></r>");
  ASSERT_TRUE(doc);
  {
    const auto a = find(doc, "//a")[0];
    EXPECT_FALSE(a->shouldFreeXMLNode());
    EXPECT_FALSE(a->childAtIndex(0)->shouldFreeXMLNode());
  }
  // Dropping borrowed wrappers freed nothing.
  EXPECT_EQ(doc->rootElement()->XMLString(), "<r><a><b>1</b></a></r>");

  const auto copy = std::dynamic_pointer_cast<TNL_XMLElement>(find(doc, "//a")[0]->copy());
  ASSERT_TRUE(copy);
  EXPECT_TRUE(copy->shouldFreeXMLNode());
  EXPECT_EQ(copy->XMLNode()->doc, nullptr);
  copy->addChild(*TNL_XMLNode::elementWithName("c"));
  EXPECT_EQ(doc->rootElement()->XMLString(), "<r><a><b>1</b></a></r>");
  doc.reset();  // the copy outlives the document it came from
  EXPECT_EQ(copy->XMLString(), "<a><b>1</b><c/></a>");
  EXPECT_EQ(copy->childAtIndex(0)->stringValue(), "1");
}

TEST(TNL_XMLNode, NodesWithoutADocumentAreSearchedInATemporaryOne) {
  const auto root = TNL_XMLNode::elementWithName("root");
  root->addChild(*TNL_XMLNode::elementWithName("child", "v"));
  root->addChild(*TNL_XMLNode::elementWithName("child", "w"));
  EXPECT_TRUE(root->shouldFreeXMLNode());

  TNLErrorPtr error;
  const auto children = root->nodesForXPath("//child", &error);
  ASSERT_TRUE(children.has_value());
  ASSERT_EQ(children->size(), 2u);
  EXPECT_EQ((*children)[1]->stringValue(), "w");
  EXPECT_EQ(root->XMLNode()->doc, nullptr);
  EXPECT_EQ((*children)[0]->XMLNode()->doc, nullptr);
  EXPECT_EQ(root->XMLNode()->parent, nullptr);

  // From a descendant the whole tree is searched.
  const auto up = (*children)[0]->nodesForXPath("ancestor::root", &error);
  ASSERT_TRUE(up.has_value());
  ASSERT_EQ(up->size(), 1u);
  EXPECT_EQ((*up)[0]->XMLNode(), root->XMLNode());
  EXPECT_EQ(root->XMLString(), "<root><child>v</child><child>w</child></root>");

  // An attribute on its own cannot stand in a document.
  const auto attribute = TNL_XMLNode::attributeWithName("k", "v");
  EXPECT_FALSE(attribute->nodesForXPath(".", &error).has_value());
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->domain(), TNL_XMLErrorDomain);
  EXPECT_EQ(error->code(), -1);
  EXPECT_EQ(error->userInfo(), TNLJson({{"error", "invalid node"}}));
}

TEST(TNL_XMLElement, AddChildCopiesAndFitsNamespaces) {
  const auto target = parse(
      "<VAST xmlns=\"urn:vast\" xmlns:v=\"urn:vast\" xmlns:o=\"urn:other\"><Ad><Tracking>"
      "<T>inline</T></Tracking></Ad></VAST>");
  const auto source = parse(
      "<VAST xmlns=\"urn:vast\"><Wrapper><Tracking><T e=\"start\">wrapper</T></Tracking>"
      "</Wrapper></VAST>");
  const auto foreign = parse("<X xmlns=\"urn:foreign\"><Y>f</Y></X>");
  const auto plain = parse("<P><Q a=\"1\">q</Q></P>");
  ASSERT_TRUE(target && source && foreign && plain);
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
  EXPECT_EQ(find(source, "//_def_ns:T")[0]->XMLNode()->doc, source->rootElement()->XMLNode()->doc);

  // Another namespace keeps its declaration; unqualified nodes take the default in scope.
  tracking->addChild(*find(foreign, "/*/*")[0]);
  tracking->addChild(*find(plain, "//Q")[0]);
  EXPECT_EQ(tracking->XMLString(),
            "<Tracking><T>inline</T><T e=\"start\">wrapper</T><Y xmlns=\"urn:foreign\">f</Y>"
            "<Q a=\"1\">q</Q></Tracking>");
  EXPECT_EQ(find(target, "//_def_ns:Q").size(), 1u);
  EXPECT_TRUE(find(target, "//Q").empty());

  // Qualified names resolve against the graft point, by prefix or by "{URI}".
  tracking->addChild(*TNL_XMLNode::elementWithName("o:Extra", "x"));
  tracking->addChild(*TNL_XMLNode::elementWithName("{urn:other}:ByURI"));
  tracking->addChild(*TNL_XMLNode::elementWithName("unknown:Kept"));
  tracking->addChild(*TNL_XMLNode::elementWithName("trailing:"));
  const auto added = tracking->children();
  ASSERT_EQ(added.size(), 8u);
  EXPECT_EQ(added[4]->name(), "o:Extra");
  EXPECT_EQ(added[5]->name(), "o:ByURI");
  EXPECT_EQ(added[6]->name(), "unknown:Kept");
  EXPECT_EQ(added[7]->name(), "trailing:");
  EXPECT_EQ(find(target, "//o:Extra").size(), 1u);

  // A declaration repeating one in scope under the same prefix gives way to it.
  const auto prefixed = parse("<v:W xmlns:v=\"urn:vast\"><v:Z/></v:W>");
  tracking->addChild(*find(prefixed, "/*/*")[0]);
  EXPECT_EQ(tracking->childAtIndex(8)->XMLString(), "<v:Z/>");
  EXPECT_EQ(find(target, "//v:Z").size(), 1u);

  // Attributes become attributes; namespace nodes become declarations.
  const auto ad = std::dynamic_pointer_cast<TNL_XMLElement>(find(target, "//_def_ns:Ad")[0]);
  EXPECT_TRUE(ad->attributes().empty());
  ad->addChild(*TNL_XMLNode::attributeWithName("id", "7"));
  ad->addChild(*TNL_XMLNode::namespaceWithName("n", "urn:n"));
  ASSERT_EQ(ad->attributes().size(), 1u);
  EXPECT_EQ(ad->attributes()[0]->stringValue(), "7");
  EXPECT_EQ(ad->childCount(), 1u);
  EXPECT_EQ(ad->XMLString()->rfind("<Ad xmlns:n=\"urn:n\" id=\"7\">", 0), 0u);
}

}  // namespace
