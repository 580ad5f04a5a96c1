// tarnel-demo-server: the demo's bundled ad service on its own, for hosts built elsewhere (the
// packaging test's hosts, a host under development). Prints the manifest base URL on stdout, each
// tracker event that arrives on stderr, and serves until SIGINT or SIGTERM.
//
//   tarnel-demo-server [APP-ID]        (default: tarnel-demo)

#include <csignal>
#include <iostream>
#include <string>

#include "TNLDemoAdServer.h"

int main(int argc, char** argv) {
  // Blocked before the server's threads start, so that they inherit the mask and only sigwait
  // below takes the signals.
  sigset_t stop;
  sigemptyset(&stop);
  sigaddset(&stop, SIGINT);
  sigaddset(&stop, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stop, nullptr);

  const TNLDemoAdServer server(argc > 1 ? argv[1] : "tarnel-demo",
                               [](const std::string& event, const std::string&) {
                                 std::cerr << "ad service: event " << event << std::endl;
                               });
  std::cout << server.baseURL() << std::endl;
  int signal = 0;
  sigwait(&stop, &signal);
  return 0;
}
