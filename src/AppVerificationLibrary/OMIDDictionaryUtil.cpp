#include "AppVerificationLibrary/OMIDDictionaryUtil.h"

std::string OMIDTarnelDictionaryUtil::stringFromJSON(const TNLJson& json) {
  return TNLJSON::serialize(json);
}
