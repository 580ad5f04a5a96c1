#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Foundation/TNLError.h"

// libxml2's node type, declared here so that users of this layer need not include libxml2.
struct _xmlNode;

class TNL_XMLElement;

// What a node is, derived from its libxml2 type.
enum TNL_XMLNodeKind : unsigned {
  TNL_XMLInvalidKind = 0,
  TNL_XMLDocumentKind = 1,
  TNL_XMLElementKind = 2,
  TNL_XMLAttributeKind = 3,
  TNL_XMLNamespaceKind = 4,
  TNL_XMLProcessingInstructionKind = 5,
  TNL_XMLCommentKind = 6,
  TNL_XMLTextKind = 7,
  TNL_XMLDTDKind = 8,
  TNL_XMLEntityDeclarationKind = 9,
  TNL_XMLAttributeDeclarationKind = 10,
  TNL_XMLElementDeclarationKind = 11,
  TNL_XMLNotationDeclarationKind = 12,
};

// A node of an XML tree, wrapping one libxml2 node.
//
// A wrapper either borrows its node (the node belongs to a document or to another wrapper's tree
// and stays valid only while that owner lives) or consumes it (the wrapper owns the node and frees
// it when the wrapper goes away). Everything handed out from a document or from another node
// borrows; only the builders below and copy() consume.
//
// A tree and its wrappers are used by one thread at a time.
class TNL_XMLNode {
 public:
  using Nodes = std::vector<std::shared_ptr<TNL_XMLNode>>;
  // Prefix -> namespace URI.
  using Namespaces = std::map<std::string, std::string>;

  // A TNL_XMLElement when the node is an element, a TNL_XMLNode otherwise; null for no node.
  static std::shared_ptr<TNL_XMLNode> nodeBorrowingXMLNode(_xmlNode* node);
  static std::shared_ptr<TNL_XMLNode> nodeConsumingXMLNode(_xmlNode* node);

  // Builders of nodes without a document; the wrappers consume their nodes. A name may carry a
  // prefix ("p:name"); it is resolved when the node is added to an element (see addChild).
  static std::shared_ptr<TNL_XMLElement> elementWithName(const std::string& name);
  static std::shared_ptr<TNL_XMLElement> elementWithName(const std::string& name,
                                                         const std::string& stringValue);
  static std::shared_ptr<TNL_XMLNode> attributeWithName(const std::string& name,
                                                        const std::string& stringValue);
  static std::shared_ptr<TNL_XMLNode> namespaceWithName(const std::string& prefix,
                                                        const std::string& uri);

  virtual ~TNL_XMLNode();
  TNL_XMLNode(const TNL_XMLNode&) = delete;
  TNL_XMLNode& operator=(const TNL_XMLNode&) = delete;

  // A deep copy of the node, without a document, owned by the new wrapper.
  std::shared_ptr<TNL_XMLNode> copy() const;

  unsigned kind() const;
  bool shouldFreeXMLNode() const { return xmlNode_.get_deleter().shouldFree; }

  // The qualified name ("prefix:local" when the namespace has a prefix); for a namespace node its
  // prefix, "" for a default namespace. Cached.
  std::optional<std::string> name() const;
  // For a namespace node its URI; otherwise the whole text content, blanks and line breaks kept.
  std::optional<std::string> stringValue() const;
  // The node as libxml2 serialises it, without declaration or indentation, trimmed at both ends.
  std::optional<std::string> XMLString() const;

  // Children in document order, borrowed. Cached until the structure changes through this layer.
  const Nodes& children() const;
  size_t childCount() const;
  std::shared_ptr<TNL_XMLNode> childAtIndex(size_t index) const;

  // XPath 1.0 with this node as context. Without a namespace map, the namespaces declared on the
  // context element (on the root element for a document) are registered under their prefixes, the
  // default one under kTNLXMLXPathDefaultNamespacePrefix. Matches come back in document order,
  // borrowed; an empty list when nothing matches; none on failure, with `error` set when given.
  std::optional<Nodes> nodesForXPath(const std::string& xpath, TNLErrorPtr* error = nullptr) const;
  std::optional<Nodes> nodesForXPath(const std::string& xpath,
                                     const std::optional<Namespaces>& namespaces,
                                     TNLErrorPtr* error) const;

  // Drops the cached name, children and attributes.
  void releaseCachedValues();

  // The wrapped libxml2 node, for code of this layer that works with libxml2 directly.
  _xmlNode* XMLNode() const { return xmlNode_.get(); }

 protected:
  // Only the factories make wrappers; the key keeps the constructors out of other hands while
  // still allowing std::make_shared.
  class Passkey {
    friend class TNL_XMLNode;
    Passkey() = default;
  };

 public:
  TNL_XMLNode(Passkey, _xmlNode* node, bool shouldFreeXMLNode);

 protected:
  mutable std::optional<Nodes> cachedAttributes_;

 private:
  // Frees the node only when the wrapper consumed it.
  struct Release {
    bool shouldFree = false;
    void operator()(_xmlNode* node) const;
  };

  static std::shared_ptr<TNL_XMLNode> wrap(_xmlNode* node, bool shouldFreeXMLNode);

  const std::unique_ptr<_xmlNode, Release> xmlNode_;
  mutable std::shared_ptr<const std::string> cachedName_;
  mutable std::optional<Nodes> cachedChildren_;
};
