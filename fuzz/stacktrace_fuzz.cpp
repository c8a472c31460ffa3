#include <cxxabi.h>

#include <algorithm>
#include <climits>
#include <iostream>
#include <optional>

#include "fuzz/fuzz.h"
#include "fuzz/memory_stream.h"
#include "fuzz/sink.h"
#include "orvo/stacktrace.h"

// The program describes its stack itself, by lines from the fuzzer, and has a
// demangler of its own, because the system's is not what is tested here.
namespace {

using orvo_fuzz::Expect;
using orvo_fuzz::Sink;

using Texts = std::vector<std::string>;

Texts systemLines;

// "_Zab" means "<ab>".
std::optional<std::string> ModelDemangle(std::string_view name) {
  if (name.substr(0, 2) != "_Z") return std::nullopt;
  return "<" + std::string(name.substr(2)) + ">";
}

char* CopyToHeap(const std::string& text) {
  char* const copy = static_cast<char*>(std::malloc(text.size() + 1));
  std::memcpy(copy, text.c_str(), text.size() + 1);
  return copy;
}

}  // namespace

extern "C" int backtrace(void** buffer, int size) {
  const int count = std::min(size, static_cast<int>(systemLines.size()));
  for (int i = 0; i < count; ++i) buffer[i] = &systemLines;
  return count;
}

// One block: pointers to the texts, and these behind them.
extern "C" char** backtrace_symbols(void* const*, int size) noexcept {
  const auto count = static_cast<std::size_t>(size);
  std::size_t bytes = (count + 1) * sizeof(char*);
  for (std::size_t i = 0; i < count; ++i) bytes += systemLines[i].size() + 1;
  char** const symbols = static_cast<char**>(std::malloc(bytes));
  char* next = reinterpret_cast<char*>(symbols + count);
  for (std::size_t i = 0; i < count; ++i) {
    symbols[i] = next;
    std::memcpy(next, systemLines[i].c_str(), systemLines[i].size() + 1);
    next += systemLines[i].size() + 1;
  }
  return symbols;
}

extern "C" char* __cxa_demangle(const char* name, char*, std::size_t*,
                                int* status) {
  const std::optional<std::string> demangled = ModelDemangle(name);
  *status = demangled ? 0 : -2;
  return demangled ? CopyToHeap(*demangled) : nullptr;
}

namespace {

// Never destroyed, because the stream is flushed when all else is.
Sink& StandardOutput() {
  static Sink* const sink = [] {
    auto* const made = new Sink;
    std::cout.rdbuf(made);
    return made;
  }();
  return *sink;
}

struct Row {
  std::string number;
  std::string image;
  std::string address;
  std::string symbol;
  std::string offset;
};

Texts Tokens(const std::string& line) {
  Texts tokens(1);
  for (const char c : line) {
    if (c != ' ') {
      tokens.back() += c;
    } else if (!tokens.back().empty()) {
      tokens.emplace_back();
    }
  }
  if (tokens.back().empty()) tokens.pop_back();
  return tokens;
}

std::string ModelReport(const std::string& line) {
  return "frameLineNoSpaces.size() = " + std::to_string(Tokens(line).size()) +
         "\n" + line + "\n";
}

std::optional<Row> ReadColumns(const std::string& line) {
  const Texts tokens = Tokens(line);
  if (tokens.size() != 6 && tokens.size() != 7) return std::nullopt;
  int number = 0;
  orvo_fuzz::ReadFromStream(tokens[0], &number);
  std::string symbol = tokens[3];
  if (tokens.size() == 7) {
    symbol += " " + tokens[4];
  } else if (const auto demangled = ModelDemangle(symbol)) {
    symbol = *demangled;
  }
  return Row{std::to_string(number - 1LL), tokens[1], tokens[2], symbol,
             tokens.back()};
}

// A line read from its end, as far as it is what was expected.
class Backwards {
 public:
  explicit Backwards(std::string_view text) : rest_(text) {}

  bool Take(std::string_view expected) {
    const std::size_t size = expected.size();
    if (rest_.size() < size) return false;
    if (rest_.substr(rest_.size() - size) != expected) return false;
    rest_.remove_suffix(size);
    return true;
  }

  // At least one digit, and a value of 64 bits.
  bool TakeHex(std::uint64_t* value) {
    const std::string_view digits = TakeWhile([](char c) {
      return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') ||
             (c >= 'A' && c <= 'F');
    });
    *value = 0;
    for (const char c : digits) {
      if (*value >> 60 != 0) return false;
      const int digit = c <= '9' ? c - '0' : (c | 32) - 'a' + 10;
      *value = *value * 16 + static_cast<unsigned>(digit);
    }
    return !digits.empty();
  }

  template <typename Belongs>
  std::string_view TakeWhile(Belongs belongs) {
    std::size_t start = rest_.size();
    while (start > 0 && belongs(rest_[start - 1])) --start;
    const std::string_view taken = rest_.substr(start);
    rest_.remove_suffix(taken.size());
    return taken;
  }

