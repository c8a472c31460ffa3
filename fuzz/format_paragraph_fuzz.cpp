#include "fuzz/fuzz.h"
#include "fuzz/models.h"
#include "orvo/strings.h"

namespace {

using orvo_fuzz::Expect;

// A line as the text that it is so far.
class ModelLine {
 public:
  bool empty() const { return empty_; }
  const std::string& text() const { return text_; }

  long long LengthWith(const std::string& word) const {
    const std::size_t before = empty_ ? 0 : text_.size() + 1;
    const std::size_t length = before + word.size();
    return static_cast<long long>(length);
  }

  void Add(const std::string& word) {
    if (!empty_) text_ += ' ';
    text_ += word;
    empty_ = false;
  }

  void Clear() { *this = ModelLine(); }

 private:
  std::string text_;
  bool empty_ = true;  // also unlike a line of one empty word
};

std::string ModelFormat(const std::string& text, int indent, int width) {
  const long long available = static_cast<long long>(width) - indent;
  const std::string margin(indent > 0 ? static_cast<std::size_t>(indent) : 0,
                           ' ');
  std::string lines;
  ModelLine line;
  const auto close = [&] {
    lines += margin + line.text() + "\n";
    line.Clear();
  };
  for (const std::string& word : orvo_fuzz::model::Split(text, ' ', -1)) {
    const bool ends_line = !word.empty() && word.back() == '\n';
    if (!line.empty() && line.LengthWith(word) > available) {
      close();
      if (ends_line) close();
    }
    line.Add(word);
    if (ends_line) close();
  }
  if (!lines.empty()) lines.pop_back();
  return lines;
}

void TestLine(const std::string& text) {
  orvo::SingleLine line;
  ModelLine model;
  for (const std::string& word : orvo_fuzz::model::Split(text, ' ', -1)) {
    Expect(line.PredictLength(word) == model.LengthWith(word));
    line.AddWord(word);
    model.Add(word);
    Expect(line.GetLineLength() == static_cast<int>(model.text().size()));
  }
  Expect(line.GetLine() == text);
  line.Reset();
  Expect(line.GetLineLength() == -1 && line.GetLine().empty());
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvo_fuzz::Input input(data, size);
  const int indent = input.Take<std::uint8_t>() - 128;
  const bool narrow = input.Take<std::uint8_t>() % 8 != 0;
  const int width =
      narrow ? input.Take<std::uint8_t>() - 128 : input.Take<int>();
  const std::string text = input.TakeRest();
  Expect(orvo::format_paragraph(text, indent, width) ==
         ModelFormat(text, indent, width));
  TestLine(text);
  return 0;
}
