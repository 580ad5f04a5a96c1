// A VAST chain of five wrappers and an inline ad, fetched from the nginx that scripts/bench.sh
// starts: the VAST workflow against the same fetches by hand (raw libcurl on one reused handle)
// with each document parsed by libxml2 and its wrapper's target read from the tree. The XML
// layer alone is compared with libxml2 alone on the same six documents.

#include <benchmark/benchmark.h>

#include <libxml/parser.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Ads/VAST/TNLVastWorkflow.h"
#include "Ads/VAST/XMLSupport/TNL_XMLDocument.h"
#include "Platform/Foundation/TNLStrings.h"
#include "TNLBenchRatios.h"
#include "TNLBenchServer.h"
#include "TNLBenchSignal.h"
#include "TNLRawCurl.h"

namespace {

std::string readSample(const std::string& path) {
  std::ifstream file(std::string(TNL_VAST_SAMPLES_DIR) + "/" + path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// Five copies of the published 3.0 wrapper, each pointing at the next on the server, and the 3.0
// inline ad it wraps. documents[0] is the response that starts the chain.
struct Chain {
  std::vector<std::string> documents;

  Chain() {
    const auto& server = TNLBenchServer::shared();
    const std::string wrapper = readSample("vast-3.0/Wrapper_Tag-test.xml");
    const std::string target =
        "https://raw.githubusercontent.com/InteractiveAdvertisingBureau/VAST_Samples/master/"
        "VAST%203.0%20Samples/Inline_Companion_Tag-test.xml";
    for (int i = 1; i <= 5; ++i) {
      documents.push_back(TNLStrings::replaceAll(
          wrapper, target, server.url("/vast/" + std::to_string(i) + ".xml")));
    }
    documents.push_back(readSample("vast-3.0/Inline_Companion_Tag-test.xml"));
    for (size_t i = 1; i < documents.size(); ++i) {
      server.publish("/vast/" + std::to_string(i) + ".xml", documents[i]);
    }
  }
};

Chain& chain() {
  static Chain instance;
  return instance;
}

// The text of the first element of that name, depth first.
std::string elementText(xmlNode* node, const char* name) {
  for (; node != nullptr; node = node->next) {
    if (node->type == XML_ELEMENT_NODE && xmlStrcmp(node->name, BAD_CAST name) == 0) {
      xmlChar* content = xmlNodeGetContent(node);
      std::string text = content != nullptr ? reinterpret_cast<const char*>(content) : "";
      xmlFree(content);
      return text;
    }
    if (std::string text = elementText(node->children, name); !text.empty()) {
      return text;
    }
  }
  return "";
}

void BM_VastWorkflowFiveWrappers(benchmark::State& state) {
  const Chain& documents = chain();
  for (auto _ : state) {
    const auto signal = std::make_shared<TNLBenchSignal>();
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
BENCHMARK(BM_VastWorkflowFiveWrappers)->UseRealTime()->MeasureProcessCPUTime();

void BM_RawCurlLibxml2FiveWrappers(benchmark::State& state) {
  const Chain& documents = chain();
  TNLRawCurl curl;
  for (auto _ : state) {
    std::string text = documents.documents[0];
    while (true) {
      xmlDocPtr doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                                    XML_PARSE_NOCDATA | XML_PARSE_NOBLANKS | XML_PARSE_NONET);
      const std::string next = TNLStrings::trimWhitespaceAndNewlines(
          elementText(xmlDocGetRootElement(doc), "VASTAdTagURI"));
      xmlFreeDoc(doc);
      if (next.empty()) {
        break;
      }
      text = curl.get(next);
    }
  }
}
BENCHMARK(BM_RawCurlLibxml2FiveWrappers)->UseRealTime()->MeasureProcessCPUTime();

void BM_XMLLayerParseSixDocuments(benchmark::State& state) {
  const Chain& documents = chain();
  for (auto _ : state) {
    for (const auto& text : documents.documents) {
      benchmark::DoNotOptimize(TNL_XMLDocument::createWithData(text, 0, nullptr));
    }
  }
}
BENCHMARK(BM_XMLLayerParseSixDocuments)->UseRealTime()->MeasureProcessCPUTime();

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
BENCHMARK(BM_Libxml2ParseSixDocuments)->UseRealTime()->MeasureProcessCPUTime();

const bool kRatiosRegistered =
    TNLBenchCompare("BM_VastWorkflowFiveWrappers", "BM_RawCurlLibxml2FiveWrappers") &&
    TNLBenchCompare("BM_XMLLayerParseSixDocuments", "BM_Libxml2ParseSixDocuments");

}  // namespace
