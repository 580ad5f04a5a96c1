#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Platform/Foundation/TNLJSON.h"

class OMIDTarnelAdSessionRegistry;
class TNLSerialQueue;

// Publishes the measured hierarchy to the sessions that a walk found: compares and serialises
// on a serial background queue, sends only a hierarchy that differs from the last one sent, and
// delivers to the sessions on the main queue.
class OMIDTarnelStatePublisher : public std::enable_shared_from_this<OMIDTarnelStatePublisher> {
 public:
  explicit OMIDTarnelStatePublisher(std::shared_ptr<OMIDTarnelAdSessionRegistry> registry);
  ~OMIDTarnelStatePublisher();
  OMIDTarnelStatePublisher(const OMIDTarnelStatePublisher&) = delete;
  OMIDTarnelStatePublisher& operator=(const OMIDTarnelStatePublisher&) = delete;

  // Takes the state; when it differs from the previous one, every active session among
  // `sessionIds` is sent "setNativeViewHierarchy" with it, stamped with `timestamp`.
  void publishState(TNLJson state, std::vector<std::string> sessionIds, double timestamp);
  // Sends the empty state to every active session among `sessionIds` whose last state was a
  // populated one.
  void publishEmptyStateToSessions(std::vector<std::string> sessionIds, double timestamp);
  // Forgets the previous state, so that the next one is sent whatever it is.
  void cleanupCache();

 private:
  const std::shared_ptr<OMIDTarnelAdSessionRegistry> registry_;
  const std::shared_ptr<TNLSerialQueue> queue_;
  // Used only on the queue.
  TNLJson previousState_;
};
