#include "TNLBenchServer.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>

namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr || *value == '\0') {
    std::fprintf(stderr, "%s is not set: run the benchmarks with scripts/bench.sh\n", name);
    std::exit(2);
  }
  return value;
}

}  // namespace

const TNLBenchServer& TNLBenchServer::shared() {
  static const TNLBenchServer server;
  return server;
}

TNLBenchServer::TNLBenchServer()
    : base_(environment("TNL_BENCH_SERVER")),
      root_(environment("TNL_BENCH_ROOT")),
      accessLog_(environment("TNL_BENCH_ACCESS_LOG")) {}

void TNLBenchServer::publish(const std::string& path, const std::string& content) const {
  std::string text = content;
  const std::string placeholder = "@BASE@";
  for (size_t at = text.find(placeholder); at != std::string::npos;
       at = text.find(placeholder, at + base_.size())) {
    text.replace(at, placeholder.size(), base_);
  }
  const std::filesystem::path file = root_ / path.substr(1);
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << text;
}

size_t TNLBenchServer::connectionsSeen() const {
  std::ifstream log(accessLog_);
  std::set<std::string> connections;
  for (std::string line; std::getline(log, line);) {
    connections.insert(line);
  }
  return connections.size();
}
