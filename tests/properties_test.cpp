// What holds for whatever value: RapidCheck makes up the values.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "orvo/byte_order.h"
#include "orvo/midi.h"
#include "orvo/numeric_string.h"
#include "orvo/path.h"
#include "orvo/strings.h"
#include "orvo/time_value.h"
#include "orvo/uuid.h"

namespace {

using orvo::TimeValue;
using orvo::UUID;

// RapidCheck reads it before its first property, and prints it.
const int configured =
    setenv("RC_PARAMS", "seed=20261121 max_success=10000", 0);

using Bytes = std::array<unsigned char, 16>;
using Texts = std::vector<std::string>;

// Numbers need the full size of RapidCheck; texts and lists become slow.
template <typename Container, typename Item>
rc::Gen<Container> ListOf(const rc::Gen<Item>& item) {
  return rc::gen::scale(0.3, rc::gen::container<Container>(item));
}

// Texts of few different characters, in which much is repeated.
rc::Gen<std::string> TextOf(const std::string& alphabet) {
  return ListOf<std::string>(rc::gen::elementOf(alphabet));
}

rc::Gen<std::string> WordOf(const std::string& alphabet) {
  return rc::gen::nonEmpty(TextOf(alphabet));
}

RC_GTEST_PROP(UUIDProperty, ReadsWhatItPrints, (const Bytes& bytes)) {
  const UUID uuid(bytes.data());
  const std::string text = uuid.uuid_string();
  RC_ASSERT(UUID(text) == uuid);
  RC_ASSERT(UUID(orvo::to_upper(text)) == uuid);
  RC_ASSERT(UUID::Parse(text) == uuid);
  RC_ASSERT(UUID(" 0x" + text + " -ignored") == uuid);
}

RC_GTEST_PROP(UUIDProperty, ReadsWhatItWrites,
              (const Bytes& bytes, bool little_endian)) {
  const UUID uuid(bytes.data());
  std::stringstream stream;
  uuid.WriteBinary(stream, little_endian);
  RC_ASSERT(UUID(stream, little_endian) == uuid);
}

RC_GTEST_PROP(UUIDProperty, ChangesItsLayoutBackAndForth,
              (const Bytes& bytes)) {
  UUID uuid(bytes.data());
  uuid.change_endianness();
  UUID other;
  other.bytes_le(bytes.data());
  RC_ASSERT(uuid == other);
  uuid.change_endianness();
  RC_ASSERT(uuid == UUID(bytes.data()));
}

RC_GTEST_PROP(NoteProperty, IsReadFromEitherName, ()) {
  const auto index = *rc::gen::inRange<unsigned char>(0, 128);
  const orvo::midi::Note note(index);
  for (const std::string& name : {note.GetName(), note.GetEnharmonicName()}) {
    RC_ASSERT(orvo::midi::GetNoteIndex(name) == index);
    const auto read = orvo::midi::ParseNote(name);
    RC_ASSERT(read.has_value());
    RC_ASSERT(read->GetIndex() == index);
  }
}

template <typename Integer>
void CheckIntegerText(Integer number) {
  const std::string text = std::to_string(number);
  RC_ASSERT(orvo::StringToNumber<Integer>(text) == number);
  RC_ASSERT(orvo::ParseNumber<Integer>(text) == number);
  Integer read = 0;
  RC_ASSERT(orvo::StringToNumber("  " + text + ".5 ", read));
  RC_ASSERT(read == number);
}

RC_GTEST_PROP(NumberProperty, ReadsPrintedIntegers,
              (long long a, unsigned long long b, int c, unsigned d)) {
  CheckIntegerText(a);
  CheckIntegerText(b);
  CheckIntegerText(c);
  CheckIntegerText(d);
}

RC_GTEST_PROP(NumberProperty, ReadsPrintedFloats, (double number)) {
  char text[64];
  char* const end = std::to_chars(text, text + sizeof text, number).ptr;
  RC_ASSERT(orvo::StringToNumber<double>(std::string(text, end)) == number);
}

RC_GTEST_PROP(NumberProperty, ReadsPrintedHexadecimal,
              (unsigned long number, bool upper)) {
  std::ostringstream stream;
  stream << std::hex << std::showbase << number;
  const std::string text = " " + stream.str() + " ";
  RC_ASSERT(orvo::HexStringToNumber<unsigned long>(upper ? orvo::to_upper(text)
                                                         : text) == number);
}

RC_GTEST_PROP(SplitProperty, IsUndoneByJoining, (int most)) {
  const std::string text = *TextOf("ab/");
  const Texts parts = orvo::SplitString(text, '/', most);
  RC_ASSERT(orvo::JoinString(parts, "/") == text);
  RC_ASSERT(orvo::JoinString(parts.begin(), parts.end(), '/') == text);
  if (most >= 0) RC_ASSERT(parts.size() <= static_cast<unsigned>(most) + 1);
}

RC_GTEST_PROP(JoinProperty, IsUndoneBySplitting, ()) {
  const Texts parts = *rc::gen::nonEmpty(
      ListOf<Texts>(ListOf<std::string>(rc::gen::distinctFrom('/'))));
  RC_ASSERT(orvo::SplitString(orvo::JoinString(parts, "/"), '/', -1) == parts);
}

std::string WithoutSpaces(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
  return text;
}

RC_GTEST_PROP(TokenizeProperty, LosesNothingButSpaces, ()) {
  const std::string text = *TextOf("ab= ");
  const Texts tokens = *rc::gen::resize(10, ListOf<Texts>(WordOf("a=")));
  std::string pieces;
  for (const std::string& piece :
       orvo::tokenize_string(tokens.begin(), tokens.end(), text)) {
    pieces += piece;
  }
  RC_ASSERT(WithoutSpaces(pieces) == WithoutSpaces(text));
}

template <typename Value>
void CheckReversal(const Value& original) {
  Value value = original;
  orvo::reverse_byte_order(value);
  RC_ASSERT(orvo::reverse_byte_order_const(value) == original);
  orvo::reverse_byte_order(value);
  RC_ASSERT(value == original);
}

RC_GTEST_PROP(ReversalProperty, IsUndoneByAnother,
              (std::uint16_t a, std::uint32_t b, std::uint64_t c,
               const Bytes& d)) {
  CheckReversal(a);
  CheckReversal(b);
  CheckReversal(c);
  CheckReversal(d);
}

// Irreflexive, asymmetric, transitive, and so are ties.
template <typename Less>
void CheckStrictWeakOrder(const Less& less, const Texts& texts) {
  const auto tie = [&](const std::string& a, const std::string& b) {
    return !less(a, b) && !less(b, a);
  };
  for (const std::string& a : texts) {
    RC_ASSERT(!less(a, a));
    for (const std::string& b : texts) {
      RC_ASSERT(!(less(a, b) && less(b, a)));
      for (const std::string& c : texts) {
        if (less(a, b) && less(b, c)) RC_ASSERT(less(a, c));
        if (tie(a, b) && tie(b, c)) RC_ASSERT(tie(a, c));
      }
    }
  }
}

RC_GTEST_PROP(NaturalOrderProperty, IsAStrictWeakOrder, ()) {
  const auto text = rc::gen::oneOf(
      rc::gen::resize(15, TextOf("019a/")),
      rc::gen::map(rc::gen::resize(8, TextOf("019a/")),
                   [](const std::string& end) { return "x214748364" + end; }));
  const Texts texts = {*text, *text, *text};
  CheckStrictWeakOrder(orvo::NumericStringCompare(), texts);
  CheckStrictWeakOrder(orvo::NaturalLess(), texts);
  CheckStrictWeakOrder(
      [](const std::string& a, const std::string& b) {
        return orvo::NumericString(a) < orvo::NumericString(b);
      },
      texts);
}

// A line is wider than asked only if it is one word that is.
RC_GTEST_PROP(ParagraphProperty, HasNoLinesWiderThanAsked, ()) {
  const auto words = *ListOf<Texts>(rc::gen::resize(40, WordOf("abcdefgh")));
  const auto indent = *rc::gen::inRange<std::size_t>(0, 8);
  const auto width = *rc::gen::inRange<std::size_t>(0, 30);
  // A line feed apart from the words is not counted as a part of one.
  const std::string text = orvo::JoinString(words, " ") + " \n";
  const std::string wrapped = orvo::format_paragraph(
      text, static_cast<int>(indent), static_cast<int>(width));
  const std::string margin(indent, ' ');
  Texts found;
  for (const std::string& line : orvo::SplitString(wrapped, '\n', -1)) {
    if (line.empty()) continue;
    RC_ASSERT(line.substr(0, indent) == margin);
    Texts on_line;
    for (std::string& word : orvo::SplitString(line.substr(indent), ' ', -1)) {
      if (!word.empty()) on_line.push_back(std::move(word));
    }
    RC_ASSERT(line.size() <= std::max(width, indent) || on_line.size() <= 1);
    found.insert(found.end(), on_line.begin(), on_line.end());
  }
  RC_ASSERT(found == words);
}

RC_GTEST_PROP(PathProperty, PutsItsPartsTogetherAgain, ()) {
  const std::string path = *TextOf("ab./");
  const auto parts = orvo::path::split(path);
  if (path.find('/') == std::string::npos) {
    RC_ASSERT(parts == std::make_pair(path, std::string()));
  } else {
    RC_ASSERT(parts.first + "/" + parts.second == path);
    RC_ASSERT(orvo::path::dirname(path) == parts.first);
    RC_ASSERT(orvo::path::basename(path) == parts.second);
  }
  const auto ext = orvo::path::splitext(path);
  RC_ASSERT(ext.first + ext.second == path);
  RC_ASSERT(orvo::path::basename_no_ext(path) + orvo::path::extension(path) ==
            orvo::path::basename(path));
}

RC_GTEST_PROP(PathProperty, HasNoDoubledSlashesOnceJoined, ()) {
  const Texts parts = *ListOf<Texts>(TextOf("a/"));
  const std::string path = orvo::path::Join(parts.begin(), parts.end());
  RC_ASSERT(path.find("//") == std::string::npos);
  RC_ASSERT(orvo::path::Join({path}) == path);
}

RC_GTEST_PROP(PathProperty, SplitsIntoTheComponentsThatWereJoined, ()) {
  const Texts components = *rc::gen::nonEmpty(ListOf<Texts>(WordOf("ab.")));
  const std::string path =
      orvo::path::Join(components.begin(), components.end());
  RC_ASSERT(orvo::path::split_to_vector(path) == components);
  RC_ASSERT(orvo::path::relpath(orvo::path::Join("start", path), "start") ==
            path);
}

RC_GTEST_PROP(TimeProperty, IsMadeOfItsParts, (std::int64_t count)) {
  const TimeValue time = std::chrono::nanoseconds(count);
  const timespec parts = time.GetAsTimespec();
  RC_ASSERT(TimeValue(parts.tv_sec) + std::chrono::nanoseconds(parts.tv_nsec) ==
            time);
  RC_ASSERT(std::chrono::nanoseconds(time).count() == count);
}

RC_GTEST_PROP(TimeProperty, AddsWhatItSubtracts,
              (std::int64_t a, std::int64_t b)) {
  const TimeValue x = std::chrono::nanoseconds(a);
  const TimeValue y = std::chrono::nanoseconds(b);
  RC_ASSERT(x - y + y == x);
  RC_ASSERT(x.GetOffset(y) - x == y);
}

RC_GTEST_PROP(TimeProperty, KeepsWholeUnits, (int number)) {
  RC_ASSERT(TimeValue(number).GetAsSeconds() == number);
  RC_ASSERT(TimeValue().SetAsSeconds(number).GetAsSeconds() == number);
  RC_ASSERT(TimeValue().SetAsMicroseconds(number).GetAsMicroseconds() ==
            number);
  RC_ASSERT(TimeValue(static_cast<double>(number)) == TimeValue(number));
}

RC_GTEST_PROP(TimeProperty, IsReadFromItsText, ()) {
  const auto count = *rc::gen::inRange<std::int64_t>(0, INT64_MAX);
  const std::string text =
      TimeValue(std::chrono::nanoseconds(count)).GetAsIso8601Precise(9);
  std::tm fields{};
  const char* const rest =
      strptime(text.c_str(), "%Y-%m-%dT%H-%M-%S.", &fields);
  RC_ASSERT(rest != nullptr && rest == text.c_str() + 20);
  RC_ASSERT(timegm(&fields) == count / 1000000000);
  RC_ASSERT(orvo::StringToNumber<long>(rest) == count % 1000000000);
}

// So that the others would tell.
TEST(FalseProperty, IsFalsified) {
  std::ostringstream messages;
  std::streambuf* const saved = std::cerr.rdbuf(messages.rdbuf());
  const bool holds = rc::check([](const std::string& text) {
    RC_ASSERT(orvo::to_upper(orvo::to_lower(text)) == text);
  });
  std::cerr.rdbuf(saved);
  EXPECT_FALSE(holds);
  EXPECT_THAT(messages.str(), testing::HasSubstr("Falsifiable after"));
}

}  // namespace
