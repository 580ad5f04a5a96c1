#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "AppVerificationLibrary/OMIDCommand.h"
#include "Platform/Foundation/TNLError.h"

class OMIDTarnelAdSessionConfiguration;
class OMIDTarnelAdSessionContext;
class OMIDTarnelAdSessionRegistry;
class OMIDTarnelAdSessionStatePublisher;
class OMIDTarnelBridge;
class OMIDTarnelEventFilter;
class TNLView;

// One measured ad: ties the ad view to the measurement scripts that the session's commands reach
// (through the executor chosen for its context). Lifecycle: made (the "init" command is
// published at once), started, at most one impression, finished; nothing is accepted after the
// finish. start, finish and logErrorWithType may be called from any thread; everything that
// touches views runs on the main thread.
class OMIDTarnelAdSession : public std::enable_shared_from_this<OMIDTarnelAdSession> {
 public:
  // Fails with 1506 without a context. The session registers itself with the registry on the
  // main thread (at once when made there). A configuration is required: without one the
  // session cannot describe itself and TNLException is raised.
  static std::shared_ptr<OMIDTarnelAdSession> create(
      const std::shared_ptr<OMIDTarnelAdSessionConfiguration>& configuration,
      const std::shared_ptr<OMIDTarnelAdSessionContext>& context, TNLErrorPtr* error);

  OMIDTarnelAdSession(const OMIDTarnelAdSession&) = delete;
  OMIDTarnelAdSession& operator=(const OMIDTarnelAdSession&) = delete;

  // Publishes "startSession" with the context and the volume, then tells the registry on a later
  // turn of the main loop. Only the first call does anything.
  void start();
  // Publishes "finishSession", stops a native session's script timers and tells the registry on
  // a later turn of the main loop. Only the first call does anything.
  void finish();

  // The view whose viewability is measured; held weakly. Ignored after the finish; otherwise set
  // on the main thread (waiting for it from another thread).
  void setMainAdView(const std::shared_ptr<TNLView>& view);
  std::shared_ptr<TNLView> mainAdView() const;
  // Main thread: a new view starts the view state afresh, and the registry takes it from any
  // other session that measured it.
  void internal_setMainAdView(const std::shared_ptr<TNLView>& view);

  // Views over the ad that are part of the ad's own presentation (a close button) and so do not
  // count against its viewability; held weakly. Add and remove are ignored after the finish and
  // run on the main thread. A view is listed once.
  void addFriendlyObstruction(const std::shared_ptr<TNLView>& view);
  void removeFriendlyObstruction(const std::shared_ptr<TNLView>& view);
  void removeAllFriendlyObstructions();
  // The listed views still alive.
  std::vector<std::shared_ptr<TNLView>> friendlyObstructions() const;

  // Publishes error(<type word>,<message>) for a non-empty message before the finish.
  void logErrorWithType(OMIDTarnelErrorType errorType, const std::string& message);

  // The output volume, 0 to 1, from the device facts.
  double deviceVolume() const;
  // Publishes the current volume.
  void setDeviceVolume();

  const std::string& identifier() const { return identifier_; }
  const std::shared_ptr<OMIDTarnelAdSessionContext>& context() const { return context_; }
  const std::shared_ptr<OMIDTarnelAdSessionConfiguration>& configuration() const {
    return configuration_;
  }
  const std::shared_ptr<OMIDTarnelBridge>& bridge() const { return bridge_; }
  // The publisher of ad events: the session's bridge.
  const std::shared_ptr<OMIDTarnelBridge>& adEventsPublisher() const { return bridge_; }
  const std::shared_ptr<OMIDTarnelEventFilter>& eventFilter() const { return eventFilter_; }
  const std::shared_ptr<OMIDTarnelAdSessionStatePublisher>& statePublisher() const {
    return statePublisher_;
  }

  // The registry, which the session tells of its start, finish and new ad views.
  std::shared_ptr<OMIDTarnelAdSessionRegistry> delegate() const;
  void setDelegate(std::weak_ptr<OMIDTarnelAdSessionRegistry> delegate);

  // Whether the last view state sent was a populated one (true for a new session): the
  // hierarchy publisher sends the empty state only to sessions for which this holds.
  bool lastPublishedViewStateWasPopulated() const { return lastPublishedViewStateWasPopulated_; }
  void setLastPublishedViewStateWasPopulated(bool populated) {
    lastPublishedViewStateWasPopulated_ = populated;
  }

 private:
  OMIDTarnelAdSession(std::shared_ptr<OMIDTarnelAdSessionConfiguration> configuration,
                      std::shared_ptr<OMIDTarnelAdSessionContext> context);

  void addToRegistry();
  void onStart();
  void onFinish();

  const std::string identifier_;
  const std::shared_ptr<OMIDTarnelAdSessionContext> context_;
  const std::shared_ptr<OMIDTarnelAdSessionConfiguration> configuration_;
  const std::shared_ptr<OMIDTarnelBridge> bridge_;
  const std::shared_ptr<OMIDTarnelEventFilter> eventFilter_;
  const std::shared_ptr<OMIDTarnelAdSessionStatePublisher> statePublisher_;
  std::atomic<bool> lastPublishedViewStateWasPopulated_{true};

  mutable std::mutex mutex_;
  std::weak_ptr<TNLView> mainAdView_;
  // Dead references are dropped when the list is read.
  mutable std::vector<std::weak_ptr<TNLView>> friendlyObstructions_;
  std::weak_ptr<OMIDTarnelAdSessionRegistry> delegate_;
};
