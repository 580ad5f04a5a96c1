#include "Ads/VAST/XMLSupport/TNL_XMLNode.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <mutex>
#include <string_view>
#include <unordered_map>

#include "Ads/VAST/XMLSupport/TNL_XMLDocument.h"
#include "Ads/VAST/XMLSupport/TNL_XMLElement.h"
#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Foundation/TNLStrings.h"
#include "TarnelAd/TNLConstants.h"

namespace {

const xmlChar* xmlText(const std::string& text) {
  return reinterpret_cast<const xmlChar*>(text.c_str());
}

std::string_view view(const xmlChar* text) {
  return reinterpret_cast<const char*>(text);
}

// XPath hands out namespace nodes as xmlNs records cast to xmlNode; only `type` may be read
// before the cast back.
bool isNamespace(const xmlNode* node) {
  return node->type == XML_NAMESPACE_DECL;
}

xmlNsPtr asNamespace(xmlNodePtr node) {
  return reinterpret_cast<xmlNsPtr>(node);
}

bool isDocument(const xmlNode* node) {
  return node->type == XML_DOCUMENT_NODE || node->type == XML_HTML_DOCUMENT_NODE;
}

// The kinds whose strings are shared through the document's string cache.
bool usesStringCache(const xmlNode* node) {
  switch (node->type) {
    case XML_ELEMENT_NODE:
    case XML_ATTRIBUTE_NODE:
    case XML_TEXT_NODE:
    case XML_CDATA_SECTION_NODE:
      return true;
    default:
      return false;
  }
}

std::shared_ptr<const std::string> makeString(const xmlNode* node, std::string_view text) {
  if (usesStringCache(node)) {
    return TNL_XMLDocument::stringForText(node->doc, text);
  }
  return std::make_shared<const std::string>(text);
}

void initialiseLibxml2() {
  static std::once_flag once;
  std::call_once(once, [] { xmlInitParser(); });
}

struct FreeXMLChar {
  void operator()(xmlChar* text) const { xmlFree(text); }
};
struct FreeXPathContext {
  void operator()(xmlXPathContextPtr context) const { xmlXPathFreeContext(context); }
};
// Building an XPath context fills a hash with every XPath function, which costs more than most of
// the queries the VAST workflow makes; each thread keeps one and points it at the node asked
// about, with that query's namespaces.
xmlXPathContextPtr threadXPathContext(xmlNodePtr node) {
  thread_local const std::unique_ptr<xmlXPathContext, FreeXPathContext> context(
      xmlXPathNewContext(nullptr));
  if (context) {
    xmlXPathRegisteredNsCleanup(context.get());
    context->doc = node->doc;
    context->node = node;
  }
  return context.get();
}

struct FreeCompiledXPath {
  void operator()(xmlXPathCompExprPtr expression) const { xmlXPathFreeCompExpr(expression); }
};

// Queries come from a handful of fixed paths, so each thread compiles each path once. A compiled
// path resolves its prefixes when it runs, with whatever namespaces the context has then. The
// cache is bounded, as callers may pass any text; null when the path does not compile (the
// error was raised).
xmlXPathCompExprPtr compiledXPath(xmlXPathContextPtr context, const std::string& xpath) {
  constexpr size_t kMaxCompiled = 64;
  thread_local std::unordered_map<std::string, std::unique_ptr<xmlXPathCompExpr, FreeCompiledXPath>>
      compiled;
  if (const auto found = compiled.find(xpath); found != compiled.end()) {
    return found->second.get();
  }
  std::unique_ptr<xmlXPathCompExpr, FreeCompiledXPath> expression(
      xmlXPathCtxtCompile(context, xmlText(xpath)));
  if (!expression) {
    return nullptr;
  }
  if (compiled.size() >= kMaxCompiled) {
    compiled.clear();
  }
  return compiled.emplace(xpath, std::move(expression)).first->second.get();
}

struct FreeXPathObject {
  void operator()(xmlXPathObjectPtr object) const { xmlXPathFreeObject(object); }
};
struct FreeBuffer {
  void operator()(xmlBufferPtr buffer) const { xmlBufferFree(buffer); }
};
struct FreeDocument {
  void operator()(xmlDocPtr doc) const { xmlFreeDoc(doc); }
};

#if LIBXML_VERSION >= 21200
using ErrorRecord = const xmlError*;
#else
using ErrorRecord = xmlErrorPtr;
#endif

// Keeps the libxml2 errors raised on this thread while it lives, instead of letting libxml2 print
// them on stderr. libxml2's handler slots are per thread, so other threads are not affected.
class ErrorCapture {
 public:
  ErrorCapture()
      : previousHandler_(xmlStructuredError), previousContext_(xmlStructuredErrorContext) {
    xmlSetStructuredErrorFunc(this, &ErrorCapture::record);
  }
  ~ErrorCapture() { xmlSetStructuredErrorFunc(previousContext_, previousHandler_); }
  ErrorCapture(const ErrorCapture&) = delete;
  ErrorCapture& operator=(const ErrorCapture&) = delete;

