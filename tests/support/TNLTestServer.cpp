#include "support/TNLTestServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <httplib.h>

#include <algorithm>
#include <stdexcept>

std::string TNLTestServer::Request::header(const std::string& name) const {
  for (const auto& [key, value] : headers) {
    if (::strcasecmp(key.c_str(), name.c_str()) == 0) {
      return value;
    }
  }
  return "";
}

bool TNLTestServer::Request::hasHeader(const std::string& name) const {
  return std::any_of(headers.begin(), headers.end(), [&](const auto& entry) {
    return ::strcasecmp(entry.first.c_str(), name.c_str()) == 0;
  });
}

TNLTestServer::TNLTestServer() : server_(std::make_unique<httplib::Server>()) {
  const auto handle = [this](const httplib::Request& in, httplib::Response& out) {
    Request request;
    request.method = in.method;
    request.path = in.path;
    const auto query = in.target.find('?');
    request.query = query == std::string::npos ? "" : in.target.substr(query + 1);
    for (const auto& [key, value] : in.headers) {
      request.headers.emplace(key, value);
    }
    request.body = in.body;
    const Response response = respond(request);

    if (response.neverAnswer) {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return stopping_; });
      out.status = 503;
      return;
    }
    if (response.delay.count() > 0) {
      std::unique_lock lock(mutex_);
      changed_.wait_for(lock, response.delay, [this] { return stopping_; });
    }
    out.status = response.status;
    if (response.dropConnection) {
      const std::string partial = response.body;
      out.set_content_provider(partial.size() + 1024, response.contentType,
                               [partial](size_t offset, size_t, httplib::DataSink& sink) {
                                 if (offset == 0 && !partial.empty()) {
                                   sink.write(partial.data(), partial.size());
                                 }
                                 return false;  // abort: the connection closes short of its length
                               });
      return;
    }
    out.set_content(response.body, response.contentType);
  };
  server_->Get(R"(.*)", handle);
  server_->Post(R"(.*)", handle);
  // One request per connection: stopping the server then never waits for idle keep-alive reads.
  server_->set_keep_alive_max_count(1);
  // Web engines open connections ahead of need (WebKit preconnects when a load starts) that may
  // never carry a request; the server waits this long for one, and stopping waits for that.
  server_->set_keep_alive_timeout(1);
  port_ = server_->bind_to_any_port("127.0.0.1");
  if (port_ <= 0) {
    throw std::runtime_error("test server could not bind to 127.0.0.1");
  }
  thread_ = std::thread([this] { server_->listen_after_bind(); });
  while (!server_->is_running()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

TNLTestServer::~TNLTestServer() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_all();
  server_->stop();
  if (thread_.joinable()) {
    thread_.join();
  }
}

std::string TNLTestServer::baseURL() const {
  return "http://127.0.0.1:" + std::to_string(port_);
}

void TNLTestServer::on(const std::string& method, const std::string& path, Response response) {
  on(method, path, [response](const Request&) { return response; });
}

void TNLTestServer::on(const std::string& method, const std::string& path, Handler handler) {
  std::lock_guard lock(mutex_);
  routes_[{method, path}] = std::move(handler);
}

TNLTestServer::Response TNLTestServer::respond(const Request& request) {
  Handler handler;
  {
    std::lock_guard lock(mutex_);
    requests_.push_back(request);
    const auto it = routes_.find({request.method, request.path});
    if (it != routes_.end()) {
      handler = it->second;
    }
  }
  changed_.notify_all();
  if (!handler) {
    Response notFound;
    notFound.status = 404;
    return notFound;
  }
  return handler(request);
}

std::vector<TNLTestServer::Request> TNLTestServer::requestsTo(const std::string& path) const {
  std::lock_guard lock(mutex_);
  std::vector<Request> matching;
  std::copy_if(requests_.begin(), requests_.end(), std::back_inserter(matching),
               [&](const Request& r) { return r.path == path; });
  return matching;
}

size_t TNLTestServer::requestCount() const {
  std::lock_guard lock(mutex_);
  return requests_.size();
}

bool TNLTestServer::waitForRequests(size_t count, std::chrono::milliseconds timeout) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, timeout, [&] { return requests_.size() >= count; });
}

int TNLTestServer::closedPort() {
  const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = 0;
  ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address));
  socklen_t length = sizeof(address);
  ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
  const int port = ntohs(address.sin_port);
  ::close(fd);  // bound but never listening, and now released: connections are refused
  return port;
}
