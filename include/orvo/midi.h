#ifndef ORVO_MIDI_H_
#define ORVO_MIDI_H_

/// @file
/// MIDI note numbers and their names. Note 60, middle C, is "C3" here.
///
/// Other programs call it "C4" or "C5". Note 0 is "C-2" and note 127 is "G8".
/// A name is a capital letter, at most one accidental ("bb", "b", "#" or "x",
/// the last one for a double sharp) and an octave:
///
/// @code
/// const orvo::midi::Note note("Bb3");
/// note.GetIndex();                           // 70
/// note.GetName();                            // "A#3"
/// orvo::midi::Note(61).GetEnharmonicName();  // "Db3"
/// @endcode
///
/// Every function may be called from any thread at once; the one that prints
/// writes to std::cout without a lock.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvo/errors.h"  // IWYU pragma: export
#include "orvo/export.h"

/// Notes by number and by name.
namespace orvo::midi {

/// The semitones from C up to a letter, 0 to 11.
///
/// @param letter  One of "C", "D", "E", "F", "G", "A" and "B".
/// @throws InvalidNoteName  Any other text.
ORVO_EXPORT unsigned char LookupBaseNoteIndex(const std::string& letter);

/// The semitones that an accidental adds, -2 to 2.
///
/// @param accidental  One of "bb", "b", "#" and "x".
/// @throws InvalidNoteName  Any other text, the empty one included.
ORVO_EXPORT int LookupOffset(const std::string& accidental);

/// The octave in the text behind the accidental.
///
/// @param text  A number as StringToNumber() takes it. Kept on purpose: spaces
///              around and a fraction are accepted, and without a digit the
///              octave is 0.
/// @throws InvalidNoteName  Any other text.
ORVO_EXPORT int GetOctaveFromString(const std::string& text);

/// The number of the note with this name, for example 60 for "C3".
///
/// Kept on purpose: a single letter ignores octaves, so that "C" is 0 where
/// "C0" is 24; an accidental without an octave means octave 0. The number is
/// cut to 8 bits instead of checked: "Cb-2" is 255 and "C20" is 8. ParseNote()
/// takes names of MIDI notes only.
///
/// @throws InvalidNoteName  Says which part of the name is wrong.
ORVO_EXPORT unsigned char GetNoteIndex(const std::string& name);

/// The letter of a note, with "#" on the black keys: "C", "C#", "D", ... "B".
ORVO_EXPORT std::string GetSharpSpelling(unsigned char index);

/// The letter of a note, with "b" on the black keys: "C", "Db", "D", ... "B".
ORVO_EXPORT std::string GetFlatSpelling(unsigned char index);

/// Note::GetName() of the note with this number.
ORVO_EXPORT std::string GetNoteName(unsigned char index);

/// A MIDI note: a number with names. Numbers above 127 are no MIDI notes, but
/// are named as if the scale went on ("C9" to "D#19").
class ORVO_EXPORT Note {
 public:
  /// The note with this number.
  ORVO_EXPORT_INLINE constexpr explicit Note(unsigned char index)
      : index_(index) {}

  /// As lenient as GetNoteIndex(); ParseNote() is strict.
  ///
  /// @throws InvalidNoteName  As GetNoteIndex() throws it.
  explicit Note(const std::string& name);

  /// The sharp spelling and the octave, for example "C#3".
  std::string GetName() const;

  /// The flat spelling and the octave, for example "Db3".
  std::string GetEnharmonicName() const;

  /// The octave, which begins at C: -2 for the notes 0 to 11.
  int GetOctave() const;

  /// The note number.
  ORVO_EXPORT_INLINE constexpr unsigned char GetIndex() const { return index_; }

 private:
  unsigned char index_;
};

/// The note that a text names, if it is exactly the name of one of the notes 0
/// to 127: a letter from "A" to "G", at most one accidental, and an octave from
/// "-3" to "8" without a "+" or zeros in front.
///
/// A name belongs to the octave of its letter, so that "Cb3" is the note below
/// "C3", and "B#-3" is note 0.
///
/// @code
/// orvo::midi::ParseNote("F#4")->GetIndex();  // 78
/// orvo::midi::ParseNote("C");                // nothing: no octave
/// orvo::midi::ParseNote("Cb-2");             // nothing: below note 0
/// @endcode
///
/// @return  Nothing for any other text, also where GetNoteIndex() takes it.
ORVO_EXPORT std::optional<Note> ParseNote(std::string_view name);

/// The notes 0 to 127 in ascending order.
ORVO_EXPORT std::vector<Note> GetAllMidiNotes();

/// Prints a table of all notes to std::cout, each line flushed: the number in
/// a field of 4, four spaces, and both names in fields of 8.
///
/// The number is read back from the name, so that the table shows a fault in
/// either direction. The stream keeps a space as its fill character, and
/// adjusts to the left afterwards.
ORVO_EXPORT void PrintAllMidiNotes();

}  // namespace orvo::midi

#endif  // ORVO_MIDI_H_
