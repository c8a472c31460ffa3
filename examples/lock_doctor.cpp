// Plays five accidents with locks, shows what the library says of each, and
// describes a lock in good health.
#include <functional>
#include <future>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include "orvo/condition.h"
#include "orvo/debug_locks.h"
#include "orvo/lock.h"
#include "orvo/orvo_lock_debug.h"
#include "orvo/scope_lock.h"
#include "orvo/thread_names.h"

// Out of the unnamed namespace, so that the stack trace can name it.
namespace kitchen {

void TurnUp(orvo::Lock& stove) {
  stove.ThrowIfOwnedByThisThread();
  const orvo::ScopeLock scope(stove);
}

}  // namespace kitchen

namespace {

using Action = std::function<void()>;

// Runs an action in a thread of this name; its exceptions arrive here.
void As(const std::string& name, const Action& action) {
  std::async(std::launch::async, [&] {
    orvo::threadNames.SetNameOfCurrentThread(name);
    action();
  }).get();
}

// What the library prints and throws meanwhile.
std::string Listen(const Action& accident) {
  std::ostringstream heard;
  std::streambuf* const standard_output = std::cout.rdbuf(heard.rdbuf());
  try {
    accident();
  } catch (const std::exception& error) {
    heard << "Error: " << error.what() << "\n";
  }
  std::cout.rdbuf(standard_output);
  return heard.str();
}

// Shows an accident; whether the library has named it.
bool Examine(const std::string& title, const std::string& diagnosis,
             const Action& accident) {
  const std::string report = Listen(accident);
  std::cout << "=== " << title << "\n" << report << "\n";
  if (report.find(diagnosis) != std::string::npos) return true;
  std::cout << "The library did not say \"" << diagnosis << "\".\n\n";
  return false;
}

}  // namespace

int main() {
  orvo::threadNames.SetNameOfCurrentThread("cook");
  orvo::Lock stove(std::make_unique<orvo::DebugLockImpl_>("stove"));
  orvo::RLock recipe(std::make_unique<orvo::DebugRLockImpl_>("recipe"));
  orvo::Lock counter("counter");
  orvo::Condition dish_is_ready;
  int missed = 0;

  missed += !Examine("The waiter wants the stove while the cook has it",
                     "waiter cannot acquire lock stove because", [&] {
                       const orvo::ScopeLock cooking(stove);
                       As("waiter", [&] { stove.try_lock(); });
                     });

  missed +=
      !Examine("A guest turns off a stove that was never the guest's",
               "guest tried to release lock stove without first acquiring it.",
               [&] { As("guest", [&] { stove.unlock(); }); });

  missed += !Examine("The cook waits for the cook",
                     "This lock is already owned by this thread.", [&] {
                       const orvo::ScopeLock cooking(stove);
                       kitchen::TurnUp(stove);
                     });

  missed += !Examine(
      "The cook closes the recipe once too often",
      "cook tried to release lock recipe more times than it was acquired.",
      [&] {
        recipe.lock();
        recipe.lock();
        for (int i = 0; i < 3; ++i) recipe.unlock();
      });

  missed += !Examine("The waiter waits for a dish that never comes",
                     "Error: no dish within a second", [&] {
                       As("waiter", [&] {
                         if (!dish_is_ready.TimedWait(counter, 1)) {
                           throw std::runtime_error("no dish within a second");
                         }
                       });
                     });

  std::cout << 5 - missed << " of 5 accidents were reported.\n";

  // The oven is well: it only has a holder.
  orvo::DebugLock oven("oven");
  const orvo::DebugScopeLock roasting(oven, "Roast", __FILE__, __LINE__);
  As("waiter", [&] { std::cout << oven.Describe() << "\n"; });
  return missed == 0 ? 0 : 1;
}
