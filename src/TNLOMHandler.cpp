#include "TNLOMHandler.h"

#include <chrono>

#include "AppVerificationLibrary/OMIDAdEvents.h"
#include "AppVerificationLibrary/OMIDAdSession.h"
#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDAdSessionContext.h"
#include "AppVerificationLibrary/OMIDPartner.h"
#include "AppVerificationLibrary/OMIDSDK.h"
#include "Platform/Foundation/TNLException.h"
#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Foundation/TNLTimer.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/Toolkit/TNLWebView.h"

namespace {

constexpr char kCustomReferenceIdentifier[] = "";
// Long enough for the finish to reach the measurement scripts in the page.
constexpr std::chrono::milliseconds kSessionTearDownDelay{1000};

}  // namespace

std::shared_ptr<TNLOMHandler> TNLOMHandler::sharedHandler() {
  static const TNLNoDestructor<std::shared_ptr<TNLOMHandler>> handler(
      std::shared_ptr<TNLOMHandler>(new TNLOMHandler()));
  return *handler;
}

TNLOMHandler::TNLOMHandler()
    : sdkStarted_(
          OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(kOMIDAPIVersion, nullptr)),
      partner_(OMIDTarnelPartner::create(kPartnerName, kPartnerVersion)) {}

std::string TNLOMHandler::addressForWebView(const TNLWebView& webView) {
  // The whole object's address, whatever class derives from the web view.
  return TNLFormat("%p", TNLPointer(dynamic_cast<const void*>(&webView)));
}

void TNLOMHandler::createOMIDSessionForWebView(const std::shared_ptr<TNLWebView>& webView,
                                               const std::string& type) {
  try {
    const std::string key = webView ? addressForWebView(*webView) : std::string();
    {
      std::lock_guard lock(mutex_);
      if (omidSessions_.contains(key)) {
        return;
      }
    }
    const bool isVideo = type == TNL_VIDEO_OPTIN;
    if (!isVideo && type != TNL_DISPLAY_OPTIN) {
      return;
    }
    const auto context =
        OMIDTarnelAdSessionContext::create(partner_, webView, kCustomReferenceIdentifier, nullptr);
    const auto configuration = OMIDTarnelAdSessionConfiguration::create(
        OMIDTarnelJavaScriptOwner, isVideo ? OMIDTarnelJavaScriptOwner : OMIDTarnelNoneOwner,
        isVideo, nullptr);
    const auto session = OMIDTarnelAdSession::create(configuration, context, nullptr);
    if (!session) {
      // A session the SDK refused cannot be filed.
      throw TNLException(TNLInvalidArgumentException,
                         TNLFormat("No OMID session to store for key %@", key));
    }
    session->setMainAdView(webView);
    {
      std::lock_guard lock(mutex_);
      omidSessions_[key] = session;
      webviews_[key] = webView;
    }
    session->start();
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to create OMID session due to exception: %@", error);
  }
}

void TNLOMHandler::sendImpressionEventForWebView(const std::shared_ptr<TNLWebView>& webView) {
  try {
    const auto session = webView ? sessionForWebView(*webView) : nullptr;
    if (!session) {
      return;
    }
    // Declined by the SDK (1503: the impression belongs to the scripts); the error is not read.
    if (const auto adEvents = OMIDTarnelAdEvents::create(session, nullptr)) {
      adEvents->impressionOccurredWithError(nullptr);
    }
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to send impression event due to exception: %@", error);
  }
}

void TNLOMHandler::destroyOMIDSessionForWebView(const std::shared_ptr<TNLWebView>& webView) {
  try {
    const auto session = webView ? sessionForWebView(*webView) : nullptr;
    if (!session) {
      return;
    }
    session->finish();
    const std::string key = addressForWebView(*webView);
    // The timer's task holds the session until the removal.
    TNLTimer::scheduledTimer(
        kSessionTearDownDelay, false,
        [weakSelf = std::weak_ptr<TNLOMHandler>(sharedHandler()), key, session] {
          if (const auto self = weakSelf.lock()) {
            self->removeSession(key, session);
          }
        });
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to remove OMID session due to exception: %@", error);
  }
}

std::shared_ptr<OMIDTarnelAdSession> TNLOMHandler::sessionForWebView(
    const TNLWebView& webView) const {
  const std::string key = addressForWebView(webView);
  std::lock_guard lock(mutex_);
  const auto found = omidSessions_.find(key);
  return found == omidSessions_.end() ? nullptr : found->second;
}

void TNLOMHandler::removeSession(const std::string& key,
                                 const std::shared_ptr<OMIDTarnelAdSession>& finished) {
  std::shared_ptr<OMIDTarnelAdSession> session;
  std::shared_ptr<TNLWebView> webView;
  {
    std::lock_guard lock(mutex_);
    const auto found = omidSessions_.find(key);
    // Only the finished session goes: a second destroy schedules a second removal, and by then
    // the key may name a newer session (the same web view opted in again, or another web view
    // at the same address), which must stay filed.
    if (found == omidSessions_.end() || found->second != finished) {
      return;
    }
    session = std::move(found->second);
    omidSessions_.erase(found);
    if (const auto found = webviews_.find(key); found != webviews_.end()) {
      webView = std::move(found->second);
      webviews_.erase(found);
    }
  }
  // Released here, outside the lock: the web view may go with its last reference.
}

std::map<std::string, std::shared_ptr<OMIDTarnelAdSession>> TNLOMHandler::omidSessions() const {
  std::lock_guard lock(mutex_);
  return omidSessions_;
}

std::map<std::string, std::shared_ptr<TNLWebView>> TNLOMHandler::webviews() const {
  std::lock_guard lock(mutex_);
  return webviews_;
}
