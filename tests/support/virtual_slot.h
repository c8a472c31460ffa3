#ifndef ORVO_TESTS_SUPPORT_VIRTUAL_SLOT_H_
#define ORVO_TESTS_SUPPORT_VIRTUAL_SLOT_H_

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace orvo_test {

/// The first of the two words that the common ABI makes of a pointer to member.
template <typename Member>
std::uintptr_t FirstWord(Member member) {
  std::uintptr_t words[2];
  static_assert(sizeof member == sizeof words);
  std::memcpy(words, &member, sizeof words);
  return words[0];
}

/// Whether an operation is virtual: those that are not have addresses, which
/// are even.
template <typename Member>
bool IsVirtual(Member member) {
  return FirstWord(member) % 2 == 1;
}

/// The position of a virtual operation in its class's table, where a destructor
/// takes two: the common ABI stores one more than the offset in bytes in a
/// pointer to member.
template <typename Member>
std::size_t VirtualSlot(Member member) {
  return (FirstWord(member) - 1) / sizeof(void*);
}

}  // namespace orvo_test

#endif  // ORVO_TESTS_SUPPORT_VIRTUAL_SLOT_H_
