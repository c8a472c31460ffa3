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

void LogThroughOrvo(const std::string& path, const std::string& message) {
  // The path is set once, at start-up.
  static_cast<void>(path);
  orvo::LogException(message, kFile, kLine);
}

void LogThroughStdio(const std::string& path, const std::string& message) {
  std::printf("LogException(%s)\n", message.c_str());
  std::fflush(stdout);
  std::FILE* const file = std::fopen(path.c_str(), "a");
  std::fprintf(file, "\n%s line %d: %s\n", kFile.c_str(), kLine,
               message.c_str());
  std::fclose(file);
}

void LogThroughStreams(const std::string& path, const std::string& message) {
  std::cout << "LogException(" << message << ")" << std::endl;
  std::ofstream file(path, std::ios_base::app);
  file << "\n" << kFile << " line " << kLine << ": " << message << "\n";
}

// With texts that are ready.
void LogThroughSystemCalls(const std::string& path,
                           const std::string& message) {
  static std::string known;
  static std::string echo;
  static std::string record;
  if (known != message) {
    known = message;
    echo = "LogException(" + message + ")\n";
    record =
        "\n" + kFile + " line " + std::to_string(kLine) + ": " + message + "\n";
  }
  benchmark::DoNotOptimize(write(STDOUT_FILENO, echo.data(), echo.size()));
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
  benchmark::DoNotOptimize(write(file, record.data(), record.size()));
  close(file);
}

using Log = void (*)(const std::string& path, const std::string& message);

void Register(const std::string& who, std::size_t size, Log log) {
  const std::string message(size, 'x');
  {
    const Scene scene;
    orvo::SetThreadExceptionLogPath(scene.path());
    log(scene.path(), message);
    if (scene.Record() !=
        "\nsrc/shop/order_queue.cpp line 128: " + message + "\n") {
      std::cerr << who << " writes another record\n";
      std::abort();
    }
  }
  const std::string name =
      "output/log_exception/" + who + "/" + std::to_string(size);
  benchmark::RegisterBenchmark(name.c_str(),
                               [log, message](benchmark::State& state) {
                                 const Scene scene;
                                 const std::string path = scene.path();
                                 orvo::SetThreadExceptionLogPath(path);
                                 for (auto _ : state) log(path, message);
                               });
}

[[maybe_unused]] const bool registered = [] {
  for (const std::size_t size : {20U, 200U, 4000U}) {
    Register("orvo", size, LogThroughOrvo);
    Register("stdio", size, LogThroughStdio);
    Register("streams", size, LogThroughStreams);
    Register("limit", size, LogThroughSystemCalls);
  }
  return true;
}();

}  // namespace
