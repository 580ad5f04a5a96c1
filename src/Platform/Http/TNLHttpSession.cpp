#include "Platform/Http/TNLHttpSession.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <condition_variable>
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

struct LimitsStore {
  std::mutex mutex;
  TNLNetworkLimits limits;
};

LimitsStore& limitsStore() {
  static TNLNoDestructor<LimitsStore> store;
  return *store;
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
      {TNLURLError::DataLengthExceedsMaximum, "resource exceeds maximum size"},
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
    case CURLE_FILESIZE_EXCEEDED:
      return TNLURLError::DataLengthExceedsMaximum;
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

struct Transfer {
  TNLURLRequest request;
  TNLHttpSession::Completion completion;
  TNLHttpSession::AtShutdown atShutdown = TNLHttpSession::AtShutdown::abandon;
  TNLNetworkLimits limits;
  CURL* easy = nullptr;  // borrowed from the engine's pool while the transfer runs
  curl_slist* headers = nullptr;
  std::string body;
  std::string limitExceeded;
  char errorBuffer[CURL_ERROR_SIZE] = {};
  // Bytes moved either way, and when that count last changed (unset until the transfer runs:
  // waiting for a free connection is not a stall).
  curl_off_t moved = -1;
  std::chrono::steady_clock::time_point lastMoved;

  ~Transfer() { curl_slist_free_all(headers); }
  bool delivers() const { return atShutdown == TNLHttpSession::AtShutdown::deliver; }
};

// Bodies grow only up to the limit: whatever a server sends beyond it, compressed or not, ends
// the transfer before it costs memory.
size_t appendBody(char* data, size_t size, size_t count, void* userData) {
  auto* transfer = static_cast<Transfer*>(userData);
  const size_t length = size * count;
  if (length > transfer->limits.maxResponseBytes - transfer->body.size()) {
    transfer->limitExceeded =
        "the response body passed " + std::to_string(transfer->limits.maxResponseBytes) + " bytes";
    return CURL_WRITEFUNC_ERROR;
  }
  transfer->body.append(data, length);
  return length;
}

// curl's own low-speed check averages over whole seconds; this ends a transfer once no byte has
// moved for the stall time-out, to the millisecond the progress calls allow (at least one a
// second while idle).
int checkStall(void* userData, curl_off_t, curl_off_t downloaded, curl_off_t, curl_off_t uploaded) {
  auto* transfer = static_cast<Transfer*>(userData);
  const auto now = std::chrono::steady_clock::now();
  if (downloaded + uploaded != transfer->moved) {
    transfer->moved = downloaded + uploaded;
    transfer->lastMoved = now;
    return 0;
  }
  if (now - transfer->lastMoved < transfer->limits.stallTimeout) {
    return 0;
  }
  transfer->limitExceeded =
      "no data for " + std::to_string(transfer->limits.stallTimeout.count()) + " ms";
  return 1;
}

// Which of curl's own waits ran out, for the log.
std::string timeoutReason(CURL* easy, const TNLNetworkLimits& limits) {
  curl_off_t connected = 0;
  curl_easy_getinfo(easy, CURLINFO_CONNECT_TIME_T, &connected);
  if (connected == 0) {
    return "no connection within " + std::to_string(limits.connectTimeout.count()) + " ms";
  }
  return "not complete within " + std::to_string(limits.totalTimeout.count()) + " ms";
}

// The part of a session that its thread uses; kept alive by the thread itself so that dropping
// the last session reference from a completion is safe.
class Engine {
 public:
  explicit Engine(TNLHttpSession::Configuration configuration)
      : configuration_(std::move(configuration)), multi_(curl_multi_init()) {}

  ~Engine() {
    for (auto& [easy, transfer] : active_) {
      curl_multi_remove_handle(multi_, easy);
      curl_easy_cleanup(easy);
    }
    active_.clear();
    for (CURL* easy : pool_) {
      curl_easy_cleanup(easy);
    }
    curl_multi_cleanup(multi_);
  }

  void enqueue(std::unique_ptr<Transfer> transfer) {
    {
      std::lock_guard lock(mutex_);
      if (stopping_ || (draining_ && !transfer->delivers())) {
        return;
      }
      deliveries_ += transfer->delivers() ? 1 : 0;
      pending_.push_back(std::move(transfer));
    }
    // The session thread itself (a completion starting the next request) looks at the queue
    // before it waits again; only other threads need to wake it.
    if (std::this_thread::get_id() != threadId_) {
      curl_multi_wakeup(multi_);
    }
  }

  // From now on only deliveries run; content transfers and their completions are abandoned.
  void beginDrain() {
    {
      std::lock_guard lock(mutex_);
      draining_ = true;
    }
    curl_multi_wakeup(multi_);
  }

  // True once no delivery is left and no completion runs, false when `deadline` came first.
  bool waitDrained(std::chrono::steady_clock::time_point deadline) {
    std::unique_lock lock(mutex_);
    return drained_.wait_until(lock, deadline, [&] { return deliveries_ == 0 && !inCompletion_; });
  }

  bool isInCompletion() {
    std::lock_guard lock(mutex_);
    return inCompletion_;
  }

  void stop() {
    {
      std::lock_guard lock(mutex_);
      stopping_ = true;
    }
    curl_multi_wakeup(multi_);
  }

  void run() {
    threadId_ = std::this_thread::get_id();
    bool abandoned = false;
    while (true) {
      std::deque<std::unique_ptr<Transfer>> starting;
      bool draining = false;
      {
        std::lock_guard lock(mutex_);
        if (stopping_) {
          return;
        }
        starting.swap(pending_);
        draining = draining_;
      }
      if (draining && !abandoned) {
        abandonContentTransfers();
        abandoned = true;
      }
      for (auto& transfer : starting) {
        if (!draining || transfer->delivers()) {
          start(std::move(transfer));
        }
      }
      int running = 0;
      curl_multi_perform(multi_, &running);
      int queued = 0;
      while (CURLMsg* message = curl_multi_info_read(multi_, &queued)) {
        if (message->msg == CURLMSG_DONE) {
          finish(message->easy_handle, message->data.result);
        }
      }
      bool workQueued = false;
      {
        std::lock_guard lock(mutex_);
        workQueued = !pending_.empty() || stopping_;
      }
      curl_multi_poll(multi_, nullptr, 0, workQueued ? 0 : 1000, nullptr);
    }
  }

 private:
  void abandonContentTransfers() {
    for (auto it = active_.begin(); it != active_.end();) {
      if (it->second->delivers()) {
        ++it;
        continue;
      }
      release(it->first);
      it = active_.erase(it);
    }
  }

  CURL* acquireHandle() {
    if (pool_.empty()) {
      return curl_easy_init();
    }
    CURL* easy = pool_.back();
    pool_.pop_back();
    return easy;
  }

  // Handles go back to a small pool: a reset handle keeps its resolver and TLS caches, which a
  // new one would build again.
  void release(CURL* easy) {
    curl_multi_remove_handle(multi_, easy);
    if (pool_.size() < kPoolSize) {
      curl_easy_reset(easy);
      pool_.push_back(easy);
    } else {
      curl_easy_cleanup(easy);
    }
  }

  void start(std::unique_ptr<Transfer> transfer) {
    if (!transfer->request.url) {
      complete(*transfer, {"", 0, makeURLError(TNLURLError::BadURL, std::nullopt, ""), ""});
      return;
    }
    const TNLNetworkLimits& limits = transfer->limits;
    if (limits.maxConnectionsPerHost != connectionsPerHost_) {
      connectionsPerHost_ = limits.maxConnectionsPerHost;
      curl_multi_setopt(multi_, CURLMOPT_MAX_HOST_CONNECTIONS, connectionsPerHost_);
    }
    CURL* easy = acquireHandle();
    transfer->easy = easy;
    const auto& request = transfer->request;
    curl_easy_setopt(easy, CURLOPT_URL, request.url->c_str());
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(easy, CURLOPT_MAXREDIRS, limits.maxRedirects);
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS,
                     static_cast<long>(limits.connectTimeout.count()));
    curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(limits.totalTimeout.count()));
    // A low-speed check that never fires first keeps curl waking an idle transfer every second,
    // so that the progress call below runs.
    curl_easy_setopt(easy, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(easy, CURLOPT_LOW_SPEED_TIME,
                     static_cast<long>(limits.totalTimeout.count() / 1000 + 2));
    curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, checkStall);
    curl_easy_setopt(easy, CURLOPT_XFERINFODATA, transfer.get());
    curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE,
                     static_cast<curl_off_t>(limits.maxResponseBytes));
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, appendBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, transfer.get());
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, transfer->errorBuffer);

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
      const std::string& body = request.body ? *request.body : std::string();
      curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
      curl_easy_setopt(easy, CURLOPT_COPYPOSTFIELDS, body.data());
    }

    if (curl_multi_add_handle(multi_, easy) != CURLM_OK) {
      release(easy);
      complete(
          *transfer,
          {"", 0, makeURLError(TNLURLError::Unknown, request.url, "cannot start transfer"), ""});
      return;
    }
    active_.emplace(easy, std::move(transfer));
  }

  void finish(CURL* easy, CURLcode result) {
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
      long code = urlErrorCodeFor(result, osErrno);
      if (result == CURLE_ABORTED_BY_CALLBACK) {
        code = TNLURLError::TimedOut;
      } else if (result == CURLE_WRITE_ERROR || result == CURLE_FILESIZE_EXCEEDED) {
        code = TNLURLError::DataLengthExceedsMaximum;
        transfer->limitExceeded = "the response body passed " +
                                  std::to_string(transfer->limits.maxResponseBytes) + " bytes";
      } else if (result == CURLE_OPERATION_TIMEDOUT) {
        transfer->limitExceeded = timeoutReason(easy, transfer->limits);
      } else if (result == CURLE_TOO_MANY_REDIRECTS) {
        transfer->limitExceeded =
            "more than " + std::to_string(transfer->limits.maxRedirects) + " redirects";
      }
      const std::string detail =
          transfer->errorBuffer[0] != '\0' ? transfer->errorBuffer : curl_easy_strerror(result);
      response.error = makeURLError(code, transfer->request.url, detail);
      response.statusCode = 0;
      response.limitExceeded = std::move(transfer->limitExceeded);
    }
    release(easy);
    complete(*transfer, response);
  }

  void complete(Transfer& transfer, const TNLHttpSession::Response& response) {
    bool run = false;
    {
      std::lock_guard lock(mutex_);
      run = transfer.completion && !stopping_ && (!draining_ || transfer.delivers());
      inCompletion_ = run;
    }
    if (run) {
      try {
        transfer.completion(response);
      } catch (const std::exception& e) {
        TNLPlatformLog(std::string("HTTP completion raised an exception: ") + e.what());
      } catch (...) {
        TNLPlatformLog("HTTP completion raised an unknown exception");
      }
    }
    {
      std::lock_guard lock(mutex_);
      inCompletion_ = false;
      deliveries_ -= transfer.delivers() ? 1 : 0;
    }
    drained_.notify_all();
  }

  static constexpr size_t kPoolSize = 16;

  TNLHttpSession::Configuration configuration_;
  CURLM* multi_;
  std::atomic<std::thread::id> threadId_;
  std::mutex mutex_;
  std::condition_variable drained_;
  std::deque<std::unique_ptr<Transfer>> pending_;
  size_t deliveries_ = 0;  // deliveries enqueued and not yet completed
  bool inCompletion_ = false;
  bool draining_ = false;
  bool stopping_ = false;
  // Session thread only.
  std::map<CURL*, std::unique_ptr<Transfer>> active_;
  std::vector<CURL*> pool_;
  long connectionsPerHost_ = 0;
};

