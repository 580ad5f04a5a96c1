#include "Ads/TNLAdFactory.h"

#include "Ads/FullScreenAds/TNLFSAd.h"
#include "Ads/Macros/TNLDeviceInfo.h"
#include "Ads/TNLAd.h"
#include "Platform/Foundation/TNLStrings.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"

namespace {

// A member read as a string without a type check: absent or null is no string, and another JSON
// type keeps its JSON text.
std::optional<std::string> stringMember(const TNLJson& object, const char* key) {
  const TNLJson* value = TNLJSON::member(object, key);
  if (value == nullptr || value->is_null()) {
    return std::nullopt;
  }
  return value->is_string() ? value->get<std::string>() : TNLJSON::serialize(*value);
}

// The creative tag is an address: only a string is one (a number or an object is no tag, rather
// than its JSON text).
std::optional<std::string> creativeTagMember(const TNLJson& object) {
  const TNLJson* value = TNLJSON::member(object, TNL_ADCREATIVETAG_KEY);
  if (value == nullptr || !value->is_string()) {
    return std::nullopt;
  }
  return value->get<std::string>();
}

TNLJson objectMember(const TNLJson& object, const char* key) {
  const TNLJson* value = TNLJSON::member(object, key);
  return value == nullptr ? TNLJson() : *value;
}

}  // namespace

std::shared_ptr<TNLAd> TNLAdFactory::generateAdFromDictionary(const TNLJson& dictionary) {
  try {
    if (!dictionary.is_object()) {
      throw std::invalid_argument("the ad record is not a JSON object");
    }
    TNLJson completeAd = dictionary;
    completeAd[TNL_SDKVARS_KEY] = parseMacroDictionaryIntoSDKVars(TNLMacros::sharedMacroDict());
    completeAd[TNL_SDKNAME_KEY] = TNL_SDKNAME;
    return std::make_shared<TNLAd>(
        stringMember(dictionary, TNL_SDKTYPE_KEY), creativeTagMember(dictionary),
        objectMember(dictionary, TNL_ADASSETS_KEY), objectMember(dictionary, TNL_ADCOPY_KEY),
        objectMember(dictionary, TNL_ADFLAGS_KEY), objectMember(dictionary, TNL_ADTRACKERS_KEY),
        objectMember(dictionary, TNL_ADPAYLOAD_KEY), std::move(completeAd));
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to generate Ad due to exception: %@", error);
    return nullptr;
  }
}

std::shared_ptr<TNLFSAd> TNLAdFactory::generateVASTAdFromXML(
    const std::string& xml, const std::string& mediaFileName,
    const std::optional<std::string>& templateURI) {
  try {
    auto ad = std::make_shared<TNLFSAd>();
    TNLJson completeAd = TNLJson::object();
    completeAd[TNL_SDKVARS_KEY] = parseMacroDictionaryIntoSDKVars(TNLMacros::sharedMacroDict());
    ad->setFullAd(std::move(completeAd));
    ad->setCreativeTag(templateURI);
    ad->setIsVast(true);
    ad->setXml(xml);
    ad->setMediaFile(mediaFileName);
    return ad;
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to generate VAST Ad due to exception: %@", error);
    return nullptr;
  }
}

TNLJson TNLAdFactory::parseMacroDictionaryIntoSDKVars(const TNLMacroDict& macros) {
  TNLMacros::setValueInMacroDictionary(TNLDeviceInfo::sharedInstance()->connectionType(),
                                       TNL_CONNECTIONTYPE_MACRO);
  TNLJson variables = TNLJson::object();
  for (const auto& [token, value] : macros) {
    variables[TNLStrings::toLower(TNLStrings::replaceAll(token, "%", ""))] = value;
  }
  return variables;
}
