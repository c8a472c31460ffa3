#ifndef ORVO_TESTS_SUPPORT_ID3_WRITER_H_
#define ORVO_TESTS_SUPPORT_ID3_WRITER_H_

#include <cstdint>
#include <string>

namespace orvo_test {

/// The number in four bytes, high byte first.
std::string BigEndian(std::uint32_t number);

/// A frame of an ID3 version 2.3 tag.
std::string Id3Frame(const std::string& identifier, const std::string& body);

/// The same with a size that the body need not have.
std::string Id3Frame(const std::string& identifier, std::uint32_t size,
                     const std::string& body);

/// A comment frame. @param encoding  0 for ISO-8859-1.
std::string Id3Comment(const std::string& description, const std::string& text,
                       char encoding = 0);

/// A tag of the given frames.
std::string Id3Tag(const std::string& frames, unsigned char flags = 0);

/// The same with a size, below 2^28, that the frames need not have.
std::string Id3Tag(std::uint32_t size, const std::string& frames,
                   unsigned char flags = 0);

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_ID3_WRITER_H_
