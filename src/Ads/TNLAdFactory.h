#pragma once

#include <memory>
#include <string>

#include "Ads/Macros/TNLMacros.h"
#include "Platform/Foundation/TNLJSON.h"

class TNLAd;
class TNLFSAd;

// Builds ads from a demand source's JSON record or from a resolved VAST document. Stateless.
class TNLAdFactory {
 public:
  // The record's fields, and as the complete ad a copy of the record with "sdkVars" (from a
  // snapshot of the macro table) and "sdkName" added. Null when building fails.
  static std::shared_ptr<TNLAd> generateAdFromDictionary(const TNLJson& dictionary);

  // A full-screen VAST ad: the template page as creative tag, the document and media file, and
  // a complete ad holding only "sdkVars". Null when building fails.
  static std::shared_ptr<TNLFSAd> generateVASTAdFromXML(
      const std::string& xml, const std::string& mediaFileName,
      const std::optional<std::string>& templateURI);

  // Refreshes "%CONN_TYPE%" in the live table first (so the new value shows in the next ad's
  // variables, not in these), then maps each token, its "%" removed and lower-cased, to its value.
  static TNLJson parseMacroDictionaryIntoSDKVars(const TNLMacroDict& macros);
};
