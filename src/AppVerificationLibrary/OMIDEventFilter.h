#pragma once

#include <shared_mutex>

// Session lifecycle events, as bits; a filter keeps the union of those it accepted.
inline constexpr unsigned OMIDTarnelSessionStartEvent = 1;
inline constexpr unsigned OMIDTarnelImpressionEvent = 2;
inline constexpr unsigned OMIDTarnelAdEventsCreatedEvent = 4;
inline constexpr unsigned OMIDTarnelSessionFinishEvent = 16;

// Lets each lifecycle event of a session happen once, and nothing after the final event. Safe
// from any thread: readers share the lock, an acceptance takes it alone, so the check and the
// update of one acceptance cannot interleave with another's.
class OMIDTarnelEventFilter {
 public:
  explicit OMIDTarnelEventFilter(unsigned finalEventCode) : finalEventCode_(finalEventCode) {}

  // Accepts the event unless it, the final event, or any of `blockingEventCodes` was already
  // accepted.
  bool acceptEventWithCode(unsigned code) { return acceptEventWithCode(code, 0); }
  bool acceptEventWithCode(unsigned code, unsigned blockingEventCodes);
  // True while the final event has not been accepted and every required event has.
  bool acceptAnyEventWithRequiredEventCodes(unsigned requiredEventCodes) const;
  bool isFinalEventAccepted() const;

  unsigned finalEventCode() const { return finalEventCode_; }

 private:
  const unsigned finalEventCode_;
  mutable std::shared_mutex mutex_;
  unsigned codes_ = 0;
};
