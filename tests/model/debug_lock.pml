/* The two mutexes of the debug locks: the real one and that of the books.
 *
 * Each thread calls lock(), try_lock() and unlock() in any order, also when it
 * has no right to, and ends when it holds nothing. The steps are those of
 * src/orvo_lock_debug.cpp; what a system call does is one step. Checked are
 * mutual exclusion, the absence of deadlock (no thread is left waiting) and
 * that the books tell the truth whenever no thread is inside an operation.
 *
 * A thread that holds the lock once may also wait on a condition, as through
 * DebugLock and DebugRLock in src/condition.cpp, and may be woken at any time.
 *
 * -DRECURSIVE gives DebugRLockImpl_ in place of DebugLockImpl_.
 * -DWAITS adds the waits.
 * -DUNANNOUNCED leaves the announcements of the waits out, as a Lock does that
 * owns a debug implementation, and the check of the books: what remains is the
 * accident of condition.h, a release that is refused to the holder.
 *
 * scripts/model.sh checks all of these.
 */

#ifdef RECURSIVE
#define MAX_DEPTH 2
#else
#define MAX_DEPTH 1
#endif

#define THREADS 3
#define NOBODY  THREADS

byte mutex = NOBODY;  /* who holds the real mutex, */
byte depth;           /* and how often */
byte books = NOBODY;  /* who holds the mutex of the books */

byte owner = NOBODY;  /* in the books */
byte counts[THREADS]; /* in the books of the recursive lock */

byte inside;          /* threads between lock() and unlock() */
byte busy;            /* threads inside an operation */

inline EnterBooks() { atomic { books == NOBODY -> books = _pid } }
inline LeaveBooks() { atomic { assert(books == _pid); books = NOBODY } }

inline TryMutex() {
  atomic {
    if
    :: mutex == NOBODY -> mutex = _pid; depth = 1; taken = true
#ifdef RECURSIVE
    :: mutex == _pid -> depth++; taken = true
#endif
    :: else -> taken = false
    fi
  }
}

inline ReleaseMutex() {
  atomic {
    assert(mutex == _pid);
    depth--;
    if
    :: depth == 0 -> mutex = NOBODY
    :: else
    fi
  }
}

inline RecordAcquisition() {
  owner = _pid;
  counts[_pid]++
}

/* Waits for a free mutex instead of polling, so that a wait without end is an
 * end state that Spin reports. */
inline Lock() {
  do
  :: TryMutex();
     if
     :: taken -> break
     :: else ->
        EnterBooks(); /* the banner */
        LeaveBooks();
        mutex == NOBODY
     fi
  od;
  EnterBooks();
  RecordAcquisition();
  LeaveBooks()
}

#ifdef RECURSIVE

inline TryLock() {
  TryMutex();
  EnterBooks();
  if
  :: taken -> RecordAcquisition()
  :: else /* the banner */
  fi;
  LeaveBooks()
}

inline Unlock() {
  EnterBooks();
  if
  :: counts[_pid] == 0 -> refused = true
  :: else ->
     refused = false;
     ReleaseMutex();
     counts[_pid]--;
     if
     :: counts[_pid] == 0 -> owner = NOBODY
     :: else
     fi
  fi;
  LeaveBooks()
}

#else

inline TryLock() {
  EnterBooks();
  TryMutex();
  if
  :: taken -> RecordAcquisition()
  :: else /* the banner */
  fi;
  LeaveBooks()
}

inline Unlock() {
  EnterBooks();
  if
  :: owner != _pid -> refused = true
  :: else ->
     refused = false;
     owner = NOBODY;
     counts[_pid]--
  fi;
  LeaveBooks();
  if
  :: !refused -> ReleaseMutex()
  :: else
  fi
}

#endif

/* Around the wait, with the mutex held. The asserts are those of
 * SetWaitWillUnlock(). */
inline BeginWait() {
#ifndef UNANNOUNCED
  EnterBooks();
  assert(!announced);
  announced = true;
  assert(owner == _pid);
  counts[_pid] = 0;
  LeaveBooks();
  EnterBooks();
  owner = NOBODY;
  LeaveBooks()
#else
  skip
#endif
}

inline EndWait() {
#ifndef UNANNOUNCED
  EnterBooks();
  assert(announced);
  announced = false;
  assert(owner == NOBODY);
  owner = _pid;
  counts[_pid] = 1;
  LeaveBooks()
#else
  skip
#endif
}

inline Begin() { busy++ }

inline End() {
  atomic {
    busy--;
#ifndef UNANNOUNCED
    if
    :: busy == 0 ->
       assert(owner == mutex);
       assert(mutex == NOBODY || counts[mutex] == depth)
    :: else
    fi
#endif
  }
}

/* The system gives the mutex away and takes it again in its own time; a wake-up
 * without a cause is one too. Meanwhile the thread is in no operation. */
inline WaitOnCondition() {
  atomic { ReleaseMutex(); inside--; End() };
  atomic {
    mutex == NOBODY -> mutex = _pid;
    depth = 1;
    inside++;
    assert(inside == 1);
    Begin()
  }
}

inline NoteAcquisition() {
  atomic {
    held++;
    if
    :: held == 1 -> inside++
    :: else
    fi;
    assert(inside == 1)
  }
}

/* Before the mutex is released, because another thread may take it at once. */
inline NoteRelease() {
  atomic {
    if
    :: held == 1 -> inside--
    :: else
    fi
  }
}

active [THREADS] proctype Thread() {
  bool taken, refused, announced;
  byte held;

  do
  :: held < MAX_DEPTH ->
     Begin();
     Lock();
     NoteAcquisition();
     End()
#ifdef RECURSIVE
  :: held < MAX_DEPTH ->
#else
  :: true -> /* in vain if this thread holds it */
#endif
     Begin();
     TryLock();
     if
     :: taken -> NoteAcquisition()
     :: else
     fi;
     End()
  :: true ->
     Begin();
     NoteRelease();
     Unlock();
     assert(refused == (held == 0));
     if
     :: !refused -> held--
     :: else
     fi;
     End()
#ifdef WAITS
  :: held == 1 ->
     Begin();
     BeginWait();
     WaitOnCondition();
     EndWait();
     End()
#endif
  :: held == 0 -> break
  od
}
