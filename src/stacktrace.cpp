#include "orvo/stacktrace.h"

#include <cxxabi.h>
#include <execinfo.h>

#include <algorithm>
#include <cassert>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "orvo/strings.h"
#include "orvo/thread_safe_ostream.h"

namespace orvo {
namespace {

constexpr int kDeepest = 65535;
constexpr std::size_t kLineWidth = 140;
constexpr std::size_t kColumnGap = 2;

// For memory that the system allocated with malloc().
struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

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

void ReportLine(std::size_t tokens, const std::string& line) {
  const std::string text =
      "frameLineNoSpaces.size() = " + std::to_string(tokens) + "\n" + line +
      "\n";
  std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
  std::cout.flush();
}

// What a trace shows of one frame.
struct Row {
  std::string number;
  std::string image;
  std::string address;
  std::string symbol;
  std::string offset;
};

// The widths of the columns in front of the symbols.
struct Widths {
  std::size_t number = 0;
  std::size_t image = 0;
  std::size_t address = 0;

  Widths Including(const Row& row) const {
    return {std::max(number, row.number.size()),
            std::max(image, row.image.size()),
            std::max(address, row.address.size())};
  }

  std::size_t PositionOfName() const {
    return number + image + address + 3 * kColumnGap;
  }
};

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

// Reads "image(symbol+0xoffset) [0xaddress]". The symbol may be missing; then
// the offset is that from the start of the image. It is missing too where it
// equals the address, in an image that is loaded where its addresses say.
std::optional<Row> ReadSystemLine(std::string_view line, int number) {
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
  const auto position = ReadHex(address);
  const auto offset =
      place.empty() ? position : ReadOffset(place.substr(symbol.size()));
  if (image.empty() || !position || !offset ||
      symbol.find_first_of("() ") != std::string_view::npos) {
    return std::nullopt;
  }
  return Row{std::to_string(number), std::string(image), std::string(address),
             symbol.empty() ? "??" : Demangle(std::string(symbol)),
             std::to_string(*offset)};
}

// Reads one line of the system's. What cannot be read is reported.
std::optional<Row> ReadLine(const std::string& line, int number,
                            const Widths& widths) {
  if (!endswith(line, "]")) {
    const FrameParts parts(line);
    if (!parts.GetSuccess()) return std::nullopt;
    return Row{parts.GetFrameNumber(), parts.GetImage(), parts.GetAddress(),
               parts.GetSymbol(), parts.GetOffset()};
  }
  std::optional<Row> row = ReadSystemLine(line, number);
  // The name of a program must never end the program.
  if (row && widths.Including(*row).PositionOfName() < kLineWidth) return row;
  ReportLine(SplitAtBlanks(line).count, line);
  return std::nullopt;
}

void AppendPadded(std::string* text, const std::string& field,
                  std::size_t width) {
  text->append(field).append(width + kColumnGap - field.size(), ' ');
}

// Breaks the name after every `room` characters and indents what follows.
void AppendFolded(std::string* text, const std::string& name, std::size_t room,
                  std::size_t indentation) {
  text->append(name, 0, room);
  for (std::size_t start = room; start < name.size(); start += room) {
    text->append("\n").append(indentation, ' ').append(name, start, room);
  }
}

std::string Format(const Row& row, const Widths& widths,
                   std::size_t positionOfName) {
  // With assertions compiled out there may be no room.
  const std::size_t room =
      positionOfName < kLineWidth ? kLineWidth - positionOfName : 1;
  std::string text;
  AppendPadded(&text, row.number, widths.number);
  AppendPadded(&text, row.image, widths.image);
  AppendPadded(&text, row.address, widths.address);
  AppendFolded(&text, row.symbol, room, positionOfName);
  return text.append(" + ").append(row.offset);
}

}  // namespace

std::string Demangle(const std::string& name) {
  int status = -1;
  const std::unique_ptr<char, Free> demangled(
      abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status));
  return status == 0 ? demangled.get() : name;
}

FrameParts::FrameParts(const std::string& line) {
  const Tokens tokens = SplitAtBlanks(line);
  if (tokens.count != 6 && tokens.count != 7) {
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
  const int size = std::clamp(depth, 0, kDeepest) + 1;
  const std::unique_ptr<void*[]> addresses(
      new void*[static_cast<std::size_t>(size)]);
  const int count = backtrace(addresses.get(), size);
  if (count <= 0) return {};
  const std::unique_ptr<char*, Free> symbols(
      backtrace_symbols(addresses.get(), count));
  if (symbols == nullptr) return {};
  const std::vector<std::string> lines(symbols.get() + 1,
                                       symbols.get() + count);

  std::vector<Row> rows;
  Widths widths;
  for (const std::string& line : lines) {
    std::optional<Row> row =
        ReadLine(line, static_cast<int>(rows.size()), widths);
    if (!row) break;
    widths = widths.Including(*row);
    rows.push_back(*std::move(row));
  }

  const std::size_t positionOfName = widths.PositionOfName();
  // The report names this line of this source, wherever it stands.
#line 185
  assert(positionOfName < 140);
#line 261
  if (rows.size() < lines.size()) return {lines.begin(), lines.end()};
  std::list<std::string> trace;
  for (const Row& row : rows)
    trace.push_back(Format(row, widths, positionOfName));
  return trace;
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
