#include "TNLLog.h"

#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Foundation/TNLPlatformLog.h"

std::shared_ptr<TNLLog> TNLLog::sharedLogger() {
  static const TNLNoDestructor<std::shared_ptr<TNLLog>> logger(std::make_shared<TNLLog>());
  return *logger;
}

void TNLLog::log(const std::string& message) {
  if (!showLogs()) {
    return;
  }
  try {
    TNLPlatformLog(TNLFormat("%@", message));
  } catch (...) {
    // The logger must never fail its caller.
  }
}

void TNLLog::log(std::string_view format, const TNLFormatArg& object) {
  const TNLFormatArg objects[] = {object};
  logFormatted(format, objects);
}

void TNLLog::log(std::string_view format, const TNLFormatArg& firstObject,
                 const TNLFormatArg& secondObject) {
  const TNLFormatArg objects[] = {firstObject, secondObject};
  logFormatted(format, objects);
}

void TNLLog::log(std::string_view format, const TNLFormatArg& firstObject,
                 const TNLFormatArg& secondObject, const TNLFormatArg& thirdObject) {
  const TNLFormatArg objects[] = {firstObject, secondObject, thirdObject};
  logFormatted(format, objects);
}

void TNLLog::logFormatted(std::string_view format, std::span<const TNLFormatArg> objects) {
  if (!showLogs()) {
    return;
  }
  try {
    std::string line;
    try {
      line = TNLFormatArgs(format, objects);
    } catch (const std::exception& error) {
      line = TNLFormat("Misformatted TNLLog: %@\nException: %@", std::string(format), error);
    }
    TNLPlatformLog(line);
  } catch (...) {
    // The logger must never fail its caller.
  }
}
