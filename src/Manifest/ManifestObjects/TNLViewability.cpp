#include "Manifest/ManifestObjects/TNLViewability.h"

TNLViewability::TNLViewability() : TNLViewability("", false, false) {}

TNLViewability::TNLViewability(std::optional<std::string> name, bool active, bool included)
    : name_(std::move(name)), active_(active), included_(included) {}
