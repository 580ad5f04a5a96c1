#include "support/TNLNginx.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "support/TNLTestServer.h"

namespace {

void writeFile(const std::filesystem::path& path, const std::string& text) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

std::string replaceAll(std::string text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

bool accepts(int port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(port));
  const bool connected = ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
  ::close(fd);
  return connected;
}

}  // namespace

TNLNginx::TNLNginx(const std::map<std::string, std::string>& files) {
  std::string pattern = (std::filesystem::temp_directory_path() / "tnl-nginx-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) {
    throw std::runtime_error("cannot make a directory for nginx");
  }
  dir_ = pattern;
  port_ = TNLTestServer::closedPort();
  for (const auto& [path, content] : files) {
    writeFile(dir_ / "www" / path.substr(1), replaceAll(content, "@BASE@", baseURL()));
  }
  const std::string d = dir_.string();
  writeFile(dir_ / "nginx.conf", R"(daemon off;
master_process off;
worker_processes 1;
error_log )" + d + R"(/error.log warn;
pid )" + d + R"(/nginx.pid;
events { worker_connections 1024; }
http {
  default_type application/json;
  types { text/html html; }
  log_format connections '$connection';
  access_log )" + d + R"(/access.log connections;
  client_body_temp_path )" + d + R"(/body;
  proxy_temp_path )" + d + R"(/proxy;
  fastcgi_temp_path )" + d + R"(/fastcgi;
  uwsgi_temp_path )" + d + R"(/uwsgi;
  scgi_temp_path )" + d + R"(/scgi;
  keepalive_requests 100000;
  server {
    listen 127.0.0.1:)" + std::to_string(port_) +
                                     R"(;
    root )" + d + R"(/www;
    location /monitor { return 204; }
    # The static module refuses POST; the manifest endpoint answers it with the file.
    location / { error_page 405 =200 $uri; }
  }
}
)");
  // Everything the child needs is made before the fork: it only calls exec.
  const std::string config = d + "/nginx.conf";
  const std::string errors = d + "/error.log";
  pid_ = ::fork();
  if (pid_ == 0) {
    ::execl("/usr/sbin/nginx", "nginx", "-p", d.c_str(), "-c", config.c_str(), "-e", errors.c_str(),
            static_cast<char*>(nullptr));
    ::_exit(127);
  }
  for (int attempt = 0; attempt < 500 && !accepts(port_); ++attempt) {
    int status = 0;
    if (::waitpid(pid_, &status, WNOHANG) == pid_) {
      pid_ = -1;
      throw std::runtime_error("nginx did not start (is the nginx-light package installed?)");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

TNLNginx::~TNLNginx() {
  if (pid_ > 0) {
    ::kill(pid_, SIGTERM);
    int status = 0;
    ::waitpid(pid_, &status, 0);
  }
  std::error_code ignored;
  std::filesystem::remove_all(dir_, ignored);
}

size_t TNLNginx::connectionsSeen() const {
  std::ifstream log(dir_ / "access.log");
  std::set<std::string> connections;
  for (std::string line; std::getline(log, line);) {
    connections.insert(line);
  }
  return connections.size();
}

size_t TNLNginx::requestsSeen() const {
  std::ifstream log(dir_ / "access.log");
  size_t count = 0;
  for (std::string line; std::getline(log, line);) {
    ++count;
  }
  return count;
}
