#pragma once

#include <filesystem>
#include <map>
#include <string>

#include <sys/types.h>

// A real nginx on 127.0.0.1, for tests that need a server that holds up under load: static files
// from a directory of its own (a POST to a file answers with the file, as the manifest endpoint
// does), "/monitor" answering 204 to anything, and a log of every request's connection number so
// that tests can count connections.
class TNLNginx {
 public:
  // `files` maps paths ("/v4/manifest/APP1") to contents; "@BASE@" in a content is replaced by
  // the server's base URL. Throws when nginx cannot be started.
  explicit TNLNginx(const std::map<std::string, std::string>& files);
  ~TNLNginx();
  TNLNginx(const TNLNginx&) = delete;
  TNLNginx& operator=(const TNLNginx&) = delete;

  std::string baseURL() const { return "http://127.0.0.1:" + std::to_string(port_); }
  // Distinct connections that carried at least one request so far.
  size_t connectionsSeen() const;
  size_t requestsSeen() const;

 private:
  std::filesystem::path dir_;
  int port_ = 0;
  pid_t pid_ = -1;
};
