#include "Manifest/ManifestObjects/DemandSource/TNLDemandSources.h"

TNLDemandSources::TNLDemandSources() : TNLDemandSources("", {}) {}

TNLDemandSources::TNLDemandSources(std::optional<std::string> workflow,
                                   std::vector<std::shared_ptr<TNLDemandSource>> demandSources)
    : workflow_(std::move(workflow)), demandSources_(std::move(demandSources)) {}
