#include "AppVerificationLibrary/OMIDPartner.h"

std::shared_ptr<OMIDTarnelPartner> OMIDTarnelPartner::create(const std::string& name,
                                                             const std::string& versionString) {
  if (name.empty() || versionString.empty()) {
    return nullptr;
  }
  return std::shared_ptr<OMIDTarnelPartner>(new OMIDTarnelPartner(name, versionString));
}

TNLJson OMIDTarnelPartner::toJSON() const {
  return {{"partnerName", name_}, {"partnerVersion", versionString_}};
}
