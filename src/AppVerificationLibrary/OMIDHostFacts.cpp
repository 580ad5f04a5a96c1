#include "AppVerificationLibrary/OMIDHostFacts.h"

#include "TarnelAd/TNLSetup.h"

namespace {

// A fact that cannot be read counts as missing; the device record then says "n/a".
template <class Read>
std::optional<std::string> readFact(Read read) {
  try {
    std::optional<std::string> value = read(*TNLSetup::deviceFacts());
    if (value && value->empty()) {
      return std::nullopt;
    }
    return value;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace

std::string OMIDTarnelHostFacts::bundleIdentifier() {
  return readFact(
             [](const TNLDeviceFacts& facts) { return std::optional(facts.bundleIdentifier()); })
      .value_or("");
}

std::optional<std::string> OMIDTarnelHostFacts::hardwareModel() {
  return readFact([](const TNLDeviceFacts& facts) { return facts.hardwareMachine(); });
}

std::optional<std::string> OMIDTarnelHostFacts::systemName() {
  return readFact([](const TNLDeviceFacts& facts) { return std::optional(facts.systemName()); });
}

std::optional<std::string> OMIDTarnelHostFacts::systemVersion() {
  return readFact([](const TNLDeviceFacts& facts) { return std::optional(facts.systemVersion()); });
}
