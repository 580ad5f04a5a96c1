#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "AppVerificationLibrary/OMIDAdViewCache.h"
#include "AppVerificationLibrary/OMIDProcessorFactory.h"
#include "Platform/Foundation/TNLJSON.h"

class OMIDTarnelAdSessionRegistry;
class OMIDTarnelStatePublisher;
class OMIDTarnelTreeWalkerTimeLogger;
class TNLTimer;

// Samples the application's view hierarchy five times a second while measurement runs and the
// application is in the foreground, and publishes to each active session what matters for its
// ad: the screen, the windows, the views on the way to the ad view with their frames in screen
// coordinates, the ad view marked with the session's identifier, and the views that may cover
// it. Sessions whose ad view cannot be seen get the empty state. Main thread.
class OMIDTarnelTreeWalker : public std::enable_shared_from_this<OMIDTarnelTreeWalker> {
 public:
  static std::shared_ptr<OMIDTarnelTreeWalker> getInstance();

  explicit OMIDTarnelTreeWalker(std::shared_ptr<OMIDTarnelAdSessionRegistry> registry);
  ~OMIDTarnelTreeWalker();
  OMIDTarnelTreeWalker(const OMIDTarnelTreeWalker&) = delete;
  OMIDTarnelTreeWalker& operator=(const OMIDTarnelTreeWalker&) = delete;

  // Walks at once, then every 0.2 seconds on the main loop (one timer, however often started).
  void start();
  // Stops the timer.
  void pause();
  // Stops the timer and forgets the last published hierarchy.
  void stop();
  bool isRunning() const { return timer_ != nullptr; }

  // One walk.
  void onTick();

  // Told the view count and the duration of every walk; held weakly.
  void setTimeLogger(std::weak_ptr<OMIDTarnelTreeWalkerTimeLogger> timeLogger) {
    timeLogger_ = std::move(timeLogger);
  }

  const std::shared_ptr<OMIDTarnelStatePublisher>& statePublisher() const {
    return statePublisher_;
  }

 private:
  void updateTreeState();
  void walkView(const std::shared_ptr<TNLView>& view, TNLJson& parentState);

  OMIDTarnelProcessorFactory processorFactory_;
  OMIDTarnelAdViewCache adViewCache_;
  const std::shared_ptr<OMIDTarnelStatePublisher> statePublisher_;
  std::shared_ptr<TNLTimer> timer_;
  size_t objectsCount_ = 0;
  std::weak_ptr<OMIDTarnelTreeWalkerTimeLogger> timeLogger_;
};
