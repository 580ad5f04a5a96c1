#pragma once

#include <optional>
#include <string>

// Where event trackers go: a URL template with macros and the HTTP method to send it with.
// logLevel is carried but nothing reads it.
class TNLMonitoring {
 public:
  TNLMonitoring();
  TNLMonitoring(std::optional<std::string> logLevel, std::optional<std::string> url,
                std::optional<std::string> method);

  const std::optional<std::string>& logLevel() const { return logLevel_; }
  void setLogLevel(std::optional<std::string> value) { logLevel_ = std::move(value); }
  const std::optional<std::string>& url() const { return url_; }
  void setUrl(std::optional<std::string> value) { url_ = std::move(value); }
  const std::optional<std::string>& method() const { return method_; }
  void setMethod(std::optional<std::string> value) { method_ = std::move(value); }

 private:
  std::optional<std::string> logLevel_;
  std::optional<std::string> url_;
  std::optional<std::string> method_;
};
