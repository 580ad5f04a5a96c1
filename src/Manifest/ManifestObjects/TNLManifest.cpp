#include "Manifest/ManifestObjects/TNLManifest.h"

TNLManifest::TNLManifest()
    : TNLManifest(0, std::make_shared<TNLDeveloper>(), std::make_shared<TNLPrivacy>(),
                  std::make_shared<TNLViewability>(), std::make_shared<TNLMonitoring>(),
                  std::make_shared<TNLPerformance>(), std::make_shared<TNLDemandSources>(), "") {}

TNLManifest::TNLManifest(uint64_t ttl, std::shared_ptr<TNLDeveloper> developer,
                         std::shared_ptr<TNLPrivacy> privacy,
                         std::shared_ptr<TNLViewability> viewability,
                         std::shared_ptr<TNLMonitoring> monitoring,
                         std::shared_ptr<TNLPerformance> performance,
                         std::shared_ptr<TNLDemandSources> demandSources,
                         std::optional<std::string> vastTemplateURI)
    : ttl_(ttl),
      developer_(std::move(developer)),
      privacy_(std::move(privacy)),
      viewability_(std::move(viewability)),
      monitoring_(std::move(monitoring)),
      performance_(std::move(performance)),
      demandSources_(std::move(demandSources)),
      vastTemplateURI_(std::move(vastTemplateURI)) {}
