#include "Manifest/ManifestObjects/TNLPerformance.h"

TNLPerformance::TNLPerformance() : TNLPerformance("", "", "") {}

TNLPerformance::TNLPerformance(std::optional<std::string> logLevel, std::optional<std::string> url,
                               std::optional<std::string> method)
    : logLevel_(std::move(logLevel)), url_(std::move(url)), method_(std::move(method)) {}
