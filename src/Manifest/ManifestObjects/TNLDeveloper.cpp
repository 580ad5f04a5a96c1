#include "Manifest/ManifestObjects/TNLDeveloper.h"

TNLDeveloper::TNLDeveloper() : TNLDeveloper("", "", "", false) {}

TNLDeveloper::TNLDeveloper(std::optional<std::string> publisherId,
                           std::optional<std::string> applicationId,
                           std::optional<std::string> applicationName, bool active)
    : publisherId_(std::move(publisherId)),
      applicationId_(std::move(applicationId)),
      applicationName_(std::move(applicationName)),
      active_(active) {}
