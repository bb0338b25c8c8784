#include <dlfcn.h>

#include <string>

#include "cli/exit_code.h"
#include "cli/web_listener.h"

namespace zvrsit::cli {

std::unique_ptr<WebListener> ListenOnLoopback(WebHandler& handler, int port) {
  void* const library = dlopen(kListenerLibrary, RTLD_NOW | RTLD_LOCAL);
  void* const make = library != nullptr ? dlsym(library, kMakeWebListener) : nullptr;
  if (make == nullptr) {
    const char* const why = dlerror();
    throw Failure(kUsage, std::string("no pages can be served: ") + (why != nullptr ? why : ""));
  }
  std::unique_ptr<WebListener> listener(reinterpret_cast<MakeWebListener>(make)(&handler, port));
  if (listener == nullptr) {
    throw Failure(kFileSystem, "127.0.0.1:" + std::to_string(port) + ": this port cannot be had");
  }
  return listener;
}

}  // namespace zvrsit::cli
