#include "Trackers/TNLTrackerClient.h"

#include "Platform/Http/TNLHttpSession.h"

void TNLTrackerClient::sendTrackerEventToURL(const std::string& url,
                                             const std::string& method) const {
  TNLHttpSession::sharedSession()->dataTask(createRequestFromUrl(url, method), nullptr);
}

TNLURLRequest TNLTrackerClient::createRequestFromUrl(const std::string& url,
                                                     const std::string& method) const {
  TNLURLRequest request;
  request.url = TNLURLRequest::parseURL(url);
  request.method = method;
  return request;
}
