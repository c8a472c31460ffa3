#include "orvo/path.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <initializer_list>
#include <list>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using orvo::path::basename;
using orvo::path::basename_no_ext;
using orvo::path::dirname;
using orvo::path::extension;
using orvo::path::Join;
using orvo::path::relpath;
using orvo::path::split;
using orvo::path::split_to_vector;
using orvo::path::splitext;
using testing::ElementsAre;
using testing::Pair;

// Literal models, slow and plain: what the fast functions are held against.
namespace model {

std::pair<std::string, std::string> Split(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  if (slash == std::string::npos) return {path, ""};
  return {path.substr(0, slash), path.substr(slash + 1)};
}

std::pair<std::string, std::string> Splitext(const std::string& path) {
  const std::size_t dot = path.find_last_of('.');
  if (dot == std::string::npos) return {path, ""};
  return {path.substr(0, dot), path.substr(dot)};
}

std::string Basename(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string Dirname(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? "" : path.substr(0, slash);
}

std::vector<std::string> SplitToVector(const std::string& path) {
  std::deque<std::string> components;
  std::pair<std::string, std::string> parts = Split(path);
  while (!parts.second.empty()) {
    components.push_front(parts.second);
    parts = Split(parts.first);
  }
  components.push_front(parts.first);
  return {components.begin(), components.end()};
}

std::string Join(const std::vector<std::string>& parts) {
  std::string glued;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) glued += '/';
    glued += parts[i];
  }
  std::string result;
  for (const char c : glued) {
    if (c != '/' || result.empty() || result.back() != '/') result += c;
  }
  return result;
}

std::string Relpath(const std::string& path,
                    const std::vector<std::string>& path_components,
                    const std::vector<std::string>& start_components) {
  if (path_components.front() != start_components.front()) return path;
  if (path_components.size() < start_components.size()) return path;
  const auto rest =
      std::mismatch(start_components.begin(), start_components.end(),
                    path_components.begin())
          .second;
  return Join({rest, path_components.end()});
}

}  // namespace model

// All texts over the characters that matter, up to a length.
std::vector<std::string> AllTexts(std::size_t longest) {
  std::vector<std::string> texts = {""};
  for (std::size_t i = 0; texts[i].size() < longest; ++i) {
    for (const char c : {'/', '.', 'a', 'b'}) texts.push_back(texts[i] + c);
  }
  return texts;
}

TEST(Join, PutsASlashBetweenTwoParts) {
  EXPECT_EQ(Join("a", "b"), "a/b");
  EXPECT_EQ(Join(std::string("a"), std::string("b")), "a/b");
}

TEST(Join, TakesTwoLiteralsForTwoParts) {
  EXPECT_EQ(Join("a/", "/b"), "a/b");
  const char* const a = "a";
  EXPECT_EQ(Join(a, "bcd"), "a/bcd");
  EXPECT_EQ(Join("same", "same"), "same/same");
}

TEST(Join, TakesBracesForAListOfParts) {
  EXPECT_EQ(Join({"a", "b"}), "a/b");
  EXPECT_EQ(Join({"a///b"}), "a/b");
  EXPECT_EQ(Join({"/", "x"}), "/x");
  EXPECT_EQ(Join({"a", "b", "c"}), "a/b/c");
  EXPECT_EQ(Join({std::string("a"), std::string("b")}), "a/b");
  EXPECT_EQ(Join({}), "");
}

TEST(Join, TakesRangesOfStrings) {
  const std::initializer_list<std::string> parts = {"a", "b", "c"};
  std::vector<std::string> vector = parts;
  const std::vector<std::string>& constant = vector;
  const std::list<std::string> list = parts;
  const std::deque<std::string> deque = parts;
  EXPECT_EQ(Join(parts.begin(), parts.end()), "a/b/c");
  EXPECT_EQ(Join(vector.begin(), vector.end()), "a/b/c");
  EXPECT_EQ(Join(constant.begin(), constant.end()), "a/b/c");
  EXPECT_EQ(Join(vector.rbegin(), vector.rend()), "c/b/a");
  EXPECT_EQ(Join(list.begin(), list.end()), "a/b/c");
  EXPECT_EQ(Join(deque.begin(), deque.end()), "a/b/c");
  EXPECT_EQ(Join<const std::string*>(vector.data(), vector.data() + 2), "a/b");
  EXPECT_EQ(Join<std::vector<std::string>::iterator>(vector.begin() + 1,
                                                     vector.end()),
            "b/c");
}

