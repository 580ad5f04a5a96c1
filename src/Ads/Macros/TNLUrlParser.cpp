#include "Ads/Macros/TNLUrlParser.h"

#include <chrono>
#include <cstdint>
#include <string_view>

#include "Ads/Macros/TNLDeviceInfo.h"
#include "Platform/Device/TNLCurrentDeviceFacts.h"
#include "Platform/Foundation/TNLException.h"
#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Foundation/TNLIdentifiers.h"
#include "Platform/Foundation/TNLStrings.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"

namespace {

constexpr uint32_t kRandomBound = 4294967295u;

// Besides letters and digits, what a URL query may carry (RFC 3986): the unreserved characters,
// the sub-delimiters, ":", "@", "/" and "?".
constexpr std::string_view kQueryPunctuation = "-._~!$&'()*+,;=:@/?";

}  // namespace

std::string TNLUrlParser::fillMacrosForUrl(
    const std::string& url, const std::optional<TNLMacroDict>& individualMacros) const {
  std::string text = url;
  try {
    TNLMacroDict macros = TNLMacros::sharedMacroDict();
    if (individualMacros) {
      for (const auto& [token, value] : *individualMacros) {
        macros[token] = value;
      }
    }
    for (const auto& [token, stored] : macros) {
      if (!TNLStrings::contains(text, token)) {
        continue;
      }
      std::string value;
      if (token == TNL_RAND_MACRO) {
        value = createRandString();
      } else if (token == TNL_TIMESTAMP_MACRO) {
        value = createTimeStampString();
      } else if (token == TNL_DEVICEORIENTATION_MACRO) {
        value = createOrientationString();
      } else if (token == TNL_CONNECTIONTYPE_MACRO) {
        const auto connection = TNLDeviceInfo::sharedInstance()->connectionType();
        if (!connection) {
          throw TNLException(TNLInvalidArgumentException, "The connection type has no name");
        }
        value = *connection;
      } else {
        value = stored;
      }
      text = TNLStrings::replaceAll(text, token, value);
    }
    text = percentEncodeForQuery(text);
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to format URL due to exception: %@", error);
  }
  return text;
}

std::optional<std::string> TNLUrlParser::fillMacrosForString(
    const std::optional<std::string>& text) const {
  if (!text) {
    return std::nullopt;
  }
  std::string filled = *text;
  for (const auto& [token, value] : TNLMacros::sharedMacroDict()) {
    filled = TNLStrings::replaceAll(filled, token, value);
  }
  return filled;
}

std::string TNLUrlParser::createRandString() const {
  return TNLFormat("%u", TNLIdentifiers::secureRandomUniform(kRandomBound));
}

std::string TNLUrlParser::createTimeStampString() const {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(
                           std::chrono::system_clock::now().time_since_epoch())
                           .count();
  // A 32-bit conversion: good until 2038.
  return TNLFormat("%d", static_cast<int32_t>(seconds));
}

std::string TNLUrlParser::createOrientationString() const {
  using Orientation = TNLDeviceFacts::Orientation;
  const Orientation orientation = TNLCurrentDeviceFacts()->deviceOrientation();
  return orientation == Orientation::Portrait || orientation == Orientation::PortraitUpsideDown
             ? TNL_PORTRAITORI
             : TNL_LANDSCAPEORI;
}

std::string TNLUrlParser::percentEncodeForQuery(const std::string& text) {
  return TNLStrings::percentEncode(text, kQueryPunctuation);
}
