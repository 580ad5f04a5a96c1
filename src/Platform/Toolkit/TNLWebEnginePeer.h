#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Platform/Toolkit/TNLViewPeer.h"

// A backend's web engine: the peer of a TNLWebView. Besides the view state of TNLViewPeer it
// loads pages and runs statements, and it supplies the peer of the web view's own scroll view
// (scroll switches and offset act on the page's scrolling). It reports back through its
// TNLWebView: engineDecidePolicyForNavigationAction before every navigation (loading only what
// is allowed), engineDidFinishNavigation when the main frame has loaded, and the scroll view's
// peerDidScroll when the page scrolls.
class TNLWebEnginePeer : public TNLViewPeer {
 public:
  virtual void loadHTMLString(const std::string& html,
                              const std::optional<std::string>& baseURL) = 0;
  virtual void loadRequest(const std::string& url) = 0;
  virtual void evaluateJavaScript(const std::string& statement) = 0;
  virtual std::shared_ptr<TNLViewPeer> scrollViewPeer() = 0;
};