class CurlSession;

// Every live session, so that shutting down reaches them all.
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

  ~CurlSession() override {
    std::lock_guard lock(shutdownMutex_);
    stopThread();
  }

  void beginDrain() { engine_->beginDrain(); }

  // After the drain (or its deadline) the thread stops; one stuck in a completion that the host
  // never returns from is left behind rather than waited for.
  void finishShutdown(std::chrono::steady_clock::time_point deadline) {
    std::lock_guard lock(shutdownMutex_);
    if (!thread_.joinable()) {
      return;
    }
    if (!isSessionThread()) {
      engine_->waitDrained(deadline);
    }
    if (engine_->isInCompletion() && !isSessionThread()) {
      engine_->stop();
      thread_.detach();
      return;
    }
    stopThread();
  }

  void dataTask(const TNLURLRequest& request, Completion completion,
                AtShutdown atShutdown) override {
    auto transfer = std::make_unique<Transfer>();
    transfer->request = request;
    transfer->completion = std::move(completion);
    transfer->atShutdown = atShutdown;
    transfer->limits = TNLHttpSession::limits();
    engine_->enqueue(std::move(transfer));
  }

  bool isSessionThread() const override { return std::this_thread::get_id() == threadId_; }

 private:
  void stopThread() {
    if (!thread_.joinable()) {
      return;
    }
    engine_->stop();
    if (isSessionThread()) {
      thread_.detach();
    } else {
      thread_.join();
    }
  }

  std::shared_ptr<Engine> engine_;
  std::mutex shutdownMutex_;
  std::thread thread_;
  std::thread::id threadId_;
};

