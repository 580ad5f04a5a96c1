#include "Manifest/TNLManifestClient.h"

#include <cstdlib>

#include "Ads/Macros/TNLDeviceInfo.h"
#include "Ads/Macros/TNLMacros.h"
#include "Manifest/TNLManifestFactory.h"
#include "Platform/Foundation/TNLException.h"
#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Foundation/TNLJSON.h"
#include "TNLLog.h"
#include "TNLNetworkClient.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"

namespace {

constexpr char kZeroIdentifier[] = "00000000-0000-0000-0000-000000000000";
// The general domain's code for an answer that carried no manifest object.
constexpr long kNoManifestObjectCode = 111;
// The general domain's code for data that cannot be written as JSON.
constexpr long kPropertyListWriteInvalidError = 3851;

void logRetrievalFailure(const std::exception& error) {
  TNLLog::sharedLogger()->log("Failed to retrieve manifest due to exception: %@", error);
}

std::optional<std::string> lookup(const TNLMacroDict& macros, const char* token) {
  const auto it = macros.find(token);
  return it == macros.end() ? std::nullopt : std::optional<std::string>(it->second);
}

// A body member that must have a value.
std::string required(const std::optional<std::string>& value, const char* what) {
  if (!value) {
    throw TNLException(TNLInvalidArgumentException, std::string("No value for ") + what);
  }
  return *value;
}

long majorVersion(const std::string& version) {
  return std::strtol(version.c_str(), nullptr, 10);
}

}  // namespace

void TNLManifestClient::getManifestWithSuccess(Success success, Failure failure) const {
  try {
    const auto appID = lookup(TNLMacros::sharedMacroDict(), TNL_APPID_MACRO);
    // Only the path is a format: the base URL is an address and may carry escapes ("%20").
    const std::string url = TNLSetup::manifestBaseURL() + TNLFormat(TNL_MANIFESTPATH, appID);
    const auto body = createManifestBody();
    TNLNetworkClient::makeJSONRequestWithURL(
        url, POST_METHOD, body,
        [success, failure](const TNLJson& object) {
          try {
            if (!object.is_object()) {
              if (failure) {
                failure(TNLError::make(TNLCocoaErrorDomain, kNoManifestObjectCode));
              }
              return;
            }
            const auto manifest = TNLManifestFactory::createManifestFromDictionary(object);
            const auto developer = manifest ? manifest->developer() : nullptr;
            TNLMacros::setValueInMacroDictionary(
                developer ? developer->applicationName() : std::nullopt, TNL_PROPERTY_MACRO);
            if (success) {
              success(manifest);
            }
          } catch (const std::exception& error) {
            logRetrievalFailure(error);
          }
        },
        [failure](const TNLErrorPtr& error) {
          if (failure) {
            failure(error);
          }
        });
  } catch (const std::exception& error) {
    logRetrievalFailure(error);
  }
}

std::optional<std::string> TNLManifestClient::createManifestBody() const {
  try {
    const auto device = TNLDeviceInfo::sharedInstance();
    const bool restricted = device->restricted();
    const TNLMacroDict macros = TNLMacros::sharedMacroDict();
    const std::string sdkVersion =
        required(lookup(macros, TNL_SDKVERSION_MACRO), TNL_SDKVERSION_MACRO);

    TNLJson deviceInfo = TNLJson::object();
    deviceInfo["public_ip_address"] = restricted ? "" : device->deviceIpAddress();
    deviceInfo["package_name"] = device->facts()->bundleIdentifier();
    deviceInfo["system_API"] = TNLFormat("%li", majorVersion(device->systemVersion()));
    deviceInfo["system_name"] = "iOS";
    deviceInfo["system_version"] = device->systemVersion();
    deviceInfo["model"] = device->deviceModel();
    deviceInfo["UID"] = restricted ? kZeroIdentifier : device->advertisingId();
    deviceInfo["trk"] = device->adTrackingBlocked() ? "true" : "false";
    deviceInfo["screen_size"] = "normal";
    deviceInfo["screen_DPI"] = device->screenDPI();
    deviceInfo["carrier"] = device->carrierName();
    deviceInfo["connection_type"] = required(device->connectionType(), "the connection type");
    deviceInfo["language"] = device->deviceLang();
    deviceInfo["manufacturer"] = "Apple";
    deviceInfo["latitude"] = required(lookup(macros, TNL_LATITUDE_MACRO), TNL_LATITUDE_MACRO);
    deviceInfo["longitude"] = required(lookup(macros, TNL_LONGITUDE_MACRO), TNL_LONGITUDE_MACRO);
    deviceInfo["name"] = restricted ? "" : device->deviceName();

    TNLJson body = TNLJson::object();
    body[TNL_VERSION_KEY] = sdkVersion;
    body[TNL_SDK_KEY] = TNLFormat("%@.%@", sdkVersion, lookup(macros, TNL_SDKBUILDVERSION_MACRO));
    body[TNL_DEVICEINFO_KEY] = std::move(deviceInfo);

    try {
      return body.dump(2);
    } catch (const TNLJson::type_error& error) {
      // A fact that is not UTF-8 text (a host name, a host-set identifier) cannot be written.
      TNLLog::sharedLogger()->log(
          "Error creating manifest header: %@",
          TNLError::make(TNLCocoaErrorDomain, kPropertyListWriteInvalidError,
                         {{kTNLDebugDescriptionKey, error.what()}}));
      return std::nullopt;
    }
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to generate manifest headers due to exception: %@", error);
    return std::nullopt;
  }
}
