#include "AppVerificationLibrary/OMIDAdSessionContext.h"

#include "AppVerificationLibrary/OMIDContext.h"
#include "AppVerificationLibrary/OMIDDevice.h"
#include "AppVerificationLibrary/OMIDError.h"
#include "AppVerificationLibrary/OMIDSDK.h"
#include "Platform/Foundation/TNLFormat.h"
#include "TarnelAd/Toolkit/TNLWebView.h"

namespace {

constexpr long kMaximumReferenceIdentifierLength = 256;

// Length in UTF-16 code units, as the limit has always been counted; bytes that are not UTF-8
// count one each.
long utf16Length(const std::string& text) {
  long length = 0;
  for (size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i]);
    size_t width = 1;
    if (lead >= 0xF0 && lead <= 0xF4) {
      width = 4;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      width = 3;
    } else if (lead >= 0xC2 && lead <= 0xDF) {
      width = 2;
    }
    bool wellFormed = i + width <= text.size();
    for (size_t k = 1; wellFormed && k < width; ++k) {
      wellFormed = (static_cast<unsigned char>(text[i + k]) & 0xC0) == 0x80;
    }
    if (!wellFormed) {
      width = 1;
    }
    length += (wellFormed && width == 4) ? 2 : 1;
    i += width;
  }
  return length;
}

// The identifier check shared by both kinds of context.
bool checkReferenceIdentifier(const std::optional<std::string>& identifier, TNLErrorPtr* error) {
  if (!identifier) {
    return true;
  }
  const long length = utf16Length(*identifier);
  if (length <= kMaximumReferenceIdentifierLength) {
    return true;
  }
  OMIDTarnelError::setOMIDErrorFor(
      error, OMIDTarnelErrorCustomReferenceIdentifierTooLong,
      TNLFormat(OMIDTarnelCustomReferenceIdentifierTooLongMessage, length));
  return false;
}

}  // namespace

std::shared_ptr<OMIDTarnelAdSessionContext> OMIDTarnelAdSessionContext::create(
    const std::shared_ptr<OMIDTarnelPartner>& partner, const std::string& script,
    const std::vector<OMIDTarnelVerificationScriptResource>& resources,
    const std::optional<std::string>& customReferenceIdentifier, TNLErrorPtr* error) {
  if (!OMIDTarnelSDK::sharedInstance()->isActive()) {
    OMIDTarnelError::setOMIDErrorFor(error, OMIDTarnelErrorNotActivated,
                                     OMIDTarnelNotActivatedMessage);
    return nullptr;
  }
  if (resources.empty()) {
    OMIDTarnelError::setOMIDErrorFor(error, OMIDTarnelErrorEmptyResources,
                                     OMIDTarnelEmptyResourcesMessage);
    return nullptr;
  }
  if (partner == nullptr) {
    OMIDTarnelError::setOMIDErrorFor(error, OMIDTarnelErrorMissingPartner,
                                     OMIDTarnelMissingPartnerMessage);
    return nullptr;
  }
  if (script.empty()) {
    OMIDTarnelError::setOMIDErrorFor(error, OMIDTarnelErrorEmptyScript,
                                     OMIDTarnelEmptyScriptMessage);
    return nullptr;
  }
  if (!checkReferenceIdentifier(customReferenceIdentifier, error)) {
    return nullptr;
  }
  return std::shared_ptr<OMIDTarnelAdSessionContext>(
      new OMIDTarnelAdSessionContext(partner, script, resources, customReferenceIdentifier,
                                     OMIDTarnelAdSessionContextType::Native));
}

std::shared_ptr<OMIDTarnelAdSessionContext> OMIDTarnelAdSessionContext::create(
    const std::shared_ptr<OMIDTarnelPartner>& partner, const std::shared_ptr<TNLView>& webView,
    const std::optional<std::string>& customReferenceIdentifier, TNLErrorPtr* error) {
  if (!OMIDTarnelSDK::sharedInstance()->isActive()) {
    OMIDTarnelError::setOMIDErrorFor(error, OMIDTarnelErrorNotActivated,
                                     OMIDTarnelNotActivatedMessage);
    return nullptr;
  }
  auto htmlView = std::dynamic_pointer_cast<TNLWebView>(webView);
  if (htmlView == nullptr) {
    OMIDTarnelError::setOMIDErrorFor(error, OMIDTarnelErrorInvalidWebView,
                                     OMIDTarnelInvalidWebViewMessage);
    return nullptr;
  }
  if (partner == nullptr) {
    OMIDTarnelError::setOMIDErrorFor(error, OMIDTarnelErrorMissingPartner,
                                     OMIDTarnelMissingPartnerMessage);
    return nullptr;
  }
  if (!checkReferenceIdentifier(customReferenceIdentifier, error)) {
    return nullptr;
  }
  return std::shared_ptr<OMIDTarnelAdSessionContext>(
      new OMIDTarnelAdSessionContext(partner, "", {}, customReferenceIdentifier,
                                     OMIDTarnelAdSessionContextType::HTML, std::move(htmlView)));
}

std::string OMIDTarnelAdSessionContext::typeString() const {
  return type_ == OMIDTarnelAdSessionContextType::HTML ? "html" : "native";
}

TNLJson OMIDTarnelAdSessionContext::toJSON() const {
  TNLJson json = TNLJson::object();
  json["environment"] = "app";
  json["adSessionType"] = typeString();
  json["supports"] = TNLJson::array({"clid", "vlid"});
  json["omidNativeInfo"] = partner_->toJSON();
  json["app"] = OMIDTarnelContext::sharedContext()->toJSON();
  json["deviceInfo"] = OMIDTarnelDevice::toJSON();
  if (identifier_) {
    json["customReferenceData"] = *identifier_;
  }
  return json;
}

TNLJson OMIDTarnelAdSessionContext::resourcesJSON() const {
  TNLJson json = TNLJson::object();
  for (const auto& resource : resources_) {
    // A parameter needs a vendor to be filed under; one without is not reported.
    if (resource.parameters() && resource.vendorKey()) {
      json[*resource.vendorKey()] = *resource.parameters();
    }
  }
  return json;
}
