#include "TarnelAd/Toolkit/TNLToolkit.h"

#include "Platform/Toolkit/Headless/TNLHeadlessBackend.h"
#include "Platform/Toolkit/TNLToolkitBackend.h"

void TNLToolkit::useHeadlessBackend() {
  TNLToolkitBackend::install(std::make_shared<TNLHeadlessBackend>());
}

std::string TNLToolkit::backendName() {
  return TNLToolkitBackend::current()->name();
}
