#include <benchmark/benchmark.h>

#include <libxml/parser.h>

#include <condition_variable>
#include <fstream>
#include <mutex>
#include <sstream>

#include "Ads/VAST/TNLVastWorkflow.h"
#include "Ads/VAST/XMLSupport/TNL_XMLDocument.h"
#include "Platform/Foundation/TNLStrings.h"
#include "TNLBenchRatios.h"
#include "TNLNetworkClient.h"
#include "TarnelAd/TNLConstants.h"
#include "support/TNLTestServer.h"

namespace {

std::string readSample(const std::string& path) {
  std::ifstream file(std::string(TNL_VAST_SAMPLES_DIR) + "/" + path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// Five copies of the published 3.0 wrapper, each pointing at the next on a loopback server, and
// the 3.0 inline ad it wraps. documents[0] is the response that starts the chain.
struct Chain {
  TNLTestServer server;
  std::vector<std::string> documents;

  Chain() {
    const std::string wrapper = readSample("vast-3.0/Wrapper_Tag-test.xml");
    const std::string target =
        "https://raw.githubusercontent.com/InteractiveAdvertisingBureau/VAST_Samples/master/"
        "VAST%203.0%20Samples/Inline_Companion_Tag-test.xml";
    for (int i = 1; i <= 5; ++i) {
      documents.push_back(
          TNLStrings::replaceAll(wrapper, target, server.url("/" + std::to_string(i))));
    }
    documents.push_back(readSample("vast-3.0/Inline_Companion_Tag-test.xml"));
    for (size_t i = 1; i < documents.size(); ++i) {
      server.on("GET", "/" + std::to_string(i), TNLTestServer::Response::xml(documents[i]));
    }
  }
};

Chain& chain() {
  static Chain instance;
  return instance;
}

// The first callback of one run; shared with the callbacks, which may run after the waiter left.
struct Signal {
  std::mutex mutex;
  std::condition_variable changed;
  bool done = false;
  bool succeeded = false;

  void set(bool success) {
    std::lock_guard lock(mutex);
    if (!done) {
      done = true;
      succeeded = success;
    }
    changed.notify_all();
  }
  bool wait() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return done; });
    return succeeded;
  }
};

void BM_VastWorkflowFiveWrappersOverLoopback(benchmark::State& state) {
  const Chain& documents = chain();
  for (auto _ : state) {
    const auto signal = std::make_shared<Signal>();
    TNLVastWorkflow::create()->processXMLData(
        documents.documents[0],
        [signal](const std::string&, const std::string&) { signal->set(true); },
        [signal](const TNLErrorPtr&) { signal->set(false); });
    if (!signal->wait()) {
      state.SkipWithError("the chain failed");
      break;
    }
  }
}
BENCHMARK(BM_VastWorkflowFiveWrappersOverLoopback)->UseRealTime();

// The same five fetches without the workflow: what the loopback round trips alone cost.
void BM_FiveLoopbackFetches(benchmark::State& state) {
  const Chain& documents = chain();
  for (auto _ : state) {
    for (int i = 1; i <= 5; ++i) {
      const auto signal = std::make_shared<Signal>();
      TNLNetworkClient::makeURLRequestWithURL(
          documents.server.url("/" + std::to_string(i)), GET_METHOD,
          [signal](const std::string&) { signal->set(true); },
          [signal](const TNLErrorPtr&) { signal->set(false); });
      if (!signal->wait()) {
        state.SkipWithError("a fetch failed");
        return;
      }
    }
  }
}
BENCHMARK(BM_FiveLoopbackFetches)->UseRealTime();

void BM_XMLLayerParseSixDocuments(benchmark::State& state) {
  const Chain& documents = chain();
  for (auto _ : state) {
    for (const auto& text : documents.documents) {
      benchmark::DoNotOptimize(TNL_XMLDocument::createWithData(text, 0, nullptr));
    }
  }
}
BENCHMARK(BM_XMLLayerParseSixDocuments)->UseRealTime();

void BM_Libxml2ParseSixDocuments(benchmark::State& state) {
  const Chain& documents = chain();
  for (auto _ : state) {
    for (const auto& text : documents.documents) {
      xmlDocPtr doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                                    XML_PARSE_NOCDATA | XML_PARSE_NOBLANKS);
      benchmark::DoNotOptimize(doc);
      xmlFreeDoc(doc);
    }
  }
}
BENCHMARK(BM_Libxml2ParseSixDocuments)->UseRealTime();

const bool kRatiosRegistered =
    TNLBenchCompare("BM_VastWorkflowFiveWrappersOverLoopback", "BM_Libxml2ParseSixDocuments") &&
    TNLBenchCompare("BM_FiveLoopbackFetches", "BM_Libxml2ParseSixDocuments") &&
    TNLBenchCompare("BM_XMLLayerParseSixDocuments", "BM_Libxml2ParseSixDocuments");

}  // namespace
