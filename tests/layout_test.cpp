// The layout that applications are compiled with is the same for every
// compiler, language standard, build type and assertion setting.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <type_traits>

#include "orvo/orvo.h"

namespace {

#if defined __x86_64__ && defined __GLIBCXX__ && !defined _GLIBCXX_DEBUG

struct Layout {
  const char* name;
  std::size_t size;
  std::size_t alignment;
  std::size_t expected_size;
  std::size_t expected_alignment;
};

template <typename T>
constexpr Layout LayoutOf(const char* name, std::size_t size,
                          std::size_t alignment) {
  return {name, sizeof(T), alignof(T), size, alignment};
}

TEST(Layout, KeepsTheSizeOfEachClass) {
  const Layout layouts[] = {
      LayoutOf<orvo::BadDir>("BadDir", 16, 8),
      LayoutOf<orvo::COMMFrame>("COMMFrame", 80, 8),
      LayoutOf<orvo::Chunk>("Chunk", 48, 8),
      LayoutOf<orvo::Condition>("Condition", 48, 8),
      LayoutOf<orvo::CoutBuffer>("CoutBuffer", 384, 8),
      LayoutOf<orvo::Deadline>("Deadline", 8, 8),
      LayoutOf<orvo::DebugLock>("DebugLock", 16, 8),
      LayoutOf<orvo::DebugLockImpl_>("DebugLockImpl_", 320, 8),
      LayoutOf<orvo::DebugRLock>("DebugRLock", 16, 8),
      LayoutOf<orvo::DebugRLockImpl_>("DebugRLockImpl_", 368, 8),
      LayoutOf<orvo::DebugScopeLock>("DebugScopeLock", 96, 8),
      LayoutOf<orvo::ExtendedHeader>("ExtendedHeader", 4, 4),
      LayoutOf<orvo::FrameHeader>("FrameHeader", 10, 1),
      LayoutOf<orvo::FrameParts>("FrameParts", 168, 8),
      LayoutOf<orvo::ID3Header>("ID3Header", 10, 1),
      LayoutOf<orvo::ListDirError>("ListDirError", 16, 8),
      LayoutOf<orvo::Lock>("Lock", 16, 8),
      LayoutOf<orvo::LockError>("LockError", 16, 8),
      LayoutOf<orvo::LockImpl_>("LockImpl_", 80, 8),
      LayoutOf<orvo::LockingCodeReference>("LockingCodeReference", 72, 8),
      LayoutOf<orvo::MonotonicSystemClock_>("MonotonicSystemClock_", 8, 8),
      LayoutOf<orvo::NaturalLess>("NaturalLess", 1, 1),
      LayoutOf<orvo::NoID3Found>("NoID3Found", 16, 8),
      LayoutOf<orvo::NodeT>("NodeT", 6, 1),
      LayoutOf<orvo::NotACOMM>("NotACOMM", 16, 8),
      LayoutOf<orvo::NumericString>("NumericString", 56, 8),
      LayoutOf<orvo::NumericStringCompare>("NumericStringCompare", 1, 1),
      LayoutOf<orvo::OrvoLock>("OrvoLock", 8, 8),
      LayoutOf<orvo::OrvoRuntimeError>("OrvoRuntimeError", 16, 8),
      LayoutOf<orvo::Pred>("Pred", 8, 8),
      LayoutOf<orvo::RLock>("RLock", 16, 8),
      LayoutOf<orvo::RLockImpl_>("RLockImpl_", 80, 8),
      LayoutOf<orvo::RuntimeError>("RuntimeError", 16, 8),
      LayoutOf<orvo::ScopeLock>("ScopeLock", 24, 8),
      LayoutOf<orvo::ScopeLockBase>("ScopeLockBase", 24, 8),
      LayoutOf<orvo::ScopedCoutCapture>("ScopedCoutCapture", 128, 8),
      LayoutOf<orvo::SingleLine>("SingleLine", 32, 8),
      LayoutOf<orvo::StackFrame>("StackFrame", 192, 8),
      LayoutOf<orvo::StrGen>("StrGen", 1, 1),
      LayoutOf<orvo::ThreadNames>("ThreadNames", 88, 8),
      LayoutOf<orvo::ThreadSafeOStream>("ThreadSafeOStream", 576, 8),
      LayoutOf<orvo::TimeError>("TimeError", 16, 8),
      LayoutOf<orvo::TimeValue>("TimeValue", 8, 8),
      LayoutOf<orvo::TimeValueError>("TimeValueError", 16, 8),
      LayoutOf<orvo::Tokenizer_>("Tokenizer_", 24, 8),
      LayoutOf<orvo::UUID>("UUID", 16, 1),
      LayoutOf<orvo::midi::InvalidNoteName>("InvalidNoteName", 16, 8),
      LayoutOf<orvo::midi::MidiError>("MidiError", 16, 8),
      LayoutOf<orvo::midi::Note>("Note", 1, 1),
      LayoutOf<orvo::path::PathError>("PathError", 16, 8),
  };
  for (const Layout& layout : layouts) {
    SCOPED_TRACE(layout.name);
    EXPECT_EQ(layout.size, layout.expected_size);
    EXPECT_EQ(layout.alignment, layout.expected_alignment);
  }
}

TEST(Layout, KeepsThePlacesOfPublicMembers) {
  EXPECT_EQ(offsetof(orvo::ID3Header, identifier), 0U);
  EXPECT_EQ(offsetof(orvo::ID3Header, version), 3U);
  EXPECT_EQ(offsetof(orvo::ID3Header, flags), 5U);
  EXPECT_EQ(offsetof(orvo::ID3Header, size_bytes), 6U);
  EXPECT_EQ(offsetof(orvo::FrameHeader, identifier), 0U);
  EXPECT_EQ(offsetof(orvo::FrameHeader, size_bytes), 4U);
  EXPECT_EQ(offsetof(orvo::FrameHeader, flags), 8U);
  EXPECT_EQ(offsetof(orvo::StackFrame, number), 0U);
  EXPECT_EQ(offsetof(orvo::StackFrame, image), 32U);
  EXPECT_EQ(offsetof(orvo::StackFrame, address), 64U);
  EXPECT_EQ(offsetof(orvo::StackFrame, symbol), 96U);
  EXPECT_EQ(offsetof(orvo::StackFrame, offset), 128U);
  EXPECT_EQ(offsetof(orvo::StackFrame, text), 160U);
}

// Grants a look at what LockImpl_ hands down to other implementations.
struct OpenLockImpl : orvo::LockImpl_ {
  OpenLockImpl() : LockImpl_("open") {}
  std::ptrdiff_t OffsetOf(const void* member) const {
    return static_cast<const char*>(member) -
           reinterpret_cast<const char*>(static_cast<const LockImpl_*>(this));
  }
  std::ptrdiff_t OffsetOfMutex() const { return OffsetOf(&mutex_); }
  std::ptrdiff_t OffsetOfName() const { return OffsetOf(&name_); }
};

TEST(Layout, KeepsThePlacesOfMembersThatDerivedClassesUse) {
  const OpenLockImpl lock;
  EXPECT_EQ(lock.OffsetOfMutex(), 8);
  EXPECT_EQ(lock.OffsetOfName(), 48);
}

// Passed and returned in registers, which every module has to agree on.
TEST(Layout, KeepsValuesInRegisters) {
  static_assert(std::is_trivially_copyable_v<orvo::TimeValue>);
  static_assert(std::is_trivially_copyable_v<orvo::UUID>);
  static_assert(std::is_trivially_copyable_v<orvo::midi::Note>);
  static_assert(std::is_trivially_copyable_v<orvo::Deadline>);
  static_assert(std::is_trivially_copyable_v<orvo::NodeT>);
}

#else

TEST(Layout, IsKeptForOneMachine) {
  GTEST_SKIP() << "The numbers are those of x86-64 and libstdc++.";
}

#endif

}  // namespace
