#include "Platform/Foundation/TNLPlatformLog.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <mutex>

#include <sys/syscall.h>
#include <unistd.h>

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

std::string processName() {
  std::array<char, 256> buffer{};
  FILE* file = std::fopen("/proc/self/comm", "r");
  if (file == nullptr) {
    return "process";
  }
  std::string name;
  if (std::fgets(buffer.data(), static_cast<int>(buffer.size()), file) != nullptr) {
    name = buffer.data();
    while (!name.empty() && (name.back() == '\n' || name.back() == '\r')) {
      name.pop_back();
    }
  }
  std::fclose(file);
  return name.empty() ? "process" : name;
}

}  // namespace

void TNLPlatformLog(const std::string& line) {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto micros =
      std::chrono::duration_cast<std::chrono::microseconds>(now.time_since_epoch()).count() %
      1000000;
  std::tm local{};
  localtime_r(&seconds, &local);
  std::array<char, 64> stamp{};
  std::strftime(stamp.data(), stamp.size(), "%Y-%m-%d %H:%M:%S", &local);
  std::array<char, 32> zone{};
  std::strftime(zone.data(), zone.size(), "%z", &local);

  static const std::string name = processName();
  std::string text = std::string(stamp.data()) + "." + std::to_string(1000000 + micros).substr(1) +
                     zone.data() + " " + name + "[" + std::to_string(getpid()) + ":" +
                     std::to_string(syscall(SYS_gettid)) + "] " + line + "\n";
  // One write per line keeps lines from different threads whole.
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());

  std::lock_guard lock(observerMutex());
  if (const auto& observer = observerSlot()) {
    observer(line);
  }
}

void TNLPlatformLogSetObserver(std::function<void(const std::string& line)> observer) {
  std::lock_guard lock(observerMutex());
  observerSlot() = std::move(observer);
}
