#include "Manifest/TNLManifestFactory.h"

#include <cmath>
#include <limits>

#include "Platform/Foundation/TNLException.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"

namespace {

// Reading a member of something that is not an object is the error the platform raises when a
// section arrives with the wrong JSON type.
void requireObject(const TNLJson& dictionary, const char* key) {
  if (!dictionary.is_object()) {
    throw TNLException(TNLInvalidArgumentException,
                       std::string("Cannot read \"") + key + "\" from a " + dictionary.type_name());
  }
}

const TNLJson* member(const TNLJson* dictionary, const char* key) {
  if (dictionary == nullptr) {
    return nullptr;
  }
  requireObject(*dictionary, key);
  return TNLJSON::member(*dictionary, key);
}

std::optional<std::string> string(const TNLJson* dictionary, const char* key) {
  const TNLJson* value = member(dictionary, key);
  if (value == nullptr || value->is_null()) {
    return std::nullopt;
  }
  if (value->is_string()) {
    return value->get<std::string>();
  }
  return TNLJSON::serialize(*value);
}

bool boolean(const TNLJson* dictionary, const char* key) {
  const TNLJson* value = member(dictionary, key);
  return value != nullptr && TNLJSON::truthValue(*value);
}

uint64_t unsignedInteger(const TNLJson* dictionary, const char* key) {
  const TNLJson* value = member(dictionary, key);
  if (value == nullptr) {
    return 0;
  }
  if (value->is_number_unsigned()) {
    return value->get<uint64_t>();
  }
  if (value->is_number_integer()) {
    return static_cast<uint64_t>(value->get<int64_t>());  // negative numbers wrap, as a C cast does
  }
  if (value->is_number_float()) {
    const double number = std::trunc(value->get<double>());
    if (std::isnan(number)) {
      return 0;
    }
    if (number >= 18446744073709551616.0) {
      return std::numeric_limits<uint64_t>::max();
    }
    if (number < 0) {
      return number <= -9223372036854775808.0
                 ? static_cast<uint64_t>(std::numeric_limits<int64_t>::min())
                 : static_cast<uint64_t>(static_cast<int64_t>(number));
    }
    return static_cast<uint64_t>(number);
  }
  throw TNLException(TNLInvalidArgumentException,
                     std::string("\"") + key + "\" is a " + value->type_name() + ", not a number");
}

template <class Endpoint>
std::shared_ptr<Endpoint> createEndpoint(const TNLJson* dictionary) {
  const auto logLevel = string(dictionary, TNL_LOGLEVEL_KEY);
  const auto method = string(dictionary, TNL_METHOD_KEY);
  std::optional<std::string> url;
  if (member(dictionary, TNL_BASEURI_KEY) != nullptr) {
    const auto base = string(dictionary, TNL_BASEURI_KEY);
    const auto content = string(dictionary, TNL_URICONTENT_KEY);
    // The URL is the base followed directly by the content; a missing part cannot be appended.
    if (!base || !content) {
      throw TNLException(TNLInvalidArgumentException,
                         std::string("Cannot append \"") + TNL_URICONTENT_KEY + "\" to \"" +
                             TNL_BASEURI_KEY + "\": a part is missing");
    }
    url = *base + *content;
  }
  return std::make_shared<Endpoint>(logLevel, url, method);
}

}  // namespace

std::shared_ptr<TNLManifest> TNLManifestFactory::createManifestFromDictionary(
    const TNLJson* dictionary) {
  try {
    const uint64_t ttl = unsignedInteger(dictionary, TNL_TTL_KEY);
    auto developer = createDeveloperFromDictionary(member(dictionary, TNL_DEVELOPER_KEY));
    auto privacy = createPrivacyFromDictionary(member(dictionary, TNL_PRIVACY_KEY));
    auto viewability = createViewabilityFromDictionary(member(dictionary, TNL_VIEWABILITY_KEY));
    auto monitoring = createMonitoringFromDictionary(member(dictionary, TNL_MONITORING_KEY));
    auto performance = createPerfomanceFromDictionary(member(dictionary, TNL_PERFORMANCE_KEY));
    auto demandSources =
        createDemandSourcesFromDictionary(member(dictionary, TNL_DEMANDSOURCES_KEY));
    auto vastTemplateURI = string(dictionary, TNL_VAST_TEMPLATE_KEY);
    return std::make_shared<TNLManifest>(ttl, std::move(developer), std::move(privacy),
                                         std::move(viewability), std::move(monitoring),
                                         std::move(performance), std::move(demandSources),
                                         std::move(vastTemplateURI));
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to create Manifest due to exception: %@", error);
    return nullptr;
  }
}