std::vector<std::shared_ptr<CurlSession>> liveSessions() {
  std::vector<std::shared_ptr<CurlSession>> live;
  std::lock_guard lock(registry().mutex);
  for (const auto& weak : registry().sessions) {
    if (auto session = weak.lock()) {
      live.push_back(std::move(session));
    }
  }
  return live;
}

void shutdownAtExit() {
  TNLHttpSession::shutdownAll(TNLHttpSession::limits().shutdownWait);
}

void initialiseCurlOnce() {
  static std::once_flag once;
  std::call_once(once, [] {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    // A host that returns from main still delivers its last trackers.
    std::atexit(shutdownAtExit);
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

namespace {

std::shared_ptr<TNLHttpSession>& replacementSession() {
  static TNLNoDestructor<std::shared_ptr<TNLHttpSession>> session;
  return *session;
}

}  // namespace

std::shared_ptr<TNLHttpSession> TNLHttpSession::sharedSession() {
  if (const auto& replacement = replacementSession()) {
    return replacement;
  }
  static const TNLNoDestructor<std::shared_ptr<TNLHttpSession>> session(create(Configuration{}));
  return *session;
}

void TNLHttpSession::replaceSharedSession(std::shared_ptr<TNLHttpSession> session) {
  replacementSession() = std::move(session);
}

void TNLHttpSession::setLimits(const TNLNetworkLimits& limits) {
  std::lock_guard lock(limitsStore().mutex);
  limitsStore().limits = limits;
}

TNLNetworkLimits TNLHttpSession::limits() {
  std::lock_guard lock(limitsStore().mutex);
  return limitsStore().limits;
}

void TNLHttpSession::shutdownAll(std::chrono::milliseconds maxWait) {
  const auto deadline = std::chrono::steady_clock::now() + maxWait;
  const auto sessions = liveSessions();
  for (const auto& session : sessions) {
    session->beginDrain();
  }
  for (const auto& session : sessions) {
    session->finishShutdown(deadline);
  }
}
