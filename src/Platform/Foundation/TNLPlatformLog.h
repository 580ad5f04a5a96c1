#pragma once

#include <functional>
#include <string>

#include "TarnelAd/TNLExport.h"

// The library's own GLib log domain.
inline constexpr char kTNLPlatformLogDomain[] = "TarnelAd";

// The platform log: one GLib structured log message per line, at the message level, under the
// library's log domain, so that hosts route, filter or silence it with their GLib log writer as
// for any GLib-based library. Safe from any thread. Exported for the GTK backend library.
TNL_EXPORT void TNLPlatformLog(const std::string& line);

// Also hands every line to `observer` (null removes it); replacing the observer waits for a call
// in progress. For tests and tools that check what was logged.
void TNLPlatformLogSetObserver(std::function<void(const std::string& line)> observer);
