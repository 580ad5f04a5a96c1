#pragma once

#include <functional>
#include <optional>
#include <string>

#include "Platform/Foundation/TNLError.h"
#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Http/TNLHttpSession.h"
#include "Platform/Http/TNLURLRequest.h"

// The one place where the library makes HTTP requests that return content. Stateless. Status
// codes are never examined; callbacks run on the HTTP session's thread, exactly one per request
// that was started.
class TNLNetworkClient {
 public:
  using Failure = std::function<void(const TNLErrorPtr& error)>;
  using JSONSuccess = std::function<void(const TNLJson& object)>;
  using HTMLSuccess = std::function<void(const std::optional<std::string>& text)>;
  using DataSuccess = std::function<void(const std::string& bytes)>;

  // Success receives a JSON object. Failure receives the transport error, the decoding error, or
  // null when the body decoded to something other than an object.
  static void makeJSONRequestWithURL(const std::string& url, const std::string& method,
                                     const std::optional<std::string>& body, JSONSuccess success,
                                     Failure failure);
  // Success receives the body as UTF-8 text, null when empty or not UTF-8.
  static void makeHTMLRequestWithURL(const std::string& url, const std::string& method,
                                     HTMLSuccess success, Failure failure);
  // Success receives the raw body bytes.
  static void makeURLRequestWithURL(const std::string& url, const std::string& method,
                                    DataSuccess success, Failure failure);

  // The one log line of a request that a network limit ended (nothing for any other outcome).
  static void logLimitExceeded(const std::optional<std::string>& url,
                               const TNLHttpSession::Response& response);

  static TNLURLRequest createRequestFromUrl(const std::string& url,
                                            const std::optional<std::string>& body,
                                            const std::string& method);
};
