#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "AppVerificationLibrary/OMIDPartner.h"
#include "AppVerificationLibrary/OMIDVerificationScriptResource.h"
#include "Platform/Foundation/TNLError.h"
#include "Platform/Foundation/TNLJSON.h"

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

  // An HTML ad's context (partner, web view held weakly, reference identifier; checks: active 2,
  // web view 1508, partner 1509, identifier 1500) joins here with the view toolkit, as a create()
  // overload that takes the web view. Until then every context is native.

  const std::shared_ptr<OMIDTarnelPartner>& partner() const { return partner_; }
  const std::string& script() const { return script_; }
  const std::vector<OMIDTarnelVerificationScriptResource>& resources() const { return resources_; }
  const std::optional<std::string>& customReferenceIdentifier() const { return identifier_; }
  OMIDTarnelAdSessionContextType type() const { return type_; }

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
                             OMIDTarnelAdSessionContextType type)
      : partner_(std::move(partner)),
        script_(std::move(script)),
        resources_(std::move(resources)),
        identifier_(std::move(identifier)),
        type_(type) {}

  const std::shared_ptr<OMIDTarnelPartner> partner_;
  const std::string script_;
  const std::vector<OMIDTarnelVerificationScriptResource> resources_;
  const std::optional<std::string> identifier_;
  const OMIDTarnelAdSessionContextType type_;
};
