#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Manifest/ManifestObjects/DemandSource/TNLDemandSources.h"
#include "Manifest/ManifestObjects/TNLDeveloper.h"
#include "Manifest/ManifestObjects/TNLMonitoring.h"
#include "Manifest/ManifestObjects/TNLPerformance.h"
#include "Manifest/ManifestObjects/TNLPrivacy.h"
#include "Manifest/ManifestObjects/TNLViewability.h"

// The application's remote configuration. Built once per fetch, then only read; sections are
// shared by reference. demandSources may be null after parsing: treat null like an empty list.
class TNLManifest {
 public:
  // ttl 0, default sections (never null), an empty template URI.
  TNLManifest();
  TNLManifest(uint64_t ttl, std::shared_ptr<TNLDeveloper> developer,
              std::shared_ptr<TNLPrivacy> privacy, std::shared_ptr<TNLViewability> viewability,
              std::shared_ptr<TNLMonitoring> monitoring,
              std::shared_ptr<TNLPerformance> performance,
              std::shared_ptr<TNLDemandSources> demandSources,
              std::optional<std::string> vastTemplateURI);

  // Seconds this manifest stays valid after it is stored.
  uint64_t ttl() const { return ttl_; }
  void setTtl(uint64_t value) { ttl_ = value; }
  const std::shared_ptr<TNLDeveloper>& developer() const { return developer_; }
  void setDeveloper(std::shared_ptr<TNLDeveloper> value) { developer_ = std::move(value); }
  const std::shared_ptr<TNLPrivacy>& privacy() const { return privacy_; }
  void setPrivacy(std::shared_ptr<TNLPrivacy> value) { privacy_ = std::move(value); }
  const std::shared_ptr<TNLViewability>& viewability() const { return viewability_; }
  void setViewability(std::shared_ptr<TNLViewability> value) { viewability_ = std::move(value); }
  const std::shared_ptr<TNLMonitoring>& monitoring() const { return monitoring_; }
  void setMonitoring(std::shared_ptr<TNLMonitoring> value) { monitoring_ = std::move(value); }
  const std::shared_ptr<TNLPerformance>& performance() const { return performance_; }
  void setPerformance(std::shared_ptr<TNLPerformance> value) { performance_ = std::move(value); }
  const std::shared_ptr<TNLDemandSources>& demandSources() const { return demandSources_; }
  void setDemandSources(std::shared_ptr<TNLDemandSources> value) {
    demandSources_ = std::move(value);
  }
  // The HTML page into which VAST video ads are placed.
  const std::optional<std::string>& vastTemplateURI() const { return vastTemplateURI_; }
  void setVastTemplateURI(std::optional<std::string> value) { vastTemplateURI_ = std::move(value); }

 private:
  uint64_t ttl_;
  std::shared_ptr<TNLDeveloper> developer_;
  std::shared_ptr<TNLPrivacy> privacy_;
  std::shared_ptr<TNLViewability> viewability_;
  std::shared_ptr<TNLMonitoring> monitoring_;
  std::shared_ptr<TNLPerformance> performance_;
  std::shared_ptr<TNLDemandSources> demandSources_;
  std::optional<std::string> vastTemplateURI_;
};
