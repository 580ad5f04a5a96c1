#pragma once

#include <memory>

#include "Manifest/ManifestObjects/TNLManifest.h"
#include "Platform/Foundation/TNLJSON.h"

// Turns the manifest JSON into the model. Stateless. Every operation takes the JSON value of its
// section, null when the section is absent.
//
// Booleans are read by truth value; "ttl", "rank" and "timeout" must be JSON numbers; strings are
// taken as they come (a value of another type is kept as its JSON text, null stays null). A
// manifest is either built whole or not at all: any error fails createManifestFromDictionary,
// which logs it and returns null.
class TNLManifestFactory {
 public:
  static std::shared_ptr<TNLManifest> createManifestFromDictionary(const TNLJson* dictionary);
  static std::shared_ptr<TNLManifest> createManifestFromDictionary(const TNLJson& dictionary) {
    return createManifestFromDictionary(&dictionary);
  }

  // The section builders raise on malformed input and leave the logging to the manifest builder.
  static std::shared_ptr<TNLDeveloper> createDeveloperFromDictionary(const TNLJson* dictionary);
  static std::shared_ptr<TNLPrivacy> createPrivacyFromDictionary(const TNLJson* dictionary);
  // The last active vendor in document order; the default viewability when none is active.
  static std::shared_ptr<TNLViewability> createViewabilityFromDictionary(const TNLJson* dictionary);
  static std::shared_ptr<TNLMonitoring> createMonitoringFromDictionary(const TNLJson* dictionary);
  static std::shared_ptr<TNLPerformance> createPerfomanceFromDictionary(const TNLJson* dictionary);
  // Null when there is no demand source at all.
  static std::shared_ptr<TNLDemandSources> createDemandSourcesFromDictionary(
      const TNLJson* dictionary);
  static std::shared_ptr<TNLDemandSource> createDemandSourceFromDictionary(
      const TNLJson* dictionary);
};
