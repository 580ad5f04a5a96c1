#include "AppVerificationLibrary/OMIDAdSession.h"

#include <algorithm>

#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDAdSessionContext.h"
#include "AppVerificationLibrary/OMIDAdSessionRegistry.h"
#include "AppVerificationLibrary/OMIDAdSessionStatePublisher.h"
#include "AppVerificationLibrary/OMIDBridge.h"
#include "AppVerificationLibrary/OMIDError.h"
#include "AppVerificationLibrary/OMIDEventFilter.h"
#include "AppVerificationLibrary/OMIDJSExecutorFactory.h"
#include "AppVerificationLibrary/OMIDJSTimer.h"
#include "AppVerificationLibrary/OMIDLightJSExecutor.h"
#include "AppVerificationLibrary/OMIDMethodInvoker.h"
#include "Platform/Foundation/TNLException.h"
#include "Platform/Foundation/TNLIdentifiers.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "TarnelAd/TNLSetup.h"
#include "TarnelAd/Toolkit/TNLView.h"

namespace {

// Same object, compared without taking a strong reference.
bool refersTo(const std::weak_ptr<TNLView>& reference, const std::shared_ptr<TNLView>& view) {
  return !reference.owner_before(view) && !view.owner_before(reference) && !reference.expired();
}

}  // namespace

std::shared_ptr<OMIDTarnelAdSession> OMIDTarnelAdSession::create(
    const std::shared_ptr<OMIDTarnelAdSessionConfiguration>& configuration,
    const std::shared_ptr<OMIDTarnelAdSessionContext>& context, TNLErrorPtr* error) {
  if (context == nullptr) {
    OMIDTarnelError::setOMIDErrorFor(error, OMIDTarnelErrorMissingContext,
                                     OMIDTarnelMissingContextMessage);
    return nullptr;
  }
  if (configuration == nullptr) {
    throw TNLException(TNLInvalidArgumentException, "An ad session needs a configuration");
  }
  const auto session =
      std::shared_ptr<OMIDTarnelAdSession>(new OMIDTarnelAdSession(configuration, context));
  OMIDTarnelMethodInvoker::performSelectorAsync(&OMIDTarnelAdSession::addToRegistry, session);
  return session;
}

OMIDTarnelAdSession::OMIDTarnelAdSession(
    std::shared_ptr<OMIDTarnelAdSessionConfiguration> configuration,
    std::shared_ptr<OMIDTarnelAdSessionContext> context)
    : identifier_(TNLIdentifiers::createUUIDString()),
      context_(std::move(context)),
      configuration_(std::move(configuration)),
      bridge_(std::make_shared<OMIDTarnelBridge>(
          OMIDTarnelJSExecutorFactory::JSExecutorForContext(context_))),
      eventFilter_(std::make_shared<OMIDTarnelEventFilter>(OMIDTarnelSessionFinishEvent)),
      statePublisher_(std::make_shared<OMIDTarnelAdSessionStatePublisher>(bridge_)) {
  // The scripts learn the owners before anything else.
  bridge_->publishInitWithConfiguration(*configuration_);
}

void OMIDTarnelAdSession::addToRegistry() {
  OMIDTarnelAdSessionRegistry::getInstance()->addAdSession(shared_from_this());
}

void OMIDTarnelAdSession::start() {
  if (!eventFilter_->acceptEventWithCode(OMIDTarnelSessionStartEvent)) {
    return;
  }
  bridge_->publishStartSessionWithIdentifier(identifier_, context_->toJSON(),
                                             context_->resourcesJSON());
  setDeviceVolume();
  TNLMainQueue::async([self = shared_from_this()] { self->onStart(); });
}

void OMIDTarnelAdSession::onStart() {
  if (const auto registry = delegate()) {
    registry->adSessionDidStart(shared_from_this());
  }
}

void OMIDTarnelAdSession::finish() {
  if (!eventFilter_->acceptEventWithCode(OMIDTarnelSessionFinishEvent)) {
    return;
  }
  bridge_->publishFinishSession();
  if (const auto light =
          std::dynamic_pointer_cast<OMIDTarnelLightJSExecutor>(bridge_->jsExecutor())) {
    light->timer()->cancelAllTimers();
  }
  TNLMainQueue::async([self = shared_from_this()] { self->onFinish(); });
}