  bool raised() const { return raised_; }
  int code() const { return code_; }
  const std::optional<std::string>& message() const { return message_; }

 private:
  static void record(void* context, ErrorRecord error) {
    auto* self = static_cast<ErrorCapture*>(context);
    if (error == nullptr) {
      return;
    }
    self->raised_ = true;
    self->code_ = error->code;
    self->message_.reset();
    if (error->message != nullptr) {
      self->message_ = error->message;
    }
  }

  xmlStructuredErrorFunc previousHandler_;
  void* previousContext_;
  bool raised_ = false;
  int code_ = 0;
  std::optional<std::string> message_;
};

// Lends a tree that has no document a temporary one for the time of an XPath evaluation, and
// takes the tree out again afterwards, so that it ends as it was: without a document.
class TemporaryDocument {
 public:
  explicit TemporaryDocument(xmlNodePtr node) {
    if (node->doc != nullptr) {
      return;
    }
    xmlNodePtr top = node;
    while (top->parent != nullptr) {
      top = top->parent;
    }
    switch (top->type) {
      case XML_ELEMENT_NODE:
      case XML_TEXT_NODE:
      case XML_CDATA_SECTION_NODE:
      case XML_COMMENT_NODE:
      case XML_PI_NODE:
        break;
      default:
        return;  // attributes and the like cannot stand at the top of a document
    }
    std::unique_ptr<xmlDoc, FreeDocument> doc(xmlNewDoc(nullptr));
    if (!doc || xmlAddChild(reinterpret_cast<xmlNodePtr>(doc.get()), top) == nullptr) {
      return;
    }
    doc_ = std::move(doc);
    top_ = top;
  }

  ~TemporaryDocument() {
    if (doc_) {
      xmlUnlinkNode(top_);
      xmlSetTreeDoc(top_, nullptr);
    }
  }

  TemporaryDocument(const TemporaryDocument&) = delete;
  TemporaryDocument& operator=(const TemporaryDocument&) = delete;

 private:
  std::unique_ptr<xmlDoc, FreeDocument> doc_;
  xmlNodePtr top_ = nullptr;
};

// An XPath match as a wrapper. XPath copies namespace nodes into records that die with its
// result; such a match is mapped back to the declaration it stands for, or copied.
std::shared_ptr<TNL_XMLNode> wrapMatch(xmlNodePtr match) {
  if (!isNamespace(match)) {
    return TNL_XMLNode::nodeBorrowingXMLNode(match);
  }
  const xmlNsPtr ns = asNamespace(match);
  const bool isXPathCopy = ns->next != nullptr && ns->next->type != XML_NAMESPACE_DECL;
  if (!isXPathCopy) {
    return TNL_XMLNode::nodeBorrowingXMLNode(match);
  }
  auto* const owner = reinterpret_cast<xmlNodePtr>(ns->next);
  // The xml prefix is declared by the document itself, which may be a temporary one.
  if (owner->type == XML_ELEMENT_NODE &&
      !xmlStrEqual(ns->prefix, reinterpret_cast<const xmlChar*>("xml"))) {
    const xmlNsPtr declared = xmlSearchNs(owner->doc, owner, ns->prefix);
    if (declared != nullptr && xmlStrEqual(declared->href, ns->href)) {
      return TNL_XMLNode::nodeBorrowingXMLNode(reinterpret_cast<xmlNodePtr>(declared));
    }
  }
  return TNL_XMLNode::nodeConsumingXMLNode(reinterpret_cast<xmlNodePtr>(xmlCopyNamespace(ns)));
}

TNLErrorPtr invalidNodeError() {
  return TNLError::make(TNL_XMLErrorDomain, -1, TNLJson{{"error", "invalid node"}});
}

}  // namespace

