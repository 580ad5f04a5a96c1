#pragma once

#include <functional>
#include <string>

// The platform log: one line per call on stderr, prefixed with a time stamp and the process name
// and identifiers, as the platform's system log prints. Safe from any thread.
void TNLPlatformLog(const std::string& line);

// Also hands every line to `observer` (null removes it). For tests and tools that check what
// was logged.
void TNLPlatformLogSetObserver(std::function<void(const std::string& line)> observer);
