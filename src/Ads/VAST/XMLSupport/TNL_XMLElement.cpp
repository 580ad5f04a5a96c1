#include "Ads/VAST/XMLSupport/TNL_XMLElement.h"

#include <libxml/tree.h>

#include <map>
#include <string>
#include <vector>

namespace {

const xmlChar* xmlText(const std::string& text) {
  return reinterpret_cast<const xmlChar*>(text.c_str());
}

struct FreeNode {
  void operator()(xmlNodePtr node) const { xmlFreeNode(node); }
};
struct FreeAttribute {
  void operator()(xmlAttrPtr attribute) const { xmlFreeProp(attribute); }
};
struct FreeNamespace {
  void operator()(xmlNsPtr ns) const { xmlFreeNs(ns); }
};

// Fits the namespaces of a subtree that was just grafted under `graftPoint` to its new place.
// libxml2's copy keeps the copied nodes' namespaces by declaring them again on the copy; here
// unqualified and "prefix:name" nodes are bound to what is in scope at the graft point, and
// declarations that only repeat one in scope there are dropped in favour of that one.
class NamespaceRepair {
 public:
  explicit NamespaceRepair(xmlNodePtr graftPoint) : graftPoint_(graftPoint) {}

  void repair(xmlNodePtr node) {
    if (node->type == XML_ATTRIBUTE_NODE) {
      fitNamespace(node, reinterpret_cast<xmlAttrPtr>(node)->ns);
      return;
    }
    if (node->type != XML_ELEMENT_NODE) {
      return;
    }
    dropRepeatedDeclarations(node);
    fitNamespace(node, node->ns);
    for (xmlAttrPtr attribute = node->properties; attribute != nullptr;
         attribute = attribute->next) {
      fitNamespace(reinterpret_cast<xmlNodePtr>(attribute), attribute->ns);
    }
    for (xmlNodePtr child = node->children; child != nullptr; child = child->next) {
      repair(child);
    }
  }

 private:
  void dropRepeatedDeclarations(xmlNodePtr element) {
    xmlNsPtr* link = &element->nsDef;
    while (*link != nullptr) {
      const xmlNsPtr declared = *link;
      const xmlNsPtr inScope = xmlSearchNs(graftPoint_->doc, graftPoint_, declared->prefix);
      if (inScope != nullptr && inScope != declared && xmlStrEqual(inScope->href, declared->href)) {
        *link = declared->next;
        declared->next = nullptr;
        substitutions_[declared] = inScope;
        // Freed once the whole subtree points elsewhere.
        removed_.emplace_back(declared);
      } else {
        link = &declared->next;
      }
    }
  }

  void fitNamespace(xmlNodePtr node, xmlNsPtr& ns) {
    if (ns != nullptr) {
      const auto substitution = substitutions_.find(ns);
      if (substitution != substitutions_.end()) {
        ns = substitution->second;
      }
      return;
    }
    const std::string name = reinterpret_cast<const char*>(node->name);
    const size_t colon = name.rfind(':');
    if (colon == std::string::npos) {
      if (const xmlNsPtr found = xmlSearchNs(graftPoint_->doc, graftPoint_, nullptr)) {
        ns = found;
      }
      return;
    }
    if (colon + 1 == name.size()) {
      return;
    }
    const std::string prefix = name.substr(0, colon);
    const std::string localName = name.substr(colon + 1);
    xmlNsPtr found = nullptr;
    if (prefix.size() >= 3 && prefix.front() == '{' && prefix.back() == '}') {
      const std::string uri = prefix.substr(1, prefix.size() - 2);
      found = xmlSearchNsByHref(graftPoint_->doc, graftPoint_, xmlText(uri));
    } else {
      found = xmlSearchNs(graftPoint_->doc, graftPoint_, xmlText(prefix));
    }
    if (found != nullptr) {
      ns = found;
      xmlNodeSetName(node, xmlText(localName));
    }
  }

  const xmlNodePtr graftPoint_;
  std::map<xmlNsPtr, xmlNsPtr> substitutions_;
  std::vector<std::unique_ptr<xmlNs, FreeNamespace>> removed_;
};

}  // namespace

const TNL_XMLNode::Nodes& TNL_XMLElement::attributes() const {
  if (!cachedAttributes_) {
    Nodes list;
    const xmlNodePtr node = XMLNode();
    if (node != nullptr && node->type == XML_ELEMENT_NODE) {
      for (xmlAttrPtr attribute = node->properties; attribute != nullptr;
           attribute = attribute->next) {
        list.push_back(nodeBorrowingXMLNode(reinterpret_cast<xmlNodePtr>(attribute)));
      }
    }
    cachedAttributes_ = std::move(list);
  }
  return *cachedAttributes_;
}

void TNL_XMLElement::addChild(const TNL_XMLNode& child) {
  const xmlNodePtr parent = XMLNode();
  const xmlNodePtr source = child.XMLNode();
  if (parent == nullptr || source == nullptr || parent->type != XML_ELEMENT_NODE) {
    return;
  }
  switch (source->type) {
    case XML_ATTRIBUTE_NODE:
      addAttribute(child);
      return;
    case XML_NAMESPACE_DECL:
      addNamespace(child);
      return;
    case XML_ELEMENT_NODE:
    case XML_TEXT_NODE:
    case XML_CDATA_SECTION_NODE:
    case XML_COMMENT_NODE:
    case XML_PI_NODE:
    case XML_ENTITY_REF_NODE:
      break;
    default:
      return;  // documents, DTDs and declarations have no place under an element
  }
  releaseCachedValues();
  std::unique_ptr<xmlNode, FreeNode> copy(xmlDocCopyNode(source, parent->doc, 1));
  if (!copy) {
    return;
  }
  // A text copy may be merged into a text node already there; libxml2 then frees it and returns
  // the node that took its content.
  const xmlNodePtr added = xmlAddChild(parent, copy.get());
  if (added == nullptr) {
    return;
  }
  copy.release();
  NamespaceRepair(parent).repair(added);
}

void TNL_XMLElement::addAttribute(const TNL_XMLNode& attribute) {
  const xmlNodePtr element = XMLNode();
  const xmlNodePtr source = attribute.XMLNode();
  if (element == nullptr || source == nullptr || element->type != XML_ELEMENT_NODE ||
      source->type != XML_ATTRIBUTE_NODE) {
    return;
  }
  releaseCachedValues();
  std::unique_ptr<xmlAttr, FreeAttribute> copy(
      xmlCopyProp(element, reinterpret_cast<xmlAttrPtr>(source)));
  if (!copy) {
    return;
  }
  // xmlCopyProp points the copy at its element without linking it; xmlAddChild takes a node that
  // already names the element as its parent for one already linked.
  copy->parent = nullptr;
  if (xmlAddChild(element, reinterpret_cast<xmlNodePtr>(copy.get())) != nullptr) {
    copy.release();
  }
}

void TNL_XMLElement::addNamespace(const TNL_XMLNode& ns) {
  const xmlNodePtr element = XMLNode();
  const xmlNodePtr source = ns.XMLNode();
  if (element == nullptr || source == nullptr || element->type != XML_ELEMENT_NODE ||
      source->type != XML_NAMESPACE_DECL) {
    return;
  }
  const auto* declaration = reinterpret_cast<const xmlNs*>(source);
  // Owned by the element once made; none when the prefix is already declared here.
  xmlNewNs(element, declaration->href, declaration->prefix);
}
