#pragma once

#include <optional>
#include <string>

// Who the application is. Strings are null when the manifest did not carry them.
class TNLDeveloper {
 public:
  // Empty strings, not active.
  TNLDeveloper();
  TNLDeveloper(std::optional<std::string> publisherId, std::optional<std::string> applicationId,
               std::optional<std::string> applicationName, bool active);

  const std::optional<std::string>& publisherId() const { return publisherId_; }
  void setPublisherId(std::optional<std::string> value) { publisherId_ = std::move(value); }
  const std::optional<std::string>& applicationId() const { return applicationId_; }
  void setApplicationId(std::optional<std::string> value) { applicationId_ = std::move(value); }
  // Becomes the "%PROPERTY%" macro after each fetch.
  const std::optional<std::string>& applicationName() const { return applicationName_; }
  void setApplicationName(std::optional<std::string> value) { applicationName_ = std::move(value); }
  bool active() const { return active_; }
  void setActive(bool value) { active_ = value; }

 private:
  std::optional<std::string> publisherId_;
  std::optional<std::string> applicationId_;
  std::optional<std::string> applicationName_;
  bool active_;
};
