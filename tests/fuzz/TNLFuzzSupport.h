#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Http/TNLHttpSession.h"
#include "support/TNLTestDeviceFacts.h"

// Shared by the fuzz targets: fixed device facts (nothing read from the machine per run) and a
// session that answers requests from the fuzzer's own data instead of the network.
namespace TNLFuzz {

// Splits `data` at every occurrence of `separator`.
inline std::vector<std::string> split(const uint8_t* data, size_t size,
                                      std::string_view separator) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  std::vector<std::string> parts;
  size_t start = 0;
  for (size_t found; (found = text.find(separator, start)) != std::string_view::npos;
       start = found + separator.size()) {
    parts.emplace_back(text.substr(start, found - start));
  }
  parts.emplace_back(text.substr(start));
  return parts;
}

// Answers each request, synchronously, with the next queued body; a refused connection once
// none is left.
class MemorySession : public TNLHttpSession {
 public:
  void answerWith(std::vector<std::string> bodies) {
    bodies_.assign(std::make_move_iterator(bodies.begin()), std::make_move_iterator(bodies.end()));
  }
  void dataTask(const TNLURLRequest&, Completion completion, AtShutdown) override {
    Response response;
    if (bodies_.empty()) {
      response.error = TNLError::make(TNLURLErrorDomain, TNLURLError::CannotConnectToHost);
    } else {
      response.body = std::move(bodies_.front());
      response.statusCode = 200;
      bodies_.pop_front();
    }
    if (completion) {
      completion(response);
    }
  }
  bool isSessionThread() const override { return true; }

 private:
  std::deque<std::string> bodies_;
};

// Installs the fixed facts (and, when asked, the memory session) once per process.
inline std::shared_ptr<MemorySession> setUp() {
  static const auto session = [] {
    TNLSetup::setDeviceFacts(std::make_shared<TNLTestDeviceFacts>());
    auto memory = std::make_shared<MemorySession>();
    TNLHttpSession::replaceSharedSession(memory);
    return memory;
  }();
  return session;
}

}  // namespace TNLFuzz
