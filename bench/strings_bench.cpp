// The string functions beside abseil, the standard library, and the least work
// that yields the same result.

#include <absl/strings/ascii.h>
#include <absl/strings/match.h>
#include <absl/strings/numbers.h>
#include <absl/strings/str_join.h>
#include <absl/strings/str_replace.h>
#include <absl/strings/str_split.h>
#include <absl/strings/string_view.h>
#include <absl/strings/strip.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "bench/compare.h"
#include "orvo/strings.h"

namespace {

using orvo_bench::Contender;
using orvo_bench::Keep;
using Texts = std::vector<std::string>;
using Pieces = std::vector<absl::string_view>;

// Registers what does the same work.
template <typename Orvo, typename... Peers>
void Compare(const std::string& operation, std::size_t size, Orvo orvo,
             Contender<Peers>... peers) {
  orvo_bench::Compare("strings/" + operation, size, Contender{"orvo", orvo},
                      peers...);
}

std::string Repeat(std::string_view pattern, std::size_t size) {
  std::string text;
  while (text.size() < size) text += pattern;
  text.resize(size);
  return text;
}

std::string StdStrip(const std::string& text) {
  constexpr char kSpace[] = " \t\n\v\f\r";
  const std::size_t first = text.find_first_not_of(kSpace);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) + 1 - first);
}

void AddTrimming() {
  for (const std::size_t size : {8u, 64u, 4096u}) {
    const auto* text = Keep("  " + Repeat("word ", size - 5) + "x  ");
    Compare(
        "strip", size, [=] { return orvo::strip(*text); },
        Contender{
            "absl",
            [=] { return std::string(absl::StripAsciiWhitespace(*text)); }},
        Contender{"std", [=] { return StdStrip(*text); }},
        Contender{"limit",
                  [=] { return std::string(text->data() + 2, size - 4); }});
  }
}

void AddLetterCase() {
  for (const std::size_t size : {8u, 64u, 4096u}) {
    const auto* text = Keep(Repeat("The Quick bROWN fOX, 12 ", size));
    const auto change = [=](int (*map)(int)) {
      std::string result = *text;
      for (char& c : result) {
        c = static_cast<char>(map(static_cast<unsigned char>(c)));
      }
      return result;
    };
    Compare(
        "to_lower", size, [=] { return orvo::to_lower(*text); },
        Contender{"absl", [=] { return absl::AsciiStrToLower(*text); }},
        Contender{"std", [=] { return change(std::tolower); }});
    Compare(
        "to_upper", size, [=] { return orvo::to_upper(*text); },
        Contender{"absl", [=] { return absl::AsciiStrToUpper(*text); }},
        Contender{"std", [=] { return change(std::toupper); }});
  }
}

