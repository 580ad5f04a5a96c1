#pragma once

#include <string>

#include "Platform/Http/TNLURLRequest.h"

// Sends one tracker request and forgets it: the response, its status and any error are ignored.
class TNLTrackerClient {
 public:
  void sendTrackerEventToURL(const std::string& url, const std::string& method) const;
  // The URL and the method, nothing else.
  TNLURLRequest createRequestFromUrl(const std::string& url, const std::string& method) const;
};
