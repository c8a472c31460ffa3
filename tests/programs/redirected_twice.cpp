// redirected_twice FIRST SECOND: redirects the standard output to one file and
// then to another, and writes a line after each.
#include "orvo/thread_safe_ostream.h"

int main(int, char** argv) {
  orvo::RedirectCout(argv[1]);
  orvo::CoutBuffer() << "one" << orvo::endl;
  orvo::RedirectCout(argv[2]);
  orvo::CoutBuffer() << "two" << orvo::endl;
}
