#pragma once

#include <memory>
#include <string>

#include "Platform/Foundation/TNLJSON.h"

// The integration partner, reported to measurement scripts as partnerName and partnerVersion.
class OMIDTarnelPartner {
 public:
  // Null when the name or the version is empty.
  static std::shared_ptr<OMIDTarnelPartner> create(const std::string& name,
                                                   const std::string& versionString);

  const std::string& name() const { return name_; }
  const std::string& versionString() const { return versionString_; }

  // {"partnerName": name, "partnerVersion": version}
  TNLJson toJSON() const;

 private:
  OMIDTarnelPartner(std::string name, std::string versionString)
      : name_(std::move(name)), versionString_(std::move(versionString)) {}

  const std::string name_;
  const std::string versionString_;
};
