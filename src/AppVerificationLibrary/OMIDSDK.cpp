#include "AppVerificationLibrary/OMIDSDK.h"

#include <cctype>
#include <climits>
#include <mutex>

#include "AppVerificationLibrary/OMIDError.h"
#include "AppVerificationLibrary/OMIDManager.h"
#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Foundation/TNLNoDestructor.h"

namespace {

constexpr char kOMIDVersion[] = "1.2.4";
constexpr char kOMIDVersionSuffix[] = "Tarnel";

// The once-per-process manager setup and whether it is due.
struct ManagerSetup {
  std::mutex mutex;
  std::function<void()> setup = [] { OMIDTarnelManager::getInstance()->setup(); };
  bool activated = false;
  bool done = false;
};

ManagerSetup& managerSetup() {
  static TNLNoDestructor<ManagerSetup> state;
  return *state;
}

void runManagerSetupIfDue() {
  std::function<void()> setup;
  {
    auto& state = managerSetup();
    std::lock_guard lock(state.mutex);
    if (!state.activated || state.done || !state.setup) {
      return;
    }
    state.done = true;
    setup = state.setup;
  }
  setup();
}

// The integer value of a text as the platform reads it: leading blanks, an optional sign, then
// as many digits as there are; saturates instead of overflowing.
long integerValue(const std::string& text) {
  size_t i = 0;
  while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) {
    ++i;
  }
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
    negative = text[i] == '-';
    ++i;
  }
  long value = 0;
  for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i) {
    const int digit = text[i] - '0';
    if (value > (LONG_MAX - digit) / 10) {
      return negative ? LONG_MIN : LONG_MAX;
    }
    value = value * 10 + digit;
  }
  return negative ? -value : value;
}

}  // namespace

std::shared_ptr<OMIDTarnelSDK> OMIDTarnelSDK::sharedInstance() {
  static const TNLNoDestructor<std::shared_ptr<OMIDTarnelSDK>> instance(
      std::make_shared<OMIDTarnelSDK>());
  return *instance;
}

std::string OMIDTarnelSDK::versionString() {
  return TNLFormat("%@-%@", kOMIDVersion, kOMIDVersionSuffix);
}

long OMIDTarnelSDK::majorVersionFrom(const std::string& version) {
  return integerValue(version.substr(0, version.find('.')));
}

bool OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion(const std::string& version) {
  const TNLJson parsed = TNLJSON::parse(version);
  const TNLJson* apiVersion = TNLJSON::member(parsed, "v");
  if (apiVersion == nullptr || !apiVersion->is_string()) {
    return false;
  }
  return majorVersionFrom(apiVersion->get<std::string>()) == majorVersionFrom(versionString());
}

bool OMIDTarnelSDK::activateWithOMIDAPIVersion(const std::string& version, TNLErrorPtr* error) {
  if (!isCompatibleWithOMIDAPIVersion(version)) {
    OMIDTarnelError::setOMIDErrorFor(
        error, OMIDTarnelErrorIncompatibleAPIVersion,
        TNLFormat(OMIDTarnelIncompatibleAPIVersionMessage, version, versionString()));
    return false;
  }
  {
    auto& state = managerSetup();
    std::lock_guard lock(state.mutex);
    state.activated = true;
  }
  runManagerSetupIfDue();
  active_ = true;
  return true;
}

void OMIDTarnelSDK::setManagerSetup(std::function<void()> setup) {
  {
    auto& state = managerSetup();
    std::lock_guard lock(state.mutex);
    state.setup = std::move(setup);
  }
  runManagerSetupIfDue();
}
