#include "AppVerificationLibrary/OMIDDevice.h"

#include "AppVerificationLibrary/OMIDHostFacts.h"
#include "Platform/Foundation/TNLNoDestructor.h"

namespace {

constexpr char kNotAvailable[] = "n/a";

}  // namespace

std::string OMIDTarnelDevice::deviceType() {
  return OMIDTarnelHostFacts::hardwareModel().value_or(kNotAvailable);
}

std::string OMIDTarnelDevice::deviceOs() {
  return OMIDTarnelHostFacts::systemName().value_or(kNotAvailable);
}

std::string OMIDTarnelDevice::deviceOsVersion() {
  return OMIDTarnelHostFacts::systemVersion().value_or(kNotAvailable);
}

TNLJson OMIDTarnelDevice::deviceDictionary() {
  static const TNLNoDestructor<TNLJson> dictionary(
      TNLJson{{"deviceType", deviceType()}, {"os", deviceOs()}, {"osVersion", deviceOsVersion()}});
  return *dictionary;
}
