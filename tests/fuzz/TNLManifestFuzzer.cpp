// Manifest JSON from the ad service into the manifest factory.
#include "Manifest/TNLManifestFactory.h"
#include "Platform/Foundation/TNLJSON.h"
#include "TNLFuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  TNLFuzz::setUp();
  const TNLJson value = TNLJSON::parse(std::string_view(reinterpret_cast<const char*>(data), size));
  if (value.is_object()) {
    TNLManifestFactory::createManifestFromDictionary(value);
  }
  return 0;
}