std::shared_ptr<TNLDeveloper> TNLManifestFactory::createDeveloperFromDictionary(
    const TNLJson* dictionary) {
  return std::make_shared<TNLDeveloper>(
      string(dictionary, TNL_PUBLISHERID_KEY), string(dictionary, TNL_APPLICATIONID_KEY),
      string(dictionary, TNL_APPLICATIONNAME_KEY), boolean(dictionary, TNL_ACTIVE_KEY));
}

std::shared_ptr<TNLPrivacy> TNLManifestFactory::createPrivacyFromDictionary(
    const TNLJson* dictionary) {
  return std::make_shared<TNLPrivacy>(boolean(dictionary, TNL_COPPA_KEY),
                                      boolean(dictionary, TNL_GDPR_KEY));
}

std::shared_ptr<TNLViewability> TNLManifestFactory::createViewabilityFromDictionary(
    const TNLJson* dictionary) {
  std::shared_ptr<TNLViewability> candidate;
  if (dictionary != nullptr) {
    requireObject(*dictionary, TNL_ACTIVE_KEY);
    for (const auto& [vendor, settings] : dictionary->items()) {
      if (boolean(&settings, TNL_ACTIVE_KEY)) {
        candidate =
            std::make_shared<TNLViewability>(vendor, true, boolean(&settings, TNL_INCLUDED_KEY));
      }
    }
  }
  if (!candidate || !candidate->active()) {
    return std::make_shared<TNLViewability>();
  }
  return candidate;
}

std::shared_ptr<TNLMonitoring> TNLManifestFactory::createMonitoringFromDictionary(
    const TNLJson* dictionary) {
  return createEndpoint<TNLMonitoring>(dictionary);
}

std::shared_ptr<TNLPerformance> TNLManifestFactory::createPerfomanceFromDictionary(
    const TNLJson* dictionary) {
  return createEndpoint<TNLPerformance>(dictionary);
}

std::shared_ptr<TNLDemandSources> TNLManifestFactory::createDemandSourcesFromDictionary(
    const TNLJson* dictionary) {
  const auto workflow = string(dictionary, TNL_WORKFLOW_KEY);
  const TNLJson* list = member(dictionary, TNL_DEMANDSOURCE_KEY);
  if (list == nullptr) {
    return nullptr;
  }
  if (!list->is_array()) {
    throw TNLException(TNLInvalidArgumentException, std::string("\"") + TNL_DEMANDSOURCE_KEY +
                                                        "\" is a " + list->type_name() +
                                                        ", not an array");
  }
  if (list->empty()) {
    return nullptr;
  }
  std::vector<std::shared_ptr<TNLDemandSource>> sources;
  sources.reserve(list->size());
  for (const auto& element : *list) {
    sources.push_back(createDemandSourceFromDictionary(&element));
  }
  return std::make_shared<TNLDemandSources>(workflow, std::move(sources));
}

std::shared_ptr<TNLDemandSource> TNLManifestFactory::createDemandSourceFromDictionary(
    const TNLJson* dictionary) {
  return std::make_shared<TNLDemandSource>(
      string(dictionary, TNL_SOURCE_KEY), unsignedInteger(dictionary, TNL_RANK_KEY),
      unsignedInteger(dictionary, TNL_TIMEOUT_KEY), boolean(dictionary, TNL_AUTOFETCH_KEY),
      string(dictionary, TNL_URL_KEY));
}