void OMIDTarnelAdSession::onFinish() {
  if (const auto registry = delegate()) {
    registry->adSessionDidFinish(shared_from_this());
  }
}

void OMIDTarnelAdSession::setMainAdView(const std::shared_ptr<TNLView>& view) {
  if (eventFilter_->isFinalEventAccepted()) {
    return;
  }
  OMIDTarnelMethodInvoker::performSelectorSync(&OMIDTarnelAdSession::internal_setMainAdView,
                                               shared_from_this(), view);
}

std::shared_ptr<TNLView> OMIDTarnelAdSession::mainAdView() const {
  std::lock_guard lock(mutex_);
  return mainAdView_.lock();
}

void OMIDTarnelAdSession::internal_setMainAdView(const std::shared_ptr<TNLView>& view) {
  {
    std::lock_guard lock(mutex_);
    if (mainAdView_.lock() == view) {
      return;
    }
    mainAdView_ = view;
  }
  statePublisher_->cleanupAdState();
  if (view) {
    if (const auto registry = delegate()) {
      registry->adSessionDidRegisterAdView(shared_from_this(), view);
    }
  }
}

void OMIDTarnelAdSession::addFriendlyObstruction(const std::shared_ptr<TNLView>& view) {
  if (!view || eventFilter_->isFinalEventAccepted()) {
    return;
  }
  OMIDTarnelMethodInvoker::performSelectorAsync([self = shared_from_this(), view] {
    std::lock_guard lock(self->mutex_);
    auto& list = self->friendlyObstructions_;
    if (std::none_of(list.begin(), list.end(),
                     [&](const auto& entry) { return refersTo(entry, view); })) {
      list.push_back(view);
    }
  });
}

void OMIDTarnelAdSession::removeFriendlyObstruction(const std::shared_ptr<TNLView>& view) {
  if (!view || eventFilter_->isFinalEventAccepted()) {
    return;
  }
  OMIDTarnelMethodInvoker::performSelectorAsync([self = shared_from_this(), view] {
    std::lock_guard lock(self->mutex_);
    auto& list = self->friendlyObstructions_;
    const auto found = std::find_if(list.begin(), list.end(),
                                    [&](const auto& entry) { return refersTo(entry, view); });
    if (found != list.end()) {
      list.erase(found);
    }
  });
}

void OMIDTarnelAdSession::removeAllFriendlyObstructions() {
  OMIDTarnelMethodInvoker::performSelectorAsync([self = shared_from_this()] {
    std::lock_guard lock(self->mutex_);
    self->friendlyObstructions_.clear();
  });
}

std::vector<std::shared_ptr<TNLView>> OMIDTarnelAdSession::friendlyObstructions() const {
  std::vector<std::shared_ptr<TNLView>> live;
  std::lock_guard lock(mutex_);
  std::erase_if(friendlyObstructions_, [](const auto& entry) { return entry.expired(); });
  for (const auto& entry : friendlyObstructions_) {
    if (auto view = entry.lock()) {
      live.push_back(std::move(view));
    }
  }
  return live;
}

void OMIDTarnelAdSession::logErrorWithType(OMIDTarnelErrorType errorType,
                                           const std::string& message) {
  if (message.empty() || !eventFilter_->acceptAnyEventWithRequiredEventCodes(0)) {
    return;
  }
  bridge_->publishErrorWithType(errorType, message);
}

double OMIDTarnelAdSession::deviceVolume() const {
  return TNLSetup::deviceFacts()->outputVolume();
}

void OMIDTarnelAdSession::setDeviceVolume() {
  statePublisher_->publishDeviceVolume(deviceVolume());
}

std::shared_ptr<OMIDTarnelAdSessionRegistry> OMIDTarnelAdSession::delegate() const {
  std::lock_guard lock(mutex_);
  return delegate_.lock();
}

void OMIDTarnelAdSession::setDelegate(std::weak_ptr<OMIDTarnelAdSessionRegistry> delegate) {
  std::lock_guard lock(mutex_);
  delegate_ = std::move(delegate);
}
