#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "AppVerificationLibrary/OMIDPartner.h"
#include "AppVerificationLibrary/OMIDVerificationScriptResource.h"
#include "Platform/Foundation/TNLError.h"
#include "Platform/Foundation/TNLJSON.h"

class TNLView;
class TNLWebView;

// What kind of ad a session measures: an HTML ad whose measurement scripts run in its web view,
// or a native ad whose verification scripts the SDK runs itself.
enum class OMIDTarnelAdSessionContextType : unsigned { HTML = 0, Native = 1 };

// Describes what one ad session measures, and the JSON it contributes to the session start.
class OMIDTarnelAdSessionContext {
 public:
  // A native ad's context. Checks, in this order: the SDK is active (2), there are resources
  // (1510), a partner (1509), the script is not "" (1501), the reference identifier has at most
  // 256 characters (1500).
  static std::shared_ptr<OMIDTarnelAdSessionContext> create(
      const std::shared_ptr<OMIDTarnelPartner>& partner, const std::string& script,
      const std::vector<OMIDTarnelVerificationScriptResource>& resources,
      const std::optional<std::string>& customReferenceIdentifier, TNLErrorPtr* error);

  // An HTML ad's context: the ad's web view, held weakly. Checks, in this order: the SDK is active
  // (2), the view is a web view (1508; the toolkit's TNLWebView is this platform's only kind), a
  // partner (1509), the reference identifier has at most 256 characters (1500).
  static std::shared_ptr<OMIDTarnelAdSessionContext> create(
      const std::shared_ptr<OMIDTarnelPartner>& partner, const std::shared_ptr<TNLView>& webView,
      const std::optional<std::string>& customReferenceIdentifier, TNLErrorPtr* error);

  const std::shared_ptr<OMIDTarnelPartner>& partner() const { return partner_; }
  const std::string& script() const { return script_; }
  const std::vector<OMIDTarnelVerificationScriptResource>& resources() const { return resources_; }
  const std::optional<std::string>& customReferenceIdentifier() const { return identifier_; }
  OMIDTarnelAdSessionContextType type() const { return type_; }
  // The HTML ad's web view; null for a native context and once the web view is gone.
  std::shared_ptr<TNLWebView> webView() const { return webView_.lock(); }

  // "html" or "native".
  std::string typeString() const;

  // The context part of the session start: environment, session type, supported features, the
  // partner, the app and the device, and the reference identifier when one was given.
  TNLJson toJSON() const;

  // Vendor key to verification parameters, for the resources that carry parameters; a later
  // resource of the same vendor replaces an earlier one.
  TNLJson resourcesJSON() const;

 private:
  OMIDTarnelAdSessionContext(std::shared_ptr<OMIDTarnelPartner> partner, std::string script,
                             std::vector<OMIDTarnelVerificationScriptResource> resources,
                             std::optional<std::string> identifier,
                             OMIDTarnelAdSessionContextType type,
                             std::weak_ptr<TNLWebView> webView = {})
      : partner_(std::move(partner)),
        script_(std::move(script)),
        resources_(std::move(resources)),
        identifier_(std::move(identifier)),
        type_(type),
        webView_(std::move(webView)) {}

  const std::shared_ptr<OMIDTarnelPartner> partner_;
  const std::string script_;
  const std::vector<OMIDTarnelVerificationScriptResource> resources_;
  const std::optional<std::string> identifier_;
  const OMIDTarnelAdSessionContextType type_;
  const std::weak_ptr<TNLWebView> webView_;
};
