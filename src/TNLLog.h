#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <string_view>

#include "Platform/Foundation/TNLFormat.h"

// The library's switchable diagnostic log. Off until the host switches it on; while off nothing
// is formatted or printed. Never lets an error escape to its caller.
//
// The platform's operations are named TNLLog:, TNLLog:withObject: and so on; C++ reserves the
// class name for constructors, so here they are the overloads of log().
class TNLLog {
 public:
  static std::shared_ptr<TNLLog> sharedLogger();

  // Prints the message as it stands ('%' is not interpreted).
  void log(const std::string& message);
  void log(std::string_view format, const TNLFormatArg& object);
  void log(std::string_view format, const TNLFormatArg& firstObject,
           const TNLFormatArg& secondObject);
  void log(std::string_view format, const TNLFormatArg& firstObject,
           const TNLFormatArg& secondObject, const TNLFormatArg& thirdObject);

  void showTNLLogs(bool show) { setShowLogs(show); }
  bool showLogs() const { return showLogs_.load(std::memory_order_relaxed); }
  void setShowLogs(bool show) { showLogs_.store(show, std::memory_order_relaxed); }

 private:
  void logFormatted(std::string_view format, std::span<const TNLFormatArg> objects);

  std::atomic<bool> showLogs_{false};
};
