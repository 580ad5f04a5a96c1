#include "Platform/Http/TNLHttpSession.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <deque>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include <curl/curl.h>

#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Foundation/TNLPlatformLog.h"

namespace {

std::mutex& overrideMutex() {
  static TNLNoDestructor<std::mutex> mutex;
  return *mutex;
}

std::optional<std::chrono::milliseconds>& timeoutOverride() {
  static TNLNoDestructor<std::optional<std::chrono::milliseconds>> value;
  return *value;
}

std::chrono::milliseconds effectiveTimeout(std::chrono::milliseconds configured) {
  std::lock_guard lock(overrideMutex());
  return timeoutOverride().value_or(configured);
}

struct URLErrorText {
  long code;
  const char* text;
};

TNLErrorPtr makeURLError(long code, const std::optional<std::string>& url,
                         const std::string& detail) {
  static const URLErrorText kTexts[] = {
      {TNLURLError::BadURL, "unsupported URL"},
      {TNLURLError::TimedOut, "The request timed out."},
      {TNLURLError::UnsupportedURL, "unsupported URL"},
      {TNLURLError::CannotFindHost, "A server with the specified hostname could not be found."},
      {TNLURLError::CannotConnectToHost, "Could not connect to the server."},
      {TNLURLError::NetworkConnectionLost, "The network connection was lost."},
      {TNLURLError::HTTPTooManyRedirects, "too many HTTP redirects"},
      {TNLURLError::ResourceUnavailable, "resource unavailable"},
      {TNLURLError::NotConnectedToInternet, "The Internet connection appears to be offline."},
      {TNLURLError::SecureConnectionFailed,
       "An SSL error has occurred and a secure connection to the server cannot be made."},
      {TNLURLError::ServerCertificateUntrusted, "The certificate for this server is invalid."},
  };
  std::string text = "An unknown error occurred.";
  for (const auto& entry : kTexts) {
    if (entry.code == code) {
      text = entry.text;
    }
  }
  TNLJson info = TNLJson::object();
  info[kTNLLocalizedDescriptionKey] = text;
  if (url) {
    info[kTNLErrorFailingURLStringKey] = *url;
  }
  if (!detail.empty()) {
    info["_kCFStreamErrorDescriptionKey"] = detail;
  }
  return TNLError::make(TNLURLErrorDomain, code, std::move(info));
}

long urlErrorCodeFor(CURLcode result, long osErrno) {
  switch (result) {
    case CURLE_UNSUPPORTED_PROTOCOL:
      return TNLURLError::UnsupportedURL;
    case CURLE_URL_MALFORMAT:
      return TNLURLError::BadURL;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return TNLURLError::CannotFindHost;
    case CURLE_COULDNT_CONNECT:
      return (osErrno == ENETUNREACH || osErrno == ENETDOWN) ? TNLURLError::NotConnectedToInternet
                                                             : TNLURLError::CannotConnectToHost;
    case CURLE_OPERATION_TIMEDOUT:
      return TNLURLError::TimedOut;
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_PARTIAL_FILE:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
      return TNLURLError::NetworkConnectionLost;
    case CURLE_TOO_MANY_REDIRECTS:
      return TNLURLError::HTTPTooManyRedirects;
    case CURLE_REMOTE_FILE_NOT_FOUND:
    case CURLE_REMOTE_ACCESS_DENIED:
      return TNLURLError::ResourceUnavailable;
    case CURLE_PEER_FAILED_VERIFICATION:
      return TNLURLError::ServerCertificateUntrusted;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_SHUTDOWN_FAILED:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_USE_SSL_FAILED:
      return TNLURLError::SecureConnectionFailed;
    default:
      return TNLURLError::Unknown;
  }
}

size_t appendBody(char* data, size_t size, size_t count, void* userData) {
  static_cast<std::string*>(userData)->append(data, size * count);
  return size * count;
}

struct Transfer {
  TNLURLRequest request;
  TNLHttpSession::Completion completion;
  CURL* easy = nullptr;
  curl_slist* headers = nullptr;
  std::string body;
  char errorBuffer[CURL_ERROR_SIZE] = {};

