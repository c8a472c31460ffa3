// Note names beside hash tables, abseil, fmt, and the least work that yields
// the same result. Each run takes all 128 notes.

#include <absl/container/flat_hash_map.h>
#include <absl/strings/str_cat.h>
#include <absl/strings/string_view.h>
#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "bench/compare.h"
#include "orvo/errors.h"
#include "orvo/midi.h"

namespace {

using Names = std::vector<std::string>;
using orvo::midi::Note;
using orvo_bench::Compare;
using orvo_bench::Contender;
using orvo_bench::Keep;
using orvo_bench::RequireSame;

constexpr absl::string_view kSharp[] = {"C",  "C#", "D",  "D#", "E",  "F",
                                        "F#", "G",  "G#", "A",  "A#", "B"};
constexpr absl::string_view kFlat[] = {"C",  "Db", "D",  "Eb", "E",  "F",
                                       "Gb", "G",  "Ab", "A",  "Bb", "B"};

const std::vector<Note> kNotes = orvo::midi::GetAllMidiNotes();

// The number of a name that is known to be right.
unsigned BareIndex(const std::string& name) {
  static constexpr unsigned char kLetters[] = {9, 11, 0, 2, 4, 5, 7};
  const char* next = name.data();
  int index = kLetters[*next++ - 'A'];
  if (*next == '#') {
    ++index;
    ++next;
  } else if (*next == 'b') {
    --index;
    ++next;
  }
  const int octave = *next == '-' ? '0' - next[1] : *next - '0';
  return static_cast<unsigned>(index + (octave + 2) * 12);
}

template <typename Read>
unsigned SumOfIndices(const Names& names, Read read) {
  unsigned sum = 0;
  for (const std::string& name : names) {
    unsigned index = read(name);
    benchmark::DoNotOptimize(index);
    sum += index;
  }
  return sum;
}

void AddIndices(const std::string& operation, const Names* names) {
  static std::unordered_map<std::string, unsigned> table;
  static absl::flat_hash_map<std::string, unsigned> flat_table;
  for (const std::string& name : *names) {
    table[name] = flat_table[name] = orvo::midi::GetNoteIndex(name);
  }
  const auto orvo = [](const std::string& name) {
    return unsigned{orvo::midi::GetNoteIndex(name)};
  };
  const auto std_table = [](const std::string& name) {
    return table.find(name)->second;
  };
  const auto absl_table = [](const std::string& name) {
    return flat_table.find(name)->second;
  };
  Compare(operation, 128,
          Contender{"orvo", [=] { return SumOfIndices(*names, orvo); }},
          Contender{"std", [=] { return SumOfIndices(*names, std_table); }},
          Contender{"absl", [=] { return SumOfIndices(*names, absl_table); }},
          Contender{"limit", [=] { return SumOfIndices(*names, BareIndex); }});
}

template <typename Name>
Names NamesOf(Name name) {
  Names names;
  for (const Note& note : kNotes) names.push_back(name(note));
  return names;
}

template <typename Name>
std::size_t SizeOfNames(Name name) {
  std::size_t size = 0;
  for (const Note& note : kNotes) {
    std::string text = name(note);
    benchmark::DoNotOptimize(text);
    size += text.size();
  }
  return size;
}

template <typename Orvo>
void AddNames(const std::string& operation, const Names* names,
              const absl::string_view* spellings, Orvo orvo) {
  const auto spelling = [=](const Note& note) {
    return spellings[note.GetIndex() % 12U];
  };
  const auto absl = [=](const Note& note) {
    return absl::StrCat(spelling(note), note.GetOctave());
  };
  const auto fmt = [=](const Note& note) {
    const absl::string_view text = spelling(note);
    return fmt::format("{}{}", fmt::string_view(text.data(), text.size()),
                       note.GetOctave());
  };
  const auto copy = [=](const Note& note) { return (*names)[note.GetIndex()]; };
  // Once, because the benchmarks compare no more than sizes.
  RequireSame(operation, "absl", NamesOf(absl), NamesOf(orvo));
  RequireSame(operation, "fmt", NamesOf(fmt), NamesOf(orvo));
  RequireSame(operation, "limit", NamesOf(copy), NamesOf(orvo));
  Compare(operation, 128, Contender{"orvo", [=] { return SizeOfNames(orvo); }},
          Contender{"absl", [=] { return SizeOfNames(absl); }},
          Contender{"fmt", [=] { return SizeOfNames(fmt); }},
          Contender{"limit", [=] { return SizeOfNames(copy); }});
}

void AddSpelling() {
  const auto orvo = [](const Note& note) {
    return orvo::midi::GetSharpSpelling(note.GetIndex());
  };
  const auto absl = [](const Note& note) {
    const absl::string_view spelling = kSharp[note.GetIndex() % 12U];
    return absl::StrCat(spelling.substr(0, 1), spelling.substr(1));
  };
  const auto copy = [](const Note& note) {
    return std::string(kSharp[note.GetIndex() % 12U]);
  };
  RequireSame("midi/sharp_spelling", "absl", NamesOf(absl), NamesOf(orvo));
  RequireSame("midi/sharp_spelling", "limit", NamesOf(copy), NamesOf(orvo));
  Compare("midi/sharp_spelling", 128,
          Contender{"orvo", [=] { return SizeOfNames(orvo); }},
          Contender{"absl", [=] { return SizeOfNames(absl); }},
          Contender{"limit", [=] { return SizeOfNames(copy); }});
}

template <typename Throw>
std::string MessageOf(Throw throw_error) {
  try {
    throw_error();
  } catch (const orvo::midi::InvalidNoteName& error) {
    return error.what();
  }
  return {};
}

[[gnu::noinline]] void ThrowInvalidName(const std::string& name) {
  throw orvo::midi::InvalidNoteName(name.substr(0, 1) +
                                    " is not a valid note name.");
}

void AddInvalidName() {
  for (const std::size_t size : {3u, 64u}) {
    const auto* name = Keep("H#" + std::string(size - 2, '3'));
    const auto orvo = [=] { orvo::midi::GetNoteIndex(*name); };
    const auto bare = [=] { ThrowInvalidName(*name); };
    Compare("midi/invalid_name", size,
            Contender{"orvo", [=] { return MessageOf(orvo); }},
            Contender{"limit", [=] { return MessageOf(bare); }});
  }
}

void AddAllNotes() {
  Compare("midi/all_notes", 128,
          Contender{"orvo",
                    [] {
                      auto notes = orvo::midi::GetAllMidiNotes();
                      benchmark::DoNotOptimize(notes.data());
                      return notes.size();
                    }},
          Contender{"std",
                    [] {
                      std::vector<Note> notes;
                      for (unsigned i = 0; i < 128; ++i) {
                        notes.emplace_back(static_cast<unsigned char>(i));
                      }
                      benchmark::DoNotOptimize(notes.data());
                      return notes.size();
                    }},
          Contender{"limit", [] {
                      std::vector<Note> notes = kNotes;
                      benchmark::DoNotOptimize(notes.data());
                      return notes.size();
                    }});
}

const bool registered = [] {
  static Names sharp;
  static Names flat;
  for (const Note& note : kNotes) {
    sharp.push_back(note.GetName());
    flat.push_back(note.GetEnharmonicName());
  }
  AddIndices("midi/note_index", &sharp);
  AddIndices("midi/note_index_flat", &flat);
  AddNames("midi/note_name", &sharp, kSharp,
           [](const Note& note) { return note.GetName(); });
  AddNames("midi/enharmonic_name", &flat, kFlat,
           [](const Note& note) { return note.GetEnharmonicName(); });
  AddSpelling();
  AddInvalidName();
  AddAllNotes();
  return true;
}();

}  // namespace
