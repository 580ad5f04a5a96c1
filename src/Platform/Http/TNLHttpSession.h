#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Foundation/TNLError.h"
#include "Platform/Http/TNLURLRequest.h"

// The HTTP session: every transfer runs on one background thread that the session owns, and every
// completion runs on that thread, one at a time. Transport failures are errors of the URL error
// domain with the platform's codes; HTTP statuses are not errors.
class TNLHttpSession {
 public:
  struct Configuration {
    // Longest wait for the connection and for each piece of data (the platform's request
    // time-out, an idle time-out, not a limit on the whole transfer).
    std::chrono::milliseconds timeout = std::chrono::seconds(60);
    long maxRedirects = 16;
    // Loads from the origin every time (the library keeps no HTTP cache, so this only says
    // that no intermediary cache may answer).
    bool reloadIgnoringCache = false;
    std::string label = "tnl.http";
  };

  struct Response {
    std::string body;     // empty when there was none or the transfer failed
    long statusCode = 0;  // 0 when no response arrived
    TNLErrorPtr error;    // null on success
  };
  using Completion = std::function<void(const Response& response)>;

  // The process-wide session with the platform defaults.
  static std::shared_ptr<TNLHttpSession> sharedSession();
  // A session of its own, with its own thread.
  static std::shared_ptr<TNLHttpSession> create(Configuration configuration);

  virtual ~TNLHttpSession() = default;

  // Starts the transfer at once and returns; the completion (when given) runs on the session
  // thread exactly once, unless the process exits first.
  virtual void dataTask(const TNLURLRequest& request, Completion completion) = 0;

  // True on this session's thread.
  virtual bool isSessionThread() const = 0;

  // Test-only: shortens the time-out of the shared session (and of sessions made later).
  static void setTimeoutOverrideForTesting(std::optional<std::chrono::milliseconds> timeout);
};
