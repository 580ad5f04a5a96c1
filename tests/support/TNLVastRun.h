#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Ads/VAST/TNLVastWorkflow.h"
#include "Platform/Http/TNLHttpSession.h"

// Starts one VAST workflow and records what its callbacks deliver, in order, and on which thread.
// The record outlives the run object, so late callbacks never meet a destroyed test fixture.
class TNLVastRun {
 public:
  struct Outcome {
    bool success = false;
    std::string document;
    std::string mediaFileName;
    TNLErrorPtr error;
    bool onCallingThread = false;
    bool onSessionThread = false;

    bool succeeded() const { return success; }
    bool failedWith(const std::string& domain, long code) const {
      return !success && error && error->domain() == domain && error->code() == code;
    }
  };

  // Starts a workflow and keeps it, for looking at its fields afterwards.
  void start(const std::string& data) { workflow_ = begin(data); }
  // Starts a workflow that only its pending fetches hold, as the ad client does.
  std::weak_ptr<TNLVastWorkflow> startAndForget(const std::string& data) { return begin(data); }

  const std::shared_ptr<TNLVastWorkflow>& workflow() const { return workflow_; }

  std::vector<Outcome> outcomes() const {
    std::lock_guard lock(state_->mutex);
    return state_->outcomes;
  }
  // Waits until at least `count` callbacks arrived.
  bool wait(size_t count) const {
    std::unique_lock lock(state_->mutex);
    return state_->changed.wait_for(lock, std::chrono::seconds(10),
                                    [&] { return state_->outcomes.size() >= count; });
  }
  // Gives a duplicate callback time to arrive before the outcomes are counted.
  void settle() const { std::this_thread::sleep_for(std::chrono::milliseconds(100)); }

  // True once nothing holds the workflow any more.
  static bool released(const std::weak_ptr<TNLVastWorkflow>& workflow) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!workflow.expired() && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return workflow.expired();
  }

 private:
  std::shared_ptr<TNLVastWorkflow> begin(const std::string& data) {
    auto workflow = TNLVastWorkflow::create();
    state_->callingThread = std::this_thread::get_id();
    workflow->processXMLData(
        data,
        [state = state_](const std::string& document, const std::string& mediaFileName) {
          state->record({true, document, mediaFileName, nullptr});
        },
        [state = state_](const TNLErrorPtr& error) {
          state->record({false, "", "", error});
        });
    return workflow;
  }

  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Outcome> outcomes;
    std::thread::id callingThread;

    void record(Outcome outcome) {
      outcome.onCallingThread = std::this_thread::get_id() == callingThread;
      outcome.onSessionThread = TNLHttpSession::sharedSession()->isSessionThread();
      {
        std::lock_guard lock(mutex);
        outcomes.push_back(std::move(outcome));
      }
      changed.notify_all();
    }
  };

  std::shared_ptr<State> state_ = std::make_shared<State>();
  std::shared_ptr<TNLVastWorkflow> workflow_;
};
