#include "orvo/strings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using testing::ElementsAre;

TEST(Strip, RemovesSpacesAtBothEndsOnly) {
  EXPECT_EQ(orvo::strip<std::string>("  a b  "), "a b");
  EXPECT_EQ(orvo::strip<std::string>("\ta\t"), "\ta\t");
  EXPECT_EQ(orvo::strip<std::string>("    "), "");
}

TEST(StringToNumber, ReadsAnInt) {
  int v = 7;
  EXPECT_TRUE(orvo::StringToNumber<int>(" 42 ", v));
  EXPECT_EQ(v, 42);
  EXPECT_FALSE(orvo::StringToNumber<int>("4x", v));
  EXPECT_EQ(v, 42);
  EXPECT_TRUE(orvo::StringToNumber<int>("-3.9", v));
  EXPECT_EQ(v, -3);
  EXPECT_EQ(orvo::StringToNumber<int>("x"), 0);
  EXPECT_EQ(orvo::StringToNumber<double>("1.5"), 1.5);
}

TEST(SplitString, CutsAtSeparators) {
  EXPECT_THAT(orvo::SplitString("a/b/c", '/', 1), ElementsAre("a", "b/c"));
  EXPECT_THAT(orvo::SplitString<char>("/a/", '/', -1),
              ElementsAre("", "a", ""));
}

TEST(JoinString, Joins) {
  EXPECT_EQ(orvo::JoinString({"a", "b"}, ", "), "a, b");
  EXPECT_EQ(orvo::JoinString({}, ", "), "");
  EXPECT_EQ(orvo::JoinString({""}, "-"), "");
  const std::vector<std::string> items = {"a", "", "b"};
  EXPECT_EQ(orvo::JoinString(items.begin(), items.end(), '/'), "a//b");
}

TEST(TokenizeString, Tokenizes) {
  EXPECT_THAT(orvo::tokenize_string("+", "1 + 2"), ElementsAre("1", "+", "2"));
  EXPECT_THAT(orvo::tokenize_string({"(", ")"}, "f(x)"),
              ElementsAre("f", "(", "x", ")", ""));
  EXPECT_THAT(orvo::tokenize_string({"==", "="}, "a==b"),
              ElementsAre("a", "=", "=", "", "b"));
}

TEST(FormatParagraph, Wraps) {
  EXPECT_EQ(orvo::format_paragraph("aa bb cc\n", 2, 7), "  aa bb\n  \n  cc\n");
  EXPECT_EQ(orvo::format_paragraph("one two", 0, 80), "");
  EXPECT_EQ(orvo::format_paragraph("a  b\n", 0, 80), "a  b\n");
}

}  // namespace
