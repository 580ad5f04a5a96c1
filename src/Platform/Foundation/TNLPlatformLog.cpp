#include "Platform/Foundation/TNLPlatformLog.h"

#include <mutex>

#include <glib.h>

#include "Platform/Foundation/TNLNoDestructor.h"

namespace {

// Held while the observer runs, so that replacing it waits for a call in progress; recursive
// because an observer may log.
std::recursive_mutex& observerMutex() {
  static TNLNoDestructor<std::recursive_mutex> mutex;
  return *mutex;
}

std::function<void(const std::string&)>& observerSlot() {
  static TNLNoDestructor<std::function<void(const std::string&)>> observer;
  return *observer;
}

}  // namespace

void TNLPlatformLog(const std::string& line) {
  // A message: GLib's default writer prints it (on stderr, or to the journal) whatever
  // G_MESSAGES_DEBUG says, as the platform's log does; a host's own writer may route or drop it.
  const GLogField fields[] = {
      {"GLIB_DOMAIN", kTNLPlatformLogDomain, -1},
      {"PRIORITY", "5", -1},  // syslog's "notice", GLib's value for messages
      {"MESSAGE", line.c_str(), -1},
  };
  g_log_structured_array(G_LOG_LEVEL_MESSAGE, fields, G_N_ELEMENTS(fields));

  std::lock_guard lock(observerMutex());
  if (const auto& observer = observerSlot()) {
    observer(line);
  }
}

void TNLPlatformLogSetObserver(std::function<void(const std::string& line)> observer) {
  std::lock_guard lock(observerMutex());
  observerSlot() = std::move(observer);
}
