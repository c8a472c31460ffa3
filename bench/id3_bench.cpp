// The comment of an ID3 tag in memory beside libid3tag and TagLib; the size is
// the number of frames in front of the comment, or the length of the comment.

#include <benchmark/benchmark.h>
#include <id3tag.h>
#include <taglib/commentsframe.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/tbytevectorstream.h>

#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>

#include "bench/compare.h"
#include "orvo/id3.h"
#include "tests/support/id3_writer.h"

namespace {

using orvo_bench::Compare;
using orvo_bench::Contender;

std::string ReadWithOrvo(std::istream& stream) {
  stream.clear();
  stream.seekg(0);
  return orvo::get_comm(stream);
}

std::string ReadWithLibid3tag(const std::string& bytes) {
  id3_tag* const tag = id3_tag_parse(
      reinterpret_cast<const id3_byte_t*>(bytes.data()), bytes.size());
  const id3_frame* const frame = id3_tag_findframe(tag, "COMM", 0);
  id3_latin1_t* const latin1 = id3_ucs4_latin1duplicate(
      id3_field_getfullstring(id3_frame_field(frame, 3)));
  std::string text = reinterpret_cast<const char*>(latin1);
  std::free(latin1);
  id3_tag_delete(tag);
  return text;
}

std::string ReadWithTaglib(const TagLib::ByteVector& bytes) {
  TagLib::ByteVectorStream stream(bytes);
  TagLib::MPEG::File file(&stream, TagLib::ID3v2::FrameFactory::instance(),
                          false);
  return file.ID3v2Tag()->frameList("COMM").front()->toString().to8Bit();
}

void AddComment(const std::string& operation, std::size_t size,
                const std::string& frames, const std::string& comment) {
  const std::string bytes =
      orvo_test::Id3Tag(frames + orvo_test::Id3Comment("", comment));
  const auto stream = std::make_shared<std::istringstream>(bytes);
  const TagLib::ByteVector vector(bytes.data(),
                                  static_cast<unsigned>(bytes.size()));
  Compare(operation, size,
          Contender{"orvo", [=] { return ReadWithOrvo(*stream); }},
          Contender{"libid3tag", [=] { return ReadWithLibid3tag(bytes); }},
          Contender{"taglib", [=] { return ReadWithTaglib(vector); }});
}

const bool registered = [] {
  for (const std::size_t count : {0u, 8u, 100u}) {
    std::string frames;
    for (std::size_t i = 0; i < count; ++i) {
      frames +=
          orvo_test::Id3Frame("TXXX", std::string("\0key\0some text", 14));
    }
    AddComment("binary/id3_comment", count, frames, std::string(120, 'c'));
  }
  for (const std::size_t size : {1000u, 8000u, 64000u}) {
    AddComment("binary/id3_comment_long", size, "", std::string(size, 'x'));
  }
  return true;
}();

}  // namespace
