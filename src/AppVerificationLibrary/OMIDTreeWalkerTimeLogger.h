#pragma once

#include <cstddef>

// Told after every walk how many views it described and how long it took.
class OMIDTarnelTreeWalkerTimeLogger {
 public:
  virtual ~OMIDTarnelTreeWalkerTimeLogger() = default;

  virtual void didProcessObjectsCount(size_t count, double milliseconds) = 0;
};
