#include "AppVerificationLibrary/OMIDError.h"

bool OMIDTarnelError::setOMIDErrorFor(TNLErrorPtr* error, long code, const std::string& message) {
  if (error == nullptr) {
    return false;
  }
  *error = TNLError::make(OMIDTarnelErrorDomain, code, {{kTNLLocalizedDescriptionKey, message}});
  return true;
}
