#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Ads/VAST/XMLSupport/TNL_XMLElement.h"
#include "Ads/VAST/XMLSupport/TNL_XMLNode.h"
#include "Platform/Foundation/TNLError.h"

struct _xmlDoc;

// A parsed XML document. Owns the libxml2 document: every node handed out from it borrows and is
// valid only while the document lives.
//
// Parsing always drops CDATA markers (sections become plain text) and blank-only text nodes.
class TNL_XMLDocument {
 public:
  // Parses bytes (libxml2 detects the encoding). `options` is accepted for callers that pass
  // one and is ignored. Null on failure, with `error` set to TNL_XMLErrorDomain code -1; on
  // success `error` is cleared.
  static std::shared_ptr<TNL_XMLDocument> createWithData(const std::string& data, unsigned options,
                                                         TNLErrorPtr* error);
  static std::shared_ptr<TNL_XMLDocument> createWithXMLString(const std::string& xmlString,
                                                              unsigned options, TNLErrorPtr* error);

  class Passkey {
    friend class TNL_XMLDocument;
    Passkey() = default;
  };
  TNL_XMLDocument(Passkey, _xmlDoc* doc);
  ~TNL_XMLDocument();
  TNL_XMLDocument(const TNL_XMLDocument&) = delete;
  TNL_XMLDocument& operator=(const TNL_XMLDocument&) = delete;

  std::shared_ptr<TNL_XMLElement> rootElement() const;

  // XPath with the document node as context; see TNL_XMLNode::nodesForXPath.
  std::optional<TNL_XMLNode::Nodes> nodesForXPath(const std::string& xpath,
                                                  TNLErrorPtr* error = nullptr) const;
  std::optional<TNL_XMLNode::Nodes> nodesForXPath(
      const std::string& xpath, const std::optional<TNL_XMLNode::Namespaces>& namespaces,
      TNLErrorPtr* error) const;

  // The string for `text` read from a node of `doc`: shared through the cache of a document made
  // here, a fresh string for any other document or none.
  static std::shared_ptr<const std::string> stringForText(const _xmlDoc* doc,
                                                          std::string_view text);

 private:
  class StringCache;
  struct FreeDocument {
    void operator()(_xmlDoc* doc) const;
  };

  std::unique_ptr<_xmlDoc, FreeDocument> xmlDoc_;
  // Reached from nodes through the libxml2 document's private slot.
  std::unique_ptr<StringCache> stringCache_;
};
