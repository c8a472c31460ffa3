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

int OffsetOf(std::string_view accidental) {
  if (accidental == "#") return 1;
  if (accidental == "b") return -1;
  if (accidental == "x") return 2;
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

std::string NameOf(const Note& note, const Spellings& spellings) {
  const std::string_view spelling =
      spellings[note.GetIndex() % kNotesPerOctave];
  std::string name(spelling);
  int octave = note.GetOctave();
  if (octave < 0) {
    name += '-';
    octave = -octave;
  }
  if (octave >= 10) name += static_cast<char>('0' + octave / 10);
  name += static_cast<char>('0' + octave % 10);
  return name;
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

  const std::string_view rest = text.substr(1);
  const std::size_t octave_start = rest.find_first_not_of("b#x");
  if (octave_start == 0) return ToIndex(OctaveOf(rest), base, 0);

  const int offset = OffsetOf(rest.substr(0, octave_start));
  if (octave_start == std::string_view::npos) return ToIndex(0, base, offset);
  return ToIndex(OctaveOf(rest.substr(octave_start)), base, offset);
}

std::string GetSharpSpelling(unsigned char index) {
  return std::string(kSharpSpellings[index % kNotesPerOctave]);
}

std::string GetFlatSpelling(unsigned char index) {
  return std::string(kFlatSpellings[index % kNotesPerOctave]);
}

std::string GetNoteName(unsigned char index) {
  return Note(index).GetName();
}

Note::Note(const std::string& name) : Note(GetNoteIndex(name)) {}

std::string Note::GetName() const {
  return NameOf(*this, kSharpSpellings);
}

std::string Note::GetEnharmonicName() const {
  return NameOf(*this, kFlatSpellings);
}

int Note::GetOctave() const {
  return index_ / kNotesPerOctave + kOctaveOffset;
}

std::vector<Note> GetAllMidiNotes() {
  std::vector<Note> notes;
  notes.reserve(128);
  for (unsigned char index = 0; index < 128; ++index) {
    notes.emplace_back(index);
  }
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
