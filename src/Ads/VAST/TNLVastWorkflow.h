#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Ads/VAST/XMLSupport/TNL_XMLDocument.h"
#include "Ads/VAST/XMLSupport/TNL_XMLNode.h"
#include "Platform/Foundation/TNLError.h"

// Turns one VAST response into one self-contained VAST document and the name of its media file.
// A wrapper's VASTAdTagURI is fetched, up to maxVASTRedirects wrappers deep; the tracking, click,
// companion, viewability and verification nodes of every wrapper are then copied into the inline
// document, which must offer an MP4 video.
//
// One workflow serves one response. Made with create(); processXMLData() keeps the workflow alive
// through its pending fetches, so the creator may drop its reference at once. The start runs on
// the caller's thread; later steps and their callbacks run on the HTTP session's thread. A run
// may report failure twice (a wrapper target that does not parse: the parse error, then code 2)
// and ends without any callback when the ad tag element carries a namespace prefix.
//
// The callbacks are kept until the workflow goes away: they must not hold the workflow itself.
class TNLVastWorkflow : public std::enable_shared_from_this<TNLVastWorkflow> {
 public:
  using Success =
      std::function<void(const std::string& document, const std::string& mediaFileName)>;
  using Failure = std::function<void(const TNLErrorPtr& error)>;

  class Passkey {
    friend class TNLVastWorkflow;
    Passkey() = default;
  };
  explicit TNLVastWorkflow(Passkey) {}

  static std::shared_ptr<TNLVastWorkflow> create();

  // Success receives the resolved document on one line and the media file name. Failure receives
  // the XML layer's errors and the network client's transport errors unchanged, or an error of
  // the URL domain: 11 when an inline response offers no MP4, 2 when the document reached
  // through wrappers offers none, 3 when a sixth wrapper is met.
  void processXMLData(const std::string& data, Success success, Failure failure);

  // Wrappers met so far in this run.
  uint64_t redirects() const { return redirects_; }
  // Every wrapper document met, outermost first.
  const std::vector<std::shared_ptr<TNL_XMLDocument>>& vastAds() const { return vastAds_; }
  // Set by the media check.
  const std::optional<std::string>& mediaFileName() const { return mediaFileName_; }
  const Success& successBlock() const { return successBlock_; }
  const Failure& failureBlock() const { return failureBlock_; }

 private:
  std::shared_ptr<TNL_XMLDocument> processDataIntoXMLDoc(const std::string& data);
  void workflowWithDoc(const std::shared_ptr<TNL_XMLDocument>& doc);
  void addDocToAdArray(const std::shared_ptr<TNL_XMLDocument>& doc,
                       const std::shared_ptr<TNL_XMLNode>& tagNode);
  std::shared_ptr<TNL_XMLDocument> processVastAds(
      const std::vector<std::shared_ptr<TNL_XMLDocument>>& vastAds,
      const std::shared_ptr<TNL_XMLDocument>& rootDoc);
  void mergeNodesForXPath(const std::string& xpath, const std::shared_ptr<TNL_XMLDocument>& doc,
                          const std::shared_ptr<TNL_XMLDocument>& rootDoc);
  bool verifyCorrectMediaTypeForDoc(const std::shared_ptr<TNL_XMLDocument>& doc);
  static std::string stripCDATATagFromString(const std::string& text);
  TNL_XMLNode::Nodes getNodesForXPath(const std::string& xpath,
                                      const std::shared_ptr<TNL_XMLDocument>& doc);

  void succeed(const std::shared_ptr<TNL_XMLDocument>& doc);
  void fail(const TNLErrorPtr& error);

  uint64_t redirects_ = 0;
  std::vector<std::shared_ptr<TNL_XMLDocument>> vastAds_;
  std::optional<std::string> mediaFileName_;
  // Documents whose root declares no default namespace: the prefixed retry of a query can only
  // fail there, so it is not made again.
  std::vector<std::weak_ptr<TNL_XMLDocument>> withoutDefaultNamespace_;
  Success successBlock_;
  Failure failureBlock_;
};
