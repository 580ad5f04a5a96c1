#include "AppVerificationLibrary/OMIDCommand.h"

#include "AppVerificationLibrary/OMIDDictionaryUtil.h"
#include "Platform/Foundation/TNLFormat.h"

namespace {

constexpr char kCommandTemplate[] =
    "(function(){if(this.omidBridge!==undefined){this.omidBridge.%@(%@)}})()";

}  // namespace

std::string OMIDTarnelCommand::commandWithName(const std::string& name,
                                               const std::vector<std::string>& arguments) {
  std::string joined;
  for (size_t i = 0; i < arguments.size(); ++i) {
    if (i > 0) {
      joined += ",";
    }
    joined += arguments[i];
  }
  return TNLFormat(kCommandTemplate, name, joined);
}

std::string OMIDTarnelCommand::stringWithQuotesFromString(const std::string& text) {
  return TNLFormat("'%@'", text);
}

std::optional<std::string> OMIDTarnelCommand::ownerString(OMIDTarnelOwner owner) {
  switch (owner) {
    case OMIDTarnelJavaScriptOwner:
      return "javascript";
    case OMIDTarnelNativeOwner:
      return "native";
    case OMIDTarnelNoneOwner:
      return "none";
    default:
      return std::nullopt;
  }
}

std::string OMIDTarnelCommand::errorTypeString(OMIDTarnelErrorType type) {
  return type == OMIDTarnelErrorTypeVideo ? "video" : "generic";
}

std::string OMIDTarnelCommand::initCommand(const OMIDTarnelAdSessionConfiguration& configuration) {
  TNLJson json = TNLJson::object();
  if (const auto owner = ownerString(configuration.impressionOwner())) {
    json["impressionOwner"] = *owner;
  }
  if (const auto owner = ownerString(configuration.videoEventsOwner())) {
    json["videoEventsOwner"] = *owner;
  }
  json["isolateVerificationScripts"] = configuration.isolateVerificationScripts();
  return commandWithName("init", {OMIDTarnelDictionaryUtil::stringFromJSON(json)});
}

std::string OMIDTarnelCommand::startSessionCommand(
    const std::string& identifier, const TNLJson& context,
    const std::optional<TNLJson>& verificationParameters) {
  std::vector<std::string> arguments{stringWithQuotesFromString(identifier),
                                     OMIDTarnelDictionaryUtil::stringFromJSON(context)};
  if (verificationParameters) {
    arguments.push_back(OMIDTarnelDictionaryUtil::stringFromJSON(*verificationParameters));
  }
  return commandWithName("startSession", arguments);
}

std::string OMIDTarnelCommand::finishSessionCommand() {
  return commandWithName("finishSession");
}

std::string OMIDTarnelCommand::impressionEventCommand() {
  return commandWithName("publishImpressionEvent");
}

std::string OMIDTarnelCommand::videoEventCommand(const std::string& name,
                                                 const std::optional<TNLJson>& parameters) {
  std::vector<std::string> arguments{stringWithQuotesFromString(name)};
  if (parameters) {
    arguments.push_back(OMIDTarnelDictionaryUtil::stringFromJSON(*parameters));
  }
  return commandWithName("publishVideoEvent", arguments);
}

std::string OMIDTarnelCommand::errorCommand(OMIDTarnelErrorType type, const std::string& message) {
  return commandWithName("error", {errorTypeString(type), message});
}

std::string OMIDTarnelCommand::appStateCommand(const std::string& state) {
  return commandWithName("setState", {stringWithQuotesFromString(state)});
}

std::string OMIDTarnelCommand::deviceVolumeCommand(double volume) {
  return commandWithName("setDeviceVolume", {TNLFormat("%.2f", volume)});
}

std::string OMIDTarnelCommand::nativeViewHierarchyCommand(const TNLJson& viewState) {
  return commandWithName("setNativeViewHierarchy",
                         {OMIDTarnelDictionaryUtil::stringFromJSON(viewState)});
}
