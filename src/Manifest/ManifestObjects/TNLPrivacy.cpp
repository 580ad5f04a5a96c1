#include "Manifest/ManifestObjects/TNLPrivacy.h"

TNLPrivacy::TNLPrivacy() : TNLPrivacy(false, false) {}

TNLPrivacy::TNLPrivacy(bool coppa, bool gdpr) : coppa_(coppa), gdpr_(gdpr) {}
