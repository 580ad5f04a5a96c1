#include "Ads/VAST/TNLVastWorkflow.h"

#include <algorithm>

#include "Ads/VAST/XMLSupport/TNL_XMLElement.h"
#include "Platform/Foundation/TNLStrings.h"
#include "TNLLog.h"
#include "TNLNetworkClient.h"
#include "TarnelAd/TNLConstants.h"

namespace {

constexpr char kAdTagURIPath[] = "//VASTAdTagURI";
constexpr char kAdTagURIName[] = "VASTAdTagURI";
constexpr char kMediaFilePath[] = "//MediaFile";
constexpr char kMP4Type[] = "video/mp4";
constexpr char kCDATAStart[] = "<![CDATA[";
constexpr char kCDATAEnd[] = "]]>";

constexpr long kNoMP4BehindWrappersCode = 2;
constexpr long kTooManyWrappersCode = 3;
constexpr long kNoMP4InlineCode = 11;

// Wrapper content merged into the inline document, in this order.
constexpr const char* kMergedPaths[] = {
    "//TrackingEvents", "//VideoClicks",        "//IconClicks",
    "//Companion",      "//ViewableImpression", "//Verification",
};

// The document's root element on one line: line breaks are dropped, other blanks kept.
std::string serialise(const std::shared_ptr<TNL_XMLDocument>& doc) {
  const auto root = doc ? doc->rootElement() : nullptr;
  return TNLStrings::removeLineBreaks(root ? root->XMLString().value_or("") : "");
}

}  // namespace

std::shared_ptr<TNLVastWorkflow> TNLVastWorkflow::create() {
  return std::make_shared<TNLVastWorkflow>(Passkey{});
}

void TNLVastWorkflow::processXMLData(const std::string& data, Success success, Failure failure) {
  try {
    successBlock_ = std::move(success);
    failureBlock_ = std::move(failure);
    redirects_ = 0;
    vastAds_ = {};
    const auto doc = processDataIntoXMLDoc(data);
    if (!doc) {
      return;
    }
    workflowWithDoc(doc);
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("XML Processing failed due to exception: %@", error);
  }
}

std::shared_ptr<TNL_XMLDocument> TNLVastWorkflow::processDataIntoXMLDoc(const std::string& data) {
  TNLErrorPtr error;
  auto doc = TNL_XMLDocument::createWithData(data, 0, &error);
  if (error) {
    fail(error);
    return nullptr;
  }
  return doc;
}

void TNLVastWorkflow::workflowWithDoc(const std::shared_ptr<TNL_XMLDocument>& doc) {
  const auto tags = getNodesForXPath(kAdTagURIPath, doc);
  if (!tags.empty()) {
    // A prefixed ad tag element ("v:VASTAdTagURI") is not followed, and the run ends here
    // without a callback.
    if (tags.front()->name() == kAdTagURIName) {
      addDocToAdArray(doc, tags.front());
    }
    return;
  }
  if (!vastAds_.empty()) {
    const auto merged = processVastAds(vastAds_, doc);
    if (verifyCorrectMediaTypeForDoc(merged)) {
      succeed(merged);
    } else {
      fail(TNLError::make(TNLURLErrorDomain, kNoMP4BehindWrappersCode));
    }
  } else if (verifyCorrectMediaTypeForDoc(doc)) {
    succeed(doc);
  } else {
    fail(TNLError::make(TNLURLErrorDomain, kNoMP4InlineCode));
  }
}

void TNLVastWorkflow::addDocToAdArray(const std::shared_ptr<TNL_XMLDocument>& doc,
                                      const std::shared_ptr<TNL_XMLNode>& tagNode) {
  vastAds_.push_back(doc);
  redirects_ += 1;
  // Counted before the fetch: the sixth wrapper fails without its target being asked for.
  if (redirects_ > static_cast<uint64_t>(maxVASTRedirects)) {
    fail(TNLError::make(TNLURLErrorDomain, kTooManyWrappersCode));
    return;
  }
  // Used as it stands: blanks and line breaks around the URI stay in the URL.
  const std::string url = stripCDATATagFromString(tagNode->stringValue().value_or(""));
  // The pending callbacks hold the workflow until the fetch completes.
  const auto self = shared_from_this();
  TNLNetworkClient::makeURLRequestWithURL(
      url, GET_METHOD,
      [self](const std::string& body) {
        // Walked even when the body does not parse: the run then also fails with code 2.
        self->workflowWithDoc(self->processDataIntoXMLDoc(body));
      },
      [self](const TNLErrorPtr& error) { self->fail(error); });
}

