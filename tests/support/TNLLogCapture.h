#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "Platform/Foundation/TNLPlatformLog.h"

// Collects the lines written to the platform log while it lives.
class TNLLogCapture {
 public:
  TNLLogCapture() {
    TNLPlatformLogSetObserver([this](const std::string& line) {
      std::lock_guard lock(mutex_);
      lines_.push_back(line);
    });
  }
  ~TNLLogCapture() { TNLPlatformLogSetObserver(nullptr); }
  TNLLogCapture(const TNLLogCapture&) = delete;
  TNLLogCapture& operator=(const TNLLogCapture&) = delete;

  std::vector<std::string> lines() const {
    std::lock_guard lock(mutex_);
    return lines_;
  }
  bool contains(const std::string& text) const { return count(text) > 0; }
  size_t count(const std::string& text) const {
    std::lock_guard lock(mutex_);
    size_t n = 0;
    for (const auto& line : lines_) {
      n += line.find(text) != std::string::npos ? 1 : 0;
    }
    return n;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};
