#include "Trackers/TNLTrackerClient.h"

#include "Platform/Http/TNLHttpSession.h"
#include "TNLNetworkClient.h"

void TNLTrackerClient::sendTrackerEventToURL(const std::string& url,
                                             const std::string& method) const {
  const TNLURLRequest request = createRequestFromUrl(url, method);
  // Nothing of the answer is used; a tracker still on its way at shutdown is delivered.
  TNLHttpSession::sharedSession()->dataTask(
      request,
      [url = request.url](const TNLHttpSession::Response& response) {
        TNLNetworkClient::logLimitExceeded(url, response);
      },
      TNLHttpSession::AtShutdown::deliver);
}

TNLURLRequest TNLTrackerClient::createRequestFromUrl(const std::string& url,
                                                     const std::string& method) const {
  TNLURLRequest request;
  request.url = TNLURLRequest::parseURL(url);
  request.method = method;
  return request;
}
