#pragma once

#include <memory>

#include "Ads/VAST/XMLSupport/TNL_XMLNode.h"

// An element node.
class TNL_XMLElement : public TNL_XMLNode {
 public:
  TNL_XMLElement(Passkey key, _xmlNode* node, bool shouldFreeXMLNode)
      : TNL_XMLNode(key, node, shouldFreeXMLNode) {}

  // The attributes in document order, borrowed; empty when there is none. Cached.
  const Nodes& attributes() const;

  // Appends a deep copy of `child` as the last child and fits the copy's namespaces to its new
  // place: an unqualified node takes the default namespace in scope here, a "prefix:name" node
  // the namespace of that prefix in scope here, and declarations that repeat one in scope are
  // dropped. An attribute is added as an attribute (addAttribute), a namespace node as a
  // declaration (addNamespace). `child` and its document are never changed, so nodes can be
  // copied between documents.
  void addChild(const TNL_XMLNode& child);
  // Adds a copy of the attribute, replacing one of the same name.
  void addAttribute(const TNL_XMLNode& attribute);
  // Declares the namespace node's prefix and URI on this element.
  void addNamespace(const TNL_XMLNode& ns);
};
