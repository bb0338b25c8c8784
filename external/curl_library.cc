#include "external/curl_library.h"

#include <dlfcn.h>

#include <string>

namespace zvrsit {
namespace {

struct LoadedCurl {
  CurlLibrary functions;
  std::string fault;  // empty: all of them are there

  LoadedCurl() {
    void* const library = dlopen("libcurl.so.4", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
      fault = dlerror();
      return;
    }
#define ZVRSIT_LOAD_CURL(name) Load(library, "curl_" #name, functions.name);
    ZVRSIT_CURL_FUNCTIONS(ZVRSIT_LOAD_CURL)
#undef ZVRSIT_LOAD_CURL
  }

 private:
  template <class Function>
  void Load(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    if (function == nullptr && fault.empty()) fault = std::string("libcurl has no ") + name;
  }
};

const LoadedCurl& Loaded() {
  static const LoadedCurl loaded;
  return loaded;
}

}  // namespace

const char* WhyNoCurl() {
  return Loaded().fault.empty() ? nullptr : Loaded().fault.c_str();
}

const CurlLibrary& Curl() {
  return Loaded().functions;
}

}  // namespace zvrsit
