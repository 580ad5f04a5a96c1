// Documents into the XML layer and the queries, reads and copies the VAST workflow makes.
#include "Ads/VAST/XMLSupport/TNL_XMLDocument.h"
#include "TNLFuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  TNLErrorPtr error;
  const auto doc = TNL_XMLDocument::createWithData(
      std::string(reinterpret_cast<const char*>(data), size), 0, &error);
  if (!doc) {
    return 0;
  }
  const auto root = doc->rootElement();
  for (const char* path : {"//VASTAdTagURI", "//_def_ns:VASTAdTagURI", "//MediaFile",
                           "//_def_ns:MediaFile", "//InLine", "//Impression", "//TrackingEvents/*",
                           "//_def_ns:Companion/*", "//Verification/*"}) {
    const auto nodes = doc->nodesForXPath(path, &error);
    if (!nodes) {
      continue;
    }
    for (const auto& node : *nodes) {
      node->name();
      node->stringValue();
      node->XMLString();
      if (const auto element = std::dynamic_pointer_cast<TNL_XMLElement>(node)) {
        element->attributes();
        // The merge copies the children it finds into the inline document.
        if (root && std::string_view(path).ends_with("/*")) {
          root->addChild(*node);
        }
      }
    }
  }
  if (root) {
    root->XMLString();
  }
  return 0;
}
