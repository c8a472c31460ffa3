#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>
#include <string>

#include "tests/support/capture.h"
#include "tests/support/error_module.h"
#include "tests/support/interpose.h"

namespace {

using orvo_test::ErrorModule;
using orvo_test::ProgramPath;
using orvo_test::ScopedFailure;

// A module that was loaded with symbols of its own, for as long as it lives.
class Plugin {
 public:
  explicit Plugin(const std::string& name)
      : handle_(dlopen(ProgramPath(name).c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) throw std::runtime_error(dlerror());
  }
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;
  ~Plugin() { dlclose(handle_); }

  const ErrorModule& operator*() const {
    using Get = const ErrorModule* (*)();
    return *reinterpret_cast<Get>(dlsym(handle_, "GetErrorModule"))();
  }

 private:
  void* handle_;
};

class Modules : public testing::Test {
 protected:
  struct Named {
    const char* name;
    const ErrorModule& module;
  };

  const Plugin plugin_{"error_plugin.so"};
  const Plugin hidden_plugin_{"hidden_error_plugin.so"};
  const Named modules_[3] = {{"application", *GetErrorModule()},
                             {"plugin", *plugin_},
                             {"plugin of hidden symbols", *hidden_plugin_}};

  // No time has a calendar form here: nothing else fails a TimeValue.
  const ScopedFailure failure_{"gmtime_r", EOVERFLOW};
};

TEST_F(Modules, CatchEachOthersErrorsByEveryBase) {
  const struct {
    const char* error;
    const char* handlers;
  } cases[] = {
      {"RuntimeError", "exception runtime_error RuntimeError"},
      {"TimeError", "exception runtime_error RuntimeError TimeError"},
      {"PathError", "exception runtime_error RuntimeError PathError"},
      {"OrvoRuntimeError", "exception runtime_error OrvoRuntimeError"},
      {"TimeValueError",
       "exception runtime_error OrvoRuntimeError TimeValueError"},
      {"LockError", "exception runtime_error LockError"},
      {"ListDirError", "exception runtime_error ListDirError"},
      {"BadDir", "exception runtime_error ListDirError BadDir"},
      {"MidiError", "exception runtime_error MidiError"},
      {"InvalidNoteName", "exception runtime_error MidiError InvalidNoteName"},
      {"NotACOMM", "exception runtime_error NotACOMM"},
      {"NoID3Found", "exception runtime_error NoID3Found"},
  };
  for (const Named& thrower : modules_) {
    for (const Named& catcher : modules_) {
      for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.error) + " from the " + thrower.name +
                     " in the " + catcher.name);
        EXPECT_EQ(catcher.module.handlers(thrower.module.raise, c.error),
                  c.handlers);
      }
    }
  }
}

TEST_F(Modules, DoNotCatchEachOthersStrangers) {
  for (const Named& thrower : modules_) {
    for (const Named& catcher : modules_) {
      SCOPED_TRACE(std::string(thrower.name) + " to " + catcher.name);
      EXPECT_EQ(catcher.module.handlers(thrower.module.raise, "Stranger"),
                &catcher == &thrower ? "exception runtime_error Stranger"
                                     : "exception runtime_error");
    }
  }
}

}  // namespace