std::shared_ptr<TNL_XMLDocument> TNLVastWorkflow::processVastAds(
    const std::vector<std::shared_ptr<TNL_XMLDocument>>& vastAds,
    const std::shared_ptr<TNL_XMLDocument>& rootDoc) {
  for (const auto& wrapper : vastAds) {
    // Impressions and icon view trackers go into the wrapper's own InLine element, never into
    // the inline document: a wrapper's impressions are not part of the result.
    const auto impressions = getNodesForXPath("//Impression", wrapper);
    const auto iconViewTrackings = getNodesForXPath("//IconViewTracking", wrapper);
    const auto inLines = getNodesForXPath("//InLine", wrapper);
    if (!inLines.empty()) {
      if (const auto inLine = std::dynamic_pointer_cast<TNL_XMLElement>(inLines.front())) {
        for (const auto& impression : impressions) {
          inLine->addChild(*impression);
        }
        for (const auto& tracker : iconViewTrackings) {
          inLine->addChild(*tracker);
        }
      }
    }
    for (const char* path : kMergedPaths) {
      mergeNodesForXPath(path, wrapper, rootDoc);
    }
  }
  return rootDoc;
}

void TNLVastWorkflow::mergeNodesForXPath(const std::string& xpath,
                                         const std::shared_ptr<TNL_XMLDocument>& doc,
                                         const std::shared_ptr<TNL_XMLDocument>& rootDoc) {
  const auto children = getNodesForXPath(xpath + "/*", doc);
  const auto targets = getNodesForXPath(xpath, rootDoc);
  if (children.empty() || targets.empty()) {
    return;
  }
  // Everything goes under the first match; without one the wrapper's nodes are dropped.
  const auto target = std::dynamic_pointer_cast<TNL_XMLElement>(targets.front());
  if (!target) {
    return;
  }
  for (const auto& child : children) {
    target->addChild(*child);
  }
}

bool TNLVastWorkflow::verifyCorrectMediaTypeForDoc(const std::shared_ptr<TNL_XMLDocument>& doc) {
  // Any MP4 makes the ad playable; the name is that of the last media file with an attribute,
  // MP4 or not. There is no ranking by bitrate or size.
  bool offersMP4 = false;
  for (const auto& file : getNodesForXPath(kMediaFilePath, doc)) {
    const auto element = std::dynamic_pointer_cast<TNL_XMLElement>(file);
    if (!element) {
      continue;
    }
    for (const auto& attribute : element->attributes()) {
      if (attribute->name() == "type" && attribute->stringValue() == kMP4Type) {
        offersMP4 = true;
      }
      mediaFileName_ = element->stringValue();
    }
  }
  return offersMP4;
}

std::string TNLVastWorkflow::stripCDATATagFromString(const std::string& text) {
  // Parsing already turns CDATA sections into text; this catches markers sent as literal text.
  if (!TNLStrings::hasPrefix(text, kCDATAStart)) {
    return text;
  }
  return TNLStrings::replaceAll(TNLStrings::replaceAll(text, kCDATAStart, ""), kCDATAEnd, "");
}

TNL_XMLNode::Nodes TNLVastWorkflow::getNodesForXPath(const std::string& xpath,
                                                     const std::shared_ptr<TNL_XMLDocument>& doc) {
  if (!doc) {
    return {};
  }
  TNLErrorPtr error;
  auto nodes = doc->nodesForXPath(xpath, &error);
  const auto isDoc = [&doc](const std::weak_ptr<TNL_XMLDocument>& known) {
    return !known.owner_before(doc) && !doc.owner_before(known);
  };
  if ((!nodes || nodes->empty()) &&
      std::none_of(withoutDefaultNamespace_.begin(), withoutDefaultNamespace_.end(), isDoc)) {
    // Documents in the VAST namespace are found under the default-namespace prefix. In other
    // documents that prefix is undefined and the retry fails, which is of no interest.
    const std::string prefixed = TNLStrings::replaceAll(
        xpath, "//", std::string("//") + kTNLXMLXPathDefaultNamespacePrefix + ":");
    TNLErrorPtr ignored;
    nodes = doc->nodesForXPath(prefixed, &ignored);
    if (ignored) {
      withoutDefaultNamespace_.push_back(doc);
    }
  }
  if (error) {
    fail(error);
    return {};
  }
  return nodes.value_or(TNL_XMLNode::Nodes{});
}

void TNLVastWorkflow::succeed(const std::shared_ptr<TNL_XMLDocument>& doc) {
  if (successBlock_) {
    successBlock_(serialise(doc), mediaFileName_.value_or(""));
  }
}

void TNLVastWorkflow::fail(const TNLErrorPtr& error) {
  if (failureBlock_) {
    failureBlock_(error);
  }
}
