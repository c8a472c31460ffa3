#include "orvo/midi.h"

#include <array>
#include <iostream>
#include <string_view>

#include "internal/ascii.h"
#include "orvo/errors.h"
#include "orvo/strings.h"

namespace orvo::midi {
namespace {

constexpr unsigned char kMiddleC = 60;
constexpr int kNotesPerOctave = 12;
constexpr int kOctaveOffset = 3 - kMiddleC / kNotesPerOctave;
constexpr unsigned char kNoLetter = 0xff;

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

int OffsetOf(std::string_view accidental) {
  if (accidental.size() == 1) {
    if (accidental[0] == '#') return 1;
    if (accidental[0] == 'b') return -1;
    if (accidental[0] == 'x') return 2;
  }
  if (accidental == "bb") return -2;
  throw InvalidNoteName(std::string(accidental) +
                        " is not a valid accidental.");
}

// Nearly every octave is one digit, which needs no copy of the text.
int OctaveOf(std::string_view text) {
  if (text.size() == 1 && internal::IsDigit(text[0])) return text[0] - '0';
  if (text.size() == 2 && text[0] == '-' && internal::IsDigit(text[1])) {
    return '0' - text[1];
  }
  return GetOctaveFromString(std::string(text));
}

// Unsigned, because the octave may be any int and only 8 bits are kept.
unsigned char ToIndex(int octave, unsigned char base, int offset) {
  return static_cast<unsigned char>(
      (static_cast<unsigned>(octave) - static_cast<unsigned>(kOctaveOffset)) *
          kNotesPerOctave +
      base + static_cast<unsigned>(offset));
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
  const std::string_view text = name;
  const unsigned char base = CheckedBaseNoteIndex(text.substr(0, 1));
  if (text.size() < 2) return base;

  std::size_t octave_start = 1;
  while (octave_start < text.size() && IsAccidental(text[octave_start])) {
    ++octave_start;
  }
  const int offset =
      octave_start == 1 ? 0 : OffsetOf(text.substr(1, octave_start - 1));
  const int octave =
      octave_start == text.size() ? 0 : OctaveOf(text.substr(octave_start));
  return ToIndex(octave, base, offset);
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

std::vector<Note> GetAllMidiNotes() {
  std::vector<Note> notes(128, Note(0));
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
