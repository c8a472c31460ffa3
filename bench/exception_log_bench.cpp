// The exception log beside the same record through stdio, and beside the bare
// system calls.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "orvo/exception_log.h"

namespace {

const std::string kMessage = "the order 4711 has no items";
const std::string kFile = "src/shop/order_queue.cpp";
constexpr int kLine = 128;

// A log file in a folder of its own, and nowhere for the standard output.
class Scene {
 public:
  Scene() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "orvo-bench-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    std::fflush(stdout);
    saved_ = dup(STDOUT_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
  }
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;
  ~Scene() {
    std::fflush(stdout);
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
    std::filesystem::remove_all(folder_);
  }

  std::string path() const { return (folder_ / "log").string(); }

  std::string Record() const {
    std::ifstream file(path());
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::filesystem::path folder_;
  int saved_ = -1;
};

void LogThroughOrvo(const std::string& path) {
  // The path is set once, at start-up.
  static_cast<void>(path);
  orvo::LogException(kMessage, kFile, kLine);
}

void LogThroughStdio(const std::string& path) {
  std::printf("LogException(%s)\n", kMessage.c_str());
  std::fflush(stdout);
  std::FILE* const file = std::fopen(path.c_str(), "a");
  std::fprintf(file, "\n%s line %d: %s\n", kFile.c_str(), kLine,
               kMessage.c_str());
  std::fclose(file);
}

void LogThroughStreams(const std::string& path) {
  std::cout << "LogException(" << kMessage << ")" << std::endl;
  std::ofstream file(path, std::ios_base::app);
  file << "\n" << kFile << " line " << kLine << ": " << kMessage << "\n";
}

// With texts that are ready.
void LogThroughSystemCalls(const std::string& path) {
  static const std::string echo = "LogException(" + kMessage + ")\n";
  static const std::string record =
      "\n" + kFile + " line " + std::to_string(kLine) + ": " + kMessage + "\n";
  benchmark::DoNotOptimize(write(STDOUT_FILENO, echo.data(), echo.size()));
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
  benchmark::DoNotOptimize(write(file, record.data(), record.size()));
  close(file);
}

void Register(const char* name, void (*log)(const std::string&)) {
  {
    const Scene scene;
    orvo::SetThreadExceptionLogPath(scene.path());
    log(scene.path());
    if (scene.Record() !=
        "\nsrc/shop/order_queue.cpp line 128: the order 4711 has no items\n") {
      std::fprintf(stderr, "%s writes another record\n", name);
      std::abort();
    }
  }
  benchmark::RegisterBenchmark(name, [log](benchmark::State& state) {
    const Scene scene;
    const std::string path = scene.path();
    orvo::SetThreadExceptionLogPath(path);
    for (auto _ : state) log(path);
  });
}

[[maybe_unused]] const bool registered = [] {
  Register("output/log_exception/orvo/27", LogThroughOrvo);
  Register("output/log_exception/stdio/27", LogThroughStdio);
  Register("output/log_exception/streams/27", LogThroughStreams);
  Register("output/log_exception/limit/27", LogThroughSystemCalls);
  return true;
}();

}  // namespace
