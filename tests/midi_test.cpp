#include "orvo/midi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <iomanip>
#include <iostream>
#include <locale>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "orvo/errors.h"
#include "tests/support/capture.h"

namespace {

using orvo::midi::GetNoteIndex;
using orvo::midi::InvalidNoteName;
using orvo::midi::Note;
using testing::ThrowsMessage;

constexpr const char* kSharpNames[] = {
    "C-2",  "C#-2", "D-2",  "D#-2", "E-2", "F-2",  "F#-2", "G-2", "G#-2", "A-2",
    "A#-2", "B-2",  "C-1",  "C#-1", "D-1", "D#-1", "E-1",  "F-1", "F#-1", "G-1",
    "G#-1", "A-1",  "A#-1", "B-1",  "C0",  "C#0",  "D0",   "D#0", "E0",   "F0",
    "F#0",  "G0",   "G#0",  "A0",   "A#0", "B0",   "C1",   "C#1", "D1",   "D#1",
    "E1",   "F1",   "F#1",  "G1",   "G#1", "A1",   "A#1",  "B1",  "C2",   "C#2",
    "D2",   "D#2",  "E2",   "F2",   "F#2", "G2",   "G#2",  "A2",  "A#2",  "B2",
    "C3",   "C#3",  "D3",   "D#3",  "E3",  "F3",   "F#3",  "G3",  "G#3",  "A3",
    "A#3",  "B3",   "C4",   "C#4",  "D4",  "D#4",  "E4",   "F4",  "F#4",  "G4",
    "G#4",  "A4",   "A#4",  "B4",   "C5",  "C#5",  "D5",   "D#5", "E5",   "F5",
    "F#5",  "G5",   "G#5",  "A5",   "A#5", "B5",   "C6",   "C#6", "D6",   "D#6",
    "E6",   "F6",   "F#6",  "G6",   "G#6", "A6",   "A#6",  "B6",  "C7",   "C#7",
    "D7",   "D#7",  "E7",   "F7",   "F#7", "G7",   "G#7",  "A7",  "A#7",  "B7",
    "C8",   "C#8",  "D8",   "D#8",  "E8",  "F8",   "F#8",  "G8"};

constexpr const char* kFlatNames[] = {
    "C-2",  "Db-2", "D-2",  "Eb-2", "E-2", "F-2",  "Gb-2", "G-2", "Ab-2", "A-2",
    "Bb-2", "B-2",  "C-1",  "Db-1", "D-1", "Eb-1", "E-1",  "F-1", "Gb-1", "G-1",
    "Ab-1", "A-1",  "Bb-1", "B-1",  "C0",  "Db0",  "D0",   "Eb0", "E0",   "F0",
    "Gb0",  "G0",   "Ab0",  "A0",   "Bb0", "B0",   "C1",   "Db1", "D1",   "Eb1",
    "E1",   "F1",   "Gb1",  "G1",   "Ab1", "A1",   "Bb1",  "B1",  "C2",   "Db2",
    "D2",   "Eb2",  "E2",   "F2",   "Gb2", "G2",   "Ab2",  "A2",  "Bb2",  "B2",
    "C3",   "Db3",  "D3",   "Eb3",  "E3",  "F3",   "Gb3",  "G3",  "Ab3",  "A3",
    "Bb3",  "B3",   "C4",   "Db4",  "D4",  "Eb4",  "E4",   "F4",  "Gb4",  "G4",
    "Ab4",  "A4",   "Bb4",  "B4",   "C5",  "Db5",  "D5",   "Eb5", "E5",   "F5",
    "Gb5",  "G5",   "Ab5",  "A5",   "Bb5", "B5",   "C6",   "Db6", "D6",   "Eb6",
    "E6",   "F6",   "Gb6",  "G6",   "Ab6", "A6",   "Bb6",  "B6",  "C7",   "Db7",
    "D7",   "Eb7",  "E7",   "F7",   "Gb7", "G7",   "Ab7",  "A7",  "Bb7",  "B7",
    "C8",   "Db8",  "D8",   "Eb8",  "E8",  "F8",   "Gb8",  "G8"};

static_assert(std::size(kSharpNames) == 128 && std::size(kFlatNames) == 128);
static_assert(sizeof(Note) == 1 && std::is_trivially_copyable_v<Note>);

TEST(LookupBaseNoteIndex, KnowsSevenLetters) {
  const struct {
    const char* letter;
    int index;
  } cases[] = {{"C", 0}, {"D", 2}, {"E", 4}, {"F", 5},
               {"G", 7}, {"A", 9}, {"B", 11}};
  for (const auto& c : cases) {
    EXPECT_EQ(orvo::midi::LookupBaseNoteIndex(c.letter), c.index) << c.letter;
  }
}

TEST(LookupBaseNoteIndex, RejectsEverythingElse) {
  const struct {
    const char* letter;
    const char* message;
  } cases[] = {
      {"", " is not a valid note name."},
      {"c", "c is not a valid note name."},
      {"H", "H is not a valid note name."},
      {"@", "@ is not a valid note name."},
      {"CC", "CC is not a valid note name."},
      {"C#", "C# is not a valid note name."},
      {" C", " C is not a valid note name."},
      {"\xc4", "\xc4 is not a valid note name."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.letter);
    EXPECT_THAT([&] { orvo::midi::LookupBaseNoteIndex(c.letter); },
                ThrowsMessage<InvalidNoteName>(c.message));
  }
}

TEST(LookupOffset, KnowsFourAccidentals) {
  EXPECT_EQ(orvo::midi::LookupOffset("bb"), -2);
  EXPECT_EQ(orvo::midi::LookupOffset("b"), -1);
  EXPECT_EQ(orvo::midi::LookupOffset("#"), 1);
  EXPECT_EQ(orvo::midi::LookupOffset("x"), 2);
}

TEST(LookupOffset, RejectsEverythingElse) {
  const struct {
    const char* accidental;
    const char* message;
  } cases[] = {
      {"", " is not a valid accidental."},
      {"##", "## is not a valid accidental."},
      {"bbb", "bbb is not a valid accidental."},
      {"B", "B is not a valid accidental."},
      {"xx", "xx is not a valid accidental."},
      {"b#", "b# is not a valid accidental."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.accidental);
    EXPECT_THAT([&] { orvo::midi::LookupOffset(c.accidental); },
                ThrowsMessage<InvalidNoteName>(c.message));
  }
}

TEST(GetOctaveFromString, ReadsANumber) {
  const struct {
    const char* text;
    int octave;
  } cases[] = {
      {"3", 3},
      {"-2", -2},
      {"+4", 4},
      {"12", 12},
      {" 5 ", 5},
      {"1.9", 1},
      {"-1.5", -1},
      {"007", 7},
      {"2.", 2},
      {".5", 0},
      {"99999999999", 2147483647},
      {"-99999999999", -2147483647 - 1},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(orvo::midi::GetOctaveFromString(c.text), c.octave) << c.text;
  }
}

TEST(GetOctaveFromString, IsZeroWithoutADigit) {
  for (const char* text : {"", "  ", "-", "+", ".", "-."}) {
    EXPECT_EQ(orvo::midi::GetOctaveFromString(text), 0) << text;
  }
}

TEST(GetOctaveFromString, RejectsTextThatIsNoNumber) {
  EXPECT_THAT([] { orvo::midi::GetOctaveFromString("q"); },
              ThrowsMessage<InvalidNoteName>("q is not a valid octave."));
  EXPECT_THAT([] { orvo::midi::GetOctaveFromString("3x"); },
              ThrowsMessage<InvalidNoteName>("3x is not a valid octave."));
  EXPECT_THAT([] { orvo::midi::GetOctaveFromString("--1"); },
              ThrowsMessage<InvalidNoteName>("--1 is not a valid octave."));
}

TEST(GetNoteIndex, ReadsNames) {
  const struct {
    const char* name;
    int index;
  } cases[] = {
      {"C3", 60},  {"C-2", 0},   {"G8", 127},  {"A3", 69},  {"Bb3", 70},
      {"Cx3", 62}, {"Dbb3", 60}, {"B#2", 60},  {"Cb3", 59}, {"C0", 24},
      {"C-", 24},  {"C ", 24},   {"C 3 ", 60}, {"C+3", 60}, {"C3.9", 60},
      {"C#.", 25}, {"C-0", 24},  {"C03", 60},  {"D-1", 14},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(GetNoteIndex(c.name), c.index) << c.name;
  }
}

TEST(GetNoteIndex, IgnoresOctavesForASingleLetter) {
  EXPECT_EQ(GetNoteIndex("C"), 0);
  EXPECT_EQ(GetNoteIndex("D"), 2);
  EXPECT_EQ(GetNoteIndex("B"), 11);
}

TEST(GetNoteIndex, UsesOctaveZeroForAnAccidentalWithoutOctave) {
  EXPECT_EQ(GetNoteIndex("C#"), 25);
  EXPECT_EQ(GetNoteIndex("Db"), 25);
  EXPECT_EQ(GetNoteIndex("Cbb"), 22);
  EXPECT_EQ(GetNoteIndex("Bx"), 37);
}

TEST(GetNoteIndex, CutsTheNumberTo8Bits) {
  const struct {
    const char* name;
    int index;
  } cases[] = {
      {"Cb-2", 255},
      {"Cbb-2", 254},
      {"C20", 8},
      {"C19", 252},
      {"C-3", 244},
      {"G9", 139},
      {"C2147483647", 12},
      {"Bx2147483647", 25},
      {"C-2147483648", 24},
      {"Cbb-2147483648", 22},
      {"C99999999999999", 12},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(GetNoteIndex(c.name), c.index) << c.name;
  }
}

TEST(GetNoteIndex, SaysWhichPartIsWrong) {
  const struct {
    const char* name;
    const char* message;
  } cases[] = {
      {"", " is not a valid note name."},
      {"c", "c is not a valid note name."},
      {"c3", "c is not a valid note name."},
      {"H#3", "H is not a valid note name."},
      {"3C", "3 is not a valid note name."},
      {"C##3", "## is not a valid accidental."},
      {"Cb#3", "b# is not a valid accidental."},
      {"C##", "## is not a valid accidental."},
      {"Cbbb", "bbb is not a valid accidental."},
      {"C##q", "## is not a valid accidental."},
      {"C#q", "q is not a valid octave."},
      {"Cq", "q is not a valid octave."},
      {"C3b", "3b is not a valid octave."},
      {"C#3#", "3# is not a valid octave."},
      {"C--2", "--2 is not a valid octave."},
      {"CC3", "C3 is not a valid octave."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_THAT([&] { GetNoteIndex(c.name); },
                ThrowsMessage<InvalidNoteName>(c.message));
  }
}

TEST(GetNoteIndex, ThrowsAMidiError) {
  EXPECT_THROW(GetNoteIndex("x"), orvo::midi::MidiError);
}

TEST(GetNoteIndex, ReadsTheNamesOfAllNotes) {
  for (int index = 0; index < 128; ++index) {
    EXPECT_EQ(GetNoteIndex(kSharpNames[index]), index);
    EXPECT_EQ(GetNoteIndex(kFlatNames[index]), index);
  }
}

// The parts of a name one after the other.
int PlainNoteIndex(const std::string& name) {
  const int base = orvo::midi::LookupBaseNoteIndex(name.substr(0, 1));
  if (name.size() < 2) return base;
  const std::size_t end =
      std::min(name.find_first_not_of("b#x", 1), name.size());
  const std::string accidental = name.substr(1, end - 1);
  const int offset =
      accidental.empty() ? 0 : orvo::midi::LookupOffset(accidental);
  const std::string octave = name.substr(end);
  const int number =
      octave.empty() ? 0 : orvo::midi::GetOctaveFromString(octave);
  return static_cast<unsigned char>((number + 2) * 12 + base + offset);
}

template <typename Read>
std::string NumberOrError(Read read, const std::string& name) {
  try {
    return std::to_string(int{read(name)});
  } catch (const InvalidNoteName& error) {
    return error.what();
  }
}

TEST(GetNoteIndex, ReadsShortTextsPartByPart) {
  const std::string_view alphabet("ABCHbx#-+09. \0", 14);
  std::vector<std::string> texts = {""};
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::string text = texts[i];
    EXPECT_EQ(NumberOrError(GetNoteIndex, text),
              NumberOrError(PlainNoteIndex, text))
        << testing::PrintToString(text);
    if (text.size() == 4) continue;
    for (const char c : alphabet) texts.push_back(text + c);
  }
}

TEST(Spelling, NamesTwelvePitchClasses) {
  const char* sharp[] = {"C",  "C#", "D",  "D#", "E",  "F",
                         "F#", "G",  "G#", "A",  "A#", "B"};
  const char* flat[] = {"C",  "Db", "D",  "Eb", "E",  "F",
                        "Gb", "G",  "Ab", "A",  "Bb", "B"};
  for (int index = 0; index < 256; ++index) {
    const auto note = static_cast<unsigned char>(index);
    EXPECT_EQ(orvo::midi::GetSharpSpelling(note), sharp[index % 12]);
    EXPECT_EQ(orvo::midi::GetFlatSpelling(note), flat[index % 12]);
  }
}

TEST(GetNoteName, IsTheSharpName) {
  EXPECT_EQ(orvo::midi::GetNoteName(0), "C-2");
  EXPECT_EQ(orvo::midi::GetNoteName(60), "C3");
  EXPECT_EQ(orvo::midi::GetNoteName(61), "C#3");
  EXPECT_EQ(orvo::midi::GetNoteName(127), "G8");
}

TEST(Note, NamesAllNumbers) {
  for (int index = 0; index < 128; ++index) {
    const Note note(static_cast<unsigned char>(index));
    EXPECT_EQ(note.GetName(), kSharpNames[index]);
    EXPECT_EQ(note.GetEnharmonicName(), kFlatNames[index]);
    EXPECT_EQ(note.GetIndex(), index);
    EXPECT_EQ(note.GetOctave(), index / 12 - 2);
  }
}

TEST(Note, NamesNumbersAboveTheScaleToo) {
  EXPECT_EQ(Note("Cb-2").GetName(), "D#19");
  EXPECT_EQ(Note("Cb-2").GetEnharmonicName(), "Eb19");
  EXPECT_EQ(Note("Cb-2").GetOctave(), 19);
  EXPECT_EQ(Note(static_cast<unsigned char>(128)).GetName(), "G#8");
  EXPECT_EQ(Note(static_cast<unsigned char>(144)).GetName(), "C10");
}

TEST(Note, IsMadeFromANumberOrAName) {
  EXPECT_EQ(Note(0).GetIndex(), 0);
  EXPECT_EQ(Note(60).GetIndex(), 60);
  EXPECT_EQ(Note("C3").GetIndex(), 60);
  EXPECT_EQ(Note(std::string("Bb-1")).GetIndex(), 22);
}

TEST(Note, PassesTheErrorsOfANameOn) {
  EXPECT_THAT([] { Note("X1"); },
              ThrowsMessage<InvalidNoteName>("X is not a valid note name."));
}

// The number of a note, or -1 if there is none.
int Parsed(std::string_view name) {
  const std::optional<Note> note = orvo::midi::ParseNote(name);
  return note ? note->GetIndex() : -1;
}

TEST(ParseNote, ReadsTheNamesOfAllNotes) {
  for (int index = 0; index < 128; ++index) {
    EXPECT_EQ(Parsed(kSharpNames[index]), index);
    EXPECT_EQ(Parsed(kFlatNames[index]), index);
  }
}

TEST(ParseNote, CountsAccidentalsFromTheLetter) {
  const struct {
    const char* name;
    int index;
  } cases[] = {
      {"C3", 60},  {"F#4", 78}, {"Bb-1", 22}, {"Gx2", 57},
      {"Cb3", 59}, {"B#2", 60}, {"Dbb3", 60}, {"B#-2", 12},
  };
  for (const auto& c : cases) EXPECT_EQ(Parsed(c.name), c.index) << c.name;
}

TEST(ParseNote, StopsAtTheEndsOfTheScale) {
  const struct {
    const char* name;
    int index;
  } cases[] = {
      {"C-2", 0},          {"Dbb-2", 0}, {"Cb-2", -1}, {"Cbb-2", -1},
      {"Dbb-3", -1},       {"B#-3", 0},  {"Bx-3", 1},  {"Ax-3", -1},
      {"B-3", -1},         {"G8", 127},  {"Fx8", 127}, {"Abb8", 127},
      {"G#8", -1},         {"Ab8", -1},  {"B8", -1},   {"Cbb9", -1},
      {"C9", -1},          {"C20", -1},  {"C-10", -1}, {"C22", -1},
      {"C2147483647", -1},
  };
  for (const auto& c : cases) EXPECT_EQ(Parsed(c.name), c.index) << c.name;
}

TEST(ParseNote, TakesANameExactlyIfItsNumberIsOnTheScale) {
  const std::string letters = "C D EF G A B";
  const struct {
    const char* text;
    int offset;
  } accidentals[] = {{"bb", -2}, {"b", -1}, {"", 0}, {"#", 1}, {"x", 2}};
  for (std::size_t base = 0; base < letters.size(); ++base) {
    if (letters[base] == ' ') continue;
    for (const auto& accidental : accidentals) {
      for (int octave = -30; octave <= 30; ++octave) {
        const std::string name =
            letters[base] + (accidental.text + std::to_string(octave));
        const int index =
            (octave + 2) * 12 + static_cast<int>(base) + accidental.offset;
        EXPECT_EQ(Parsed(name), index >= 0 && index <= 127 ? index : -1)
            << name;
      }
    }
  }
}

TEST(ParseNote, RejectsWhatIsTakenLeniently) {
  for (const char* name :
       {"C", "B", "C#", "Db", "Cbb", "C-", "C ", "C 3", "C3 ", "C+3", "C3.",
        "C3.9", "C#.", "C-0", "C00", "C02", "C03", "C+1", "C-02"}) {
    EXPECT_EQ(Parsed(name), -1) << name;
    EXPECT_NO_THROW(GetNoteIndex(name)) << name;
  }
}

TEST(ParseNote, RejectsTextsThatAreNoName) {
  EXPECT_EQ(Parsed(std::string_view()), -1);
  EXPECT_EQ(Parsed(std::string_view("C3\0", 3)), -1);
  EXPECT_EQ(Parsed(std::string_view("C#3", 1)), -1);
  EXPECT_EQ(Parsed(std::string_view("C#3", 2)), -1);
  for (const char* name :
       {"", "c3", "H3", "3", "#3", " C3", "C##3", "Cb#3", "Cbbb3", "Cxx3",
        "CB3", "C3b", "C-x", "C-/", "C--1", "C3C3", "Cq", "\xc4"}) {
    EXPECT_EQ(Parsed(name), -1) << name;
  }
}

TEST(GetAllMidiNotes, HoldsTheNumbersInAscendingOrder) {
  const std::vector<Note> notes = orvo::midi::GetAllMidiNotes();
  ASSERT_EQ(notes.size(), 128U);
  for (std::size_t index = 0; index < notes.size(); ++index) {
    EXPECT_EQ(notes[index].GetIndex(), index);
  }
}

// The lines around the change of sign and of width, in full.
TEST(PrintAllMidiNotes, WritesATable) {
  const orvo_test::StdoutCapture capture;
  orvo::midi::PrintAllMidiNotes();
  const std::string table = capture.Text();
  EXPECT_EQ(table.size(), 128U * 25);
  EXPECT_EQ(table.substr(0, 3 * 25),
            "   0    C-2     C-2     \n"
            "   1    C#-2    Db-2    \n"
            "   2    D-2     D-2     \n");
  EXPECT_EQ(table.substr(99 * 25, 2 * 25),
            "  99    D#6     Eb6     \n"
            " 100    E6      E6      \n");
  EXPECT_EQ(table.substr(127 * 25), " 127    G8      G8      \n");
}

TEST(PrintAllMidiNotes, ShowsEachNumberBesideItsNames) {
  std::ostringstream expected;
  expected.imbue(std::locale::classic());
  for (int index = 0; index < 128; ++index) {
    expected << std::right << std::setw(4) << index << "    " << std::left
             << std::setw(8) << kSharpNames[index] << std::setw(8)
             << kFlatNames[index] << '\n';
  }
  const orvo_test::StdoutCapture capture;
  orvo::midi::PrintAllMidiNotes();
  EXPECT_EQ(capture.Text(), expected.str());
}

// Counts how often the text has been flushed.
class FlushCounter : public std::stringbuf {
 public:
  int flushes() const { return flushes_; }

