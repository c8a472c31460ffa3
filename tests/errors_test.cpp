#include "orvo/errors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <type_traits>

namespace {

template <typename Base, typename Error>
bool IsCaughtAs(const Error& error) {
  try {
    throw error;
  } catch (const Base&) {
    return true;
  } catch (...) {
    return false;
  }
}

// Whether the error's one base is `Base`: derived from it, no larger than a
// runtime_error, and convertible without ambiguity.
template <typename Error, typename Base>
constexpr bool IsPlainChildOf() {
  return std::is_base_of_v<Base, Error> &&
         std::is_convertible_v<Error*, Base*> &&
         sizeof(Error) == sizeof(std::runtime_error) &&
         std::has_virtual_destructor_v<Error> &&
         std::is_constructible_v<Error, const std::string&> &&
         !std::is_default_constructible_v<Error>;
}

template <typename Error>
class EveryError : public testing::Test {};

using AllErrors =
    testing::Types<orvo::RuntimeError, orvo::OrvoRuntimeError, orvo::TimeError,
                   orvo::TimeValueError, orvo::path::PathError, orvo::LockError,
                   orvo::ListDirError, orvo::BadDir, orvo::midi::MidiError,
                   orvo::midi::InvalidNoteName, orvo::NotACOMM,
                   orvo::NoID3Found>;
TYPED_TEST_SUITE(EveryError, AllErrors);

TYPED_TEST(EveryError, AddsNothingToItsMessage) {
  EXPECT_STREQ(TypeParam("what went wrong").what(), "what went wrong");
  EXPECT_STREQ(TypeParam("").what(), "");
}

TYPED_TEST(EveryError, IsCaughtAsARuntimeError) {
  EXPECT_TRUE(IsCaughtAs<TypeParam>(TypeParam("")));
  EXPECT_TRUE(IsCaughtAs<std::runtime_error>(TypeParam("")));
  EXPECT_TRUE(IsCaughtAs<std::exception>(TypeParam("")));
}

TYPED_TEST(EveryError, SharesItsMessageWithItsCopies) {
  const TypeParam error("message");
  const TypeParam copy(error);  // NOLINT(performance-unnecessary-copy-*)
  EXPECT_EQ(error.what(), copy.what());
}

TEST(ErrorTree, HasExactlyTheseBases) {
  EXPECT_TRUE((IsPlainChildOf<orvo::RuntimeError, std::runtime_error>()));
  EXPECT_TRUE((IsPlainChildOf<orvo::OrvoRuntimeError, std::runtime_error>()));
  EXPECT_TRUE((IsPlainChildOf<orvo::TimeError, orvo::RuntimeError>()));
  EXPECT_TRUE((IsPlainChildOf<orvo::TimeValueError, orvo::OrvoRuntimeError>()));
  EXPECT_TRUE((IsPlainChildOf<orvo::path::PathError, orvo::RuntimeError>()));
  EXPECT_TRUE((IsPlainChildOf<orvo::LockError, std::runtime_error>()));
  EXPECT_TRUE((IsPlainChildOf<orvo::ListDirError, std::runtime_error>()));
  EXPECT_TRUE((IsPlainChildOf<orvo::BadDir, orvo::ListDirError>()));
  EXPECT_TRUE((IsPlainChildOf<orvo::midi::MidiError, std::runtime_error>()));
  EXPECT_TRUE(
      (IsPlainChildOf<orvo::midi::InvalidNoteName, orvo::midi::MidiError>()));
  EXPECT_TRUE((IsPlainChildOf<orvo::NotACOMM, std::runtime_error>()));
  EXPECT_TRUE((IsPlainChildOf<orvo::NoID3Found, std::runtime_error>()));
}

TEST(ErrorTree, LetsRuntimeErrorCatchTimeAndPathErrorsOnly) {
  EXPECT_TRUE(IsCaughtAs<orvo::RuntimeError>(orvo::TimeError("")));
  EXPECT_TRUE(IsCaughtAs<orvo::RuntimeError>(orvo::path::PathError("")));
  EXPECT_FALSE(IsCaughtAs<orvo::RuntimeError>(orvo::OrvoRuntimeError("")));
  EXPECT_FALSE(IsCaughtAs<orvo::RuntimeError>(orvo::TimeValueError("")));
  EXPECT_FALSE(IsCaughtAs<orvo::RuntimeError>(orvo::LockError("")));
  EXPECT_FALSE(IsCaughtAs<orvo::RuntimeError>(orvo::BadDir("")));
  EXPECT_FALSE(IsCaughtAs<orvo::RuntimeError>(orvo::midi::InvalidNoteName("")));
  EXPECT_FALSE(IsCaughtAs<orvo::RuntimeError>(orvo::NotACOMM("")));
  EXPECT_FALSE(IsCaughtAs<orvo::RuntimeError>(orvo::NoID3Found("")));
}

TEST(ErrorTree, LetsOrvoRuntimeErrorCatchTimeValueErrorsOnly) {
  EXPECT_TRUE(IsCaughtAs<orvo::OrvoRuntimeError>(orvo::TimeValueError("")));
  EXPECT_FALSE(IsCaughtAs<orvo::OrvoRuntimeError>(orvo::RuntimeError("")));
  EXPECT_FALSE(IsCaughtAs<orvo::OrvoRuntimeError>(orvo::TimeError("")));
  EXPECT_FALSE(IsCaughtAs<orvo::OrvoRuntimeError>(orvo::LockError("")));
}

TEST(ErrorTree, LetsListDirErrorCatchBadDir) {
  EXPECT_TRUE(IsCaughtAs<orvo::ListDirError>(orvo::BadDir("")));
  EXPECT_FALSE(IsCaughtAs<orvo::BadDir>(orvo::ListDirError("")));
}

}  // namespace
