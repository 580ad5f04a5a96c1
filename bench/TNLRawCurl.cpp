#include "TNLRawCurl.h"

#include <stdexcept>

namespace {

size_t append(char* data, size_t size, size_t count, void* body) {
  static_cast<std::string*>(body)->append(data, size * count);
  return size * count;
}

}  // namespace

TNLRawCurl::TNLRawCurl() : easy_(curl_easy_init()) {
  curl_easy_setopt(easy_, CURLOPT_WRITEFUNCTION, append);
  curl_easy_setopt(easy_, CURLOPT_WRITEDATA, &body_);
  curl_easy_setopt(easy_, CURLOPT_NOSIGNAL, 1L);
}

TNLRawCurl::~TNLRawCurl() {
  curl_easy_cleanup(easy_);
}

const std::string& TNLRawCurl::get(const std::string& url) {
  curl_easy_setopt(easy_, CURLOPT_HTTPGET, 1L);
  return perform(url);
}

const std::string& TNLRawCurl::post(const std::string& url, const std::string& body) {
  curl_easy_setopt(easy_, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
  curl_easy_setopt(easy_, CURLOPT_COPYPOSTFIELDS, body.c_str());
  return perform(url);
}

const std::string& TNLRawCurl::perform(const std::string& url) {
  body_.clear();
  curl_easy_setopt(easy_, CURLOPT_URL, url.c_str());
  const CURLcode result = curl_easy_perform(easy_);
  long status = 0;
  curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &status);
  if (result != CURLE_OK || status < 200 || status > 299) {
    throw std::runtime_error("raw request to " + url + " failed: " + curl_easy_strerror(result) +
                             ", status " + std::to_string(status));
  }
  return body_;
}
