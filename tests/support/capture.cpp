#include "tests/support/capture.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>

namespace orvo_test {
namespace {

// Points the standard output to another descriptor, with nothing left in the
// buffers of either; returns a copy of what it pointed to.
int ExchangeStdout(int descriptor) {
  std::cout.flush();
  std::fflush(stdout);
  const int saved = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
  dup2(descriptor, STDOUT_FILENO);
  return saved;
}

void RestoreStdout(int saved) {
  std::cout.flush();
  std::fflush(stdout);
  dup2(saved, STDOUT_FILENO);
  close(saved);
}

int OpenForWriting(const std::string& path) {
  return open(path.c_str(), O_CREAT | O_RDWR | O_APPEND | O_CLOEXEC, 0600);
}

[[noreturn]] void Execute(const std::vector<std::string>& arguments,
                          const TemporaryFolder& folder) {
  dup2(open((folder / "input").c_str(), O_RDONLY), STDIN_FILENO);
  dup2(OpenForWriting(folder / "output"), STDOUT_FILENO);
  dup2(OpenForWriting(folder / "errors"), STDERR_FILENO);
  std::vector<char*> argv;
  for (const std::string& argument : arguments) {
    argv.push_back(const_cast<char*>(argument.c_str()));
  }
  argv.push_back(nullptr);
  execv(argv[0], argv.data());
  _exit(127);
}

}  // namespace

StdoutRedirection::StdoutRedirection(int descriptor)
    : saved_descriptor_(ExchangeStdout(descriptor)) {}

StdoutRedirection::~StdoutRedirection() {
  RestoreStdout(saved_descriptor_);
}

StdoutCapture::StdoutCapture() {
  const int file = OpenForWriting(folder_ / "output");
  saved_descriptor_ = ExchangeStdout(file);
  close(file);
}

StdoutCapture::~StdoutCapture() {
  RestoreStdout(saved_descriptor_);
}

std::string StdoutCapture::Text() const {
  std::cout.flush();
  std::fflush(stdout);
  return ReadFile(folder_ / "output");
}

std::string ProgramPath(const std::string& name) {
  return ORVO_BUILD_DIRECTORY "/tests/programs/" + name;
}

std::string ExamplePath(const std::string& name) {
  return ORVO_BUILD_DIRECTORY "/examples/" + name;
}

std::string SourcePath(const std::string& name) {
  return ORVO_SOURCE_DIRECTORY "/" + name;
}

ProgramResult RunProgram(const std::vector<std::string>& arguments,
                         std::string_view input) {
  const TemporaryFolder folder;
  WriteFile(folder / "input", std::string(input));
  const pid_t child = fork();
  if (child == 0) Execute(arguments, folder);
  int status = 0;
  waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status),
          ReadFile(folder / "output"), ReadFile(folder / "errors")};
}

}  // namespace orvo_test