  ~Transfer() {
    if (easy != nullptr) {
      curl_easy_cleanup(easy);
    }
    curl_slist_free_all(headers);
  }
};

// The part of a session that its thread uses; kept alive by the thread itself so that dropping
// the last session reference from a completion is safe.
class Engine {
 public:
  explicit Engine(TNLHttpSession::Configuration configuration)
      : configuration_(std::move(configuration)), multi_(curl_multi_init()) {}

  ~Engine() {
    for (auto& [easy, transfer] : active_) {
      curl_multi_remove_handle(multi_, easy);
    }
    active_.clear();
    curl_multi_cleanup(multi_);
  }

  void enqueue(std::unique_ptr<Transfer> transfer) {
    {
      std::lock_guard lock(mutex_);
      if (stopping_) {
        return;
      }
      pending_.push_back(std::move(transfer));
    }
    curl_multi_wakeup(multi_);
  }

  void stop() {
    {
      std::lock_guard lock(mutex_);
      stopping_ = true;
    }
    curl_multi_wakeup(multi_);
  }

  void run() {
    while (true) {
      std::deque<std::unique_ptr<Transfer>> starting;
      {
        std::lock_guard lock(mutex_);
        if (stopping_) {
          return;
        }
        starting.swap(pending_);
      }
      for (auto& transfer : starting) {
        start(std::move(transfer));
      }
      int running = 0;
      curl_multi_perform(multi_, &running);
      int queued = 0;
      while (CURLMsg* message = curl_multi_info_read(multi_, &queued)) {
        if (message->msg == CURLMSG_DONE) {
          finish(message->easy_handle, message->data.result);
        }
        if (isStopping()) {
          return;
        }
      }
      curl_multi_poll(multi_, nullptr, 0, 1000, nullptr);
    }
  }

 private:
  bool isStopping() {
    std::lock_guard lock(mutex_);
    return stopping_;
  }

  void start(std::unique_ptr<Transfer> transfer) {
    if (!transfer->request.url) {
      complete(*transfer, {"", 0, makeURLError(TNLURLError::BadURL, std::nullopt, "")});
      return;
    }
    CURL* easy = curl_easy_init();
    transfer->easy = easy;
    const auto timeout = effectiveTimeout(configuration_.timeout);
    const auto& request = transfer->request;
    curl_easy_setopt(easy, CURLOPT_URL, request.url->c_str());
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(easy, CURLOPT_MAXREDIRS, configuration_.maxRedirects);
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(timeout.count()));
    curl_easy_setopt(easy, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(easy, CURLOPT_LOW_SPEED_TIME,
                     std::max(1L, static_cast<long>((timeout.count() + 999) / 1000)));
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, appendBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &transfer->body);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, transfer->errorBuffer);
    curl_easy_setopt(easy, CURLOPT_PRIVATE, transfer.get());

    // curl's own content type and expectation headers are not part of the request.
    transfer->headers = curl_slist_append(transfer->headers, "Content-Type:");
    transfer->headers = curl_slist_append(transfer->headers, "Expect:");
    if (configuration_.reloadIgnoringCache) {
      transfer->headers = curl_slist_append(transfer->headers, "Cache-Control: no-cache");
      transfer->headers = curl_slist_append(transfer->headers, "Pragma: no-cache");
    }
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, transfer->headers);

    if (request.method == "GET") {
      curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
    } else if (request.method == "HEAD") {
      curl_easy_setopt(easy, CURLOPT_NOBODY, 1L);
    } else {
      if (request.method != "POST") {
        curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, request.method.c_str());
      }
      if (request.body) {
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE,
                         static_cast<curl_off_t>(request.body->size()));
        curl_easy_setopt(easy, CURLOPT_COPYPOSTFIELDS, request.body->data());
      } else if (request.method == "POST") {
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(0));
        curl_easy_setopt(easy, CURLOPT_COPYPOSTFIELDS, "");
      }
    }

    if (curl_multi_add_handle(multi_, easy) != CURLM_OK) {
      complete(*transfer,
               {"", 0, makeURLError(TNLURLError::Unknown, request.url, "cannot start transfer")});
      return;
    }
    active_.emplace(easy, std::move(transfer));
  }

  void finish(CURL* easy, CURLcode result) {
    curl_multi_remove_handle(multi_, easy);
    const auto it = active_.find(easy);
    if (it == active_.end()) {
      return;
    }
    std::unique_ptr<Transfer> transfer = std::move(it->second);
    active_.erase(it);

    TNLHttpSession::Response response;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &response.statusCode);
    if (result == CURLE_OK) {
      response.body = std::move(transfer->body);
    } else {
      long osErrno = 0;
      curl_easy_getinfo(easy, CURLINFO_OS_ERRNO, &osErrno);
      const std::string detail =
          transfer->errorBuffer[0] != '\0' ? transfer->errorBuffer : curl_easy_strerror(result);
      response.error =
          makeURLError(urlErrorCodeFor(result, osErrno), transfer->request.url, detail);
      response.statusCode = 0;
    }
    complete(*transfer, response);
  }

  static void complete(Transfer& transfer, const TNLHttpSession::Response& response) {
    if (!transfer.completion) {
      return;
    }
    try {
      transfer.completion(response);
    } catch (const std::exception& e) {
      TNLPlatformLog(std::string("HTTP completion raised an exception: ") + e.what());
    } catch (...) {
      TNLPlatformLog("HTTP completion raised an unknown exception");
    }
  }

  TNLHttpSession::Configuration configuration_;
  CURLM* multi_;
  std::mutex mutex_;
  std::deque<std::unique_ptr<Transfer>> pending_;
  bool stopping_ = false;
  std::map<CURL*, std::unique_ptr<Transfer>> active_;
};

