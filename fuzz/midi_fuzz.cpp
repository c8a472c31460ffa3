#include <optional>

#include "fuzz/fuzz.h"
#include "fuzz/memory_stream.h"
#include "fuzz/models.h"
#include "orvo/midi.h"

namespace {

namespace model = orvo_fuzz::model;
using orvo_fuzz::Expect;

// The number of a note, or why a name has none.
struct Reading {
  int index = 0;
  std::string error;
};

std::optional<int> ModelLetter(std::string_view letter) {
  if (letter == "C") return 0;
  if (letter == "D") return 2;
  if (letter == "E") return 4;
  if (letter == "F") return 5;
  if (letter == "G") return 7;
  if (letter == "A") return 9;
  if (letter == "B") return 11;
  return std::nullopt;
}

std::optional<int> ModelAccidental(std::string_view accidental) {
  if (accidental == "bb") return -2;
  if (accidental == "b") return -1;
  if (accidental == "#") return 1;
  if (accidental == "x") return 2;
  return std::nullopt;
}

// As the checked conversion reads it.
std::optional<int> ModelOctave(std::string_view text) {
  if (!model::IsInteger(text) && !model::IsFloat(text)) return std::nullopt;
  int octave = 0;
  orvo_fuzz::ReadFromStream(model::Strip(text), &octave);
  return octave;
}

Reading ModelRead(std::string_view name) {
  const std::string letter(name.substr(0, 1));
  const std::optional<int> base = ModelLetter(letter);
  if (!base) return {0, letter + " is not a valid note name."};
  if (name.size() < 2) return {*base, ""};

  std::size_t end = 1;
  while (end < name.size() &&
         (name[end] == 'b' || name[end] == '#' || name[end] == 'x')) {
    ++end;
  }
  long long offset = 0;
  if (end > 1) {
    const std::string accidental(name.substr(1, end - 1));
    const std::optional<int> found = ModelAccidental(accidental);
    if (!found) return {0, accidental + " is not a valid accidental."};
    offset = *found;
  }
  long long octave = 0;
  if (end < name.size()) {
    const std::string text(name.substr(end));
    const std::optional<int> found = ModelOctave(text);
    if (!found) return {0, text + " is not a valid octave."};
    octave = *found;
  }
  const long long index = (octave + 2) * 12 + *base + offset;
  return {static_cast<int>(((index % 256) + 256) % 256), ""};
}

// The number of a note by its exact name.
std::optional<int> ModelParse(std::string_view name) {
  const std::optional<int> base = ModelLetter(name.substr(0, 1));
  if (!base) return std::nullopt;
  name.remove_prefix(1);
  int offset = 0;
  for (const std::size_t size : {2U, 1U}) {
    const std::optional<int> found = ModelAccidental(name.substr(0, size));
    if (!found || name.size() < size) continue;
    offset = *found;
    name.remove_prefix(size);
    break;
  }
  for (int octave = -3; octave <= 8; ++octave) {
    const int index = (octave + 2) * 12 + *base + offset;
    if (name == std::to_string(octave) && index >= 0 && index <= 127) {
      return index;
    }
  }
  return std::nullopt;
}

void TestNames(std::uint8_t number) {
  const char* const sharps[] = {"C",  "C#", "D",  "D#", "E",  "F",
                                "F#", "G",  "G#", "A",  "A#", "B"};
  const char* const flats[] = {"C",  "Db", "D",  "Eb", "E",  "F",
                               "Gb", "G",  "Ab", "A",  "Bb", "B"};
  const std::string octave = std::to_string(number / 12 - 2);
  const orvo::midi::Note note(number);
  Expect(note.GetName() == sharps[number % 12] + octave);
  Expect(note.GetEnharmonicName() == flats[number % 12] + octave);
  Expect(orvo::midi::GetNoteIndex(note.GetName()) == number);
  Expect(orvo::midi::GetNoteIndex(note.GetEnharmonicName()) == number);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvo_fuzz::Input input(data, size);
  TestNames(input.Take<std::uint8_t>());
  const std::string name = input.TakeRest();
  const Reading expected = ModelRead(name);
  try {
    const int index = orvo::midi::GetNoteIndex(name);
    Expect(expected.error.empty() && index == expected.index);
  } catch (const orvo::midi::InvalidNoteName& error) {
    Expect(std::strcmp(error.what(), expected.error.c_str()) == 0);
  }
  const auto note = orvo::midi::ParseNote(name);
  const std::optional<int> parsed = ModelParse(name);
  Expect(note.has_value() == parsed.has_value());
  Expect(!note || note->GetIndex() == *parsed);
  return 0;
}
