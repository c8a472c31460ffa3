#ifndef ORVO_ORVO_H_
#define ORVO_ORVO_H_

/// @file
/// The whole library.

#include "orvo/byte_order.h"           // IWYU pragma: export
#include "orvo/condition.h"            // IWYU pragma: export
#include "orvo/deadline.h"             // IWYU pragma: export
#include "orvo/debug_locks.h"          // IWYU pragma: export
#include "orvo/errors.h"               // IWYU pragma: export
#include "orvo/exception_log.h"        // IWYU pragma: export
#include "orvo/format.h"               // IWYU pragma: export
#include "orvo/id3.h"                  // IWYU pragma: export
#include "orvo/lock.h"                 // IWYU pragma: export
#include "orvo/midi.h"                 // IWYU pragma: export
#include "orvo/numeric_string.h"       // IWYU pragma: export
#include "orvo/operation_log.h"        // IWYU pragma: export
#include "orvo/orvo_lock_debug.h"      // IWYU pragma: export
#include "orvo/path.h"                 // IWYU pragma: export
#include "orvo/scope_lock.h"           // IWYU pragma: export
#include "orvo/stacktrace.h"           // IWYU pragma: export
#include "orvo/str_gen.h"              // IWYU pragma: export
#include "orvo/strings.h"              // IWYU pragma: export
#include "orvo/thread_annotations.h"   // IWYU pragma: export
#include "orvo/thread_names.h"         // IWYU pragma: export
#include "orvo/thread_safe_ostream.h"  // IWYU pragma: export
#include "orvo/time_value.h"           // IWYU pragma: export
#include "orvo/uuid.h"                 // IWYU pragma: export

#endif  // ORVO_ORVO_H_
