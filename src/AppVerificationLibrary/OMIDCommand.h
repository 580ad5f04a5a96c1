#pragma once

#include <optional>
#include <string>
#include <vector>

#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "Platform/Foundation/TNLJSON.h"

// Kinds of error a session reports to its measurement scripts.
using OMIDTarnelErrorType = unsigned;
inline constexpr OMIDTarnelErrorType OMIDTarnelErrorTypeGeneric = 1;
inline constexpr OMIDTarnelErrorType OMIDTarnelErrorTypeVideo = 2;

// The statements that carry session events to the OMID service script: every command is one call
// of a method of `this.omidBridge`, guarded so that a page without the service script ignores it.
class OMIDTarnelCommand {
 public:
  // The statement that calls omidBridge.<name>(<arguments joined by ",">).
  static std::string commandWithName(const std::string& name,
                                     const std::vector<std::string>& arguments = {});
  // '<text>': a JavaScript string literal for text that needs no escaping (identifiers, words).
  static std::string stringWithQuotesFromString(const std::string& text);

  // "javascript", "native", "none"; no word for any other code.
  static std::optional<std::string> ownerString(OMIDTarnelOwner owner);
  // "video" for the video type, "generic" for every other.
  static std::string errorTypeString(OMIDTarnelErrorType type);

  // init({"impressionOwner":..,"videoEventsOwner":..,"isolateVerificationScripts":..}); an owner
  // without a word is left out.
  static std::string initCommand(const OMIDTarnelAdSessionConfiguration& configuration);
  // startSession('<id>',<context JSON>[,<verification parameters JSON>])
  static std::string startSessionCommand(const std::string& identifier, const TNLJson& context,
                                         const std::optional<TNLJson>& verificationParameters);
  static std::string finishSessionCommand();
  static std::string impressionEventCommand();
  // publishVideoEvent('<name>'[,<parameters JSON>])
  static std::string videoEventCommand(const std::string& name,
                                       const std::optional<TNLJson>& parameters);
  // error(<type word>,<message>): both inserted as they are, unquoted, as the service script has
  // always received them.
  static std::string errorCommand(OMIDTarnelErrorType type, const std::string& message);
  // setState('<state>')
  static std::string appStateCommand(const std::string& state);
  // setDeviceVolume(<volume with two decimals>)
  static std::string deviceVolumeCommand(double volume);
  // setNativeViewHierarchy(<view state JSON>)
  static std::string nativeViewHierarchyCommand(const TNLJson& viewState);
};