  std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
};

bool TakeOffset(Backwards* line, std::uint64_t* offset) {
  Backwards zero = *line;
  if (zero.Take("+0")) {
    *offset = 0;
    *line = zero;
    return true;
  }
  return line->TakeHex(offset) && line->Take("+0x");
}

// "image(symbol+0xoffset) [0xaddress]"
std::optional<Row> ReadSystemLine(const std::string& text, int number) {
  Backwards line(text);
  std::uint64_t value = 0;
  if (!line.Take("]")) return std::nullopt;
  const std::string_view end = line.rest();
  if (!line.TakeHex(&value) || !line.Take("0x")) return std::nullopt;
  const std::string_view address = end.substr(line.rest().size());
  if (!line.Take(") [") || !TakeOffset(&line, &value)) return std::nullopt;
  const std::string_view symbol =
      line.TakeWhile([](char c) { return c != '(' && c != ')' && c != ' '; });
  if (!line.Take("(")) return std::nullopt;
  const std::string_view image =
      line.TakeWhile([](char c) { return c != '/'; });
  if (image.empty()) return std::nullopt;
  return Row{std::to_string(number), std::string(image), std::string(address),
             symbol.empty()
                 ? "??"
                 : ModelDemangle(symbol).value_or(std::string(symbol)),
             std::to_string(value)};
}

bool IsSystemLine(const std::string& line) {
  return line.find(" [0x") != std::string::npos && line.back() == ']';
}

std::optional<Row> ReadLine(const std::string& line, int number) {
  return IsSystemLine(line) ? ReadSystemLine(line, number) : ReadColumns(line);
}

struct ModelTrace {
  Texts lines;
  std::string report;
  std::size_t position = 0;  // of the symbols
};

std::string Fold(const std::string& symbol, std::size_t position) {
  const std::size_t room = 140 - position;
  std::string folded;
  for (std::size_t i = 0; i < symbol.size(); ++i) {
    if (i != 0 && i % room == 0) folded += "\n" + std::string(position, ' ');
    folded += symbol[i];
  }
  return folded;
}

std::string Field(std::string text, std::size_t width) {
  text.append(width - text.size(), ' ');
  return text;
}

ModelTrace ModelGetStackTrace(const Texts& lines) {
  ModelTrace trace;
  std::size_t widths[3] = {};
  std::vector<Row> rows;
  for (const std::string& line : lines) {
    const auto row = ReadLine(line, static_cast<int>(rows.size()));
    std::size_t wider[3] = {};
    if (row) {
      wider[0] = std::max(widths[0], row->number.size());
      wider[1] = std::max(widths[1], row->image.size());
      wider[2] = std::max(widths[2], row->address.size());
    }
    const std::size_t position = wider[0] + wider[1] + wider[2] + 6;
    // Lines of the system that leave no room are left as they are.
    if (!row || (IsSystemLine(line) && position >= 140)) {
      trace.report = ModelReport(line);
      trace.lines = lines;
      break;
    }
    std::copy_n(wider, 3, widths);
    rows.push_back(*row);
  }
  trace.position = widths[0] + widths[1] + widths[2] + 6;
  if (!trace.report.empty() || trace.position >= 140) return trace;
  for (const Row& row : rows) {
    trace.lines.push_back(
        Field(row.number, widths[0] + 2) + Field(row.image, widths[1] + 2) +
        Field(row.address, widths[2] + 2) + Fold(row.symbol, trace.position) +
        " + " + row.offset);
  }
  return trace;
}

void TestFrameParts(const std::string& line) {
  StandardOutput().text.clear();
  const orvo::FrameParts parts(line);
  const std::optional<Row> row = ReadColumns(line);
  Expect(parts.GetSuccess() == row.has_value());
  Expect(StandardOutput().text == (row ? "" : ModelReport(line)));
  const Row expected = row.value_or(Row());
  Expect(parts.GetFrameNumber() == expected.number);
  Expect(parts.GetImage() == expected.image);
  Expect(parts.GetAddress() == expected.address);
  Expect(parts.GetSymbol() == expected.symbol);
  Expect(parts.GetOffset() == expected.offset);
}

void TestFrames(const Texts& lines) {
  const auto frames = orvo::GetStackFrames(static_cast<int>(lines.size()));
  Expect(frames.size() == lines.size());
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const Row row = ReadLine(lines[i], static_cast<int>(i)).value_or(Row());
    Expect(frames[i].number == row.number && frames[i].image == row.image);
    Expect(frames[i].address == row.address && frames[i].symbol == row.symbol);
    Expect(frames[i].offset == row.offset && frames[i].text == lines[i]);
  }
}

void TestTrace(const Texts& lines) {
  const ModelTrace expected = ModelGetStackTrace(lines);
  // Columns without room for symbols are an assertion of the library.
  if (expected.position >= 140) return;
  StandardOutput().text.clear();
  const auto trace = orvo::GetStackTrace(static_cast<int>(lines.size()));
  Expect(Texts(trace.begin(), trace.end()) == expected.lines);
  Expect(StandardOutput().text == expected.report);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvo_fuzz::Input input(data, size);
  // Stretches a letter, because long names are rare.
  const std::string stretched(input.Take<std::uint8_t>(), 'w');
  Texts lines;
  while (!input.empty()) {
    std::string line(input.TakeLine('\n'));
    // The system's lines have no such bytes.
    line.erase(std::remove(line.begin(), line.end(), '\0'), line.end());
    const std::size_t found = line.find('w');
    if (found != std::string::npos) line.insert(found, stretched);
    lines.push_back(line);
  }
  if (!lines.empty()) TestFrameParts(lines[0]);
  // The frame that is left out.
  systemLines = {"own frame"};
  systemLines.insert(systemLines.end(), lines.begin(), lines.end());
  TestFrames(lines);
  TestTrace(lines);
  return 0;
}