bool StdEndswith(const std::string& text, const std::string& suffix) {
  return text.size() >= suffix.size() &&
         text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

void AddEndswith() {
  for (const std::size_t size : {8u, 64u, 4096u}) {
    const auto* text = Keep(Repeat("ab", size - 4) + ".txt");
    const auto* suffix = Keep<std::string>(".txt");
    const auto* other = Keep<std::string>(".cpp");
    Compare(
        "endswith", size, [=] { return orvo::endswith(*text, *suffix); },
        Contender{"absl", [=] { return absl::EndsWith(*text, *suffix); }},
        Contender{"std", [=] { return StdEndswith(*text, *suffix); }});
    Compare(
        "endswith_not", size, [=] { return orvo::endswith(*text, *other); },
        Contender{"absl", [=] { return absl::EndsWith(*text, *other); }},
        Contender{"std", [=] { return StdEndswith(*text, *other); }});
  }
}

template <typename IsMember>
void AddQuestion(const char* operation, std::string_view pattern,
                 bool (*orvo)(std::string&), IsMember is_member,
                 int (*std_is_member)(int)) {
  for (const std::size_t size : {8u, 64u, 4096u}) {
    auto* text = Keep(Repeat(pattern, size));
    Compare(
        operation, size, [=] { return orvo(*text); },
        Contender{
            "absl",
            [=] { return std::all_of(text->begin(), text->end(), is_member); }},
        Contender{"std", [=] {
                    return std::all_of(text->begin(), text->end(), [=](char c) {
                      return std_is_member(static_cast<unsigned char>(c)) != 0;
                    });
                  }});
  }
}

bool AbslIsInteger(absl::string_view text) {
  text = absl::StripAsciiWhitespace(text);
  if (!absl::ConsumePrefix(&text, "-")) absl::ConsumePrefix(&text, "+");
  return std::all_of(text.begin(), text.end(), absl::ascii_isdigit);
}

bool AbslIsFloat(const std::string& text) {
  if (std::count(text.begin(), text.end(), '.') > 1) return false;
  return AbslIsInteger(absl::StrReplaceAll(text, {{".", ""}}));
}

int Strtol(const std::string& text) {
  return static_cast<int>(std::strtol(text.c_str(), nullptr, 10));
}

int FromChars(std::string_view digits) {
  int value = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return value;
}

int CheckedOrvo(const std::string& text) {
  int value = 0;
  return orvo::StringToNumber(text, value) ? value : -1;
}

int Atoi(const std::string& text) {
  int value = 0;
  return absl::SimpleAtoi(text, &value) ? value : -1;
}

int Atod(const std::string& text) {
  double value = 0;
  return absl::SimpleAtod(text, &value) ? static_cast<int>(value) : -1;
}

void AddNumbers() {
  AddQuestion("is_digits", "0123456789", orvo::StringIsDigits,
              absl::ascii_isdigit, std::isdigit);
  AddQuestion("is_alpha", "TheQuickbROWN", orvo::StringIsAlpha,
              absl::ascii_isalpha, std::isalpha);
  AddQuestion("is_alnum", "a1B2c3D4", orvo::StringIsAlphaNumeric,
              absl::ascii_isalnum, std::isalnum);
  for (const char* number : {"42", " 1234567 ", "-2147483648"}) {
    const auto* text = Keep<std::string>(number);
    const std::size_t size = text->size();
    const std::string_view digits = orvo::strip(std::string_view(*text));
    Compare(
        "is_integer", size, [=] { return orvo::StringIsInteger(*text); },
        Contender{"absl", [=] { return AbslIsInteger(*text); }});
    Compare(
        "to_int", size, [=] { return orvo::StringToNumber<int>(*text); },
        Contender{"absl", [=] { return Atoi(*text); }},
        Contender{"strtol", [=] { return Strtol(*text); }},
        Contender{"limit", [=] { return FromChars(digits); }});
    Compare(
        "to_int_checked", size, [=] { return CheckedOrvo(*text); },
        Contender{"absl", [=] { return Atoi(*text); }},
        Contender{"limit", [=] { return FromChars(digits); }});
  }
  for (const char* number : {"1.5", " 12345.75 ", "-123456789.25"}) {
    const auto* text = Keep<std::string>(number);
    const std::size_t size = text->size();
    const std::string_view digits = orvo::strip(std::string_view(*text));
    Compare(
        "is_float", size, [=] { return orvo::StringIsFloat(*text); },
        Contender{"absl", [=] { return AbslIsFloat(*text); }});
    Compare(
        "to_int_from_float", size, [=] { return CheckedOrvo(*text); },
        Contender{"absl", [=] { return Atod(*text); }},
        Contender{"strtol", [=] { return Strtol(*text); }},
        Contender{"limit", [=] { return FromChars(digits); }});
  }
}

Texts MakeWords(std::size_t count, std::size_t longest) {
  Texts words;
  for (std::size_t i = 0; i < count; ++i) {
    words.push_back(Repeat("abcdefghij", 1 + (i * 7) % longest));
  }
  return words;
}

Texts StdSplit(const std::string& text, char separator, std::size_t limit) {
  Texts parts;
  std::size_t start = 0;
  std::size_t end = text.find(separator);
  while (end != std::string::npos && parts.size() < limit) {
    parts.emplace_back(text, start, end - start);
    start = end + 1;
    end = text.find(separator, start);
  }
  parts.emplace_back(text, start);
  return parts;
}

// All the cuts are known beforehand.
Texts CopyParts(const Pieces& parts) {
  Texts copies;
  copies.reserve(parts.size());
  for (const absl::string_view part : parts) {
    copies.emplace_back(part.data(), part.size());
  }
  return copies;
}

void AddSplitting(const char* operation, std::size_t longest) {
  for (const std::size_t count : {4u, 64u, 4096u}) {
    const auto* text = Keep(absl::StrJoin(MakeWords(count, longest), "/"));
    const auto* parts = Keep(Pieces(absl::StrSplit(*text, '/')));
    Compare(
        operation, count, [=] { return orvo::SplitString(*text, '/', -1); },
        Contender{"absl", [=] { return Texts(absl::StrSplit(*text, '/')); }},
        Contender{"std", [=] { return StdSplit(*text, '/', text->size()); }},
        Contender{"limit", [=] { return CopyParts(*parts); }});
  }
}

void AddSplittingOnce() {
  for (const std::size_t count : {4u, 64u, 4096u}) {
    const auto* text = Keep(absl::StrJoin(MakeWords(count, 12), "/"));
    const auto* parts =
        Keep(Pieces(absl::StrSplit(*text, absl::MaxSplits('/', 1))));
    Compare(
        "split_max1", count, [=] { return orvo::SplitString(*text, '/', 1); },
        Contender{"absl",
                  [=] {
                    return Texts(
                        absl::StrSplit(*text, absl::MaxSplits('/', 1)));
                  }},
        Contender{"std", [=] { return StdSplit(*text, '/', 1); }},
        Contender{"limit", [=] { return CopyParts(*parts); }});
  }
}

std::string StdJoin(const Texts& items, std::string_view separator) {
  std::string text;
  for (const std::string& item : items) {
    if (&item != &items.front()) text += separator;
    text += item;
  }
  return text;
}

void AddJoining(const std::string& suffix, std::size_t longest) {
  for (const std::size_t count : {4u, 64u, 4096u}) {
    const auto* items = Keep(MakeWords(count, longest));
    const auto* separator = Keep<std::string>(", ");
    Compare(
        "join" + suffix, count,
        [=] { return orvo::JoinString(*items, *separator); },
        Contender{"absl", [=] { return absl::StrJoin(*items, *separator); }},
        Contender{"std", [=] { return StdJoin(*items, *separator); }});
    Compare(
        "join_char" + suffix, count,
        [=] { return orvo::JoinString(items->begin(), items->end(), '/'); },
        Contender{"absl", [=] { return absl::StrJoin(*items, "/"); }},
        Contender{"std", [=] { return StdJoin(*items, "/"); }});
  }
}

// Keeps the token between the pieces; no empty piece stands in front of it.
Pieces AbslCut(absl::string_view text, absl::string_view token) {
  Pieces pieces;
  const Pieces parts = absl::StrSplit(text, absl::ByString(token));
  for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
    if (!parts[i].empty()) pieces.push_back(parts[i]);
    pieces.push_back(token);
  }
  pieces.push_back(parts.back());
  return pieces;
}

