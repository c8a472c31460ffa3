#include "orvo/stacktrace.h"

#include <cxxabi.h>
#include <execinfo.h>

#include <algorithm>
#include <cassert>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "internal/standard_output.h"
#include "orvo/strings.h"
#include "orvo/thread_safe_ostream.h"

namespace orvo {
namespace {

constexpr int kDeepest = 65535;
constexpr std::size_t kLineWidth = 140;
constexpr std::size_t kColumnGap = 2;
constexpr std::size_t kUsualSize = 128;

// Releases memory that the system allocated with malloc().
struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

using SystemText = std::unique_ptr<char, Free>;

// Null if the name is not a mangled one.
SystemText AskForDemangled(const char* name) {
  int status = -1;
  SystemText demangled(abi::__cxa_demangle(name, nullptr, nullptr, &status));
  return status == 0 ? std::move(demangled) : nullptr;
}

// How many pieces there are between the blanks of a line, and the first seven.
struct Tokens {
  std::size_t count = 0;
  std::string_view first[7];
};

Tokens SplitAtBlanks(std::string_view line) {
  Tokens tokens;
  std::size_t start = line.find_first_not_of(' ');
  while (start != std::string_view::npos) {
    const std::size_t end = std::min(line.find(' ', start), line.size());
    if (tokens.count < std::size(tokens.first)) {
      tokens.first[tokens.count] = line.substr(start, end - start);
    }
    ++tokens.count;
    start = line.find_first_not_of(' ', end);
  }
  return tokens;
}

bool HasAllColumns(const Tokens& tokens) {
  return tokens.count == 6 || tokens.count == 7;
}

void ReportLine(std::size_t tokens, std::string_view line) {
  std::string text =
      "frameLineNoSpaces.size() = " + std::to_string(tokens) + "\n";
  text.append(line).append("\n");
  internal::StandardOutput::Write(text);
}

std::optional<std::uint64_t> ReadHex(std::string_view text) {
  if (text.substr(0, 2) != "0x") return std::nullopt;
  std::uint64_t value = 0;
  const char* const text_end = text.data() + text.size();
  const auto [end, error] =
      std::from_chars(text.data() + 2, text_end, value, 16);
  if (error != std::errc() || end != text_end) return std::nullopt;
  return value;
}

// Reads "+0x1f"; a distance of zero is written "+0".
std::optional<std::uint64_t> ReadOffset(std::string_view text) {
  if (text == "+0") return 0;
  if (text.substr(0, 1) != "+") return std::nullopt;
  return ReadHex(text.substr(1));
}

struct SystemLine {
  std::string_view image;
  std::string_view symbol;
  std::uint64_t offset;
  std::string_view address;
};

// Whether a line may have columns to be read: it ends with an offset then, not
// with an address in brackets.
bool IsInColumns(std::string_view line) {
  return line.find(" [0x") == std::string_view::npos || line.back() != ']';
}

// Reads "image(symbol+0xoffset) [0xaddress]". The symbol may be missing; then
// it is "??", and the offset is that from the start of the image.
std::optional<SystemLine> ReadSystemLine(std::string_view line) {
  // From the end, because an image may have any name.
  const std::size_t place_start = line.rfind('(');
  const std::size_t place_end = line.find(") [", place_start);
  if (place_end == std::string_view::npos) return std::nullopt;

  std::string_view image = line.substr(0, place_start);
  image.remove_prefix(image.rfind('/') + 1);
  const std::string_view place =
      line.substr(place_start + 1, place_end - place_start - 1);
  std::string_view address = line.substr(place_end + 3);
  address.remove_suffix(1);

  const std::string_view symbol = place.substr(0, place.rfind('+'));
  const auto offset = ReadOffset(place.substr(symbol.size()));
  // A symbol with brackets or blanks may be cut in the wrong place.
  const bool is_plain = symbol.find(')') == std::string_view::npos &&
                        symbol.find(' ') == std::string_view::npos;
  if (image.empty() || !is_plain || !ReadHex(address) || !offset) {
    return std::nullopt;
  }
  return SystemLine{image, symbol.empty() ? "??" : symbol, *offset, address};
}

// The frames of a trace, and how wide their columns are.
class Table {
 public:
  explicit Table(int frames) {
    rows_.reserve(static_cast<std::size_t>(frames));
    texts_.reserve(rows_.capacity() * kUsualSize);
  }

