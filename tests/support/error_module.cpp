#include "tests/support/error_module.h"

#include <ctime>
#include <exception>
#include <limits>
#include <sstream>
#include <stdexcept>

#include "orvo/errors.h"
#include "orvo/id3.h"
#include "orvo/midi.h"
#include "orvo/orvo_lock_debug.h"
#include "orvo/path.h"
#include "orvo/time_value.h"

namespace {

// A class of this module alone, by its name too: clang takes classes of unnamed
// namespaces for one if their names are the same.
template <int kModule>
class StrangerOf : public std::runtime_error {
 public:
  StrangerOf() : std::runtime_error("from elsewhere") {}
};

using Stranger = StrangerOf<ORVO_TEST_MODULE>;

template <typename Error>
[[noreturn]] void ThrowHere() {
  throw Error("from a module");
}

template <typename Error>
bool IsCaughtAs(orvo_test::RaiseError raise, const std::string& name) {
  try {
    raise(name);
  } catch (const Error&) {
    return true;
  } catch (...) {
  }
  return false;
}

struct ErrorClass {
  const char* name;
  void (*raise)();
  bool (*catches)(orvo_test::RaiseError raise, const std::string& name);
};

const ErrorClass kClasses[] = {
    {"exception", [] { throw std::exception(); }, IsCaughtAs<std::exception>},
    {"runtime_error", ThrowHere<std::runtime_error>,
     IsCaughtAs<std::runtime_error>},
    {"Stranger", [] { throw Stranger(); }, IsCaughtAs<Stranger>},
    {"RuntimeError", ThrowHere<orvo::RuntimeError>,
     IsCaughtAs<orvo::RuntimeError>},
    {"TimeError",
     [] {
       std::tm fields{};
       orvo::GmtimeSafe(std::numeric_limits<std::time_t>::max(), &fields);
     },
     IsCaughtAs<orvo::TimeError>},
    {"PathError", [] { orvo::path::MakeDirectory("/proc/none/none"); },
     IsCaughtAs<orvo::path::PathError>},
    {"OrvoRuntimeError", ThrowHere<orvo::OrvoRuntimeError>,
     IsCaughtAs<orvo::OrvoRuntimeError>},
    {"TimeValueError",
     [] { static_cast<void>(orvo::TimeValue().GetAsIso8601()); },
     IsCaughtAs<orvo::TimeValueError>},
    {"LockError", [] { orvo::DebugLockImpl_("spare").unlock(); },
     IsCaughtAs<orvo::LockError>},
    {"ListDirError", ThrowHere<orvo::ListDirError>,
     IsCaughtAs<orvo::ListDirError>},
    {"BadDir", [] { static_cast<void>(orvo::listdir("/proc/none")); },
     IsCaughtAs<orvo::BadDir>},
    {"MidiError", ThrowHere<orvo::midi::MidiError>,
     IsCaughtAs<orvo::midi::MidiError>},
    {"InvalidNoteName", [] { static_cast<void>(orvo::midi::Note("H")); },
     IsCaughtAs<orvo::midi::InvalidNoteName>},
    {"NotACOMM",
     [] {
       std::istringstream empty;
       static_cast<void>(orvo::COMMFrame(empty));
     },
     IsCaughtAs<orvo::NotACOMM>},
    {"NoID3Found",
     [] {
       std::istringstream empty;
       static_cast<void>(orvo::get_comm(empty));
     },
     IsCaughtAs<orvo::NoID3Found>},
};

void Raise(const std::string& name) {
  for (const ErrorClass& error : kClasses) {
    if (name == error.name) error.raise();
  }
}

std::string Handlers(orvo_test::RaiseError raise, const std::string& name) {
  std::string names;
  for (const ErrorClass& error : kClasses) {
    if (!error.catches(raise, name)) continue;
    if (!names.empty()) names += ' ';
    names += error.name;
  }
  return names;
}

}  // namespace

const orvo_test::ErrorModule* GetErrorModule() {
  static const orvo_test::ErrorModule module = {Raise, Handlers};
  return &module;
}