std::deque<std::string> AbslTokenize(const Texts& tokens,
                                     const std::string& text) {
  Pieces pieces = {text};
  for (const std::string& token : tokens) {
    Pieces cut;
    for (const absl::string_view piece : pieces) {
      const Pieces parts = AbslCut(piece, token);
      cut.insert(cut.end(), parts.begin(), parts.end());
    }
    pieces = std::move(cut);
  }
  std::deque<std::string> stripped;
  for (const absl::string_view piece : pieces) {
    stripped.emplace_back(absl::StripAsciiWhitespace(piece));
  }
  return stripped;
}

void AddTokenizing() {
  for (const std::size_t count : {4u, 64u, 4096u}) {
    const Texts words = MakeWords(count, 12);
    const auto* one = Keep(absl::StrJoin(words, " + "));
    const auto* plus = Keep(Texts{"+"});
    Compare(
        "tokenize", count,
        [=] { return orvo::tokenize_string((*plus)[0], *one); },
        Contender{"absl", [=] { return AbslTokenize(*plus, *one); }});

    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
      text += words[i] + (i % 3 == 0 ? "(" : i % 3 == 1 ? ") " : " , ");
    }
    const auto* three = Keep(text);
    const auto* tokens = Keep(Texts{"(", ")", ","});
    Compare(
        "tokenize3", count,
        [=] {
          return orvo::tokenize_string(tokens->begin(), tokens->end(), *three);
        },
        Contender{"absl", [=] { return AbslTokenize(*tokens, *three); }});
  }
}

std::string AbslFormat(const std::string& text, int indent, int width) {
  const std::string spaces(static_cast<std::size_t>(indent), ' ');
  Texts lines;
  Pieces line;
  int length = -1;
  const auto close = [&] {
    lines.push_back(absl::StrCat(spaces, absl::StrJoin(line, " ")));
    line.clear();
    length = -1;
  };
  for (const absl::string_view word : absl::StrSplit(text, ' ')) {
    const int size = static_cast<int>(word.size());
    const bool ends_line = absl::EndsWith(word, "\n");
    if (!line.empty() && length + 1 + size > width - indent) {
      close();
      if (ends_line) close();
    }
    line.push_back(word);
    length += 1 + size;
    if (ends_line) close();
  }
  return absl::StrJoin(lines, "\n");
}

void AddWrapping() {
  for (const std::size_t count : {16u, 256u, 4096u}) {
    const auto* text = Keep(absl::StrJoin(MakeWords(count, 12), " ") + "\n");
    Compare(
        "format_paragraph", count,
        [=] { return orvo::format_paragraph(*text, 4, 72); },
        Contender{"absl", [=] { return AbslFormat(*text, 4, 72); }});
  }
}

const bool added = [] {
  AddTrimming();
  AddLetterCase();
  AddEndswith();
  AddNumbers();
  AddSplitting("split", 12);
  AddSplitting("split_long", 100);
  AddSplittingOnce();
  AddJoining("", 12);
  AddJoining("_long", 100);
  AddTokenizing();
  AddWrapping();
  return true;
}();

}  // namespace
