#pragma once

#include <functional>
#include <string>

#include "TarnelAd/TNLExport.h"

// The platform log: one line per call on stderr, prefixed with a time stamp and the process name
// and identifiers, as the platform's system log prints. Safe from any thread.
// Exported for the GTK backend library.
TNL_EXPORT void TNLPlatformLog(const std::string& line);

// Also hands every line to `observer` (null removes it). For tests and tools that check what
// was logged.
void TNLPlatformLogSetObserver(std::function<void(const std::string& line)> observer);
