#pragma once

#include <string>

#include <curl/curl.h>

// The same HTTP work done by hand: one libcurl easy handle, reused for every request so that its
// connection stays open, as a host that wrote its own client would do.
class TNLRawCurl {
 public:
  TNLRawCurl();
  ~TNLRawCurl();
  TNLRawCurl(const TNLRawCurl&) = delete;
  TNLRawCurl& operator=(const TNLRawCurl&) = delete;

  // The body of a 2xx answer; throws on a transport failure or another status.
  const std::string& get(const std::string& url);
  const std::string& post(const std::string& url, const std::string& body);

 private:
  const std::string& perform(const std::string& url);

  CURL* easy_;
  std::string body_;
};
