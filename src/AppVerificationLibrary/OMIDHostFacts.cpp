#include "AppVerificationLibrary/OMIDHostFacts.h"

#include <errno.h>
#include <sys/utsname.h>

namespace {

// Every text field of the record has the same array type.
using UnameField = decltype(&utsname::machine);

std::optional<std::string> unameField(UnameField field) {
  utsname record{};
  if (uname(&record) != 0 || (record.*field)[0] == '\0') {
    return std::nullopt;
  }
  return std::string(record.*field);
}

}  // namespace

std::string OMIDTarnelHostFacts::bundleIdentifier() {
  const char* name = program_invocation_short_name;
  return name != nullptr ? name : "";
}

std::optional<std::string> OMIDTarnelHostFacts::hardwareModel() {
  return unameField(&utsname::machine);
}

std::optional<std::string> OMIDTarnelHostFacts::systemName() {
  return unameField(&utsname::sysname);
}

std::optional<std::string> OMIDTarnelHostFacts::systemVersion() {
  return unameField(&utsname::release);
}
