#include "Platform/Device/TNLCurrentDeviceFacts.h"

#include <mutex>

#include "Platform/Foundation/TNLNoDestructor.h"

namespace {

struct Current {
  std::mutex mutex;
  std::shared_ptr<TNLDeviceFacts> facts;
};

Current& current() {
  static TNLNoDestructor<Current> instance;
  return *instance;
}

}  // namespace

std::shared_ptr<TNLDeviceFacts> TNLCurrentDeviceFacts() {
  std::lock_guard lock(current().mutex);
  if (!current().facts) {
    current().facts = TNLDeviceFacts::linuxFacts();
  }
  return current().facts;
}

void TNLSetCurrentDeviceFacts(std::shared_ptr<TNLDeviceFacts> facts) {
  std::lock_guard lock(current().mutex);
  current().facts = std::move(facts);
}
