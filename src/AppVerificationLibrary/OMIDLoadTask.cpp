#include "AppVerificationLibrary/OMIDLoadTask.h"

#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Foundation/TNLStrings.h"
#include "Platform/Http/TNLHttpSession.h"

namespace {

OMIDTarnelLoadTask::Result decodeUTF8(const std::string& data) {
  if (!TNLStrings::isValidUTF8(data)) {
    return std::nullopt;
  }
  return data;
}

}  // namespace

std::shared_ptr<TNLHttpSession> OMIDTarnelLoadTask::session() {
  // Verification scripts and pings must come from the origin, never from a cache.
  static const TNLNoDestructor<std::shared_ptr<TNLHttpSession>> session([] {
    TNLHttpSession::Configuration configuration;
    configuration.reloadIgnoringCache = true;
    configuration.label = "omid.load";
    return TNLHttpSession::create(configuration);
  }());
  return *session;
}

OMIDTarnelLoadTask::OMIDTarnelLoadTask(std::string url, unsigned attemptsCount,
                                       CompletionQueue completionQueue,
                                       ResponseParser responseParser,
                                       CompletionHandler completionHandler)
    : url_(std::move(url)),
      attemptsCount_(attemptsCount),
      completionQueue_(std::move(completionQueue)),
      responseParser_(std::move(responseParser)),
      completionHandler_(std::move(completionHandler)) {}

std::shared_ptr<OMIDTarnelLoadTask> OMIDTarnelLoadTask::create(
    std::string url, unsigned attemptsCount, CompletionQueue completionQueue,
    ResponseParser responseParser, CompletionHandler completionHandler) {
  return std::shared_ptr<OMIDTarnelLoadTask>(
      new OMIDTarnelLoadTask(std::move(url), attemptsCount, std::move(completionQueue),
                             std::move(responseParser), std::move(completionHandler)));
}

std::shared_ptr<OMIDTarnelLoadTask> OMIDTarnelLoadTask::taskToLoadStringFromURL(
    const std::string& url, unsigned attemptsCount, CompletionHandler completionHandler) {
  return taskToLoadStringFromURL(url, attemptsCount, TNLMainQueue::async,
                                 std::move(completionHandler));
}

std::shared_ptr<OMIDTarnelLoadTask> OMIDTarnelLoadTask::taskToLoadStringFromURL(
    const std::string& url, unsigned attemptsCount, CompletionQueue completionQueue,
    CompletionHandler completionHandler) {
  return create(url, attemptsCount, std::move(completionQueue), decodeUTF8,
                std::move(completionHandler));
}

std::shared_ptr<OMIDTarnelLoadTask> OMIDTarnelLoadTask::taskToSendPingToURL(
    const std::string& url, CompletionQueue completionQueue, CompletionHandler completionHandler) {
  return create(url, 1, std::move(completionQueue), nullptr, std::move(completionHandler));
}

void OMIDTarnelLoadTask::start() {
  TNLURLRequest request;
  request.url = TNLURLRequest::parseURL(url_);
  session()->dataTask(request,
                      [self = shared_from_this()](const TNLHttpSession::Response& response) {
                        self->handleResponseWithData(response.body, response.error);
                      });
}

void OMIDTarnelLoadTask::handleResponseWithData(const std::string& data, const TNLErrorPtr& error) {
  const unsigned attempt = ++attemptNumber_;
  if (error != nullptr && attempt < attemptsCount_) {
    start();
    return;
  }
  Result result;
  if (error == nullptr) {
    result = responseParser_ ? responseParser_(data) : Result(data);
  }
  if (!completionHandler_ || !completionQueue_) {
    return;
  }
  completionQueue_([handler = completionHandler_, result = std::move(result), error] {
    handler(result, error);
  });
}
