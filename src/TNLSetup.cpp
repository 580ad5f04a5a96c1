#include "TarnelAd/TNLSetup.h"

#include <mutex>

#include "Platform/Device/TNLCurrentDeviceFacts.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Http/TNLHttpSession.h"
#include "Public/TNLDelegateDispatch.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/Toolkit/TNLToolkit.h"

namespace {

struct SetupState {
  std::mutex mutex;
  std::string manifestBaseURL = TNL_MANIFEST_BASE_URL;
};

SetupState& state() {
  static TNLNoDestructor<SetupState> instance;
  return *instance;
}

}  // namespace

void TNLSetup::setManifestBaseURL(const std::string& baseURL) {
  std::string base = baseURL;
  while (!base.empty() && base.back() == '/') {
    base.pop_back();
  }
  std::lock_guard lock(state().mutex);
  state().manifestBaseURL = base;
}

std::string TNLSetup::manifestBaseURL() {
  std::lock_guard lock(state().mutex);
  return state().manifestBaseURL;
}

void TNLSetup::setDeviceFacts(std::shared_ptr<TNLDeviceFacts> facts) {
  TNLSetCurrentDeviceFacts(std::move(facts));
}

std::shared_ptr<TNLDeviceFacts> TNLSetup::deviceFacts() {
  return TNLCurrentDeviceFacts();
}

void TNLSetup::setCallbacksOnMainThread(bool onMainThread) {
  TNLDelegateDispatch::setOnMainThread(onMainThread);
}

bool TNLSetup::callbacksOnMainThread() {
  return TNLDelegateDispatch::onMainThread();
}

std::string TNL_MANIFESTURL() {
  return TNLSetup::manifestBaseURL() + TNL_MANIFESTPATH;
}

void TNLSetup::useHeadlessBackend() {
  TNLToolkit::useHeadlessBackend();
}

bool TNLSetup::setNetworkLimits(const TNLNetworkLimits& limits) {
  using std::chrono::milliseconds;
  if (limits.maxResponseBytes == 0 || limits.connectTimeout <= milliseconds::zero() ||
      limits.stallTimeout <= milliseconds::zero() || limits.totalTimeout <= milliseconds::zero() ||
      limits.maxRedirects < 0 || limits.maxConnectionsPerHost <= 0 ||
      limits.shutdownWait < milliseconds::zero()) {
    return false;
  }
  TNLHttpSession::setLimits(limits);
  return true;
}

TNLNetworkLimits TNLSetup::networkLimits() {
  return TNLHttpSession::limits();
}

void TNLSetup::shutdown() {
  shutdown(networkLimits().shutdownWait);
}

void TNLSetup::shutdown(std::chrono::milliseconds maxWait) {
  TNLHttpSession::shutdownAll(maxWait);
}
