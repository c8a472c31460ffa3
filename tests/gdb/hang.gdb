# Stops the hanging debuggee when all its threads are where they stay.
set print thread-events off
set breakpoint pending on
tbreak main
run
# Here is where threads wait for locks: with debug locks in turns.
break nanosleep
break pthread_mutex_clocklock
python
arrived = set()
while not {4, 5, 6, 7} <= arrived:
    gdb.execute("continue")
    arrived.add(gdb.selected_thread().num)
end
