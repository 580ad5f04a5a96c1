#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Manifest/ManifestObjects/DemandSource/TNLDemandSource.h"

// The ad sources in manifest order (the ad client sorts them by rank). workflow is stored only.
class TNLDemandSources {
 public:
  TNLDemandSources();
  TNLDemandSources(std::optional<std::string> workflow,
                   std::vector<std::shared_ptr<TNLDemandSource>> demandSources);

  const std::optional<std::string>& workflow() const { return workflow_; }
  void setWorkflow(std::optional<std::string> value) { workflow_ = std::move(value); }
  const std::vector<std::shared_ptr<TNLDemandSource>>& demandSources() const {
    return demandSources_;
  }
  void setDemandSources(std::vector<std::shared_ptr<TNLDemandSource>> value) {
    demandSources_ = std::move(value);
  }

 private:
  std::optional<std::string> workflow_;
  std::vector<std::shared_ptr<TNLDemandSource>> demandSources_;
};
