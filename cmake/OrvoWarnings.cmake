# Warnings for the project's own targets; users of the library never see them.
function(orvo_set_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
    -Wcast-align -Wcast-qual -Wdouble-promotion -Wextra-semi -Wformat=2
    -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wundef -Wunused
    -Werror=vla
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wlogical-op -Wuseless-cast>
    $<$<CXX_COMPILER_ID:Clang>:-Wimplicit-fallthrough -Wloop-analysis>)
endfunction()
