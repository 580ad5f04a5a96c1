#pragma once

#include <optional>
#include <string>

// A verification script of a native session: where to load it from, and the vendor's key and
// parameters that the session start hands to the measurement scripts.
class OMIDTarnelVerificationScriptResource {
 public:
  explicit OMIDTarnelVerificationScriptResource(
      std::string url, std::optional<std::string> vendorKey = std::nullopt,
      std::optional<std::string> parameters = std::nullopt)
      : url_(std::move(url)),
        vendorKey_(std::move(vendorKey)),
        parameters_(std::move(parameters)) {}

  const std::string& url() const { return url_; }
  const std::optional<std::string>& vendorKey() const { return vendorKey_; }
  const std::optional<std::string>& parameters() const { return parameters_; }

 private:
  std::string url_;
  std::optional<std::string> vendorKey_;
  std::optional<std::string> parameters_;
};