TEST(Join, IsEmptyForAnEmptyRange) {
  const std::vector<std::string> none;
  EXPECT_EQ(Join(none.begin(), none.end()), "");
}

TEST(Join, CountsEmptyParts) {
  EXPECT_EQ(Join({"", "a"}), "/a");
  EXPECT_EQ(Join({"a", ""}), "a/");
  EXPECT_EQ(Join({"a", "", "b"}), "a/b");
  EXPECT_EQ(Join({""}), "");
  EXPECT_EQ(Join("", ""), "/");
}

TEST(Join, CutsEveryRunOfSlashesToOne) {
  EXPECT_EQ(Join("//a//", "//b//c//"), "/a/b/c/");
  EXPECT_EQ(Join({"////"}), "/");
}

TEST(Join, KeepsDotComponents) {
  EXPECT_EQ(Join({".", "a", "..", "b/."}), "./a/../b/.");
}

TEST(Join, KeepsNulCharacters) {
  EXPECT_EQ(Join(std::string("a\0b", 3), "c"), std::string("a\0b/c", 5));
}

TEST(Basename, FollowsTheLastSlash) {
  EXPECT_EQ(basename("a/b"), "b");
  EXPECT_EQ(basename("/a/b.c"), "b.c");
  EXPECT_EQ(basename("/a"), "a");
}

TEST(Basename, IsEmptyBehindASlashAtTheEnd) {
  EXPECT_EQ(basename("a/"), "");
  EXPECT_EQ(basename("/"), "");
}

TEST(Basename, IsTheWholePathWithoutASlash) {
  EXPECT_EQ(basename("b"), "b");
  EXPECT_EQ(basename(""), "");
}

TEST(Dirname, PrecedesTheLastSlash) {
  EXPECT_EQ(dirname("a/b"), "a");
  EXPECT_EQ(dirname("/a/b"), "/a");
  EXPECT_EQ(dirname("a/b/"), "a/b");
  EXPECT_EQ(dirname("a//b"), "a/");
}

TEST(Dirname, IsEmptyWithoutASlash) {
  EXPECT_EQ(dirname("b"), "");
  EXPECT_EQ(dirname(""), "");
}

TEST(Dirname, IsEmptyBelowTheRoot) {
  EXPECT_EQ(dirname("/b"), "");
  EXPECT_EQ(dirname("/"), "");
}

TEST(Split, CutsAtTheLastSlash) {
  EXPECT_THAT(split("a/b/c"), Pair("a/b", "c"));
  EXPECT_THAT(split("/b"), Pair("", "b"));
  EXPECT_THAT(split("b/"), Pair("b", ""));
  EXPECT_THAT(split("a//b"), Pair("a/", "b"));
  EXPECT_THAT(split("/"), Pair("", ""));
}

TEST(Split, PutsAPathWithoutASlashFirst) {
  EXPECT_THAT(split("b"), Pair("b", ""));
  EXPECT_THAT(split(""), Pair("", ""));
}

TEST(Splitext, CutsBeforeTheLastFullStop) {
  EXPECT_THAT(splitext("a.txt"), Pair("a", ".txt"));
  EXPECT_THAT(splitext("archive.tar.gz"), Pair("archive.tar", ".gz"));
  EXPECT_THAT(splitext(".profile"), Pair("", ".profile"));
  EXPECT_THAT(splitext("a."), Pair("a", "."));
}

TEST(Splitext, DoesNotCareForSlashes) {
  EXPECT_THAT(splitext("a.b/c"), Pair("a", ".b/c"));
}

TEST(Splitext, PutsTheWholeTextFirstWithoutAFullStop) {
  EXPECT_THAT(splitext("a/b"), Pair("a/b", ""));
  EXPECT_THAT(splitext(""), Pair("", ""));
}

TEST(Extension, IsThatOfTheBaseName) {
  EXPECT_EQ(extension("a/b.c"), ".c");
  EXPECT_EQ(extension("a/b.tar.gz"), ".gz");
  EXPECT_EQ(extension("a/.profile"), ".profile");
  EXPECT_EQ(extension("b."), ".");
}

