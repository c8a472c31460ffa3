// Uses a little of everything that has to be found at run time: an object, a
// template instantiation and an error class of the library.
#include <orvo/orvo.h>

int main() {
  orvo::Lock lock("consumer");
  lock.lock();
  orvo::CoutBuffer() << "hello " << orvo::format("%d", 42) << orvo::endl;
  lock.unlock();
  try {
    throw orvo::path::PathError("caught");
  } catch (const orvo::RuntimeError&) {
    return 0;
  }
}