// ---- Wrapping ----

TNL_XMLNode::TNL_XMLNode(Passkey, _xmlNode* node, bool shouldFreeXMLNode)
    : xmlNode_(node, Release{shouldFreeXMLNode}) {}

TNL_XMLNode::~TNL_XMLNode() = default;

void TNL_XMLNode::Release::operator()(_xmlNode* node) const {
  if (!shouldFree || node == nullptr) {
    return;
  }
  switch (node->type) {
    case XML_NAMESPACE_DECL:
      xmlFreeNs(asNamespace(node));
      break;
    case XML_DOCUMENT_NODE:
    case XML_HTML_DOCUMENT_NODE:
      xmlFreeDoc(reinterpret_cast<xmlDocPtr>(node));
      break;
    case XML_ATTRIBUTE_NODE:
      xmlUnlinkNode(node);
      xmlFreeProp(reinterpret_cast<xmlAttrPtr>(node));
      break;
    default:
      xmlUnlinkNode(node);
      xmlFreeNode(node);
      break;
  }
}

std::shared_ptr<TNL_XMLNode> TNL_XMLNode::wrap(_xmlNode* node, bool shouldFreeXMLNode) {
  if (node == nullptr) {
    return nullptr;
  }
  if (node->type == XML_ELEMENT_NODE) {
    return std::make_shared<TNL_XMLElement>(Passkey{}, node, shouldFreeXMLNode);
  }
  return std::make_shared<TNL_XMLNode>(Passkey{}, node, shouldFreeXMLNode);
}

std::shared_ptr<TNL_XMLNode> TNL_XMLNode::nodeBorrowingXMLNode(_xmlNode* node) {
  return wrap(node, false);
}

std::shared_ptr<TNL_XMLNode> TNL_XMLNode::nodeConsumingXMLNode(_xmlNode* node) {
  return wrap(node, true);
}

// ---- Builders ----

std::shared_ptr<TNL_XMLElement> TNL_XMLNode::elementWithName(const std::string& name) {
  return std::static_pointer_cast<TNL_XMLElement>(
      nodeConsumingXMLNode(xmlNewNode(nullptr, xmlText(name))));
}

std::shared_ptr<TNL_XMLElement> TNL_XMLNode::elementWithName(const std::string& name,
                                                             const std::string& stringValue) {
  auto element = elementWithName(name);
  if (element) {
    xmlNodeAddContent(element->XMLNode(), xmlText(stringValue));
  }
  return element;
}

std::shared_ptr<TNL_XMLNode> TNL_XMLNode::attributeWithName(const std::string& name,
                                                            const std::string& stringValue) {
  return nodeConsumingXMLNode(
      reinterpret_cast<xmlNodePtr>(xmlNewProp(nullptr, xmlText(name), xmlText(stringValue))));
}

std::shared_ptr<TNL_XMLNode> TNL_XMLNode::namespaceWithName(const std::string& prefix,
                                                            const std::string& uri) {
  const xmlChar* const nsPrefix = prefix.empty() ? nullptr : xmlText(prefix);
  return nodeConsumingXMLNode(
      reinterpret_cast<xmlNodePtr>(xmlNewNs(nullptr, xmlText(uri), nsPrefix)));
}

std::shared_ptr<TNL_XMLNode> TNL_XMLNode::copy() const {
  xmlNodePtr node = XMLNode();
  if (node == nullptr) {
    return nullptr;
  }
  if (isNamespace(node)) {
    return nodeConsumingXMLNode(reinterpret_cast<xmlNodePtr>(xmlCopyNamespace(asNamespace(node))));
  }
  // Without a document: the copy must not depend on the original's document living on.
  return nodeConsumingXMLNode(xmlDocCopyNode(node, nullptr, 1));
}

// ---- Reading ----

