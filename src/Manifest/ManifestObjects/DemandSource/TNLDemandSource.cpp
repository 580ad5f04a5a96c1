#include "Manifest/ManifestObjects/DemandSource/TNLDemandSource.h"

TNLDemandSource::TNLDemandSource() : TNLDemandSource("", 0, 0, false, "") {}

TNLDemandSource::TNLDemandSource(std::optional<std::string> source, uint64_t rank, uint64_t timeout,
                                 bool autofetch, std::optional<std::string> url)
    : source_(std::move(source)),
      rank_(rank),
      timeout_(timeout),
      autofetch_(autofetch),
      url_(std::move(url)) {}
