#include "orvo/midi.h"

#include <array>
#include <cstddef>
#include <iostream>
#include <optional>
#include <string_view>

#include "internal/ascii.h"
#include "orvo/errors.h"
#include "orvo/strings.h"

namespace orvo::midi {
namespace {

constexpr unsigned char kMiddleC = 60;
constexpr int kHighestNote = 127;
constexpr int kNotesPerOctave = 12;
constexpr int kOctaveOffset = 3 - kMiddleC / kNotesPerOctave;
constexpr unsigned char kNoLetter = 0xff;
constexpr int kNoOctave = 99;  // beyond that of every note

using Spellings = std::array<std::string_view, kNotesPerOctave>;
constexpr Spellings kSharpSpellings = {"C",  "C#", "D",  "D#", "E",  "F",
                                       "F#", "G",  "G#", "A",  "A#", "B"};
constexpr Spellings kFlatSpellings = {"C",  "Db", "D",  "Eb", "E",  "F",
                                      "Gb", "G",  "Ab", "A",  "Bb", "B"};

constexpr unsigned char BaseNoteIndex(char letter) {
  constexpr unsigned char kFromA[] = {9, 11, 0, 2, 4, 5, 7};
  return letter >= 'A' && letter <= 'G' ? kFromA[letter - 'A'] : kNoLetter;
}

unsigned char CheckedBaseNoteIndex(std::string_view letter) {
  const unsigned char base =
      letter.size() == 1 ? BaseNoteIndex(letter[0]) : kNoLetter;
  if (base == kNoLetter) {
    throw InvalidNoteName(std::string(letter) + " is not a valid note name.");
  }
  return base;
}

constexpr bool IsAccidental(char c) {
  return c == 'b' || c == '#' || c == 'x';
}

std::optional<int> FindOffset(std::string_view accidental) {
  if (accidental.size() == 1) {
    if (accidental[0] == '#') return 1;
    if (accidental[0] == 'b') return -1;
    if (accidental[0] == 'x') return 2;
  }
  if (accidental == "bb") return -2;
  return std::nullopt;
}

int OffsetOf(std::string_view accidental) {
  if (const std::optional<int> offset = FindOffset(accidental)) return *offset;
  throw InvalidNoteName(std::string(accidental) +
                        " is not a valid accidental.");
}

// Reads one digit, or a minus and one digit but 0.
int ReadShortOctave(std::string_view text) {
  if (text.size() == 1 && internal::IsDigit(text[0])) return text[0] - '0';
  if (text.size() == 2 && text[0] == '-' && internal::IsDigit(text[1]) &&
      text[1] != '0') {
    return '0' - text[1];
  }
  return kNoOctave;
}

// Where a name goes on behind its letter and any accidentals.
std::size_t StartOfOctave(std::string_view name) {
  std::size_t start = 1;
  while (start < name.size() && IsAccidental(name[start])) ++start;
  return start;
}

// Unsigned, because the octave may be any int and only 8 bits are kept.
unsigned char ToIndex(int octave, unsigned char base, int offset) {
  return static_cast<unsigned char>(
      (static_cast<unsigned>(octave) - static_cast<unsigned>(kOctaveOffset)) *
          kNotesPerOctave +
      base + static_cast<unsigned>(offset));
}

// Reads what nearly every name is made of: a letter, at most one sharp or flat,
// and a short octave. Relies on the NUL behind the name.
std::optional<unsigned char> ReadUsualName(const std::string& name) {
  const char* next = name.data();
  const unsigned char base = BaseNoteIndex(*next++);
  if (base == kNoLetter) return std::nullopt;
  const int offset = (*next == '#') - (*next == 'b');
  next += offset != 0;
  const bool negative = *next == '-';
  next += negative;
  if (!internal::IsDigit(*next) || next + 1 != name.data() + name.size()) {
    return std::nullopt;
  }
  const int octave = *next - '0';
  return ToIndex(negative ? -octave : octave, base, offset);
}

constexpr std::string_view SpellingOf(int index, const Spellings& spellings) {
  return spellings[static_cast<unsigned>(index % kNotesPerOctave)];
}

constexpr int OctaveOfIndex(int index) {
  return index / kNotesPerOctave + kOctaveOffset;
}

struct NoteName {
  char text[4];
  unsigned char size;
};
using NoteNames = std::array<NoteName, 256>;

constexpr NoteNames MakeNames(const Spellings& spellings) {
  NoteNames names{};
  for (int index = 0; index < 256; ++index) {
    NoteName& name = names[static_cast<unsigned>(index)];
    for (const char c : SpellingOf(index, spellings)) {
      name.text[name.size++] = c;
    }
    const int octave = OctaveOfIndex(index);
    if (octave < 0) name.text[name.size++] = '-';
    if (octave >= 10) name.text[name.size++] = '1';
    const int last_digit = octave < 0 ? -octave : octave % 10;
    name.text[name.size++] = static_cast<char>('0' + last_digit);
  }
  return names;
}
constexpr NoteNames kSharpNames = MakeNames(kSharpSpellings);
constexpr NoteNames kFlatNames = MakeNames(kFlatSpellings);

std::string ToString(const NoteName& name) {
  return std::string(name.text, name.size);
}

void AppendInField(std::string_view text, std::size_t width,
                   std::string* line) {
  line->append(text);
  line->append(width - text.size(), ' ');
}

std::string TableLine(const Note& note) {
  const std::string name = note.GetName();
  const std::string number = std::to_string(GetNoteIndex(name));
  std::string line(4 - number.size(), ' ');
  AppendInField(number, number.size() + 4, &line);
  AppendInField(name, 8, &line);
  AppendInField(note.GetEnharmonicName(), 8, &line);
  line += '\n';
  return line;
}

}  // namespace

unsigned char LookupBaseNoteIndex(const std::string& letter) {
  return CheckedBaseNoteIndex(letter);
}

int LookupOffset(const std::string& accidental) {
  return OffsetOf(accidental);
}

int GetOctaveFromString(const std::string& text) {
  int octave = 0;
  if (!StringToNumber(text, octave)) {
    throw InvalidNoteName(text + " is not a valid octave.");
  }
  return octave;
}

unsigned char GetNoteIndex(const std::string& name) {
  if (const auto index = ReadUsualName(name)) return *index;

  const std::string_view text = name;
  const unsigned char base = CheckedBaseNoteIndex(text.substr(0, 1));
  if (text.size() < 2) return base;

  const std::size_t octave_start = StartOfOctave(text);
  const int offset =
      octave_start == 1 ? 0 : OffsetOf(text.substr(1, octave_start - 1));
  if (octave_start == text.size()) return ToIndex(0, base, offset);
  return ToIndex(GetOctaveFromString(name.substr(octave_start)), base, offset);
}

std::string GetSharpSpelling(unsigned char index) {
  return std::string(SpellingOf(index, kSharpSpellings));
}

std::string GetFlatSpelling(unsigned char index) {
  return std::string(SpellingOf(index, kFlatSpellings));
}

std::string GetNoteName(unsigned char index) {
  return Note(index).GetName();
}

Note::Note(const std::string& name) : Note(GetNoteIndex(name)) {}

std::string Note::GetName() const {
  return ToString(kSharpNames[index_]);
}

std::string Note::GetEnharmonicName() const {
  return ToString(kFlatNames[index_]);
}

int Note::GetOctave() const {
  return OctaveOfIndex(index_);
}

std::optional<Note> ParseNote(std::string_view name) {
  const unsigned char base = name.empty() ? kNoLetter : BaseNoteIndex(name[0]);
  if (base == kNoLetter) return std::nullopt;
  const std::size_t octave_start = StartOfOctave(name);
  const std::optional<int> offset =
      octave_start == 1 ? 0 : FindOffset(name.substr(1, octave_start - 1));
  const int octave = ReadShortOctave(name.substr(octave_start));
  if (!offset) return std::nullopt;

  const int index = (octave - kOctaveOffset) * kNotesPerOctave + base + *offset;
  if (index < 0 || index > kHighestNote) return std::nullopt;
  return Note(static_cast<unsigned char>(index));
}

std::vector<Note> GetAllMidiNotes() {
  std::vector<Note> notes(kHighestNote + 1, Note(0));
  unsigned char index = 0;
  for (Note& note : notes) note = Note(index++);
  return notes;
}

void PrintAllMidiNotes() {
  std::cout.fill(' ');
  std::cout.setf(std::ios_base::left, std::ios_base::adjustfield);
  std::cout.width(0);
  for (const Note& note : GetAllMidiNotes()) {
    std::cout << TableLine(note) << std::flush;
  }
}

}  // namespace orvo::midi
