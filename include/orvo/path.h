#ifndef ORVO_PATH_H_
#define ORVO_PATH_H_

/// @file
/// Paths as text: joining, cutting and making relative.
///
/// @code
/// orvo::path::basename("src/path.cpp");          // "path.cpp"
/// orvo::path::extension("src/path.cpp");         // ".cpp"
/// orvo::path::relpath("/r/src/a.cpp", "/r");     // "src/a.cpp"
/// @endcode
///
/// Components are separated by '/' on every system. The functions on text never
/// look at the file system: "." and ".." are components like any others. Every
/// function here may be called from any thread at once.

#include <string>
#include <utility>
#include <vector>

#include "orvo/export.h"

namespace orvo::path {

/// What follows the last slash; the whole path if there is none.
///
/// A path that ends with a slash has an empty base name.
ORVO_EXPORT std::string basename(const std::string& path);

/// What precedes the last slash; empty if there is none.
///
/// Kept on purpose: for "/file" it is empty as well, not "/".
ORVO_EXPORT std::string dirname(const std::string& path);

/// Cuts a path at its last slash, which belongs to neither part.
///
/// Kept on purpose: a path without a slash comes first, as in ("file", ""),
/// although dirname() and basename() would be the other way round.
ORVO_EXPORT std::pair<std::string, std::string> split(const std::string& path);

/// Cuts a path before its last full stop, wherever that stands.
///
/// @code
/// orvo::path::splitext("archive.tar.gz");  // ("archive.tar", ".gz")
/// orvo::path::splitext("a.b/c");           // ("a", ".b/c")
/// @endcode
///
/// @return  The second part is empty if there is no full stop. Where a full
///          stop may stand in a directory's name use extension().
ORVO_EXPORT std::pair<std::string, std::string> splitext(
    const std::string& path);

/// The base name up to its last full stop; empty for ".profile".
ORVO_EXPORT std::string basename_no_ext(const std::string& path);

/// The base name from its last full stop on, as in ".cpp"; empty if it has
/// none.
ORVO_EXPORT std::string extension(const std::string& path);

/// The components of a path; never empty.
///
/// @code
/// orvo::path::split_to_vector("/a/b");  // "", "a", "b"
/// @endcode
///
/// Kept on purpose: an empty component ends the cutting, which goes from the
/// back, and what precedes it stays whole: "a/b/" gives the one component "a/b"
/// and "a/b//c" gives "a/b", "c". The empty path gives one empty component.
ORVO_EXPORT std::vector<std::string> split_to_vector(const std::string& path);

/// A path without the leading components that it shares with another.
///
/// @code
/// orvo::path::relpath("/r/dev/src/a.cpp", "/r/dev");  // "src/a.cpp"
/// orvo::path::relpath("/a/b/c", "/a/x");              // "b/c"
/// @endcode
///
/// Kept on purpose: the result never climbs with "..", so that it names the
/// same file only if @p start leads to it. Components are those of
/// split_to_vector().
///
/// @param start  Where the path is to be relative to.
/// @return       The path unchanged if its first component is not that of
///               @p start or it has fewer components than @p start; empty if
///               nothing is left.
ORVO_EXPORT std::string relpath(const std::string& path,
                                const std::string& start);

}  // namespace orvo::path

#endif  // ORVO_PATH_H_
