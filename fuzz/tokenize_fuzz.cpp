#include <algorithm>
#include <list>

#include "fuzz/fuzz.h"
#include "fuzz/models.h"
#include "orvo/strings.h"

namespace {

using orvo_fuzz::Expect;

using Texts = std::vector<std::string>;

// Each token in turn walks over the list of pieces.
std::deque<std::string> ModelTokenize(const Texts& tokens,
                                      const std::string& text) {
  std::list<std::string> pieces = {text};
  for (const std::string& token : tokens) {
    for (auto piece = pieces.begin(); piece != pieces.end(); ++piece) {
      for (std::size_t found;
           (found = piece->find(token)) != std::string::npos;) {
        if (found > 0) pieces.insert(piece, piece->substr(0, found));
        pieces.insert(piece, token);
        *piece = piece->substr(found + token.size());
      }
    }
  }
  std::deque<std::string> stripped;
  for (const std::string& piece : pieces) {
    stripped.emplace_back(orvo_fuzz::model::Strip(piece));
  }
  return stripped;
}

bool HasEmpty(const Texts& tokens) {
  return std::find(tokens.begin(), tokens.end(), "") != tokens.end();
}

std::deque<std::string> Tokenize(const Texts& tokens, const std::string& text) {
  if (tokens.size() == 1) return orvo::tokenize_string(tokens[0], text);
  if (tokens.size() == 2) {
    return orvo::tokenize_string({tokens[0], tokens[1]}, text);
  }
  return orvo::tokenize_string(tokens.begin(), tokens.end(), text);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvo_fuzz::Input input(data, size);
  const auto shape = input.Take<std::uint8_t>();
  Texts tokens(shape % 4);
  // Empty tokens, which are refused, are rare.
  const std::size_t shortest = shape / 4 == 63 ? 0 : 1;
  for (std::string& token : tokens) {
    token = input.TakeText(shortest + input.Take<std::uint8_t>() % 3);
    if (token.empty() && shortest == 1) token = "=";
  }
  const std::string text = input.TakeRest();
  try {
    const std::deque<std::string> pieces = Tokenize(tokens, text);
    Expect(!HasEmpty(tokens) && pieces == ModelTokenize(tokens, text));
  } catch (const std::invalid_argument& error) {
    Expect(HasEmpty(tokens));
    Expect(error.what() == std::string("token must have non-zero length."));
  }
  return 0;
}
