#include "Ads/VAST/XMLSupport/TNL_XMLDocument.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <climits>
#include <mutex>
#include <unordered_map>

#include "TarnelAd/TNLConstants.h"

namespace {

// CDATA sections become plain text and blank-only text nodes are dropped, whatever the caller
// asks for: the VAST code reads text content and serialises documents on one line. Nothing is
// fetched from the network, and entities are never substituted. Without XML_PARSE_HUGE libxml2
// refuses elements nested deeper than 256.
constexpr int kParseOptions = XML_PARSE_NOCDATA | XML_PARSE_NOBLANKS | XML_PARSE_NONET;

struct FreeParserContext {
  void operator()(xmlParserCtxtPtr context) const { xmlFreeParserCtxt(context); }
};

// Parse errors are reported through the error out argument only; libxml2 would print them.
#if LIBXML_VERSION >= 21200
void ignoreParseError(void*, const xmlError*) {}
#else
void ignoreParseError(void*, xmlErrorPtr) {}
#endif

// A document that declares entities is refused at the first declaration: reading the text of a
// few references to a large entity would otherwise cost far more than the document's size.
void refuseEntityDeclaration(void* context, const xmlChar*, int, const xmlChar*, const xmlChar*,
                             xmlChar*) {
  const auto parser = static_cast<xmlParserCtxtPtr>(context);
  *static_cast<bool*>(parser->_private) = true;
  xmlStopParser(parser);
}

TNLErrorPtr parseError() {
  return TNLError::make(TNL_XMLErrorDomain, -1);
}

}  // namespace

// Strings read from the document's nodes, made once per distinct text and shared.
class TNL_XMLDocument::StringCache {
 public:
  std::shared_ptr<const std::string> stringFor(std::string_view text) {
    const auto found = strings_.find(text);
    if (found != strings_.end()) {
      return found->second;
    }
    auto string = std::make_shared<const std::string>(text);
    strings_.emplace(std::string_view(*string), string);
    return string;
  }

 private:
  // djb2: start at 5381, then for each byte multiply by 33 and add the byte.
  struct Djb2 {
    size_t operator()(std::string_view text) const noexcept {
      size_t hash = 5381;
      for (const unsigned char byte : text) {
        hash = hash * 33 + byte;
      }
      return hash;
    }
  };

  // Keys view the text of their own value.
  std::unordered_map<std::string_view, std::shared_ptr<const std::string>, Djb2> strings_;
};

void TNL_XMLDocument::FreeDocument::operator()(_xmlDoc* doc) const {
  xmlFreeDoc(doc);
}

TNL_XMLDocument::TNL_XMLDocument(Passkey, _xmlDoc* doc)
    : xmlDoc_(doc), stringCache_(std::make_unique<StringCache>()) {
  xmlDoc_->_private = stringCache_.get();
}

TNL_XMLDocument::~TNL_XMLDocument() {
  // The cache goes first, then the tree that points at it.
  xmlDoc_->_private = nullptr;
  stringCache_.reset();
  xmlDoc_.reset();
}

std::shared_ptr<TNL_XMLDocument> TNL_XMLDocument::createWithData(const std::string& data,
                                                                 unsigned /*options*/,
                                                                 TNLErrorPtr* error) {
  static std::once_flag once;
  std::call_once(once, [] { xmlInitParser(); });

  const std::unique_ptr<xmlParserCtxt, FreeParserContext> context(xmlNewParserCtxt());
  xmlDocPtr doc = nullptr;
  bool declaresEntities = false;
  if (context && data.size() <= static_cast<size_t>(INT_MAX)) {
    context->sax->serror = ignoreParseError;
    context->sax->entityDecl = refuseEntityDeclaration;
    context->_private = &declaresEntities;
    doc = xmlCtxtReadMemory(context.get(), data.data(), static_cast<int>(data.size()), nullptr,
                            nullptr, kParseOptions);
  }
  // Any other declaration in an internal subset is refused too: VAST documents carry none.
  if (doc != nullptr &&
      (declaresEntities || (doc->intSubset != nullptr && doc->intSubset->children != nullptr))) {
    xmlFreeDoc(doc);
    doc = nullptr;
  }
  if (doc == nullptr) {
    if (error) {
      *error = parseError();
    }
    return nullptr;
  }
  auto document = std::make_shared<TNL_XMLDocument>(Passkey{}, doc);
  if (error) {
    *error = nullptr;
  }
  return document;
}

std::shared_ptr<TNL_XMLDocument> TNL_XMLDocument::createWithXMLString(const std::string& xmlString,
                                                                      unsigned options,
                                                                      TNLErrorPtr* error) {
  // Strings are UTF-8 already.
  return createWithData(xmlString, options, error);
}

std::shared_ptr<TNL_XMLElement> TNL_XMLDocument::rootElement() const {
  return std::dynamic_pointer_cast<TNL_XMLElement>(
      TNL_XMLNode::nodeBorrowingXMLNode(xmlDocGetRootElement(xmlDoc_.get())));
}

std::optional<TNL_XMLNode::Nodes> TNL_XMLDocument::nodesForXPath(const std::string& xpath,
                                                                 TNLErrorPtr* error) const {
  return nodesForXPath(xpath, std::nullopt, error);
}

std::optional<TNL_XMLNode::Nodes> TNL_XMLDocument::nodesForXPath(
    const std::string& xpath, const std::optional<TNL_XMLNode::Namespaces>& namespaces,
    TNLErrorPtr* error) const {
  const auto documentNode =
      TNL_XMLNode::nodeBorrowingXMLNode(reinterpret_cast<xmlNodePtr>(xmlDoc_.get()));
  return documentNode->nodesForXPath(xpath, namespaces, error);
}

std::shared_ptr<const std::string> TNL_XMLDocument::stringForText(const _xmlDoc* doc,
                                                                  std::string_view text) {
  if (doc != nullptr && doc->_private != nullptr) {
    return static_cast<StringCache*>(doc->_private)->stringFor(text);
  }
  return std::make_shared<const std::string>(text);
}
