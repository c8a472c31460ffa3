#ifndef ORVO_PATH_H_
#define ORVO_PATH_H_

/// @file
/// Paths as text (joining, cutting, making relative), and a few questions and
/// orders to the file system.
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
///
/// @code
/// orvo::path::MakeDirectories("logs/today");
/// for (const std::string& name : orvo::path::entries("logs")) Print(name);
/// @endcode

#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "orvo/errors.h"  // IWYU pragma: export
#include "orvo/export.h"
#include "orvo/strings.h"

namespace orvo::path {

/// @cond
// Cuts every run of slashes down to one.
ORVO_EXPORT void CollapseSlashes_(std::string& text);
/// @endcond

/// Two parts with one slash between them.
///
/// @code
/// orvo::path::Join("src", "path.cpp");  // "src/path.cpp"
/// orvo::path::Join("a/", "/b//c");      // "a/b/c"
/// @endcode
///
/// Every run of slashes becomes one, also within a part; "." and ".." stay.
/// Kept on purpose: an empty part counts, so that Join("", "a") is "/a" and
/// Join("a", "") is "a/".
ORVO_EXPORT std::string Join(const std::string& a, const std::string& b);

/// The same for any number of parts; none gives the empty path.
///
/// @code
/// orvo::path::Join({"src", "internal", "ascii.h"});  // "src/internal/ascii.h"
/// @endcode
ORVO_EXPORT std::string Join(std::initializer_list<std::string> parts);

/// The same for the parts of a range.
///
/// Present only for iterators over texts: Join("a/", "/b") means two parts.
template <typename Iterator, typename = RequireTexts_<Iterator>>
std::string Join(Iterator first, Iterator last) {
  std::string path = JoinString(first, last, '/');
  CollapseSlashes_(path);
  return path;
}

/// @cond
extern template std::string Join(const std::string*, const std::string*);
extern template std::string Join(StringIterator_, StringIterator_);
extern template std::string Join(ConstStringIterator_, ConstStringIterator_);
/// @endcond

/// What follows the last slash; the whole path if there is none.
///
/// A path that ends with a slash has an empty base name. Where <libgen.h> is
/// included as well, "#undef basename" takes its macro of that name away.
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

/// Whether there is a regular file at the path; symbolic links are followed.
///
/// Never throws: what cannot be examined counts as missing.
ORVO_EXPORT bool isfile(const std::string& path);

/// Whether there is a directory at the path; symbolic links are followed.
///
/// Never throws: what cannot be examined counts as missing.
ORVO_EXPORT bool isdir(const std::string& path);

/// The explanations in the messages of MakeDirectory(), by errno value.
///
/// The braces, as in "{LINK_MAX}", are part of the texts. Nothing changes the
/// table once the library is loaded, and programs must not.
extern ORVO_EXPORT std::map<int, std::string> mkdirErrorsByErrno;

/// Creates one directory, with mode 0755 less the umask; its parent has to
/// exist. A directory that is there already will do.
///
/// @throws PathError  "Failed to create directory PATH. File already exists."
///                    or "Failed to create directory: PATH, EXPLANATION".
ORVO_EXPORT void MakeDirectory(const std::string& path);

/// Creates a directory after those on the way to it, each with MakeDirectory().
///
/// @code
/// orvo::path::MakeDirectories("a/b/c");  // "a", then "a/b", then "a/b/c"
/// @endcode
///
/// The first failure ends it and leaves the directories made before. The empty
/// path asks for nothing.
///
/// @throws PathError  As from MakeDirectory().
ORVO_EXPORT void MakeDirectories(const std::string& path);

/// The names in a directory, without "." and "..", in natural order: "file9"
/// comes before "file10". Names that tie, such as "7" and "07", stand in the
/// order of their bytes.
///
/// Unlike listdir() it closes the directory; like there, the rest is missing if
/// reading fails.
///
/// @throws BadDir  The directory cannot be opened; the message is errmsg()'s
///                 text alone.
ORVO_EXPORT std::vector<std::string> entries(const std::string& path);

}  // namespace orvo::path

namespace orvo {

/// Every call leaves one directory handle open for the life of the process!
///
/// Kept on purpose; callers have to budget for it. Those who list often use
/// orvo::path::entries().
///
/// @return  The names in a directory, "." and ".." included, as the system
///          delivers them: in no order, and without the rest if reading fails.
/// @throws BadDir  The directory cannot be opened; the message is errmsg()'s
///                 text alone.
ORVO_EXPORT std::vector<std::string> listdir(const std::string& path);

}  // namespace orvo

#endif  // ORVO_PATH_H_
