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

// Out of an unnamed namespace, so that the stack trace can name its functions.
namespace kitchen {

orvo::Lock stove(std::make_unique<orvo::DebugLockImpl_>("stove"));
orvo::RLock recipe(std::make_unique<orvo::DebugRLockImpl_>("recipe"));
orvo::Lock counter("counter");
orvo::Condition dish_is_ready;

// Runs an action in a thread of this name; its exceptions arrive here.
void As(const std::string& name, const std::function<void()>& action) {
  std::async(std::launch::async, [&] {
    orvo::threadNames.SetNameOfCurrentThread(name);
    action();
  }).get();
}

void WaiterWantsStove() {
  const orvo::ScopeLock cooking(stove);
  As("waiter", [] { stove.try_lock(); });
}

void GuestTurnsOffStove() {
  As("guest", [] { stove.unlock(); });
}

void TurnUpStove() {
  stove.ThrowIfOwnedByThisThread();
  const orvo::ScopeLock scope(stove);
}

void CookWaitsForCook() {
  const orvo::ScopeLock cooking(stove);
  TurnUpStove();
}

void CookClosesRecipe() {
  recipe.lock();
  recipe.lock();
  for (int i = 0; i < 3; ++i) recipe.unlock();
}

void WaiterWaitsForDish() {
  As("waiter", [] {
    if (!dish_is_ready.TimedWait(counter, 1)) {
      throw std::runtime_error("no dish within a second");
    }
  });
}

struct Accident {
  const char* title;
  void (*happen)();
  const char* diagnosis;
};

constexpr Accident kAccidents[] = {
    {"The waiter wants the stove while the cook has it", WaiterWantsStove,
     "waiter cannot acquire lock stove because"},
    {"A guest turns off a stove that was never the guest's", GuestTurnsOffStove,
     "guest tried to release lock stove without first acquiring it."},
    {"The cook waits for the cook", CookWaitsForCook,
     "This lock is already owned by this thread."},
    {"The cook closes the recipe once too often", CookClosesRecipe,
     "cook tried to release lock recipe more times than it was acquired."},
    {"The waiter waits for a dish that never comes", WaiterWaitsForDish,
     "no dish within a second"},
};

// Blank lines are left out, of which a banner has many.
void PrintIndented(const std::string& report) {
  std::istringstream lines(report);
  for (std::string line; std::getline(lines, line);) {
    if (line.find_first_not_of(' ') == std::string::npos) continue;
    std::cout << "   " << line << "\n";
  }
}

// Shows what the library prints and throws; whether it has named the accident.
bool Examine(const Accident& accident) {
  std::ostringstream heard;
  std::streambuf* const standard_output = std::cout.rdbuf(heard.rdbuf());
  try {
    accident.happen();
  } catch (const std::exception& error) {
    heard << "Error: " << error.what() << "\n";
  }
  std::cout.rdbuf(standard_output);
  PrintIndented(heard.str());
  return heard.str().find(accident.diagnosis) != std::string::npos;
}

}  // namespace kitchen

int main() {
  orvo::threadNames.SetNameOfCurrentThread("cook");
  int number = 0;
  int reported = 0;
  for (const kitchen::Accident& accident : kitchen::kAccidents) {
    std::cout << ++number << ". " << accident.title << "\n";
    reported += kitchen::Examine(accident) ? 1 : 0;
  }
  std::cout << reported << " of " << number << " accidents were reported.\n";

  // The oven is well: it only has a holder.
  orvo::DebugLock oven("oven");
  const orvo::DebugScopeLock roasting(oven, "Roast", __FILE__, __LINE__);
  std::cout << oven.Describe() << "\n";
  return reported == number ? 0 : 1;
}
