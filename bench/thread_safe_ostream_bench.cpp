// Whole messages beside a synchronised stream, spdlog and POCO. The measured
// output goes to /dev/null: through the standard output, or in the program
// redirected_bench through a file buffer.
#include <Poco/AutoPtr.h>
#include <Poco/ConsoleChannel.h>
#include <Poco/Message.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spdlog/sinks/ostream_sink.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <syncstream>
#include <utility>
#include <vector>

#include "bench/compare.h"
#include "orvo/format.h"
#include "orvo/operation_log.h"
#include "orvo/thread_safe_ostream.h"

namespace {

void OrvoMessage(const std::string& text, int number) {
  orvo::CoutBuffer() << text << number << orvo::endl;
}

void StdMessage(const std::string& text, int number) {
  std::osyncstream(std::cout) << text << number << std::endl;
}

void SpdlogMessage(const std::string& text, int number) {
  static const auto logger = [] {
    auto made = std::make_shared<spdlog::logger>(
        "bench",
        std::make_shared<spdlog::sinks::ostream_sink_mt>(std::cout, true));
    made->set_pattern("%v");
    return made;
  }();
  logger->info("{}{}", text, number);
}

void PocoMessage(const std::string& text, int number) {
  static Poco::AutoPtr<Poco::ConsoleChannel> channel(
      new Poco::ConsoleChannel(std::cout));
  channel->log(Poco::Message("", text + std::to_string(number),
                             Poco::Message::PRIO_INFORMATION));
}

std::mutex limit_mutex;

// One write and one flush of a finished text, each under the mutex.
void WriteWhole(const std::string& text) {
  {
    const std::lock_guard<std::mutex> guard(limit_mutex);
    std::cout << text;
  }
  const std::lock_guard<std::mutex> guard(limit_mutex);
  std::cout.flush();
}

void LimitMessage(const std::string& text, int number) {
  WriteWhole(text + std::to_string(number) + "\n");
}

// Takes the text of a buffer, without the lock and the flush of the output.
struct TextReceiver {
  void operator<<(std::string whole) { text = std::move(whole); }
  void flush() {}

  std::string text;
};

std::string OrvoCompose(const std::string& text, int number) {
  TextReceiver receiver;
  orvo::OutBuffer<TextReceiver>(receiver) << text << number << "\n";
  return std::move(receiver.text);
}

std::string StdCompose(const std::string& text, int number) {
  std::ostringstream stream;
  stream << text << number << "\n";
  return stream.str();
}

std::string LimitCompose(const std::string& text, int number) {
  return text + std::to_string(number) + "\n";
}

void AddCompose(const std::string& operation) {
  for (const std::size_t size : {20U, 200U, 4000U}) {
    const auto* text = orvo_bench::Keep(std::string(size, 'X'));
    orvo_bench::Compare(
        operation, size,
        orvo_bench::Contender{"orvo", [=] { return OrvoCompose(*text, 7); }},
        orvo_bench::Contender{"std", [=] { return StdCompose(*text, 7); }},
        orvo_bench::Contender{"limit", [=] { return LimitCompose(*text, 7); }});
  }
}

void OrvoLogAttempt(const std::string& text, int number) {
  orvo::LogAttempt("src/file.cpp", static_cast<unsigned>(number), text);
}

void SpdlogLogAttempt(const std::string& text, int number) {
  static const auto logger = [] {
    auto made = std::make_shared<spdlog::logger>(
        "attempt",
        std::make_shared<spdlog::sinks::ostream_sink_mt>(std::cout, true));
    made->set_pattern("[DEBUG] %v");
    return made;
  }();
  logger->info("{} line {}: {}.", "src/file.cpp", number, text);
}

void LimitLogAttempt(const std::string& text, int number) {
  WriteWhole(orvo::format("[DEBUG] %s line %d: %s.\n", "src/file.cpp", number,
                          text.c_str()));
}

using Write = void (*)(const std::string&, int);

struct Contender {
  const char* who;
  Write write;
};

void Message(benchmark::State& state, Write write) {
  // A capital, as the logs begin a sentence.
  const std::string text(static_cast<std::size_t>(state.range()), 'X');
  for (auto _ : state) write(text, 7);
}

// What reaches the standard stream.
std::string Written(Write write) {
  std::ostringstream captured;
  std::streambuf* const own = std::cout.rdbuf(captured.rdbuf());
  write("Text", 7);
  std::cout.rdbuf(own);
  return captured.str();
}

// Registers an operation on one thread, and on two that share the stream.
void Register(const std::string& operation, int threads,
              const std::vector<Contender>& contenders) {
  const std::string expected = Written(contenders.front().write);
  for (const Contender& contender : contenders) {
    const std::string name = operation + "/" + contender.who;
    if (Written(contender.write) != expected) {
      std::cerr << name << " writes another text\n";
      std::exit(1);
    }
    auto* const made =
        benchmark::RegisterBenchmark(name.c_str(), Message, contender.write)
            ->ArgsProduct({{20, 200, 4000}});
    if (threads == 2) orvo_bench::OnTwoThreads(made);
  }
}

#ifdef ORVO_BENCH_REDIRECTED
constexpr bool kRedirected = true;
#else
constexpr bool kRedirected = false;
#endif

const bool registered = [] {
  const std::string family = kRedirected ? "redirected/" : "output/";
  if (kRedirected) {
    orvo::RedirectCout("/dev/null");
  } else {
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
    AddCompose(family + "compose");
  }
  for (const int threads : {1, 2}) {
    Register(family + "message", threads,
             {{"orvo", OrvoMessage},
              {"std", StdMessage},
              {"spdlog", SpdlogMessage},
              {"poco", PocoMessage},
              {"limit", LimitMessage}});
    Register(family + "log_attempt", threads,
             {{"orvo", OrvoLogAttempt},
              {"spdlog", SpdlogLogAttempt},
              {"limit", LimitLogAttempt}});
  }
  return true;
}();

}  // namespace