class CurlSession;

// Every live session, so that one exit handler can stop their threads before the process's
// libraries are torn down.
struct SessionRegistry {
  std::mutex mutex;
  std::vector<std::weak_ptr<CurlSession>> sessions;
};

SessionRegistry& registry() {
  static TNLNoDestructor<SessionRegistry> instance;
  return *instance;
}

class CurlSession : public TNLHttpSession {
 public:
  explicit CurlSession(Configuration configuration)
      : engine_(std::make_shared<Engine>(std::move(configuration))) {
    auto engine = engine_;
    thread_ = std::thread([engine] { engine->run(); });
    threadId_ = thread_.get_id();
  }

  ~CurlSession() override { shutdown(); }

  void shutdown() {
    std::lock_guard lock(shutdownMutex_);
    if (!thread_.joinable()) {
      return;
    }
    engine_->stop();
    if (std::this_thread::get_id() == threadId_) {
      thread_.detach();
    } else {
      thread_.join();
    }
  }

  void dataTask(const TNLURLRequest& request, Completion completion) override {
    auto transfer = std::make_unique<Transfer>();
    transfer->request = request;
    transfer->completion = std::move(completion);
    engine_->enqueue(std::move(transfer));
  }

  bool isSessionThread() const override { return std::this_thread::get_id() == threadId_; }

 private:
  std::shared_ptr<Engine> engine_;
  std::mutex shutdownMutex_;
  std::thread thread_;
  std::thread::id threadId_;
};

void stopAllSessions() {
  std::vector<std::shared_ptr<CurlSession>> live;
  {
    std::lock_guard lock(registry().mutex);
    for (const auto& weak : registry().sessions) {
      if (auto session = weak.lock()) {
        live.push_back(std::move(session));
      }
    }
  }
  for (const auto& session : live) {
    session->shutdown();
  }
}

void initialiseCurlOnce() {
  static std::once_flag once;
  std::call_once(once, [] {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    std::atexit(stopAllSessions);
  });
}

}  // namespace

std::shared_ptr<TNLHttpSession> TNLHttpSession::create(Configuration configuration) {
  initialiseCurlOnce();
  auto session = std::make_shared<CurlSession>(std::move(configuration));
  std::lock_guard lock(registry().mutex);
  std::erase_if(registry().sessions, [](const auto& weak) { return weak.expired(); });
  registry().sessions.push_back(session);
  return session;
}

std::shared_ptr<TNLHttpSession> TNLHttpSession::sharedSession() {
  static const TNLNoDestructor<std::shared_ptr<TNLHttpSession>> session(create(Configuration{}));
  return *session;
}

void TNLHttpSession::setTimeoutOverrideForTesting(
    std::optional<std::chrono::milliseconds> timeout) {
  std::lock_guard lock(overrideMutex());
  timeoutOverride() = timeout;
}