unsigned TNL_XMLNode::kind() const {
  const xmlNode* node = XMLNode();
  if (node == nullptr) {
    return TNL_XMLInvalidKind;
  }
  switch (static_cast<int>(node->type)) {
    case XML_DOCUMENT_NODE:
    case XML_DOCUMENT_TYPE_NODE:
    case XML_DOCUMENT_FRAG_NODE:
    case XML_HTML_DOCUMENT_NODE:
    case 21:  // DocBook document, gone from recent libxml2 headers
      return TNL_XMLDocumentKind;
    case XML_ELEMENT_NODE:
      return TNL_XMLElementKind;
    case XML_ATTRIBUTE_NODE:
      return TNL_XMLAttributeKind;
    case XML_NAMESPACE_DECL:
      return TNL_XMLNamespaceKind;
    case XML_PI_NODE:
    case XML_XINCLUDE_START:
    case XML_XINCLUDE_END:
      return TNL_XMLProcessingInstructionKind;
    case XML_COMMENT_NODE:
      return TNL_XMLCommentKind;
    case XML_TEXT_NODE:
    case XML_CDATA_SECTION_NODE:
      return TNL_XMLTextKind;
    case XML_DTD_NODE:
      return TNL_XMLDTDKind;
    case XML_ENTITY_REF_NODE:
    case XML_ENTITY_NODE:
    case XML_ENTITY_DECL:
      return TNL_XMLEntityDeclarationKind;
    case XML_ATTRIBUTE_DECL:
      return TNL_XMLAttributeDeclarationKind;
    case XML_ELEMENT_DECL:
      return TNL_XMLElementDeclarationKind;
    case XML_NOTATION_NODE:
      return TNL_XMLNotationDeclarationKind;
    default:
      return TNL_XMLInvalidKind;
  }
}

std::optional<std::string> TNL_XMLNode::name() const {
  xmlNodePtr node = XMLNode();
  if (node == nullptr) {
    return std::nullopt;
  }
  if (!cachedName_) {
    if (isNamespace(node)) {
      const xmlNsPtr ns = asNamespace(node);
      cachedName_ = std::make_shared<const std::string>(ns->prefix ? view(ns->prefix) : "");
    } else if (node->name == nullptr) {
      return std::nullopt;
    } else {
      const xmlNsPtr ns = node->type == XML_ATTRIBUTE_NODE
                              ? reinterpret_cast<xmlAttrPtr>(node)->ns
                              : (node->type == XML_ELEMENT_NODE ? node->ns : nullptr);
      if (ns != nullptr && ns->prefix != nullptr) {
        std::string qualified(view(ns->prefix));
        qualified += ':';
        qualified += view(node->name);
        cachedName_ = makeString(node, qualified);
      } else {
        cachedName_ = makeString(node, view(node->name));
      }
    }
  }
  return *cachedName_;
}

std::optional<std::string> TNL_XMLNode::stringValue() const {
  xmlNodePtr node = XMLNode();
  if (node == nullptr) {
    return std::nullopt;
  }
  if (isNamespace(node)) {
    const xmlNsPtr ns = asNamespace(node);
    return ns->href ? std::optional<std::string>(view(ns->href)) : std::nullopt;
  }
  const std::unique_ptr<xmlChar, FreeXMLChar> content(xmlNodeGetContent(node));
  if (!content) {
    return std::nullopt;
  }
  return *makeString(node, view(content.get()));
}

std::optional<std::string> TNL_XMLNode::XMLString() const {
  xmlNodePtr node = XMLNode();
  if (node == nullptr) {
    return std::nullopt;
  }
  std::string text;
  if (isNamespace(node)) {
    // Written here: libxml2's node dump expects a full node record.
    const xmlNsPtr ns = asNamespace(node);
    text = ns->prefix ? "xmlns:" + std::string(view(ns->prefix)) : "xmlns";
    text += "=\"" + std::string(ns->href ? view(ns->href) : "") + "\"";
  } else {
    const std::unique_ptr<xmlBuffer, FreeBuffer> buffer(xmlBufferCreate());
    if (!buffer || xmlNodeDump(buffer.get(), node->doc, node, 0, 0) < 0) {
      return std::nullopt;
    }
    text = view(xmlBufferContent(buffer.get()));
  }
  if (!TNLStrings::isValidUTF8(text)) {
    return std::nullopt;
  }
  return TNLStrings::trimWhitespaceAndNewlines(text);
}

