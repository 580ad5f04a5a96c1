#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Foundation/TNLError.h"

class TNLHttpSession;

// One download for the verification-script services, retried on transport errors up to a number
// of attempts. HTTP statuses are not errors. All tasks share one HTTP session of their own that
// always loads from the origin.
class OMIDTarnelLoadTask : public std::enable_shared_from_this<OMIDTarnelLoadTask> {
 public:
  // The body as the caller wants it: the raw bytes, or the text for string loads (null when the
  // bytes are not UTF-8).
  using Result = std::optional<std::string>;
  using ResponseParser = std::function<Result(const std::string& data)>;
  // Receives the result, or null and the error.
  using CompletionHandler = std::function<void(const Result& result, const TNLErrorPtr& error)>;
  // Where the completion handler runs: a function that queues a task.
  using CompletionQueue = std::function<void(std::function<void()> task)>;

  // A string load that completes on the main queue.
  static std::shared_ptr<OMIDTarnelLoadTask> taskToLoadStringFromURL(
      const std::string& url, unsigned attemptsCount, CompletionHandler completionHandler);
  // A string load that completes on `completionQueue`.
  static std::shared_ptr<OMIDTarnelLoadTask> taskToLoadStringFromURL(
      const std::string& url, unsigned attemptsCount, CompletionQueue completionQueue,
      CompletionHandler completionHandler);
  // A ping: one attempt, the raw body as result.
  static std::shared_ptr<OMIDTarnelLoadTask> taskToSendPingToURL(
      const std::string& url, CompletionQueue completionQueue, CompletionHandler completionHandler);

  static std::shared_ptr<OMIDTarnelLoadTask> create(std::string url, unsigned attemptsCount,
                                                    CompletionQueue completionQueue,
                                                    ResponseParser responseParser,
                                                    CompletionHandler completionHandler);

  // Starts (or, after a failed attempt, repeats) the download. The task keeps itself alive until
  // its completion handler has been queued.
  void start();

  const std::string& url() const { return url_; }
  unsigned attemptsCount() const { return attemptsCount_; }
  unsigned attemptNumber() const { return attemptNumber_.load(); }

 private:
  OMIDTarnelLoadTask(std::string url, unsigned attemptsCount, CompletionQueue completionQueue,
                     ResponseParser responseParser, CompletionHandler completionHandler);

  void handleResponseWithData(const std::string& data, const TNLErrorPtr& error);
  static std::shared_ptr<TNLHttpSession> session();

  const std::string url_;
  const unsigned attemptsCount_;
  std::atomic<unsigned> attemptNumber_{0};
  const CompletionQueue completionQueue_;
  const ResponseParser responseParser_;
  const CompletionHandler completionHandler_;
};
