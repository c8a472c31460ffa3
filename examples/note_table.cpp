// Prints the MIDI notes with their numbers and both of their names.

#include <iostream>

#include "orvo/midi.h"

int main(int argc, char**) {
  if (argc > 1) {
    std::cerr << "usage: note_table\n";
    return 2;
  }
  orvo::midi::PrintAllMidiNotes();
}
