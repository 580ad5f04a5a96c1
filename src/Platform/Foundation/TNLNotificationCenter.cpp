#include "Platform/Foundation/TNLNotificationCenter.h"

#include <algorithm>

#include "Platform/Foundation/TNLNoDestructor.h"

std::shared_ptr<TNLNotificationCenter> TNLNotificationCenter::defaultCenter() {
  static const TNLNoDestructor<std::shared_ptr<TNLNotificationCenter>> center(
      std::make_shared<TNLNotificationCenter>());
  return *center;
}

void TNLNotificationCenter::addObserver(const void* observer, const std::string& name,
                                        const void* sender, Callback callback) {
  auto registration = std::make_shared<Registration>(
      Registration{observer, name, sender, std::move(callback), false});
  std::lock_guard lock(mutex_);
  registrations_.push_back(std::move(registration));
}

void TNLNotificationCenter::removeObserver(const void* observer) {
  std::lock_guard lock(mutex_);
  std::erase_if(registrations_, [&](const std::shared_ptr<Registration>& r) {
    if (r->observer == observer) {
      r->removed = true;
      return true;
    }
    return false;
  });
}

void TNLNotificationCenter::removeObserver(const void* observer, const std::string& name,
                                           const void* sender) {
  std::lock_guard lock(mutex_);
  std::erase_if(registrations_, [&](const std::shared_ptr<Registration>& r) {
    if (r->observer == observer && r->name == name && (sender == nullptr || r->sender == sender)) {
      r->removed = true;
      return true;
    }
    return false;
  });
}

void TNLNotificationCenter::post(const std::string& name, const void* sender, TNLJson userInfo) {
  const TNLNotification notification{name, sender, std::move(userInfo)};
  std::vector<std::shared_ptr<Registration>> matching;
  {
    std::lock_guard lock(mutex_);
    for (const auto& r : registrations_) {
      if (r->name == name && (r->sender == nullptr || r->sender == sender)) {
        matching.push_back(r);
      }
    }
  }
  for (const auto& r : matching) {
    bool removed = false;
    {
      std::lock_guard lock(mutex_);
      removed = r->removed;
    }
    // An observer removed by an earlier callback of this post is not called.
    if (!removed) {
      r->callback(notification);
    }
  }
}

size_t TNLNotificationCenter::observerCount() const {
  std::lock_guard lock(mutex_);
  return registrations_.size();
}
