#ifndef ORVO_STACKTRACE_H_
#define ORVO_STACKTRACE_H_

/// @file
/// Who called this function: stack traces in aligned columns, with demangled
/// names.
///
/// @code
/// void Accept(const Order& order) {
///   if (order.empty()) orvo::PrintStackTrace(10);
/// }
/// @endcode
///
/// prints something like
///
/// @code{.unparsed}
///
/// stack trace:
/// 0  shop       0x55d0c7a4f1e9  Accept(Order const&) + 41
/// 1  shop       0x55d0c7a4f2b0  main + 96
/// 2  libc.so.6  0x7f3e5c62924a  ?? + 160330
/// @endcode
///
/// The system knows a program's own functions by name only if the program is
/// linked with -rdynamic (CMake: `set_target_properties(shop PROPERTIES
/// ENABLE_EXPORTS ON)`); "??" stands for the others, and their offset counts
/// from the start of the program or library instead. An optimising compiler may
/// leave out callers: inlined functions, and those whose last act is a call.
///
/// Every function here may be called from any thread at once and shows the
/// stack of the thread that calls it.

#include <list>
#include <string>
#include <vector>

#include "orvo/export.h"

namespace orvo {

/// The readable form of a C++ symbol, or the text itself if it is not one.
///
/// @code
/// orvo::Demangle("_ZN4shop6AcceptEi");  // "shop::Accept(int)"
/// orvo::Demangle("main");               // "main"
/// @endcode
///
/// Kept on purpose: abbreviations of types count as symbols, so that "f" is
/// "float".
ORVO_EXPORT std::string Demangle(const std::string& name);

/// One line of a stack trace in columns, cut into its parts:
/// "1   shop   0x000000010f1a2b3c   _Z6Accepti + 41".
class ORVO_EXPORT FrameParts {
 public:
  /// Reads six columns (number, image, address, symbol, "+", offset) with
  /// blanks between them, or seven, where the symbol holds a blank.
  ///
  /// A line of any other shape is reported on std::cout and leaves every part
  /// empty. Kept on purpose: only the number of columns is checked, and a
  /// frame number that is no number counts as 0.
  explicit FrameParts(const std::string& line);

  /// @{
  /// A value as any other.
  FrameParts(const FrameParts& other);
  FrameParts(FrameParts&& other) noexcept;
  FrameParts& operator=(const FrameParts& other);
  FrameParts& operator=(FrameParts&& other) noexcept;
  /// @}
  ~FrameParts();

  /// Whether the line had six or seven columns.
  bool GetSuccess() const;

  /// The decimal number of the frame, counted from GetStackTrace()'s caller:
  /// one less than the line says.
  const std::string& GetFrameNumber() const;

  /// The program or library that holds the function.
  const std::string& GetImage() const;

  /// The return address, as the line has it.
  const std::string& GetAddress() const;

  /// The function: demangled, or as the line has it if it holds a blank.
  const std::string& GetSymbol() const;

  /// The decimal distance from the start of the function, as the line has it.
  const std::string& GetOffset() const;

 private:
  bool success_ = false;
  std::string frame_number_;
  std::string image_;
  std::string address_;
  std::string symbol_;
  std::string offset_;
};

/// The calling thread's stack, one text per frame, the caller of this function
/// first.
///
/// Number, image, address and symbol stand in columns. A symbol that would
/// reach beyond column 140 continues on further lines of the same text, below
/// its beginning. If a frame cannot be read, or its image name leaves no room
/// for symbols, that is reported on std::cout, and all frames are returned as
/// the system describes them. GetStackFrames() reads each frame on its own and
/// prints nothing.
///
/// @param depth  The largest number of frames; a negative one counts as 0, and
///               frames beyond the 65535th are left out.
/// @return       Empty if there are no frames.
ORVO_EXPORT std::list<std::string> GetStackTrace(int depth);

/// One frame of a stack, cut into its parts. All but the last are empty if the
/// frame cannot be read.
struct StackFrame {
  std::string number;   ///< As GetStackTrace() counts: "0" for its caller.
  std::string image;    ///< The base name of the program or library.
  std::string address;  ///< The return address: "0x" and hexadecimal digits.
  std::string symbol;   ///< The function, demangled; "??" if it has no name.
  std::string offset;   ///< The decimal distance from the function's start.
  std::string text;     ///< The frame as the system describes it.
};

/// The calling thread's stack in parts, for programs that lay out, filter or
/// store it themselves; the caller of this function comes first.
///
/// The frames are read as by GetStackTrace(), but nothing is printed, names of
/// any length are taken, and a frame that cannot be read does not spoil the
/// others.
///
/// @code
/// for (const orvo::StackFrame& frame : orvo::GetStackFrames(10)) {
///   log << (frame.symbol.empty() ? frame.text : frame.symbol) << '\n';
/// }
/// @endcode
///
/// @param depth  As for GetStackTrace().
/// @return       Empty if there are no frames.
ORVO_EXPORT std::vector<StackFrame> GetStackFrames(int depth);

/// Prints the calling thread's stack through a CoutBuffer, in one piece: an
/// empty line, "stack trace:", and a line for each frame, the caller of this
/// function first.
///
/// @param depth  As for GetStackTrace().
ORVO_EXPORT void PrintStackTrace(int depth);

}  // namespace orvo

#endif  // ORVO_STACKTRACE_H_
