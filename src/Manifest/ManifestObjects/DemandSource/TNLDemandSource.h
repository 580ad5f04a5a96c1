#pragma once

#include <cstdint>
#include <optional>
#include <string>

// One ad source: its request URL template and the rank that orders the attempts (ascending).
// timeout and autofetch are carried only.
class TNLDemandSource {
 public:
  TNLDemandSource();
  TNLDemandSource(std::optional<std::string> source, uint64_t rank, uint64_t timeout,
                  bool autofetch, std::optional<std::string> url);

  const std::optional<std::string>& source() const { return source_; }
  void setSource(std::optional<std::string> value) { source_ = std::move(value); }
  uint64_t rank() const { return rank_; }
  void setRank(uint64_t value) { rank_ = value; }
  uint64_t timeout() const { return timeout_; }
  void setTimeout(uint64_t value) { timeout_ = value; }
  bool autofetch() const { return autofetch_; }
  void setAutofetch(bool value) { autofetch_ = value; }
  const std::optional<std::string>& url() const { return url_; }
  void setUrl(std::optional<std::string> value) { url_ = std::move(value); }

 private:
  std::optional<std::string> source_;
  uint64_t rank_;
  uint64_t timeout_;
  bool autofetch_;
  std::optional<std::string> url_;
};