  // Adds a frame as the system describes it; reports what cannot be read.
  bool Add(std::string_view line, int number) {
    if (IsInColumns(line)) return AddColumns(FrameParts(std::string(line)));
    if (AddSystemLine(line, number)) return true;
    ReportLine(SplitAtBlanks(line).count, line);
    return false;
  }

  std::size_t PositionOfName() const { return widths_.PositionOfName(); }

  std::list<std::string> Format() const {
    std::list<std::string> lines;
    std::string_view texts = texts_;
    for (const Sizes& row : rows_) lines.push_back(Format(row, &texts));
    return lines;
  }

 private:
  struct Sizes {
    std::size_t number = 0;
    std::size_t image = 0;
    std::size_t address = 0;
    std::size_t symbol = 0;
    std::size_t offset = 0;

    std::size_t PositionOfName() const {
      return number + image + address + 3 * kColumnGap;
    }
  };

  bool AddColumns(const FrameParts& parts) {
    if (!parts.GetSuccess()) return false;
    AddRow(parts.GetFrameNumber(), parts.GetImage(), parts.GetAddress(),
           parts.GetSymbol(), parts.GetOffset());
    return true;
  }

  bool AddSystemLine(std::string_view line, int number) {
    const std::optional<SystemLine> parts = ReadSystemLine(line);
    if (!parts) return false;
    const std::string number_text = std::to_string(number);
    // The name of a program must never end the program.
    const Sizes widths =
        Widest(number_text.size(), parts->image.size(), parts->address.size());
    if (widths.PositionOfName() >= kLineWidth) return false;

    symbol_ = parts->symbol;
    const SystemText demangled = AskForDemangled(symbol_.c_str());
    AddRow(number_text, parts->image, parts->address,
           demangled ? demangled.get() : std::string_view(symbol_),
           std::to_string(parts->offset));
    return true;
  }

  void AddRow(std::string_view number, std::string_view image,
              std::string_view address, std::string_view symbol,
              std::string_view offset) {
    for (const auto text : {number, image, address, symbol, offset}) {
      texts_ += text;
    }
    rows_.push_back({number.size(), image.size(), address.size(), symbol.size(),
                     offset.size()});
    widths_ = Widest(number.size(), image.size(), address.size());
  }

  // The widths of the columns in front of the symbols, with one row more.
  Sizes Widest(std::size_t number, std::size_t image,
               std::size_t address) const {
    return {std::max(widths_.number, number), std::max(widths_.image, image),
            std::max(widths_.address, address)};
  }

  // Takes the row's texts from the front of `texts`.
  std::string Format(const Sizes& row, std::string_view* texts) const {
    const std::size_t position = PositionOfName();
    std::string line;
    line.reserve(position + row.symbol + row.offset + 3);
    line.assign(position, ' ');
    char* column = line.data();
    Take(texts, row.number).copy(column, row.number);
    column += widths_.number + kColumnGap;
    Take(texts, row.image).copy(column, row.image);
    column += widths_.image + kColumnGap;
    Take(texts, row.address).copy(column, row.address);
    AppendFolded(&line, Take(texts, row.symbol));
    line.append(" + ").append(Take(texts, row.offset));
    return line;
  }

  static std::string_view Take(std::string_view* texts, std::size_t size) {
    const std::string_view text = texts->substr(0, size);
    texts->remove_prefix(size);
    return text;
  }

  // Breaks the name at the end of the line and goes on below its beginning.
  static void AppendFolded(std::string* line, std::string_view name) {
    const std::size_t position = line->size();
    // With assertions compiled out there may be no room.
    const std::size_t room = position < kLineWidth ? kLineWidth - position : 1;
    line->append(name.substr(0, room));
    for (std::size_t start = room; start < name.size(); start += room) {
      line->append("\n").append(position, ' ').append(name, start, room);
    }
  }

