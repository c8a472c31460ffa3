// A worker fails: its name, where it was, and a record in LOGFILE.
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>

#include "orvo/exception_log.h"
#include "orvo/stacktrace.h"
#include "orvo/thread_names.h"
#include "orvo/thread_safe_ostream.h"

// Out of the unnamed namespace, so that the stack can name it.
namespace shop {

[[gnu::noinline]] void Accept(int order) {
  orvo::CoutBuffer report;
  report << orvo::threadNames.GetNameOfCurrentThread() << " is in"
         << orvo::endl;
  for (const orvo::StackFrame& frame : orvo::GetStackFrames(10)) {
    if (frame.symbol.rfind("shop::", 0) == 0) {
      report << "  " << frame.symbol << orvo::endl;
    }
  }
  if (order < 0) throw std::invalid_argument("no such order");
}

[[gnu::noinline]] void Serve(int order) {
  try {
    Accept(order);
  } catch (const std::exception& error) {
    orvo::LogException(error.what(), __FILE__, __LINE__);
  }
}

}  // namespace shop

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: last_words LOGFILE\n";
    return 2;
  }
  orvo::SetThreadExceptionLogPath(argv[1]);
  std::thread worker([] {
    orvo::threadNames.SetNameOfCurrentThread("clerk 1");
    shop::Serve(-1);
  });
  worker.join();
}
