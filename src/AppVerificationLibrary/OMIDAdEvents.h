#pragma once

#include <memory>

#include "Platform/Foundation/TNLError.h"

class OMIDTarnelAdSession;

// The integration's channel for a session's native ad events. A session has at most one.
class OMIDTarnelAdEvents {
 public:
  // Fails with 1507 without a session, and with 1505 when the session already made one (or has
  // finished).
  static std::shared_ptr<OMIDTarnelAdEvents> create(
      const std::shared_ptr<OMIDTarnelAdSession>& adSession, TNLErrorPtr* error);

  // Reports the impression: only a session whose impression owner is native takes it (else 1503),
  // and only once (else 1505). A session that was never started is started first, so that the
  // scripts see "startSession" before the impression.
  bool impressionOccurredWithError(TNLErrorPtr* error);

  const std::shared_ptr<OMIDTarnelAdSession>& adSession() const { return adSession_; }

 private:
  explicit OMIDTarnelAdEvents(std::shared_ptr<OMIDTarnelAdSession> adSession)
      : adSession_(std::move(adSession)) {}

  const std::shared_ptr<OMIDTarnelAdSession> adSession_;
};
