#include "Ads/Macros/TNLMacros.h"

#include "Ads/Macros/TNLDeviceInfo.h"
#include "Ads/Macros/TNLLocationService.h"
#include "Manifest/TNLManifestHandler.h"
#include "Platform/Foundation/TNLException.h"
#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"

namespace {

constexpr char kZeroIdentifier[] = "00000000-0000-0000-0000-000000000000";
constexpr char kSDKVersion[] = "4.0.0";
constexpr char kSDKBuildVersion[] = "001";

const char* text(bool flag) {
  return flag ? "true" : "false";
}

}  // namespace

std::shared_ptr<TNLMacros> TNLMacros::sharedMacros() {
  static const TNLNoDestructor<std::shared_ptr<TNLMacros>> instance(std::make_shared<TNLMacros>());
  return *instance;
}

TNLMacroDict TNLMacros::sharedMacroDict() {
  const auto macros = sharedMacros();
  std::lock_guard lock(macros->mutex_);
  return macros->macroDict_ ? *macros->macroDict_ : TNLMacroDict{};
}

void TNLMacros::setValueInMacroDictionary(const std::optional<std::string>& value,
                                          const std::string& token) {
  try {
    const auto macros = sharedMacros();
    std::lock_guard lock(macros->mutex_);
    // A table that was never stored stays unset: the write is lost.
    if (!macros->macroDict_) {
      return;
    }
    if (value) {
      (*macros->macroDict_)[token] = *value;
    } else {
      macros->macroDict_->erase(token);
    }
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to set value in macro dictionary due to exception: %@",
                                error);
  }
}

void TNLMacros::setValue(const std::optional<std::string>& /*value*/, const std::string& key) {
  throw TNLException(TNLUndefinedKeyException,
                     TNLFormat("[<TNLMacros %p> setValue:forUndefinedKey:]: this class is not key "
                               "value coding-compliant for the key %@.",
                               TNLPointer(this), key));
}

TNLMacros::TNLMacros() {
  try {
    const auto device = TNLDeviceInfo::sharedInstance();
    const auto manifest = TNLManifestHandler::sharedHandler()->manifest();
    const auto facts = device->facts();

    auto table = std::make_shared<TNLMacroDict>();
    auto& dict = *table;
    dict[TNL_SESSIONID_MACRO] = device->sessionId();
    dict[TNL_PACKAGEID_MACRO] = facts->bundleIdentifier();
    dict[TNL_APPNAME_MACRO] = device->hostAppName();
    dict[TNL_APPVERSION_MACRO] = facts->bundleShortVersion();

    const auto privacy = manifest ? manifest->privacy() : nullptr;
    const bool coppa = privacy && privacy->coppa();
    // COPPA decides when it applies; otherwise the GDPR flag does.
    const bool restricted = coppa ? true : (privacy && privacy->gdpr());
    device->setRestricted(restricted);

    dict[TNL_APPDOMAIN_MACRO] = "";
    dict[TNL_PROPERTY_MACRO] = "";
    const std::string identifier = restricted ? kZeroIdentifier : device->advertisingId();
    dict[TNL_DEVICEID_MACRO] = identifier;
    dict[TNL_IOSDEVICEID_MACRO] = identifier;
    dict[TNL_ANDROIDDEVICEID_MACRO] = "";
    dict[TNL_ADVERTISERID_MACRO] = identifier;
    dict[TNL_DONOTTRACK_MACRO] = text(device->adTrackingBlocked());
    dict[TNL_COPPA_MACRO] = text(coppa);
    dict[TNL_DEVICENAME_MACRO] = restricted ? "" : device->deviceName();
    dict[TNL_EXTERNALIP_MACRO] = "";
    const auto connection = device->connectionType();
    if (!connection) {
      throw TNLException(TNLInvalidArgumentException, "The connection type has no name");
    }
    dict[TNL_CONNECTIONTYPE_MACRO] = *connection;
    dict[TNL_CARRIER_MACRO] = device->carrierName();
    dict[TNL_OS_MACRO] = "iOS";
    dict[TNL_OSVERSION_MACRO] = device->systemVersion();
    dict[TNL_MANUFACTURER_MACRO] = "Apple";
    dict[TNL_MODEL_MACRO] = device->deviceModel();
    dict[TNL_SDKVERSION_MACRO] = kSDKVersion;
    dict[TNL_SDKBUILDVERSION_MACRO] = kSDKBuildVersion;
    dict[TNL_LANGUAGE_MACRO] = device->deviceLang();
    dict[TNL_LATITUDE_MACRO] = "0";
    dict[TNL_LONGITUDE_MACRO] = "0";
    if (!restricted) {
      TNLLocationService::makeLocationRequest();
    }
    dict[TNL_CONTINENT_MACRO] = "";
    dict[TNL_CONTINENTISOCODE_MACRO] = "";
    dict[TNL_TIMEZONE_MACRO] = "";
    dict[TNL_IP_MACRO] = device->deviceIpAddress();
    dict[TNL_INTERNALIP_MACRO] = device->deviceIpAddress();
    dict[TNL_SCREENWIDTH_MACRO] = device->screenWidth();
    dict[TNL_SCREENHEIGHT_MACRO] = device->screenHeight();
    // Height first: the order the servers expect.
    dict[TNL_DEVICERESOLUTION_MACRO] =
        TNLFormat("%@X%@", device->screenHeight(), device->screenWidth());
    dict[TNL_USERAGENT_MACRO] = device->userAgent();
    for (const char* perCall :
         {TNL_TRACKERTYPE_MACRO, TNL_EVENTNAME_MACRO, TNL_CONTENTTYPE_MACRO, TNL_WORKFLOW_MACRO,
          TNL_ZONE_MACRO, TNL_PRODUCT_MACRO, TNL_CREATIVEID_MACRO, TNL_ORDERID_MACRO,
          TNL_LINEITEMID_MACRO, TNL_ADSVRADID_BLANKMACRO, TNL_VIDEODURATION_BLANKMACRO,
          TNL_HOST_BLANKMACRO, TNL_PLATFORM_BLANKMACRO, TNL_VALUE_BLANKMACRO, TNL_RAND_MACRO,
          TNL_TIMESTAMP_MACRO, TNL_DEVICEORIENTATION_MACRO}) {
      dict[perCall] = "";
    }
    setMacroDict(std::move(table));
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to initialize Macros due to exception: %@", error);
  }
}

std::shared_ptr<const TNLMacroDict> TNLMacros::macroDict() const {
  std::lock_guard lock(mutex_);
  return macroDict_ ? std::make_shared<const TNLMacroDict>(*macroDict_) : nullptr;
}

void TNLMacros::setMacroDict(std::shared_ptr<TNLMacroDict> macroDict) {
  std::lock_guard lock(mutex_);
  macroDict_ = std::move(macroDict);
}