 private:
  int sync() override {
    ++flushes_;
    return 0;
  }
  int flushes_ = 0;
};

// Gives std::cout another buffer while it lives, and its state back.
class CoutRedirection {
 public:
  explicit CoutRedirection(std::streambuf* buffer)
      : buffer_(std::cout.rdbuf(buffer)) {
    saved_.copyfmt(std::cout);
  }
  CoutRedirection(const CoutRedirection&) = delete;
  CoutRedirection& operator=(const CoutRedirection&) = delete;
  ~CoutRedirection() {
    std::cout.rdbuf(buffer_);
    std::cout.copyfmt(saved_);
  }

 private:
  std::streambuf* buffer_;
  std::ios saved_{nullptr};
};

TEST(PrintAllMidiNotes, FlushesEachLine) {
  FlushCounter counter;
  const CoutRedirection redirection(&counter);
  orvo::midi::PrintAllMidiNotes();
  EXPECT_EQ(counter.flushes(), 128);
}

TEST(PrintAllMidiNotes, LeavesASpaceAsFillAndLeftAdjustment) {
  std::stringbuf buffer;
  const CoutRedirection redirection(&buffer);
  std::cout << std::setfill('*') << std::right << std::hex << std::setw(30);
  orvo::midi::PrintAllMidiNotes();
  EXPECT_EQ(std::cout.fill(), ' ');
  EXPECT_EQ(std::cout.flags() & std::ios_base::adjustfield,
            std::ios_base::left);
  EXPECT_EQ(std::cout.width(), 0);
  EXPECT_EQ(buffer.str().substr(0, 25), "   0    C-2     C-2     \n");
  EXPECT_EQ(buffer.str().substr(16 * 25, 25), "  16    E-1     E-1     \n");
}

struct Grouping : std::numpunct<char> {
  std::string do_grouping() const override { return "\1"; }
};

TEST(PrintAllMidiNotes, IgnoresTheLocaleOfTheStream) {
  std::stringbuf buffer;
  const std::locale grouping(std::locale::classic(), new Grouping);
  const CoutRedirection redirection(&buffer);
  const std::locale before = std::cout.imbue(grouping);
  orvo::midi::PrintAllMidiNotes();
  std::cout.imbue(before);
  EXPECT_EQ(buffer.str().substr(127 * 25), " 127    G8      G8      \n");
}

}  // namespace
