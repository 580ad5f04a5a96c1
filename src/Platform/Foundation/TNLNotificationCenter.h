#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Platform/Foundation/TNLJSON.h"

struct TNLNotification {
  std::string name;
  const void* object = nullptr;  // the sender, by identity; may be null
  TNLJson userInfo = TNLJson::object();
};

// A notification centre: observers register for a name and optionally one sender; posting calls
// every matching observer synchronously on the posting thread, in registration order.
class TNLNotificationCenter {
 public:
  using Callback = std::function<void(const TNLNotification&)>;

  static std::shared_ptr<TNLNotificationCenter> defaultCenter();

  // `observer` identifies the registration for removal; `sender` null means any sender.
  void addObserver(const void* observer, const std::string& name, const void* sender,
                   Callback callback);
  // Removes every registration of the observer.
  void removeObserver(const void* observer);
  // Removes the observer's registrations for the name (and sender, when one is given).
  void removeObserver(const void* observer, const std::string& name, const void* sender = nullptr);

  void post(const std::string& name, const void* sender = nullptr,
            TNLJson userInfo = TNLJson::object());

  size_t observerCount() const;

 private:
  struct Registration {
    const void* observer;
    std::string name;
    const void* sender;
    Callback callback;
    bool removed = false;
  };

  mutable std::mutex mutex_;
  std::vector<std::shared_ptr<Registration>> registrations_;
};
