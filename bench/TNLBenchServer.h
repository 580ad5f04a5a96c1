#pragma once

#include <filesystem>
#include <string>

// The nginx that scripts/bench.sh starts on 127.0.0.1: its base URL, the directory it serves
// (benchmarks write the files they fetch there before they run) and its access log, which
// carries each request's connection number. Ends the program with a message when the
// benchmarks were not started by the script.
class TNLBenchServer {
 public:
  static const TNLBenchServer& shared();

  std::string url(const std::string& path) const { return base_ + path; }
  // Writes `content` at `path` ("/ad.json"); "@BASE@" in it becomes the server's base URL.
  void publish(const std::string& path, const std::string& content) const;
  // Distinct connections that carried at least one request so far.
  size_t connectionsSeen() const;

 private:
  TNLBenchServer();

  std::string base_;
  std::filesystem::path root_;
  std::filesystem::path accessLog_;
};
