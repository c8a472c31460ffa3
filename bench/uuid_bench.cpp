// UUIDs beside Boost, POCO, libuuid, and the least work that yields the same
// result.

#include <Poco/UUID.h>
#include <benchmark/benchmark.h>
#include <uuid/uuid.h>

#include <algorithm>
#include <array>
#include <boost/uuid/string_generator.hpp>
#include <boost/uuid/uuid.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <cstring>
#include <sstream>
#include <string>

#include "bench/compare.h"
#include "orvo/uuid.h"

namespace {

using Bytes = std::array<unsigned char, 16>;
using orvo_bench::Compare;
using orvo_bench::Contender;
using orvo_bench::RequireSame;

const Bytes kBytes = {0x12, 0x34, 0x56, 0x78, 0x9a, 0xbc, 0xde, 0xf0,
                      0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef};
std::string text = "12345678-9abc-def0-0123-456789abcdef";

template <typename Uuid>
Bytes BytesOf(const Uuid& uuid) {
  static_assert(sizeof uuid == sizeof(Bytes));
  Bytes bytes;
  std::memcpy(&bytes, &uuid, sizeof bytes);
  return bytes;
}

Bytes BytesOf(const Poco::UUID& uuid) {
  Bytes bytes;
  uuid.copyTo(reinterpret_cast<char*>(bytes.data()));
  return bytes;
}

Poco::UUID MakePocoUuid() {
  Poco::UUID uuid;
  uuid.copyFrom(reinterpret_cast<const char*>(kBytes.data()));
  return uuid;
}

constexpr char kDigits[] = "0123456789abcdef";

std::string PrintWithTable(const Bytes& bytes) {
  std::string result(36, '-');
  char* next = result.data();
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) ++next;
    *next++ = kDigits[bytes[i] >> 4];
    *next++ = kDigits[bytes[i] & 15];
  }
  return result;
}

std::array<signed char, 256> MakeDigitValues() {
  std::array<signed char, 256> values;
  values.fill(-1);
  for (int i = 0; i < 16; ++i) {
    values[static_cast<unsigned char>(kDigits[i])] =
        static_cast<signed char>(i);
  }
  return values;
}
const std::array<signed char, 256> kDigitValues = MakeDigitValues();

Bytes ParseWithTable(const std::string& uuid) {
  Bytes bytes{};
  if (uuid.size() != 36) return bytes;
  const char* next = uuid.data();
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if ((i == 4 || i == 6 || i == 8 || i == 10) && *next++ != '-') return {};
    const int high = kDigitValues[static_cast<unsigned char>(*next++)];
    const int low = kDigitValues[static_cast<unsigned char>(*next++)];
    if ((high | low) < 0) return {};
    bytes[i] = static_cast<unsigned char>(high << 4 | low);
  }
  return bytes;
}

void AddText() {
  static const orvo::UUID uuid(kBytes.data());
  static const Poco::UUID poco = MakePocoUuid();
  static const auto boost_uuid = boost::uuids::string_generator()(text);
  Compare(
      "binary/uuid_print", 36,
      Contender{"orvo", [] { return uuid.uuid_string(); }},
      Contender{"poco", [] { return poco.toString(); }},
      Contender{"boost", [] { return boost::uuids::to_string(boost_uuid); }},
      Contender{"libuuid",
                [] {
                  char result[37];
                  uuid_unparse_lower(kBytes.data(), result);
                  return std::string(result, 36);
                }},
      Contender{"limit", [] { return PrintWithTable(kBytes); }});
  Compare(
      "binary/uuid_parse", 36,
      Contender{"orvo", [] { return BytesOf(orvo::UUID(text)); }},
      Contender{"poco", [] { return BytesOf(Poco::UUID(text)); }},
      Contender{"boost",
                [] { return BytesOf(boost::uuids::string_generator()(text)); }},
      Contender{"libuuid",
                [] {
                  Bytes bytes;
                  uuid_parse(text.c_str(), bytes.data());
                  return bytes;
                }},
      Contender{"limit", [] { return ParseWithTable(text); }});
}

// What change_endianness() does.
void ReverseNumbers(Bytes& bytes) {
  auto* const first = bytes.begin();
  std::reverse(first, first + 4);
  std::reverse(first + 4, first + 6);
  std::reverse(first + 6, first + 8);
}

void CheckEndianness() {
  orvo::UUID changed(kBytes.data());
  changed.change_endianness();
  Bytes reversed = kBytes;
  ReverseNumbers(reversed);
  RequireSame("binary/uuid_change_endianness", "std", reversed,
              BytesOf(changed));
}

void AddBytes() {
  static orvo::UUID uuids[] = {orvo::UUID(text), orvo::UUID(text)};
  static Poco::UUID pocos[] = {Poco::UUID(text), Poco::UUID(text)};
  static boost::uuids::uuid boosts[] = {boost::uuids::string_generator()(text),
                                        boost::uuids::string_generator()(text)};
  static Bytes bytes[] = {kBytes, kBytes};
  benchmark::DoNotOptimize(&uuids);
  benchmark::DoNotOptimize(&pocos);
  benchmark::DoNotOptimize(&boosts);
  benchmark::DoNotOptimize(&bytes);
  Compare("binary/uuid_equal", 16,
          Contender{"orvo", [] { return uuids[0] == uuids[1]; }},
          Contender{"poco", [] { return pocos[0] == pocos[1]; }},
          Contender{"boost", [] { return boosts[0] == boosts[1]; }},
          Contender{"limit",
                    [] { return std::memcmp(&bytes[0], &bytes[1], 16) == 0; }});

  CheckEndianness();
  static orvo::UUID changing(kBytes.data());
  static Bytes reversing = kBytes;
  Compare("binary/uuid_change_endianness", 16,
          Contender{"orvo",
                    [] {
                      changing.change_endianness();
                      benchmark::DoNotOptimize(changing);
                      return true;
                    }},
          Contender{"std", [] {
                      ReverseNumbers(reversing);
                      benchmark::DoNotOptimize(reversing);
                      return true;
                    }});
}

void CheckWriting() {
  std::ostringstream stream;
  orvo::UUID(kBytes.data()).WriteBinary(stream, false);
  RequireSame("binary/uuid_write", "limit",
              std::string(kBytes.begin(), kBytes.end()), stream.str());
}

void AddStreams() {
  CheckWriting();
  static std::stringstream stream(std::string(64, 'x'));
  static const orvo::UUID uuid(kBytes.data());
  Compare("binary/uuid_write", 16,
          Contender{"orvo",
                    [] {
                      stream.seekp(0);
                      uuid.WriteBinary(stream, false);
                      return stream.good();
                    }},
          Contender{"limit", [] {
                      stream.seekp(0);
                      stream.write(reinterpret_cast<const char*>(kBytes.data()),
                                   16);
                      return stream.good();
                    }});
  Compare("binary/uuid_read", 16,
          Contender{"orvo",
                    [] {
                      stream.seekg(0);
                      return BytesOf(orvo::UUID(stream, false));
                    }},
          Contender{"limit", [] {
                      stream.seekg(0);
                      Bytes bytes;
                      stream.read(reinterpret_cast<char*>(bytes.data()), 16);
                      return bytes;
                    }});
}

const bool registered = [] {
  AddText();
  AddBytes();
  AddStreams();
  return true;
}();

}  // namespace
