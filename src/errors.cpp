#include "orvo/errors.h"

namespace orvo {

RuntimeError::RuntimeError(const std::string& message)
    : std::runtime_error(message) {}
RuntimeError::~RuntimeError() = default;

OrvoRuntimeError::OrvoRuntimeError(const std::string& message)
    : std::runtime_error(message) {}
OrvoRuntimeError::~OrvoRuntimeError() = default;

TimeError::TimeError(const std::string& message) : RuntimeError(message) {}
TimeError::~TimeError() = default;

TimeValueError::TimeValueError(const std::string& message)
    : OrvoRuntimeError(message) {}
TimeValueError::~TimeValueError() = default;

LockError::LockError(const std::string& message)
    : std::runtime_error(message) {}
LockError::~LockError() = default;

ListDirError::ListDirError(const std::string& message)
    : std::runtime_error(message) {}
ListDirError::~ListDirError() = default;

BadDir::BadDir(const std::string& message) : ListDirError(message) {}
BadDir::~BadDir() = default;

NotACOMM::NotACOMM(const std::string& message) : std::runtime_error(message) {}
NotACOMM::~NotACOMM() = default;

NoID3Found::NoID3Found(const std::string& message)
    : std::runtime_error(message) {}
NoID3Found::~NoID3Found() = default;

namespace path {

PathError::PathError(const std::string& message) : RuntimeError(message) {}
PathError::~PathError() = default;

}  // namespace path

namespace midi {

MidiError::MidiError(const std::string& message)
    : std::runtime_error(message) {}
MidiError::~MidiError() = default;

InvalidNoteName::InvalidNoteName(const std::string& message)
    : MidiError(message) {}
InvalidNoteName::~InvalidNoteName() = default;

}  // namespace midi
}  // namespace orvo
