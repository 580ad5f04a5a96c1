#include "Platform/Foundation/TNLError.h"

#include <utility>

TNLError::TNLError(std::string domain, long code, nlohmann::ordered_json userInfo)
    : domain_(std::move(domain)), code_(code), userInfo_(std::move(userInfo)) {
  if (!userInfo_.is_object()) {
    userInfo_ = nlohmann::ordered_json::object();
  }
}

std::shared_ptr<const TNLError> TNLError::make(std::string domain, long code,
                                               nlohmann::ordered_json userInfo) {
  return std::make_shared<const TNLError>(std::move(domain), code, std::move(userInfo));
}

std::string TNLError::localizedDescription() const {
  const auto it = userInfo_.find(kTNLLocalizedDescriptionKey);
  if (it != userInfo_.end() && it->is_string()) {
    return it->get<std::string>();
  }
  return "The operation couldn\u2019t be completed. (" + domain_ + " error " +
         std::to_string(code_) + ".)";
}

std::string TNLError::description() const {
  std::string text = "Error Domain=" + domain_ + " Code=" + std::to_string(code_) + " \"" +
                     localizedDescription() + "\"";
  if (!userInfo_.empty()) {
    text += " UserInfo={";
    bool first = true;
    for (const auto& [key, value] : userInfo_.items()) {
      if (!first) {
        text += ", ";
      }
      first = false;
      text += key + "=" + (value.is_string() ? value.get<std::string>() : value.dump());
    }
    text += "}";
  }
  return text;
}
