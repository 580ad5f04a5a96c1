#pragma once

#include <memory>
#include <string>

#include <nlohmann/json.hpp>

// An error value of a domain and a numeric code, with user information, as the platform's
// error objects are. Passed around as std::shared_ptr<const TNLError>; null means "no error".
class TNLError {
 public:
  TNLError(std::string domain, long code,
           nlohmann::ordered_json userInfo = nlohmann::ordered_json::object());

  static std::shared_ptr<const TNLError> make(
      std::string domain, long code,
      nlohmann::ordered_json userInfo = nlohmann::ordered_json::object());

  const std::string& domain() const { return domain_; }
  long code() const { return code_; }
  const nlohmann::ordered_json& userInfo() const { return userInfo_; }

  // The user-information entry kTNLLocalizedDescriptionKey when present, else a generated sentence.
  std::string localizedDescription() const;
  // Error Domain=<domain> Code=<code> "<localized description>" UserInfo={key=value, ...}
  std::string description() const;

 private:
  std::string domain_;
  long code_;
  nlohmann::ordered_json userInfo_;
};

using TNLErrorPtr = std::shared_ptr<const TNLError>;

// Domains and user-information keys, named as the platform names them so that logs read the same.
inline constexpr char TNLURLErrorDomain[] = "NSURLErrorDomain";
inline constexpr char TNLCocoaErrorDomain[] = "NSCocoaErrorDomain";
inline constexpr char kTNLLocalizedDescriptionKey[] = "NSLocalizedDescription";
inline constexpr char kTNLDebugDescriptionKey[] = "NSDebugDescription";
inline constexpr char kTNLErrorFailingURLStringKey[] = "NSErrorFailingURLStringKey";

// Codes of the URL error domain.
namespace TNLURLError {
inline constexpr long Unknown = -1;
inline constexpr long BadURL = -1000;
inline constexpr long TimedOut = -1001;
inline constexpr long UnsupportedURL = -1002;
inline constexpr long CannotFindHost = -1003;
inline constexpr long CannotConnectToHost = -1004;
inline constexpr long NetworkConnectionLost = -1005;
inline constexpr long HTTPTooManyRedirects = -1007;
inline constexpr long ResourceUnavailable = -1008;
inline constexpr long NotConnectedToInternet = -1009;
inline constexpr long DataLengthExceedsMaximum = -1103;
inline constexpr long SecureConnectionFailed = -1200;
inline constexpr long ServerCertificateUntrusted = -1202;
}  // namespace TNLURLError

// Code of the general domain for data that cannot be decoded (JSON).
inline constexpr long TNLPropertyListReadCorruptError = 3840;
