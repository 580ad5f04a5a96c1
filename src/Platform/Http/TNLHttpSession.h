#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "Platform/Foundation/TNLError.h"
#include "Platform/Http/TNLURLRequest.h"
#include "TarnelAd/TNLNetworkLimits.h"

// The HTTP session: every transfer runs on one background thread that the session owns, and every
// completion runs on that thread, one at a time. Transport failures are errors of the URL error
// domain with the platform's codes; HTTP statuses are not errors. Every transfer is bound by the
// process-wide limits in force when it starts.
class TNLHttpSession {
 public:
  struct Configuration {
    // Loads from the origin every time (the library keeps no HTTP cache, so this only says
    // that no intermediary cache may answer).
    bool reloadIgnoringCache = false;
    std::string label = "tnl.http";
  };

  struct Response {
    std::string body;     // empty when there was none or the transfer failed
    long statusCode = 0;  // 0 when no response arrived
    TNLErrorPtr error;    // null on success
    // Set when a limit ended the transfer: which one, in a sentence for the log.
    std::string limitExceeded;
  };
  using Completion = std::function<void(const Response& response)>;

  // What shutting down does with a transfer still in flight: content requests are abandoned at
  // once (their completions never run); deliveries (trackers) get the bounded wait.
  enum class AtShutdown { abandon, deliver };

  // The process-wide session.
  static std::shared_ptr<TNLHttpSession> sharedSession();
  // Replaces the process-wide session, before any request is made; for fuzzing, where requests
  // are answered from memory rather than the network.
  static void replaceSharedSession(std::shared_ptr<TNLHttpSession> session);
  // A session of its own, with its own thread.
  static std::shared_ptr<TNLHttpSession> create(Configuration configuration);

  virtual ~TNLHttpSession() = default;

  // Starts the transfer and returns; the completion (when given) runs on the session thread
  // exactly once, unless the session shuts down first (see AtShutdown).
  virtual void dataTask(const TNLURLRequest& request, Completion completion,
                        AtShutdown atShutdown = AtShutdown::abandon) = 0;

  // True on this session's thread.
  virtual bool isSessionThread() const = 0;

  // The limits for transfers started from now on.
  static void setLimits(const TNLNetworkLimits& limits);
  static TNLNetworkLimits limits();

  // Stops every session: abandons content transfers, waits up to `maxWait` for deliveries
  // (including those that completions running now still start), then stops the threads.
  // Transfers still running after the wait are abandoned with their connections. Later tasks are
  // dropped. Called on a session thread it cannot wait for that thread, and only stops it.
  static void shutdownAll(std::chrono::milliseconds maxWait);
};
