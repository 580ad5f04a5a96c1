#include "TNLNetworkClient.h"

#include "Platform/Foundation/TNLStrings.h"
#include "Platform/Http/TNLHttpSession.h"
#include "TNLLog.h"

namespace {

void logFailure(const std::exception& error) {
  TNLLog::sharedLogger()->log("Network request failed with exception: %@", error);
}

// Starts the request on the shared session; a request that a limit ended is logged once here,
// before its failure callback runs.
void startTask(const TNLURLRequest& request, TNLHttpSession::Completion completion) {
  TNLHttpSession::sharedSession()->dataTask(
      request, [url = request.url,
                completion = std::move(completion)](const TNLHttpSession::Response& response) {
        TNLNetworkClient::logLimitExceeded(url, response);
        completion(response);
      });
}

}  // namespace

TNLURLRequest TNLNetworkClient::createRequestFromUrl(const std::string& url,
                                                     const std::optional<std::string>& body,
                                                     const std::string& method) {
  TNLURLRequest request;
  try {
    request.url = TNLURLRequest::parseURL(url);
    request.method = method;
    request.body = body;
  } catch (const std::exception& error) {
    logFailure(error);
  }
  return request;
}

void TNLNetworkClient::makeJSONRequestWithURL(const std::string& url, const std::string& method,
                                              const std::optional<std::string>& body,
                                              JSONSuccess success, Failure failure) {
  try {
    const TNLURLRequest request = createRequestFromUrl(url, body, method);
    startTask(request, [success = std::move(success),
                        failure = std::move(failure)](const TNLHttpSession::Response& response) {
      if (response.error) {
        failure(response.error);
        return;
      }
      TNLErrorPtr decodingError;
      const TNLJson value = TNLJSON::parse(response.body, &decodingError);
      if (decodingError) {
        failure(decodingError);
      } else if (value.is_object()) {
        success(value);
      } else {
        failure(nullptr);
      }
    });
  } catch (const std::exception& error) {
    logFailure(error);
  }
}

void TNLNetworkClient::makeHTMLRequestWithURL(const std::string& url, const std::string& method,
                                              HTMLSuccess success, Failure failure) {
  try {
    const TNLURLRequest request = createRequestFromUrl(url, std::nullopt, method);
    startTask(request, [success = std::move(success),
                        failure = std::move(failure)](const TNLHttpSession::Response& response) {
      std::optional<std::string> text;
      if (!response.body.empty() && TNLStrings::isValidUTF8(response.body)) {
        text = response.body;
      }
      if (response.error) {
        failure(response.error);
      } else {
        success(text);
      }
    });
  } catch (const std::exception& error) {
    logFailure(error);
  }
}

void TNLNetworkClient::makeURLRequestWithURL(const std::string& url, const std::string& method,
                                             DataSuccess success, Failure failure) {
  try {
    const TNLURLRequest request = createRequestFromUrl(url, std::nullopt, method);
    startTask(request, [success = std::move(success),
                        failure = std::move(failure)](const TNLHttpSession::Response& response) {
      if (response.error) {
        failure(response.error);
      } else {
        success(response.body);
      }
    });
  } catch (const std::exception& error) {
    logFailure(error);
  }
}

void TNLNetworkClient::logLimitExceeded(const std::optional<std::string>& url,
                                        const TNLHttpSession::Response& response) {
  if (!response.limitExceeded.empty()) {
    TNLLog::sharedLogger()->log("Network request to %@ stopped: %@", url, response.limitExceeded);
  }
}
