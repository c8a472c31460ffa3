#ifndef ORVO_TESTS_SUPPORT_ERROR_MODULE_H_
#define ORVO_TESTS_SUPPORT_ERROR_MODULE_H_

/// @file
/// What a module knows about the library's errors.
///
/// tests/support/error_module.cpp is compiled into the test and into each
/// plugin, so that each has handlers and type information of its own.

#include <string>

namespace orvo_test {

/// Throws the error of a class, which is named without its namespaces:
/// through the library where it throws that class, else from the module.
/// "Stranger" is a class of the module's own beside the library's.
using RaiseError = void (*)(const std::string& name);

/// The classes, bases first, whose handlers in this module catch what
/// `raise(name)` throws.
using ErrorHandlers = std::string (*)(RaiseError raise,
                                      const std::string& name);

struct ErrorModule {
  RaiseError raise;
  ErrorHandlers handlers;
};

}  // namespace orvo_test

extern "C" __attribute__((visibility("default"))) const orvo_test::ErrorModule*
GetErrorModule();

#endif  // ORVO_TESTS_SUPPORT_ERROR_MODULE_H_
