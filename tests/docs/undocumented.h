#ifndef ORVO_TESTS_DOCS_UNDOCUMENTED_H_
#define ORVO_TESTS_DOCS_UNDOCUMENTED_H_

/// @file
/// A name without words, which scripts/docs.sh has to find.

namespace orvo_test {

/// Documented, unlike its member.
class Planted {
 public:
  void Silent();
};

}  // namespace orvo_test

#endif  // ORVO_TESTS_DOCS_UNDOCUMENTED_H_
