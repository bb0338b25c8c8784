#include <dlfcn.h>

#include <filesystem>
#include <string>

#include "cli/exit_code.h"
#include "cli/web_listener.h"

namespace zvrsit::cli {

namespace {

// Where the library lies beside the program: where both are installed, else where they are built.
std::filesystem::path FindLibrary() {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error).parent_path();
#if defined(ZVRSIT_SERVE_FOLDER)
  fs::path installed = program / ZVRSIT_SERVE_FOLDER / kListenerLibrary;
  if (fs::exists(installed, error)) return installed;
#endif
  return program.parent_path() / kListenerLibrary;
}

}  // namespace

std::unique_ptr<WebListener> ListenOnLoopback(WebHandler& handler, int port) {
  void* const library = dlopen(FindLibrary().c_str(), RTLD_NOW | RTLD_LOCAL);
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