TEST(Extension, IsEmptyWithoutAFullStopInTheBaseName) {
  EXPECT_EQ(extension("a.b/c"), "");
  EXPECT_EQ(extension("a.b/"), "");
  EXPECT_EQ(extension("c"), "");
  EXPECT_EQ(extension(""), "");
}

TEST(BasenameNoExt, PrecedesTheLastFullStopOfTheBaseName) {
  EXPECT_EQ(basename_no_ext("a/b.c"), "b");
  EXPECT_EQ(basename_no_ext("a/b.tar.gz"), "b.tar");
  EXPECT_EQ(basename_no_ext("a/.profile"), "");
}

TEST(BasenameNoExt, IsTheBaseNameWithoutAFullStop) {
  EXPECT_EQ(basename_no_ext("a.b/c"), "c");
  EXPECT_EQ(basename_no_ext("a.b/"), "");
  EXPECT_EQ(basename_no_ext(""), "");
}

TEST(SplitToVector, ReturnsTheComponentsInOrder) {
  EXPECT_THAT(split_to_vector("a/b/c"), ElementsAre("a", "b", "c"));
  EXPECT_THAT(split_to_vector("./../a.b"), ElementsAre(".", "..", "a.b"));
}

TEST(SplitToVector, BeginsAnAbsolutePathWithAnEmptyComponent) {
  EXPECT_THAT(split_to_vector("/a/b"), ElementsAre("", "a", "b"));
}

TEST(SplitToVector, ReturnsAPathWithoutASlashAlone) {
  EXPECT_THAT(split_to_vector("a"), ElementsAre("a"));
}

TEST(SplitToVector, ReturnsOneEmptyComponentForNothingAndForTheRoot) {
  EXPECT_THAT(split_to_vector(""), ElementsAre(""));
  EXPECT_THAT(split_to_vector("/"), ElementsAre(""));
}

TEST(SplitToVector, StopsAtASlashAtTheEnd) {
  EXPECT_THAT(split_to_vector("a/b/"), ElementsAre("a/b"));
  EXPECT_THAT(split_to_vector("/a/b//"), ElementsAre("/a/b/"));
}

TEST(SplitToVector, StopsAtADoubledSlash) {
  EXPECT_THAT(split_to_vector("a//b"), ElementsAre("a", "b"));
  EXPECT_THAT(split_to_vector("a/b//c/d"), ElementsAre("a/b", "c", "d"));
  EXPECT_THAT(split_to_vector("a///b"), ElementsAre("a/", "b"));
  EXPECT_THAT(split_to_vector("//a"), ElementsAre("", "a"));
}

TEST(Relpath, StripsTheComponentsOfTheStart) {
  EXPECT_EQ(relpath("/r/dev/src/a.cpp", "/r/dev"), "src/a.cpp");
  EXPECT_EQ(relpath("a/b/c", "a"), "b/c");
  EXPECT_EQ(relpath("/a", ""), "a");
}

TEST(Relpath, StripsTheSharedComponentsWithoutClimbing) {
  EXPECT_EQ(relpath("/a/b/c", "/a/x"), "b/c");
  EXPECT_EQ(relpath("/a/b", "/x/y"), "a/b");
}

TEST(Relpath, ComparesWholeComponents) {
  EXPECT_EQ(relpath("/a/bc", "/a/b"), "bc");
  EXPECT_EQ(relpath("/a/b", "/a/bc"), "b");
}

TEST(Relpath, IsEmptyForThePathItself) {
  EXPECT_EQ(relpath("/a/b", "/a/b"), "");
  EXPECT_EQ(relpath("", ""), "");
}

TEST(Relpath, LeavesAPathAloneWhoseFirstComponentDiffers) {
  EXPECT_EQ(relpath("a/b", "/a"), "a/b");
  EXPECT_EQ(relpath("/a/b", "a"), "/a/b");
  EXPECT_EQ(relpath("x//y", "z"), "x//y");
}

TEST(Relpath, LeavesAPathAloneThatHasFewerComponents) {
  EXPECT_EQ(relpath("/a", "/a/b"), "/a");
  EXPECT_EQ(relpath("/a/b", "/x/y/z"), "/a/b");
}

