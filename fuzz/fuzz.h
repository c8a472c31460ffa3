#ifndef ORVO_FUZZ_FUZZ_H_
#define ORVO_FUZZ_FUZZ_H_

// What the fuzz targets share. A target takes its arguments from the bytes of
// the fuzzer, calls the library, and expects what a model of its own says.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size);

namespace orvo_fuzz {

/// Ends the program, which is what a fuzzer takes for a finding, unless the
/// library does what the model does.
inline void Expect(bool same, const char* file = __builtin_FILE(),
                   int line = __builtin_LINE()) {
  if (same) return;
  std::fprintf(stderr, "%s:%d: difference between library and model\n", file,
               line);
  std::abort();
}

/// The bytes of the fuzzer, from which arguments are taken one by one. What is
/// missing at the end counts as zero.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size)
      : bytes_(reinterpret_cast<const char*>(data), size) {}

  template <typename Number>
  Number Take() {
    Number number{};
    const std::string_view bytes = TakeView(sizeof number);
    std::memcpy(&number, bytes.data(), bytes.size());
    return number;
  }

  std::string_view TakeView(std::size_t size) {
    const std::string_view taken = bytes_.substr(0, size);
    bytes_.remove_prefix(taken.size());
    return taken;
  }

  std::string TakeText(std::size_t size) { return std::string(TakeView(size)); }

  /// Up to a byte that stands at the end of every text but the last one.
  std::string_view TakeLine(char end) {
    const std::string_view line = bytes_.substr(0, bytes_.find(end));
    bytes_.remove_prefix(line.size());
    bytes_.remove_prefix(bytes_.empty() ? 0 : 1);
    return line;
  }

  std::string TakeRest() { return TakeText(bytes_.size()); }

  bool empty() const { return bytes_.empty(); }

 private:
  std::string_view bytes_;
};

}  // namespace orvo_fuzz

#endif  // ORVO_FUZZ_FUZZ_H_
