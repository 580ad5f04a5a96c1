#pragma once

#include <optional>
#include <string>

// The active viewability vendor, if any (an empty name when none is active).
class TNLViewability {
 public:
  TNLViewability();
  TNLViewability(std::optional<std::string> name, bool active, bool included);

  const std::optional<std::string>& name() const { return name_; }
  void setName(std::optional<std::string> value) { name_ = std::move(value); }
  bool active() const { return active_; }
  void setActive(bool value) { active_ = value; }
  bool included() const { return included_; }
  void setIncluded(bool value) { included_ = value; }

 private:
  std::optional<std::string> name_;
  bool active_;
  bool included_;
};