TEST(Relpath, TakesSlashTerminatedAndDoubledSlashesAsSplitToVectorDoes) {
  EXPECT_EQ(relpath("/a/b/c", "/a/b/"), "/a/b/c");
  EXPECT_EQ(relpath("/a/b//c", "/a/b/"), "c");
  EXPECT_EQ(relpath("a//b/c", "a"), "b/c");
}

TEST(TextFunctions, EqualTheirModelsForAllShortPaths) {
  for (const std::string& path : AllTexts(8)) {
    const auto model_extension = model::Splitext(model::Basename(path));
    ASSERT_EQ(basename(path), model::Basename(path)) << path;
    ASSERT_EQ(dirname(path), model::Dirname(path)) << path;
    ASSERT_EQ(split(path), model::Split(path)) << path;
    ASSERT_EQ(splitext(path), model::Splitext(path)) << path;
    ASSERT_EQ(basename_no_ext(path), model_extension.first) << path;
    ASSERT_EQ(extension(path), model_extension.second) << path;
    ASSERT_EQ(split_to_vector(path), model::SplitToVector(path)) << path;
  }
}

TEST(Join, EqualsItsModelForAllShortParts) {
  for (const std::string& part : AllTexts(8)) {
    ASSERT_EQ(Join({part}), model::Join({part})) << part;
  }
  const std::vector<std::string> parts = AllTexts(4);
  for (const std::string& a : parts) {
    for (const std::string& b : parts) {
      ASSERT_EQ(Join(a, b), model::Join({a, b})) << a << " and " << b;
      ASSERT_EQ(Join({a, b, a}), model::Join({a, b, a})) << a << " and " << b;
    }
  }
}

constexpr unsigned kSeed = 1;

// Slashes are rare in most of the texts, so that many have none doubled.
std::string RandomText(std::minstd_rand& random) {
  const auto rarity = 2 + random() % 60;
  constexpr std::string_view others = "xx.0\xaf\xae";
  std::string text(random() % 100, ' ');
  for (char& c : text) {
    c = random() % rarity == 0 ? '/' : others[random() % others.size()];
  }
  return text;
}

TEST(Join, EqualsItsModelForLongPaths) {
  SCOPED_TRACE(kSeed);
  std::minstd_rand random(kSeed);  // NOLINT(cert-msc*): repeatable
  for (int i = 0; i < 20000; ++i) {
    const std::string part = RandomText(random);
    ASSERT_EQ(Join({part}), model::Join({part})) << part;
  }
}

TEST(SplitToVector, EqualsItsModelForLongPaths) {
  SCOPED_TRACE(kSeed);
  std::minstd_rand random(kSeed);  // NOLINT(cert-msc*): repeatable
  for (int i = 0; i < 20000; ++i) {
    const std::string path = RandomText(random);
    ASSERT_EQ(split_to_vector(path), model::SplitToVector(path)) << path;
  }
}

TEST(Relpath, EqualsItsModelForLongPaths) {
  SCOPED_TRACE(kSeed);
  std::minstd_rand random(kSeed);  // NOLINT(cert-msc*): repeatable
  for (int i = 0; i < 20000; ++i) {
    const std::string start = RandomText(random);
    const std::string path = start + "/" + RandomText(random);
    ASSERT_EQ(relpath(path, start),
              model::Relpath(path, model::SplitToVector(path),
                             model::SplitToVector(start)))
        << path << " relative to " << start;
  }
}

TEST(Relpath, EqualsItsModelForAllPairsOfShortPaths) {
  const std::vector<std::string> texts = AllTexts(5);
  std::vector<std::vector<std::string>> components;
  components.reserve(texts.size());
  for (const std::string& text : texts) {
    components.push_back(model::SplitToVector(text));
  }
  for (std::size_t i = 0; i < texts.size(); ++i) {
    for (std::size_t j = 0; j < texts.size(); ++j) {
      ASSERT_EQ(relpath(texts[i], texts[j]),
                model::Relpath(texts[i], components[i], components[j]))
          << texts[i] << " relative to " << texts[j];
    }
  }
}

}  // namespace
