#include "Platform/Toolkit/TNLToolkitBackend.h"

#include <mutex>

#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Toolkit/Headless/TNLHeadlessBackend.h"
#include "TarnelAd/Toolkit/TNLScreen.h"

namespace {

struct Installed {
  std::mutex mutex;
  std::shared_ptr<TNLToolkitBackend> backend;
};

Installed& installed() {
  static TNLNoDestructor<Installed> instance;
  return *instance;
}

}  // namespace

std::shared_ptr<TNLToolkitBackend> TNLToolkitBackend::current() {
  std::lock_guard lock(installed().mutex);
  if (!installed().backend) {
    installed().backend = std::make_shared<TNLHeadlessBackend>();
  }
  return installed().backend;
}

void TNLToolkitBackend::install(std::shared_ptr<TNLToolkitBackend> backend) {
  if (!backend) {
    return;
  }
  {
    std::lock_guard lock(installed().mutex);
    installed().backend = backend;
  }
  // Outside the lock: the screen's first use asks for the current backend.
  const auto screen = TNLScreen::mainScreen();
  screen->setBounds(backend->mainScreenBounds());
  screen->setScale(backend->mainScreenScale());
}
