// Lifts a melody by semitones, and says which names are no notes.
#include <iostream>
#include <optional>
#include <string>

#include "orvo/midi.h"

int main() {
  for (const std::string name : {"C3", "Eb3", "F#3", "C", "Cb-2", "H3"}) {
    std::cout << name << ": ";
    if (const std::optional<orvo::midi::Note> note =
            orvo::midi::ParseNote(name)) {
      const orvo::midi::Note lifted(
          static_cast<unsigned char>(note->GetIndex() + 7));
      std::cout << int{note->GetIndex()} << ", seven semitones up "
                << lifted.GetName() << " or " << lifted.GetEnharmonicName()
                << "\n";
      continue;
    }
    try {
      const int number = orvo::midi::GetNoteIndex(name);
      std::cout << "no note, though the lenient reader says " << number << "\n";
    } catch (const orvo::midi::InvalidNoteName& error) {
      std::cout << error.what() << "\n";
    }
  }
}
