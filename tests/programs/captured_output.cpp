// captured_output FILE before|meanwhile: redirects the standard output before a
// capture or while it lasts, and reports the captured text on the standard
// error stream.
#include <iostream>
#include <string>

#include "orvo/thread_safe_ostream.h"

int main(int, char** argv) {
  const bool before = argv[2] == std::string("before");
  if (before) orvo::RedirectCout(argv[1]);
  orvo::CoutBuffer() << "first" << orvo::endl;
  {
    const orvo::ScopedCoutCapture capture;
    orvo::CoutBuffer() << "second" << orvo::endl;
    if (!before) orvo::RedirectCout(argv[1]);
    orvo::CoutBuffer() << "third" << orvo::endl;
    std::cerr << capture.Text();
  }
  orvo::CoutBuffer() << "fourth" << orvo::endl;
}