  // One behind the other, because most of them are short.
  std::string texts_;
  std::vector<Sizes> rows_;
  Sizes widths_;
  std::string symbol_;
};

StackFrame ReadFrame(std::string_view line, int number) {
  StackFrame frame;
  frame.text = line;
  if (IsInColumns(line)) {
    if (!HasAllColumns(SplitAtBlanks(line))) return frame;
    const FrameParts parts(frame.text);
    frame.number = parts.GetFrameNumber();
    frame.image = parts.GetImage();
    frame.address = parts.GetAddress();
    frame.symbol = parts.GetSymbol();
    frame.offset = parts.GetOffset();
  } else if (const auto parts = ReadSystemLine(line)) {
    frame.number = std::to_string(number);
    frame.image = parts->image;
    frame.address = parts->address;
    frame.symbol = Demangle(std::string(parts->symbol));
    frame.offset = std::to_string(parts->offset);
  }
  return frame;
}

// The frames of a thread, as the system describes them.
struct SystemTrace {
  int count = 0;
  std::unique_ptr<char*, Free> lines;
};

// Inlined, so that the first frame is that of the function that calls this one.
[[gnu::always_inline]] inline SystemTrace DescribeStack(int depth) {
  const int size = std::clamp(depth, 0, kDeepest) + 1;
  std::vector<void*> addresses(static_cast<std::size_t>(size));
  const int count = backtrace(addresses.data(), size);
  if (count <= 0) return {};
  SystemTrace trace;
  trace.lines.reset(backtrace_symbols(addresses.data(), count));
  if (trace.lines == nullptr) throw std::bad_alloc();
  trace.count = count;
  return trace;
}

}  // namespace

std::string Demangle(const std::string& name) {
  const SystemText demangled = AskForDemangled(name.c_str());
  if (demangled == nullptr) return name;
  return demangled.get();
}

FrameParts::FrameParts(const std::string& line) {
  const Tokens tokens = SplitAtBlanks(line);
  if (!HasAllColumns(tokens)) {
    ReportLine(tokens.count, line);
    return;
  }
  const auto& token = tokens.first;
  success_ = true;
  // In 64 bits, because the smallest int has no predecessor.
  const long long number = StringToNumber<int>(std::string(token[0]));
  frame_number_ = std::to_string(number - 1);
  image_ = token[1];
  address_ = token[2];
  symbol_ = token[3];
  if (tokens.count == 6) {
    symbol_ = Demangle(symbol_);
  } else {
    symbol_.append(" ").append(token[4]);
  }
  offset_ = token[tokens.count - 1];
}

FrameParts::FrameParts(const FrameParts& other) = default;
FrameParts::FrameParts(FrameParts&& other) noexcept = default;
FrameParts& FrameParts::operator=(const FrameParts& other) = default;
FrameParts& FrameParts::operator=(FrameParts&& other) noexcept = default;
FrameParts::~FrameParts() = default;

bool FrameParts::GetSuccess() const {
  return success_;
}

const std::string& FrameParts::GetFrameNumber() const {
  return frame_number_;
}

const std::string& FrameParts::GetImage() const {
  return image_;
}

const std::string& FrameParts::GetAddress() const {
  return address_;
}

const std::string& FrameParts::GetSymbol() const {
  return symbol_;
}

const std::string& FrameParts::GetOffset() const {
  return offset_;
}

// Not inlined, because its own frame is the one that is left out.
__attribute__((noinline)) std::list<std::string> GetStackTrace(int depth) {
  const SystemTrace trace = DescribeStack(depth);
  if (trace.count == 0) return {};
  char** const lines = trace.lines.get();
  Table table(trace.count);
  int next = 1;
  while (next < trace.count && table.Add(lines[next], next - 1)) ++next;

  [[maybe_unused]] const std::size_t positionOfName = table.PositionOfName();
  // The report names this line of this source, wherever it stands.
#line 185
  assert(positionOfName < 140);
#line 368
  if (next < trace.count) return {lines + 1, lines + trace.count};
  return table.Format();
}

__attribute__((noinline)) std::vector<StackFrame> GetStackFrames(int depth) {
  const SystemTrace trace = DescribeStack(depth);
  std::vector<StackFrame> frames;
  frames.reserve(static_cast<std::size_t>(trace.count));
  for (int i = 1; i < trace.count; ++i) {
    frames.push_back(ReadFrame(trace.lines.get()[i], i - 1));
  }
  return frames;
}

__attribute__((noinline)) void PrintStackTrace(int depth) {
  // One frame more for this function, which is left out.
  std::list<std::string> trace =
      GetStackTrace(std::clamp(depth, 0, kDeepest - 1) + 1);
  CoutBuffer buffer;
  buffer << "\nstack trace:" << endl;
  if (trace.size() > 1) {
    trace.pop_front();
    for (const std::string& line : trace) buffer << line << endl;
  } else {
    buffer << "  no frames found." << endl;
  }
}

}  // namespace orvo