const TNL_XMLNode::Nodes& TNL_XMLNode::children() const {
  if (!cachedChildren_) {
    Nodes list;
    xmlNodePtr node = XMLNode();
    // An entity reference's children are the entity's declaration, not part of this tree.
    if (node != nullptr && !isNamespace(node) && node->type != XML_ENTITY_REF_NODE) {
      for (xmlNodePtr child = node->children; child != nullptr; child = child->next) {
        list.push_back(nodeBorrowingXMLNode(child));
      }
    }
    cachedChildren_ = std::move(list);
  }
  return *cachedChildren_;
}

size_t TNL_XMLNode::childCount() const {
  return children().size();
}

std::shared_ptr<TNL_XMLNode> TNL_XMLNode::childAtIndex(size_t index) const {
  const Nodes& list = children();
  return index < list.size() ? list[index] : nullptr;
}

void TNL_XMLNode::releaseCachedValues() {
  cachedName_.reset();
  cachedChildren_.reset();
  cachedAttributes_.reset();
}

// ---- XPath ----

std::optional<TNL_XMLNode::Nodes> TNL_XMLNode::nodesForXPath(const std::string& xpath,
                                                             TNLErrorPtr* error) const {
  return nodesForXPath(xpath, std::nullopt, error);
}

std::optional<TNL_XMLNode::Nodes> TNL_XMLNode::nodesForXPath(
    const std::string& xpath, const std::optional<Namespaces>& namespaces,
    TNLErrorPtr* error) const {
  xmlNodePtr node = XMLNode();
  if (node == nullptr) {
    return std::nullopt;
  }
  initialiseLibxml2();
  if (isNamespace(node)) {
    if (error) {
      *error = invalidNodeError();
    }
    return std::nullopt;
  }
  const TemporaryDocument temporary(node);
  if (node->doc == nullptr) {
    if (error) {
      *error = invalidNodeError();
    }
    return std::nullopt;
  }

  const xmlXPathContextPtr context = threadXPathContext(node);
  if (context == nullptr) {
    if (error) {
      *error = TNLError::make(TNL_XMLErrorDomain, -1);
    }
    return std::nullopt;
  }
  if (namespaces) {
    for (const auto& [prefix, uri] : *namespaces) {
      xmlXPathRegisterNs(context, xmlText(prefix), xmlText(uri));
    }
  } else {
    const xmlNodePtr scope =
        isDocument(node) ? xmlDocGetRootElement(reinterpret_cast<xmlDocPtr>(node)) : node;
    if (scope != nullptr && scope->type == XML_ELEMENT_NODE) {
      for (xmlNsPtr ns = scope->nsDef; ns != nullptr; ns = ns->next) {
        const auto* prefix =
            ns->prefix != nullptr
                ? ns->prefix
                : reinterpret_cast<const xmlChar*>(kTNLXMLXPathDefaultNamespacePrefix);
        xmlXPathRegisterNs(context, prefix, ns->href);
      }
    }
  }

  ErrorCapture capture;
  const xmlXPathCompExprPtr expression = compiledXPath(context, xpath);
  const std::unique_ptr<xmlXPathObject, FreeXPathObject> result(
      expression != nullptr ? xmlXPathCompiledEval(expression, context) : nullptr);
  // The context outlives this document; it must not keep pointing into it.
  context->doc = nullptr;
  context->node = nullptr;
  if (!result) {
    if (error) {
      TNLJson info = TNLJson::object();
      if (capture.message()) {
        info["error"] = *capture.message();
      }
      *error = TNLError::make(TNL_XMLErrorDomain, capture.raised() ? capture.code() : -1,
                              std::move(info));
    }
    return std::nullopt;
  }
  Nodes nodes;
  if (result->type == XPATH_NODESET && result->nodesetval != nullptr) {
    const xmlNodeSetPtr set = result->nodesetval;
    nodes.reserve(static_cast<size_t>(set->nodeNr));
    for (int i = 0; i < set->nodeNr; ++i) {
      if (auto wrapped = wrapMatch(set->nodeTab[i])) {
        nodes.push_back(std::move(wrapped));
      }
    }
  }
  return nodes;
}
