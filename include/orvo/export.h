#ifndef ORVO_EXPORT_H_
#define ORVO_EXPORT_H_

/// @file
/// Marks what the shared library exports; everything else stays hidden in it.

/// Puts a class, function or object into the library's dynamic symbol table.
#define ORVO_EXPORT __attribute__((visibility("default")))

/// Marks an inline function of which the library holds a callable copy too,
/// for callers that cannot inline it (function pointers, other languages).
#ifdef ORVO_BUILDING_LIBRARY
#define ORVO_EXPORT_INLINE __attribute__((visibility("default"), used))
#else
#define ORVO_EXPORT_INLINE __attribute__((visibility("default")))
#endif

/// Lets the compiler check printf-style arguments against their format.
/// @param format_index  Position of the format, counted from 1.
/// @param first_index   Position of the first argument; 0 for a va_list.
#define ORVO_PRINTF_LIKE(format_index, first_index) \
  __attribute__((format(printf, format_index, first_index)))

#endif  // ORVO_EXPORT_H_
