#pragma once

#include <optional>
#include <string>

// A second endpoint of the monitoring shape; stored, not used.
class TNLPerformance {
 public:
  TNLPerformance();
  TNLPerformance(std::optional<std::string> logLevel, std::optional<std::string> url,
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
