#include <array>
#include <functional>
#include <ostream>

#include "fuzz/fuzz.h"
#include "fuzz/memory_stream.h"
#include "orvo/uuid.h"

namespace {

using orvo_fuzz::Expect;

using Bytes = std::array<unsigned char, 16>;

// Keeps the last bytes that were written.
class Sink : public std::streambuf {
 public:
  Sink() { Clear(); }
  void Clear() { setp(bytes_, bytes_ + sizeof bytes_); }
  std::string_view written() const {
    return {pbase(), static_cast<std::size_t>(pptr() - pbase())};
  }

 private:
  char bytes_[64];
};

std::string_view ViewOf(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// From one layout to the other.
Bytes Exchange(const Bytes& b) {
  return {b[3], b[2], b[1],  b[0],  b[5],  b[4],  b[7],  b[6],
          b[8], b[9], b[10], b[11], b[12], b[13], b[14], b[15]};
}

void TestWriting(const orvo::UUID& uuid, bool little_endian,
                 const Bytes& expected) {
  static Sink sink;
  static std::ostream stream(&sink);
  sink.Clear();
  uuid.WriteBinary(stream, little_endian);
  Expect(sink.written() == ViewOf(expected));
}

orvo::UUID TestReading(std::string_view bytes, std::size_t piece,
                       bool little_endian) {
  static orvo_fuzz::MemoryStream memory;
  std::istream& stream = memory.Open(bytes, piece);
  orvo::UUID uuid(stream, little_endian);
  Expect(stream.fail() == (bytes.size() < 16));
  if (!stream.fail()) Expect(stream.tellg() == std::streamoff{16});

  Bytes read{};
  std::memcpy(read.data(), bytes.data(),
              std::min<std::size_t>(bytes.size(), 16));
  const Bytes network = little_endian ? Exchange(read) : read;
  TestWriting(uuid, false, network);
  TestWriting(uuid, true, Exchange(network));
  orvo::UUID same(network.data());
  Expect(uuid == same && !(uuid != same));
  same.bytes_le(Exchange(network).data());
  Expect(uuid == same && !(uuid < same));
  Expect(std::hash<orvo::UUID>()(uuid) == std::hash<orvo::UUID>()(same));
  uuid.change_endianness();
  TestWriting(uuid, false, Exchange(network));
  return same;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvo_fuzz::Input input(data, size);
  const auto mode = input.Take<std::uint8_t>();
  const std::size_t piece = 1 + mode / 8;
  const std::string first = input.TakeText(16);
  const std::string second = input.TakeRest();
  const orvo::UUID a = TestReading(first, piece, (mode & 1) != 0);
  const orvo::UUID b = TestReading(second, piece, (mode & 2) != 0);
  Expect((a < b) == (a.uuid_string() < b.uuid_string()));
  Expect((a == b) == (a.uuid_string() == b.uuid_string()));
  return 0;
}
